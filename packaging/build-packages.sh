#!/usr/bin/env bash
# Builds the Debian packages of this folder into build/packages, all of it anew, and lists in build/packages/compiled-in
# which headers and static libraries of others are in them.
set -euo pipefail
umask 022 # a package's own members bear the mode that it leaves
cd "$(dirname "$0")/.."
rm -rf build/packages
CCACHE_DISABLE=1 cmake --preset packages >/dev/null
CCACHE_DISABLE=1 cmake --build --preset packages
cpack --preset packages
/usr/bin/python3 -B packaging/compiled-in.py build/packages >build/packages/compiled-in
