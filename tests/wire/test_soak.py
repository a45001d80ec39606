"""A short run of the soak, which SOAK_OPTIONS makes longer: see tests/soak/soak.py."""

import os
import subprocess
import sys
import unittest
from pathlib import Path

SOAK = Path(os.environ["SOURCE"]) / "tests/soak/soak.py"


class Soak(unittest.TestCase):
    def test_no_wrong_answer_and_no_drop(self):
        options = os.environ.get("SOAK_OPTIONS", "--seconds 15").split()
        run = subprocess.run([sys.executable, "-B", str(SOAK), *options], stdin=subprocess.DEVNULL,
                             stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True, errors="replace")
        print(run.stdout)
        self.assertEqual(run.returncode, 0, run.stdout)


if __name__ == "__main__":
    unittest.main()
