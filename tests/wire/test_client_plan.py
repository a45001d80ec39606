"""The command-line client: what differs between a folder and a camera, told and written."""

import json
import os
import pty
import re
import shutil
import subprocess

from command import CLIENT, main, run
from fleet import NAMES, SCENE, FleetTest, actions
from service import Fault

EVERYTHING = [("behavior", name, "create") for name in NAMES]


class Equal(FleetTest):
    ACTIVE = ("abandoned-object", "camera-sabotage")

    def test_a_host_has_what_was_exported_from_it(self):
        proxy = self.proxy()
        self.assertEqual(self.plan("--exit-code", url=proxy.url),
                         [{"host": proxy.url, "state": "same", "changes": []}])
        self.assertEqual(self.apply(url=proxy.url)[0]["state"], "same")
        self.assertEqual(proxy.writes, [])

    def test_another_host_gets_it_and_the_second_time_nothing_is_written(self):
        proxy = self.proxy(self.another())
        self.assertEqual(actions(self.plan("--exit-code", url=proxy.url, code=5)[0]),
                         [("profile", "Car park", "create"), *EVERYTHING, ("scene", "Car park", "create")])
        self.assertEqual(proxy.writes, [])
        self.assertEqual(self.apply(url=proxy.url)[0]["state"], "changed")
        # Those that can't be active beside the first of them.
        told = [json.loads(line) for line in self.ran.err.splitlines()]
        self.assertEqual({(one["file"], one["field"], one["level"]) for one in told}, {(proxy.url, "/active", "warning")})
        self.assertEqual([one["text"].partition(" ")[0] for one in told], [name for name in NAMES if name not in self.ACTIVE])
        self.assertEqual(proxy.writes, ["CreateProfile"] + ["SetProfileBehavior"] * 8 + ["SetProfileScene"])
        self.assertEqual(self.documents(proxy.host), self.documents(self.host))
        again = self.apply(url=proxy.url)
        self.assertEqual((again[0]["state"], again[0]["changes"]), ("same", []))
        self.assertEqual(len(proxy.writes), 10)

    def test_spelling_makes_no_difference(self):
        self.edit("loitering.xml", r'<behavior version="2.0" id="([^"]*)" active="1"',
                  r'<?xml version="1.0"?><!-- a note -->\n<behavior   active="+1"\n id="\1" version="2.0"')
        self.edit("loitering.xml", r">5<", ">\n  05 <")
        self.edit("scene.xml", r'name="[^"]*"', 'name="Other"')
        self.assertEqual(self.plan()[0]["state"], "same")

    def test_the_name_is_that_of_the_list(self):
        self.edit("scene.xml", r'name="[^"]*"', 'name="Other"')
        host = self.another()
        self.apply(url=host.url)
        self.assertEqual([p["name"] for p in self.on(host, "profile", "list").json], ["Car park"])


