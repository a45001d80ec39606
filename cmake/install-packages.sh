#!/usr/bin/env bash
# Installs the Debian packages that are missing.
#
#   install-packages.sh build [packages] [test] [dev] [coverage] [arm64] [armhf] [release]
#
# "packages" is what makes Debian packages of a build; "test" is what every build with tests needs besides, "dev" what the
# preset of that name tries and measures beyond that: other makers' clients and browsers; "arm64" and "armhf" are for the
# presets of these names, with what cmake/make-sysroot.sh fetches; "release" is what packaging/release.sh needs besides
# "packages".
set -euo pipefail

build="cmake ninja-build g++ pkg-config gsoap libgsoap-dev libexpat1-dev libpugixml-dev libsqlite3-dev libsqlitecpp-dev
    libboost-dev libcli11-dev libssl-dev zlib1g-dev libcrypt-dev nettle-dev libgeos-dev nlohmann-json3-dev"
packages="dpkg-dev file python3"
test="$packages minisign libxml2-dev clang clang-format clang-tidy libclang-rt-dev lld libgtest-dev libgmock-dev python3-lxml
    python3-jsonschema python3-zeep curl openssl binutils procps man-db nginx-light ansible-core ansible-lint mmdebstrap
    lintian systemd-container prometheus"
dev="libbenchmark-dev php-cli php-soap libsoap-lite-perl nodejs chromium firefox-esr"
# Node of another maker brings npm along, and refuses that of Debian beside it.
command -v npm >/dev/null || dev="$dev npm"
coverage="llvm"
arm64="g++-aarch64-linux-gnu qemu-user-static mmdebstrap"
armhf="g++-arm-linux-gnueabihf qemu-user-static mmdebstrap"
release="reprotest minisign"

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
