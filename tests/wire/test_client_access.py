"""The command-line client: what it says when there is no answer or a strange one, TLS, and passwords."""

import base64
import fcntl
import json
import os
import pty
import ssl
import subprocess
import tempfile
import termios
import time
import unittest
from pathlib import Path

import service
import test_access
from command import CLIENT, ClientTest, Host, Listener, main, run

FAULT = ("<e:Envelope xmlns:e='http://schemas.xmlsoap.org/soap/envelope/'><e:Body><e:Fault><faultcode>e:Server"
         "</faultcode><faultstring>{}</faultstring></e:Fault></e:Body></e:Envelope>")


class Troubles(unittest.TestCase):
    def trouble(self, serve, code, *texts, words=("profile", "list")):
        with Listener(serve) as listener:
            ran = run(*words, url=f"http://127.0.0.1:{listener.port}/", timeout=200)
        self.assertEqual((ran.code, ran.out), (code, ""), ran.err)
        self.assertRegex(ran.err, r"^varlo-analytics: [^\n]*\.\n$")
        self.assertNotRegex(ran.err, r"SOAP-ENV|soap_|\x1b")
        for text in texts:
            self.assertIn(text, ran.err)

    def test_a_silent_service_and_one_that_never_ends_take_bounded_time(self):
        def drip(connection):
            head = FAULT.partition("<e:Fault>")[0]
            connection.sendall(b"HTTP/1.1 200 OK\r\nContent-Type: text/xml\r\n\r\n" + head.encode())
            while True:
                connection.sendall(b" ")
                time.sleep(0.2)
        for serve in (drip, lambda connection: time.sleep(600)):
            started = time.monotonic()
            self.trouble(serve, 3, "took too long", "--timeout", words=("profile", "list", "--timeout", "2"))
            self.assertLess(time.monotonic() - started, 60)


class Usage(unittest.TestCase):
    def test_every_command_has_help_with_an_example(self):
        pending, seen = [()], []
        while pending:
            words = pending.pop()
            text = run(*words, "--help").out
            seen.append(words)
            if words:
                self.assertIn("varlo-analytics " + " ".join(words[:1]), text)
            lines = text.partition("Subcommands:\n")[2].partition("\n\n")[0].splitlines()
            pending += [words + (line.split()[0],) for line in lines if line.startswith("  ") and line[2] != " "]
            if not lines:
                self.assertRegex(text, r"Examples:\n  varlo-analytics .*" + words[-1])
        self.assertIn(("control", "motion-detection", "off"), seen)
        self.assertGreater(len(seen), 40, seen)

    def test_completion_knows_the_commands_and_options(self):
        script = Path(service.os.environ["SOURCE"]) / "tools/completion/varlo-analytics"
        client = Path(service.os.environ["CLIENT"])

        def complete(*words):
            line = (f'PATH="{client.parent}:$PATH"; . "{script}"; COMP_WORDS=("$@"); COMP_CWORD=$(($# - 1)); '
                    f'_varlo_analytics; printf "%s\\n" "${{COMPREPLY[@]}}"')
            return subprocess.run(["bash", "-c", line, "bash", "varlo-analytics", *words], capture_output=True,
                                  text=True, timeout=120, check=True).stdout.split()
        self.assertEqual(complete("pro"), ["profile"])
        self.assertEqual(complete("behavior", "s"), ["set"])
        self.assertEqual(complete("--url", "x", "behavior", "set", "1", "loi"), ["loitering"])
        self.assertEqual(complete("plan", "--host"), ["--hosts", "--host-timeout"])
        self.assertEqual(complete("profile", "list", "--js"), ["--json"])
        self.assertEqual(complete("control", "motion-detection", "o"), ["on", "off"])
        self.assertEqual(complete("availability", "--with", "stop"), ["stopped-vehicle"])


def rest_of(terminal):
    shown = b""
    try:
        while read := os.read(terminal, 100):
            shown += read
    except OSError:  # The other end is closed.
        pass
    return shown


