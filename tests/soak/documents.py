"""What the clients of the soak send: the golden documents of every behavior with what has to come back,
and scenes that are drawn at random."""

import re
from pathlib import Path

from service import DATA, etree

GOLDEN = Path(__file__).resolve().parent.parent / "data"
SCENE = (DATA / "plugins/com.varlo.engine.sceneanalyzer/behavior.xml").read_bytes()


def plain(document):
    """A document as one text that can be compared: without white space between its elements."""
    data = document.encode() if isinstance(document, str) else document
    return etree.tostring(etree.fromstring(re.sub(rb">\s+<", b"><", data)), method="c14n").decode()


class Behavior:
    """A delivered behavior: its names, what it costs, and its documents as (sent, what comes back, active)."""

    def __init__(self, manifest):
        root = etree.parse(str(manifest)).getroot()
        self.id = root.findtext("id")
        self.alias = root.findtext("alias")
        self.cost = int(root.findtext("resourceRequirement") or 0)
        self.still = root.findtext("fixedCameraPosition") == "1"
        self.engines = [e.text for e in root.iterfind("dependencies/id")]
        self.default = plain((manifest.parent / "behavior.xml").read_bytes())
        self.documents = []
        self.has_engine = False
        for path in sorted(GOLDEN.glob("*/*/behavior.xml")):
            sent = path.read_text()
            if etree.fromstring(sent.encode()).get("id") not in (self.id, self.alias):
                continue
            returned = path.with_name("returned.xml")
            back = plain((returned if returned.exists() else path).read_bytes())
            self.has_engine |= path.with_name("engine.xml").exists()
            self.documents.append((sent, back, etree.fromstring(back).get("active") == "1"))


def manifests(kind):
    paths = sorted((DATA / "plugins").glob("*/manifest.xml"), key=lambda path: path.parent.name.encode())
    return [path for path in paths if etree.parse(str(path)).getroot().get("type") == kind]


BEHAVIORS = [Behavior(path) for path in manifests("rule")]
ENGINE_COSTS = {root.findtext("id"): int(root.findtext("resourceRequirement") or 0)
                for root in (etree.parse(str(path)).getroot() for path in manifests("engine"))}


def vertices(parent, dice, count):
    element = etree.SubElement(parent, "vertices")
    for _ in range(count):
        vertex = etree.SubElement(element, "vertex")
        etree.SubElement(vertex, "x").text = str(dice.randint(-10000, 10000))
        etree.SubElement(vertex, "y").text = str(dice.randint(-10000, 10000))


def scene(dice, name):
    """The default scene with other numbers, and zones. It comes back as it is, but for an empty name."""
    root = etree.fromstring(SCENE)
    root.set("name", name)
    for tag in ("sceneType", "background", "tuning", "sensitivity"):
        root.find(tag).text = str(dice.randint(0, 10))
    root.find("calibration").set("calibrated", str(dice.randint(0, 1)))
    for number in root.iterfind(".//vertex/*"):
        number.text = str(dice.randint(-500, 500))
    zones = root.find("excludeZones")
    for number in range(1, dice.randint(0, 3) + 1):
        zone = etree.SubElement(zones, "excludeZone")
        etree.SubElement(zone, "name").text = f"Exclude {number}"
        vertices(zone, dice, dice.randint(1, 6))
    return etree.tostring(root, encoding="unicode")


def availability(active, md):
    """The number of each behavior, in their order, with the delivered settings (two of them, 100 to spend)."""
    known = [next(b for b in BEHAVIORS if name in (b.id, b.alias)) for name in active]
    engines = {engine for behavior in known for engine in behavior.engines}
    left = max(0, 100 - sum(b.cost for b in known) - sum(ENGINE_COSTS[e] for e in engines))
    places = 2 - (1 if md else 0)
    moving = any(not b.still for b in known)
    numbers = []
    for behavior in BEHAVIORS:
        need = behavior.cost + sum(ENGINE_COSTS[e] for e in behavior.engines if e not in engines)
        number = 2 if behavior in known else int(need <= left and len(known) < places)
        numbers.append(0 if known and behavior.still == moving else number)
    return numbers
