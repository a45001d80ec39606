"""Who gets in: TLS, client certificates, users and passwords, and addresses that others can reach."""

import shutil
import socket
import ssl
import subprocess
import tempfile
import time
import unittest
from pathlib import Path

import requests
import zeep
from lxml import etree

import service
from service import CONTENT_TYPES, ENVELOPES, GENERATED, Host, envelope

SETTINGS = """<settings><server><endpoint name="kestrile-server" {attributes}/>{users}</server></settings>"""
TLS = 'certificate="tls/camera.pem" privateKey="tls/camera.key"'
MUTUAL = TLS + ' clientCertificates="tls/authority.pem"'
USERS = "<users>users</users>"
REQUEST = envelope("GetProfileList")


def openssl(*arguments, **options):
    return subprocess.run(["openssl", *map(str, arguments)], check=True, capture_output=True, **options).stdout


def make_authority(folder, name):
    openssl("req", "-x509", "-newkey", "ec", "-pkeyopt", "ec_paramgen_curve:P-256", "-nodes", "-days", "60",
            "-subj", f"/CN={name}", "-keyout", folder / f"{name}.key", "-out", folder / f"{name}.pem")


def make_certificate(folder, name, authority, subject=None, days="60"):
    openssl("req", "-newkey", "ec", "-pkeyopt", "ec_paramgen_curve:P-256", "-nodes", "-subj", f"/CN={subject or name}",
            "-keyout", folder / f"{name}.key", "-out", folder / f"{name}.csr")
    (folder / "extensions").write_text("subjectAltName=IP:127.0.0.1\n")
    openssl("x509", "-req", "-in", folder / f"{name}.csr", "-CA", folder / f"{authority}.pem", "-CAkey",
            folder / f"{authority}.key", "-CAcreateserial", "-days", days, "-extfile", folder / "extensions",
            "-out", folder / f"{name}.pem")


def user(name, password):
    return f"{name}:" + openssl("passwd", "-6", password).decode()


class AccessTest(service.StartTest):
    @classmethod
    def setUpClass(cls):
        cls.certificates = Path(tempfile.mkdtemp(prefix="varlo-tls-"))
        cls.addClassCleanup(shutil.rmtree, cls.certificates, True)
        for authority in "authority", "stranger-authority":
            make_authority(cls.certificates, authority)
        make_certificate(cls.certificates, "camera", "authority")
        make_certificate(cls.certificates, "renewed", "authority")
        make_certificate(cls.certificates, "client", "authority")
        make_certificate(cls.certificates, "stranger", "stranger-authority", subject="client")
        cls.line = user("ann", "secret")

    def setUp(self):
        self.host = Host()
        self.addCleanup(self.host.clean)
        self.addCleanup(self.host.stop)
        self.tls = self.host.folder / "tls"
        shutil.copytree(self.certificates, self.tls)
        self.users = self.host.folder / "users"
        self.users.write_text(self.line)

    def settings(self, attributes="", users=""):
        self.host.settings.write_text(SETTINGS.format(attributes=attributes, users=users))

    def start(self, attributes="", users="", client=None):
        self.settings(attributes, users)
        self.host.start()
        self.assertEqual(self.host.scheme, "https" if attributes else "http")
        if attributes:
            self.host.tls = ssl.create_default_context(cafile=str(self.tls / "authority.pem"))
            if client:
                self.host.tls.load_cert_chain(self.tls / f"{client}.pem", self.tls / f"{client}.key")

    def status(self, name=None, password=None, version="1.1"):
        headers = requests.auth._basic_auth_str(name, password) if name else None
        return self.host.post(envelope("GetProfileList", version), version,
                              {"Authorization": headers} if headers else None)


