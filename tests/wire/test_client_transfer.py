"""The command-line client: a whole profile as files, and a profile made of them."""

import json
import os

from lxml import etree

from command import ClientTest, main

SCENE = """<analyticProfile version="2.0" name="Car park"><sceneType>2</sceneType><sensitivity>8</sensitivity>
<excludeZones><excludeZone><vertices><vertex><x>1</x><y>2</y></vertex><vertex><x>9</x><y>2</y></vertex><vertex><x>9</x><y>7</y></vertex></vertices></excludeZone></excludeZones>
</analyticProfile>"""
BEHAVIORS = ("loitering", "abandoned-object", "directional-motion", "camera-sabotage")


def canonical(text):
    return etree.tostring(etree.fromstring(text.encode(), etree.XMLParser(remove_blank_text=True)), method="c14n")


def documents(folder):
    """What lies in the folder by file."""
    return {path.name: canonical(path.read_text(encoding="utf-8")) for path in folder.iterdir()}


class TransferTest(ClientTest):
    def setUp(self):
        super().setUp()
        self.client("profile", "create", "Car park")
        self.client("scene", "set", "1", text=SCENE)
        for name in BEHAVIORS:
            self.client("behavior", "set", "1", name, text=self.client("behavior", "example", name).out)
        self.folder = self.host.folder / "backup"


class ExportAndImport(TransferTest):
    def test_export_delete_import_gives_an_equal_profile(self):
        self.client("export", "Car park", self.folder)
        self.assertEqual(set(documents(self.folder)), {"profile.xml", "scene.xml", *(f"{b}.xml" for b in BEHAVIORS)})
        before = [self.client("behavior", "get", "1", name).out for name in BEHAVIORS]
        scene = self.client("scene", "get", "1").out
        self.client("profile", "delete", "1")
        imported = self.client("import", self.folder, "--json")
        told = [json.loads(line) for line in imported.err.splitlines()]
        self.assertEqual([(one["file"], one["field"], one["level"]) for one in told],
                         [(str(self.folder / f"{name}.xml"), "/active", "warning") for name in ("directional-motion", "loitering")])
        self.assertIn("directional-motion can't be active beside abandoned-object, camera-sabotage: together they cost more", told[0]["text"])
        self.assertIn("no more than 2 can be selected", told[1]["text"])
        self.assertEqual(imported.json["id"], 2)
        self.assertEqual([self.client("behavior", "get", "2", name).out for name in BEHAVIORS], before)
        self.assertEqual(self.client("scene", "get", "2").out, scene)
        again = self.host.folder / "again"
        self.client("export", "2", again)
        self.assertEqual(documents(again), documents(self.folder))

    def test_a_profile_without_anything_is_one_too(self):
        self.client("profile", "create", "Bare")
        self.assertEqual(self.client("export", "Bare", self.folder, "--json").json["behaviors"], 0)
        self.client("import", self.folder, "--name", "Copy")
        self.assertEqual([p["name"] for p in self.client("profile", "list", "--json").json], ["Car park", "Bare", "Copy"])

    def test_a_preset_is_warned_of_and_a_comment_says_nothing(self):
        self.client("export", "1", self.folder)
        profile = self.folder / "profile.xml"
        profile.write_text(profile.read_text(encoding="utf-8").replace(' frame="', ' preset="3" frame="').replace("/>", "/><!-- mine -->"), encoding="utf-8")
        self.assertRegex(self.client("import", self.folder).err, r"(?m): /preset: warning: the camera preset isn't taken over")
        told = [json.loads(line) for line in self.client("import", self.folder, "--json").err.splitlines()]
        self.assertEqual([(one["file"], one["level"]) for one in told if one["field"] == "/preset"], [(str(self.folder), "warning")])

    def test_replace_takes_the_place_of_the_one_that_runs(self):
        self.client("export", "1", self.folder)
        self.client("profile", "run", "1")
        self.assertIn("and runs.", self.client("import", self.folder, "--replace").out)
        self.assertEqual(self.client("profile", "list", "--json").json,
                         [{"id": 2, "name": "Car park", "active": True, "preset": ""}])

    def test_an_import_that_fails_leaves_nothing(self):
        self.client("export", "1", self.folder)
        profile = self.folder / "profile.xml"
        known = profile.read_text(encoding="utf-8")
        profile.write_text(known.replace("urn:varlo-com:AlgorithmId:CameraSabotage:1", "urn:unknown:1"), encoding="utf-8")
        self.assertIn("Unsupported behavior Id", self.client("import", self.folder, code=1).err)
        self.assertEqual([p["id"] for p in self.client("profile", "list", "--json").json], [1])
        profile.write_text(known.replace('file="loitering.xml"', 'file="../settings.xml"'), encoding="utf-8")
        self.assertIn("isn't a file in its folder", self.client("import", self.folder, code=4).err)
        profile.unlink()
        self.assertIn("holds no profile", self.client("import", self.folder, code=4).err)

    def test_a_pipe_is_written_and_a_link_stays(self):
        self.client("export", "1", self.folder)
        pipe, link, file = (self.host.folder / name for name in ("pipe", "link", "file"))
        os.mkfifo(pipe)
        file.touch()
        link.symlink_to(file)
        for words, begin in ((("show", "1"), b"<svg"), (("plan", self.folder), b'{"plan":')):
            reader = os.open(pipe, os.O_RDONLY | os.O_NONBLOCK)
            self.client(*words, "--out", pipe)
            self.assertTrue(os.read(reader, 1 << 16).startswith(begin))
            os.close(reader)
            self.client(*words, "--out", link)
            self.assertTrue(link.is_symlink())
            self.assertTrue(file.read_bytes().startswith(begin))
        self.assertFalse([path for path in self.host.folder.iterdir() if path.suffix == ".part"])

    def test_a_folder_in_use_is_left_alone(self):
        self.client("export", "1", self.folder)
        before = documents(self.folder)
        self.client("behavior", "delete", "1", "loitering")
        self.assertIn("holds a profile already", self.client("export", "1", self.folder, code=4).err)
        self.assertEqual(documents(self.folder), before)
        self.client("export", "1", self.folder, "--force")
        self.assertNotEqual(documents(self.folder), before)


if __name__ == "__main__":
    main()
