"""against.py URL WSDL: the zeep client through the tour against a fresh service that runs already."""

import json
import os
import subprocess
import sys
from pathlib import Path

HERE = Path(__file__).resolve().parent
SOURCE = HERE.parent.parent
os.environ.update(HOST="", LIBRARY="", SOURCE=str(SOURCE), BUILD="", GSOAP_CLIENT="", GENERATED=sys.argv[3],
                  DATA=str(SOURCE / "platform/data"))
sys.path.insert(0, str(HERE.parent / "wire"))

import test_interop  # noqa: E402
from tour import TOUR  # noqa: E402

url, wsdl = sys.argv[1:3]
case = test_interop.Interop()
with subprocess.Popen([sys.executable, HERE / "client.py", wsdl, url, "1.2"], text=True, encoding="utf-8",
                      stdin=subprocess.PIPE, stdout=subprocess.PIPE) as process:
    for operation, fields, expected in TOUR:
        process.stdin.write(json.dumps([operation, fields]) + "\n")
        process.stdin.flush()
        case.check(json.loads(process.stdout.readline()), expected, "1.2")
    process.stdin.close()