class Clients(AccessTest):
    """zeep and curl with each kind of access."""

    def zeep(self, user=None, client=None):
        session = requests.Session()
        session.verify = str(self.tls / "authority.pem")
        session.trust_env = False
        self.addCleanup(session.close)
        session.auth = user
        if client:
            session.cert = (str(self.tls / f"{client}.pem"), str(self.tls / f"{client}.key"))
        transport = zeep.transports.Transport(session=session, operation_timeout=60)
        wsdl = zeep.Client(str(GENERATED / "VideoAnalytics.wsdl"), transport=transport)
        for number, binding in enumerate(wsdl.wsdl.bindings):
            profile = wsdl.create_service(binding, self.host.url).CreateProfile(f"{number}")
            self.assertGreater(profile, 0)

    def curl(self, *options):
        answer = subprocess.run(["curl", "--silent", "--noproxy", "*", "--max-time", "60", "--data-binary", REQUEST,
                                 "-H", "Content-Type: text/xml", "-w", " %{http_code}", *map(str, options),
                                 self.host.url], capture_output=True, text=True)
        return answer.returncode, answer.stdout.rpartition(" ")[2]

    def test_plain(self):
        self.start()
        self.zeep()
        self.assertEqual(self.curl(), (0, "200"))

    def test_tls(self):
        self.start(TLS)
        self.zeep()
        self.assertEqual(self.curl("--cacert", self.tls / "authority.pem"), (0, "200"))
        self.assertEqual(self.curl("--cacert", self.tls / "stranger-authority.pem")[0], 60)

    def test_client_certificate(self):
        self.start(MUTUAL, client="client")
        self.zeep(client="client")
        trust = ["--cacert", self.tls / "authority.pem"]
        for client, code in ("client", "200"), ("stranger", "000"):
            own = ["--cert", self.tls / f"{client}.pem", "--key", self.tls / f"{client}.key"]
            self.assertEqual(self.curl(*trust, *own)[1], code)
        self.assertEqual(self.curl(*trust)[1], "000")

    def test_passwords(self):
        for attributes, trust in ("", ()), (TLS, ("--cacert", self.tls / "authority.pem")):
            self.start(attributes, USERS)
            self.zeep(user=("ann", "secret"))
            self.assertEqual(self.curl("--user", "ann:secret", *trust), (0, "200"))
            self.assertEqual(self.curl("--anyauth", "--user", "ann:secret", *trust), (0, "200"))
            self.assertEqual(self.curl("--user", "ann:wrong", *trust), (0, "401"))
            self.assertEqual(self.curl(*trust), (0, "401"))
            self.host.stop()


