"""Running it where others can reach it: sessions, revocation, health, metrics, SIGHUP, the end."""

import http.client
import re
import signal
import socket
import ssl
import statistics
import subprocess
import time
import unittest

import service
from service import CONTENT_TYPES, envelope
from test_access import MUTUAL, TLS, USERS, AccessTest, make_certificate, openssl, user

REQUEST = envelope("GetProfileList").encode()
HEAD = f"POST / HTTP/1.1\r\nHost: camera\r\nContent-Type: {CONTENT_TYPES['1.1']}\r\nContent-Length: {len(REQUEST)}\r\n\r\n"


class Sessions(AccessTest):
    def connect(self, session=None, version=ssl.TLSVersion.TLSv1_3, client=None):
        """One request; returns whether it went on with a session, and the session that it got."""
        context = self.context
        context.minimum_version = context.maximum_version = version
        with socket.create_connection(("127.0.0.1", self.host.port), timeout=60) as plain, \
                context.wrap_socket(plain, server_hostname="127.0.0.1", session=session) as connection:
            connection.sendall(HEAD.encode() + REQUEST)
            answer = service.read_all(connection)
            self.assertTrue(answer.startswith(b"HTTP/1.1 200 "), answer)
            return connection.session_reused, connection.session

    def start(self, *arguments, **options):
        super().start(*arguments, **options)
        self.context = self.host.tls

    def test_a_ticket_counts_once(self):
        self.start(TLS)
        reused, session = self.connect()
        self.assertFalse(reused)
        reused, following = self.connect(session)
        self.assertTrue(reused)
        self.assertFalse(self.connect(session)[0])
        self.assertTrue(self.connect(following)[0])

    def test_tls_1_2_resumes_too(self):
        self.start(TLS)
        session = self.connect(version=ssl.TLSVersion.TLSv1_2)[1]
        self.assertTrue(self.connect(session, version=ssl.TLSVersion.TLSv1_2)[0])

    def test_no_seconds_no_session(self):
        self.start(TLS + ' sessionSeconds="0"')
        for version in ssl.TLSVersion.TLSv1_2, ssl.TLSVersion.TLSv1_3:
            session = self.connect(version=version)[1]
            self.assertFalse(session is not None and self.connect(session, version=version)[0])

    def test_a_session_ends_after_its_seconds(self):
        self.start(TLS + ' sessionSeconds="1"')
        session = self.connect()[1]
        time.sleep(2.1)
        self.assertFalse(self.connect(session)[0])

    def test_what_ends_all_sessions(self):
        revoked = self.revocation_list()
        (self.tls / "revoked.pem").write_bytes(revoked)
        self.start(MUTUAL + ' revoked="tls/revoked.pem"', "<users>users</users><roles/>", client="client")

        def put(path, data):
            new = path.with_suffix(".new")
            new.write_bytes(data)
            new.replace(path)

        def ask(session=None):
            with socket.create_connection(("127.0.0.1", self.host.port), timeout=60) as plain, \
                    self.context.wrap_socket(plain, server_hostname="127.0.0.1", session=session) as connection:
                connection.sendall(HEAD.encode() + REQUEST)
                service.read_all(connection)
                return connection.session_reused, connection.session

        text = self.host.settings.read_text()
        for path, data in (
                (self.tls / "camera.pem", (self.tls / "camera.pem").read_bytes() + b"\n"),
                (self.tls / "authority.pem", (self.tls / "authority.pem").read_bytes() + b"\n"),
                (self.tls / "revoked.pem", revoked + b"\n"),
                (self.users, user("bob", "other").encode()),
                (self.host.settings, text.replace("<roles/>", "<roles><viewer>ann</viewer></roles>").encode())):
            session = ask(ask()[1])[1]
            put(path, data)
            self.assertFalse(ask(session)[0], path)

    # ---- revocation ------------------------------------------------------------------------------

    def revocation_list(self, *names, days=2):
        """Of the authority, with the certificates of these names."""
        folder = self.host.folder / "authority"
        folder.mkdir(exist_ok=True)
        (folder / "index").write_text("")
        (folder / "config").write_text(f"[ca]\ndefault_ca=own\n[own]\ndatabase={folder}/index\ndefault_md=sha256\n")
        key = ["-config", folder / "config", "-cert", self.tls / "authority.pem", "-keyfile", self.tls / "authority.key"]
        for name in names:
            openssl("ca", *key, "-revoke", self.tls / f"{name}.pem")
        openssl("ca", *key, "-gencrl", *(["-crldays", days] if days > 0 else ["-crlsec", "1"]), "-out", folder / "list")
        return (folder / "list").read_bytes()

    def refused(self):
        with self.assertRaises(OSError):
            self.host.post(REQUEST)

    def test_a_revoked_client_is_refused(self):
        (self.tls / "revoked.pem").write_bytes(self.revocation_list())
        self.start(MUTUAL + ' revoked="tls/revoked.pem"', client="client")
        self.host.call("GetProfileList")
        (self.tls / "new").write_bytes(self.revocation_list("client"))
        (self.tls / "new").replace(self.tls / "revoked.pem")
        self.refused()

    def test_an_expired_list_counts_and_an_authority_without_one_is_not_checked(self):
        (self.tls / "revoked.pem").write_bytes(self.revocation_list("client", days=0))
        time.sleep(1.1)
        with open(self.tls / "authority.pem", "a") as authorities:
            authorities.write((self.tls / "stranger-authority.pem").read_text())
        self.start(MUTUAL + ' revoked="tls/revoked.pem"', client="client")
        self.refused()
        self.host.tls.load_cert_chain(self.tls / "stranger.pem", self.tls / "stranger.key")
        self.host.call("GetProfileList")
        self.host.stop()
        said = [line for line in self.host.errors if "revoked.pem: the revocation list of CN=authority has expired" in line]
        self.assertEqual(len(said), 1, self.host.errors)

    def test_a_missing_list_ends_the_start(self):
        self.settings(MUTUAL + ' revoked="tls/none.pem"')
        self.refused_to_start("tls/none.pem: it can't be read (No such file")
        self.settings(TLS + ' revoked="tls/none.pem"')
        self.refused_to_start("revoked but no clientCertificates")


