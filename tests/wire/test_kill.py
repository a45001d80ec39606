"""What a client was told is stored is there after SIGKILL in a stream of writes."""

import os
import random
import sqlite3
import subprocess
import threading
import time
import unittest

import service
from service import ServiceTest

KILLS = int(os.environ.get("KILLS", 50))
KILLS_WITH_COPIES = 8


class Kill(ServiceTest):
    def test_every_acknowledged_profile_is_there(self):
        seed = random.randrange(2**32)
        print(f"seed {seed}")
        chance = random.Random(seed)
        acknowledged = {}
        for number in range(KILLS):
            told = len(acknowledged) + chance.randrange(10)
            writer = threading.Thread(target=self.write, args=(acknowledged, number))
            writer.start()
            while len(acknowledged) < told and writer.is_alive():
                time.sleep(0.001)
            time.sleep(chance.uniform(0.0, 0.02))
            self.host.kill()
            writer.join(timeout=120)
            self.assertFalse(writer.is_alive())
            self.host.start()
            listed = {int(p.get("id")): p.text for p in self.host.call("GetProfileList").iter("profile")}
            lost = {i: n for i, n in acknowledged.items() if listed.get(i) != n}
            self.assertEqual(lost, {}, f"after kill {number + 1}")
        print(f"{KILLS} kills, {len(acknowledged)} acknowledged profiles, all there; {len(listed)} stored")
        self.assertGreater(len(acknowledged), KILLS, "the stream has to be in full flow")

    def test_every_copy_holds_what_was_acknowledged_before_it_began(self):
        acknowledged = {}
        copies = 0
        for number in range(KILLS_WITH_COPIES):
            writer = threading.Thread(target=self.write, args=(acknowledged, f"copied {number}"))
            writer.start()
            for _ in range(2):
                before = dict(acknowledged)
                copy = self.host.folder / f"copy-{copies}.db"
                answer = subprocess.run([service.HOST, "--backup", str(copy), "--state", str(self.host.state)],
                                        capture_output=True, text=True, timeout=60)
                self.assertEqual(answer.returncode, 0, answer.stderr)
                copies += 1
                with sqlite3.connect(f"file:{copy}?mode=ro", uri=True) as connection:
                    self.assertEqual(connection.execute("PRAGMA integrity_check").fetchall(), [("ok",)])
                    held = dict(connection.execute("SELECT id, name FROM profile"))
                self.assertEqual({i: n for i, n in before.items() if held.get(i) != n}, {})
            self.host.kill()
            writer.join(timeout=120)
            copy = self.host.folder / f"copy-{copies}.db"  # of the log that the kill has left
            subprocess.run([service.HOST, "--backup", str(copy), "--state", str(self.host.state)], check=True,
                           capture_output=True, timeout=60)
            copies += 1
            with sqlite3.connect(f"file:{copy}?mode=ro", uri=True) as connection:
                held = dict(connection.execute("SELECT id, name FROM profile"))
            self.assertEqual({i: n for i, n in acknowledged.items() if held.get(i) != n}, {})
            self.host.start()
        print(f"{copies} copies, {len(acknowledged)} acknowledged profiles, all there")
        self.assertGreater(len(acknowledged), copies)

    def write(self, acknowledged, number):
        for count in range(100000):
            name = f"{number}.{count}"
            try:
                profile = int(self.host.call("CreateProfile", name=name).findtext("profileId"))
            except (OSError, service.NoAnswer, service.http.client.HTTPException, ValueError,
                    service.etree.XMLSyntaxError):
                return
            acknowledged[profile] = name


if __name__ == "__main__":
    unittest.main()
