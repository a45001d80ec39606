"""The running service, for the tests that meet it over the wire.

Every test starts a host of its own on a free port of 127.0.0.1 with its state in a temporary folder,
and ends it. The programs and files come from the environment that CTest sets.
"""

import http.client
import os
import queue
import re
import shutil
import signal
import socket
import subprocess
import tempfile
import threading
import unittest
from pathlib import Path

from lxml import etree

HOST = os.environ["HOST"]
LIBRARY = os.environ["LIBRARY"]
GENERATED = Path(os.environ["GENERATED"])
DATA = Path(os.environ["DATA"])
SOURCE = Path(os.environ["SOURCE"])
BUILD = Path(os.environ["BUILD"])
SANITIZED = bool(os.environ.get("SANITIZE"))

NAMESPACE = "urn:schemas-varlo-com:service:VideoAnalytics:2"
ENVELOPES = {
    "1.1": "http://schemas.xmlsoap.org/soap/envelope/",
    "1.2": "http://www.w3.org/2003/05/soap-envelope",
}
CONTENT_TYPES = {"1.1": "text/xml; charset=utf-8", "1.2": "application/soap+xml; charset=utf-8"}
XSI_TYPE = "{http://www.w3.org/2001/XMLSchema-instance}type"

SCHEMA = etree.XMLSchema(etree.parse(str(GENERATED / "VideoAnalytics.xsd")))

# A valid message for each operation, in an order in which a service without profiles answers all of them.
MESSAGES = {etree.QName(element).localname: element
            for element in etree.parse(str(SOURCE / "tests/data/messages.xml")).getroot().iterchildren("*")}


class Host:
    """One host process. `settings` is the text of a settings document; the default is the delivered one."""

    def __init__(self, folder=None, settings=None, plugins=None, state=None, port=0, options=()):
        self.folder = Path(folder or tempfile.mkdtemp(prefix="varlo-"))
        self.own_folder = folder is None
        self.state = Path(state or self.folder / "state")
        self.settings = self.folder / "settings.xml"
        if settings is not None:
            self.settings.write_text(settings, encoding="utf-8")
        elif not self.settings.exists():
            shutil.copy(DATA / "settings.xml", self.settings)
        self.plugins = Path(plugins or DATA / "plugins")
        self.options = list(options)
        self.port = port
        self.scheme = "http"
        self.tls = None  # an ssl.SSLContext, for a host that is met through TLS
        self.process = None
        self.errors = []

    def command(self):
        return [HOST, "--library", LIBRARY, "--settings", str(self.settings), "--plugins", str(self.plugins),
                "--state", str(self.state), "--listen", f"127.0.0.1:{self.port}", *self.options]

    def start(self):
        self.errors = []
        self.process = subprocess.Popen(self.command(), stdin=subprocess.DEVNULL, stdout=subprocess.PIPE,
                                        stderr=subprocess.PIPE, text=True, errors="replace")
        lines = queue.Queue()

        def read(pipe):
            for line in pipe:
                self.errors.append(line.rstrip("\n"))
                lines.put(line)
            lines.put(None)

        self.reader = threading.Thread(target=read, args=(self.process.stderr,), daemon=True)
        self.reader.start()
        while True:
            line = lines.get(timeout=120)
            if line is None:
                self.process.wait(timeout=60)
                raise RuntimeError(f"the host ended with {self.process.returncode}: " + "\n".join(self.errors))
            match = re.fullmatch(r"listening on (https?)://127\.0\.0\.1:(\d+)/\n", line)
            if match:
                self.scheme = match.group(1)
                self.port = int(match.group(2))
                return self

    @property
    def url(self):
        return f"{self.scheme}://127.0.0.1:{self.port}/"

    def stop(self, signal_number=signal.SIGTERM):
        """Ends the host and returns its exit code."""
        if self.process is None:
            return None
        if self.process.poll() is None:
            self.process.send_signal(signal_number)
        code = self.process.wait(timeout=120)
        self.reader.join(timeout=60)
        self.process.stdout.close()
        self.process.stderr.close()
        self.process = None
        return code

    def kill(self):
        return self.stop(signal.SIGKILL)

    def restart(self):
        self.stop()
        return self.start()

    def memory_kib(self, field="VmRSS"):
        status = Path(f"/proc/{self.process.pid}/status").read_text()
        return int(re.search(rf"^{field}:\s+(\d+) kB", status, re.M).group(1))

    def __enter__(self):
        return self.start()

    def __exit__(self, *unused):
        self.stop()
        self.clean()

    def clean(self):
        if self.own_folder:
            shutil.rmtree(self.folder, ignore_errors=True)

    # ---- messages -------------------------------------------------------------------------------

    def post(self, body, version="1.1", headers=None, timeout=60):
        """Posts an HTTP body; returns (status, headers, text). A closed connection gives (None, {}, "")."""
        if self.tls is None:
            connection = http.client.HTTPConnection("127.0.0.1", self.port, timeout=timeout)
        else:
            connection = http.client.HTTPSConnection("127.0.0.1", self.port, timeout=timeout, context=self.tls)
        try:
            connection.request("POST", "/", body.encode() if isinstance(body, str) else body,
                               {"Content-Type": CONTENT_TYPES[version], **(headers or {})})
            response = connection.getresponse()
            return response.status, dict(response.getheaders()), response.read().decode()
        except (http.client.RemoteDisconnected, ConnectionResetError):
            return None, {}, ""
        finally:
            connection.close()

    def call(self, operation, version="1.1", **fields):
        """Calls an operation; returns the response element, checked against the schema. A fault is a Fault."""
        status, _, text = self.post(envelope(operation, version, **fields), version)
        if status is None:
            raise NoAnswer(operation)
        return body_of(text, version)

    def raw(self, data, timeout=60):
        """Sends bytes and returns all that comes back until the service closes."""
        with socket.create_connection(("127.0.0.1", self.port), timeout=timeout) as connection:
            connection.sendall(data)
            return read_all(connection)


