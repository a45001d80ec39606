#!/usr/bin/env bash
# Makes the Debian packages of a build for another architecture, and looks whether they need that one's libraries.
#
#   test-cross-packages.sh BUILD_FOLDER ARCHITECTURE
set -euo pipefail
work=$(mktemp -d /tmp/varlo-packages.XXXXXX)
trap 'rm -rf "$work"' EXIT

cpack --config "$1/CPackConfig.cmake" -B "$work" >"$work/cpack.log" 2>&1 || { cat "$work/cpack.log"; exit 1; }
for name in libvarlo-analytics-api1 libvarlo-analytics-platform1 varlo-analytics-host
do
    needs=$(dpkg-deb -f "$work/${name}"_*_"$2".deb Depends)
    [[ $needs == *libc6*libstdc++6* ]] || { echo "$name needs no more than $needs"; exit 1; }
    echo "$name for $2 needs $needs"
done
