#!/usr/bin/env python3
"""Lists what our programs and libraries are compiled from beside our own sources: PROGRAM FILE in each line, for each
header and static library of other packages.

    compiled-in.py BUILD_FOLDER
"""
import re
import subprocess
import sys
from pathlib import Path

PLATFORM = "platform/libvarlo-analytics-platform.so"
PROGRAMS = PLATFORM, "source/libvarlo-analytics-api.so", "host/varlo-analytics-host", "tools/varlo-analytics"


def ninja(folder, *arguments):
    return subprocess.run(["ninja", "-C", folder, "-t", *arguments], check=True, text=True, stdout=subprocess.PIPE).stdout


def headers_by_object(folder):
    headers = {}
    for line in ninja(folder, "deps").splitlines():
        if line.startswith("    /usr/include/"):
            headers[target].append(line.strip())
        elif line and not line.startswith(" "):
            target = line.split(":")[0]
            headers[target] = []
    return headers


def main(folder):
    headers = headers_by_object(folder)
    platform = set()
    for program in PROGRAMS:
        inputs = set(ninja(folder, "inputs", program).splitlines())
        # The others load the platform layer, they aren't made of it.
        own = inputs - platform
        if program == PLATFORM:
            platform = inputs
        files = {name for name in own if re.fullmatch(r"/usr/.*\.a", name)}
        files.update(*(headers.get(name, ()) for name in own))
        for file in sorted(files):
            print(Path(program).name, file)


if __name__ == "__main__":
    if len(sys.argv) != 2:
        sys.exit(__doc__)
    main(sys.argv[1])
