"""What the tests of plan and apply share: a folder with every behavior, and services to apply it to."""

import json
import re
import shutil
from contextlib import ExitStack

from lxml import etree

from command import ClientTest, Host, run
from proxy import Proxy

NAMES = ("abandoned-object", "adaptive-motion", "camera-sabotage", "directional-motion", "loitering",
         "object-counting", "object-removal", "stopped-vehicle")
SCENE = """<analyticProfile version="2.0" name="another"><sceneType>2</sceneType><sensitivity>8</sensitivity>
<excludeZones><excludeZone><vertices><vertex><x>1</x><y>2</y></vertex><vertex><x>100</x><y>2</y></vertex>
<vertex><x>50</x><y>90</y></vertex></vertices></excludeZone></excludeZones></analyticProfile>"""


class FleetTest(ClientTest):
    """`self.host` has the profile "Car park" with all behaviors and a scene, `self.folder` is its export."""

    behaviors = NAMES

    def setUp(self):
        super().setUp()
        self.stack = ExitStack()
        self.addCleanup(self.stack.close)
        self.work = self.host.folder
        self.fill(self.behaviors)
        self.folder = self.work / "folder"
        self.client("export", "Car park", self.folder)

    def fill(self, behaviors):
        self.client("profile", "create", "Car park")
        for name in behaviors:
            self.client("behavior", "set", "1", name, text=self.client("behavior", "example", name).out)
        self.client("scene", "set", "1", text=SCENE.replace("another", "Car park"))

    def another(self):
        return self.stack.enter_context(Host())

    def proxy(self, host=None, **options):
        return self.stack.enter_context(Proxy(host or self.host, **options))

    def plan(self, *words, url=None, folder=None, code=0):
        return self.lines("plan", folder or self.folder, *words, url=url, code=code)

    def apply(self, *words, url=None, folder=None, code=0):
        return self.lines("apply", folder or self.folder, *words, url=url, code=code)

    def lines(self, *words, url=None, code=0):
        """The lines of --json; what else the run said is in self.ran."""
        self.ran = run(*words, "--json", url=url or self.host.url)
        self.assertEqual(self.ran.code, code, f"{words}: {self.ran.out}{self.ran.err}")
        lines = [json.loads(line) for line in self.ran.out.splitlines()]
        for line in lines:
            self.check_line(line)
        return lines

    def check_line(self, line):
        self.assertLessEqual(set(line), {"host", "state", "changes", "error"})
        self.assertIn(line["state"], ("same", "differs", "changed", "failed", "unreachable", "skipped", "restored"))
        if line["state"] in ("failed", "unreachable", "restored"):
            self.assertTrue(line["error"])
        elif line["state"] != "skipped":
            self.assertNotIn("error", line)
        for change in line["changes"]:
            self.assertEqual(list(change), ["element", "id", "action", "before", "after"])

    def hosts_file(self, lines, name="hosts.txt"):
        path = self.work / name
        path.write_text("# cameras\n\n" + "".join(f"{line}  # one\n" for line in lines), encoding="utf-8")
        return path

    def edit(self, file, pattern, replacement, folder=None):
        """Changes a file of the folder; the pattern has to be in it."""
        path = (folder or self.folder) / file
        text, count = re.subn(pattern, replacement, path.read_text(encoding="utf-8"), flags=re.S)
        self.assertGreater(count, 0, f"{pattern} isn't in {path}")
        path.write_text(text, encoding="utf-8")

    def without(self, name, folder=None):
        """Takes a behavior out of the folder."""
        folder = folder or self.folder
        self.edit("profile.xml", rf'<behavior [^>]*file="{name}\.xml" ?/>', "", folder)
        (folder / f"{name}.xml").unlink()

    def documents(self, host):
        """All that a host has: by profile number its name, whether it runs, its scene and behaviors."""
        found = {}
        for profile in self.on(host, "profile", "list").json:
            folder = self.work / "look"
            shutil.rmtree(folder, ignore_errors=True)
            self.on(host, "export", profile["id"], folder)
            found[profile["id"]] = (profile["name"], profile["active"],
                                    {path.name: canonical(path) for path in folder.iterdir()
                                     if path.name != "profile.xml"})
        return found

    def on(self, host, *words):
        ran = run(*words, "--json", url=host.url)
        self.assertEqual(ran.code, 0, f"{words}: {ran.out}{ran.err}")
        return ran


def canonical(path):
    parser = etree.XMLParser(remove_blank_text=True)
    return etree.tostring(etree.parse(str(path), parser), method="c14n")


def actions(line):
    """The changes of a host in short."""
    return [(change["element"], change["id"], change["action"]) for change in line["changes"]]
