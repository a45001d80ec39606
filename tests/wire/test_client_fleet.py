"""The command-line client: one folder onto many cameras, some of which are dead or slow."""

import os
import pty
import socket
import subprocess
import time

from command import CLIENT, Listener, main, run
from fleet import FleetTest, actions


class ManyTest(FleetTest):
    behaviors = ("loitering",)

    def hosts(self, count):
        """So many addresses in front of one new service each has a profile of its own at."""
        return [self.another() for _ in range(count)]

    def dead(self):
        """An address that refuses: its port is bound, and nobody listens."""
        taken = self.stack.enter_context(socket.socket())
        taken.bind(("127.0.0.1", 0))
        return f"http://127.0.0.1:{taken.getsockname()[1]}/"

    def slow(self):
        """An address that takes the connection and never says anything."""
        silent = self.stack.enter_context(Listener(lambda connection: connection.recv(1 << 20) and time.sleep(600)))
        return f"http://127.0.0.1:{silent.port}/"

    def states(self, lines):
        return {line["host"]: line["state"] for line in lines}


class Many(ManyTest):
    def test_dead_and_slow_ones_are_told_and_hold_up_nobody(self):
        good = [host.url for host in self.hosts(4)]
        bad = [self.dead(), self.slow(), self.slow(), self.dead()]
        urls = [url for pair in zip(bad, good) for url in pair]
        for command, code in (("plan", 1), ("apply", 1)):
            lines = self.lines(command, self.folder, "--hosts", self.hosts_file(urls), "--timeout", 3, "--jobs", 4,
                               code=code)
            self.assertEqual(sorted(line["host"] for line in lines), sorted(urls))
            errors = {line["host"]: line["error"] for line in lines if line["state"] == "unreachable"}
            self.assertEqual(set(errors), set(bad))
            self.assertIn("Connection refused", errors[bad[0]])
            self.assertIn("took too long", errors[bad[1]])
            self.assertEqual({line["state"] for line in lines if line["host"] in good},
                             {"differs" if command == "plan" else "changed"})

    def test_people_get_lines_and_a_sum(self):
        hosts = self.hosts_file([self.host.url, self.hosts(1)[0].url, self.dead()])
        ran = run("apply", self.folder, "--hosts", hosts)
        self.assertEqual(ran.code, 1)
        self.assertIn(f"{self.host.url} same\n", ran.out)
        self.assertIn("changed\n  create profile Car park\n  create behavior loitering\n  create scene Car park\n", ran.out)
        self.assertIn("3 hosts: 1 same, 1 changed, 1 unreachable.", ran.err)

    def test_one_host_may_not_take_longer_than_it_is_allowed(self):
        line = self.plan("--hosts", self.hosts_file([self.slow()]), "--host-timeout", 1, code=1)[0]
        self.assertIn("took too long", line["error"])

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


class Batches(ManyTest):
    def setUp(self):
        super().setUp()
        self.good = [host.url for host in self.hosts(4)]

    def roll(self, urls, *words, code):
        lines = self.apply("--hosts", self.hosts_file(urls), "--jobs", 1, *words, code=code)
        self.assertEqual(sorted(line["host"] for line in lines), sorted(urls))
        return [self.states(lines)[url] for url in urls]

    def test_a_canary_that_fails_ends_it(self):
        a, b, c, d = self.good
        self.assertEqual(self.roll([self.dead(), a, b], "--canary", 1, code=1), ["unreachable", "skipped", "skipped"])
        self.assertIn("canary", self.ran.err)
        self.assertEqual(self.roll([a, self.dead(), b], "--canary", 1, code=1), ["changed", "unreachable", "changed"])
        self.assertEqual(self.roll([a, b, c], "--canary", 2, code=0), ["same", "same", "changed"])

    def test_a_batch_that_fails_is_the_last(self):
        a, b, c, d = self.good
        self.assertEqual(self.roll([a, self.dead(), b, c, d], "--batch", 3, code=1),
                         ["changed", "unreachable", "changed", "skipped", "skipped"])
        self.assertEqual(self.roll([c, d], "--batch", "50%", code=0), ["changed", "changed"])

    def test_so_many_may_fail_and_no_more(self):
        a, b, c, d = self.good
        self.assertEqual(self.roll([a, self.dead(), b], "--max-fail", 0, code=1), ["changed", "unreachable", "skipped"])
        self.assertEqual(self.roll([self.dead(), b, self.dead(), c], "--batch", 1, "--max-fail", "25%", code=1),
                         ["unreachable", "changed", "unreachable", "skipped"])
        self.assertEqual(self.roll([self.dead(), c, self.dead(), d], code=1),
                         ["unreachable", "changed", "unreachable", "changed"])

    def test_numbers_that_are_none(self):
        for words in (("--batch", "0"), ("--batch", "0%"), ("--batch", "101%"), ("--batch", "x"), ("--max-fail", "-1"),
                      ("--max-fail", "0%"), ("--canary", "-1"), ("--jobs", "0")):
            self.assertEqual(run("apply", self.folder, *words, url=self.host.url).code, 2, words)


if __name__ == "__main__":
    main()
