"""Certificates of all kinds, and TLS ends that show them."""

import ssl
import subprocess
import tempfile
import unittest
from pathlib import Path

import service
from command import Listener, answer

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
                                       ("client", "DNS:client", ()), ("revoked", "IP:127.0.0.1", ())):
            cls.openssl("req", "-new", *KEY, "-subj", f"/CN={name}", "-addext", f"subjectAltName={extension}",
                        "-keyout", f"{name}.key", "-out", f"{name}.csr")
            cls.authority("-in", f"{name}.csr", "-out", f"{name}.pem", *(dates or ("-days", "60")))
        cls.authority("-revoke", "revoked.pem")
        cls.authority("-gencrl", "-out", "revoked.crl")
        both = "".join((cls.folder / file).read_text() for file in ("authority.pem", "revoked.crl"))
        (cls.folder / "authority-and-list.pem").write_text(both)

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
