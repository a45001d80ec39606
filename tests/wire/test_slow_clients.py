"""A healthy client beside a thousand that send nothing or one byte a second."""

import resource
import socket
import statistics
import threading
import time
import unittest

import service
from service import SANITIZED, ServiceTest

SLOW = 1000
REQUESTS = 200
MEMORY_KIB = 64 * 1024


class Dribblers:
    """Half of them silent, half sending the start of a request, a byte a second; they come back when closed."""

    def __init__(self, port, count):
        self.port = port
        self.connections = [self.connect() for _ in range(count)]
        self.ending = threading.Event()
        self.thread = threading.Thread(target=self.run)
        self.thread.start()

    def connect(self):
        connection = socket.create_connection(("127.0.0.1", self.port), timeout=60)
        connection.setblocking(False)
        return connection

    def run(self):
        text = b"POST / HTTP/1.1\r\nHost: camera\r\nContent-Length: 1000\r\n\r\n" + b" " * 1000
        for second in range(10**6):
            for index in range(0, len(self.connections), 2):
                try:
                    self.connections[index].send(text[second % len(text):][:1])
                except OSError:
                    self.connections[index].close()
                    self.connections[index] = self.connect()
            if self.ending.wait(1.0):
                return

    def end(self):
        self.ending.set()
        self.thread.join(timeout=60)
        for connection in self.connections:
            connection.close()


class SlowClients(ServiceTest):
    def healthy(self):
        """200 requests; the time of each in seconds. Raises if one isn't answered."""
        times = []
        for _ in range(REQUESTS):
            start = time.perf_counter()
            self.host.call("GetProfileList")
            times.append(time.perf_counter() - start)
        return times

    def test_a_healthy_client_is_answered(self):
        hard = resource.getrlimit(resource.RLIMIT_NOFILE)[1]
        resource.setrlimit(resource.RLIMIT_NOFILE, (hard, hard))
        alone = self.healthy()
        slow = Dribblers(self.host.port, SLOW)
        try:
            beside = self.healthy()
            memory = self.host.memory_kib()
        finally:
            slow.end()
        self.assertEqual(len(beside), REQUESTS)
        factor = statistics.median(beside) / statistics.median(alone)
        print(f"{SLOW} slow connections: {len(beside)} of {REQUESTS} requests answered, "
              f"median {factor:.2f} times that without them, host {memory} KiB")
        if not SANITIZED:
            self.assertLess(memory, MEMORY_KIB)


if __name__ == "__main__":
    unittest.main()
