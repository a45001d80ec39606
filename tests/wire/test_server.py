"""What the server answers by itself, and how it takes a request in."""

import socket
import time
import unittest

from service import CONTENT_TYPES, ENVELOPES, ServiceTest, body_of, envelope, read_all
from lxml import etree

SETTINGS = """<settings><server><maxConnections>{connections}</maxConnections>
<maxRequestBytes>{size}</maxRequestBytes><requestSeconds>{seconds}</requestSeconds></server></settings>"""


def head(*fields):
    lines = ["POST / HTTP/1.1", "Host: camera", "Content-Type: " + CONTENT_TYPES["1.1"], *fields]
    return "\r\n".join(lines).encode() + b"\r\n\r\n"


class ServerTest(ServiceTest):
    settings = SETTINGS.format(connections=4, size=20000, seconds=2)

    def connect(self):
        connection = socket.create_connection(("127.0.0.1", self.host.port), timeout=60)
        self.addCleanup(connection.close)
        return connection

    def assert_refused(self, answer, status, text):
        header, _, body = answer.partition(b"\r\n\r\n")
        self.assertTrue(header.startswith(b"HTTP/1.1 %d " % status), answer)
        self.assertIn(b"\r\nContent-Type: text/xml; charset=utf-8", header)
        self.assertIn(b"\r\nContent-Length: %d" % len(body), header)
        fault = etree.fromstring(body).find(f".//{{{ENVELOPES['1.1']}}}Fault")
        self.assertEqual(fault.findtext("faultcode"), "SOAP-ENV:Client")
        self.assertIn(text, fault.findtext("faultstring"))

    def assert_profile_list(self, answer):
        header, _, body = answer.partition(b"\r\n\r\n")
        self.assertTrue(header.startswith(b"HTTP/1.1 200 "), answer)
        self.assertTrue(etree.QName(body_of(body.decode())).localname.startswith("GetProfileList"))

    def test_413_announced(self):
        self.assert_refused(self.host.raw(head("Content-Length: 20001")), 413, "20000 bytes")

    def test_413_while_the_client_is_still_sending(self):
        status, _, text = self.host.post("x" * 10_000_000)
        self.assertEqual(status, 413)
        self.assertIn("20000 bytes", text)

    def test_413_chunks(self):
        chunk = b"1000\r\n" + b"x" * 0x1000 + b"\r\n"
        self.assert_refused(self.host.raw(head("Transfer-Encoding: chunked") + chunk * 10), 413, "20000 bytes")

    def test_413_header(self):
        self.assert_refused(self.host.raw(head("Long: " + "x" * 30000)), 413, "HTTP header")

    def test_400(self):
        for data in b"\x16\x03\x01\x02\x00\x01\x00\x01\xfc\x03\x03", b"PRI * HTTP/2.0\r\n\r\nSM\r\n\r\n", b"hello\r\n":
            self.assert_refused(self.host.raw(data), 400, "HTTP/1.1")

    def test_400_for_a_request_that_ends_in_the_middle(self):
        connection = self.connect()
        connection.sendall(head("Content-Length: 100") + b"half")
        connection.shutdown(socket.SHUT_WR)
        self.assert_refused(read_all(connection), 400, "in the middle")

    def test_408(self):
        start = time.monotonic()
        self.assert_refused(self.host.raw(head("Content-Length: 100") + b"slow"), 408, "2 seconds")
        self.assertGreater(time.monotonic() - start, 1.9)

    def test_a_silent_connection_is_closed_without_a_byte(self):
        self.assertEqual(self.host.raw(b""), b"")

    def test_expect_100_continue(self):
        body = envelope("GetProfileList").encode()
        connection = self.connect()
        connection.sendall(head("Expect: 100-continue", f"Content-Length: {len(body)}"))
        self.assertEqual(connection.recv(25, socket.MSG_WAITALL), b"HTTP/1.1 100 Continue\r\n\r\n")
        connection.sendall(body)
        self.assert_profile_list(read_all(connection))

    def test_chunked_body(self):
        body = envelope("GetProfileList").encode()
        chunks = b"".join(b"1;x=y\r\n%c\r\n" % byte for byte in body) + b"0\r\nAfter: all\r\n\r\n"
        self.assert_profile_list(self.host.raw(head("Transfer-Encoding: chunked") + chunks))

    def test_connections_above_the_limit_wait(self):
        silent = [self.connect() for _ in range(4)]
        start = time.monotonic()
        self.host.call("GetProfileList")
        # Answered when the deadline has closed the silent ones.
        self.assertGreater(time.monotonic() - start, 1.0)
        for connection in silent:
            self.assertEqual(read_all(connection), b"")


if __name__ == "__main__":
    unittest.main()
