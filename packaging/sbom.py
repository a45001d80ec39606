#!/usr/bin/env python3
"""Writes what Debian packages hold and link as an SPDX 2.3 document.

    sbom.py COMPILED_IN VERSION PACKAGE.deb... >FILE.spdx.json

Libraries that programs load are those that ldd finds. COMPILED_IN is what compiled-in.py lists: a file that belongs to a
library which is loaded was needed to build, any other one is a part of the program. The C and C++ libraries' are left
out. dpkg-query tells all versions, those of the tools that build as well.
"""
import hashlib
import json
import os
import re
import subprocess
import sys
import tempfile
import time
from urllib.parse import quote

# What is only declared there is in the C library, or in the kernel.
DECLARATIONS = {"libc6-dev", "linux-libc-dev"}
TOOLS = "g++-12", "binutils", "cmake", "ninja-build", "gsoap"
# Of what is a part of our programs, by its source package.
LICENSES = {"boost1.74": "BSL-1.0", "cli11": "BSD-3-Clause", "gsoap": "GPL-2.0-or-later", "nlohmann-json3": "MIT",
            "sqlitecpp": "MIT"}
MAINTAINERS = "Varlo Analytics Maintainers (maintainers@varlo-analytics.example)"


def output(*command, **options):
    return subprocess.run(command, check=True, text=True, stdout=subprocess.PIPE, **options).stdout


def owners(files):
    """The Debian packages that the files belong to. A file may be known by its name before /usr was merged."""
    names = sorted({name for file in files for name in (file, os.path.realpath(file), re.sub("^/usr", "", os.path.realpath(file)))})
    found = subprocess.run(["dpkg-query", "-S", *names], text=True, stdout=subprocess.PIPE, stderr=subprocess.DEVNULL).stdout
    lines = [line.rsplit(": ", 1) for line in found.splitlines() if ": " in line and not line.startswith("diversion")]
    known = {os.path.realpath(path) for _, path in lines}
    missing = [file for file in files if os.path.realpath(file) not in known]
    if missing:
        sys.exit(f"sbom.py: no Debian package holds {', '.join(missing)}")
    return {owner.split(",")[0] for owner, _ in lines}


def elf_files(folder):
    for parent, _, names in os.walk(folder):
        for name in names:
            path = os.path.join(parent, name)
            if not os.path.islink(path):
                with open(path, "rb") as file:
                    if file.read(4) == b"\x7fELF":
                        yield path


def linked(root, roots):
    """The files outside of our packages that programs and libraries below root load."""
    folders = {os.path.dirname(file) for other in roots for file in elf_files(other)}
    environment = dict(os.environ, LD_LIBRARY_PATH=":".join(sorted(folders)))
    files = set()
    for file in elf_files(root):
        listed = output("ldd", file, env=environment)
        if "not found" in listed:
            sys.exit(f"sbom.py: {file} needs a library that isn't there:\n{listed}")
        files.update(re.findall(r"=> (/\S+)|^\s+(/\S+ld-linux\S+)", listed, re.M))
    paths = {first or second for first, second in files}
    return {path for path in paths if not any(path.startswith(other) for other in roots)}


def compiled_in(root, listed):
    """The Debian packages of the files that are listed for the programs and libraries below root."""
    ours = {re.sub(r"\.so\..*", ".so", os.path.basename(file)) for file in elf_files(root)}
    packages = owners({file for program, file in listed if program in ours and "/c++/" not in file})
    return {name for name in packages if name.split(":")[0] not in DECLARATIONS}


def source_of(name):
    return output("dpkg-query", "-W", "-f", "${source:Package}", name)


def identifier(text):
    return "SPDXRef-" + re.sub(r"[^A-Za-z0-9.-]", "-", text)


