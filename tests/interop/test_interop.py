"""Clients that we did not write, each through the whole tour in each SOAP version that it speaks, and the
table of it in docs/clients.md, which this run has to make as it stands there."""

import json
import os
import shutil
import subprocess
import sys
import threading
import unittest
from pathlib import Path

import service
from service import BUILD, GENERATED, SOURCE, Host, etree
from tour import SENDER, TOUR, Document, Refused

HERE = Path(__file__).parent
NODE = BUILD / "tests/interop/node"
LIMIT = 60
BOTH = ("1.1", "1.2")
CLIENTS = {
    "zeep": ([sys.executable, HERE / "client.py"], BOTH),
    "Node soap": (["node", NODE / "client.js"], BOTH),
    "PHP SoapClient": (["php", HERE / "client.php"], BOTH),
    "Perl SOAP::Lite": (["perl", HERE / "client.pl"], BOTH),
    "gSOAP": ([os.environ["GSOAP_CLIENT"]], BOTH),
    "curl": (["bash", HERE / "client.sh"], BOTH),
}
passed = {}


def install_node_client():
    """The Node client beside its packages, which npm fetches as the lock file says."""
    NODE.mkdir(parents=True, exist_ok=True)
    lock = (HERE / "node/package-lock.json").read_bytes()
    installed = NODE / "node_modules/.from"
    for name in ("package.json", "package-lock.json", "client.js"):
        shutil.copy(HERE / "node" / name, NODE)
    if installed.exists() and installed.read_bytes() == lock:
        return
    for attempt in range(3):
        done = subprocess.run(["npm", "ci", "--no-audit", "--no-fund", "--ignore-scripts"], cwd=NODE, timeout=300,
                              stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True)
        if done.returncode == 0:
            installed.write_bytes(lock)
            return
    raise RuntimeError(f"npm could not fetch the packages of {NODE}: {done.stdout}")


def same_document(one, other):
    def plain(text):
        parser = etree.XMLParser(remove_blank_text=True, remove_comments=True)
        return etree.tostring(etree.fromstring(text.encode(), parser), method="c14n")
    return plain(one) == plain(other)


def element_of(operation, fields):
    """The call as one line of XML, for the client that has no toolkit."""
    root = etree.fromstring(service.envelope(operation, **{
        name: value["behavior"] if isinstance(value, dict) else value for name, value in fields.items()}).encode())
    return etree.tostring(root[0][0], encoding="unicode").replace("\n", "&#10;")


def answer_of(text, version):
    """What the service said in XML, in the form of the other clients' answers."""
    try:
        element = service.body_of(text, version)
    except service.Fault as fault:
        return {"code": fault.code, "fault": fault.text}
    values = {child.tag: child.text or "" for child in element if len(child) == 0}
    if element.tag.endswith("GetProfileListResponse"):
        values = {"profiles": [{"id": p.get("id"), "name": p.text, "active": p.get("active") == "true"}
                               for p in element.iter("profile")]}
    if element.find("behaviors") is not None:
        values = {"behaviors": [{"type": b.findtext("type"), "availability": b.findtext("availability")}
                                for b in element.iter("behavior")]}
    return {"result": values}


def plain(value):
    """Numbers and texts of numbers are the same here; some languages keep what they got as text."""
    if isinstance(value, dict):
        return {name: plain(part) for name, part in value.items()}
    if isinstance(value, list):
        return [plain(part) for part in value]
    return value if isinstance(value, bool) else str(value)


def short(behaviors):
    return [{**row, "type": row["type"].split(":")[-2]} for row in behaviors]


