#!/usr/bin/env bash
# Installs the Debian packages that are missing.
#
#   install-packages.sh build [test]
set -euo pipefail

build="cmake ninja-build g++ pkg-config gsoap libgsoap-dev libxml2-dev libsqlite3-dev libsqlitecpp-dev
    libboost-dev libcli11-dev libssl-dev zlib1g-dev libsystemd-dev libcrypt-dev"
test="clang libclang-rt-dev lld libgtest-dev libgmock-dev libbenchmark-dev python3 python3-lxml python3-zeep
    curl openssl binutils procps"

missing=()
for group in "$@"
do
    for package in ${!group}
    do
        status=$(dpkg-query -W -f '${db:Status-Status}' "$package" 2>/dev/null || true)
        [ "$status" = installed ] || missing+=("$package")
    done
done
[ ${#missing[@]} -eq 0 ] && exit 0

as_root=()
if [ "$(id -u)" -ne 0 ]
then
    command -v sudo >/dev/null || { echo "These packages are missing: ${missing[*]}. Install them as root." >&2; exit 1; }
    as_root=(sudo)
fi
echo "Installing ${missing[*]}" >&2
export DEBIAN_FRONTEND=noninteractive
"${as_root[@]}" apt-get update -qq
"${as_root[@]}" apt-get install -y -qq --no-install-recommends "${missing[@]}" >/dev/null