class Different(FleetTest):
    """Each kind of difference is planned, applied and gone, on the profile that runs and keeps its number."""

    behaviors = ("loitering", "object-removal")

    def setUp(self):
        super().setUp()
        self.client("profile", "run", "1")

    def check(self, expected, *words, force=()):
        self.assertEqual(actions(self.plan(*words)[0]), expected)
        line = self.apply(*words, *force)[0]
        self.assertEqual((line["state"], actions(line)), ("changed", expected))
        self.assertEqual(self.ran.err, "")
        self.assertEqual(self.apply(*words)[0]["state"], "same")
        self.assertEqual(self.on(self.host, "profile", "list").json,
                         [{"id": 1, "name": "Car park", "active": True, "preset": ""}])

    def test_a_number(self):
        self.edit("loitering.xml", r"(<dwellTime[^>]*>)\d+<", r"\g<1>77<")
        self.check([("behavior", "loitering", "set")])
        self.assertIn(">77<", self.client("behavior", "get", "1", "loitering").out)

    def test_a_zone_more_and_a_zone_less(self):
        one = (self.folder / "loitering.xml").read_text(encoding="utf-8")
        self.edit("loitering.xml", "(<roi>.*</roi>)", r"\1\1")
        self.check([("behavior", "loitering", "set")])
        (self.folder / "loitering.xml").write_text(one, encoding="utf-8")
        self.check([("behavior", "loitering", "set")])

    def test_whether_it_is_active(self):
        self.edit("loitering.xml", 'active="1"', 'active="0"')
        self.check([("behavior", "loitering", "set")])

    def test_a_behavior_that_is_missing(self):
        self.client("behavior", "delete", "1", "object-removal")
        self.check([("behavior", "object-removal", "create")])

    def test_one_that_is_there_beside_the_folder_stays_unless_it_is_pruned(self):
        self.without("object-removal")
        self.assertEqual(self.apply()[0]["state"], "same")
        self.check([("behavior", "object-removal", "delete")], "--prune", force=["--force"])

    def check_refused(self, *words):
        ran = run("apply", self.folder, *words, url=self.host.url)
        self.assertEqual((ran.code, ran.out), (2, ""))
        self.assertIn("--force", ran.err)

    def test_a_deletion_is_agreed_to(self):
        self.without("object-removal")
        self.check_refused("--prune")
        for answer, code in ((b"no\n", 1), (b"\n", 1), (b"yes\n", 0)):
            before = self.documents(self.host)
            self.assertEqual(self.at_a_terminal(answer, "apply", self.folder, "--prune"), code)
            self.assertEqual(self.documents(self.host) == before, code == 1)

    def at_a_terminal(self, answer, *words):
        inner, outer = pty.openpty()
        process = subprocess.Popen([CLIENT, "--url", self.host.url, *words], stdin=outer, stdout=subprocess.DEVNULL,
                                   stderr=subprocess.PIPE)
        os.write(inner, answer)
        self.assertIn(b"deletes 1 behavior", process.communicate(timeout=60)[1])
        os.close(inner)
        os.close(outer)
        return process.returncode

    def test_an_idle_behavior_is_a_missing_one(self):
        self.client("behavior", "delete", "1", "object-removal")
        self.edit("object-removal.xml", "<roi>.*</roi>", "")
        self.edit("object-removal.xml", 'active="1"', 'active="0"')
        self.assertEqual(self.plan("--prune")[0]["state"], "same")
        self.client("behavior", "set", "1", "loitering",
                    text=self.client("behavior", "default", "loitering").out.replace('active="1"', 'active="0"'))
        self.without("loitering")
        self.assertEqual(self.plan("--prune")[0]["state"], "same")

    def test_the_scene(self):
        self.edit("scene.xml", r"<sensitivity>8", "<sensitivity>3")
        self.check([("scene", "Car park", "set")])
        self.assertIn("<sensitivity>3<", self.client("scene", "get", "1").out)

    def test_what_runs(self):
        self.assertEqual(self.plan("--run")[0]["state"], "same")
        self.client("profile", "create", "Night")
        self.client("profile", "run", "Night")
        self.assertEqual(self.plan()[0]["state"], "same")
        line = self.plan("--run")[0]
        self.assertEqual(line["changes"], [{"element": "run", "id": "Car park", "action": "run", "before": "Night",
                                            "after": "Car park"}])
        self.assertEqual(actions(self.apply("--run")[0]), [("run", "Car park", "run")])
        self.assertEqual(self.client("profile", "active", "--json").json, {"id": 1})
        self.assertEqual(self.apply("--run")[0]["state"], "same")

    def test_before_and_after_are_documents(self):
        self.edit("loitering.xml", r"(<dwellTime[^>]*>)\d+<", r"\g<1>77<")
        change = self.plan()[0]["changes"][0]
        self.assertIn(">5</dwellTime>", change["before"])
        self.assertIn(">77</dwellTime>", change["after"])
        told = run("plan", self.folder, url=self.host.url).out
        self.assertRegex(told, r"set behavior loitering\n.*dwellTime.* 5 .*77")

    def test_two_of_the_name_are_an_error_of_the_host(self):
        self.client("profile", "create", "Car park")
        for line in (self.plan(code=1)[0], self.plan("--exit-code", code=1)[0], self.apply(code=1)[0]):
            self.assertEqual(line["state"], "failed")
            self.assertIn("More than one profile is named 'Car park'", line["error"])


