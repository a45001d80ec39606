"""The command-line client: every command against the running service, for people and for programs."""

import json
import os
import subprocess
from pathlib import Path

from lxml import etree

from command import CLIENT, ClientTest, main

LOITERING = "urn:varlo-com:AlgorithmId:LoiteringDetection:1"


class Profiles(ClientTest):
    def test_a_profile_is_made_listed_run_stopped_and_deleted(self):
        self.assertIn("There are no profiles.", self.client("profile", "list").out)
        self.assertIn("'Car park'", self.client("profile", "create", "Car park").out)
        self.assertEqual(self.client("profile", "create", "Nacht", "--json").json, {"id": 2, "name": "Nacht"})
        self.assertEqual(self.client("profile", "active").out, "No profile runs.\n")
        self.assertIsNone(self.client("profile", "active", "--json").json["id"])
        self.client("profile", "run", "Car park")
        self.assertEqual(self.client("--json", "profile", "active").json, {"id": 1})
        self.assertEqual(self.client("profile", "list", "--json").json,
                         [{"id": 1, "name": "Car park", "active": True, "preset": ""},
                          {"id": 2, "name": "Nacht", "active": False, "preset": ""}])
        self.assertEqual(self.client("profile", "list").out,
                         "ID  NAME      RUNS  PRESET\n1   Car park  yes\n2   Nacht\n")
        self.client("profile", "stop", "2")
        self.assertEqual(self.client("profile", "active", "--json").json, {"id": 1})
        self.client("profile", "stop")
        self.assertIsNone(self.client("profile", "active", "--json").json["id"])
        self.client("profile", "delete", "Nacht", "1")
        self.assertEqual(self.client("profile", "list", "--json").json, [])

    def test_a_name_has_to_mean_one_profile(self):
        for _ in range(2):
            self.client("profile", "create", "Twin")
        self.assertIn("More than one profile is named 'Twin'", self.client("profile", "run", "Twin", code=1).err)
        self.assertIn("No profile is named 'None'", self.client("profile", "delete", "1", "None", code=1).err)
        self.assertEqual(len(self.client("profile", "list", "--json").json), 2)

    def test_a_name_is_one_word_whatever_is_in_it(self):
        for name in ("1", "2", "[Night]", "[1,2]", "[]", "[last"):
            self.client("profile", "create", name)
        self.client("profile", "delete", "[1,2]", "[Night]", "[last", "[]")
        self.assertEqual([one["id"] for one in self.client("profile", "list", "--json").json], [1, 2])
        self.assertIn("PROFILE...\n", self.client("profile", "delete", "--help").out)
        document = self.host.folder / "[a,b]"
        document.write_text(self.client("behavior", "example", "loitering").out, encoding="utf-8")
        ran = subprocess.run([CLIENT, "validate", "[a,b]"], cwd=self.host.folder, capture_output=True, text=True, timeout=60)
        self.assertRegex(ran.stdout, r"(?m)^\[a,b\] +loitering  correct$")

    def test_names_never_reach_a_terminal_raw(self):
        name = "a\x7f\u009b31m\u202eb"
        self.client("profile", "create", name)
        self.assertIn("a<U+007F><U+009B>31m<U+202E>b", self.client("profile", "list").out)
        listed = self.client("profile", "list", "--json")
        self.assertEqual(listed.json[0]["name"], name)
        self.assertNotIn("\x7f", listed.out)

    def test_columns_stand_under_each_other_whatever_the_script(self):
        self.client("profile", "create", "\u4e2d\u6587")
        self.client("profile", "run", "1")
        self.assertEqual(self.client("profile", "list").out, "ID  NAME  RUNS  PRESET\n1   \u4e2d\u6587  yes\n")


class Control(ClientTest):
    def test_words_for_the_analytics(self):
        states = lambda: {b["behavior"]: b["availability"] for b in
                          self.client("availability", "--with", "loitering", "--json").json}
        self.assertEqual(states()["object-counting"], "available")
        self.assertEqual(self.client("control", "motion-detection", "on").out, "The motion detection is on.\n")
        self.assertEqual(states()["object-counting"], "unavailable")
        self.assertEqual(self.client("control", "motion-detection", "off", "--json").json,
                         {"done": "control motion-detection off"})
        self.assertEqual(states()["object-counting"], "available")
        self.assertEqual(self.client("control", "stop").out, "The analytics are stopped.\n")
        self.assertEqual(self.client("control", "start").out, "The analytics run.\n")