class Tls(AccessTest):
    def s_client(self, *options, send=REQUEST):
        """What `openssl s_client` reports of one request."""
        message = f"POST / HTTP/1.0\nContent-Type: text/xml\nContent-Length: {len(send)}\n\n{send}"
        answer = subprocess.run(["openssl", "s_client", "-connect", f"127.0.0.1:{self.host.port}", "-ign_eof", "-crlf",
                                 "-CAfile", self.tls / "authority.pem", *options], input=message, capture_output=True,
                                text=True, timeout=60)
        return answer.stdout + answer.stderr

    def test_scan_of_versions(self):
        self.start(TLS)
        for version in "-tls1", "-tls1_1":
            answer = self.s_client(version, "-cipher", "ALL:@SECLEVEL=0")
            self.assertIn("alert protocol version", answer)
            self.assertNotIn("200 OK", answer)
        for version, name in ("-tls1_2", "TLSv1.2"), ("-tls1_3", "TLSv1.3"):
            answer = self.s_client(version)
            self.assertIn(f"New, {name}, Cipher is", answer)
            self.assertIn("Verify return code: 0 (ok)", answer)
            self.assertIn("200 OK", answer)
        self.assertNotIn("200 OK", self.s_client("-tls1_2", "-cipher", "AES128-SHA:@SECLEVEL=0"))

    def test_a_client_without_a_certificate_is_told_why(self):
        self.start(MUTUAL, client="client")
        for version in "-tls1_2", "-tls1_3":
            answer = self.s_client(version)
            self.assertRegex(answer, "alert (certificate required|handshake failure)")
            self.assertNotIn("200 OK", answer)
            stranger = self.s_client(version, "-cert", self.tls / "stranger.pem", "-key", self.tls / "stranger.key")
            self.assertIn("alert unknown ca", stranger)
            own = self.s_client(version, "-cert", self.tls / "client.pem", "-key", self.tls / "client.key")
            self.assertIn("200 OK", own)

    def test_large_requests_and_answers(self):
        self.start(TLS)
        name = "n" * 255
        for _ in range(200):
            self.host.call("CreateProfile", name=name)
        listed = self.host.call("GetProfileList")
        self.assertEqual({profile.text for profile in listed.iter("profile")}, {name})
        status, _, text = self.host.post(REQUEST + " " * 4_000_000)
        self.assertEqual(status, 200)
        status, _, text = self.host.post("x" * 10_000_000)
        self.assertEqual(status, 413)

    def test_whoever_speaks_something_else_harms_nobody(self):
        self.start(TLS)
        answer = self.host.raw(b"POST / HTTP/1.1\r\nContent-Length: 10000\r\n\r\n" + b"x" * 10000)
        self.assertTrue(answer.startswith(b"HTTP/1.1 400 "), answer)
        self.assertIn(b"a URL that begins with https", answer)
        for noise in b"\0" * 100, b"\x16\x03\x01\x02\x00\x01", b"\x16\x03\x01\xff\xff" + b"x" * 70000:
            with socket.create_connection(("127.0.0.1", self.host.port), timeout=60) as connection:
                connection.sendall(noise)
                connection.shutdown(socket.SHUT_WR)
                self.assertNotIn(b"HTTP", service.read_all(connection))
        self.host.call("GetProfileList")

    def test_connections_that_never_finish_their_handshake(self):
        self.settings(TLS)
        self.host.settings.write_text(self.host.settings.read_text().replace(
            "</server>", "<requestSeconds>2</requestSeconds></server>"))
        self.host.start()
        self.host.tls = ssl.create_default_context(cafile=str(self.tls / "authority.pem"))
        silent = [socket.create_connection(("127.0.0.1", self.host.port), timeout=60) for _ in range(50)]
        for connection in silent[25:]:
            connection.sendall(b"\x16\x03\x01")
        self.host.call("GetProfileList")
        for connection in silent:
            self.assertNotIn(b"HTTP", service.read_all(connection))
            connection.close()

    def test_memory_of_idle_connections(self):
        self.start(TLS)
        self.host.call("GetProfileList")
        before = self.host.memory_kib()
        idle = [self.host.tls.wrap_socket(socket.create_connection(("127.0.0.1", self.host.port), timeout=60),
                                          server_hostname="127.0.0.1") for _ in range(200)]
        each = (self.host.memory_kib() - before) / len(idle)
        for connection in idle:
            connection.close()
        print(f"an idle TLS connection takes {each:.0f} KiB")
        if not service.SANITIZED:
            self.assertLess(each, 100)

    def served(self):
        der = ssl.PEM_cert_to_DER_cert(ssl.get_server_certificate(("127.0.0.1", self.host.port), timeout=60))
        return next(name for name in ("camera", "renewed")
                    if ssl.PEM_cert_to_DER_cert((self.tls / f"{name}.kept").read_text()) == der)

    def test_a_changed_certificate_is_taken_over(self):
        for name in "camera", "renewed":
            shutil.copy(self.tls / f"{name}.pem", self.tls / f"{name}.kept")
        self.start(TLS)
        self.assertEqual(self.served(), "camera")
        (self.tls / "renewed.pem").replace(self.tls / "camera.pem")
        for _ in range(3):  # a certificate without its key
            self.assertEqual(self.served(), "camera")
        (self.tls / "renewed.key").replace(self.tls / "camera.key")
        self.assertEqual(self.served(), "renewed")
        (self.tls / "camera.key").unlink()
        for _ in range(3):
            self.assertEqual(self.served(), "renewed")
        self.host.call("GetProfileList")
        self.host.stop()
        said = [line for line in self.host.errors if "listening" not in line and "the certificate ends" not in line]
        self.assertEqual(len(said), 3, said)
        self.assertIn("camera.key: it is not the private key of the certificate in ", said[0])
        self.assertIn("camera.key: what is in it now was taken over", said[1])
        self.assertIn("camera.key: it can't be read (No such file", said[2])

    def test_a_handshake_goes_on_while_the_certificate_changes(self):
        self.start(TLS)
        received, sent = ssl.MemoryBIO(), ssl.MemoryBIO()
        client = self.host.tls.wrap_bio(received, sent, server_hostname="127.0.0.1")
        with socket.create_connection(("127.0.0.1", self.host.port), timeout=60) as connection:
            def exchange():
                connection.sendall(sent.read())
                received.write(connection.recv(65536))
            with self.assertRaises(ssl.SSLWantReadError):
                client.do_handshake()
            exchange()  # now the service has begun
            before = ssl.get_server_certificate(("127.0.0.1", self.host.port), timeout=60)
            for kind in "pem", "key":
                (self.tls / f"renewed.{kind}").replace(self.tls / f"camera.{kind}")
            self.assertNotEqual(ssl.get_server_certificate(("127.0.0.1", self.host.port), timeout=60), before)
            def until_done(step):
                while True:
                    try:
                        return step()
                    except ssl.SSLWantReadError:
                        exchange()
            until_done(client.do_handshake)
            client.write(b"GET /health HTTP/1.1\r\nHost: camera\r\nConnection: close\r\n\r\n")
            connection.sendall(sent.read())
            answer = until_done(client.read)
            self.assertTrue(answer.startswith(b"HTTP/1.1 "), answer)
        self.host.call("GetProfileList")

    def test_a_changed_authority_is_taken_over(self):
        self.start(MUTUAL, client="client")
        self.host.call("GetProfileList")
        shutil.copy(self.tls / "stranger-authority.pem", self.tls / "new")
        (self.tls / "new").replace(self.tls / "authority.pem")
        with self.assertRaises(OSError):
            self.host.post(REQUEST)
        self.host.tls.load_cert_chain(self.tls / "stranger.pem", self.tls / "stranger.key")
        self.host.call("GetProfileList")


