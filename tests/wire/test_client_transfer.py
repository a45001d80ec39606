"""The command-line client: a whole profile as files, onto one camera and onto many."""

import os
import pty
import subprocess
import time
from contextlib import ExitStack

from lxml import etree

import service
from command import CLIENT, ClientTest, Host, Listener, main, run

SCENE = """<analyticProfile version="2.0" name="Car park"><sceneType>2</sceneType><sensitivity>8</sensitivity>
<excludeZones><excludeZone><vertices><vertex><x>1</x><y>2</y></vertex></vertices></excludeZone></excludeZones>
</analyticProfile>"""
BEHAVIORS = ("loitering", "abandoned-object", "directional-motion", "camera-sabotage")


def canonical(text):
    return etree.tostring(etree.fromstring(text.encode(), etree.XMLParser(remove_blank_text=True)), method="c14n")


def documents(folder):
    """What lies in the folder by file."""
    return {path.name: canonical(path.read_text(encoding="utf-8")) for path in folder.iterdir()}


class TransferTest(ClientTest):
    def setUp(self):
        super().setUp()
        self.client("profile", "create", "Car park")
        self.client("scene", "set", "1", text=SCENE)
        for name in BEHAVIORS:
            self.client("behavior", "set", "1", name, text=self.client("behavior", "example", name).out)
        self.folder = self.host.folder / "backup"


class ExportAndImport(TransferTest):
    def test_export_delete_import_gives_an_equal_profile(self):
        self.client("export", "Car park", self.folder)
        self.assertEqual(set(documents(self.folder)), {"profile.xml", "scene.xml", *(f"{b}.xml" for b in BEHAVIORS)})
        before = [self.client("behavior", "get", "1", name).out for name in BEHAVIORS]
        scene = self.client("scene", "get", "1").out
        self.client("profile", "delete", "1")
        imported = self.client("import", self.folder, "--json")
        self.assertEqual(imported.err, "")
        self.assertEqual(imported.json["id"], 2)
        self.assertEqual([self.client("behavior", "get", "2", name).out for name in BEHAVIORS], before)
        self.assertEqual(self.client("scene", "get", "2").out, scene)
        again = self.host.folder / "again"
        self.client("export", "2", again)
        self.assertEqual(documents(again), documents(self.folder))

    def test_a_profile_without_anything_is_one_too(self):
        self.client("profile", "create", "Bare")
        self.assertEqual(self.client("export", "Bare", self.folder, "--json").json["behaviors"], 0)
        self.client("import", self.folder, "--name", "Copy")
        self.assertEqual([p["name"] for p in self.client("profile", "list", "--json").json], ["Car park", "Bare", "Copy"])

    def test_replace_takes_the_place_of_the_one_that_runs(self):
        self.client("export", "1", self.folder)
        self.client("profile", "run", "1")
        self.assertIn("and runs.", self.client("import", self.folder, "--replace").out)
        self.assertEqual(self.client("profile", "list", "--json").json,
                         [{"id": 2, "name": "Car park", "active": True, "preset": ""}])

    def test_an_import_that_fails_leaves_nothing(self):
        self.client("export", "1", self.folder)
        profile = self.folder / "profile.xml"
        known = profile.read_text(encoding="utf-8")
        profile.write_text(known.replace("urn:varlo-com:AlgorithmId:CameraSabotage:1", "urn:unknown:1"), encoding="utf-8")
        self.assertIn("Unsupported behavior Id", self.client("import", self.folder, code=1).err)
        self.assertEqual([p["id"] for p in self.client("profile", "list", "--json").json], [1])
        profile.write_text(known.replace('file="loitering.xml"', 'file="../settings.xml"'), encoding="utf-8")
        self.assertIn("no file of its folder", self.client("import", self.folder, code=4).err)
        profile.unlink()
        self.assertIn("holds no profile", self.client("import", self.folder, code=4).err)

    def test_a_folder_in_use_is_left_alone(self):
        self.client("export", "1", self.folder)
        before = documents(self.folder)
        self.client("behavior", "delete", "1", "loitering")
        self.assertIn("holds a profile already", self.client("export", "1", self.folder, code=4).err)
        self.assertEqual(documents(self.folder), before)
        self.client("export", "1", self.folder, "--force")
        self.assertNotEqual(documents(self.folder), before)


