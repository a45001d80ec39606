"""The engine's folder removed, made read-only, its file system full: changes go on, and the files follow.

It mounts small file systems, and so runs in a mount namespace of its own.
"""

import os
import shutil
import subprocess
import time
import unittest

import own_mounts
from engine_feed import snapshot
from own_mounts import mount
from test_engine import EngineTest, behaviors_with_zones


class Faults(EngineTest):
    def setUp(self):
        super().setUp()
        self.host.stop()
        self.folder.mkdir(exist_ok=True)
        mount("-t", "tmpfs", "-o", "size=64k", "tmpfs", str(self.folder))
        self.addCleanup(subprocess.run, ["umount", "-l", str(self.folder)], check=False)
        self.host.start()
        self.behavior = next(b for b in behaviors_with_zones() if "loitering" in b[0])
        self.profile = self.create("Car park")
        self.host.call("ExecuteProfile", id=self.profile)
        self.set(self.profile, self.behavior, "before")

    def zones(self):
        return snapshot(self.folder).zones

    def said(self, count):
        """What the service said of the folder, once it is that many lines."""
        def lines():
            return [line for line in self.host.errors if str(self.folder) in line]
        began = time.monotonic()
        while len(lines()) < count and time.monotonic() - began < 60:
            time.sleep(0.01)
        self.assertEqual(len(lines()), count, lines())
        return lines()

    def outage(self, begin, end):
        """Changes while something is wrong are stored and answered; then the files come right by themselves."""
        begin()
        for count in range(3):
            self.set(self.profile, self.behavior, f"change {count}")
        self.assertEqual(self.zones(), {self.behavior[0]: "before"})
        stored = self.host.call("GetProfileBehavior", profileId=self.profile, behaviorId=self.behavior[1])
        self.assertIn("change 2", stored.findtext("config"))
        time.sleep(2.5)  # attempts that fail
        self.assertIn("can't be written", self.said(1)[0])
        end()
        began = time.monotonic()
        while self.zones() != {self.behavior[0]: "change 2"}:
            self.assertLess(time.monotonic() - began, 60)
            time.sleep(0.01)
        print(f"right {time.monotonic() - began:.2f} s after the cause has ended")
        self.set(self.profile, self.behavior, "after")
        self.assertEqual(self.zones(), {self.behavior[0]: "after"})
        said = self.said(2)
        self.assertIn("are right again", said[1])
        return said[0]

    def test_a_full_file_system(self):
        ballast = self.folder / "ballast"

        def fill():
            with open(ballast, "wb", buffering=0) as file:
                try:
                    while file.write(b"x" * 512):
                        pass
                except OSError:
                    pass

        self.assertIn("No space left on device", self.outage(fill, ballast.unlink))
        self.assertEqual(sorted(os.listdir(self.folder)), ["active.xml", "state.json"])

    def test_a_read_only_file_system(self):
        said = self.outage(lambda: mount("-o", "remount,ro", str(self.folder)),
                           lambda: mount("-o", "remount,rw", str(self.folder)))
        self.assertIn("Read-only file system", said)

    def test_a_removed_folder_is_made_again(self):
        subprocess.run(["umount", str(self.folder)], check=True)
        shutil.rmtree(self.folder)
        self.set(self.profile, self.behavior, "behind its removal")
        self.assertEqual(self.zones(), {self.behavior[0]: "behind its removal"})
        shutil.rmtree(self.folder)
        began = time.monotonic()
        while not (self.folder / "state.json").exists():  # without a change, too
            self.assertLess(time.monotonic() - began, 60)
            time.sleep(0.01)
        print(f"made again {time.monotonic() - began:.2f} s after it was removed")
        self.assertEqual(self.zones(), {self.behavior[0]: "behind its removal"})
        self.assertEqual([line for line in self.host.errors if "can't be written" in line], [])


if __name__ == "__main__":
    own_mounts.enter()
    unittest.main()
