"""Who gets in to the console, and what it costs: by raw sockets, without a browser."""

import http.client
import json
import os
import re
import resource
import signal
import socket
import stat
import subprocess
import sys
import tempfile
import threading
import time
import unittest
from concurrent.futures import ThreadPoolExecutor
from pathlib import Path

from command import CLIENT, Listener, answer
from service import SANITIZED, SOURCE, Host, read_all

PICTURE = SOURCE / "docs/pictures/car-park.png"
PNG = PICTURE.read_bytes()
POLICY = ("default-src 'none'; script-src 'self'; style-src 'self'; connect-src 'self'; img-src 'self' blob: data:; "
          "frame-ancestors 'none'; base-uri 'none'; form-action 'none'")
PATHS = ("/", "/index.html", "/main.js", "/api/console", "/api/camera?camera=0", "/picture", "/nothing", "/?token=", "//", "*")


def cookie_of(port, token):
    """What a browser that has come in sends from then on."""
    connection = http.client.HTTPConnection("127.0.0.1", port, timeout=60)
    connection.request("GET", f"/?token={token}")
    entered = connection.getresponse()
    entered.read()
    return {"Cookie": entered.getheader("Set-Cookie").split(";")[0]}


def start_console(*words, environment=None):
    """The process, its port and its token."""
    process = subprocess.Popen([CLIENT, "console", *map(str, words)], stdin=subprocess.DEVNULL, stdout=subprocess.PIPE,
                               stderr=subprocess.PIPE, text=True, env={**os.environ, **(environment or {})})
    line = process.stdout.readline()
    match = re.fullmatch(r"console on http://127\.0\.0\.1:(\d+)/\?token=([0-9a-f]{64})\n", line)
    if not match:
        raise RuntimeError(f"{line}{process.stderr.read()}")
    return process, int(match.group(1)), match.group(2)


def refused(*words, environment=None):
    """The exit code and the sentence of a console that doesn't start."""
    done = subprocess.run([CLIENT, "console", *map(str, words)], stdin=subprocess.DEVNULL, capture_output=True, text=True,
                          timeout=60, env={**os.environ, **(environment or {})})
    assert done.stdout == "", done.stdout
    return done.returncode, done.stderr


class ConsoleTest(unittest.TestCase):
    words = ("--picture", PICTURE)

    @classmethod
    def setUpClass(cls):
        cls.host = Host().start()
        cls.addClassCleanup(cls.host.clean)
        cls.addClassCleanup(cls.host.stop)

    def setUp(self):
        self.process, self.port, self.token = start_console("--url", self.host.url, *self.words)
        self.addCleanup(self.end)
        self.address = f"127.0.0.1:{self.port}"
        self.cookie = None

    def end(self):
        if self.process.poll() is None:
            self.process.send_signal(signal.SIGINT)
        self.assertEqual(self.process.wait(timeout=60), 0)
        self.process.stdout.close()
        self.process.stderr.close()

    def raw(self, text, timeout=60):
        with socket.create_connection(("127.0.0.1", self.port), timeout=timeout) as connection:
            connection.sendall(text if isinstance(text, bytes) else text.encode())
            return read_all(connection)

    def ask(self, method, path, body=None, **headers):
        """Status, headers and body; with the cookie, once there is one."""
        fields = {"Host": self.address, **{name.replace("_", "-"): value for name, value in headers.items()}}
        if self.cookie and "Cookie" not in fields:
            fields["Cookie"] = self.cookie
        lines = [f"{method} {path} HTTP/1.1", *(f"{name}: {value}" for name, value in fields.items() if value is not None),
                 "Connection: close"]
        data = b"" if body is None else body.encode() if isinstance(body, str) else body
        if body is not None:
            lines.append(f"Content-Length: {len(data)}")
        text = self.raw("\r\n".join(lines).encode() + b"\r\n\r\n" + data)
        head, _, rest = text.partition(b"\r\n\r\n")
        status, *fields = head.decode().split("\r\n")
        return int(status.split()[1]), {k.lower(): v for k, v in (line.split(": ", 1) for line in fields)}, rest

    def enter(self):
        status, headers, _ = self.ask("GET", f"/?token={self.token}")
        self.assertEqual((status, headers["location"]), (303, "/"))
        self.cookie = headers["set-cookie"].split(";")[0]
        return headers

    def change(self, what, body, **headers):
        fields = {"Origin": f"http://{self.address}", "Content_Type": "application/json", **headers}
        return self.ask("POST", f"/api/{what}", json.dumps(body), **fields)

    def profiles(self):
        return [profile["name"] for profile in json.loads(self.ask("GET", "/api/camera?camera=0")[2])["profiles"]]