class Delays(AccessTest):
    def time_of(self, no_delay, pieces):
        with socket.create_connection(("127.0.0.1", self.host.port), timeout=60) as plain:
            plain.setsockopt(socket.IPPROTO_TCP, socket.TCP_NODELAY, no_delay)
            start = time.perf_counter()
            with self.host.tls.wrap_socket(plain, server_hostname="127.0.0.1") as connection:
                for piece in pieces:
                    connection.sendall(piece)
                self.assertTrue(service.read_all(connection).startswith(b"HTTP/1.1 200 "))
            return 1000 * (time.perf_counter() - start)

    def test_nagles_algorithm_costs_nothing(self):
        for attributes in TLS, TLS + ' sessionSeconds="0"':
            self.start(attributes)
            for what, pieces in (("one write", [HEAD.encode() + REQUEST]), ("head and body", [HEAD.encode(), REQUEST])):
                # In turns, so that a busy machine slows down both alike.
                times = [[self.time_of(no_delay, pieces) for no_delay in (0, 1)] for _ in range(30)]
                with_nagle, without = map(statistics.median, zip(*times))
                print(f"{what}: median {with_nagle:.1f} ms with Nagle's algorithm, {without:.1f} ms without")
                if not service.SANITIZED:
                    self.assertLess(with_nagle - without, 30)  # a peer that waits for more acknowledges after 40
            self.host.stop()


class End(AccessTest):
    def test_a_request_that_has_begun_is_finished_and_idle_connections_are_closed(self):
        self.start(TLS)

        def connect():
            plain = socket.create_connection(("127.0.0.1", self.host.port), timeout=60)
            connection = self.host.tls.wrap_socket(plain, server_hostname="127.0.0.1")
            self.addCleanup(connection.close)
            return connection

        begun, idle, silent = connect(), connect(), socket.create_connection(("127.0.0.1", self.host.port), timeout=60)
        self.addCleanup(silent.close)
        begun.sendall(HEAD.encode() + REQUEST[:10])
        time.sleep(0.3)  # so that the bytes are there
        start = time.monotonic()
        self.host.process.send_signal(signal.SIGTERM)
        self.assertEqual(idle.recv(1), b"")
        self.assertEqual(service.read_all(silent), b"")
        begun.sendall(REQUEST[10:])
        answer = service.read_all(begun)
        self.assertTrue(answer.startswith(b"HTTP/1.1 200 "), answer)
        self.assertEqual(self.host.process.wait(timeout=60), 0)
        if not service.SANITIZED:
            self.assertLess(time.monotonic() - start, 4.5)

    def test_methods(self):
        self.start()
        for method in "HEAD", "OPTIONS", "GET":
            connection = http.client.HTTPConnection("127.0.0.1", self.host.port, timeout=60)
            connection.request(method, "/")
            response = connection.getresponse()
            text = response.read().decode()
            self.assertEqual(response.status, 405)
            if method != "HEAD":
                self.assertRaises(service.Fault, service.body_of, text)
            connection.close()


