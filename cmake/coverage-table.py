#!/usr/bin/env python3
"""Prints what llvm-cov exported as a table per folder; fails if it is less than is asked for.

    coverage-table.py ROOT JSON [--files] [--missed]
"""

import argparse
import json
import os
import sys
from collections import defaultdict

OURS = ("source/", "video-analytics/", "platform/source/", "platform/include/", "host/", "include/", "schema/", "tools/")
MIN_LINES, MIN_BRANCHES = 95.0, 85.0


def folder_of(file):
    parts = os.path.dirname(file).split("/")
    return "/".join(parts[:3])


def missed_lines(segments):
    """Line numbers with code that never ran, from the changes of the counter along the file."""
    hit, missed = set(), set()
    for (line, _, count, has_count, *_), following in zip(segments, segments[1:]):
        if has_count:
            (hit if count else missed).update(range(line, following[0] + 1 if following[1] > 1 else following[0]))
    return sorted(missed - hit)


def row(name, lines, branches):
    def share(pair):
        return 100.0 * pair[0] / pair[1] if pair[1] else 100.0
    print(f"{name:44} {lines[1]:7} {share(lines):7.1f} {branches[1]:9} {share(branches):7.1f}")
    return share(lines), share(branches)


def main():
    arguments = argparse.ArgumentParser()
    arguments.add_argument("root")
    arguments.add_argument("json")
    arguments.add_argument("--files", action="store_true")
    arguments.add_argument("--missed", action="store_true")
    options = arguments.parse_args()
    with open(options.json, encoding="utf-8") as file:
        data = json.load(file)["data"][0]

    groups = defaultdict(lambda: {"lines": [0, 0], "branches": [0, 0]})
    files = []
    for entry in data["files"]:
        name = os.path.relpath(os.path.realpath(entry["filename"]), os.path.realpath(options.root))
        if not name.startswith(OURS):
            continue
        files.append((name, entry))
        for group in (folder_of(name), ""):
            for kind in ("lines", "branches"):
                groups[group][kind][0] += entry["summary"][kind]["covered"]
                groups[group][kind][1] += entry["summary"][kind]["count"]
    if not files:
        sys.exit("coverage-table.py: the export holds no file of ours; build and test with the preset coverage first")

    print(f"{'':44} {'lines':>7} {'%':>7} {'branches':>9} {'%':>7}")
    for name in sorted(filter(None, groups)):
        row(name, groups[name]["lines"], groups[name]["branches"])
        if options.files:
            for file, entry in sorted(files):
                if folder_of(file) == name:
                    row("  " + os.path.basename(file), *[(entry["summary"][kind]["covered"], entry["summary"][kind]["count"])
                                                         for kind in ("lines", "branches")])
    lines, branches = row("all", groups[""]["lines"], groups[""]["branches"])
    if options.missed:
        for name, entry in sorted(files):
            missed = missed_lines(entry["segments"])
            if missed:
                print(f"{name}: " + ", ".join(map(str, missed)))
    if lines < MIN_LINES or branches < MIN_BRANCHES:
        sys.exit(f"coverage-table.py: {lines:.1f} % of the lines and {branches:.1f} % of the branches are reached; "
                 f"{MIN_LINES:.0f} % and {MIN_BRANCHES:.0f} % are asked for")


main()
