"""Starts and stops under load: no report of a sanitizer, exit code 0 each time."""

import os
import threading
import time
import unittest

import service
from service import Host

CLIENTS = 4
# Under ThreadSanitizer a start costs a second or two.
STARTS = {"address,undefined": 100, "thread": 20}.get(os.environ.get("SANITIZE"), 20)


class Restarts(unittest.TestCase):
    def test_under_load(self):
        host = Host()
        self.addCleanup(host.clean)
        self.addCleanup(host.stop)
        host.start()
        answered = [0]
        ending = threading.Event()
        clients = [threading.Thread(target=self.load, args=(host, ending, answered)) for _ in range(CLIENTS)]
        for client in clients:
            client.start()
        try:
            for _ in range(STARTS):
                target = answered[0] + 20
                while answered[0] < target:
                    time.sleep(0.005)
                self.assertEqual(host.stop(), 0, host.errors)
                self.assertEqual([e for e in host.errors if not e.startswith("listening on")], [])
                host.start()
        finally:
            ending.set()
            for client in clients:
                client.join(timeout=120)
        self.assertEqual(host.stop(), 0)
        print(f"{STARTS} starts and stops, {answered[0]} requests answered")

    @staticmethod
    def load(host, ending, answered):
        while not ending.is_set():
            try:
                host.call("CreateProfile", name="x")
                host.call("GetProfileList")
                host.call("GetBehaviorAvailability", profileId=1)
                answered[0] += 3
            except (OSError, service.NoAnswer, service.http.client.HTTPException, service.etree.XMLSyntaxError):
                time.sleep(0.01)


if __name__ == "__main__":
    unittest.main()