class Operators(AccessTest):
    METRICS = '<metrics address="127.0.0.1" port="0"/>'

    def start(self, attributes="", users="", **options):
        super().start(attributes, users + self.METRICS, **options)
        said = next(line for line in self.host.errors if line.startswith("metrics on "))
        self.metrics_port = int(re.fullmatch(r"metrics on http://127\.0\.0\.1:(\d+)/", said).group(1))

    def ask(self, target, method="GET"):
        """The status, the text and its type."""
        connection = http.client.HTTPConnection("127.0.0.1", self.metrics_port, timeout=60)
        connection.request(method, target)
        response = connection.getresponse()
        text = response.read().decode()
        connection.close()
        return response.status, text, response.headers["Content-Type"]

    def metrics(self):
        status, text, kind = self.ask("/metrics")
        self.assertEqual((status, kind), (200, "text/plain; version=0.0.4; charset=utf-8"))
        return text, {name: float(value) for name, value in re.findall(r"^(\w+(?:{.*})?) (\S+)$", text, re.M)}

    def test_health(self):
        self.start()
        self.host.call("GetProfileList")
        self.assertEqual(self.ask("/healthz"), (200, "ok", "text/plain; charset=utf-8"))
        self.assertEqual(self.ask("/healthz", "HEAD")[:2], (200, ""))
        self.assertEqual(self.ask("/healthz", "POST")[0], 405)
        self.assertEqual(self.ask("/metrics", "HEAD")[0], 405)
        self.assertEqual(self.ask("/")[0], 404)

    def test_promtool_has_nothing_to_say(self):
        self.start(TLS)
        self.host.call("CreateProfile", name="a")
        text, _ = self.metrics()
        checked = subprocess.run(["promtool", "check", "metrics"], input=text, capture_output=True, text=True)
        self.assertEqual((checked.returncode, checked.stdout + checked.stderr), (0, ""))

    def test_the_alert_rules_are_in_order(self):
        rules = service.SOURCE / "docs/alert-rules.yml"
        checked = subprocess.run(["promtool", "check", "rules", rules], capture_output=True, text=True)
        self.assertEqual(checked.returncode, 0, checked.stdout + checked.stderr)
        self.start()
        shown = {re.sub("{.*", "", name) for name in self.metrics()[1]}
        asked = set(re.findall(r"varlo_\w+", rules.read_text()))
        self.assertLessEqual(asked, shown)

    def test_counters_after_a_known_tour(self):
        self.start(TLS, USERS)
        good = {"Authorization": "Basic YW5uOnNlY3JldA=="}  # ann:secret
        for body in envelope("GetProfileList"), envelope("CreateProfile", name="a"), envelope("GetProfileList"), \
                envelope("ExecuteProfile", id="77"), "<none/>":
            self.host.post(body, headers=good)
        self.assertEqual(self.host.post(REQUEST)[0], 401)
        with socket.create_connection(("127.0.0.1", self.host.port), timeout=60) as plain:
            plain.sendall(b"hello")
            service.read_all(plain)
        shown = {"varlo_connections": 1}
        while shown["varlo_connections"] > 0:  # the last of them may be about to end
            _, shown = self.metrics()
        self.assertEqual(shown['varlo_requests_total{operation="GetProfileList",outcome="ok"}'], 2)
        self.assertEqual(shown['varlo_requests_total{operation="CreateProfile",outcome="ok"}'], 1)
        self.assertEqual(shown['varlo_requests_total{operation="ExecuteProfile",outcome="client_fault"}'], 1)
        self.assertEqual(shown['varlo_requests_total{operation="other",outcome="client_fault"}'], 1)
        self.assertEqual(shown['varlo_request_seconds_count{operation="GetProfileList"}'], 2)
        self.assertEqual(shown['varlo_connections_total{outcome="served"}'], 5)
        self.assertEqual(shown['varlo_connections_total{outcome="refused"}'], 2)
        self.assertEqual(shown['varlo_tls_handshakes_total{kind="full"}'], 6)
        self.assertEqual(shown['varlo_tls_handshakes_total{kind="failed"}'], 1)
        self.assertEqual(shown['varlo_access_refused_total{reason="password"}'], 1)
        for name in ("varlo_store_changes_total", "varlo_store_commits_total", "varlo_store_errors_total",
                     "varlo_profiles", "varlo_active_profile", "varlo_audit_errors_total",
                     "varlo_engine_feed_errors_total", 'varlo_access_refused_total{reason="throttled"}',
                     'varlo_access_refused_total{reason="certificate"}', 'varlo_access_refused_total{reason="role"}',
                     'varlo_tls_handshakes_total{kind="resumed"}', 'varlo_connections_total{outcome="timed_out"}',
                     'varlo_connections_total{outcome="dropped"}'):
            self.assertIn(name, shown)
        self.assertEqual([value for name, value in shown.items() if name.startswith("varlo_build_info{version=")], [1])
        self.assertGreater(shown["varlo_certificate_expiry_timestamp_seconds"], time.time() + 86400)

    def test_an_address_that_others_can_reach(self):
        self.settings("", '<metrics address="0.0.0.0" port="0"/>')
        self.refused_to_start("0.0.0.0 can be reached from outside", 'insecure="1"')

    def test_a_certificate_that_ends_soon_is_said(self):
        make_certificate(self.tls, "camera", "authority", days="2")
        self.start(TLS)
        self.host.stop()
        said = [line for line in self.host.errors if "camera.pem: the certificate ends on 20" in line]
        self.assertEqual(len(said), 1, self.host.errors)


