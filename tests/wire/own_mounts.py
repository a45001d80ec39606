"""A mount namespace of its own, for tests that mount file systems or stand in for parts of the system."""

import os
import subprocess
import sys

SKIPPED = 77  # as CTest is told
INSIDE = "VARLO_TEST_MOUNTS"


def mount(*arguments):
    subprocess.run(["mount", *arguments], check=True)


def enter():
    """Starts the program again in such a namespace, unless it is in one; ends it where that can't be had."""
    if os.environ.get(INSIDE):
        return
    inside = ["unshare", "--user", "--map-root-user", "--mount"] if os.getuid() else ["unshare", "--mount"]
    if subprocess.run([*inside, "mount", "-t", "tmpfs", "tmpfs", "/mnt"], stderr=subprocess.DEVNULL).returncode:
        print("SKIPPED: this machine lets nobody mount file systems of his own")
        sys.exit(SKIPPED)
    os.environ[INSIDE] = "1"
    os.execvp(inside[0], [*inside, sys.executable, *sys.argv])
