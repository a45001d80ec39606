"""The command-line client: an 'apply' that is killed, refused or cut off at each of its exchanges."""

import os
import signal
import subprocess
import threading

from command import CLIENT, main
from fleet import FleetTest
from proxy import WRITES, Proxy
from service import SANITIZED


FULL = bool(os.environ.get("FULL"))  # at every exchange, and not only at those that write


class BrokenTest(FleetTest):
    """A profile that is changed in every way while another one runs."""

    behaviors = ("loitering", "object-removal")
    words = ("--prune", "--run", "--force")
    expected = ["DeleteProfileBehavior", "SetProfileBehavior", "SetProfileBehavior", "ExecuteProfile", "SetProfileScene"]

    def setUp(self):
        super().setUp()
        self.old = self.work / "old"
        self.client("export", "1", self.old)
        self.edit("loitering.xml", r"(<dwellTime[^>]*>)\d+<", r"\g<1>77<")
        self.edit("scene.xml", "<sensitivity>8", "<sensitivity>3")
        self.without("object-removal")
        self.add("camera-sabotage")
        self.target = self.prepare()
        self.before = self.documents(self.target)
        proxy = self.proxy(self.target)
        self.apply(*self.words, url=proxy.url)
        self.assertEqual(proxy.writes, self.expected)
        self.exchanges = proxy.operations
        self.after = self.documents(self.target)
        self.assertNotEqual(self.before, self.after)
        self.reset()

    def prepare(self):
        self.client("profile", "create", "Night")
        self.client("profile", "run", "Night")
        return self.host

    def reset(self):
        self.apply("--prune", "--force", url=self.target.url, folder=self.old)
        self.on(self.target, "profile", "run", "Night")
        self.assertEqual(self.documents(self.target), self.before)

    def add(self, name):
        document = self.client("behavior", "example", name).out
        (self.folder / f"{name}.xml").write_text(document, encoding="utf-8")
        self.edit("profile.xml", "</profile>", f'<behavior id="urn:varlo-com:AlgorithmId:CameraSabotage:1" file="{name}.xml"/></profile>')

    def put_right(self):
        """The next run, undisturbed."""
        self.apply(*self.words, url=self.target.url)
        self.assertEqual(self.documents(self.target), self.after)
        self.reset()


class InPlace(BrokenTest):
    def test_a_client_that_is_killed(self):
        for place, operation in self.places():
            with self.subTest(place=place, operation=operation):
                self.kill_at(place)
                if place < self.exchanges.index(self.expected[0]):
                    self.assertEqual(self.documents(self.target), self.before)
                self.put_right()

    def places(self):
        """Of all exchanges; in a short run of every write, and of what comes first, last and in front."""
        writes = [place for place, operation in enumerate(self.exchanges) if operation in WRITES]
        short = set(writes) if SANITIZED else {0, writes[0] - 1, *writes, len(self.exchanges) - 1}
        return [(place, operation) for place, operation in enumerate(self.exchanges) if FULL or place in short]

    def kill_at(self, place):
        started = threading.Event()

        def kill(number, operation):
            if number == place:
                started.wait(60)
                os.kill(process.pid, signal.SIGKILL)
        proxy = Proxy(self.target, after=kill)
        process = subprocess.Popen([CLIENT, "--url", proxy.url, "apply", self.folder, *self.words],
                                   stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        started.set()
        self.assertEqual(process.wait(timeout=60), -signal.SIGKILL)
        proxy.close()

    def test_a_write_that_fails_is_taken_back(self):
        for verdict in ("refuse", "drop", "lose") if FULL else ("refuse", "lose"):
            for place in (i for i, operation in enumerate(self.exchanges) if operation in WRITES):
                with self.subTest(verdict=verdict, operation=self.exchanges[place]):
                    proxy = self.proxy(self.target,
                                       meddle=lambda number, _: verdict if number == place else "pass")
                    line = self.apply(*self.words, url=proxy.url, code=1)[0]
                    self.assertEqual(line["state"], "restored")
                    self.assertIn("The disk is full" if verdict == "refuse" else "has what it had", line["error"])
                    self.assertEqual(self.documents(self.target), self.before)

    def test_a_camera_that_dies_half_way_is_named(self):
        for place in (i for i, operation in enumerate(self.exchanges) if operation in WRITES):
            with self.subTest(operation=self.exchanges[place]):
                proxy = self.proxy(self.target, meddle=lambda number, _: "drop" if number >= place else "pass")
                line = self.apply(*self.words, url=proxy.url, code=1)[0]
                self.assertEqual(line["state"], "failed")
                change = self.exchanges[:place + 1]
                self.assertIn(f"at change {sum(op in WRITES for op in change)} of 5", line["error"])
                self.put_right()


class Created(InPlace):
    """The same with a profile that isn't there yet: the host has none of the name before."""

    expected = ["CreateProfile", "SetProfileBehavior", "SetProfileBehavior", "ExecuteProfile", "SetProfileScene"]

    def prepare(self):
        other = self.another()
        self.on(other, "profile", "create", "Night")
        self.on(other, "profile", "run", "Night")
        return other

    def reset(self):
        for profile in self.on(self.target, "profile", "list").json:
            if profile["name"] != "Night":
                self.on(self.target, "profile", "delete", profile["id"])
        self.on(self.target, "profile", "run", "Night")
        self.assertEqual(self.documents(self.target), self.before)

    def documents(self, host):
        # A number is never given twice.
        return sorted(super().documents(host).values())


if __name__ == "__main__":
    main()
