#!/usr/bin/env bash
# Builds the Debian packages of a build folder, installs them in a Debian system of their own, uses the
# service there under its unit, upgrades it, removes it and purges it.
#
#   test-packages.sh [BUILD_FOLDER]
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
build=$(realpath "${1:-$root/build/dev}")
work=$(mktemp -d /tmp/varlo-packages.XXXXXX)
system=$work/system
machine=

say() { echo "packages: $*"; }
fail() { echo "packages: FAILED: $*" >&2; exit 1; }
# What the machine can't do says nothing about the packages, which aren't in play by then.
impossible() { say "SKIPPED: $*; the packages are built and checked, but were not installed"; say "1 passed, 0 failed, 1 skipped"; exit 0; }
inside() { timeout 120 nsenter -t "$machine" -m -u -i -n -p "$@"; }

cleanup()
{
    if [ -n "$machine" ]
    then
        timeout 30 nsenter -t "$machine" -m -u -i -n -p systemctl poweroff >/dev/null 2>&1 || true
        timeout 60 tail --pid="$container" -f /dev/null || kill -KILL "$container" 2>/dev/null || true
    fi
    rm -rf --one-file-system "$work"
}

if [ "$(id -u)" -ne 0 ]
then
    say "SKIPPED: to install packages in a system of their own takes root; run it with sudo"
    say "0 passed, 0 failed, 2 skipped"
    exit 0
fi
trap cleanup EXIT

# ---- packages of two revisions ----
for release in 1 2
do
    cpack --config "$build/CPackConfig.cmake" -B "$work/$release" -D CPACK_DEBIAN_PACKAGE_RELEASE=$release \
        >"$work/cpack.log" 2>&1 || { cat "$work/cpack.log"; fail "cpack"; }
done
lintian --allow-root --fail-on error,warning "$work"/1/*.deb || fail "lintian found what packaging/lintian doesn't explain"
say "lintian finds no errors and no unexplained warnings in $(cd "$work/1" && echo *.deb)"

# ---- the client's package and that of the development files each have all that describes the service and the documents ----
for package in "$work"/1/varlo-analytics_*.deb "$work"/1/*-dev_*.deb
do
    dpkg-deb -c "$package" | sed -n 's,.* \./,/,p' >"$work/contents"
    for file in schemas/VideoAnalytics.wsdl schemas/VideoAnalytics.xsd schemas/loitering.xsd schemas/loitering.schema.json \
        schemas/scene.xsd schemas/scene.schema.json -documents.5.gz behavior-document.md
    do
        grep -qE "/usr/share/.*${file//./\\.}$" "$work/contents" || fail "$(basename "$package") has no $file"
    done
done
say "the client's package and the development package each have the WSDL, the schemas and the pages"

# ---- a release of them, and how others verify it ----
"$root/packaging/test-release.sh" "$work/1" "$build" "$work/release"

# ---- what is built on them ----
"$root/packaging/test-development.sh" "$work/1" "$work/development"

mountpoint -q /sys/fs/cgroup || impossible "a container needs control groups, which aren't mounted here (/sys/fs/cgroup)"

# ---- a Debian system that boots, with what the packages need of others; kept in the build folder for the next time ----
needed=$(for file in "$work"/1/*.deb; do dpkg-deb -f "$file" Depends; done | tr ',' '\n' |
    sed -E 's/^ *([a-z0-9.+-]+).*/\1/' | grep -vE '^(lib)?varlo-analytics|-dev$|^$' | sort -u | paste -sd,)
base=$build/packages-base-$(echo "$needed" | cksum | cut -d' ' -f1).tar
if [ ! -s "$base" ]
then
    timeout 600 mmdebstrap --quiet --variant=essential --include="$needed,systemd,init-system-helpers" \
        --dpkgopt='path-exclude=/usr/share/doc/*' --dpkgopt='path-exclude=/usr/share/man/*' \
        --dpkgopt='path-exclude=/usr/share/locale/*' bookworm "$work/base.tar" || impossible "no base system could be fetched"
    mv "$work/base.tar" "$base"
