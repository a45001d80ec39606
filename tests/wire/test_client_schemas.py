"""The schemas of the documents, the client's checks, and the service: one opinion on drawn documents."""

import gzip
import json
import os
import random
import subprocess
import tempfile
import unittest
from pathlib import Path

import jsonschema
from lxml import etree

from command import ClientTest, main, run

SCHEMAS = Path(os.environ["BUILD"]) / "tools/schemas"
NAMES = sorted(file.stem for file in SCHEMAS.glob("*.xsd"))
COUNT = int(os.environ.get("DRAWN_DOCUMENTS", "300"))
STORED = COUNT // 7
SEED = int(os.environ.get("DRAWN_SEED", "18"))
NUMBERS = (0, 1, 2, 3, 5, 7, -1, 60, 2**31 - 1, -2**31, 2**31, 99999999999)


def example(name):
    words = ("scene", "example") if name == "scene" else ("behavior", "example", name)
    return run(*words).out, run(*words, "--json").json["document"]


def places(value, path=()):
    """Every place in a JSON value, the containers included."""
    yield path
    for key, inner in value.items() if isinstance(value, dict) else enumerate(value) if isinstance(value, list) else ():
        yield from places(inner, (*path, key))


def drawn(original, luck):
    """The document with none to three of its places changed: to another number, to nothing, or to nonsense."""
    document = json.loads(json.dumps(original))
    for _ in range(luck.randrange(4)):
        path = luck.choice([place for place in places(document) if place])
        parent = document
        for key in path[:-1]:
            parent = parent[key]
        change = luck.randrange(8)
        if change < 5 and not isinstance(parent[path[-1]], (dict, list)):
            parent[path[-1]] = luck.choice(NUMBERS) if isinstance(parent[path[-1]], int) else luck.choice(("", "Gate", "<&>"))
        elif change == 5:
            del parent[path[-1]]
        elif change == 6 and isinstance(parent, dict):
            parent["unknown"] = 1
        elif isinstance(parent, list) and len(path) > 1 and path[-2] != "vertices":
            parent.append(parent[path[-1]])
    return document


