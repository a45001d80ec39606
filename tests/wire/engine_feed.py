"""The files that the service keeps for the analytics engine, as the tests read them."""

import hashlib
import json
import re
import time
from pathlib import Path

from service import etree

RULE = re.compile(r'<tt:Rule Name="([^"]*)" Type="([^"]*)"')


class Snapshot:
    """Both files, as they belong together."""

    def __init__(self, state, document):
        self.state, self.document = state, document
        self.sequence = state["sequence"]
        self.profile = state["profile"] and state["profile"]["id"]
        self.name = state["profile"] and state["profile"]["name"]
        self.zones = {kind: name for name, kind in RULE.findall((document or b"").decode())}


def read_state(folder):
    return json.loads((Path(folder) / "state.json").read_bytes())


def read_document(folder):
    try:
        return (Path(folder) / "active.xml").read_bytes()
    except FileNotFoundError:
        return None


def fits(state, document):
    told = state["document"]
    if told is None or document is None:
        return told is None and document is None
    return told["bytes"] == len(document) and told["sha256"] == hashlib.sha256(document).hexdigest()


def snapshot(folder, timeout=60):
    """What an engine reads: as long as the files don't fit, the next state.json is on its way."""
    end = time.monotonic() + timeout
    while True:
        state, document = read_state(folder), read_document(folder)
        if fits(state, document):
            if document is not None:
                etree.fromstring(document)
            return Snapshot(state, document)
        if time.monotonic() > end:
            raise AssertionError(f"{state} does not fit {len(document or b'')} bytes")


def zone(default, name, points=((10, 20), (300, 20), (300, 200))):
    """A default behavior document, active, with one zone of that name."""
    root = etree.fromstring(default.encode())
    root.set("active", "1")
    rois = root.find("rois")
    for roi in list(rois):
        rois.remove(roi)
    roi = etree.SubElement(rois, "roi")
    etree.SubElement(roi, "name").text = name
    etree.SubElement(roi, "enable").text = "1"
    vertices = etree.SubElement(roi, "vertices")
    for x, y in points:
        vertex = etree.SubElement(vertices, "vertex")
        etree.SubElement(vertex, "x").text = str(x)
        etree.SubElement(vertex, "y").text = str(y)
    return etree.tostring(root, encoding="unicode")
