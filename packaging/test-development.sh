#!/usr/bin/env bash
# Builds another maker's host and platform layer on the packages in a folder, by CMake and by pkg-config.
#
#   test-development.sh PACKAGE_FOLDER WORK_FOLDER
set -euo pipefail
sources=$(cd "$(dirname "$0")/test-development" && pwd)
packages=$1
work=$2
mkdir -p "$work/root"
for file in "$packages"/lib*.deb
do
    dpkg-deb -x "$file" "$work/root"
done
libraries=$(dirname "$(find "$work/root" -name libvarlo-analytics-platform.so)")

cmake -S "$sources" -B "$work/cmake" -G Ninja -DCMAKE_PREFIX_PATH="$work/root/usr" >/dev/null
cmake --build "$work/cmake" >/dev/null
LD_LIBRARY_PATH=$libraries "$work/cmake/other-host"

export PKG_CONFIG_SYSROOT_DIR=$work/root PKG_CONFIG_PATH=$libraries/pkgconfig
# shellcheck disable=SC2046
c++ -std=c++20 "$sources/host.cpp" -o "$work/other-host" $(pkg-config --cflags --libs varlo-analytics-api varlo-analytics-platform)
LD_LIBRARY_PATH=$libraries "$work/other-host"
echo "packages: another host and another platform layer build on the development files"
