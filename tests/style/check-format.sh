#!/usr/bin/env bash
# Fails if clang-format would write something otherwise.
set -euo pipefail
command -v clang-format >/dev/null || { echo "There is no clang-format"; exit 77; }
cd "$(dirname "$0")/../.."
# The generator's inputs have a syntax of their own.
find benchmarks examples fuzz host include platform schema source tests tools video-analytics \
    \( -name '*.cpp' -o -name '*.h' \) ! -path schema/VideoAnalytics.h ! -path benchmarks/wire/PeerService.h -print0 |
    xargs -0 clang-format --dry-run -Werror