class Behaviors(ClientTest):
    def setUp(self):
        super().setUp()
        self.client("profile", "create", "Car park")

    def example(self, name="loitering"):
        return self.client("behavior", "example", name).out

    def file(self, text, name="b.xml"):
        path = self.host.folder / name
        path.write_text(text, encoding="utf-8")
        return path

    def names(self):
        return self.client("behavior", "--help").out.partition("these names:\n")[2].split()

    def test_every_example_is_what_the_service_writes(self):
        self.assertGreaterEqual(len(self.names()), 8)
        for name in self.names():
            self.client("profile", "create", name)
            example = self.client("behavior", "example", name).out
            stored = self.client("behavior", "set", name, name, "--strict", text=example, timeout=120)
            self.assertEqual(stored.err, "")
            self.assertRegex(stored.out, f"^Profile [0-9]+ has stored {name} as it was sent.\n$")
            self.assertEqual(self.client("behavior", "get", name, name).out, example)
            # In JSON it is the same one.
            shown = self.client("behavior", "get", name, name, "--json").out
            self.client("behavior", "set", name, name, "--strict", text=shown)
            self.assertEqual(self.client("behavior", "get", name, name, "--json").out, shown)
            self.assertEqual(self.client("behavior", "get", name, name).out, example)

    def test_set_get_availability_delete(self):
        path = self.file(self.example())
        self.client("behavior", "set", "1", "loitering", path)
        for called in ("loitering", "LoiteringDetection", LOITERING, "com.varlo.rule.loiteringdetection"):
            got = self.client("behavior", "get", "Car park", called, "--json").json
            self.assertEqual((got["profile"], got["behavior"]), (1, "loitering"))
            self.assertEqual(got["document"]["rois"][0]["name"], "Zone 1")
            self.assertEqual(got["document"]["rois"][0]["vertices"], [[40, 40], [280, 40], [280, 200], [40, 200]])
        rows = {row["behavior"]: row for row in self.client("availability", "Car park", "--json").json}
        self.assertEqual(rows["loitering"], {"behavior": "loitering", "name": "Loitering Detection",
                                             "availability": "active", "fixedPosition": True, "advancedMode": False,
                                             "hidden": False, "id": LOITERING})
        self.assertRegex(self.client("availability", "1").out, r"(?m)^loitering +Loitering Detection +active +yes$")
        self.assertNotIn("active ", self.client("availability").out.replace("unavailable", ""))
        self.client("behavior", "delete", "1", "loitering")
        self.assertIn("has no behavior", self.client("behavior", "delete", "1", "loitering", code=1).err)

    def test_default_documents(self):
        self.assertIn("<behavior", self.client("behavior", "default", "object-counting").out)
        self.assertEqual(self.client("behavior", "default", "loitering", "--json").json["id"], LOITERING)

    def test_set_tells_what_came_back_different(self):
        text = self.example().replace("<alarmSeverity>0", "<alarmSeverity>9").replace("<minPoints>3", "<minPoints>4")
        lines = text.splitlines()
        line = lambda part: next(n for n, one in enumerate(lines, 1) if part in one)
        refused = self.client("behavior", "set", "1", "loitering", text=text, code=4)
        self.assertIn("2 errors. Nothing has been sent", refused.err)
        self.client("behavior", "get", "1", "loitering", code=1)
        sent = self.client("behavior", "set", "1", "loitering", "-", "--json", "--force", text=text)
        self.assertEqual(sent.json["differences"], [
            {"line": line("minPoints"), "node": "/behavior/minPoints", "sent": "4", "stored": "3"},
            {"line": line("alarmSeverity"), "node": "/behavior/rois/roi/alarmSeverity", "sent": "9", "stored": "3"}])
        told = [json.loads(one) for one in sent.err.splitlines()]
        self.assertEqual([(one["file"], one["line"], one["field"], one["level"]) for one in told],
                         [("standard input", line("minPoints"), "/minPoints", "error"),
                          ("standard input", line("alarmSeverity"), "/rois/0/alarmSeverity", "error")])
        shown = self.client("behavior", "set", "1", "loitering", "--force", text=text).out
        self.assertRegex(shown, rf"(?m)^{line('alarmSeverity')} +/behavior/rois/roi/alarmSeverity +9 +3$")

    def test_a_minimal_document_comes_back_as_it_was_sent_and_one_word_is_one_line(self):
        minimal = f'<behavior id="{LOITERING}" active="1"><rois><roi><name>Gate</name></roi></rois></behavior>'
        self.assertEqual(self.client("behavior", "set", "1", "loitering", text=minimal).out,
                         "Profile 1 has stored loitering as it was sent.\n")
        changed = minimal.replace("</name>", "</name><alarmSeverity>7</alarmSeverity>")
        differences = self.client("behavior", "set", "1", "loitering", "--json", "--force", text=changed).json["differences"]
        self.assertEqual([one["node"] for one in differences], ["/behavior/rois/roi/alarmSeverity"])

    def test_warnings_have_line_numbers_and_strict_takes_none(self):
        text = self.example().replace("<alarmDelay min=\"30\" max=\"1800\">300", "<alarmDelay>5000")
        root = etree.fromstring(text)
        for vertex in root.findall(".//vertex")[2:]:
            vertex.getparent().remove(vertex)
        path = self.file(etree.tostring(root, encoding="unicode"))
        lines = path.read_text().splitlines()
        line = lambda part: next(n for n, one in enumerate(lines, 1) if part in one)
        refused = self.client("behavior", "set", "1", "loitering", path, "--strict", code=4)
        self.assertIn("2 warnings", refused.err)
        self.assertIn("Nothing has been sent; correct the document", refused.err)
        self.client("behavior", "get", "1", "loitering", code=1)
        warnings = self.client("behavior", "set", "1", "loitering", path).err
        for where, what in (("<roi>", "2 points, too few"), ("alarmDelay", "5000, the advised values are 30 to 1800")):
            self.assertRegex(warnings, rf"(?m)^{path}:{line(where)}: warning: .*{what}")
        self.assertEqual(len(warnings.splitlines()), 2)

    def test_one_that_cannot_be_active_is_told_with_the_reason(self):
        def told(profile, name, *words, code=0):
            return self.client("behavior", "set", profile, name, *words, text=self.example(name), code=code).err
        self.assertEqual(told("1", "loitering") + told("1", "camera-sabotage"), "")
        self.assertIn("no more than 2 can be selected", told("1", "object-removal"))
        self.assertIn("and --strict takes none", told("1", "stopped-vehicle", "--strict", code=4))
        self.client("profile", "create", "Other")
        self.assertEqual(told("Other", "adaptive-motion"), "")
        self.assertIn("needs a camera that stands still, and adaptive-motion lets it move", told("Other", "loitering"))
        # What isn't active takes nothing away.
        idle = self.example("loitering").replace('active="1"', 'active="0"')
        self.assertEqual(self.client("behavior", "set", "Other", "loitering", text=idle).err, "")

    def test_an_editor_changes_a_document_and_what_was_refused_is_kept(self):
        self.client("behavior", "set", "1", "loitering", text=self.example())
        edit = lambda command, visual="false", **options: self.client(
            "behavior", "edit", "1", "loitering", environment={"EDITOR": command, "VISUAL": visual}, **options)
        self.assertIn("as it was sent", edit("sed -i 's/Zone 1/Gate 1/'").out)
        self.assertIn("Gate 1", self.client("behavior", "get", "1", "loitering").out)
        self.assertEqual(edit("true").out, "Nothing has been changed.\n")
        self.assertEqual(edit("", visual="true").out, "Nothing has been changed.\n")
        refused = edit("sed -i s/dwellTime/dweltime/g", code=4).err
        self.assertIn("did you mean <dwellTime>?", refused)
        kept = Path(refused.rstrip().rstrip(".").rpartition(" ")[2])
        self.assertIn("dweltime", kept.read_text(encoding="utf-8"))
        kept.unlink()
        self.assertIn("failed", edit("false", code=4).err)


    def test_a_field_or_a_group_of_them_is_explained(self):
        fields = lambda *words: [one["field"] for one in self.client("behavior", "explain", *words, "--json").json["fields"]]
        self.assertEqual(fields("stopped-vehicle", "dwellTime"), ["rois/dwellTime"])
        self.assertEqual(fields("stopped-vehicle", "filters"), ["filters/objectsizes/minObj", "filters/objectsizes/maxObj"])
        self.assertEqual(len(fields("loitering", "rois")), len(fields("loitering")) - 1)


