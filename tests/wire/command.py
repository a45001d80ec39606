"""The command-line client, for the tests that run it against services."""

import json
import os
import socket
import subprocess
import threading
import unittest

from service import Host, ServiceTest  # noqa: F401  (the tests take them from here)

CLIENT = os.environ["CLIENT"]


class Ran:
    """What the client has said, and how it ended."""

    def __init__(self, process):
        self.code = process.returncode
        self.out = process.stdout
        self.err = process.stderr

    @property
    def json(self):
        return json.loads(self.out)


def run(*words, url=None, text=None, environment=None, timeout=120):
    variables = {**os.environ, **(environment or {})}
    if url is not None:
        variables["VARLO_ANALYTICS_URL"] = url
    process = subprocess.run([CLIENT, *map(str, words)], input=text or "", capture_output=True, text=True,
                             env=variables, timeout=timeout, start_new_session=True)
    return Ran(process)


class ClientTest(ServiceTest):
    """A test case with a running host that the client is pointed at."""

    def client(self, *words, code=0, text=None, **options):
        ran = run(*words, url=self.host.url, text=text, **options)
        self.assertEqual(ran.code, code, f"{words}: {ran.out}{ran.err}")
        if code == 0:
            return ran
        # Whatever goes wrong is one sentence or more of this program, with nothing of the runtime in it.
        self.assertEqual(ran.out, "")
        self.assertRegex(ran.err.splitlines()[-1], r"^varlo-analytics: .*\.$")
        self.assertNotRegex(ran.err, "SOAP-ENV|soap_|Error -?[0-9]+ fault|Detail:")
        return ran


class Listener:
    """A port of 127.0.0.1 that does `serve(connection)` with each connection, on a thread of its own."""

    def __init__(self, serve):
        self.serve = serve
        self.socket = socket.create_server(("127.0.0.1", 0), backlog=64)
        self.port = self.socket.getsockname()[1]
        self.thread = threading.Thread(target=self.accept, daemon=True)
        self.thread.start()

    def accept(self):
        while True:
            try:
                connection = self.socket.accept()[0]
            except OSError:
                return
            threading.Thread(target=self.one, args=(connection,), daemon=True).start()

    def one(self, connection):
        with connection:
            try:
                self.serve(connection)
            except OSError:
                pass

    def close(self):
        self.socket.shutdown(socket.SHUT_RDWR)
        self.socket.close()
        self.thread.join(timeout=60)

    def __enter__(self):
        return self

    def __exit__(self, *unused):
        self.close()


def answer(status, body, content_type="text/xml; charset=utf-8", headers=""):
    """Serves one HTTP answer to whatever was asked."""
    data = body.encode()

    def serve(connection):
        request = b""
        while b"\r\n\r\n" not in request:
            request += connection.recv(65536)
        head, _, rest = request.partition(b"\r\n\r\n")
        length = next((int(line.split(b":")[1]) for line in head.split(b"\r\n")
                       if line.lower().startswith(b"content-length:")), 0)
        while len(rest) < length:
            rest += connection.recv(65536)
        connection.sendall((f"HTTP/1.1 {status}\r\nContent-Type: {content_type}\r\n{headers}"
                            f"Content-Length: {len(data)}\r\nConnection: close\r\n\r\n").encode() + data)
    return serve


main = unittest.main