class Door(ConsoleTest):
    def test_the_token_is_exchanged_once_for_a_cookie_with_the_port_in_its_name(self):
        headers = self.enter()
        cookie = headers["set-cookie"]
        self.assertRegex(cookie.split("=")[0], str(self.port))
        self.assertIn("; HttpOnly", cookie)
        self.assertIn("; SameSite=Strict", cookie)
        self.assertNotIn(self.token, cookie)
        self.assertEqual(self.ask("GET", f"/?token={self.token}", Cookie=None)[0], 403)
        self.assertEqual(self.ask("GET", "/")[0], 200)

    def test_without_the_cookie_every_path_is_forbidden(self):
        for path in (*PATHS, f"/?token={'0' * 64}", f"/?token={self.token[:-1]}", f"/?token={self.token}0"):
            for method in ("GET", "HEAD", "POST", "PUT", "DELETE", "OPTIONS", "PATCH", "TRACE"):
                for cookie in (None, f"varlo-analytics-{self.port}={'0' * 64}", "a=b; c", ";;;="):
                    with self.subTest(path=path, method=method, cookie=cookie):
                        status, headers, body = self.ask(method, path, Cookie=cookie)
                        self.assertEqual(status, 403)
                        self.assertNotIn("set-cookie", headers)
                        self.assertNotIn(self.token.encode(), body)
        self.enter()

    def test_another_host_gets_nothing_and_the_token_stays_good(self):
        for host in ("evil.example", f"evil.example:{self.port}", "127.0.0.1", f"127.0.0.1:{self.port + 1}", "", None,
                     f"localhost.evil.example:{self.port}", f"[::1]:{self.port}"):
            self.assertEqual(self.ask("GET", f"/?token={self.token}", Host=host)[0], 403, host)
        twice = f"GET /?token={self.token} HTTP/1.1\r\nHost: {self.address}\r\nHost: evil.example\r\n\r\n"
        self.assertRegex(self.raw(twice), rb"^HTTP/1.1 4\d\d ")
        self.enter()
        self.assertEqual(self.ask("GET", "/", Host="evil.example")[0], 403)
        self.assertEqual(self.ask("GET", "/", Host=f"localhost:{self.port}")[0], 200)

    def test_a_change_needs_the_own_origin_json_and_the_same_site(self):
        self.enter()
        body = {"camera": 0, "action": "create", "name": "Intruder"}
        for headers, expected in (
                ({"Origin": "http://evil.example"}, 403), ({"Origin": "null"}, 403), ({"Origin": None}, 403),
                ({"Origin": f"https://{self.address}"}, 403), ({"Origin": f"http://localhost:{self.port}"}, 403),
                ({"Sec_Fetch_Site": "cross-site"}, 403), ({"Sec_Fetch_Site": "same-site"}, 403), ({"Sec_Fetch_Site": "none"}, 403),
                ({"Content_Type": "text/plain"}, 415), ({"Content_Type": None}, 415),
                ({"Content_Type": "application/x-www-form-urlencoded"}, 415), ({"Content_Type": "application/jsonx"}, 415)):
            with self.subTest(headers=headers):
                self.assertEqual(self.change("profile", body, **headers)[0], expected)
        self.assertEqual(self.change("profile", body, Cookie="a=b")[0], 403)
        self.assertEqual(self.ask("GET", "/api/profile?camera=0&action=create&name=Intruder")[0], 405)
        self.assertNotIn("Intruder", self.profiles())
        self.assertEqual(self.change("profile", body, Sec_Fetch_Site="same-origin")[0], 200)
        self.assertIn("Intruder", self.profiles())

    def test_every_answer_has_the_headers_that_keep_others_out(self):
        answers = [self.ask("GET", "/"), self.ask("GET", f"/?token={self.token}")]
        self.cookie = answers[1][1]["set-cookie"].split(";")[0]
        answers += [self.ask("GET", path) for path in ("/", "/main.js", "/style.css", "/api/console", "/picture", "/nothing")]
        answers += [self.change("profile", {}), self.change("profile", {}, Origin="http://evil.example")]
        for status, headers, _ in answers:
            self.assertEqual(headers["content-security-policy"], POLICY, status)
            self.assertEqual(headers["cache-control"], "no-store")
            self.assertEqual(headers["referrer-policy"], "no-referrer")
            self.assertEqual(headers["x-content-type-options"], "nosniff")
            self.assertNotIn("access-control-allow-origin", headers)

    def test_the_page_is_small_and_names_no_other_origin(self):
        self.enter()
        page = self.ask("GET", "/")[2]
        files = {"/": page}
        waiting = ["/" + name.decode() for name in re.findall(rb'(?:src|href)="([\w.]+)"', page)]
        while waiting:
            path = waiting.pop()
            if path not in files:
                status, headers, files[path] = self.ask("GET", path)
                self.assertEqual(status, 200, path)
                waiting += ["/" + name.decode() for name in re.findall(rb"from '\./([\w.]+)'", files[path])]
        self.assertLessEqual(sum(map(len, files.values())), 81920)
        self.assertGreaterEqual(len(files), 10)
        foreign = {url for text in files.values() for url in re.findall(rb"https?://[^\s'\"]+", text)}
        self.assertEqual(foreign, {b"http://www.w3.org/2000/svg"})

    def test_what_is_no_request_of_the_page_is_refused_in_words(self):
        self.enter()
        for what, body in (("profile", []), ("profile", {}), ("profile", {"camera": 7}), ("profile", {"camera": -1}),
                           ("profile", {"camera": 0, "action": "explode", "profile": 1}), ("save", {"camera": 0}),
                           ("save", {"camera": 0, "profile": "x", "behavior": "scene"}), ("check", {"camera": 0, "behavior": "scene", "document": 5}),
                           ("scale", {"from": 0, "to": 7, "points": []}), ("switch", {"camera": 0})):
            status, _, text = self.change(what, body)
            self.assertIn(status, (400, 422), (what, body))
            self.assertTrue(json.loads(text)["error"])
        self.assertEqual(self.ask("POST", "/api/save", "{", Origin=f"http://{self.address}", Content_Type="application/json")[0], 400)
        self.assertEqual(self.ask("POST", "/api/save", "[" * 100000, Origin=f"http://{self.address}", Content_Type="application/json")[0], 400)
        deep = '{"camera": 0, "behavior": "scene", "document": {"sensitivity": %s}}' % ("[" * 500000 + "]" * 500000)
        status, _, text = self.ask("POST", "/api/check", deep, Origin=f"http://{self.address}", Content_Type="application/json")
        self.assertEqual((status, json.loads(text)["error"]), (400, "The request isn't what it should be: the values are nested too deeply"))
        self.assertEqual(self.ask("GET", "/api/nothing")[0], 404)
        self.assertEqual(self.ask("DELETE", "/main.js", Origin=f"http://{self.address}", Content_Type="application/json")[0], 405)
        self.assertRegex(self.raw("what is this\r\n\r\n"), rb"^HTTP/1.1 400 ")
        self.assertEqual(self.ask("GET", "/")[0], 200)