class Zones(ClientTest):
    def setUp(self):
        super().setUp()
        self.client("profile", "create", "Car park")

    def points(self, name, behavior="loitering"):
        zones = self.client("zone", "list", "1", behavior, "--json").json
        return {zone["name"]: zone["points"] for zone in zones}[name]

    def test_zones_are_added_moved_and_removed(self):
        self.assertIn("has no zones", self.client("zone", "list", "Car park", "loitering").out)
        added = self.client("zone", "add", "Car park", "loitering", "Gate", "40,40", "280,40", "280,200", "--strict")
        self.assertEqual((added.out, added.err), ("Profile 1 has stored loitering as it was sent.\n", ""))
        document = self.client("behavior", "get", "1", "loitering", "--json").json["document"]
        self.assertEqual((document["active"], document["rois"][0]["enable"]), (1, 1))
        self.assertEqual(self.points("Gate"), [[40, 40], [280, 40], [280, 200]])
        self.assertIn("There is a zone 'Gate'", self.client("zone", "add", "1", "loitering", "Gate", "1,1", "2,2", "3,1", code=1).err)
        self.client("zone", "move", "1", "loitering", "Gate", "--by", "-5,10")
        self.assertEqual(self.points("Gate"), [[35, 50], [275, 50], [275, 210]])
        self.client("zone", "move", "1", "loitering", "Gate", "0,0", "9,0", "9,9")
        self.assertEqual(self.points("Gate"), [[0, 0], [9, 0], [9, 9]])
        self.client("zone", "remove", "1", "loitering", "Gate")
        self.assertEqual(self.client("zone", "list", "1", "loitering", "--json").json, [])
        self.assertIn("no zone 'Gate'", self.client("zone", "remove", "1", "loitering", "Gate", code=1).err)

    def test_they_equal_edits_by_hand(self):
        example = self.client("behavior", "example", "stopped-vehicle").out
        self.client("behavior", "set", "1", "stopped-vehicle", text=example)
        self.client("profile", "create", "Hand")
        root = etree.fromstring(example)
        zone = etree.fromstring(etree.tostring(root.find("rois/roi")))
        zone.find("name").text = "Gate"
        for vertex, (x, y) in zip(zone.iter("vertex"), ((10, 10), (90, 10), (90, 90), (10, 90))):
            vertex.find("x").text, vertex.find("y").text = str(x), str(y)
        root.find("rois").append(zone)
        self.client("behavior", "set", "Hand", "stopped-vehicle", text=etree.tostring(root, encoding="unicode"))
        self.client("zone", "add", "Car park", "stopped-vehicle", "Gate", "10,10", "90,10", "90,90", "10,90")
        self.client("zone", "add", "Car park", "stopped-vehicle", "any", "--exclude", "20,20", "30,20", "30,30")
        self.assertEqual(self.points("Exclude 2", "stopped-vehicle"), [[20, 20], [30, 20], [30, 30]])
        self.client("zone", "remove", "Car park", "stopped-vehicle", "Exclude 2")
        documents = [self.client("behavior", "get", name, "stopped-vehicle").out for name in ("Car park", "Hand")]
        self.assertEqual(documents[0], documents[1])

