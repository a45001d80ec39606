"""State folders that earlier versions have written, and one of a version to come.

tests/data/state/N/profiles.db is what the last service with version N of the store left of `fill`. For a new version
of the store, keep one of the version that is left: HOST=... LIBRARY=... python3 test_upgrade.py --keep FOLDER
"""

import shutil
import sqlite3
import subprocess
import sys
import unittest

import service
from lxml import etree
from service import SOURCE, Host

KEPT = SOURCE / "tests/data/state"
DOCUMENTS = [(SOURCE / "tests/data" / name / "behavior.xml").read_text(encoding="utf-8") for name in
             ("loiteringdetection/two-zones", "abandonedobject/one-rule", "objectcounting/three-rules-one-disabled")]
IDENTIFIERS = [etree.fromstring(text.encode()).get("id") for text in DOCUMENTS]
SCENE = (SOURCE / "tests/data/sceneanalyzer/calibrated/scene.xml").read_text(encoding="utf-8")


def fill(host):
    for name in ("Entrance", "gone", "Tor & Hof \u00e4\U0001f600"):
        host.call("CreateProfile", name=name)
    host.call("DeleteProfile", profileId=2)
    for identifier, text in zip(IDENTIFIERS, DOCUMENTS):
        host.call("SetProfileBehavior", profileId=1, behaviorId=identifier, config=text)
    host.call("SetProfileScene", profileId=1, scene=SCENE)
    host.call("AlgorithmControl", command=1)
    host.call("ExecuteProfile", id=1)


def answers(host):
    """All that a client can read of the profiles."""
    given = [host.call("GetProfileList"), host.call("GetActiveProfile"), host.call("GetProfileScene", profileId=1),
             *[host.call("GetBehaviorAvailability", profileId=profile) for profile in (1, 3)],
             *[host.call("GetProfileBehavior", profileId=1, behaviorId=name) for name in IDENTIFIERS]]
    return [etree.tostring(answer, encoding="unicode") for answer in given]


def version_of(store):
    with sqlite3.connect(f"file:{store}?immutable=1", uri=True) as connection:
        return connection.execute("PRAGMA user_version").fetchone()[0]


class Upgrade(unittest.TestCase):
    def host(self, kept=None):
        host = Host()
        self.addCleanup(host.clean)
        self.addCleanup(host.stop)
        if kept is not None:
            host.state.mkdir()
            shutil.copy(kept, host.state / "profiles.db")
        return host

    def test_each_version_opens_and_keeps_its_profiles(self):
        new = self.host().start()
        fill(new)
        expected = answers(new)
        new.stop()
        current = version_of(new.state / "profiles.db")
        kept = sorted(KEPT.glob("*/profiles.db"))
        self.assertEqual([int(file.parent.name) for file in kept], list(range(1, current + 1)))
        for file in kept:
            with self.subTest(version=file.parent.name):
                self.assertEqual(version_of(file), int(file.parent.name))
                old = self.host(file).start()
                self.assertEqual(answers(old), expected)
                created = old.call("CreateProfile", name="new")
                self.assertEqual(created.findtext("profileId"), "4", "the number of a deleted profile isn't given again")
                old.restart()
                self.assertEqual(old.call("GetProfileList").findall(".//profile")[-1].text, "new")
                old.stop()
                self.assertEqual(version_of(old.state / "profiles.db"), current)

    def test_a_newer_one_is_refused_and_left_as_it_is(self):
        newest = max(KEPT.glob("*/profiles.db"))
        host = self.host(newest)
        store = host.state / "profiles.db"
        with sqlite3.connect(store) as connection:
            connection.execute(f"PRAGMA user_version = {version_of(newest) + 1}")
        connection.close()
        before = store.read_bytes()
        for command in (host.command(), [service.HOST, "--recover", *host.command()[1:]]):
            answer = subprocess.run(command, capture_output=True, text=True, timeout=60)
            self.assertEqual(answer.returncode, 1)
            self.assertIn(f"The profile store {store} was written by a newer version of this service; run that version, or "
                          "choose another state folder", answer.stderr)
            self.assertEqual(store.read_bytes(), before)


if __name__ == "__main__":
    if sys.argv[1:2] == ["--keep"]:
        with Host(state=sys.argv[2]) as filled:
            fill(filled)
    else:
        unittest.main()
