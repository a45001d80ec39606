"""Stands for many cameras at one port, each with a path of its own: http://127.0.0.1:PORT/17/ is another one than
http://127.0.0.1:PORT/18/. Keeps what it is sent as it comes, in one thread."""

import asyncio
import re
import threading
from xml.sax.saxutils import escape, unescape

from service import NAMESPACE

ANSWER = ('<SOAP-ENV:Envelope xmlns:SOAP-ENV="http://schemas.xmlsoap.org/soap/envelope/" xmlns:va="{space}">'
          "<SOAP-ENV:Body><va:{name}Response>{fields}</va:{name}Response></SOAP-ENV:Body></SOAP-ENV:Envelope>")


class Camera:
    """One profile at most."""

    def __init__(self):
        self.name = None
        self.runs = False
        self.behaviors = {}
        self.scene = None

    def do(self, operation, field):
        return getattr(self, operation)(field)

    def GetProfileList(self, field):
        if self.name is None:
            return "<profileList/>"
        runs = str(self.runs).lower()
        return f'<profileList><profile id="1" active="{runs}">{escape(self.name)}</profile></profileList>'

    def GetActiveProfile(self, field):
        return f"<profileId>{1 if self.runs else -1}</profileId>"

    def CreateProfile(self, field):
        self.name = field("name")
        return "<profileId>1</profileId>"

    def GetBehaviorAvailability(self, field):
        rows = "".join(f"<behavior><type>{id}</type><userName/><availability>2</availability><supportAdvanceMode>false"
                       f"</supportAdvanceMode><fixedPosition>false</fixedPosition></behavior>" for id in self.behaviors)
        return f"<behaviors>{rows}</behaviors>"

    def GetBehaviorAvailability2(self, field):
        return "<behaviors/>"  # none that couldn't be active

    def GetProfileBehavior(self, field):
        return f"<config>{escape(self.behaviors.get(field('behaviorId'), ''))}</config>"

    def SetProfileBehavior(self, field):
        self.behaviors[field("behaviorId")] = field("config")
        return ""

    def GetProfileScene(self, field):
        return None if self.scene is None else f"<scene>{escape(self.scene)}</scene>"

    def SetProfileScene(self, field):
        self.scene = field("scene")
        return ""


class StandIn:
    """`delay(path)` is how many seconds the camera at the path waits before each answer."""

    def __init__(self, delay=lambda path: 0):
        self.delay = delay
        self.cameras = {}
        self.requests = 0
        self.loop = asyncio.new_event_loop()
        ready = threading.Event()
        self.thread = threading.Thread(target=self.run, args=(ready,), daemon=True)
        self.thread.start()
        ready.wait(60)

    def run(self, ready):
        asyncio.set_event_loop(self.loop)
        server = self.loop.run_until_complete(asyncio.start_server(self.serve, "127.0.0.1", 0, backlog=1024))
        self.port = server.sockets[0].getsockname()[1]
        ready.set()
        self.loop.run_forever()
        server.close()
        pending = asyncio.all_tasks(self.loop)
        for task in pending:
            task.cancel()
        self.loop.run_until_complete(asyncio.gather(*pending, return_exceptions=True))
        self.loop.close()

    def urls(self, count):
        return [f"http://127.0.0.1:{self.port}/{number}/" for number in range(count)]

    async def serve(self, reader, writer):
        try:
            head = await reader.readuntil(b"\r\n\r\n")
            length = int(re.search(rb"(?i)content-length: *(\d+)", head).group(1))
            body = (await reader.readexactly(length)).decode()
            path = head.split()[1].decode()
            await asyncio.sleep(self.delay(path))
            answer = self.answer(self.cameras.setdefault(path, Camera()), body)
            if answer is not None:
                data = answer.encode()
                writer.write(b"HTTP/1.1 200 OK\r\nContent-Type: text/xml; charset=utf-8\r\nConnection: close\r\n"
                             b"Content-Length: %d\r\n\r\n" % len(data) + data)
                await writer.drain()
        except (asyncio.IncompleteReadError, ConnectionError):
            pass
        finally:
            writer.close()

    def answer(self, camera, body):
        self.requests += 1
        operation = re.search(r"Body>\s*<(?:[\w-]+:)?(\w+)", body).group(1)

        def field(name):
            return unescape(re.search(rf"<{name}[^>]*>(.*?)</{name}>", body, re.S).group(1),
                            {"&quot;": '"', "&#xA;": "\n", "&#xD;": "\r", "&#x9;": "\t"})
        fields = camera.do(operation, field)
        # Both questions about availability have one answer.
        name = operation.rstrip("2")
        return None if fields is None else ANSWER.format(space=NAMESPACE, name=name, fields=fields)

    def close(self):
        self.loop.call_soon_threadsafe(self.loop.stop)
        self.thread.join(timeout=60)

    def __enter__(self):
        return self

    def __exit__(self, *unused):
        self.close()
