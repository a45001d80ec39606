#!/usr/bin/env bash
# Fills build/sysroot with Debian's headers and libraries for another architecture, unless they are there. Nothing of it
# is installed on the machine, whose own packages may be newer or older.
#
#   make-sysroot.sh arm64|armhf
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)

# The database of packages, for dpkg-shlibdeps: which library belongs to which package, of which version. It finds the
# libraries where they lie here. None of the packages' scripts is run. What mmdebstrap calls while it still has the
# packages' files.
if [ "${1:-}" = --write-database ]
then
    database=$2/var/lib/dpkg
    echo 1 >"$database/info/format"
    for file in "$2"/var/cache/apt/archives/*.deb
    do
        info=$database/info/$(dpkg-deb -f "$file" Package)
        [ "$(dpkg-deb -f "$file" Multi-Arch)" != same ] || info=$info:$(dpkg-deb -f "$file" Architecture)
        { dpkg-deb -f "$file"; printf 'Status: install ok installed\n\n'; } >>"$database/status"
        dpkg-deb --fsys-tarfile "$file" | tar -t | sed -E "s,/\$,,; s,^\.,$2," >"$info.list"
        for part in symbols shlibs
        do
            dpkg-deb --info "$file" $part >"$info.$part" 2>/dev/null || rm "$info.$part"
        done
    done
    exit 0
fi

case ${1:-} in
    arm64) triplet=aarch64-linux-gnu ;;
    armhf) triplet=arm-linux-gnueabihf ;;
    *) sed -n 's/^#   //p' "$0" >&2; exit 2 ;;
esac
packages="libgsoap-dev libexpat1-dev libpugixml-dev libsqlite3-dev libsqlitecpp-dev libboost-dev libcli11-dev libssl-dev
    zlib1g-dev libcrypt-dev nettle-dev libgeos-dev nlohmann-json3-dev libstdc++-12-dev libgtest-dev libgmock-dev libxml2-dev"
sysroot=$root/build/sysroot/$triplet
made=$sysroot/made-of
of="$packages, by $(cksum <"$0")"
[ "$(cat "$made" 2>/dev/null)" != "$of" ] || exit 0

rm -rf "$sysroot"
mkdir -p "$(dirname "$sysroot")"
mmdebstrap --quiet --variant=extract --architectures="$1" --skip=check/qemu \
    --include="$(echo $packages | tr ' ' ',')" --extract-hook="'$0' --write-database \"\$1\"" \
    bookworm "$sysroot" "deb http://deb.debian.org/debian bookworm main"
# Links to an absolute place would lead to the machine's own files.
find "$sysroot" -type l -lname '/*' ! -path "$sysroot/dev/*" -printf '%p %l\n' | while read -r link target
do
    ln -sfnr "$sysroot$target" "$link"
done
echo "$of" >"$made"
