"""Behavior configuration over the wire: default, edit, set, get back, availability, delete."""

import shutil
import time
import unittest

import zeep.exceptions

import service
from service import DATA, SOURCE, Fault, ServiceTest
from test_profiles import client

etree = service.etree
LOITERING = "urn:varlo-com:AlgorithmId:LoiteringDetection:1"
UNREADABLE = "The behavior document could not be read"


def behaviors():
    """The alias of each behavior whose plug-in delivers a default document."""
    for manifest in sorted((DATA / "plugins").glob("*/manifest.xml")):
        root = etree.parse(str(manifest)).getroot()
        if root.get("type") == "rule" and (manifest.parent / "behavior.xml").exists():
            yield root.findtext("alias")


def dwells(alias):
    """Whether the zones of the behavior have a dwell time, by the documents that it is tested with."""
    folder = next(m.parent.name for m in (DATA / "plugins").glob("*/manifest.xml")
                  if etree.parse(str(m)).getroot().findtext("alias") == alias)
    documents = (SOURCE / "tests/data" / folder.rpartition(".")[2]).glob("*/behavior.xml")
    return any("<dwellTime>" in document.read_text() for document in documents)


def edited(text):
    """The document, active, with every first value changed and a zone of its own."""
    root = etree.fromstring(text.encode())
    root.set("active", "1")
    rois = root.find("rois")
    if rois is None:
        root.find("alarmDelay").text = "17"
        root.find("alarmSeverity").text = "2"
    else:
        roi = etree.SubElement(rois, "roi") if len(rois) == 0 else rois[0]
        for child in list(roi):
            roi.remove(child)
        for name, value in (("name", "Gate & <north> \u00e9"), ("enable", "1"), ("alarmSeverity", "2"),
                            ("dwellTime", "42")):
            etree.SubElement(roi, name).text = value
        vertices = etree.SubElement(roi, "vertices")
        for x, y in ((10, 20), (300, 20), (300, 200), (10, 200)):
            vertex = etree.SubElement(vertices, "vertex")
            etree.SubElement(vertex, "x").text = str(x)
            etree.SubElement(vertex, "y").text = str(y)
    return etree.tostring(root, encoding="unicode")


def values(text):
    """What a client meant: every leaf of the document by its path, in order, without advice."""
    tree = etree.fromstring(text.encode()).getroottree()
    leaves = [(tree.getpath(e), (e.text or "").strip()) for e in tree.iter() if isinstance(e.tag, str) and len(e) == 0]
    return tree.getroot().get("active"), leaves


class Tour(ServiceTest):
    def test_every_behavior_that_has_a_default(self):
        tours = list(behaviors())
        self.assertEqual(len(tours), len(list((DATA / "plugins").glob("com.varlo.rule.*"))))
        for number, alias in enumerate(tours):
            with self.subTest(alias=alias):
                self.tour(alias, ("1.1", "1.2")[number % 2])

    def tour(self, alias, version):
        soap = client(self.host.url, version)
        profile = soap.CreateProfile(alias)
        document = edited(soap.GetDefaultConfiguration(alias))
        soap.SetProfileBehavior(profile, alias, document)
        self.host.restart()
        soap = client(self.host.url, version)
        back = soap.GetProfileBehavior(profile, alias)
        meant = ["Gate & <north> \u00e9", "300"] + ["42"] * dwells(alias) if "rois" in document else ["17", "2"]
        for leaf in meant:
            self.assertIn(leaf, [v for _, v in values(back)[1]])
        # What came back can be sent again and comes back the same.
        soap.SetProfileBehavior(profile, alias, back)
        self.assertEqual(values(soap.GetProfileBehavior(profile, alias)), values(back))
        self.assertEqual(values(back)[0], "1")
        listed = {b.type: str(b.availability) for b in soap.GetBehaviorAvailability(profile).behavior}
        self.assertEqual(listed[alias], "2")
        soap.DeleteProfileBehavior(profile, alias)
        self.host.restart()
        soap = client(self.host.url, version)
        listed = {b.type: str(b.availability) for b in soap.GetBehaviorAvailability(profile).behavior}
        self.assertNotEqual(listed[alias], "2")
        with self.assertRaisesRegex(zeep.exceptions.Fault, f"Profile {profile} has no behavior "):
            soap.DeleteProfileBehavior(profile, alias)


def point(x, y):
    return f"<vertex><x>{x}</x><y>{y}</y></vertex>"


