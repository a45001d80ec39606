"""What --check names, and a start too."""

import subprocess
import unittest

import service
from test_access import MUTUAL, TLS, USERS, AccessTest


def run(*options):
    return subprocess.run([service.HOST, *options], stdin=subprocess.DEVNULL, capture_output=True, text=True, timeout=60)


class Check(AccessTest):
    def check(self):
        done = run("--check", "--settings", self.host.settings, "--plugins", self.host.plugins)
        self.assertEqual(done.stdout, "")
        return done.returncode, done.stderr

    def write(self, server):
        """The settings; `server` begins in line 2."""
        self.host.settings.write_text(f"<settings><server>\n{server}</server></settings>")

    def test_check(self):
        self.settings(MUTUAL, USERS + "<roles><operator>ann</operator></roles><audit>journal</audit>")
        self.assertEqual(self.check(), (0, ""))
        self.host.settings.write_text(
            '<settings>\n<server>\n<endpoint name="kestrile-server" certificat="x"/>\n<maxConections>1</maxConections>\n'
            "<workers>many</workers></server>\n<users>users</users></settings>")
        code, said = self.check()
        self.assertEqual(code, 1)
        for line, text in (3, "the attribute certificat of <endpoint> isn't known"), (4, "<maxConections> isn't known"), \
                (5, '<workers> is "many"; it takes a whole number from 1'), (6, "<users> isn't known"):
            self.assertIn(f"{self.host.settings}:{line}: {text}", said)
        self.host.settings.write_text(
            '<!DOCTYPE settings SYSTEM "settings.dtd">\n<settings><backlog>65536</backlog><server>\n'
            '<endpoint name="kestrel-server" port="8443"/></server></settings>')
        code, said = self.check()
        self.assertEqual(code, 1)
        for line, text in (2, '<backlog> is "65536"'), (3, '<endpoint> is named "kestrel-server" and not used'):
            self.assertIn(f"{self.host.settings}:{line}: {text}", said)
        self.settings(TLS, USERS)
        self.users.write_text(f"{self.line}CN=x:{self.line.partition(':')[2]}")
        (self.tls / "camera.key").write_text("no key")
        code, said = self.check()
        self.assertEqual(code, 1)
        self.assertIn(f'{self.users}:2: the user "CN=x" can\'t log in', said)
        self.assertIn("camera.key: it can't be read as a private key", said)
        self.settings("", '<metrics address="0.0.0.0"/>')
        code, said = self.check()
        self.assertEqual(code, 1)
        self.assertIn("everybody there could read the metrics", said)

    def test_of_elements_that_come_twice_the_first_counts(self):
        self.write('<endpoint name="kestrile-server" address="127.0.0.1"/>\n'
                   '<endpoint name="kestrile-server" address="0.0.0.0" certificate="none.pem"/>\n'
                   '<endpoint name="other"/><metrics port="0"/>\n<metrics address="0.0.0.0"/></server>\n'
                   "<nonUserConfigurableRules><id>a</id><id>b</id></nonUserConfigurableRules><server>")
        code, said = self.check()
        self.assertEqual(code, 1)
        self.assertEqual(said.splitlines(), [
            f"{self.host.settings}:{line}: <{element}> is there already in line {line - 1}, which counts; remove one of them"
            for line, element in ((3, "endpoint"), (5, "metrics"))])
        self.host.start()  # without TLS
        self.assertEqual(self.host.scheme, "http")
        self.host.stop()
        self.assertEqual([line for line in self.host.errors if "remove one of them" in line], said.splitlines())

    def test_a_number_that_is_none_is_named_once(self):
        def named(said):
            return sorted(line.partition(": ")[2] for line in said if "whole number" in line)

        wrong = [f'<{name}> is "{text}"; it takes a whole number from {least} to {most}, and the default is used'
                 for name, text, least, most in (("maxResource", "much", 0, 2 ** 32 - 1), ("workers", "many", 1, 2 ** 31 - 1))]
        self.write("<workers>many</workers></server><maxResource>much</maxResource><server>")
        self.assertEqual(named(self.check()[1].splitlines()), wrong)
        self.host.start()
        self.host.call("GetBehaviorAvailability", profileId=-1)
        self.host.stop()
        self.assertEqual(named(self.host.errors), wrong)

    def test_addresses_that_are_none(self):
        self.write('<endpoint name="kestrile-server" address="camera"/>\n<metrics address="localhost"/>')
        code, said = self.check()
        self.assertEqual(code, 1)
        self.assertEqual(said.splitlines(), [
            f'{self.host.settings}:{line}: the attribute address of <{element}> is "{address}"; it takes a numeric IPv4 or '
            f"IPv6 address, such as 127.0.0.1"
            for line, element, address in ((2, "endpoint", "camera"), (3, "metrics", "localhost"))])
        self.write('<endpoint name="kestrile-server" address="camera"/>')
        started = run("--library", service.LIBRARY, "--settings", self.host.settings, "--plugins", self.host.plugins,
                      "--state", self.host.state)
        self.assertEqual(started.returncode, 1)
        self.assertIn(f'"camera" isn\'t a numeric IPv4 or IPv6 address; choose one such as 127.0.0.1 with <endpoint> in '
                      f"{self.host.settings}", started.stderr)

    def test_mistakes_in_plugins(self):
        self.settings()
        self.host.plugins = self.host.folder / "plugins"
        for name, manifest in ("one", '<manifest type="rule">\n<id>one</id><prise>3</prise></manifest>'), \
                ("two", '<manifest typ="rule"><id>two</id></manifest>'):
            (self.host.plugins / name).mkdir(parents=True)
            (self.host.plugins / name / "manifest.xml").write_text(manifest)
        (self.host.plugins / "one/engine.xml").write_text("<a>\n")
        (self.host.plugins / "one/behavior.xml").write_bytes(b"\xff")
        code, said = self.check()
        self.assertEqual(code, 1)
        for text in ("one/manifest.xml:2: <prise> isn't known here", "one/engine.xml:2: the default configuration can't be "
                     "used: ", "one/behavior.xml:1: ", "two/manifest.xml:1: the attribute typ of <manifest> isn't known",
                     'two/manifest.xml:1: the manifest can\'t be used: the type is ""'):
            self.assertIn(f"{self.host.plugins}/{text}", said)
        self.host.start()
        self.host.stop()
        self.assertEqual(sorted(line for line in self.host.errors if line.startswith(f"{self.host.plugins}/")),
                         sorted(said.splitlines()))

    def test_a_plugin_folder_that_is_none(self):
        self.host.plugins = self.host.folder / "plugins"
        self.write("<prise/>")
        unknown = f"{self.host.settings}:2: <prise> isn't known here; correct its name or remove it\n"
        self.host.plugins.symlink_to("plugins")
        self.assertEqual(self.check(), (1, unknown + f"The plug-in folder {self.host.plugins} can't be read: Too many levels "
                                        "of symbolic links; make it readable for the service, or name another one with "
                                        "--plugins\n"))
        self.host.plugins.unlink()
        self.host.plugins.write_text("")
        self.assertEqual(self.check(), (1, unknown + f"{self.host.plugins}: it isn't a folder, and so there are no plug-ins.\n"))

    def test_unknown_elements_are_named_once_at_the_start(self):
        self.settings("", "<maxConections>1</maxConections>")
        self.host.start()
        self.host.call("GetProfileList")
        self.host.stop()
        self.assertEqual(len([line for line in self.host.errors if "<maxConections> isn't known" in line]), 1)


if __name__ == "__main__":
    unittest.main()