class Pictures(ClientTest):
    def test_show_draws_what_is_stored(self):
        svg = "{http://www.w3.org/2000/svg}"
        for name in self.client("behavior", "--help").out.partition("these names:\n")[2].split():
            self.client("profile", "create", name)
            self.client("behavior", "set", name, name, text=self.client("behavior", "example", name).out)
            root = etree.fromstring(self.client("show", name).out.encode())
            zones = self.client("zone", "list", name, name, "--json").json
            # The same picture stands in the documents, if there is one.
            picture = Path(os.environ["SOURCE"]) / "docs/pictures" / f"{name}.svg"
            if os.environ.get("DRAW_PICTURES"):
                picture.write_text(self.client("show", name).out, encoding="utf-8")
            if picture.exists():
                self.assertEqual(picture.read_text(encoding="utf-8"), self.client("show", name).out,
                                 "DRAW_PICTURES=1 draws it anew")
            drawn = [shape.get("points") for shape in root.iter(svg + "polygon", svg + "polyline")]
            self.assertEqual(drawn, [" ".join(f"{x},{y}" for x, y in zone["points"]) for zone in zones])
        path = self.host.folder / "picture.svg"
        self.client("show", "loitering", "--out", path)
        self.assertIn("Zone 1", path.read_text(encoding="utf-8"))


