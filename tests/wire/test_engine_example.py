"""The engines of docs/engine-feed.md against the service: what a client draws, they tell."""

import os
import queue
import re
import subprocess
import sys
import threading
import time
import unittest

from service import SOURCE
from test_engine import EngineTest, behaviors_with_zones

PAGE = (SOURCE / "docs" / "engine-feed.md").read_text(encoding="utf-8")


def from_page(language):
    found = re.findall(rf"^```{language}\n(.*?)^```$", PAGE, re.M | re.S)
    assert len(found) == 1, f"{len(found)} examples in {language}"
    return found[0]


class Engine:
    """A running engine, and the lines that it writes."""

    def __init__(self, command):
        self.process = subprocess.Popen(command, stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True)
        self.lines = queue.Queue()
        threading.Thread(target=self.read, daemon=True).start()

    def read(self):
        for line in self.process.stdout:
            self.lines.put(line.rstrip("\n"))
        self.lines.put(f"(ended: {self.process.stderr.read()})")

    def told(self, *patterns):
        """Waits for lines that match, one after the other; returns the seconds that it took."""
        began = time.monotonic()
        seen = []
        for pattern in patterns:
            while not (seen and re.search(pattern, seen[-1])):
                try:
                    seen.append(self.lines.get(timeout=60))
                except queue.Empty:
                    raise AssertionError(f"{pattern} does not come, but {seen}") from None
                assert not seen[-1].startswith("(ended"), seen[-1]
        return time.monotonic() - began

    def end(self):
        self.process.terminate()
        self.process.wait(timeout=60)
        self.process.stdout.close()
        self.process.stderr.close()


class Example(EngineTest):
    def tour(self, command, zone):
        loitering = next(b for b in behaviors_with_zones() if "loitering" in b[0])
        profile = self.create("Car park")
        engine = Engine([*command, str(self.folder)])
        self.addCleanup(engine.end)
        engine.told("^sequence 1: nothing runs$")
        self.host.call("ExecuteProfile", id=profile)
        self.set(profile, loitering, "Loading bay", points=((100, 120), (300, 120), (300, 260)))
        seconds = engine.told(*zone)
        print(f"a zone is told {seconds:.2f} s after it was drawn")
        self.host.call("AlgorithmControl", command=0)
        engine.told("nothing runs$")
        self.host.call("AlgorithmControl", command=1)
        engine.told(*zone)
        self.host.call("StopProfile", profileId=profile)
        engine.told("nothing runs$")
        self.host.restart()
        self.host.call("ExecuteProfile", id=profile)
        engine.told(*zone)

    def test_in_cpp(self):
        self.tour([os.environ["ENGINE"]],
                  ["^sequence [0-9]+: profile Car park runs$",
                   '^  com.varlo.rule.loiteringdetection "Loading bay" \\(100,120\\) \\(300,120\\) \\(300,260\\)$'])

    def test_in_python(self):
        program = self.host.folder / "engine.py"
        program.write_text(from_page("python"), encoding="utf-8")
        self.tour([sys.executable, str(program)],
                  ["^sequence [0-9]+: profile Car park runs$",
                   '^  com.varlo.rule.loiteringdetection "Loading bay" \\(100,120\\) \\(300,120\\) \\(300,260\\)$'])

    def test_in_a_shell(self):
        program = self.host.folder / "engine.sh"
        program.write_text(from_page("sh"), encoding="utf-8")
        self.tour(["sh", str(program)],
                  ["^sequence [0-9]+: rules run$", 'tt:Rule Name="Loading bay" Type="com.varlo.rule.loiteringdetection"',
                   'x="100" y="120"', 'x="300" y="120"', 'x="300" y="260"'])

    def test_the_examples_are_short(self):
        for language in ("python", "sh"):
            self.assertLessEqual(len(from_page(language).splitlines()), 30, language)


if __name__ == "__main__":
    unittest.main()