def debian_package(name):
    version, architecture = output("dpkg-query", "-W", "-f", "${Version}\t${Architecture}", name).split("\t")
    source = source_of(name)
    return {
        "SPDXID": identifier(f"Debian-{name}"), "name": name.split(":")[0], "versionInfo": version,
        "supplier": "Organization: Debian", "downloadLocation": "NOASSERTION", "filesAnalyzed": False,
        "licenseConcluded": "NOASSERTION", "licenseDeclared": LICENSES.get(source, "NOASSERTION"),
        "copyrightText": "NOASSERTION", "sourceInfo": f"built from the Debian source package {source}",
        "externalRefs": [{"referenceCategory": "PACKAGE-MANAGER", "referenceType": "purl",
                          "referenceLocator": f"pkg:deb/debian/{name.split(':')[0]}@{quote(version, safe=':~')}"
                                              f"?arch={architecture}&distro=debian-12"}]}


def our_package(deb, version):
    name = output("dpkg-deb", "-f", deb, "Package").strip()
    with open(deb, "rb") as file:
        digest = hashlib.sha256(file.read()).hexdigest()
    return {
        "SPDXID": identifier(name), "name": name, "versionInfo": version, "packageFileName": os.path.basename(deb),
        "supplier": f"Organization: {MAINTAINERS}", "downloadLocation": "NOASSERTION", "filesAnalyzed": False,
        "checksums": [{"algorithm": "SHA256", "checksumValue": digest}],
        "licenseConcluded": "GPL-2.0-or-later", "licenseDeclared": "GPL-2.0-or-later", "copyrightText": "NOASSERTION"}


def relationship(one, kind, other):
    return {"spdxElementId": one, "relationshipType": kind, "relatedSpdxElement": other}


def main(compiled, version, *debs):
    packages, relationships, foreign = [], [], set()
    with open(compiled, encoding="utf-8") as file:
        listed = [line.split() for line in file]
    with tempfile.TemporaryDirectory() as work:
        roots = {deb: os.path.join(os.path.realpath(work), os.path.basename(deb)) for deb in sorted(debs)}
        for deb, root in roots.items():
            subprocess.run(["dpkg-deb", "-x", deb, root], check=True)
        for deb, root in roots.items():
            ours = our_package(deb, version)
            packages.append(ours)
            relationships.append(relationship("SPDXRef-DOCUMENT", "DESCRIBES", ours["SPDXID"]))
            if not list(elf_files(root)):
                continue
            libraries = owners(linked(root, list(roots.values())))
            sources = {source_of(name) for name in libraries}
            parts = compiled_in(root, listed)
            for name in sorted(libraries):
                relationships.append(relationship(ours["SPDXID"], "DYNAMIC_LINK", identifier(f"Debian-{name}")))
            for name in sorted(parts):
                if source_of(name) in sources:
                    relationships.append(relationship(identifier(f"Debian-{name}"), "BUILD_DEPENDENCY_OF", ours["SPDXID"]))
                else:
                    relationships.append(relationship(ours["SPDXID"], "STATIC_LINK", identifier(f"Debian-{name}")))
            foreign |= libraries | parts
    packages += [debian_package(name) for name in sorted(foreign)]
    digest = hashlib.sha256(json.dumps([packages, relationships]).encode()).hexdigest()
    created = time.gmtime(int(os.environ.get("SOURCE_DATE_EPOCH", time.time())))
    json.dump({
        "spdxVersion": "SPDX-2.3", "dataLicense": "CC0-1.0", "SPDXID": "SPDXRef-DOCUMENT",
        "name": f"varlo-analytics-{version}",
        "documentNamespace": f"https://varlo-analytics.example/spdx/varlo-analytics-{version}-{digest}",
        "creationInfo": {"created": time.strftime("%Y-%m-%dT%H:%M:%SZ", created),
                         "creators": [f"Organization: {MAINTAINERS}", "Tool: packaging/sbom.py"],
                         "comment": "built with " + output("dpkg-query", "-W", "-f", "${Package} ${Version}, ", *TOOLS).rstrip(", ")},
        "packages": packages, "relationships": relationships}, sys.stdout, indent=1)
    print()


if __name__ == "__main__":
    if len(sys.argv) < 4:
        sys.exit(__doc__)
    main(*sys.argv[1:])
