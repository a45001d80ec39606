#!/usr/bin/env bash
# Installs the Debian packages that are missing.
#
#   install-packages.sh build [test] [coverage] [cross]
#
# "cross" is what the preset arm64 needs besides "build".
set -euo pipefail

build="cmake ninja-build g++ pkg-config gsoap libgsoap-dev libexpat1-dev libpugixml-dev libsqlite3-dev libsqlitecpp-dev
    libboost-dev libcli11-dev libssl-dev zlib1g-dev libsystemd-dev libcrypt-dev nlohmann-json3-dev"
test="libxml2-dev clang libclang-rt-dev lld libgtest-dev libgmock-dev libbenchmark-dev python3 python3-lxml python3-jsonschema python3-zeep
    curl openssl binutils procps man-db php-cli php-soap libsoap-lite-perl nodejs
    ansible-core ansible-lint mmdebstrap lintian systemd-container dpkg-dev file prometheus chromium"
# Node of another maker brings npm along, and refuses that of Debian beside it.
command -v npm >/dev/null || test="$test npm"
coverage="llvm"
cross="g++-aarch64-linux-gnu libgsoap-dev:arm64 libexpat1-dev:arm64 libpugixml-dev:arm64 libsqlite3-dev:arm64 libsqlitecpp-dev:arm64
    libsystemd-dev:arm64 libssl-dev:arm64 zlib1g-dev:arm64 libcrypt-dev:arm64"

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
if [[ "${missing[*]}" = *:arm64* ]]
then
    "${as_root[@]}" dpkg --add-architecture arm64
fi
"${as_root[@]}" apt-get update -qq
"${as_root[@]}" apt-get install -y -qq --no-install-recommends "${missing[@]}" >/dev/null