def engine_document(alias, number):
    """A document with every setting that goes to an engine; the number tells it from others."""
    sizes = "".join(f"<objectsize><name>{name}</name><vertices>{point(number, 1)}{point(2, number)}</vertices></objectsize>"
                    for name in ("minObj", "maxObj"))
    zone = f"<excludeZone><vertices>{point(number, 0)}{point(9, 0)}{point(9, 9)}</vertices></excludeZone>"
    return (f'<behavior id="{alias}" active="1" advanceMode="1"><sensitivity>{number}</sensitivity>'
            f"<objectSpeed>{number}</objectSpeed><filters><objectsizes>{sizes}</objectsizes></filters>"
            f"<excludeZones>{zone}<excludeZone/>{zone}</excludeZones>"
            f"<rois><roi><name>z{number}</name><enable>1</enable></roi></rois></behavior>")


class EngineSettings(ServiceTest):
    """The behaviors with settings in an engine, all in one profile."""

    TYPES = [f"urn:varlo-com:AlgorithmId:{name}:1"
             for name in ("AbandonedObject", "DirectionalMotion", "ObjectRemoval", "StoppedVehicle")]

    def check(self, profile, alias, number):
        text = self.host.call("GetProfileBehavior", profileId=profile, behaviorId=alias).findtext("config")
        root = etree.fromstring(text.encode())
        self.assertEqual(root.get("advanceMode"), "1")
        self.assertEqual(root.findtext("sensitivity"), str(number))
        self.assertIn(root.findtext("objectSpeed"), (None, str(number)))
        self.assertEqual(root.findtext("rois/roi/name"), f"z{number}")
        if root.find("filters") is not None:
            for size in root.iterfind("filters/objectsizes/objectsize/vertices"):
                self.assertEqual([v.text for v in size.iter("x", "y")], [str(number), "1", "2", str(number)])
            # The empty zone is none to the engine, and the numbers are given anew.
            names = [z.findtext("name") for z in root.iterfind("excludeZones/excludeZone")]
            self.assertEqual(names, ["Exclude 1", "Exclude 2"])
            for zone in root.iterfind("excludeZones/excludeZone"):
                self.assertEqual([x.text for x in zone.iter("x")], [str(number), "9", "9"])
        return root

    def test_each_keeps_its_own_over_restarts_and_changes(self):
        profile = int(self.host.call("CreateProfile", name="p").findtext("profileId"))
        for number, alias in enumerate(self.TYPES):
            self.host.call("SetProfileBehavior", profileId=profile, behaviorId=alias,
                           config=engine_document(alias, number))
        self.host.restart()
        with_sizes = 0
        for number, alias in enumerate(self.TYPES):
            with self.subTest(alias):
                with_sizes += self.check(profile, alias, number).find("filters") is not None
        self.assertEqual(with_sizes, 2)
        # What one is told anew leaves the others, and replaces its own: zones don't pile up.
        for number in (20, 30):
            self.host.call("SetProfileBehavior", profileId=profile, behaviorId=self.TYPES[0],
                           config=engine_document(self.TYPES[0], number))
            self.check(profile, self.TYPES[0], number)
        self.check(profile, self.TYPES[3], 3)
        # The settings of the engine outlive the behavior, which is nothing by itself then.
        self.host.call("DeleteProfileBehavior", profileId=profile, behaviorId=self.TYPES[0])
        answer = self.host.call("GetProfileBehavior", profileId=profile, behaviorId=self.TYPES[0])
        self.assertEqual(answer.findtext("config") or "", "")
        self.host.restart()
        for number, alias in list(enumerate(self.TYPES))[1:]:
            self.check(profile, alias, number)

    def test_defaults_come_back_as_they_are(self):
        profile = int(self.host.call("CreateProfile", name="p").findtext("profileId"))
        for alias in self.TYPES:
            with self.subTest(alias):
                default = self.host.call("GetDefaultConfiguration", behaviorId=alias).findtext("config")
                document = default.replace('active="0"', 'active="1"', 1)
                self.host.call("SetProfileBehavior", profileId=profile, behaviorId=alias, config=document)
                back = self.host.call("GetProfileBehavior", profileId=profile, behaviorId=alias).findtext("config")
                self.assertEqual(values(back), values(document))


