"""Peers that cost a server something for nothing: silent ones, and ones that send a byte a second."""

import threading

from connection import http, split
from service import read_all

REQUEST = http("<a>" + " " * 1000 + "</a>")


class SlowPeers:
    """They come back when they are closed. Half of them are silent, and get no answer; the others are told."""

    def __init__(self, wire, count):
        self.wire = wire
        self.ended = 0
        self.complaints = []
        self.ending = threading.Event()
        self.threads = [threading.Thread(target=self.run, args=(n % 2 == 0,), daemon=True) for n in range(count)]
        for thread in self.threads:
            thread.start()

    def run(self, silent):
        while not self.ending.is_set():
            try:
                self.stay(silent)
            except Exception as error:  # a peer has nothing to tell but that
                self.complaints.append(f"slow peer: {error!r}")
                return

    def stay(self, silent):
        with self.wire.connect() as connection:
            try:
                for byte in () if silent else REQUEST[:60]:
                    connection.sendall(bytes([byte]))
                    if self.ending.wait(1.0):
                        return
            except OSError:
                pass  # closed while it sent; what it was told is still to be read
            connection.settimeout(60)
            answer = read_all(connection)
        self.ended += 1
        if silent and answer:
            self.complaints.append(f"a silent peer was answered: {answer[:200]}")
        if not silent and answer and split(answer)[0] != 408:
            self.complaints.append(f"a slow peer was answered: {answer[:200]}")

    def end(self):
        """How many were closed by the service, and what was wrong."""
        self.ending.set()
        for thread in self.threads:
            thread.join(timeout=120)
        return self.ended, self.complaints
