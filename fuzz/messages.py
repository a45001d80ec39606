#!/usr/bin/env python3
"""Writes each message of TABLE as an HTTP request into a file of FOLDER, named by its operation.

    messages.py TABLE FOLDER
"""

import re
import sys
from pathlib import Path

table, folder = map(Path, sys.argv[1:])
folder.mkdir(parents=True, exist_ok=True)
for line in table.read_text(encoding="utf-8").splitlines():
    if match := re.match(r"  <v:(\w+)", line):
        body = ('<s:Envelope xmlns:s="http://schemas.xmlsoap.org/soap/envelope/" '
                f'xmlns:v="urn:schemas-varlo-com:service:VideoAnalytics:2"><s:Body>{line.strip()}</s:Body></s:Envelope>')
        (folder / match[1]).write_text(
            "POST / HTTP/1.1\r\nContent-Type: text/xml; charset=utf-8\r\n"
            f"Content-Length: {len(body.encode())}\r\n\r\n{body}", encoding="utf-8", newline="")
