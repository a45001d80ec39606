#!/usr/bin/env bash
# Installs what is missing, builds, and starts the service on the delivered settings and plug-ins, with
# its state in build/state. Options go to the host and win over those, as in: ./run.sh --listen 127.0.0.1:9090
set -euo pipefail
root=$(cd "$(dirname "$0")" && pwd)

"$root/cmake/install-packages.sh" build
cmake --preset release -S "$root" >/dev/null
cmake --build "$root/build/release" --target varlo-analytics-host varlo-analytics-api varlo-analytics
exec "$root/build/release/host/varlo-analytics-host" \
    --library "$root/build/release/source/libvarlo-analytics-api.so" \
    --settings "$root/platform/data/settings.xml" \
    --plugins "$root/platform/data/plugins" \
    --state "$root/build/state" "$@"
