"""The command-line client: whatever is wrong with its input is told, with its cause and the next step."""

import functools
import json
import re
import shlex
import ssl
import subprocess

import mistakes
from certificates import Certificates
from command import CLIENT, ClientTest, Listener, answer, main, run

NEXT = {mistakes.ERROR: "correct the document, or send it as it is with --force",
        mistakes.WARNING: "correct the document, or leave --strict out"}


@functools.cache
def example(document):
    """The example of a document, as XML and as JSON."""
    words = ("scene", "example") if document == "scene" else ("behavior", "example", document)
    return run(*words).out, run(*words, "--json").json["document"]


def with_text(document, text, instead):
    original = example(document)[0]
    assert text in original, f"{text} isn't in {original}"
    return original.replace(text, instead, 1)


def with_member(document, pointer, value):
    changed = json.loads(json.dumps(example(document)[1]))
    *parents, last = [int(one) if one.isdigit() else one for one in pointer.split("/")[1:]]
    place = functools.reduce(lambda node, key: node[key], parents, changed)
    if value is None:
        del place[last]
    else:
        place[last] = value
    return json.dumps(changed)


class Told(ClientTest):
    """A test that runs a row of a table in which something is wrong."""

    def environment(self):
        folder = str(self.host.folder)
        return {"XDG_CONFIG_HOME": folder, "TMPDIR": folder, "EDITOR": f"{folder}/none"}

    def told(self, *words, code, texts, **options):
        options.setdefault("url", self.host.url)
        options.setdefault("environment", self.environment())
        ran = run(*words, **options)
        self.assertEqual(ran.code, code, f"{words}: {ran.out}{ran.err}")
        self.assertRegex(ran.err, r"(?m)^varlo-analytics: ")
        self.assertNotRegex(ran.err, r"SOAP-ENV|soap_|\x1b")
        for text in texts:
            self.assertIn(text, ran.err)
        return ran


class Documents(Told):
    def setUp(self):
        super().setUp()
        self.client("profile", "create", "Day")

    def test_each_is_refused_under_strict_and_a_warning_lets_it_through(self):
        rows = [(with_text(*row[:3]), row[0], *row[3:], True) for row in mistakes.XML]
        rows += [(with_member(*row[:3]), row[0], *row[3:], False) for row in mistakes.JSON]
        for text, document, level, field, cause, in_xml in rows:
            with self.subTest(document=document, field=field, cause=cause):
                self.refused(text, document, level, field, cause, in_xml)
        exported = self.client("export", "1", self.host.folder / "nothing", "--json").json
        self.assertEqual((exported["scene"], exported["behaviors"]), (False, 0))
        for text, document, level, field, cause, _ in rows:
            if level == mistakes.WARNING:
                with self.subTest(document=document, field=field, cause=cause, strict=False):
                    self.assertRegex(self.client(*self.words(document), text=text).err,
                                     r"(?m)^standard input:.* warning: .*" + re.escape(cause))

    def words(self, document):
        return ("scene", "set", "1") if document == "scene" else ("behavior", "set", "1", document)

    def refused(self, text, document, level, field, cause, in_xml):
        ran = run(*self.words(document), "--strict", "--json", url=self.host.url, text=text)
        self.assertEqual((ran.code, ran.out), (4, ""), ran.err)
        first, *others, last = map(json.loads, ran.err.splitlines())
        self.assertEqual((first["file"], first["field"], first["level"]), ("standard input", field, level))
        self.assertIn(cause, first["text"])
        self.assertEqual(first.get("line", 0) > 0, in_xml)
        self.assertIn(NEXT[level], last["text"])
        # A mistake in XML is told once; one in JSON may leave a place without what belongs there.
        self.assertTrue(not others or not in_xml, others)


