#!/usr/bin/env bash
# Builds the Debian packages of this folder into build/packages, all of it anew, and lists in build/packages/headers
# which headers of others they were compiled with.
set -euo pipefail
umask 022 # a package's own members bear the mode that it leaves
cd "$(dirname "$0")/.."
rm -rf build/packages
CCACHE_DISABLE=1 cmake --preset packages >/dev/null
CCACHE_DISABLE=1 cmake --build --preset packages
cpack --preset packages
ninja -C build/packages -t deps | sed -n 's,^ *\(/usr/include/\),\1,p' | LC_ALL=C sort -u >build/packages/headers