class SavedPlans(FleetTest):
    behaviors = ("loitering",)

    def setUp(self):
        super().setUp()
        self.file = self.work / "car-park.plan"
        self.other = self.another()
        self.edit("loitering.xml", r"(<dwellTime[^>]*>)\d+<", r"\g<1>77<")
        self.hosts = self.hosts_file([self.host.url, self.other.url])

    def save(self, *words):
        return self.plan("--hosts", self.hosts, "--out", self.file, *words)

    def saved(self, *words, code=0):
        return {line["host"]: line for line in self.apply(*words, folder=self.file, code=code)}

    def test_it_is_applied_without_the_folder(self):
        planned = {line["host"]: line["changes"] for line in self.save("--run")}
        shutil.rmtree(self.folder)
        done = self.saved()
        self.assertEqual({host: line["changes"] for host, line in done.items()}, planned)
        self.assertEqual({line["state"] for line in done.values()}, {"changed"})
        for host in (self.host, self.other):
            self.assertEqual(self.on(host, "profile", "active").json, {"id": 1})

    def test_a_host_that_has_changed_since_is_refused_and_named(self):
        self.save()
        self.client("behavior", "set", "1", "loitering",
                    text=self.client("behavior", "get", "1", "loitering").out.replace(">5</dwell", ">6</dwell"))
        before = self.documents(self.host)
        done = self.saved(code=1)
        self.assertEqual((done[self.host.url]["state"], done[self.other.url]["state"]), ("skipped", "changed"))
        self.assertIn("isn't as it was", done[self.host.url]["error"])
        self.assertEqual(self.documents(self.host), before)

    def test_what_is_refused_asks_for_nothing(self):
        self.save("--prune")
        self.client("behavior", "set", "1", "object-removal", text=self.client("behavior", "example", "object-removal").out)
        before = self.documents(self.host)
        done = self.saved(code=1)
        self.assertEqual((done[self.host.url]["state"], done[self.other.url]["state"]), ("skipped", "changed"))
        self.assertEqual(self.documents(self.host), before)
        # What the plan itself deletes has to be agreed to.
        self.save("--prune")
        self.assertEqual(self.saved(code=2), {})
        self.assertIn("deletes 1 behavior", self.ran.err)

    def test_what_is_no_whole_plan(self):
        self.save()
        whole = self.file.read_text(encoding="utf-8")
        lines = whole.splitlines(keepends=True)
        for text in ("", "{}\n", "no plan\n", whole[:-20], "".join(lines[:-1]), "".join(lines[:2] + lines[3:]),
                     "".join(lines[1:]), whole.replace('{"plan":1', '{"plan":99'), whole.replace("320x240", "large"),
                     lines[0] + "".join(lines[1:]).replace(self.other.url, "http://127.0.0.1:9/")):
            self.file.write_text(text, encoding="utf-8")
            self.assertEqual(run("apply", self.file).code, 4, text[:60])
        self.file.write_text(whole, encoding="utf-8")
        for words in (("--hosts", self.hosts), ("--url", self.host.url), ("--camera", "gate"), ("--frame", "320x240"), ("--prune",), ("--run",)):
            ran = run("apply", self.file, *words)
            self.assertEqual((ran.code, ran.out), (2, ""))
            self.assertIn("is a saved plan", ran.err)

    def test_a_host_that_was_not_reached_is_not_written(self):
        self.other.stop()
        self.plan("--hosts", self.hosts, "--out", self.file, code=1)
        self.other.start()
        done = self.saved(code=1)
        self.assertEqual((done[self.host.url]["state"], done[self.other.url]["state"]), ("changed", "skipped"))
        self.assertIn("holds nothing for it", done[self.other.url]["error"])