class Limits(ConsoleTest):
    def memory_kib(self):
        return int(re.search(r"VmRSS:\s+(\d+)", Path(f"/proc/{self.process.pid}/status").read_text()).group(1))

    def test_large_slow_and_silent(self):
        """One test, since each of its parts takes the thirty seconds."""
        self.enter()
        resource.setrlimit(resource.RLIMIT_NOFILE, (min(4096, resource.getrlimit(resource.RLIMIT_NOFILE)[1]),) * 2)
        silent = [socket.create_connection(("127.0.0.1", self.port), timeout=90) for _ in range(1000)]
        self.addCleanup(lambda: [connection.close() for connection in silent])
        begun = time.monotonic()
        slow = socket.create_connection(("127.0.0.1", self.port), timeout=90)
        self.addCleanup(slow.close)
        took = []

        def dribble():
            try:
                for byte in f"POST /api/save HTTP/1.1\r\nHost: {self.address}\r\nX: " + "x" * 500:
                    slow.sendall(byte.encode())
                    time.sleep(0.25)
            except OSError:
                pass
            took.append(time.monotonic() - begun)

        dribbler = threading.Thread(target=dribble)
        dribbler.start()
        # Meanwhile the page is served, and a body that is too large is refused.
        self.assertEqual(self.ask("GET", "/")[0], 200)
        self.assertIn("profiles", json.loads(self.ask("GET", "/api/camera?camera=0")[2]))
        if not SANITIZED:
            self.assertLess(self.memory_kib(), 96 * 1024)
        head = (f"POST /api/check HTTP/1.1\r\nHost: {self.address}\r\nCookie: {self.cookie}\r\nOrigin: http://{self.address}\r\n"
                "Content-Type: application/json\r\n")
        self.assertRegex(self.raw(f"{head}Content-Length: {8 * 1024 * 1024 + 1}\r\n\r\n"), rb"^HTTP/1.1 413 ")
        fits = b'{"camera": 0, "behavior": "scene", "document": {"unit": "' + b"x" * (8 * 1024 * 1024 - 100)
        self.assertRegex(self.raw(f"{head}Content-Length: {len(fits)}\r\n\r\n".encode() + fits), rb"^HTTP/1.1 400 ")
        self.assertRegex(self.raw(f"GET / HTTP/1.1\r\nX: {'x' * 100000}\r\n\r\n"), rb"^HTTP/1.1 4\d\d ")
        for connection in silent:
            self.assertEqual(connection.recv(1), b"")
        dribbler.join(timeout=60)
        for seconds in (time.monotonic() - begun, *took):
            self.assertGreater(seconds, 25)
        self.assertLess(took[0], 60)
        self.assertEqual(self.ask("GET", "/")[0], 200)