class Faults(ServiceTest):
    def setUp(self):
        super().setUp()
        self.profile = int(self.host.call("CreateProfile", name="p").findtext("profileId"))
        self.document = edited(self.host.call("GetDefaultConfiguration", behaviorId=LOITERING).findtext("config"))

    def set(self, config, profile=None, behavior=LOITERING):
        return self.host.call("SetProfileBehavior", profileId=self.profile if profile is None else profile,
                              behaviorId=behavior, config=config)

    def refused(self, text, *arguments, **named):
        with self.assertRaises(Fault) as caught:
            self.set(*arguments, **named)
        self.assertEqual((caught.exception.code, caught.exception.text), ("SOAP-ENV:Client", text))

    def test_words_and_their_order(self):
        self.refused("Invalid profile", "", behavior="unknown")
        self.refused("Unsupported behavior Id", self.document, behavior="unknown")
        self.refused("Profile 99 does not exist", self.document, profile=99)
        self.refused("Profile 99 does not exist", "no XML", profile=99)
        self.refused(UNREADABLE, "no XML")
        self.refused(UNREADABLE, "<behavior id='urn:other'/>")
        with self.assertRaises(Fault) as caught:
            self.host.call("DeleteProfileBehavior", profileId=self.profile, behaviorId=LOITERING)
        self.assertEqual(caught.exception.text,
                         f"Profile {self.profile} has no behavior com.varlo.rule.loiteringdetection")
        with self.assertRaises(Fault) as caught:
            self.host.call("GetProfileBehavior", profileId=self.profile, behaviorId=LOITERING)
        self.assertEqual(caught.exception.text, "Unsupported behavior Id")

    def test_hostile_documents_are_refused_quickly_and_change_nothing(self):
        self.set(self.document)
        before = self.host.call("GetProfileBehavior", profileId=self.profile, behaviorId=LOITERING).findtext("config")
        entities = "".join(f'<!ENTITY e{i} "{"&e%d;" % (i - 1) * 10}">' for i in range(1, 12))
        inside = self.document.replace("<rois>", "<rois>%s", 1)
        hostile = {
            "entity bomb": f'<!DOCTYPE behavior [<!ENTITY e0 "ha">{entities}]>' + inside % "&e11;",
            "external entity": '<!DOCTYPE behavior [<!ENTITY e SYSTEM "file:///etc/passwd">]>' + inside % "&e;",
            "reference to NUL": inside % "&#0;",
            "reference to a surrogate": inside % "&#xD800;",
            "depth": inside % ("<a>" * 100000 + "</a>" * 100000),
        }
        for name, document in hostile.items():
            with self.subTest(name):
                start = time.monotonic()
                self.refused(UNREADABLE, document)
                print(f"{name}: refused in {time.monotonic() - start:.3f} s")
        # A large attribute is no crime; larger than the server takes is.
        large = self.document.replace('active="1"', f'active="1" note="{"x" * (4 * 1024 * 1024)}"')
        status, _, answer = self.host.post(service.envelope("SetProfileBehavior", profileId=self.profile,
                                                            behaviorId=LOITERING, config=large))
        self.assertEqual(status, 413)
        after = self.host.call("GetProfileBehavior", profileId=self.profile, behaviorId=LOITERING).findtext("config")
        self.assertEqual(after, before)

    def test_bytes_that_are_no_text_leave_the_service_readable(self):
        self.set(self.document)
        message = service.envelope("SetProfileBehavior", profileId=self.profile, behaviorId=LOITERING,
                                   config=self.document.replace("north", "RAW")).encode()
        for raw in (b"\xff\xfe", b"\xc0\x80", b"\x00", b"&#0;", b"\xed\xa0\x80"):
            with self.subTest(raw=raw):
                status, _, answer = self.host.post(message.replace(b"RAW", raw))
                print(raw, status)
                back = self.host.call("GetProfileBehavior", profileId=self.profile, behaviorId=LOITERING)
                self.assertIn("Gate", back.findtext("config"))
                if status != 200:
                    with self.assertRaises(Fault):
                        service.body_of(answer)

    def test_a_plugin_without_a_converter_is_stored_unconverted(self):
        self.host.stop()
        self.host.plugins = self.host.folder / "plugins"
        shutil.copytree(DATA / "plugins", self.host.plugins)
        ninth = self.host.plugins / "rule.tailgating"
        ninth.mkdir()
        (ninth / "manifest.xml").write_text(
            '<manifest type="rule"><id>com.varlo.rule.tailgating</id>'
            "<alias>urn:varlo-com:AlgorithmId:Tailgating:1</alias><name>Tailgating</name></manifest>")
        self.host.start()
        alias = "urn:varlo-com:AlgorithmId:Tailgating:1"
        listed = [b.findtext("type") for b in self.host.call("GetBehaviorAvailability", profileId=-1)[0]]
        self.assertIn(alias, listed)
        self.set("any <text> & more", behavior=alias)
        self.assertEqual(self.host.call("GetDefaultConfiguration", behaviorId=alias).findtext("config") or "", "")
        # A behavior beside it is none the worse.
        self.set(self.document)
        back = self.host.call("GetProfileBehavior", profileId=self.profile, behaviorId=LOITERING).findtext("config")
        self.assertIn("Gate", back)
        self.host.call("DeleteProfileBehavior", profileId=self.profile, behaviorId=alias)


if __name__ == "__main__":
    unittest.main()
