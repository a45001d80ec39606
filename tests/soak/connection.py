"""The connections of the soak: raw bytes over TCP or TLS, in whatever way a peer may send them."""

import socket
import ssl
import struct
import subprocess
import time

from service import CONTENT_TYPES, read_all


class Wire:
    """Where the service listens. `context` is that of a TLS client, or None. One for each process."""

    def __init__(self, port, context=None):
        self.port = port
        self.context = context
        self.session = None  # of TLS, to go on with

    def connect(self):
        connection = socket.create_connection(("127.0.0.1", self.port), timeout=60)
        connection.setsockopt(socket.IPPROTO_TCP, socket.TCP_NODELAY, 1)
        if self.context is None:
            return connection
        return self.context.wrap_socket(connection, server_hostname="localhost", session=self.session)

    def answer(self, connection):
        data = read_all(connection)
        if self.context:
            self.session = connection.session
        return data

    def send(self, data):
        """All that comes back; nothing if the connection was closed without a word."""
        with self.connect() as connection:
            try:
                connection.sendall(data)
            except (BrokenPipeError, ConnectionResetError, ssl.SSLError):
                pass  # refused before it was all sent: the answer says why
            return self.answer(connection)

    def dribble(self, data, dice):
        """As send(), in pieces and with pauses."""
        cuts = sorted(dice.randint(1, len(data)) for _ in range(dice.randint(2, 8)))
        with self.connect() as connection:
            for begin, end in zip([0, *cuts], [*cuts, len(data)]):
                connection.sendall(data[begin:end])
                time.sleep(dice.random() * 0.01)
            return self.answer(connection)

    def vanish(self, data, dice):
        """Sends a part of it, or all, and is gone without reading a byte."""
        connection = self.connect()
        connection.sendall(data[:dice.choice((0, 1, len(data) // 2, len(data)))])
        if dice.random() < 0.5:  # with a reset
            connection.setsockopt(socket.SOL_SOCKET, socket.SO_LINGER, struct.pack("ii", 1, 0))
        connection.close()


def http(body, version="1.1"):
    data = body if isinstance(body, bytes) else body.encode()
    return (f"POST / HTTP/1.1\r\nHost: localhost\r\nContent-Type: {CONTENT_TYPES[version]}\r\n"
            f"Content-Length: {len(data)}\r\n\r\n").encode() + data


def split(answer):
    """Status and body of an answer, whose length is tested."""
    head, found, body = answer.partition(b"\r\n\r\n")
    assert found and head.startswith(b"HTTP/1.1 "), answer[:300]
    lengths = [line for line in head.split(b"\r\n") if line.lower().startswith(b"content-length:")]
    assert len(lengths) == 1 and int(lengths[0].split(b":")[1]) == len(body), answer[:300]
    return int(head.split(b" ")[1]), body.decode()


def make_certificates(folder):
    """An authority, and certificates of it for the service and for its clients: NAME.pem and NAME.key."""
    def openssl(*arguments):
        subprocess.run(["openssl", *arguments], cwd=folder, check=True, stdin=subprocess.DEVNULL,
                       stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)

    key = ("-newkey", "ec", "-pkeyopt", "ec_paramgen_curve:prime256v1", "-nodes")
    openssl("req", "-x509", *key, "-days", "60", "-subj", "/CN=Soak", "-keyout", "authority.key", "-out", "authority.pem")
    (folder / "names").write_text("subjectAltName=DNS:localhost,IP:127.0.0.1\n")
    for name in ("service", "client"):
        openssl("req", *key, "-subj", f"/CN={name}", "-keyout", f"{name}.key", "-out", f"{name}.request")
        openssl("x509", "-req", "-in", f"{name}.request", "-CA", "authority.pem", "-CAkey", "authority.key",
                "-set_serial", str(len(name)), "-days", "60", "-extfile", "names", "-out", f"{name}.pem")