class Scenes(ClientTest):
    def test_default_set_get_rename(self):
        self.client("profile", "create", "Yard")
        self.assertIn("has no scene yet", self.client("scene", "get", "Yard", code=1).err)
        self.assertIsNone(self.client("scene", "get", "Yard", "--json").json["document"])
        scene = self.client("scene", "default").out.replace("<sensitivity>5<", "<sensitivity>8<")
        scene = scene.replace('name=""', 'name="Gate"')
        self.assertIn("stored the scene as it was sent", self.client("scene", "set", "Yard", text=scene).out)
        self.assertEqual(self.client("scene", "get", "Gate").out, scene)
        self.client("scene", "rename", "Gate", "Gate & <more>")
        self.assertEqual(self.client("profile", "list", "--json").json[0]["name"], "Gate & <more>")
        self.assertIn("<sensitivity>8<", self.client("scene", "get", "1").out)
        misspelt = scene.replace("<tuning>0</tuning>", "<tunning>0</tunning>").replace('name="Gate"', 'name="Gate &amp; &lt;more&gt;"')
        refused = self.client("scene", "set", "1", text=misspelt, code=4)
        self.assertIn("<tunning> isn't known in <analyticProfile> and would be ignored; did you mean <tuning>?", refused.err)
        self.assertEqual(self.client("scene", "set", "1", "--json", "--force", text=misspelt).json["differences"],
                         [{"line": 5, "node": "/analyticProfile/tunning", "sent": "0", "stored": "(nothing)"}])
        shown = self.client("scene", "get", "1", "--json").out
        self.client("scene", "set", "1", text=shown)
        self.assertEqual(self.client("scene", "get", "1", "--json").out, shown)
        edit = lambda command, **options: self.client("scene", "edit", "1", environment={"EDITOR": command, "TMPDIR": str(self.host.folder)}, **options)
        self.assertIn("stored the scene as it was sent", edit("sed -i 's/<sensitivity>8</<sensitivity>3</'").out)
        self.assertIn("<sensitivity>3<", self.client("scene", "get", "1").out)
        refused = edit("sed -i 's/<sensitivity>3</<sensitivity>low</'", code=4).err
        self.assertIn("an integer", refused)
        kept = Path(refused.rstrip().rstrip(".").rpartition(" ")[2])
        self.assertIn("<sensitivity>low<", kept.read_text(encoding="utf-8"))
        self.assertIn("<sensitivity>3<", self.client("scene", "get", "1").out)
        # Without a name of its own it leaves the profile's.
        self.assertEqual(self.client("scene", "set", "1", text=self.client("scene", "example").out).out,
                         "Profile 1 has stored the scene as it was sent.\n")
        self.assertEqual(self.client("profile", "list", "--json").json[0]["name"], "Gate & <more>")
        self.assertIn("does not exist", self.client("scene", "get", "7", code=1).err)


class Readme(ClientTest):
    def typed(self, heading):
        """Each command below the heading, with what the page shows that it prints."""
        text = (Path(os.environ["SOURCE"]) / "README.md").read_text(encoding="utf-8")
        shown = []
        for line in text.partition(f"## {heading}\n")[2].partition("\n## ")[0].splitlines():
            if line.startswith("    $ ") and "alias " not in line and "curl " not in line:
                shown.append((line[6:], []))
            elif line.startswith("    ") and shown:
                shown[-1][1].append(line[4:])
            elif line and shown and shown[-1][1]:
                break
        return shown

    def type(self, command, complaints=subprocess.STDOUT):
        environment = {**os.environ, "VARLO_ANALYTICS_URL": self.host.url,
                       "PATH": f"{Path(CLIENT).parent}:{os.environ['PATH']}"}
        ran = subprocess.run(["bash", "-c", command], cwd=self.host.folder, env=environment, stdout=subprocess.PIPE,
                             stderr=complaints, text=True, timeout=120)
        self.assertEqual((ran.returncode, ran.stderr or ""), (0, ""), command)
        return ran.stdout

    def test_the_way_to_a_behavior_that_runs(self):
        commands = self.typed("Start")
        self.assertEqual(len(commands), 6)
        for command, printed in commands:
            self.assertEqual([line.rstrip() for line in self.type(command).splitlines()], printed, command)

    def test_the_way_to_a_zone_of_ones_own(self):
        commands = self.typed("A zone of your own")
        self.assertGreater(len(commands), 5)
        for command, _ in commands:
            self.type(command, subprocess.PIPE)
        zone = self.client("behavior", "get", "Yard", "loitering", "--json").json["document"]["rois"][0]
        self.assertEqual((zone["name"], zone["enable"], zone["dwellTime"]), ("Gate", 1, 30))
        self.assertEqual(self.client("profile", "list", "--json").json[-1]["active"], True)


if __name__ == "__main__":
    main()
