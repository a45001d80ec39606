#!/usr/bin/env bash
# Makes a release of packages that are built, and does with it what VERIFY.md says: as it is, and with a byte flipped
# in each of its files. Leaves the release in RELEASE_FOLDER.
#
#   test-release.sh PACKAGE_FOLDER BUILD_FOLDER RELEASE_FOLDER
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
packages=$1
build=$2
release=$3
work=$(mktemp -d /tmp/varlo-release-test.XXXXXX)
trap 'rm -rf "$work"' EXIT

fail() { echo "packages: FAILED: $*" >&2; exit 1; }
# The commands stand in VERIFY.md, indented, in its first section: what is tried is what is written.
verify() { (cd "$1" && sed -n '/^## The files/,/^## The packages/s/^    //p' "$root/VERIFY.md" | sed 's/ *#.*//' | bash -e); }

mkdir "$work/built"
/usr/bin/python3 -B "$root/packaging/compiled-in.py" "$build" >"$work/built/compiled-in"
cp "$packages"/*.deb "$work/built"
minisign -G -W -p "$work/varlo-analytics.pub" -s "$work/secret" >/dev/null
"$root/packaging/release.sh" --built "$work/built" --out "$release" --key "$work/secret" >/dev/null
cp "$work/varlo-analytics.pub" "$release"
/usr/bin/python3 -B "$root/packaging/check-sbom.py" "$release"/*.spdx.json "$release"/*.deb || fail "the SBOM"

verify "$release" >"$work/log" 2>&1 || { cat "$work/log"; fail "a release that was just made is refused"; }
for file in "$release"/*.deb "$release"/*.json "$release/SHA256SUMS" "$release/SHA256SUMS.minisig"
do
    cp "$file" "$work/whole"
    at=$(($(stat -c %s "$file") / 2))
    byte=$(od -An -tu1 -j $at -N 1 "$file")
    # shellcheck disable=SC2059
    printf "\\x$(printf %02x $((byte ^ 1)))" | dd of="$file" bs=1 seek=$at conv=notrunc status=none
    if verify "$release" >"$work/log" 2>&1
    then
        fail "a flipped byte of $(basename "$file") isn't noticed"
    fi
    cp "$work/whole" "$file"
done
minisign -G -f -W -p "$release/varlo-analytics.pub" -s "$work/other" >/dev/null
if verify "$release" >"$work/log" 2>&1
then
    fail "the signature of another key isn't noticed"
fi
echo "packages: a release is verified as VERIFY.md says, and refused with a byte flipped in each of its files"
