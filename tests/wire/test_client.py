"""The command-line client: every command against the running service, for people and for programs."""

from lxml import etree

from command import ClientTest, main

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

    def test_every_example_is_what_the_service_writes(self):
        names = self.client("behavior", "--help").out.partition("these names:\n")[2].split()
        self.assertEqual(len(names), 8)
        for name in names:
            example = self.client("behavior", "example", name).out
            stored = self.client("behavior", "set", "Car park", name, text=example, timeout=120)
            self.assertEqual((stored.err, stored.out), ("", f"Profile 1 has stored {name} as it was sent.\n"))
            self.assertEqual(self.client("behavior", "get", "1", name).out, example)

    def test_set_get_availability_delete(self):
        path = self.file(self.example())
        self.client("behavior", "set", "1", "loitering", path)
        for called in ("loitering", "LoiteringDetection", LOITERING, "com.varlo.rule.loiteringdetection"):
            got = self.client("behavior", "get", "Car park", called, "--json").json
            self.assertEqual((got["profile"], got["behavior"]), (1, "loitering"))
            self.assertEqual(etree.fromstring(got["document"]).findtext("rois/roi/name"), "Zone 1")
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
        differences = self.client("behavior", "set", "1", "loitering", "-", "--json", text=text).json["differences"]
        self.assertEqual(differences, [
            {"line": line("minPoints"), "node": "/behavior/minPoints", "sent": "4", "stored": "3"},
            {"line": line("alarmSeverity"), "node": "/behavior/rois/roi/alarmSeverity", "sent": "9", "stored": "3"}])
        shown = self.client("behavior", "set", "1", "loitering", text=text).out
        self.assertRegex(shown, rf"(?m)^{line('alarmSeverity')} +/behavior/rois/roi/alarmSeverity +9 +3$")

    def test_warnings_have_line_numbers_and_strict_takes_none(self):
        text = self.example().replace("<alarmDelay min=\"30\" max=\"1800\">60", "<alarmDelay>5000")
        text = text.replace("<enable>", "<enabel>1</enabel>\n<enable>").replace("<dwellTime min=\"5\" max=\"1000\">5",
                                                                                "<dwellTime>long")
        text = text.replace("<vertex><x>", "<vertex ><x>")
        root = etree.fromstring(text)
        for vertex in root.findall(".//vertex")[2:]:
            vertex.getparent().remove(vertex)
        path = self.file(etree.tostring(root, encoding="unicode"))
        lines = path.read_text().splitlines()
        line = lambda part: next(n for n, one in enumerate(lines, 1) if part in one)
        refused = self.client("behavior", "set", "1", "loitering", path, "--strict", code=4)
        self.assertIn("4 warnings", refused.err)
        self.assertIn("Nothing has been sent.", refused.err)
        self.client("behavior", "get", "1", "loitering", code=1)
        warnings = self.client("behavior", "set", "1", "loitering", path).err
        for where, what in (("<roi>", "2 points, too few"), ("enabel", "<enabel> isn't known in <roi>"),
                            ("dwellTime", "no integer"), ("alarmDelay", "5000, the advised values are 30 to 1800")):
            self.assertRegex(warnings, rf"(?m)^{path}:{line(where)}: .*{what}")
        self.assertEqual(len(warnings.splitlines()), 4)

    def test_documents_that_are_none_are_not_sent(self):
        self.assertIn("standard input:1: ", self.client("behavior", "set", "1", "loitering", text="<a", code=4).err)
        self.assertIn("standard input:1: ", self.client("behavior", "set", "1", "loitering", code=4).err)
        self.assertIn("no <behavior>", self.client("behavior", "set", "1", "loitering", text="<a/>", code=4).err)
        self.assertIn("declares", self.client("behavior", "set", "1", "loitering", code=4,
                                              text="<!DOCTYPE a [<!ENTITY b 'c'>]><behavior/>").err)
        missing = self.host.folder / "missing.xml"
        self.assertIn(f"{missing} can't be read", self.client("behavior", "set", "1", "loitering", missing, code=4).err)
        other = self.client("behavior", "set", "1", "loitering", "--strict", text=self.example("object-counting"), code=4)
        self.assertIn("standard input:1: the document is of the behavior 'urn:varlo-com:AlgorithmId:ObjectCounting:1'",
                      other.err)


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
        warned = self.client("scene", "set", "1", text=scene.replace("<tuning>0</tuning>", "<tunning>0</tunning>"))
        self.assertIn("<tunning> isn't known in <analyticProfile>", warned.err)
        self.assertIn({"line": 5, "node": "/analyticProfile/tunning", "sent": "0", "stored": "(nothing)"},
                      self.client("scene", "set", "1", "--json",
                                  text=scene.replace("<tuning>0</tuning>", "<tunning>0</tunning>")).json["differences"])
        self.client("scene", "rename", "1", "", code=2)
        self.assertIn("does not exist", self.client("scene", "get", "7", code=1).err)


if __name__ == "__main__":
    main()
