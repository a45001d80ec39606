#!/usr/bin/env bash
# Fuzzes with one program for FUZZ_SECONDS (10), beginning with its corpus, and prints a line. What it
# found new is added to the folder NAME.corpus of the working folder, what it choked on is named.
#
#   run.sh NAME PROGRAM DICTIONARY CORPUS [SEEDS...]
#
# FUZZ_SEED (1) makes the draw the same each time; 0 draws anew. FUZZ_TIMEOUT (60) is the time that an
# input may take, in seconds: a loaded machine needs many. FUZZ_LOG keeps the log in that file.
set -euo pipefail
name=$1
program=$2
dictionary=$3
shift 3
seconds=${FUZZ_SECONDS:-10}
log=${FUZZ_LOG:-$PWD/$name.log}

found=$PWD/$name.corpus
mkdir -p "$found"
# The store writes through to the disk, if there is one.
memory=/dev/shm
[ -w "$memory" ] || memory=${TMPDIR:-/tmp}
TMPDIR=$(mktemp -d "$memory/fuzz-$name-XXXXXX")
export TMPDIR
trap 'rm -rf "$TMPDIR"' EXIT
# Standard error is full of what the service tells its operator; libFuzzer keeps its own.
status=0
"$program" -max_total_time="$seconds" -seed="${FUZZ_SEED:-1}" -timeout="${FUZZ_TIMEOUT:-60}" -rss_limit_mb=3000 \
    -max_len=16384 -dict="$dictionary" -artifact_prefix="$PWD/$name-" -print_final_stats=1 -verbosity=1 \
    ${FUZZ_OPTIONS:-} "$found" "$@" >"$log" 2>&1 </dev/null || status=$?
runs=$(sed -n 's/^stat::number_of_executed_units: *//p' "$log")
edges=$(grep -o 'cov: [0-9]*' "$log" | tail -n 1 | cut -d ' ' -f 2) || true
if [ "$status" -ne 0 ] || [ -z "$runs" ]
then
    tail -n 60 "$log"
    echo "fuzz $name: a finding after ${runs:-some} inputs; replay it with: $program $(sed -n 's/.*Test unit written to //p' "$log" | tail -n 1)"
    exit 1
fi
echo "fuzz $name: $runs inputs in $seconds s, ${edges:-0} edges, no finding" | tee "$name.result"