class Lines(Told):
    def setUp(self):
        super().setUp()
        for name in ("Day", "Twin", "Twin", "Full", "Busy"):
            self.client("profile", "create", name)
        for name in ("camera-sabotage", "loitering", "object-counting"):
            self.client("behavior", "set", "Full", name, text=example(name)[0])
        self.client("export", "Full", self.host.folder / "misfits")
        self.client("profile", "delete", "Full")
        self.client("export", "Busy", self.host.folder / "less")
        self.client("behavior", "set", "Busy", "loitering", text=example("loitering")[0])
        for name, text in mistakes.LISTS.items():
            (self.host.folder / name).mkdir()
            (self.host.folder / name / "profile.xml").write_text(text)
        (self.host.folder / "loop").symlink_to("loop")
        self.before = self.client("profile", "list", "--json").json

    def tearDown(self):
        self.assertEqual(self.client("profile", "list", "--json").json, self.before)

    def words(self, line):
        return shlex.split(line.format(self.host.folder, "x" * 300))

    def test_command_lines(self):
        for line, code, *texts in mistakes.LINES:
            with self.subTest(line=line):
                self.told(*self.words(line), code=code, texts=texts)
                ran = run(*self.words(line), "--json", url=self.host.url, environment=self.environment())
                self.assertEqual(ran.code, code)
                last = json.loads(ran.err.splitlines()[-1])
                self.assertEqual(last["level"], "error")

    def test_files(self):
        for line, text, *texts in mistakes.FILES:
            with self.subTest(line=line, text=text):
                strict = ("--strict",) if line.startswith(mistakes.CHECKED) else ()
                self.told(*self.words(line), *strict, code=4, texts=texts, text=text)

    def test_json_that_is_nested_deeply(self):
        deep = "[" * 500000 + "]" * 500000
        header = '{"plan": 1, "prune": false, "run": false, "name": "a", "frame": "1x1", "scene": null, "behaviors": [], "hosts": []}'
        file = self.host.folder / "deep.plan"
        file.write_text(f'{header}\n{{"host": "a", "changes": {deep}}}\n')
        for line, text, *texts in (
                ("behavior set 1 loitering", f'{{"active": {deep}}}', "the values are nested too deeply", "correct the document and try again"),
                ("behavior set 1 loitering", f'{{"active": {"[" * 256 + "]" * 256}}}', "the values are nested too deeply"),
                ("behavior set 1 loitering", f'{{"active": {"[" * 255 + "]" * 255}}}', "/active", "has to be 0 or 1"),
                ("validate -", '{"document": ' * 100000 + "0" + "}" * 100000, "the values are nested too deeply"),
                (f"apply {file}", "", "isn't a saved plan, or is damaged", "'varlo-analytics plan DIR --out")):
            with self.subTest(line=line, begin=text[:30]):
                self.told(*self.words(line), code=4, texts=texts, text=text)

    def test_a_byte_order_mark_is_no_part_of_a_text(self):
        xml, document = example("loitering")
        for text in (xml, json.dumps(document), json.dumps({"document": document})):
            with self.subTest(begin=text[:20]):
                self.client("validate", "-", text="\ufeff" + text)
        marked = self.host.folder / "marked.json"
        marked.write_text("\ufeff" + json.dumps(document))
        self.client("validate", marked)

    def test_hosts_and_cameras(self):
        file = self.host.folder / "hosts.txt"
        for text, *texts in mistakes.HOSTS:
            file.write_text(text)
            with self.subTest(text=text):
                self.told("plan", self.host.folder / "less", "--hosts", file, code=2, texts=texts)
        cameras = self.host.folder / "varlo-analytics/cameras.ini"
        cameras.parent.mkdir()
        for text, *texts in mistakes.CAMERAS:
            cameras.write_text(text)
            with self.subTest(text=text):
                self.told("--camera", "gate", "profile", "list", code=2, texts=texts)

    def test_a_result_that_is_lost(self):
        file = self.host.folder / "hosts.txt"
        file.write_text(self.host.url)
        for words in (("profile", "list", "--url", self.host.url), ("--help-all",),
                      ("plan", self.host.folder / "less", "--hosts", file, "--json")):
            for where in ("/dev/full", "&-"):
                with self.subTest(words=words, where=where):
                    ran = subprocess.run(["sh", "-c", f'exec "$@" >{where}', "sh", CLIENT, *words], capture_output=True, text=True,
                                         timeout=60)
                    self.assertEqual(ran.returncode, 4)
                    self.assertIn("can't be written to standard output", ran.stderr)

    def test_passwords_that_others_could_read(self):
        words = ("--user", "ann", "profile", "list", "--timeout", "1")
        options = {"environment": {"VARLO_ANALYTICS_PASSWORD": "secret"}}
        for url in mistakes.OPEN:
            self.told(*words, code=2, texts=("over plain http", "Use https:// in the address; --insecure"), url=url, **options)
        for url in mistakes.SAFE:
            self.assertNotIn("plain http", run(*words, url=url, **options).err)
        self.assertNotIn("plain http", run(*words, "--insecure", url="http://192.0.2.1/", **options).err)


class Answers(Told):
    def test_what_answers_is_no_service_or_refuses(self):
        for status, body, code, *texts in mistakes.ANSWERS:
            serve = answer(status, body) if status != "raw" else functools.partial(self.raw, body.encode())
            with self.subTest(status=status, body=body), Listener(serve) as listener:
                ran = self.told("profile", "list", code=code, texts=texts, url=f"http://127.0.0.1:{listener.port}/")
                self.assertRegex(ran.err, r"^varlo-analytics: [^\n]*\.\n$")

    @staticmethod
    def raw(body, connection):
        connection.recv(65536)
        connection.sendall(body)

    def test_nobody_answers(self):
        self.told("profile", "list", code=3, texts=("the host is unknown", "--url"), url="http://nobody.invalid/")
        self.told("profile", "list", code=3, texts=("No TLS connection", "speaks https there"), url=self.host.url.replace("http:", "https:"))
        port = self.host.port
        self.host.stop()
        self.told("profile", "list", code=3, texts=("Connection refused", "Look whether the service runs"), url=f"127.0.0.1:{port}")
        self.host.start()


class OfServices(Certificates):
    def test_each_certificate_is_told_by_its_reason(self):
        for version in (ssl.TLSVersion.TLSv1_2, ssl.TLSVersion.TLSv1_3):
            for name, clients, ours, trusted, *texts in mistakes.CERTIFICATES:
                with self.subTest(version=version, name=name, ours=ours, trusted=trusted):
                    self.check(self.end(name, version, clients), ours, trusted, texts)

    def check(self, url, ours, trusted, texts):
        words = ["--cacert", self.folder / trusted] if trusted else []
        if ours:
            words += ["--cert", self.folder / f"{ours}.pem", "--key", self.folder / f"{ours}.key"]
        ran = run("profile", "list", *words, url=url)
        self.assertEqual((ran.code, ran.out), (3, ""))
        self.assertRegex(ran.err, r"^varlo-analytics: [^\n]*\.\n$")
        for text in texts:
            self.assertIn(text, ran.err)

    def test_a_good_one_is_taken(self):
        words = ("--cert", self.folder / "client.pem", "--key", self.folder / "client.key")
        for version in (ssl.TLSVersion.TLSv1_2, ssl.TLSVersion.TLSv1_3):
            for authorities in ("authority.pem", "authority-and-list.pem"):
                ran = run("profile", "list", "--json", "--cacert", self.folder / authorities, *words,
                          url=self.end("server", version, "authority.pem"))
                self.assertEqual((ran.code, ran.err, ran.out), (0, "", "[]\n"))


if __name__ == "__main__":
    main()