fi
mkdir "$system"
tar -xf "$base" -C "$system" --numeric-owner
cp "$work"/[12]/*.deb "$system/root/"
rm -f "$system/etc/resolv.conf"
: >"$system/etc/machine-id" # without the file, the system asks questions at its first boot

systemd-nspawn --keep-unit --register=no --private-network --resolv-conf=off --timezone=off --quiet \
    -D "$system" -b </dev/null >"$work/console.log" 2>&1 &
container=$!
for attempt in $(seq 360)
do
    sleep 0.5
    machine=$(pgrep -P "$container" -x systemd || true)
    if [ -n "$machine" ] && inside systemctl is-system-running 2>/dev/null | grep -qE 'running|degraded'
    then
        break
    fi
    kill -0 "$container" 2>/dev/null || { cat "$work/console.log"; machine=; impossible "the base system did not boot in a container"; }
    [ "$attempt" -lt 360 ] || { cat "$work/console.log"; impossible "the base system did not boot within three minutes"; }
done
say "a Debian system of its own is up"

install() { inside sh -c "dpkg -i /root/*-$1_*.deb" >"$work/dpkg.log" 2>&1 || { cat "$work/dpkg.log"; fail "dpkg -i"; }; }
main_pid() { inside systemctl show -P MainPID varlo-analytics; }
active() { [ "$(inside systemctl is-active varlo-analytics || true)" = active ] || { inside journalctl -u varlo-analytics --no-pager; fail "the service is not active $1"; }; }
call()
{
    timeout 30 nsenter -t "$machine" -n curl -sS --max-time 20 http://127.0.0.1:8080/ -H 'Content-Type: text/xml' -d "
        <Envelope xmlns=\"http://schemas.xmlsoap.org/soap/envelope/\"><Body>
        <$1 xmlns=\"urn:schemas-varlo-com:service:VideoAnalytics:2\">${2:-}</$1></Body></Envelope>"
}

# ---- install, and what the service may do ----
install 1
active "after the installation"
inside sh -c 'grep -qsx varlo-analytics /proc/[0-9]*/comm' || fail "no process has the service's name"
inside systemctl is-enabled varlo-analytics >/dev/null || fail "the service is not enabled"
inside systemd-analyze verify --man=no varlo-analytics.service >"$work/verify.log" 2>&1 || true
[ ! -s "$work/verify.log" ] || { cat "$work/verify.log"; false; } || fail "systemd-analyze verify has complaints"
exposure=$(inside systemd-analyze security --no-pager varlo-analytics.service | sed -n 's/.*exposure level for.*: \([0-9.]*\) .*/\1/p')
say "systemd-analyze security: exposure $exposure of 10"
awk "BEGIN { exit !($exposure <= 1.5) }" || fail "the unit leaves more open than it should"
status=$(inside cat "/proc/$(main_pid)/status")
user=$(inside id -u varlo-analytics)
for line in "Uid: $user $user $user $user" "CapEff: 0000000000000000" "CapBnd: 0000000000000000" "NoNewPrivs: 1" "Seccomp: 2"
do
    echo "$status" | tr -s '\t ' ' ' | grep -qx "$line" || { echo "$status"; fail "the process has not '$line'"; }
done
say "the service runs as user $user with no capability and a filter of system calls"

# ---- what is loaded there is what the SBOM of a release names ----
inside sh -c 'ldd /usr/sbin/varlo-analytics-host /usr/bin/varlo-analytics /usr/lib/*/libvarlo-analytics-*.so.*' |
    sed -nE 's,.*(=> |^\t)(/[^ ]+) \(.*,\2,p' | grep -v varlo | sort -u >"$work/loaded"
