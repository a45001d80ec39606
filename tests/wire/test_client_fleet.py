"""The command-line client: one folder onto many cameras, some of which are dead or slow."""

import json
import os
import pty
import re
import signal
import socket
import subprocess
import time
from pathlib import Path

from command import CLIENT, Listener, main, run
from fleet import FleetTest
from service import SANITIZED
from standin import StandIn

FULL = bool(os.environ.get("FULL"))  # as many hosts as are promised


class ManyTest(FleetTest):
    behaviors = ("loitering",)

    def hosts(self, count):
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
                           (["ftp://a/"], ":3: 'ftp://a/' isn't the address"), (["a:0"], "its port isn't a number")):
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


class Guarded(ManyTest):
    """More than 30 % of more than 10 hosts, counted on those that answer and have something to lose."""

    def setUp(self):
        super().setUp()
        self.stand_in = self.stack.enter_context(StandIn())

    def roll(self, changed, same, created, dead, *words):
        """A run over so many hosts of each kind."""
        urls = self.stand_in.urls(changed + same + created)
        ran = run("apply", self.folder, "--hosts", self.hosts_file(urls[:changed + same]), "--force")
        self.assertEqual(ran.code, 0, ran.err)
        for url in urls[:changed]:
            camera = self.stand_in.cameras[url.partition(str(self.stand_in.port))[2]]
            camera.scene = camera.scene.replace("<sensitivity>8", "<sensitivity>1")
        urls += [self.dead() for _ in range(dead)]
        return run("apply", self.folder, "--hosts", self.hosts_file(urls), "--json", *words)

    def test_many_changes_are_agreed_to(self):
        ran = self.roll(4, 7, 0, 0)
        self.assertEqual((ran.code, ran.out), (2, ""))
        self.assertIn("changes what 4 of 11 hosts have", ran.err)
        self.assertIn("--force", ran.err)
        self.assertEqual(self.roll(4, 7, 0, 0, "--force").code, 0)

    def test_few_changes_are_not(self):
        self.assertEqual(self.roll(3, 8, 0, 0).code, 0)
        self.assertEqual(self.roll(9, 1, 0, 0).code, 0)

    def test_what_is_created_does_not_count(self):
        self.assertEqual(self.roll(3, 1, 8, 0).code, 0)

    def test_who_does_not_answer_does_not_count(self):
        ran = self.roll(4, 7, 0, 8)
        self.assertIn("changes what 4 of 11 hosts have", ran.err)
        self.assertEqual(ran.code, 2)


class Thousand(ManyTest):
    """Stand-ins for most, some of them slow, beside real services and dead addresses."""

    COUNT = 1000 if FULL else 60 if SANITIZED else 250
    SLOW = range(3, COUNT, COUNT // 5)

    def setUp(self):
        super().setUp()
        self.stand_in = self.stack.enter_context(StandIn(lambda path: 600 if int(path.strip("/")) in self.SLOW else 0))
        self.urls = self.stand_in.urls(self.COUNT)
        self.urls[1::self.COUNT // 3] = [host.url for host in self.hosts(len(self.urls[1::self.COUNT // 3]))]
        self.lost = [url for number, url in enumerate(self.urls) if number in self.SLOW] + [self.dead(), self.dead()]
        self.urls += self.lost[-2:]

    def start(self, *words):
        process = subprocess.Popen([CLIENT, *map(str, words), "--hosts", self.hosts_file(self.urls), "--json"],
                                   stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True)
        self.addCleanup(process.stdout.close)
        self.addCleanup(process.stderr.close)
        return process

    def test_memory_stays_small_and_all_are_told(self):
        with open(self.work / "lines", "w", encoding="utf-8") as lines:
            process = subprocess.Popen([CLIENT, "apply", self.folder, "--hosts", self.hosts_file(self.urls), "--json",
                                        "--timeout", "5"], stdin=subprocess.DEVNULL, stdout=lines, stderr=subprocess.DEVNULL)
            peak = 0
            while process.poll() is None:
                peak = max(peak, high_water(process.pid))
                time.sleep(0.05)
        told = [json.loads(line) for line in (self.work / "lines").read_text(encoding="utf-8").splitlines()]
        states = self.states(told)
        self.assertEqual(len(told), len(self.urls))
        self.assertEqual({url for url, state in states.items() if state == "unreachable"}, set(self.lost))
        self.assertEqual({state for url, state in states.items() if url not in self.lost}, {"changed"})
        self.assertEqual(process.returncode, 1)
        print(f"{len(self.urls)} hosts, {peak} KiB at most", flush=True)
        if not SANITIZED:
            self.assertLess(peak, 64 * 1024)

    def test_an_interrupted_run_tells_what_was_done(self):
        process = self.start("apply", self.folder, "--force", "--timeout", 60, "--host-timeout", 120, "--jobs", 4)
        told = [json.loads(process.stdout.readline()) for _ in range(20)]
        process.send_signal(signal.SIGINT)
        started = time.monotonic()
        # communicate() would pass over what readline() has read ahead.
        rest, errors = process.stdout.read(), process.stderr.read()
        self.assertEqual(process.wait(60), 1)
        self.assertLess(time.monotonic() - started, 15)
        self.assertIn("interrupted", errors)
        told += [json.loads(line) for line in rest.splitlines()]
        self.assertEqual(sorted(line["host"] for line in told), sorted(self.urls))
        self.assertLessEqual(set(self.states(told).values()), {"changed", "skipped", "failed", "unreachable"})
        done = [line["host"] for line in told if line["state"] == "changed"]
        self.assertGreaterEqual(len(done), 15)
        self.assertIn("skipped", self.states(told).values())
        after = self.apply("--hosts", self.hosts_file(done))
        self.assertEqual({line["state"] for line in after}, {"same"})

    def test_a_second_signal_ends_it_at_once(self):
        process = self.start("plan", self.folder, "--timeout", 60, "--jobs", 4)
        process.stdout.readline()
        time.sleep(1)  # until the slow ones are what it waits for
        for _ in range(2):
            process.send_signal(signal.SIGINT)
            time.sleep(0.2)
        out, _ = process.communicate(timeout=5)
        self.assertEqual(process.returncode, 1)
        self.assertEqual(len(out.splitlines()), len(self.urls) - 1)


def high_water(pid):
    try:
        text = Path(f"/proc/{pid}/status").read_text(encoding="utf-8")
    except OSError:
        return 0
    found = re.search(r"^VmHWM:\s+(\d+) kB", text, re.M)
    return int(found.group(1)) if found else 0


if __name__ == "__main__":
    main()
