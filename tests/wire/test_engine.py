"""What the service keeps for the analytics engine: drawn changes and kills, and what comes into the files.

ENGINE_CHANGES and ENGINE_KILLS (120 and 6) make the drawn run longer.
"""

import os
import random
import shutil
import threading
import time
import unittest
from pathlib import Path

import engine_feed
import service
from engine_feed import snapshot
from service import DATA, Host, ServiceTest
from test_scene import edited as edited_scene

CHANGES = int(os.environ.get("ENGINE_CHANGES", 40 if service.SANITIZED else 120))
KILLS = int(os.environ.get("ENGINE_KILLS", 3 if service.SANITIZED else 6))
NO_ANSWER = (OSError, service.NoAnswer, service.http.client.HTTPException, ValueError, service.etree.XMLSyntaxError)


def behaviors_with_zones():
    """Identifier, alias and default document of each behavior that has zones."""
    for manifest in sorted((DATA / "plugins").glob("*/manifest.xml")):
        root = service.etree.parse(str(manifest)).getroot()
        behavior = manifest.parent / "behavior.xml"
        if root.get("type") == "rule" and behavior.exists() and "<rois" in behavior.read_text():
            yield root.findtext("id"), root.findtext("alias"), behavior.read_text()


class EngineTest(ServiceTest):
    def setUp(self):
        self.host = Host()
        self.addCleanup(self.host.clean)
        self.addCleanup(self.host.stop)
        self.folder = self.host.folder / "engine"
        self.host.options = ["--engine", str(self.folder)]
        self.host.start()

    def create(self, name):
        return int(self.host.call("CreateProfile", name=name).findtext("profileId"))

    def set(self, profile, behavior, name, **fields):
        self.host.call("SetProfileBehavior", profileId=profile, behaviorId=behavior[1],
                       config=engine_feed.zone(behavior[2], name, **fields))


