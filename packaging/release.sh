#!/usr/bin/env bash
# Makes a release of the commit that is checked out: builds the Debian packages twice in environments that differ
# (reprotest) and compares them byte for byte, writes what they are made of (SPDX 2.3) and the checksums, and signs
# these if a key is named. VERIFY.md says how others check them.
#
#   release.sh [--out FOLDER] [--key MINISIGN_KEY] [--built FOLDER]
#
# --built takes the packages and the list compiled-in of a folder as they are, and builds nothing. Else --key wants the
# commit to bear the version's tag, by which others find it.
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
out=$root/build/release-files
key=
built=

usage() { sed -n 's/^#   //p' "$0" >&2; exit 2; }
fail() { echo "release.sh: $*" >&2; exit 1; }
while [ $# -gt 0 ]
do
    [ $# -ge 2 ] || usage
    case "$1" in
    --out) out=$(realpath -m "$2") ;;
    --key) key=$(realpath -m "$2") ;;
    --built) built=$(realpath "$2") ;;
    *) usage ;;
    esac
    shift 2
done
[ -z "$key" ] || [ -r "$key" ] || fail "the key $key can't be read"
[ ! -e "$out" ] || [ -z "$(ls -A "$out")" ] || fail "$out isn't empty; name another folder with --out"

cd "$root"
SOURCE_DATE_EPOCH=$(git log -1 --format=%ct)
export SOURCE_DATE_EPOCH
work=$(mktemp -d /tmp/varlo-release.XXXXXX)
trap 'rm -rf "$work"' EXIT

# Each build is in a folder of another name, with another home, language, time zone, umask, search path, environment and
# kernel's name. Another user, host name or clock, and folders that list their files in disorder, take rights that a
# build in a container hasn't.
build_twice()
{
    [ -z "$(git status --porcelain)" ] || fail "commit first: a release is made of a commit"
    [ -z "$key" ] || git tag --points-at HEAD | grep -qx "v$version" || fail "tag the commit first: git tag v$version"
    cmake/install-packages.sh build packages release
    mkdir -p "$work/source" "$work/made" "$(dirname "$out")"
    git archive HEAD | tar -x -C "$work/source"
    reprotest --store-dir "$work/made" --no-diffoscope --min-cpus "$(nproc)" \
        --vary=-domain_host,-fileordering,-user_group,-time,-num_cpus --source-root "$work/source" \
        "env SOURCE_DATE_EPOCH=$SOURCE_DATE_EPOCH packaging/build-packages.sh" \
        'build/packages/*.deb build/packages/compiled-in' >"$out.log" 2>&1 ||
        fail "the two builds differ, or one of them failed; $out.log tells"
    built=$work/built
    mkdir "$built"
    find "$work/made/control" \( -name '*.deb' -o -name compiled-in \) -exec cp {} "$built" \;
    echo "release.sh: the packages are equal byte for byte in two builds" >&2
}

version=$(sed -n 's/^project(.* VERSION \([0-9.]*\).*/\1/p' CMakeLists.txt)
[ -n "$built" ] || build_twice
release=$work/release
mkdir "$release"
cp "$built"/*.deb "$release"
/usr/bin/python3 -B packaging/sbom.py "$built/compiled-in" "$version" "$release"/*.deb >"$release/varlo-analytics-$version.spdx.json"
cd "$release"
sha256sum -- *.deb *.json >SHA256SUMS
if [ -n "$key" ]
then
    minisign -S -s "$key" -m SHA256SUMS -t "varlo-analytics $version" >/dev/null
else
    echo "release.sh: no key is named, SHA256SUMS is not signed" >&2
fi
mkdir -p "$out"
cp -- * "$out"
echo "release.sh: $(find . -name '*.deb' | wc -l) packages of version $version are in $out"