[ -s "$work/loaded" ] || fail "ldd finds nothing"
while read -r file
do
    package=$(inside sh -c "dpkg -S $file || dpkg -S /usr$file || dpkg -S ${file#/usr}" 2>/dev/null </dev/null | cut -d: -f1)
    grep -qF "\"name\": \"$package\"" "$work"/release/*.spdx.json || fail "the SBOM doesn't name $file of $package"
done <"$work/loaded"
say "the SBOM names the packages of the $(wc -l <"$work/loaded") libraries that ldd finds"

# ---- use: the whole tour under the unit ----
timeout 120 nsenter -t "$machine" -n /usr/bin/python3 -B "$root/tests/interop/against.py" http://127.0.0.1:8080/ \
    "$system/usr/share/varlo-analytics/VideoAnalytics.wsdl" "$system/usr/share/varlo-analytics" || fail "the tour"
say "the tour of all operations passes against the installed service"
call CreateProfile '<name xmlns="">Kept</name>' | grep -q '<profileId>' || fail "no profile could be made"

# ---- what the analytics engine reads, as a user of the service's group and nobody else ----
state=/run/varlo-analytics/engine/state.json
inside runuser -u nobody -g varlo-analytics -- grep -q '"sequence":' $state || fail "the group can't read what is to run"
! inside runuser -u nobody -- cat $state 2>/dev/null || fail "everybody can read what is to run"
inside systemctl restart varlo-analytics
active "after a restart"
inside rm -rf /run/varlo-analytics/engine
for attempt in $(seq 50)
do
    inside test -s $state && break
    [ "$attempt" -lt 50 ] || fail "the engine's folder does not come back"
    sleep 0.2
done
say "an engine of the group reads what is to run"

# ---- the daily backup: 15 older ones make room for it, and one that was made by hand stays ----
backups=/var/backups/varlo-analytics
inside install -d -o varlo-analytics -g varlo-analytics -m 0700 $backups
inside sh -c "cd $backups && touch profiles-2020-01-01.db && for day in \$(seq 10 24); do touch profiles-202001\$day-000000.db; done"
inside systemctl start varlo-analytics-backup.service || { inside journalctl -u varlo-analytics-backup --no-pager; fail "the backup"; }
kept=$(inside sh -c "ls $backups/profiles-????????-??????.db")
[ "$(echo "$kept" | wc -l)" -eq 14 ] || { echo "$kept"; fail "the backup doesn't keep its last 14 copies"; }
inside test -e $backups/profiles-2020-01-01.db -a -s "$(echo "$kept" | tail -n 1)" || fail "the backup leaves the wrong copies"
say "the daily backup keeps its last 14 copies, and others' alone"

# ---- the audit trail in the journal ----
inside sed -i 's,^ *</server>,    <audit>journal</audit>\n&,' /etc/varlo-analytics/settings.xml
inside systemctl reload varlo-analytics
for attempt in $(seq 50)
do
    call CreateProfile '<name xmlns="">Told</name>' >/dev/null
    inside journalctl -u varlo-analytics -o cat --no-pager >"$work/journal.log"
    grep -q '"change":"CreateProfile".*"result":"done"' "$work/journal.log" && break
    [ "$attempt" -lt 50 ] || { cat "$work/journal.log"; fail "a change has no line in the journal"; }
    sleep 0.2
done
say "a change has its line in the journal"

# ---- upgrade: profiles and the administrator's settings stay ----
inside sed -i 's/<maxResource>100</<maxResource>99</' /etc/varlo-analytics/settings.xml
before=$(main_pid)
install 2
active "after the upgrade"
[ "$(main_pid)" != "$before" ] || fail "the upgrade did not restart the service"
call GetProfileList | grep -q '>Kept<' || fail "the upgrade lost a profile"
inside grep -q '<maxResource>99<' /etc/varlo-analytics/settings.xml || fail "the upgrade changed the settings"
[ "$(inside dpkg-query -W -f '${Version}' varlo-analytics-host)" = "$(dpkg-deb -f "$work"/2/varlo-analytics-host_*.deb Version)" ] || fail "no upgrade"
say "the upgrade keeps profiles and settings"

# ---- a library alone: the service doesn't go on with the deleted one ----
before=$(main_pid)
inside sh -c 'dpkg -i /root/libvarlo-analytics-platform*-2_*.deb' >"$work/dpkg.log" 2>&1 || { cat "$work/dpkg.log"; fail "dpkg -i of a library"; }
active "after the upgrade of a library"
[ "$(main_pid)" != "$before" ] || fail "the upgrade of a library did not restart the service"
! inside grep -q 'varlo.*(deleted)' "/proc/$(main_pid)/maps" || fail "the service uses a deleted library"
say "the upgrade of a library restarts the service"

# ---- remove, then purge ----
packages=$(for file in "$work"/1/*.deb; do dpkg-deb -f "$file" Package; done)
inside dpkg -r $packages >"$work/dpkg.log" 2>&1 || { cat "$work/dpkg.log"; fail "dpkg -r"; }
! inside sh -c 'grep -qsx varlo-analytics /proc/[0-9]*/comm' || fail "the service outlives its removal"
inside test ! -e /usr/sbin/varlo-analytics-host || fail "the host is still there"
inside test -s /etc/varlo-analytics/settings.xml -a -d /var/lib/varlo-analytics || fail "the removal took data along"
inside test ! -e /run/varlo-analytics || fail "the engine's folder is still there"
inside dpkg -P $packages >"$work/dpkg.log" 2>&1 || { cat "$work/dpkg.log"; fail "dpkg -P"; }
inside test ! -e /etc/varlo-analytics -a ! -e /var/lib/varlo-analytics -a ! -e /var/log/varlo-analytics || fail "the purge left files"
say "removed and purged"
say "2 passed, 0 failed"