class Files(EngineTest):
    def test_a_fresh_service_tells_that_nothing_runs(self):
        self.assertEqual((self.folder / "state.json").read_text(),
                         '{"sequence":1,"profile":null,"analytics":true,"motionDetection":false,"document":null}\n')
        self.assertEqual([file.name for file in self.folder.iterdir()], ["state.json"])

    def test_each_change_that_shows_counts_by_one(self):
        loitering = next(b for b in behaviors_with_zones() if "loitering" in b[0])
        profile, other = self.create("Car park"), self.create("Other")
        call = self.host.call
        scene = call("GetDefaultScene").findtext("scene")
        self.assertEqual(snapshot(self.folder).sequence, 1)
        shows = [
            (lambda: call("ExecuteProfile", id=profile), dict(profile=profile, name="Car park", zones={})),
            (lambda: self.set(profile, loitering, "gate"), dict(zones={loitering[0]: "gate"})),
            (lambda: call("SetProfileScene", profileId=profile, scene=edited_scene(scene, "Night")), dict(name="Night")),
            (lambda: call("AlgorithmControl", command=0), {}),
            (lambda: call("AlgorithmControl", command=3), {}),
            (lambda: call("ExecuteProfile", id=other), dict(profile=other, name="Other", zones={})),
            (lambda: call("ExecuteProfile", id=profile), dict(profile=profile, zones={loitering[0]: "gate"})),
            (lambda: call("DeleteProfileBehavior", profileId=profile, behaviorId=loitering[1]), dict(zones={})),
            (lambda: call("StopProfile", profileId=-1), dict(profile=None)),
            (lambda: call("ExecuteProfile", id=other), dict(profile=other)),
            (lambda: call("DeleteProfile", profileId=other), dict(profile=None, zones={})),
        ]
        for number, (change, expected) in enumerate(shows):
            change()
            seen = snapshot(self.folder)
            self.assertEqual(seen.sequence, number + 2, f"change {number}")
            for name, value in expected.items():
                self.assertEqual(getattr(seen, name), value, f"change {number}")
        state = engine_feed.read_state(self.folder)
        self.assertEqual((state["analytics"], state["motionDetection"]), (False, True))

    def test_what_does_not_show_writes_nothing(self):
        loitering = next(b for b in behaviors_with_zones() if "loitering" in b[0])
        profile, other = self.create("Car park"), self.create("Other")
        self.host.call("ExecuteProfile", id=profile)
        self.set(profile, loitering, "gate")

        def stamps():
            return [(file.name, file.stat().st_ino, file.stat().st_ctime_ns)
                    for file in (self.folder, *sorted(self.folder.iterdir()))]

        before = stamps()
        self.set(other, loitering, "elsewhere")
        self.host.call("DeleteProfileBehavior", profileId=other, behaviorId=loitering[1])
        self.host.call("SetProfileScene", profileId=other,
                       scene=edited_scene(self.host.call("GetDefaultScene").findtext("scene"), "New"))
        self.host.call("StopProfile", profileId=other)
        self.host.call("DeleteProfile", profileId=other)
        self.set(profile, loitering, "gate")
        self.host.call("ExecuteProfile", id=profile)
        self.host.call("AlgorithmControl", command=1)
        self.host.call("AlgorithmControl", command=2)
        self.create("Third")
        self.fault_of("DeleteProfileBehavior", profileId=profile, behaviorId=next(behaviors_with_zones())[1])
        self.assertEqual(stamps(), before)
        self.host.restart()
        self.assertEqual(stamps()[1:], before[1:], "a start that finds the files right leaves them")

    def test_the_folder_in_the_settings_counts_from_their_document(self):
        self.host.stop()
        self.host.options = []
        text = self.host.settings.read_text()
        self.host.settings.write_text(text.replace("<settings>", "<settings><engine>told/engine</engine>"))
        self.host.start()
        self.assertEqual(snapshot(self.host.folder / "told" / "engine").sequence, 1)

    def test_a_folder_that_cannot_be_made_is_named_with_the_reason(self):
        self.host.stop()
        self.host.options = ["--engine", "/proc/none"]
        self.host.start()
        self.assertIn("/proc/none can't be written: No such file or directory; ", self.host.errors[0])

    def test_a_start_puts_right_whatever_is_there(self):
        loitering = next(b for b in behaviors_with_zones() if "loitering" in b[0])
        self.create("Car park")
        self.host.call("ExecuteProfile", id=1)
        self.set(1, loitering, "gate")
        told = snapshot(self.folder)
        self.host.kill()
        (self.folder / "active.xml").write_text("<half")
        for name in (".active.xml.tmp", ".state.json.tmp"):
            (self.folder / name).write_text("left over")
        self.host.start()
        self.assertEqual(sorted(file.name for file in self.folder.iterdir()), ["active.xml", "state.json"])
        self.assertEqual(snapshot(self.folder).document, told.document)
        self.host.stop()
        self.assertEqual(snapshot(self.folder).document, told.document, "after a clean stop the files stay")
        shutil.rmtree(self.folder)
        self.host.start()
        self.assertEqual(snapshot(self.folder).sequence, told.sequence)
        # A store of earlier days, restored, takes no number a second time.
        self.host.stop()
        (self.folder / "state.json").write_text('{"sequence":500}')
        self.host.start()
        self.assertEqual(snapshot(self.folder).sequence, 501)
        self.host.call("StopProfile", profileId=-1)
        self.assertEqual(snapshot(self.folder).sequence, 502)


