"""The manual pages against the programs and the code: every option and setting stands in both."""

import os
import re
import subprocess
import unittest
from pathlib import Path

from lxml import etree

SOURCE = Path(os.environ["SOURCE"])
MANUAL = SOURCE / "packaging/man"


def text_of(page):
    return (MANUAL / page).read_text().replace("\\-", "-")


def options_in(text):
    return set(re.findall(r"(?<![\w-])--[a-z][a-z0-9-]*", text))


def help_of(*command):
    return subprocess.run([*command, "--help"], capture_output=True, text=True, check=True, timeout=60).stdout


class Options(unittest.TestCase):
    def test_the_host(self):
        listed = options_in(help_of(os.environ["HOST"]))
        self.assertGreater(len(listed), 6)
        self.assertEqual(options_in(text_of("varlo-analytics-host.8")), listed)

    def test_the_defaults_of_the_host(self):
        page = text_of("varlo-analytics-host.8")
        for default in re.findall(r"\[(/\S+)\]", help_of(os.environ["HOST"])):
            if "libvarlo" not in default:
                self.assertIn(f"Default: {default}.", page)

    def test_the_client(self):
        client = os.environ.get("CLIENT")
        if not client:
            self.skipTest("the client is not part of this build")
        text, pending = "", [()]
        while pending:
            words = pending.pop()
            help_text = help_of(client, *words)
            text += help_text
            part = re.split(r"^Subcommands:\n", help_text, flags=re.M)
            if len(part) > 1:
                names = re.findall(r"^  ([a-z][\w-]*)\b", part[1].split("\n\n")[0], re.M)
                pending += [(*words, name) for name in names]
                for name in names:
                    self.assertRegex(text_of("varlo-analytics.1"), rf"\b{name}\b")
        self.assertEqual(options_in(text_of("varlo-analytics.1")), options_in(text))


def settings_in_code():
    """The paths that the sources ask the settings document for."""
    paths = set()
    for folder in ("platform/source/*", "source", "video-analytics/source"):
        for file in sorted(SOURCE.glob(f"{folder}/*.cpp")):
            text = file.read_text()
            if "analytics/Settings.h" not in text and "Settings::" not in text:
                continue
            text = text.replace('"(//', '"//').replace(")[1]", "")  # the first of several
            paths |= set(re.findall(r'"/(?:/|settings/)([A-Za-z][A-Za-z/@]*)"', text))
            for name in re.findall(r"\"//(server/endpoint)\[@name='\"", text):
                paths |= {name, f"{name}/@name"}
            paths |= {f"server/endpoint/{name}" for name in re.findall(r'"/(@\w+)"', text)}
    return paths


def settings_in_document():
    """The paths of the delivered settings document that carry a value."""
    tree = etree.parse(str(SOURCE / "platform/data/settings.xml"))
    paths = set()
    for element in tree.iter(etree.Element):
        path = re.sub(r"\[\d+\]", "", tree.getpath(element)).removeprefix("/settings").lstrip("/")
        if (element.text or "").strip() or element.attrib:
            paths |= {path} | {f"{path}/@{name}" for name in element.attrib}
    return paths


class Settings(unittest.TestCase):
    def setUp(self):
        self.page = text_of("varlo-analytics-settings.5")
        self.told = set(re.findall(r"^\.TP\n\.B (\S+)$", self.page, re.M))

    def test_what_the_code_reads_is_told_and_nothing_else(self):
        self.assertGreater(len(self.told), 9)
        self.assertEqual(self.told, settings_in_code())

    def test_what_is_delivered_is_told_with_its_value(self):
        self.assertLessEqual(settings_in_document(), self.told)
        tree = etree.parse(str(SOURCE / "platform/data/settings.xml"))
        for path in self.told:
            name, _, attribute = path.rpartition("/@")
            found = tree.find(name or path)
            value = None if found is None else found.get(attribute) if name else (found.text or "").strip()
            if value and attribute != "name":
                entry = self.page.split(f".TP\n.B {path}\n")[1].split(".TP\n")[0]
                self.assertIn(f"Default: {value}.", entry)


class Form(unittest.TestCase):
    def test_the_pages_are_read_without_a_complaint(self):
        for page in sorted(MANUAL.iterdir()):
            done = subprocess.run(["man", "--warnings", "-E", "UTF-8", "-l", "-Tutf8", "-Z", str(page)],
                                  stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL, stderr=subprocess.PIPE,
                                  text=True, timeout=60, env={**os.environ, "MANROFFSEQ": "", "LC_ALL": "C.UTF-8"})
            self.assertEqual((done.returncode, done.stderr), (0, ""), page.name)


if __name__ == "__main__":
    unittest.main()