class Apply(TransferTest):
    GOOD, DEAD, SLOW = 40, 5, 5

    def setUp(self):
        super().setUp()
        self.client("export", "1", self.folder)
        self.stack = ExitStack()
        self.addCleanup(self.stack.close)

    def hosts_file(self, urls):
        path = self.host.folder / "hosts.txt"
        path.write_text("# cameras\n\n" + "".join(f"{url}  # one\n" for url in urls), encoding="utf-8")
        return path

    def dead(self):
        """An address that refuses: its port is bound, and nobody listens."""
        taken = self.stack.enter_context(service.socket.socket())
        taken.bind(("127.0.0.1", 0))
        return f"127.0.0.1:{taken.getsockname()[1]}"

    def slow(self):
        """An address that takes the connection and never says anything."""
        silent = self.stack.enter_context(Listener(lambda connection: time.sleep(600)))
        return f"http://127.0.0.1:{silent.port}/"

    def test_fifty_instances_five_dead_and_five_slow(self):
        others = [self.stack.enter_context(Host()) for _ in range(2)]
        # One service answers at many ports: each is an instance of its own to the client.
        good = [f"http://127.0.0.1:{self.forward(others[i % 2])}/" for i in range(self.GOOD - 2)]
        good += [other.url for other in others]
        bad = [self.dead() for _ in range(self.DEAD)] + [self.slow() for _ in range(self.SLOW)]
        urls = [url for pair in zip(good, bad) for url in pair] + good[len(bad):]
        self.assertEqual(len(urls), 50)
        started = time.monotonic()
        ran = run("apply", "--hosts", self.hosts_file(urls), self.folder, "--json", "--timeout", "15",
                  "--host-timeout", "200", "--jobs", "16", timeout=600)
        self.assertLess(time.monotonic() - started, 300)
        self.assertEqual(ran.code, 1, ran.err)
        rows = {row["url"].rstrip("/").removeprefix("http://"): row for row in ran.json["hosts"]}
        failed = {url for url, row in rows.items() if not row["ok"]}
        self.assertEqual(failed, {url.rstrip("/").removeprefix("http://") for url in bad})
        self.assertEqual((ran.json["succeeded"], ran.json["failed"]), (40, 10))
        for url in bad[:self.DEAD]:
            self.assertIn("Connection refused", rows[url]["error"])
        for url in bad[self.DEAD:]:
            self.assertIn("took too long", rows[url.rstrip("/").removeprefix("http://")]["error"])
        self.assertEqual([line.partition("]")[0] for line in ran.err.splitlines()[:50]],
                         [f"[{i}/50" for i in range(1, 51)])
        self.assertIn("10 hosts failed", ran.err.splitlines()[-1])
        self.assertEqual(sum(len(other.call("GetProfileList").findall(".//profile")) for other in others), 40)

    def forward(self, host):
        """A port that leads to the host."""
        def serve(connection):
            with service.socket.create_connection(("127.0.0.1", host.port), timeout=120) as inside:
                request = b""
                while b"Envelope>" not in request[-200:]:
                    request += connection.recv(65536)
                inside.sendall(request)
                connection.sendall(service.read_all(inside))
        return self.stack.enter_context(Listener(serve)).port

    def test_replace_can_be_repeated_and_the_table_is_for_people(self):
        hosts = self.hosts_file([self.host.url])
        for _ in range(2):
            done = self.client("apply", "--hosts", hosts, self.folder, "--replace")
        self.assertEqual(len(self.client("profile", "list", "--json").json), 1)
        self.assertIn("1 of 1 hosts have the profile 'Car park'.", done.out)
        self.assertRegex(done.out, rf"(?m)^{self.host.url} +done +3$")

    def test_one_host_may_not_take_longer_than_it_is_allowed(self):
        ran = run("apply", "--hosts", self.hosts_file([self.slow()]), self.folder, "--host-timeout", "1", timeout=100)
        self.assertEqual(ran.code, 1)
        self.assertIn("took too long", ran.out)

    def test_lists_of_hosts_that_are_none(self):
        for urls, text in ((["a", "a"], ":4: http://a/ stands in line 3 already"), ([], "names no host"),
                           (["ftp://a/"], ":3: 'ftp://a/' is no address"), (["a:0"], "its port is no number")):
            ran = run("apply", "--hosts", self.hosts_file(urls), self.folder)
            self.assertEqual(ran.code, 2)
            self.assertIn(text, ran.err)

    def test_a_terminal_gets_a_bar(self):
        inner, outer = pty.openpty()
        process = subprocess.Popen([CLIENT, "apply", "--hosts", self.hosts_file([self.host.url]), self.folder],
                                   stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL, stderr=outer)
        os.close(outer)
        shown = b""
        try:
            while chunk := os.read(inner, 4096):
                shown += chunk
        except OSError:  # the other end is closed
            pass
        os.close(inner)
        self.assertEqual(process.wait(timeout=120), 0)
        self.assertIn(b"[" + b" " * 40 + b"] 0 of 1", shown)
        self.assertIn(b"[" + b"#" * 40 + b"] 1 of 1", shown)


if __name__ == "__main__":
    main()
