#!/usr/bin/env bash
# run.sh [OPTION...] NAME: runs NAME.test.js in Node, beside the packages that npm fetches as the lock file says,
# with the page's own modules. Options go to Node's test runner.
set -euo pipefail
here=$(cd "$(dirname "$0")" && pwd)
room=$BUILD/tests/console
name=${!#}
mkdir -p "$room"
(
    flock 9
    cp "$here/node/package.json" "$here/node/package-lock.json" "$room/"
    cmp -s "$room/package-lock.json" "$room/node_modules/.from" && exit
    for attempt in 1 2 3
    do
        (cd "$room" && npm ci --no-audit --no-fund --ignore-scripts) && break
        [ $attempt -lt 3 ] || { echo "npm could not fetch the packages of $room" >&2; exit 1; }
    done
    cp "$room/package-lock.json" "$room/node_modules/.from"
) 9>"$room/.lock"
# A folder of its own, since tests run beside each other.
rm -rf "${room:?}/$name"
cp -r "$here/node" "$room/$name"
cp -r "$SOURCE/tools/console/page" "$room/$name/page"
cd "$room/$name"
exec node --test --test-reporter=spec "${@:1:$#-1}" "$name.test.js"