class Files(AccessTest):
    def wait_until_said(self, words):
        deadline = time.monotonic() + 60
        while not any(words in line for line in self.host.errors):
            self.assertLess(time.monotonic(), deadline, self.host.errors)
            time.sleep(0.05)

    def test_sighup_reads_again_and_ends_nothing(self):
        self.start(TLS, USERS)
        self.host.process.send_signal(signal.SIGHUP)
        self.wait_until_said("were read again, and nothing is wrong with them")
        self.users.write_text("broken\n" + user("bob", "other"))
        self.host.process.send_signal(signal.SIGHUP)
        self.wait_until_said("users: what is in it now was taken over")
        self.wait_until_said("(1 mistake) doesn't count, and --check names it")
        self.assertEqual(self.status("bob", "other")[0], 200)
        self.assertEqual(self.status("ann", "secret")[0], 401)
        self.assertEqual(self.host.stop(), 0)
        self.assertTrue(any('users:1: the line isn\'t "name:hash"' in line for line in self.host.errors),
                        self.host.errors)


class Roles(AccessTest):
    def caller(self, **credentials):
        return self.status(**credentials)[1]["Varlo-Analytics-Caller"]

    def test_who_is_what(self):
        self.users.write_text("".join(user(name, "secret") for name in ("ann", "bob", "carl")))
        self.start(MUTUAL, "<users>users</users><roles><administrator> ann </administrator><viewer>ann</viewer>"
                           "<operator>\nbob\n</operator></roles>", client="client")
        for name, role in ("ann", "administrator"), ("bob", "operator"), ("carl", "viewer"):
            self.assertEqual(self.caller(name=name, password="secret"), f"{name}; role={role}")
        self.settings(MUTUAL, USERS)
        self.assertEqual(self.caller(name="carl", password="secret"), "carl; role=administrator")

    def test_the_name_in_a_certificate(self):
        self.start(MUTUAL, "<roles><operator>CN=client</operator></roles>", client="client")
        self.assertEqual(self.caller(), "CN=client; role=operator")

    def test_nobody_is_asked(self):
        self.start("", "<roles/>")
        self.assertEqual(self.caller(), "; role=viewer")


if __name__ == "__main__":
    unittest.main()
