"""The servers that are measured, and one round of load on one of them."""

import json
import os
import re
import shutil
import sqlite3
import subprocess
import sys
import tempfile
import time
from pathlib import Path

BUILD = Path(os.environ["BUILD"])
SOURCE = Path(os.environ["SOURCE"])
os.environ.setdefault("HOST", str(BUILD / "host/varlo-analytics-host"))
os.environ.setdefault("LIBRARY", str(BUILD / "source/libvarlo-analytics-api.so"))
os.environ.setdefault("GENERATED", str(BUILD / "schema/generated"))
os.environ.setdefault("DATA", str(SOURCE / "platform/data"))
sys.path.insert(0, str(SOURCE / "tests/wire"))

from service import Host, envelope  # noqa: E402

PROGRAMS = BUILD / "benchmarks/wire"
PROFILES = ("Day", "Night", "Rain", "Weekend", "Test")
WORKERS = "8"  # of a peer


class Server:
    """A program that says where it listens, with a folder of its own."""

    def __init__(self, name, command):
        self.name = name
        self.folder = Path(tempfile.mkdtemp(prefix="varlo-benchmark-"))
        self.process = subprocess.Popen([part.format(folder=self.folder) for part in command],
                                        stdin=subprocess.DEVNULL, stderr=subprocess.PIPE, text=True)
        self.port = int(re.search(r":(\d+)/", self.process.stderr.readline()).group(1))

    def end(self):
        self.process.kill()
        self.process.wait()
        self.process.stderr.close()
        shutil.rmtree(self.folder)


class OurHost(Host):
    """Our host with five profiles, or as many as are asked for; they are put into its store directly."""

    name = "host"

    def __init__(self, profiles=PROFILES):
        super().__init__()
        self.start()
        self.fill(profiles)

    def fill(self, profiles):
        self.stop()
        with sqlite3.connect(self.state / "profiles.db") as database:
            database.executemany("INSERT INTO profile (name) VALUES (?)", ((name,) for name in profiles))
        database.close()
        self.start()

    def seconds_to_listen(self):
        self.stop()
        begin = time.perf_counter()
        self.start()
        return time.perf_counter() - begin

    def end(self):
        self.stop()
        self.clean()


def resident_kib(server):
    status = Path(f"/proc/{server.process.pid}/status").read_text()
    return int(re.search(r"^VmRSS:\s+(\d+) kB", status, re.M).group(1))


def load(server, body, clients, requests, first=1, *tls):
    """One round; the figures that the load generator prints, and the memory afterwards. `tls`: the version, or
    "resumed-" and the version, and a header."""
    with tempfile.NamedTemporaryFile("w", suffix=".xml") as file:
        file.write(body)
        file.flush()
        line = subprocess.run([PROGRAMS / "wire-load", str(server.port), str(server.process.pid), file.name,
                               str(clients), str(requests), str(first), *tls],
                              stdout=subprocess.PIPE, text=True, check=True).stdout
    return {**json.loads(line), "memory": resident_kib(server)}


def fixed_peer():
    return Server("fixed answer", [str(PROGRAMS / "fixed-peer"), WORKERS])


def plain_peer(stored=None, fresh=False):
    """With contexts that it keeps, or with a fresh one for each connection."""
    return Server("plain gSOAP, fresh contexts" if fresh else "plain gSOAP",
                  [str(PROGRAMS / "plain-peer"), "{folder}", WORKERS, "fresh" if fresh else "kept"]
                  + ([str(stored)] if stored else []))


ZONE = ("<roi><name>Vary {number}</name><enable>1</enable><alarmSeverity>2</alarmSeverity><dwellTime>30</dwellTime>"
        "<alarmDelay>60</alarmDelay><vertices>" + "".join(
            f"<vertex><x>{x}</x><y>{y}</y></vertex>" for x, y in ((117, 42), (300, 42), (300, 200), (117, 200)))
        + "</vertices></roi>")
LOITERING = "urn:varlo-com:AlgorithmId:LoiteringDetection:1"
NUMBER = "@@@@@@@@"


def behaviors():
    """The URNs of all behaviors."""
    manifests = (SOURCE / "platform/data/plugins").rglob("manifest.xml")
    texts = [text for text in map(Path.read_text, manifests) if 'type="rule"' in text]
    return [re.search(r"<alias>(.*?)</alias>", text).group(1) for text in texts]


def behavior(host, urn=LOITERING, zones=4):
    """The client's document of a behavior, as the host delivers it, with so many zones; active."""
    document = host.call("GetDefaultConfiguration", behaviorId=urn).findtext("config")
    rois = "<rois>" + ZONE.format(number=NUMBER) * zones + "</rois>"
    return document.replace('active="0"', 'active="1"').replace("<rois/>", rois)


def stored(host, profile):
    """What the host's store holds of the behavior of a profile."""
    with sqlite3.connect(host.state / "profiles.db") as database:
        text, = database.execute("SELECT document FROM configuration WHERE profile = ?", (profile,)).fetchone()
    database.close()
    return text
