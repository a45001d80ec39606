#!/usr/bin/env python3
"""Prints what the service takes of a camera's flash and memory, as the tables of docs/footprint.md.

    footprint.py NAME=BUILD_FOLDER[,SYSROOT]...

Sizes are of stripped files, in KiB, of each build; libraries of others come from its SYSROOT (the machine's own if none
is named). The C library is on every camera and isn't counted. Memory is measured with the first build, which this machine
has to be able to run: proportional set size (Pss), in KiB, of the service with the delivered settings and plug-ins.
"""
import concurrent.futures
import http.client
import os
import re
import subprocess
import sys
import tempfile
import xml.etree.ElementTree as etree
from pathlib import Path

ROOT = Path(__file__).resolve().parent.parent
OURS = ("host/varlo-analytics-host", "source/libvarlo-analytics-api.so", "platform/libvarlo-analytics-platform.so")
C_LIBRARY = re.compile(r"(ld-linux.*|libc|libm|libdl|libpthread|librt|libresolv)\.so\.\d+")
ENVELOPE = ('<Envelope xmlns="http://schemas.xmlsoap.org/soap/envelope/"><Body>', "</Body></Envelope>")
CLIENTS = 64


def output(*command):
    return subprocess.run(command, check=True, text=True, stdout=subprocess.PIPE).stdout


class Build:
    def __init__(self, argument):
        self.name, _, folders = argument.partition("=")
        folder, _, self.sysroot = folders.partition(",")
        self.folder = Path(folder).resolve()
        cache = (self.folder / "CMakeCache.txt").read_text(encoding="utf-8")
        self.strip = re.search(r"^CMAKE_STRIP:\w+=(.*)$", cache, re.M).group(1)
        compiler = next(self.folder.glob("CMakeFiles/*/CMakeCXXCompiler.cmake")).read_text(encoding="utf-8")
        self.triplet = output(re.search(r'set\(CMAKE_CXX_COMPILER "(.*)"\)', compiler).group(1), "-dumpmachine").strip()

    def ours(self):
        return {Path(file).name: self.folder / file for file in OURS}

    def stripped(self, file):
        with tempfile.NamedTemporaryFile() as copy:
            subprocess.run([self.strip, "--strip-unneeded", "-R", ".comment", "-o", copy.name, file], check=True)
            return os.stat(copy.name).st_size

    def find(self, library):
        places = (Path(f"{self.sysroot}/{folder}/{self.triplet}/{library}") for folder in ("usr/lib", "lib"))
        return next((place.resolve() for place in places if place.exists()), None)

    def sizes(self):
        """The size of each file that is needed, by its name: ours, then those of others."""
        sizes = {name: self.stripped(file) for name, file in self.ours().items()}
        todo = list(self.ours().values())
        while todo:
            needed = re.findall(r"\(NEEDED\).*\[(.*)\]", output("readelf", "-dW", todo.pop()))
            for library in needed:
                if library in sizes or C_LIBRARY.fullmatch(library) or "varlo" in library:
                    continue
                found = self.find(library)
                if found is None:
                    sys.exit(f"footprint.py: {library} isn't in {self.sysroot or '/'}")
                sizes[library] = self.stripped(found)
                todo.append(found)
        return sizes


class Service:
    """The service of a build, on a free port."""

    def __init__(self, build):
        self.state = tempfile.TemporaryDirectory(prefix="varlo-footprint-")
        ours = build.ours()
        self.process = subprocess.Popen(
            [ours[Path(OURS[0]).name], "--library", ours[Path(OURS[1]).name], "--state", self.state.name + "/state",
             "--settings", ROOT / "platform/data/settings.xml", "--plugins", ROOT / "platform/data/plugins",
             "--listen", "127.0.0.1:0"],
            text=True, stderr=subprocess.PIPE)
        self.port = int(re.search(r"127\.0\.0\.1:(\d+)", self.process.stderr.readline()).group(1))

    def __enter__(self):
        return self

    def __exit__(self, *unused):
        self.process.terminate()
        self.process.wait()
        self.process.stderr.close()
        self.state.cleanup()

    def pss(self):
        text = Path(f"/proc/{self.process.pid}/smaps_rollup").read_text(encoding="utf-8")
        return int(re.search(r"^Pss:\s+(\d+) kB", text, re.M).group(1))

    def post(self, message):
        connection = http.client.HTTPConnection("127.0.0.1", self.port, timeout=60)
        connection.request("POST", "/", ENVELOPE[0] + message + ENVELOPE[1], {"Content-Type": "text/xml"})
        response = connection.getresponse()
        body = response.read()
        connection.close()
        if response.status != 200:
            sys.exit(f"footprint.py: {message[:80]} is answered {response.status}: {body[:300]}")


def memory(build):
    messages = [etree.tostring(message, encoding="unicode")
                for message in etree.parse(ROOT / "tests/data/messages.xml").getroot()]
    readers = [message for message in messages if "GetDefault" in message or "GetProfileList" in message]
    with Service(build) as service:
        yield "at start", service.pss()
        for message in messages:
            service.post(message)
        yield f"after a tour of all {len(messages)} operations", service.pss()
        with concurrent.futures.ThreadPoolExecutor(CLIENTS) as pool:
            for _ in pool.map(service.post, readers * CLIENTS * 10):
                pass
        yield f"after {len(readers) * CLIENTS * 10} reads by {CLIENTS} clients at a time", service.pss()


def table(head, rows):
    print("| " + " | ".join(head) + " |\n|---" + "|---:" * (len(head) - 1) + "|")
    for row in rows:
        print("| " + " | ".join(str(cell) for cell in row) + " |")


def main(*arguments):
    builds = [Build(argument) for argument in arguments]
    sizes = [build.sizes() for build in builds]
    names = sorted(set().union(*sizes), key=lambda name: ("varlo" not in name, -max(size.get(name, 0) for size in sizes)))

    def total(wanted):
        return [sum(bytes for name, bytes in size.items() if wanted(name)) // 1024 for size in sizes]

    table(["File, KiB", *(build.name for build in builds)],
          [[f"`{name}`", *(size[name] // 1024 if name in size else "" for size in sizes)] for name in names] +
          [["our own", *total(lambda name: "varlo" in name)], ["all", *total(lambda name: True)]])
    print()
    table(["Pss, KiB", builds[0].name], memory(builds[0]))


if __name__ == "__main__":
    if len(sys.argv) < 2 or any("=" not in argument for argument in sys.argv[1:]):
        sys.exit(__doc__)
    main(*sys.argv[1:])
