#!/usr/bin/env python3
"""Checks the form of an SPDX 2.3 document, and that it names what the packages need by their own fields.

    check-sbom.py FILE.spdx.json PACKAGE.deb...
"""
import hashlib
import json
import re
import subprocess
import sys

# Code of others that is a part of a package: (the package's name, the other's).
PARTS = (("libvarlo-analytics-api", "libgsoap-dev"), ("libvarlo-analytics-platform", "libsqlitecpp-dev"),
         ("libvarlo-analytics-platform", "libboost.*-dev"), ("varlo-analytics-host", "libcli11-dev"),
         ("varlo-analytics$", "libgsoap-dev"), ("varlo-analytics$", "nlohmann-json3-dev"))


def fail(text):
    sys.exit(f"check-sbom.py: {text}")


def require(element, name, pattern):
    if not re.fullmatch(pattern, str(element.get(name, "")), re.S):
        fail(f"{name} of {element.get('SPDXID')} is {element.get(name)!r}, not {pattern}")


def check_form(document):
    require(document, "spdxVersion", "SPDX-2.3")
    require(document, "dataLicense", "CC0-1.0")
    require(document, "SPDXID", "SPDXRef-DOCUMENT")
    require(document, "name", ".+")
    require(document, "documentNamespace", r"https://[^#]+")
    require(document["creationInfo"], "created", r"\d{4}-\d\d-\d\dT\d\d:\d\d:\d\dZ")
    for creator in document["creationInfo"]["creators"]:
        if not re.match("(Organization|Tool|Person): ", creator):
            fail(f"the creator {creator!r}")
    known = {"SPDXRef-DOCUMENT"}
    for package in document["packages"]:
        require(package, "SPDXID", "SPDXRef-[A-Za-z0-9.-]+")
        for name in ("name", "versionInfo", "downloadLocation", "licenseConcluded", "licenseDeclared", "copyrightText"):
            require(package, name, ".+")
        if package["SPDXID"] in known:
            fail(f"{package['SPDXID']} stands there twice")
        known.add(package["SPDXID"])
    for relationship in document["relationships"]:
        require(relationship, "relationshipType", "DESCRIBES|DYNAMIC_LINK|STATIC_LINK|BUILD_DEPENDENCY_OF")
        for end in ("spdxElementId", "relatedSpdxElement"):
            if relationship[end] not in known:
                fail(f"{relationship[end]} isn't among the packages")


def check_package(document, deb):
    def field(name):
        return subprocess.run(["dpkg-deb", "-f", deb, name], check=True, text=True, capture_output=True).stdout.strip()

    ours = next((package for package in document["packages"] if package["name"] == field("Package")), None)
    if ours is None:
        fail(f"{deb} isn't named")
    with open(deb, "rb") as file:
        if ours["checksums"] != [{"algorithm": "SHA256", "checksumValue": hashlib.sha256(file.read()).hexdigest()}]:
            fail(f"the checksum of {deb}")
    names = {package["SPDXID"]: package["name"] for package in document["packages"]}

    def related(kind):
        return {names[r["relatedSpdxElement"]] for r in document["relationships"]
                if r["spdxElementId"] == ours["SPDXID"] and r["relationshipType"] == kind}

    linked = related("DYNAMIC_LINK")
    for name, part in PARTS:
        if re.match(name, ours["name"]) and not any(re.fullmatch(part, other) for other in related("STATIC_LINK")):
            fail(f"{part} is a part of {ours['name']}, and the document doesn't say so")
    # What dpkg-shlibdeps has found: the libraries that are named by the programs themselves.
    needed = {re.split(r"[ (|]", part.strip())[0] for part in field("Depends").split(",")}
    needed = {name for name in needed if re.match("lib", name) and "varlo" not in name}
    if field("Section") != "libdevel" and (not needed or not needed <= linked):
        fail(f"{ours['name']} depends on {sorted(needed - linked) or 'nothing'}, which the document doesn't link")


def main(file, *debs):
    with open(file, encoding="utf-8") as stream:
        document = json.load(stream)
    check_form(document)
    for deb in debs:
        check_package(document, deb)


if __name__ == "__main__":
    if len(sys.argv) < 3:
        sys.exit(__doc__)
    main(*sys.argv[1:])