class Interop(unittest.TestCase):
    maxDiff = None

    def call(self, process, operation, fields, version, raw):
        line = element_of(operation, fields) if raw else json.dumps([operation, fields])
        process.stdin.write(line + "\n")
        process.stdin.flush()
        answer = process.stdout.readline()
        self.assertTrue(answer.strip(), f"the client ended at {operation}")
        return answer_of(answer, version) if raw else json.loads(answer)

    def check(self, answer, expected, version):
        if isinstance(expected, Refused):
            self.assertEqual(answer.get("fault"), expected)
            self.assertEqual(answer["code"].split(":")[-1], SENDER[version])
            return
        self.assertIn("result", answer)
        result = answer["result"] or {}
        if isinstance(expected, Document):
            (text,) = result.values()
            self.assertTrue(same_document(text, expected), text)
            return
        if result.get("profiles") == []:
            del result["profiles"]
        if "behaviors" in result:
            result["behaviors"] = short(result["behaviors"])
        self.assertEqual(plain(result), plain(expected))

    def tour(self, name, version):
        command, _ = CLIENTS[name]
        if command[0] == "node":
            install_node_client()
        with Host() as host, subprocess.Popen(
                [*map(str, command), str(GENERATED / "VideoAnalytics.wsdl"), host.url, version], text=True,
                encoding="utf-8", stdin=subprocess.PIPE, stdout=subprocess.PIPE) as process:
            watchdog = threading.Timer(LIMIT, process.kill)
            watchdog.start()
            try:
                for operation, fields, expected in TOUR:
                    if process.poll() is not None:
                        self.fail(f"the client ended before {operation}")
                    with self.subTest(client=name, version=version, operation=operation, fields=fields):
                        self.check(self.call(process, operation, fields, version, name == "curl"), expected, version)
                        passed.setdefault((operation, name), {}).setdefault(version, 0)
                        passed[operation, name][version] += 1
                process.stdin.close()
                self.assertEqual(process.wait(timeout=LIMIT), 0)
            finally:
                watchdog.cancel()
                process.kill()


def add_tests():
    for name, (_, versions) in CLIENTS.items():
        for version in versions:
            words = f"{name} {version}".replace(" ", "_").replace("::", "_").replace(".", "_").lower()
            setattr(Interop, f"test_{words}", lambda self, n=name, v=version: self.tour(n, v))


add_tests()


def table():
    operations = sorted({operation for operation, _, _ in TOUR})
    calls = {name: sum(operation == name for operation, _, _ in TOUR) for name in operations}
    lines = ["| Operation | " + " | ".join(CLIENTS) + " |", "|---" * (len(CLIENTS) + 1) + "|"]
    for operation in operations:
        cells = [", ".join(version for version, count in sorted(passed.get((operation, client), {}).items())
                           if count == calls[operation]) or "-" for client in CLIENTS]
        lines.append(f"| `{operation}` | " + " | ".join(cells) + " |")
    return "\n".join(lines)


class Words(unittest.TestCase):
    def test_the_tour_has_every_operation_of_the_wsdl(self):
        space = {"w": "http://schemas.xmlsoap.org/wsdl/"}
        wsdl = etree.parse(str(GENERATED / "VideoAnalytics.wsdl"))
        told = {o.get("name"): " ".join((o.findtext("w:documentation", "", space)).split())
                for o in wsdl.iterfind("w:portType/w:operation", space)}
        self.assertEqual(set(service.MESSAGES), set(told))
        self.assertEqual({operation for operation, _, _ in TOUR}, set(told))
        for operation, sentence in told.items():
            self.assertRegex(sentence, r"^[A-Z0-9].{20,}\.$", operation)

    def test_the_calls_of_the_tour_are_valid(self):
        for operation, fields, _ in TOUR:
            service.SCHEMA.assertValid(etree.fromstring(element_of(operation, fields)))

    def test_the_wsdl_needs_no_other_file(self):
        text = (GENERATED / "VideoAnalytics.wsdl").read_text()
        for word in ("<import", ":import", "<include", "schemaLocation"):
            self.assertNotIn(word, text)

    def test_the_guide_shows_each_client_as_it_runs(self):
        guide = (SOURCE / "docs/clients.md").read_text(encoding="utf-8")
        for name, (command, _) in CLIENTS.items():
            self.assertIn(f"## {name}\n", guide)
        for file in ("client.py", "node/client.js", "client.php", "client.pl", "gsoap/client.cpp", "client.sh"):
            self.assertIn(f"tests/interop/{file}", guide)


class ZTable(unittest.TestCase):
    """Last, since it tells what the others have found."""

    def test_the_table_of_the_guide_is_the_one_of_this_run(self):
        print(table())
        self.assertIn(table(), (SOURCE / "docs/clients.md").read_text(encoding="utf-8"))


if __name__ == "__main__":
    unittest.main()
