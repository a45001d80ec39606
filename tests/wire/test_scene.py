"""The scene of a profile over the wire, with a client that we did not write."""

import sqlite3
import unittest

import zeep.exceptions

import service
from service import ENVELOPES, NoAnswer, ServiceTest, etree
from test_profiles import client

UNREADABLE = "The scene document could not be read"


def plain(scene):
    """A scene as one canonical text: without white space between its elements, attributes in order."""
    return etree.tostring(etree.fromstring(scene, etree.XMLParser(remove_blank_text=True)), method="c14n").decode()


def zone(name, points):
    element = etree.Element("excludeZone")
    etree.SubElement(element, "name").text = name
    vertices = etree.SubElement(element, "vertices")
    for x, y in points:
        vertex = etree.SubElement(vertices, "vertex")
        etree.SubElement(vertex, "x").text = str(x)
        etree.SubElement(vertex, "y").text = str(y)
    return element


def edited(scene, name):
    """What a user makes of the default scene: calibrates it, sets sizes and draws two zones."""
    root = etree.fromstring(scene)
    root.set("name", name)
    root.find("sensitivity").text = "8"
    root.find("calibration").set("calibrated", "1")
    root.find("calibration/objectsizes/physicalHeight").text = "180"
    for number, value in enumerate(root.iterfind(".//vertex/*")):
        value.text = str(number)
    root.find("excludeZones").extend([zone("Exclude 1", [(0, 0), (60, 0), (60, -40)]),
                                      zone("Exclude 2", [(n, n) for n in range(7)])])
    return etree.tostring(root, encoding="unicode")


class SceneTest(ServiceTest):
    def names(self):
        return [(p.text, p.get("preset")) for p in self.host.call("GetProfileList").iter("profile")]

    def scene(self, profile):
        return self.host.call("GetProfileScene", profileId=profile).findtext("scene")

    def default(self):
        return self.host.call("GetDefaultScene").findtext("scene")

    def give_preset(self, profile, preset):
        """No operation sets a preset: the camera's own software does."""
        self.host.stop()
        with sqlite3.connect(self.host.state / "profiles.db") as connection:
            connection.execute("UPDATE profile SET preset = ? WHERE id = ?", (preset, profile))
        connection.close()
        self.host.start()


class Tour(SceneTest):
    def test_edited_scene_renames_the_profile_and_survives_a_restart(self):
        for version in ENVELOPES:
            with self.subTest(version=version):
                soap = client(self.host.url, version)
                profile = soap.CreateProfile("Before")
                default = soap.GetDefaultScene()
                self.assertFalse(default.lstrip().startswith("<?xml"))
                name = "Car park & <gate> \u00e9\u4e2d\U0001F600 " + version
                scene = edited(default, name)
                self.assertIsNone(soap.SetProfileScene(profile, scene))
                self.assertEqual(plain(soap.GetProfileScene(profile)), plain(scene))
                self.assertEqual([p._value_1 for p in soap.GetProfileList() if p.id == profile], [name])
                self.host.restart()
                soap = client(self.host.url, version)
                self.assertEqual(plain(soap.GetProfileScene(profile)), plain(scene))
                self.assertEqual([p._value_1 for p in soap.GetProfileList() if p.id == profile], [name])

    def test_unreadable_scene_in_both_versions(self):
        for version, code in (("1.1", "SOAP-ENV:Client"), ("1.2", "SOAP-ENV:Sender")):
            soap = client(self.host.url, version)
            profile = soap.CreateProfile("Before")
            with self.assertRaisesRegex(zeep.exceptions.Fault, f"^{UNREADABLE}$") as caught:
                soap.SetProfileScene(profile, "no scene")
            self.assertEqual(caught.exception.code, code)
            self.assertEqual(soap.GetProfileList()[-1]._value_1, "Before")