class Passwords(AccessTest):
    def test_401_in_both_versions(self):
        self.start(users=USERS)
        for version in "1.1", "1.2":
            for credentials in (None, None), ("ann", "wrong"), ("bob", "secret"):
                status, headers, text = self.status(*credentials, version)
                self.assertEqual(status, 401)
                self.assertRegex(headers["WWW-Authenticate"], '^Basic realm="')
                self.assertEqual(headers["Content-Type"], CONTENT_TYPES[version])
                with self.assertRaises(service.Fault) as caught:
                    service.body_of(text, version)
                self.assertEqual(caught.exception.code, {"1.1": "SOAP-ENV:Client", "1.2": "SOAP-ENV:Sender"}[version])
                self.assertIn("user name and password", caught.exception.text)
            self.assertEqual(self.status("ann", "secret", version)[0], 200)

    def test_users_come_and_go(self):
        self.start(users=USERS)
        self.assertEqual(self.status("ann", "secret")[0], 200)
        self.users.write_text(user("bob", "other"))
        self.assertEqual(self.status("ann", "secret")[0], 401)
        self.assertEqual(self.status("bob", "other")[0], 200)
        self.users.unlink()
        for _ in range(3):
            self.assertEqual(self.status("bob", "other")[0], 200)
        self.host.stop()
        said = [line for line in self.host.errors if "listening" not in line]
        self.assertEqual(len(said), 2, said)
        self.assertIn(f"{self.users}: what is in it now was taken over", said[0])
        self.assertIn(f"{self.users}: it can't be read (No such file", said[1])

    def test_guessing_slows_down_but_hurts_no_user(self):
        self.start(users=USERS)
        self.assertEqual(self.status("ann", "secret")[0], 200)
        start = time.monotonic()
        for number in range(8):
            self.assertEqual(self.status("ann", f"guess {number}")[0], 401)
        # The seventh waits a quarter of a second, the eighth half a second more.
        self.assertGreater(time.monotonic() - start, 0.7)
        self.assertEqual(self.status("ann", "secret")[0], 200)


class Start(AccessTest):
    def test_addresses_that_others_can_reach(self):
        for address in "0.0.0.0:0", "[::]:0", "192.0.2.1:80":
            for attributes, users, text in ("", "", "can be reached from outside"), (TLS, "", "can be reached"), \
                    ("", USERS, "unencrypted"), ('insecure="1"', USERS, "unencrypted"):
                with self.subTest(address=address, attributes=attributes, users=users):
                    self.settings(attributes, users)
                    self.host.options = ["--listen", address]
                    self.refused_to_start(self.host.settings, text)

    def test_addresses_that_others_may_reach(self):
        for attributes, users, scheme in ('insecure="1"', "", "http"), (TLS, USERS, "https"), (MUTUAL, "", "https"):
            self.settings(attributes, users)
            command = self.host.command()
            command[command.index("--listen") + 1] = "0.0.0.0:0"
            with subprocess.Popen(command, stderr=subprocess.PIPE, text=True) as process:
                said = process.stderr.readline()
                process.terminate()
                self.assertRegex(said, rf"^listening on {scheme}://0\.0\.0\.0:\d+/\n$")
                self.assertEqual(process.wait(timeout=60), 0)

    def test_files_that_cannot_be_used(self):
        (self.tls / "empty").write_text("")
        (self.tls / "half").write_text((self.tls / "camera.pem").read_text()[:300])
        openssl("ec", "-in", self.tls / "camera.key", "-out", self.tls / "locked.key", "-aes128", "-passout", "pass:abcd")
        (self.host.folder / "plain").write_text("# users\nann:secret\n")
        for attributes, users, *texts in (
                ('certificate="tls/camera.pem"', "", "only one of certificate and privateKey"),
                (TLS.replace("camera.pem", "none.pem"), "", "none.pem: it can't be read (No such file"),
                (TLS.replace("camera.pem", "empty"), "", "empty: it can't be read as certificates"),
                (TLS.replace("camera.pem", "half"), "", "half: it can't be read as certificates"),
                (TLS.replace("camera.key", "camera.pem"), "", "camera.pem: it can't be read as a private key"),
                (TLS.replace("camera.key", "locked.key"), "", "locked.key: it can't be read", "without a passphrase"),
                (TLS.replace("camera.key", "renewed.key"), "", "renewed.key: it is not the private key", "camera.pem"),
                (MUTUAL.replace("authority", "camera.key").replace("key.pem", "key"), "",
                 "camera.key: it can't be read as certificates"),
                ("", "<users>none</users>", "none: it can't be read (No such file"),
                ("", "<users>plain</users>", "plain:2: the user \"ann\" can't log in", "htpasswd -B")):
            with self.subTest(attributes=attributes, users=users):
                self.settings(attributes, users)
                self.refused_to_start(*texts)


if __name__ == "__main__":
    unittest.main()