class Passwords(ClientTest):
    def setUp(self):
        super().setUp()
        self.asked = []

        def serve(connection):
            request = b""
            while b"Envelope>" not in request[-200:]:
                request += connection.recv(65536)
            line = [one for one in request.split(b"\r\n") if one.lower().startswith(b"authorization: basic ")]
            self.asked.append(base64.b64decode(line[0].split()[-1]).decode() if line else None)
            if self.asked[-1] != "eve:s\u00e4cret":
                connection.sendall(b'HTTP/1.1 401 Unauthorized\r\nWWW-Authenticate: Basic realm="x"\r\n'
                                   b"Content-Length: 0\r\nConnection: close\r\n\r\n")
                return
            with service.socket.create_connection(("127.0.0.1", self.host.port), timeout=60) as inside:
                inside.sendall(request)
                connection.sendall(service.read_all(inside))
        self.listener = Listener(serve)
        self.addCleanup(self.listener.close)
        self.url = f"http://127.0.0.1:{self.listener.port}/"

    def test_from_a_file_from_the_environment_or_not_at_all(self):
        path = self.host.folder / "password"
        path.write_text("s\u00e4cret\n", encoding="utf-8")
        words = ("--user", "eve", "profile", "list", "--json")
        self.assertEqual(run(*words, "--password-file", path, url=self.url).json, [])
        self.assertEqual(run(*words, url=self.url, environment={"VARLO_ANALYTICS_PASSWORD": "s\u00e4cret"}).json, [])
        wrong = run(*words, url=self.url, environment={"VARLO_ANALYTICS_PASSWORD": "no"})
        self.assertEqual(wrong.code, 3)
        self.assertIn("refuses the user eve or the password. Look at", wrong.err)
        none = run(*words, url=self.url)
        self.assertEqual(none.code, 2)
        self.assertIn("--password-file", none.err)
        self.assertEqual(run(*words, "--password-file", path.with_name("none"), url=self.url).code, 2)
        self.assertIn("--user", run("profile", "list", url=self.url).err)

    def test_asked_for_at_the_terminal_and_not_shown(self):
        master, slave = pty.openpty()
        self.addCleanup(os.close, master)
        with subprocess.Popen(
                [CLIENT, "--url", self.url, "--user", "eve", "profile", "list", "--json"], stdin=subprocess.DEVNULL,
                stdout=subprocess.PIPE, stderr=subprocess.PIPE, start_new_session=True,
                preexec_fn=lambda: fcntl.ioctl(slave, termios.TIOCSCTTY, 0)) as process:
            shown = b""
            while not shown.endswith(b"Password of eve: "):
                shown += os.read(master, 100)
            os.write(master, "s\u00e4cret\n".encode())
            out, err = process.communicate(timeout=120)
        self.assertEqual((process.returncode, out, err), (0, b"[]\n", b""))
        os.close(slave)
        self.assertEqual((shown + rest_of(master)).split(), [b"Password", b"of", b"eve:"])


class Service(test_access.AccessTest):
    """The service's own access control."""

    def client(self, *words):
        return run("profile", "list", "--json", "--cacert", self.tls / "authority.pem", *words, url=self.host.url,
                   environment={"VARLO_ANALYTICS_PASSWORD": "secret"})

    def test_certificate_and_password_together(self):
        self.start(test_access.MUTUAL, test_access.USERS, client="client")
        own = ("--cert", self.tls / "client.pem", "--key", self.tls / "client.key")
        known = self.client(*own, "--user", "ann")
        self.assertEqual((known.code, known.out, known.err), (0, "[]\n", ""))
        for words, text in ((own, "--user"), ((*own, "--user", "eve"), "refuses the user eve"),
                            (("--user", "ann"), "--cert")):
            ran = self.client(*words)
            self.assertEqual((ran.code, ran.out), (3, ""))
            self.assertIn(text, ran.err)


    def test_hosts_lines_and_cameras_bring_their_own_access(self):
        self.start(test_access.MUTUAL, test_access.USERS, client="client")
        (self.host.folder / "ann.password").write_text("secret\n")
        (self.host.folder / "wrong").write_text("wrong\n")
        keys = "cacert=tls/authority.pem cert=tls/client.pem key=tls/client.key"
        configuration = self.host.folder / "varlo-analytics"
        configuration.mkdir()
        lines = "\n".join(["url=" + self.host.url, "user=ann", "frame=640x480", "password-file=../ann.password",
                           *(key.replace("tls/", "../tls/") for key in keys.split())])
        (configuration / "cameras.ini").write_text(f"[gate]\n{lines}\n")
        variables = {"XDG_CONFIG_HOME": str(self.host.folder)}
        camera = lambda *words: run("--camera", "gate", *words, environment=variables)
        camera("profile", "create", "Day")
        self.assertEqual(camera("zone", "add", "Day", "loitering", "Gate", "40,40", "600,40", "600,400").code, 0)
        folder, file = self.host.folder / "day", self.host.folder / "hosts.txt"
        self.assertEqual(camera("export", "Day", folder).code, 0)
        with Host() as other:
            file.write_text(f"{self.host.url} user=ann password-file=ann.password {keys} frame=640x480\n{other.url}\n")
            ran = run("plan", folder, "--hosts", file, "--json", "--out", self.host.folder / "day.plan")
            self.assertEqual([json.loads(line)["state"] for line in sorted(ran.out.splitlines(), key=lambda one: other.url in one)],
                             ["same", "differs"])
            self.assertNotIn("secret", (self.host.folder / "day.plan").read_text())
            self.assertEqual(run("apply", self.host.folder / "day.plan").code, 0)
            # Scaled to the frame of the other one.
            zone = run("zone", "list", "Day", "loitering", "--json", url=other.url).json[0]
            self.assertEqual(zone["points"], [[20, 20], [300, 20], [300, 200]])
        file.write_text("gate\n")
        self.assertEqual(run("plan", folder, "--hosts", file, "--json", environment=variables).json["state"], "same")
        for line, said in ((f"user=ann password-file=wrong {keys}", "refuses the user ann or the password"),
                           ("user=ann password-file=ann.password cacert=tls/authority.pem", "--cert"), (keys, "wants a user and a password"),
                           (f"user=ann password-file=ann.password {keys.replace('authority', 'stranger-authority')}", "its authority is unknown here")):
            file.write_text(f"{self.host.url} {line}\n")
            ran = run("plan", folder, "--hosts", file, "--json")
            self.assertEqual((ran.code, ran.json["state"]), (1, "unreachable"), ran.out)
            self.assertIn(said, ran.json["error"])