class Drawn(EngineTest):
    """Eight clients change profiles, one of them which profile is active, while the host is killed."""

    def setUp(self):
        super().setUp()
        self.seed = random.randrange(2**32)
        print(f"seed {self.seed}")
        self.profiles = [self.create("A"), self.create("B")]
        self.behaviors = list(behaviors_with_zones())
        self.turn = threading.Condition()
        self.paused, self.in_flight, self.done, self.ended = False, 0, 0, False
        self.failures = []
        # What each zone may be called, by profile and behavior, and which profile may be active: one, or
        # several while nobody knows whether a change that was cut off has come to pass.
        self.possible = {(p, b[0]): {None} for p in self.profiles for b in self.behaviors}
        self.active = {None}

    def test_an_answered_change_is_in_the_files(self):
        clients = [threading.Thread(target=self.guarded, args=(self.client, number)) for number in range(8)]
        reader = threading.Thread(target=self.guarded, args=(self.read,))
        for thread in (*clients, reader):
            thread.start()
        chance = random.Random(self.seed)
        last = 0
        for kill in range(KILLS):
            while self.done < (kill + 1) * CHANGES // (KILLS + 1) and not self.failures:
                time.sleep(chance.uniform(0, 0.02))
            last = self.kill(last)
        for client in clients:
            client.join(timeout=600)
        self.ended = True
        reader.join(timeout=60)
        self.assertEqual(self.failures, [])
        self.assertFalse(any(thread.is_alive() for thread in (*clients, reader)))
        seen = snapshot(self.folder)
        self.check(seen)
        print(f"{self.done} changes by 8 clients, {KILLS} kills, sequence {seen.sequence}, "
              f"{self.readings} readings beside them")

    def kill(self, last):
        """Kills the host within the changes that are in flight, and looks at what a start makes of it."""
        with self.turn:
            self.paused = True
        self.host.kill()
        with self.turn:
            self.turn.wait_for(lambda: self.in_flight == 0)
        self.host.start()
        seen = snapshot(self.folder, timeout=0)
        self.assertGreaterEqual(seen.sequence, last)
        self.assertIn(seen.profile, self.active)
        self.check(seen)
        told = self.host.call("GetActiveProfile").findtext("profileId")
        self.assertEqual(seen.profile or -1, int(told))
        with self.turn:
            self.paused = False
            self.turn.notify_all()
        return seen.sequence

    def check(self, seen, kinds=None):
        for (profile, kind), names in self.possible.items():
            if seen.profile == profile and (kinds is None or kind in kinds):
                assert seen.zones.get(kind) in names, f"{kind} is {seen.zones.get(kind)}, not {names}"

    def guarded(self, action, *arguments):
        try:
            action(*arguments)
        except BaseException as failure:  # also an assertion: it is to fail the test, not a thread alone
            self.failures.append(repr(failure))

    def client(self, number):
        chance = random.Random(self.seed + number)
        count = 0
        while self.done < CHANGES and not self.failures:
            count += 1
            with self.turn:
                self.turn.wait_for(lambda: not self.paused)
                self.in_flight += 1
            answered = False
            try:
                if number == 0:
                    self.switch(chance)
                else:
                    self.edit(chance, self.behaviors[number - 1], f"{number}.{count}")
                answered = True
            except NO_ANSWER:
                pass
            finally:
                with self.turn:
                    self.in_flight -= 1
                    self.done += answered
                    self.turn.notify_all()
            if answered:
                seen = snapshot(self.folder)
                if number == 0:
                    assert {seen.profile} == self.active, f"{seen.profile}, not {self.active}"
                else:
                    self.check(seen, [self.behaviors[number - 1][0]])

    def edit(self, chance, behavior, name):
        profile = chance.choice(self.profiles)
        key = (profile, behavior[0])
        delete = chance.random() < 0.2 and None not in self.possible[key]
        name = None if delete else name
        self.possible[key] = self.possible[key] | {name}
        if delete:
            self.host.call("DeleteProfileBehavior", profileId=profile, behaviorId=behavior[1])
        else:
            self.set(profile, behavior, name)
        self.possible[key] = {name}

    def switch(self, chance):
        profile = chance.choice([None, *self.profiles])
        self.active = self.active | {profile}
        if profile is None:
            self.host.call("StopProfile", profileId=-1)
        else:
            self.host.call("ExecuteProfile", id=profile)
        self.active = {profile}

    def read(self):
        """An engine: never half a file, no falling sequence, and what doesn't fit is followed by what does."""
        last, self.readings = 0, 0
        while not self.ended and not self.failures:
            seen = snapshot(self.folder)
            assert seen.sequence >= last, f"{seen.sequence} after {last}"
            last = seen.sequence
            self.readings += 1


if __name__ == "__main__":
    unittest.main()