class Scenes(SceneTest):
    def test_default_scene_can_be_sent_back_as_it_stands(self):
        self.host.call("CreateProfile", name="Day")
        self.host.call("SetProfileScene", profileId=1, scene=self.default())
        self.assertEqual(self.names(), [("Day", None)], "its empty name keeps the profile's")
        self.assertEqual(plain(self.scene(1)), plain(self.default()).replace('name=""', 'name="Day"'))
        self.host.call("SetProfileScene", profileId=1, scene=self.scene(1))
        self.assertEqual(plain(self.scene(1)), plain(self.default()).replace('name=""', 'name="Day"'))

    def test_scene_that_cannot_be_read_changes_neither_scene_nor_name_nor_preset(self):
        self.host.call("CreateProfile", name="Before")
        self.host.call("SetProfileScene", profileId=1, scene=edited(self.default(), "Day"))
        self.give_preset(1, "Gate")
        before = self.scene(1)
        self.assertEqual(etree.fromstring(before).findtext("cameraPreset"), "Gate")
        good = edited(self.default(), "Other")
        for scene in ("", "no scene", good[:-1], good.replace("analyticProfile", "profile"), "<behavior/>",
                      good.replace("<cameraPreset", "<!DOCTYPE a [<!ENTITY e 'x'>]><cameraPreset")):
            fault = self.fault_of("SetProfileScene", profileId=1, scene=scene)
            self.assertEqual((fault.code, fault.text), ("SOAP-ENV:Client", UNREADABLE), scene[:80])
            self.assertEqual(self.scene(1), before)
            self.assertEqual(self.names(), [("Day", "Gate")])
        self.host.restart()
        self.assertEqual(self.scene(1), before)
        self.assertEqual(self.names(), [("Day", "Gate")])

    def test_preset_goes_out_and_never_comes_in(self):
        self.host.call("CreateProfile", name="Day")
        scene = self.default().replace("<cameraPreset/>", "<cameraPreset>Sent</cameraPreset>")
        self.assertIn("Sent", scene)
        self.host.call("SetProfileScene", profileId=1, scene=scene)
        self.assertEqual(etree.fromstring(self.scene(1)).findtext("cameraPreset"), "")
        self.give_preset(1, "Gate & <yard>")
        self.host.call("SetProfileScene", profileId=1, scene=scene)
        self.assertEqual(etree.fromstring(self.scene(1)).findtext("cameraPreset"), "Gate & <yard>")
        self.assertEqual(self.names(), [("Day", "Gate & <yard>")])

    def test_profile_without_a_scene_gets_no_answer(self):
        self.host.call("CreateProfile", name="Day")
        for profile in (1, 2):
            with self.assertRaises(NoAnswer):
                self.host.call("GetProfileScene", profileId=profile)
        self.assertEqual(self.names(), [("Day", None)])

    def test_refusals_change_nothing(self):
        self.host.call("CreateProfile", name="Day")
        missing = "Profile 9 does not exist"
        self.assertEqual(self.fault_of("SetProfileScene", profileId=9, scene=self.default()).text, missing)
        self.assertEqual(self.fault_of("SetProfileScene", profileId=9, scene="no scene").text, missing)
        scene = edited(self.default(), "n" * 256)
        self.assertEqual(self.fault_of("SetProfileScene", profileId=1, scene=scene).text,
                         "The profile name is longer than 255 bytes")
        self.assertEqual(self.names(), [("Day", None)])
        with self.assertRaises(NoAnswer):
            self.scene(1)

    def test_scenes_of_profiles_are_their_own(self):
        for name in ("A", "B"):
            self.host.call("CreateProfile", name=name)
        first, second = edited(self.default(), "First"), self.default()
        self.host.call("SetProfileScene", profileId=1, scene=first)
        self.host.call("SetProfileScene", profileId=2, scene=second)
        self.assertEqual(plain(self.scene(1)), plain(first))
        self.host.call("DeleteProfile", profileId=1)
        self.assertEqual(plain(self.scene(2)), plain(second).replace('name=""', 'name="B"'))

    def test_a_thousand_zones(self):
        self.host.call("CreateProfile", name="Day")
        root = etree.fromstring(self.default())
        root.set("name", "Many")
        root.find("excludeZones").extend(
            zone(f"Exclude {n + 1}", [(n, 0), (n + 1, 0), (n + 1, 9), (n, 9)]) for n in range(1000))
        scene = etree.tostring(root, encoding="unicode")
        self.host.call("SetProfileScene", profileId=1, scene=scene)
        self.assertEqual(plain(self.scene(1)), plain(scene))


if __name__ == "__main__":
    unittest.main()
