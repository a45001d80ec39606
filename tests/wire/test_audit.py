"""The audit trail: a line for each change and each refusal, there when the answer arrives."""

import base64
import json
import random
import signal
import time
import unittest

import service
from service import Fault, Host, envelope
from test_access import user
from test_behaviors import behaviors

SETTINGS = """<settings><server><endpoint name="kestrile-server"/><users>users</users>
<roles><administrator>installer</administrator><operator>guard</operator></roles>
<audit>{audit}</audit></server></settings>"""
PASSWORD = "open sesame"
AWKWARD = ['quo"te', "back\\slash", "apo'strophe {}", "a b", "M\u00fcller", "line\u2028separator", "next\u0085line",
           "\u202eoverride", "\U0001f600", "x" * 255, "\u00e9" * 127, "</audit>", "%s%n"]


class AuditTest(unittest.TestCase):
    audit = "audit.log"

    def setUp(self):
        self.host = Host(settings=SETTINGS.format(audit=self.audit))
        self.addCleanup(self.host.clean)
        self.addCleanup(self.host.stop)
        self.hash = user("", PASSWORD)[1:]
        self.add_users(["installer", "guard", "wall"])
        self.file = self.host.folder / "audit.log"
        self.seen = 0
        self.host.start()

    def add_users(self, names):
        with open(self.host.folder / "users", "a", encoding="utf-8") as users:
            users.writelines(f"{name}:{self.hash.strip()}\n" for name in names)

    def post(self, name, operation, /, password=PASSWORD, **fields):
        credentials = base64.b64encode(f"{name}:{password}".encode()).decode()
        return self.host.post(envelope(operation, **fields), headers={"Authorization": f"Basic {credentials}"})

    def call(self, name, operation, /, **fields):
        status, _, text = self.post(name, operation, **fields)
        self.assertEqual(status // 100, 2 if "Fault" not in text else 5, text)
        return service.body_of(text)

    def fault(self, name, operation, /, **fields):
        with self.assertRaises(Fault) as caught:
            self.call(name, operation, **fields)
        return caught.exception.text

    def lines(self):
        """The lines that are new since the last call."""
        text = self.file.read_bytes().decode() if self.file.exists() else ""
        self.assertTrue(text == "" or text.endswith("\n"))
        lines = text.splitlines()  # also at the line ends that only Unicode knows
        self.assertEqual(len(lines), text.count("\n"))
        new, self.seen = lines[self.seen:], len(lines)
        for line in new:
            self.assertNotIn(PASSWORD, line)
            self.assertNotIn("<roi", line)
        return [json.loads(line) for line in new]

    def told(self, *expected):
        """The new lines are these; returns them."""
        lines = self.lines()
        self.assertEqual([{key: line.get(key) for key in wanted} for line, wanted in zip(lines, expected)],
                         list(expected))
        self.assertEqual(len(lines), len(expected), lines)
        for line in lines:
            self.assertRegex(line["time"], r"^\d{4}-\d\d-\d\dT\d\d:\d\d:\d\d\.\d{3}Z$")
        return lines


class Changes(AuditTest):
    def test_each_change_has_its_line(self):
        who = {"user": "installer", "role": "administrator", "peer": "127.0.0.1", "result": "done", "reason": None}
        scene = self.call("wall", "GetDefaultScene").findtext("scene")
        self.assertEqual(self.lines(), [])
        self.call("installer", "CreateProfile", name="a \"name\"")
        line, = self.told({**who, "change": "CreateProfile", "profile": 1})
        self.assertRegex(line["request"], "^[0-9a-f]{8}$")
        for alias in behaviors():
            document = self.call("wall", "GetDefaultConfiguration", behaviorId=alias).findtext("config")
            self.call("installer", "SetProfileBehavior", profileId=1, behaviorId=alias, config=document)
            lines = sorted(self.lines(), key=lambda line: line["change"])
            self.assertEqual(lines[-1]["change"], "SetRuleConfig")
            self.assertIn(alias.split(":")[3].lower(), lines[-1]["plugin"])
            self.assertIn([line["change"] for line in lines[:-1]], ([], ["SetEngineConfig"]))
            self.assertEqual({line["request"] for line in lines}, {lines[0]["request"]})
            self.assertEqual({line["result"] for line in lines}, {"done"})
        self.call("installer", "SetProfileScene", profileId=1, scene=scene)
        self.told({**who, "change": "SetEngineConfig", "profile": 1, "plugin": "com.varlo.engine.sceneanalyzer"})
        self.call("guard", "ExecuteProfile", id=1)
        who |= {"user": "guard", "role": "operator"}
        self.told({**who, "change": "ExecuteProfile", "profile": 1})
        self.call("guard", "AlgorithmControl", command=3)
        self.told({**who, "change": "AlgorithmControl", "command": 3, "profile": None})
        self.call("guard", "StopProfile", profileId=-1)
        self.told({**who, "change": "StopProfile", "profile": -1})
        who |= {"user": "installer", "role": "administrator"}
        self.call("installer", "DeleteProfileBehavior", profileId=1, behaviorId=alias)
        self.told({**who, "change": "DeleteRule", "profile": 1})
        self.call("installer", "DeleteProfile", profileId=1)
        self.told({**who, "change": "DeleteProfile", "profile": 1})

    def test_each_refusal_has_its_line(self):
        self.call("installer", "CreateProfile", name="a")
        self.lines()
        refused = {"result": "refused", "user": "installer"}
        reason = self.fault("installer", "ExecuteProfile", id=9)
        self.told({**refused, "change": "ExecuteProfile", "profile": 9, "reason": reason})
        reason = self.fault("installer", "CreateProfile", name="x" * 256)
        self.told({**refused, "change": "CreateProfile", "profile": None, "reason": reason})
        reason = self.fault("installer", "AlgorithmControl", command=7)
        self.told({**refused, "change": "AlgorithmControl", "command": 7, "reason": reason})
        reason = self.fault("guard", "CreateProfile", name="b")
        self.told({"result": "refused", "user": "guard", "role": "operator", "change": "CreateProfile",
                   "reason": "guard may not change profiles"})
        self.assertEqual(reason, "guard may not change profiles")
        self.fault("wall", "StopProfile", profileId=-1)
        self.told({"result": "refused", "user": "wall", "role": "viewer", "change": "StopProfile",
                   "reason": "wall may not run or stop anything"})
        # Refused before the store is asked.
        self.fault("installer", "SetProfileBehavior", profileId=1, behaviorId="urn:none", config="<behavior/>")
        self.call("wall", "GetProfileList")
        self.assertEqual(self.lines(), [])
        # A behavior with an engine: two lines, or one where the role refuses both.
        alias = next(a for a in behaviors() if "AbandonedObject" in a)
        document = self.call("wall", "GetDefaultConfiguration", behaviorId=alias).findtext("config")
        self.fault("guard", "SetProfileBehavior", profileId=1, behaviorId=alias, config=document)
        line, = self.lines()
        self.assertEqual((line["result"], line["user"]), ("refused", "guard"))
        self.call("installer", "SetProfileBehavior", profileId=1, behaviorId=alias, config=document)
        self.assertEqual(sorted(line["change"] for line in self.lines()), ["SetEngineConfig", "SetRuleConfig"])

    def test_names_break_no_line(self):
        seed = random.randrange(2**32)
        print(f"seed {seed}")
        chance = random.Random(seed)
        alphabet = "ab\"\\'{}[]<>&% \u00e9\u0085\u2028\u2029\u202e\ufeff\U0001f600"
        names = [*AWKWARD, *{"x" + "".join(chance.choice(alphabet) for _ in range(chance.randrange(40))) + "x"
                             for _ in range(12)}]
        self.add_users(names)
        for name in names:
            with self.subTest(name=name):
                self.fault(name, "CreateProfile", name="a\nb")
                self.told({"user": name, "role": "viewer", "result": "refused", "peer": "127.0.0.1",
                           "reason": f"{name} may not change profiles"})

    def test_a_file_that_was_renamed_is_left(self):
        self.call("installer", "CreateProfile", name="a")
        old = self.host.folder / "audit.log.1"
        self.file.rename(old)
        self.call("installer", "CreateProfile", name="b")
        self.assertEqual(len(old.read_text().splitlines()), 1)
        self.assertEqual(len(self.file.read_text().splitlines()), 1)
        self.assertEqual(self.file.stat().st_mode & 0o777, 0o600)
        self.file.rename(old)
        self.host.process.send_signal(signal.SIGHUP)
        end = time.monotonic() + 60
        while not self.file.exists():
            self.assertLess(time.monotonic(), end, "SIGHUP opens the file anew")
            time.sleep(0.01)

    def test_one_that_cannot_be_written_holds_up_nothing(self):
        self.host.stop()
        self.host.settings.write_text(SETTINGS.format(audit="/dev/full"))
        self.host.start()
        for name in "abc":
            self.call("installer", "CreateProfile", name=name)
        self.host.stop()
        self.assertEqual(len([line for line in self.host.errors if "/dev/full can't be written" in line]), 1,
                         self.host.errors)


class Access(AuditTest):
    def test_refusals_are_gathered(self):
        for attempt in range(5):
            self.assertEqual(self.post("installer", "GetProfileList", password=f"wrong {attempt}")[0], 401)
        line, = self.told({"change": "access", "result": "refused", "peer": "127.0.0.1", "user": "installer",
                           "role": None, "count": None})
        self.assertTrue(line["reason"])
        self.host.stop()
        last, = self.told({"change": "access", "result": "refused", "peer": "127.0.0.1"})
        self.assertEqual(last["count"], 4)
        self.assertNotIn("wrong", self.file.read_text().replace("wrong password", ""))


if __name__ == "__main__":
    unittest.main()
