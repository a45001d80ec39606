"""The tour: every operation and its faults, with what each client has to get. A client is a program that
reads a call as a line of JSON, [operation, {field: value}], and prints its answer as a line: {"result": {...}}
or {"code": ..., "fault": ...}."""

import sys
from pathlib import Path

from service import DATA, etree

sys.path.insert(0, str(Path(__file__).resolve().parent.parent / "soak"))
import documents  # noqa: E402

LOITERING = "urn:varlo-com:AlgorithmId:LoiteringDetection:1"
SENDER = {"1.1": "Client", "1.2": "Sender"}
NIGHT = "Nacht & <Nebel> \u00e9\u4e2d"


class Refused(str):
    """The text of a sender's fault."""


class Document(str):
    """The one field of an answer that holds a document equal to this one."""

# A zone as it comes back: every child, in the written order, with the advised bounds.
ZONE = """<roi><name>Gate &amp; &lt;north&gt; \u00e9</name><enable>1</enable><alarmSeverity>2</alarmSeverity>
<dwellTime min="5" max="1000">30</dwellTime><alarmDelay min="30" max="1800">60</alarmDelay><vertices>
<vertex><x>10</x><y>20</y></vertex><vertex><x>300</x><y>20</y></vertex><vertex><x>300</x><y>200</y></vertex>
</vertices></roi>"""


def active(document):
    root = etree.fromstring(document.encode())
    root.set("active", "1")
    root.find("rois").append(etree.fromstring(ZONE))
    return etree.tostring(root, encoding="unicode")


BEHAVIOR = (DATA / "plugins/com.varlo.rule.loiteringdetection/behavior.xml").read_text(encoding="utf-8")
SCENE = (DATA / "plugins/com.varlo.engine.sceneanalyzer/behavior.xml").read_text(encoding="utf-8")


def profiles(*rows):
    if not rows:
        return {}
    return {"profiles": [{"id": number, "name": name, "active": running} for number, name, running in rows]}


def available(active):
    """What each behavior is beside the active ones."""
    return {"behaviors": [{"type": behavior.alias.split(":")[-2], "availability": number}
                          for behavior, number in zip(documents.BEHAVIORS, documents.availability(active, False))]}


TOUR = [
    ("GetProfileList", {}, profiles()),
    ("GetActiveProfile", {}, {"profileId": -1}),
    ("CreateProfile", {"name": "Day"}, {"profileId": 1}),
    ("CreateProfile", {"name": NIGHT}, {"profileId": 2}),
    ("ExecuteProfile", {"id": 2}, {}),
    ("ExecuteProfile", {"id": 99}, Refused("Profile 99 does not exist")),
    ("GetActiveProfile", {}, {"profileId": 2}),
    ("GetProfileList", {}, profiles((1, "Day", False), (2, NIGHT, True))),
    ("StopProfile", {"profileId": 99}, Refused("Profile 99 does not exist")),
    ("StopProfile", {"profileId": 1}, {}),
    ("GetActiveProfile", {}, {"profileId": 2}),
    ("StopProfile", {}, {}),
    ("GetActiveProfile", {}, {"profileId": -1}),
    ("AlgorithmControl", {"command": 1}, {}),
    ("AlgorithmControl", {"command": 7}, Refused("Unknown algorithm command 7")),
    ("GetDefaultConfiguration", {"behaviorId": LOITERING}, Document(BEHAVIOR)),
    ("GetDefaultConfiguration", {"behaviorId": "urn:none"}, Refused("Unsupported behavior Id")),
    ("SetProfileBehavior", {"profileId": 1, "behaviorId": LOITERING, "config": active(BEHAVIOR)}, {}),
    ("SetProfileBehavior", {"profileId": 1, "behaviorId": LOITERING, "config": "no document"},
     Refused("The behavior document could not be read")),
    ("GetProfileBehavior", {"profileId": 1, "behaviorId": LOITERING}, Document(active(BEHAVIOR))),
    ("GetBehaviorAvailability", {"profileId": 1}, available([LOITERING])),
    ("GetBehaviorAvailability2", {"activeBehaviors": {"behavior": [LOITERING]}}, available([LOITERING])),
    ("DeleteProfileBehavior", {"profileId": 1, "behaviorId": LOITERING}, {}),
    ("DeleteProfileBehavior", {"profileId": 1, "behaviorId": LOITERING},
     Refused("Profile 1 has no behavior com.varlo.rule.loiteringdetection")),
    ("GetProfileBehavior", {"profileId": 1, "behaviorId": LOITERING}, Refused("Unsupported behavior Id")),
    ("GetDefaultScene", {}, Document(SCENE)),
    ("SetProfileScene", {"profileId": 1, "scene": SCENE}, {}),
    ("SetProfileScene", {"profileId": 1, "scene": "no document"}, Refused("The scene document could not be read")),
    ("GetProfileScene", {"profileId": 1}, Document(SCENE.replace('name=""', 'name="Day"', 1))),
    ("DeleteProfile", {"profileId": 1}, {}),
    ("DeleteProfile", {"profileId": 1}, Refused("Profile 1 does not exist")),
    ("GetProfileList", {}, profiles((2, NIGHT, False))),
]
