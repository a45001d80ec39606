#!/usr/bin/env bash
# Installs what is missing, builds as for release, measures everything or the parts that are named (measure.py) and
# prints the tables. Nothing else should run on the machine meanwhile.
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)

"$root/cmake/install-packages.sh" build test dev
build=$root/build/benchmarks
cmake --preset release -S "$root" -B "$build" -DBUILD_BENCHMARKS=ON >/dev/null
cmake --build "$build"
BUILD=$build SOURCE=$root exec /usr/bin/python3 -B "$root/benchmarks/measure.py" "$@"
