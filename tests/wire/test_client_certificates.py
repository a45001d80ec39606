"""The command-line client: certificates that fail, told by their reason, and passwords that nobody may read."""

import json
import ssl
import subprocess
import tempfile
import unittest
from pathlib import Path

import service
from command import Listener, answer, main, run

CONFIGURATION = """
[ca]
default_ca = own
[own]
database = {0}/index
serial = {0}/serial
new_certs_dir = {0}
default_md = sha256
default_crl_days = 2
policy = any
copy_extensions = copy
unique_subject = no
[any]
commonName = supplied
"""
KEY = ("-newkey", "ec", "-pkeyopt", "ec_paramgen_curve:P-256", "-nodes")
LONG_AGO = ("-startdate", "20200101000000Z", "-enddate", "20200202000000Z")
FAR_AHEAD = ("-startdate", "21000101000000Z", "-enddate", "21000202000000Z")
EMPTY = ("<e:Envelope xmlns:e='http://schemas.xmlsoap.org/soap/envelope/'><e:Body><v:GetProfileListResponse "
         "xmlns:v='urn:schemas-varlo-com:service:VideoAnalytics:2'/></e:Body></e:Envelope>")


class Certificates(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.folder = Path(tempfile.mkdtemp(prefix="varlo-certificates-"))
        cls.addClassCleanup(service.shutil.rmtree, cls.folder)
        (cls.folder / "index").write_text("")
        (cls.folder / "serial").write_text("01\n")
        (cls.folder / "ca.conf").write_text(CONFIGURATION.format(cls.folder))
        for name in ("authority", "stranger"):
            cls.openssl("req", "-x509", *KEY, "-days", "60", "-subj", f"/CN={name}", "-addext", "subjectAltName=IP:127.0.0.1",
                        "-keyout", f"{name}.key", "-out", f"{name}.pem")
        for name, extension, dates in (("server", "IP:127.0.0.1", ()), ("expired", "IP:127.0.0.1", LONG_AGO),
                                       ("early", "IP:127.0.0.1", FAR_AHEAD), ("elsewhere", "DNS:elsewhere.example", ()),
                                       ("client", "DNS:client", ()), ("revoked", "DNS:revoked", ())):
            cls.openssl("req", "-new", *KEY, "-subj", f"/CN={name}", "-addext", f"subjectAltName={extension}",
                        "-keyout", f"{name}.key", "-out", f"{name}.csr")
            cls.authority("-in", f"{name}.csr", "-out", f"{name}.pem", *(dates or ("-days", "60")))
        cls.authority("-revoke", "revoked.pem")
        cls.authority("-gencrl", "-out", "revoked.crl")

    @classmethod
    def openssl(cls, *words):
        subprocess.run(["openssl", *words], cwd=cls.folder, check=True, capture_output=True, timeout=120)

    @classmethod
    def authority(cls, *words):
        cls.openssl("ca", "-batch", "-notext", "-config", "ca.conf", "-cert", "authority.pem", "-keyfile", "authority.key", *words)

    def end(self, name, version, clients=None):
        context = ssl.SSLContext(ssl.PROTOCOL_TLS_SERVER)
        context.maximum_version = version
        context.load_cert_chain(self.folder / f"{name}.pem", self.folder / f"{name}.key")
        if clients:
            context.verify_mode = ssl.CERT_REQUIRED
            context.verify_flags |= ssl.VERIFY_CRL_CHECK_LEAF
            context.load_verify_locations(self.folder / clients)
            context.load_verify_locations(self.folder / "revoked.crl")

        def serve(connection):
            with context.wrap_socket(connection, server_side=True) as outside:
                answer("200 OK", EMPTY)(outside)
        listener = Listener(serve)
        self.addCleanup(listener.close)
        return f"https://127.0.0.1:{listener.port}/"

    def test_each_is_told_by_its_reason(self):
        ours = lambda name: ("--cert", self.folder / f"{name}.pem", "--key", self.folder / f"{name}.key")
        cases = (("expired", None, (), "it has expired since Feb  2 00:00:00 2020", "Renew it"),
                 ("early", None, (), "it isn't valid before Jan  1 00:00:00 2100", "clocks"),
                 ("elsewhere", None, (), "it is for elsewhere.example, not for 127.0.0.1", "Use the address"),
                 ("stranger", None, (), "it is signed by itself", "--cacert"),
                 ("server", "authority.pem", (), "certificate", "--cert"),
                 ("server", "authority.pem", ours("expired"), "our certificate has expired", "--cert"),
                 ("server", "authority.pem", ours("revoked"), "our certificate has been revoked", "--cert"),
                 ("server", "authority.pem", ours("stranger"), "doesn't know the authority of our certificate", "--cert"))
        for version in (ssl.TLSVersion.TLSv1_2, ssl.TLSVersion.TLSv1_3):
            for name, clients, words, *texts in cases:
                ran = run("profile", "list", "--cacert", self.folder / "authority.pem", *words, url=self.end(name, version, clients))
                self.assertEqual((ran.code, ran.out), (3, ""), (name, words))
                self.assertRegex(ran.err, r"^varlo-analytics: [^\n]*\.\n$")
                for text in texts:
                    self.assertIn(text, ran.err)
            unknown = run("profile", "list", "--cacert", self.folder / "stranger.pem", url=self.end("server", version))
            self.assertIn("its authority is unknown here: CN = authority. Name the file of that authority with --cacert.", unknown.err)
            known = run("profile", "list", "--json", "--cacert", self.folder / "authority.pem", *ours("client"),
                        url=self.end("server", version, "authority.pem"))
            self.assertEqual((known.code, known.err, known.out), (0, "", "[]\n"))

    def test_one_run_shakes_hands_once(self):
        context = ssl.SSLContext(ssl.PROTOCOL_TLS_SERVER)
        context.load_cert_chain(self.folder / "server.pem", self.folder / "server.key")
        reused = []

        def serve(connection):
            with context.wrap_socket(connection, server_side=True) as outside:
                reused.append(outside.session_reused)
                answer("200 OK", EMPTY.replace("GetProfileList", "DeleteProfile"))(outside)
        for version in (ssl.TLSVersion.TLSv1_2, ssl.TLSVersion.TLSv1_3):
            context.maximum_version = version
            reused.clear()
            with Listener(serve) as listener:
                ran = run("profile", "delete", "1", "2", "3", "--cacert", self.folder / "authority.pem",
                          url=f"https://127.0.0.1:{listener.port}/")
            self.assertEqual((ran.code, ran.err), (0, ""))
            self.assertEqual(reused, [False, True, True], version)

    def test_in_json_it_is_one_object(self):
        ran = run("profile", "list", "--json", "--cacert", self.folder / "authority.pem", url=self.end("expired", ssl.TLSVersion.TLSv1_3))
        self.assertEqual(ran.code, 3)
        told = json.loads(ran.err)
        self.assertEqual(told["level"], "error")
        self.assertIn("expired since", told["text"])

    def test_a_password_goes_over_plain_http_to_this_machine_only(self):
        words = ("--user", "ann", "profile", "list", "--timeout", "1")
        password = {"VARLO_ANALYTICS_PASSWORD": "secret"}
        for url in ("http://192.0.2.1/", "http://camera.example:8080/", "http://[2001:db8::1]/", "http://localhost.example/"):
            ran = run(*words, url=url, environment=password)
            self.assertEqual((ran.code, ran.out), (2, ""))
            self.assertRegex(ran.err, "isn't sent to .* over plain http.*https://.*--insecure")
        for url in ("http://127.0.0.1:1/", "http://localhost:1/", "http://[::1]:1/", "http://127.1.2.3:1/"):
            self.assertNotIn("plain http", run(*words, url=url, environment=password).err)
        self.assertNotIn("plain http", run(*words, "--insecure", url="http://192.0.2.1/", environment=password).err)


if __name__ == "__main__":
    main()
