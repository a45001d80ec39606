#!/usr/bin/env bash
# run.sh FILE...: runs tests of the console's page in Node, beside the packages that npm fetches as the lock file
# says, and the page's own modules.
set -euo pipefail
here=$(cd "$(dirname "$0")" && pwd)
room=$BUILD/tests/console
mkdir -p "$room"
exec 9>"$room/.lock"
flock 9
cp "$here"/node/* "$room/"
rm -rf "$room/page"
cp -r "$SOURCE/tools/console/page" "$room/page"
if ! cmp -s "$room/package-lock.json" "$room/node_modules/.from"
then
    for attempt in 1 2 3
    do
        (cd "$room" && npm ci --no-audit --no-fund --ignore-scripts) && break
        [ $attempt -lt 3 ] || { echo "npm could not fetch the packages of $room" >&2; exit 1; }
    done
    cp "$room/package-lock.json" "$room/node_modules/.from"
fi
flock -u 9
cd "$room"
exec node --test --test-reporter=spec "$@" 9>&-