class NoAnswer(Exception):
    """The service closed the connection without an answer."""


class Fault(Exception):
    def __init__(self, code, text, detail):
        super().__init__(f"{code}: {text}" + (f" ({detail})" if detail else ""))
        self.code, self.text, self.detail = code, text, detail


def read_all(connection):
    data = b""
    while True:
        try:
            chunk = connection.recv(65536)
        except ConnectionResetError:
            return data
        if not chunk:
            return data
        data += chunk


def envelope(operation, version="1.1", **fields):
    """The message of an operation. The runtime ignores a field that it doesn't know, so none is sent by mistake."""
    if operation in MESSAGES:
        unknown = set(fields) - {field.tag for field in MESSAGES[operation]}
        assert not unknown, f"{operation} has no field {unknown}"
    root = etree.Element(f"{{{ENVELOPES[version]}}}Envelope", nsmap={"s": ENVELOPES[version], "va": NAMESPACE})
    body = etree.SubElement(root, f"{{{ENVELOPES[version]}}}Body")
    request = etree.SubElement(body, f"{{{NAMESPACE}}}{operation}")
    for name, value in fields.items():
        field = etree.SubElement(request, name)
        if isinstance(value, (list, tuple)):
            for item in value:
                etree.SubElement(field, "behavior").text = item
        else:
            field.text = str(value)
    return etree.tostring(root, encoding="unicode")


def body_of(text, version="1.1"):
    """The one child of the Body, validated; raises Fault for a fault."""
    space = ENVELOPES[version]
    root = etree.fromstring(text.encode())
    assert root.tag == f"{{{space}}}Envelope", root.tag
    element = root.find(f"{{{space}}}Body")[0]
    if element.tag == f"{{{space}}}Fault":
        def text_of(*paths):
            for path in paths:
                found = element.find(path.replace("s:", f"{{{space}}}"))
                if found is not None:
                    return "".join(found.itertext()).strip()
            return ""
        raise Fault(text_of("faultcode", "s:Code/s:Value"), text_of("faultstring", "s:Reason/s:Text"),
                    text_of("detail", "s:Detail"))
    SCHEMA.assertValid(etree.fromstring(etree.tostring(element)))
    return element


class StartTest(unittest.TestCase):
    """What a start refuses, of the host that a test has made in self.host."""

    def refused_to_start(self, *texts):
        with self.assertRaisesRegex(RuntimeError, "the host ended with 1: ") as caught:
            self.host.start()
        for text in texts:
            self.assertIn(str(text), str(caught.exception))


class ServiceTest(unittest.TestCase):
    """A test case with a running host, one per test."""

    settings = None

    def setUp(self):
        self.host = Host(settings=self.settings)
        self.addCleanup(self.host.clean)
        self.addCleanup(self.host.stop)
        self.host.start()

    def fault_of(self, operation, version="1.1", **fields):
        with self.assertRaises(Fault) as caught:
            self.host.call(operation, version, **fields)
        return caught.exception