class Frames(FleetTest):
    """A folder whose coordinates count in one frame, onto hosts with others."""

    behaviors = ("loitering", "abandoned-object")

    def points(self, host, *words):
        """The first zone's x and y."""
        text = run("behavior", "get", "Car park", "loitering", url=host.url).out
        return [tuple(int(number) for number in point)
                for point in re.findall(r"<x>(-?\d+)</x>\s*<y>(-?\d+)</y>", text)]

    def test_a_host_with_another_frame_gets_other_numbers_and_has_no_difference_then(self):
        large, odd = self.another(), self.another()
        hosts = self.hosts_file([f"{large.url} frame=640x480", f"{odd.url}   frame=100x1000"])
        self.assertEqual({line["state"] for line in self.apply("--hosts", hosts)}, {"changed"})
        ours = self.points(self.host)
        self.assertEqual(self.points(large), [(2 * x, 2 * y) for x, y in ours])
        self.assertEqual(self.points(odd), [((x * 200 + 320) // 640, (y * 2000 + 240) // 480) for x, y in ours])
        self.assertEqual({line["state"] for line in self.plan("--hosts", hosts, "--prune")}, {"same"})
        self.assertEqual(self.plan(url=large.url)[0]["state"], "differs")
        self.assertEqual(self.plan("--frame", "640x480", url=large.url)[0]["state"], "same")

    def test_an_export_keeps_its_frame(self):
        other, third = self.another(), self.another()
        self.client("export", "1", self.folder, "--force", "--frame", "640x480")
        self.assertIn('frame="640x480"', (self.folder / "profile.xml").read_text(encoding="utf-8"))
        self.assertEqual(self.plan("--frame", "640x480")[0]["state"], "same")
        self.apply(url=other.url)
        self.assertEqual(run("import", self.folder, url=third.url).code, 0)
        for host in (other, third):
            self.assertEqual(self.points(host), [((x + 1) // 2, (y + 1) // 2) for x, y in self.points(self.host)])

    def test_a_saved_plan_holds_the_frames(self):
        large = self.another()
        file = self.work / "plan"
        self.plan("--hosts", self.hosts_file([f"{large.url} frame=640x480"]), "--out", file)
        self.assertEqual(self.apply(folder=file)[0]["state"], "changed")
        self.assertEqual(self.points(large), [(2 * x, 2 * y) for x, y in self.points(self.host)])

    def test_a_camera_by_its_name(self):
        large = self.another()
        config = self.work / "config"
        (config / "varlo-analytics").mkdir(parents=True)
        (config / "varlo-analytics" / "cameras.ini").write_text(f"[gate]\nurl = {large.url}\nframe = 640x480\n")
        ran = run("apply", self.folder, "--hosts", self.hosts_file(["gate"]), "--json",
                  environment={"XDG_CONFIG_HOME": str(config)})
        self.assertEqual((ran.code, ran.json["host"]), (0, large.url), ran.err)
        self.assertEqual(self.points(large), [(2 * x, 2 * y) for x, y in self.points(self.host)])

    def test_lines_that_are_wrong(self):
        for line, text in (("h frame=640", ":3: frame: '640' isn't a frame"), ("h colour=red", ":3: 'colour' isn't known"),
                           ("h loud", ":3: 'loud' isn't key=value"), ("h user=", ":3: user has no value")):
            for command in ("plan", "apply"):
                ran = run(command, self.folder, "--hosts", self.hosts_file([line]))
                self.assertEqual((ran.code, ran.out), (2, ""))
                self.assertIn(text, ran.err)

    def test_a_point_outside_is_warned_of(self):
        self.edit("loitering.xml", "<x>40</x>", "<x>400</x>")
        self.assertEqual(self.plan()[0]["state"], "differs")
        self.assertRegex(self.ran.err, "loitering.xml.*400")
        self.assertEqual(self.plan("--strict", code=4), [])
        self.assertEqual(self.apply("--strict", code=4), [])


class Refused(FleetTest):
    behaviors = ("loitering",)

    def test_documents_and_folders_that_can_not_be_used(self):
        self.assertEqual(self.plan(folder=self.work / "nothing", code=4), [])
        self.edit("loitering.xml", "</rois>", "")
        self.assertEqual(self.plan(code=4), [])
        self.assertIn("loitering.xml", self.ran.err)
        self.assertEqual(self.apply(code=4), [])

    def test_a_host_that_is_not_there(self):
        self.host.stop()
        self.assertEqual(self.plan(code=3)[0]["state"], "unreachable")
        self.assertEqual(self.apply(code=3)[0]["state"], "unreachable")
        line = self.plan("--hosts", self.hosts_file([self.host.url]), code=1)[0]
        self.assertIn("Connection refused", line["error"])

    def test_an_unknown_behavior_is_taken_back(self):
        host = self.another()
        self.edit("profile.xml", "urn:varlo-com:AlgorithmId:LoiteringDetection:1", "urn:unknown:Loitering:1")
        self.edit("loitering.xml", "urn:varlo-com:AlgorithmId:LoiteringDetection:1", "urn:unknown:Loitering:1")
        line = self.apply(url=host.url, code=1)[0]
        self.assertEqual(line["state"], "restored")
        self.assertIn("Unsupported behavior Id", line["error"])
        with self.assertRaises(Fault):
            host.call("DeleteProfile", profileId=1)


if __name__ == "__main__":
    main()
