#!/usr/bin/env python3
"""Prints a dictionary for libFuzzer: the entries of COMMON, and the tags, attributes and short texts of XML files.

    dictionary.py COMMON FILE_OR_FOLDER...
"""

import re
import sys
from pathlib import Path

WORDS = re.compile(rb"""</?[\w:.-]+>?          # a tag
                        |\b[\w:]+="[^"<>]{0,60}"  # an attribute
                        |(?<=>)[^<>]*[a-z][^<>]{0,60}(?=<)  # a text""", re.VERBOSE)


def entry(word):
    return '"' + "".join(chr(b) if 32 <= b < 127 and b not in b'"\\' else f"\\x{b:02x}" for b in word) + '"'


common, *places = map(Path, sys.argv[1:])
files = [file for place in places for file in ([place] if place.is_file() else place.rglob("*.xml"))]
print(common.read_text(encoding="utf-8"), end="")
for word in sorted({word for file in files for word in WORDS.findall(file.read_bytes())}):
    print(entry(word))