class Tls(ClientTest):
    """The host behind a TLS end of Python's."""

    @classmethod
    def setUpClass(cls):
        cls.folder = Path(tempfile.mkdtemp(prefix="varlo-tls-"))
        cls.addClassCleanup(service.shutil.rmtree, cls.folder)
        for name, extension in (("server", "IP:127.0.0.1"), ("other", "DNS:elsewhere.example"), ("client", "DNS:client")):
            subprocess.run(["openssl", "req", "-x509", "-newkey", "ec", "-pkeyopt", "ec_paramgen_curve:prime256v1", "-nodes",
                            "-days", "60", "-subj", f"/CN={name}", "-addext", f"subjectAltName={extension}",
                            "-keyout", f"{name}.key", "-out", f"{name}.pem"], cwd=cls.folder, check=True,
                           capture_output=True, timeout=120)

    def end(self, name="server", client=None):
        context = ssl.SSLContext(ssl.PROTOCOL_TLS_SERVER)
        context.load_cert_chain(self.folder / f"{name}.pem", self.folder / f"{name}.key")
        if client:
            context.verify_mode = ssl.CERT_REQUIRED
            context.load_verify_locations(self.folder / client)

        def serve(connection):
            with context.wrap_socket(connection, server_side=True) as outside, \
                    service.socket.create_connection(("127.0.0.1", self.host.port), timeout=60) as inside:
                request = b""
                while b"Envelope>" not in request[-200:]:
                    request += outside.recv(65536)
                inside.sendall(request)
                outside.sendall(service.read_all(inside))
                outside.unwrap()
        listener = Listener(serve)
        self.addCleanup(listener.close)
        return f"https://127.0.0.1:{listener.port}/"

    def test_only_a_certificate_that_is_trusted_and_of_this_host_will_do(self):
        url = self.end()
        self.client("profile", "create", "Day")
        listed = run("profile", "list", "--json", "--cacert", self.folder / "server.pem", url=url)
        self.assertEqual((listed.code, listed.err), (0, ""))
        self.assertEqual(listed.json[0]["name"], "Day")
        for ran in (run("profile", "list", url=url), run("profile", "list", "--cacert", self.folder / "other.pem", url=url),
                    run("profile", "list", "--cacert", self.folder / "other.pem", url=self.end("other"))):
            self.assertEqual((ran.code, ran.out), (3, ""))
            self.assertRegex(ran.err, r"^varlo-analytics: The certificate of \S+ isn't trusted: it is .*\.\n$")
        missing = run("profile", "list", "--cacert", self.folder / "none.pem", url=url)
        self.assertEqual(missing.code, 4)
        self.assertIn("none.pem: No such file or directory", missing.err)

    def test_our_own_certificate(self):
        url = self.end(client="client.pem")
        words = ("profile", "list", "--json", "--cacert", self.folder / "server.pem")
        known = run(*words, "--cert", self.folder / "client.pem", "--key", self.folder / "client.key", url=url)
        self.assertEqual((known.code, known.err), (0, ""))
        self.assertEqual(known.json, [])
        unknown = run(*words, url=url)
        self.assertEqual((unknown.code, unknown.out), (3, ""))
        self.assertIn("--cert", unknown.err)
        mixed = run(*words, "--cert", self.folder / "client.pem", "--key", self.folder / "other.key", url=url)
        self.assertEqual(mixed.code, 4)
        self.assertIn("other.key", mixed.err)

    def test_a_service_without_tls_and_one_that_never_shakes_hands(self):
        plain = run("profile", "list", url=self.host.url.replace("http:", "https:"))
        self.assertEqual(plain.code, 3)
        self.assertIn("No TLS connection", plain.err)
        with Listener(lambda connection: time.sleep(600)) as silent:
            started = time.monotonic()
            ran = run("profile", "list", "--timeout", "2", url=f"https://127.0.0.1:{silent.port}/", timeout=300)
            self.assertLess(time.monotonic() - started, 100)
        self.assertEqual(ran.code, 3)
        self.assertIn("took too long", ran.err)


if __name__ == "__main__":
    main()