class Schemas(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.xsd = {name: etree.XMLSchema(etree.parse(str(SCHEMAS / f"{name}.xsd"))) for name in NAMES}
        cls.json = {name: jsonschema.Draft7Validator(json.loads((SCHEMAS / f"{name}.schema.json").read_text())) for name in NAMES}

    def test_examples_are_valid_by_all(self):
        self.assertIn("scene", NAMES)
        self.assertEqual(len(NAMES), len(run("behavior", "--help").out.partition("these names:\n")[2].split()) + 1)
        for name in NAMES:
            text, document = example(name)
            self.xsd[name].assertValid(etree.fromstring(text.encode()))
            self.json[name].check_schema(self.json[name].schema)
            self.json[name].validate(document)
            checked = run("validate", "--strict", "-", text=text)
            self.assertEqual((checked.code, checked.err), (0, ""))


class Installed(unittest.TestCase):
    def test_each_package_has_the_schemas_the_service_and_the_pages(self):
        for component, package in (("client", "varlo-analytics"), ("dev", "libvarlo-analytics-dev")):
            with tempfile.TemporaryDirectory() as folder:
                subprocess.run(["cmake", "--install", os.environ["BUILD"], "--component", component, "--prefix", "/usr"],
                               env={**os.environ, "DESTDIR": folder}, check=True, capture_output=True, timeout=300)
                share = Path(folder) / "usr/share"
                self.assertEqual({file.name for file in (share / package / "schemas").iterdir()},
                                 {f"{name}{end}" for name in NAMES for end in (".xsd", ".schema.json")} |
                                 {"VideoAnalytics.wsdl", "VideoAnalytics.xsd"})
                self.assertTrue((share / "doc" / package / "behavior-document.md").is_file())
                page = gzip.decompress((share / "man/man5" / f"{package}-documents.5.gz").read_bytes()).decode()
                self.assertIn("rois/dwellTime", page)
                self.assertIn("advised: 5 to 1000", page)


class Description(unittest.TestCase):
    """The WSDL says what each type is for."""

    def setUp(self):
        self.wsdl = etree.parse(str(Path(os.environ["GENERATED"]) / "VideoAnalytics.wsdl"))

    def named(self, kind):
        """The parts of the description of a kind by name, and their words."""
        return {one.get("name"): one for one in self.wsdl.iter(f"{{*}}{kind}") if one.get("name")}

    def words(self, part):
        return " ".join("".join(part.xpath("string(.//*[local-name()='documentation'])")).split())

    def test_it_says_which_types_an_operation_uses(self):
        types = {**self.named("simpleType"), **self.named("complexType")}
        uses = lambda part: {value.partition(":")[2] for value in part.xpath(".//@type | .//@base")} & set(types)
        messages = {part.get("element").partition(":")[2] for part in self.wsdl.iter("{*}part")}
        used, pending = set(), [element for element in self.wsdl.iter("{*}element") if element.get("name") in messages]
        while pending:
            found = uses(pending.pop()) - used
            used |= found
            pending += [types[name] for name in found]
        self.assertEqual({"Availability", "ProfileList"} - used, set())
        self.assertIn("ROI", set(types) - used)
        for name, part in types.items():
            if name in messages:  # explained at their operation
                continue
            self.assertTrue(self.words(part), name)
            self.assertEqual(self.words(part) == "No operation uses it.", name not in used, name)

    def test_it_says_what_availability_means_and_where_no_answer_comes(self):
        self.assertRegex(self.words(self.named("simpleType")["Availability"]), "^0 not available: .* 1 available, 2 active")
        operations = {one.get("name"): one for one in self.wsdl.iterfind("{*}portType/{*}operation")}
        self.assertIn("no answer comes", self.words(operations["GetProfileScene"]))


class Drawn(ClientTest):
    """Documents of all kinds, drawn from their examples."""

    def setUp(self):
        super().setUp()
        self.luck = random.Random(SEED)
        self.xsd = {name: etree.XMLSchema(etree.parse(str(SCHEMAS / f"{name}.xsd"))) for name in NAMES}
        self.json = {name: jsonschema.Draft7Validator(json.loads((SCHEMAS / f"{name}.schema.json").read_text())) for name in NAMES}

    def judged(self, files):
        """Which of the files the client takes for correct but for warnings."""
        ran = run("validate", "--json", *files, timeout=600)
        self.assertIn(ran.code, (0, 4), ran.err)
        return [one["errors"] == 0 for one in ran.json]

    def test_all_agree_and_what_is_valid_is_stored_as_it_is(self):
        originals = {name: example(name)[1] for name in NAMES}
        documents = [(name, drawn(originals[name], self.luck)) for name in NAMES for _ in range(COUNT // len(NAMES))]
        as_json, as_xml = [], []
        for number, (name, document) in enumerate(documents):
            as_json.append(self.host.folder / f"{number}.json")
            as_json[-1].write_text(json.dumps(document))
        valid = self.judged(as_json)
        stored = 0
        for (name, document), is_valid, file in zip(documents, valid, as_json):
            self.assertEqual(self.json[name].is_valid(document), is_valid, f"{name}: {json.dumps(document)}")
        # The same documents in XML, written by a hand of their own.
        for number, (name, document) in enumerate(documents):
            as_xml.append(self.host.folder / f"{number}.xml")
            as_xml[-1].write_bytes(etree.tostring(xml_of(name, document)))
        for (name, document), is_valid, file in zip(documents, self.judged(as_xml), as_xml):
            self.assertEqual(self.xsd[name].validate(etree.parse(str(file))), is_valid, file.read_text())
        self.client("profile", "create", "Drawn")
        for (name, document), is_valid, file in zip(documents, valid, as_json):
            if not is_valid or name == "scene" or stored >= STORED or self.luck.randrange(3):
                continue
            stored += 1
            sent = self.client("behavior", "set", "Drawn", name, file, "--json", timeout=300).json
            self.assertEqual(sent["differences"], [], file.read_text())
        self.assertGreater(stored, STORED // 4)

    def test_what_get_json_wrote_set_takes_and_the_profile_is_the_same(self):
        originals = {name: example(name)[1] for name in NAMES}
        for number in range(max(2, COUNT // 150)):
            # By its number: a scene may give it another name.
            profile = self.client("profile", "create", f"Profile {number}", "--json").json["id"]
            for name in NAMES:
                self.client(*self.words("set", profile, name), text=json.dumps(self.valid(name, originals[name])))
            shown = {name: self.client(*self.words("get", profile, name), "--json") for name in NAMES}
            # Of an idle behavior there is no document.
            there = [name for name in NAMES if shown[name].json["document"] is not None]
            self.assertGreater(len(there), len(NAMES) // 2)
            before = [self.client(*self.words("get", profile, name)).out for name in there]
            for name in there:
                stored = self.client(*self.words("set", profile, name), "--json", text=shown[name].out).json
                self.assertEqual(stored["differences"], [], shown[name].out)
            self.assertEqual([self.client(*self.words("get", profile, name)).out for name in there], before)

    def valid(self, name, original):
        """A drawn document that the schema takes."""
        while not self.json[name].is_valid(document := drawn(original, self.luck)):
            pass
        return document

    @staticmethod
    def words(verb, profile, name):
        return ("scene", verb, profile) if name == "scene" else ("behavior", verb, profile, name)


def xml_of(name, document):
    """The XML that is meant, by the example's own elements."""
    pattern = etree.fromstring(example_text(name).encode())
    root = etree.Element(pattern.tag)
    fill(root, pattern, document)
    if name != "scene" and "id" not in document:
        root.set("id", pattern.get("id"))
    return root


TEXTS = {}


def example_text(name):
    if name not in TEXTS:
        TEXTS[name] = example(name)[0]
    return TEXTS[name]


def text_of(value):
    return value if isinstance(value, str) else json.dumps(value)


def points(parent, values):
    for value in values:
        vertex = etree.SubElement(parent, "vertex")
        for axis, number in zip(("x", "y"), value):
            etree.SubElement(vertex, axis).text = text_of(number)


def fill(node, pattern, values):
    known = {}
    for child in pattern:
        key = child.findtext("name") if child.tag in ("objectsize", "fov") else child.tag
        known[key] = child
    beside = {name: child for child in pattern for name in child.attrib if name == "unit"}
    for key, value in values.items():
        if key in pattern.attrib:
            node.set(key, text_of(value))
            continue
        if key in beside:
            owner = node.find(beside[key].tag)
            if owner is not None:
                owner.set(key, text_of(value))
            continue
        child = known.get(key)
        made = etree.SubElement(node, key if child is None else child.tag)
        if child is None:
            made.text = text_of(value)
        elif child.tag in ("objectsize", "fov"):
            etree.SubElement(made, "name").text = key
            points(etree.SubElement(made, "vertices"), value)
        elif key == "vertices":
            points(made, value)
        elif key in ("rois", "excludeZones"):
            for one in value:
                item = etree.SubElement(made, key[:-1])
                if key == "rois":
                    fill(item, child[0], one)
                else:
                    points(etree.SubElement(item, "vertices"), one)
        elif isinstance(value, dict):
            fill(made, child, value)
        else:
            made.text = text_of(value)


if __name__ == "__main__":
    main()