class Start(unittest.TestCase):
    def setUp(self):
        self.folder = Path(tempfile.mkdtemp())
        self.addCleanup(lambda: subprocess.run(["rm", "-rf", self.folder], check=True))

    def serve(self, status="200 OK", body=PNG, headers=""):
        """A server of one answer; the paths that it was asked for."""
        asked = []

        def one(connection):
            request = b""
            while b"\r\n\r\n" not in request:
                request += connection.recv(65536)
            asked.append(request.split()[1].decode())
            connection.sendall(f"HTTP/1.1 {status}\r\n{headers}Content-Length: {len(body)}\r\nConnection: close\r\n\r\n".encode() + body)

        listener = Listener(one)
        self.addCleanup(listener.close)
        return f"http://127.0.0.1:{listener.port}/snapshot", asked

    def test_a_wrong_picture_ends_the_start_with_a_sentence(self):
        for name, data in (("text.png", b"<svg/>"), ("empty.jpg", b""), ("large.png", PNG + bytes(16 * 1024 * 1024))):
            (self.folder / name).write_bytes(data)
        redirect, _ = self.serve("302 Found", b"", "Location: http://localhost:9/other.png\r\n")
        around, asked = self.serve("302 Found", b"", "Location: /again\r\n")
        pictures = [self.folder / name for name in ("text.png", "empty.jpg", "large.png", "missing.png", ".")]
        pictures += [self.serve(body=b"<html>")[0], self.serve("404 Not Found")[0], self.serve(body=PNG + bytes(16 * 1024 * 1024))[0],
                     redirect, around, "http://127.0.0.1:9/x", "http://nowhere.invalid/x",
                     "http://", "http://:80/x", "http://127.0.0.1:99999/x", "http://u:p@127.0.0.1/x", "http://[::1/x"]
        for picture in pictures:
            with self.subTest(picture=picture):
                code, said = refused("--url", "http://127.0.0.1:9/", "--picture", picture)
                self.assertEqual(code, 4, said)
                self.assertRegex(said, r"^varlo-analytics: The picture .*\.\n$")
                self.assertNotRegex(said, "SOAP|soap")
        self.assertLess(len(asked), 10)

    def test_a_slow_picture_ends_after_ten_seconds(self):
        def dribble(connection):
            connection.sendall(b"HTTP/1.1 200 OK\r\nContent-Length: 1000\r\n\r\n")
            for _ in range(100):
                connection.sendall(b"x")
                time.sleep(0.5)

        listener = Listener(dribble)
        self.addCleanup(listener.close)
        begun = time.monotonic()
        code, said = refused("--url", "http://127.0.0.1:9/", "--picture", f"http://127.0.0.1:{listener.port}/")
        self.assertEqual(code, 4, said)
        self.assertGreater(time.monotonic() - begun, 8)
        self.assertLess(time.monotonic() - begun, 30)

    def test_redirects_share_the_ten_seconds(self):
        def redirect(connection):
            time.sleep(4)
            connection.sendall(b"HTTP/1.1 302 Found\r\nLocation: /again\r\nContent-Length: 0\r\nConnection: close\r\n\r\n")

        listener = Listener(redirect)
        self.addCleanup(listener.close)
        code, said = refused("--url", "http://127.0.0.1:9/", "--picture", f"http://127.0.0.1:{listener.port}/")
        self.assertEqual(code, 4, said)
        self.assertNotIn("again and again", said)

    def test_a_picture_by_address_is_fetched_anew_each_time_also_by_a_redirect_on_its_host(self):
        sent = [PNG, PNG, b"now it is text", PNG]
        asked = []

        def one(connection):
            path = connection.recv(65536).split()[1].decode()
            if path == "/snapshot":
                connection.sendall(b"HTTP/1.1 302 Found\r\nLocation: /live\r\nContent-Length: 0\r\nConnection: close\r\n\r\n")
                return
            asked.append(path)
            body = sent.pop(0)
            connection.sendall(f"HTTP/1.1 200 OK\r\nContent-Length: {len(body)}\r\nConnection: close\r\n\r\n".encode() + body)

        listener = Listener(one)
        self.addCleanup(listener.close)
        process, port, token = start_console("--url", "http://127.0.0.1:9/", "--picture", f"http://127.0.0.1:{listener.port}/snapshot")
        self.addCleanup(process.communicate)
        self.addCleanup(process.terminate)
        cookie = cookie_of(port, token)
        got = []
        for _ in range(3):
            connection = http.client.HTTPConnection("127.0.0.1", port, timeout=60)
            connection.request("GET", "/picture?url=http://127.0.0.1:9/", headers=cookie)
            response = connection.getresponse()
            got.append((response.status, response.getheader("Content-Type"), response.read()))
        self.assertEqual(got[0], (200, "image/png", PNG))
        self.assertEqual(got[1][:2], (422, "application/json"))
        self.assertIn("neither a JPEG nor a PNG", json.loads(got[1][2])["error"])
        self.assertEqual(got[2], (200, "image/png", PNG))
        self.assertEqual(asked, ["/live"] * 4)

    def test_a_command_line_that_contradicts_itself(self):
        hosts = self.folder / "hosts"
        hosts.write_text("http://127.0.0.1:9/\n")
        for words in (("--hosts", hosts, "--url", "http://127.0.0.1:9/"), ("--port", "70000"), ("--frame", "0x5"),
                      ("--hosts", self.folder / "missing"), ("extra",)):
            code, said = refused(*words)
            self.assertIn(code, (2, 4), said)
            self.assertTrue(said.startswith("varlo-analytics: "), said)
        self.assertEqual(refused("--hosts", hosts, "--url", "http://127.0.0.1:9/")[0], 2)

    def test_a_port_that_is_taken_is_said(self):
        with socket.create_server(("127.0.0.1", 0)) as taken:
            code, said = refused("--port", taken.getsockname()[1])
        self.assertEqual(code, 2)
        self.assertIn("--port", said)

    def test_open_starts_the_desktops_browser_with_the_address(self):
        program = self.folder / "xdg-open"
        program.write_text(f'#!/bin/sh\nprintf "%s" "$1" >{self.folder}/opened.part\nmv {self.folder}/opened.part {self.folder}/opened\n')
        program.chmod(stat.S_IRWXU)
        process, port, token = start_console("--url", "http://127.0.0.1:9/", "--open",
                                             environment={"PATH": f"{self.folder}:{os.environ['PATH']}"})
        opened = self.folder / "opened"
        for _ in range(600):
            if opened.exists():
                break
            time.sleep(0.05)
        process.send_signal(signal.SIGINT)
        process.communicate()
        self.assertEqual(process.returncode, 0)
        self.assertEqual(opened.read_text(), f"http://127.0.0.1:{port}/?token={token}")

    def test_passwords_and_xml_never_reach_the_page(self):
        secret = self.folder / "secret"
        secret.write_text("correct horse battery\n")
        with Host() as host:
            host.call("CreateProfile", name="Plain")
            process, port, token = start_console("--url", host.url, "--user", "installer", "--password-file", secret)
            self.addCleanup(process.communicate)
            self.addCleanup(process.terminate)
            cookie = cookie_of(port, token)
            connection = http.client.HTTPConnection("127.0.0.1", port, timeout=60)
            loitering = "urn:varlo-com:AlgorithmId:LoiteringDetection:1"
            for path in ("console", "camera?camera=0", "behaviors?camera=0&profile=1", "document?camera=0&profile=1&behavior=scene",
                         f"document?camera=0&profile=1&behavior={loitering.replace(':', '%3A')}", "document?camera=0&profile=99&behavior=scene"):
                connection.request("GET", f"/api/{path}", headers=cookie)
                response = connection.getresponse()
                text = response.read().decode()
                self.assertNotIn("correct horse", text)
                self.assertNotIn("installer", text)
                self.assertNotRegex(text, r"</|<\?xml")
                json.loads(text)


def main():
    """All classes beside each other, since the thirty seconds of one and the ten of another are spent waiting."""
    if sys.argv[1:] not in ([], ["-v"]):
        unittest.main()
    classes = [one for one in globals().values() if isinstance(one, type) and issubclass(one, unittest.TestCase)]
    suites = list(map(unittest.defaultTestLoader.loadTestsFromTestCase, classes))
    with ThreadPoolExecutor(len(suites)) as pool:
        results = list(pool.map(lambda suite: unittest.TextTestRunner(verbosity=2).run(suite), suites))
    assert sum(result.testsRun for result in results) > 0
    sys.exit(not all(result.wasSuccessful() for result in results))


if __name__ == "__main__":
    main()
