"""Short runs of the soak, without certificates and with them. For a long run see tests/soak/soak.py."""

import os
import subprocess
import sys
import unittest
from pathlib import Path

SOAK = Path(os.environ["SOURCE"]) / "tests/soak/soak.py"


class Soak(unittest.TestCase):
    def test_no_wrong_answer_and_no_drop(self):
        self.soak("--seconds 8")

    def test_with_certificates(self):
        self.soak("--seconds 8 --tls")

    def soak(self, options):
        options = options.split()
        run = subprocess.run([sys.executable, "-B", str(SOAK), *options], stdin=subprocess.DEVNULL,
                             stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True, errors="replace")
        print(run.stdout)
        self.assertEqual(run.returncode, 0, run.stdout)


if __name__ == "__main__":
    unittest.main()
