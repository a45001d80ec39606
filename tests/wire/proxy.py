"""A port in front of a service that counts what is asked for, and can refuse it, lose it, or end the client."""

import contextlib
import re
import socket
import threading

from command import Listener
from service import envelope, read_all  # noqa: F401  (tests take them from here)

WRITES = {"CreateProfile", "DeleteProfile", "ExecuteProfile", "StopProfile", "SetProfileBehavior",
          "DeleteProfileBehavior", "SetProfileScene", "AlgorithmControl"}
FAULT = ('<s:Envelope xmlns:s="http://schemas.xmlsoap.org/soap/envelope/"><s:Body><s:Fault><faultcode>s:Server'
         "</faultcode><faultstring>The disk is full.</faultstring></s:Fault></s:Body></s:Envelope>").encode()


def read_request(connection):
    """One whole HTTP request, and the operation in it."""
    request = b""
    while b"\r\n\r\n" not in request:
        request += received(connection)
    head, _, body = request.partition(b"\r\n\r\n")
    length = int(re.search(rb"(?i)\r\ncontent-length: *(\d+)", head).group(1))
    while len(body) < length:
        body += received(connection)
    operation = re.search(rb"Body>\s*<(?:[\w-]+:)?(\w+)", body).group(1).decode()
    return head + b"\r\n\r\n" + body, operation


def received(connection):
    data = connection.recv(65536)
    if not data:
        raise ConnectionError("the client has gone")
    return data


def fault():
    return (b"HTTP/1.1 500 Internal Server Error\r\nContent-Type: text/xml; charset=utf-8\r\nConnection: close\r\n"
            b"Content-Length: %d\r\n\r\n" % len(FAULT)) + FAULT


class Proxy:
    """Leads to the host. `meddle(number, operation)` is asked at each exchange, counted from 0, and says "pass",
    "refuse" (answer with a fault), "drop" (close at once) or "lose" (do it, and close without the answer); `after`
    is called once the host has done it and before the client hears of it."""

    def __init__(self, host, meddle=None, after=None):
        self.host = host
        self.meddle = meddle or (lambda number, operation: "pass")
        self.after = after or (lambda number, operation: None)
        self.operations = []
        self.lock = threading.Lock()
        self.listener = Listener(self.serve)

    @property
    def url(self):
        return f"http://127.0.0.1:{self.listener.port}/"

    @property
    def writes(self):
        return [operation for operation in self.operations if operation in WRITES]

    def serve(self, connection):
        with contextlib.suppress(ConnectionError):
            request, operation = read_request(connection)
            with self.lock:
                number = len(self.operations)
                self.operations.append(operation)
            verdict = self.meddle(number, operation)
            if verdict == "refuse":
                connection.sendall(fault())
            if verdict in ("refuse", "drop"):
                return
            with socket.create_connection(("127.0.0.1", self.host.port), timeout=60) as inside:
                inside.sendall(request)
                answer = read_all(inside)
            self.after(number, operation)
            if verdict == "pass":
                connection.sendall(answer)

    def close(self):
        self.listener.close()

    def __enter__(self):
        return self

    def __exit__(self, *unused):
        self.close()
