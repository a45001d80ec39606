#!/usr/bin/env bash
# Builds with the preset "coverage", runs every test, and prints how much of the hand-written code they
# reach: lines and branches, per folder and in all. Fails below 95 % of the lines or 85 % of the branches.
#
#   coverage.sh [--report-only] [--files] [--missed]
#
# --report-only takes the figures of the last run, --files adds a row per file, --missed lists the lines
# that were not reached.
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
build=$root/build/coverage
profiles=$build/profiles

run=1
report=()
for option in "$@"
do
    case $option in
        --report-only) run=0 ;;
        --files|--missed) report+=("$option") ;;
        *) echo "coverage.sh: unknown option $option; it takes --report-only, --files and --missed" >&2; exit 2 ;;
    esac
done

if [ $run -eq 1 ]
then
    "$root/cmake/install-packages.sh" build test dev coverage
    cd "$root"
    cmake --preset coverage >/dev/null
    cmake --build --preset coverage
    rm -rf "$profiles"
    # %m: one file for each program or library, into which its processes merge; %c: written to while a
    # process runs, so that those that are killed count too.
    LLVM_PROFILE_FILE="$profiles/%m.profraw" ctest --preset coverage
fi
[ -d "$profiles" ] || { echo "coverage.sh: there are no figures; run it without --report-only first" >&2; exit 1; }

llvm-profdata merge --sparse -o "$build/all.profdata" "$profiles"/*.profraw
objects=()
for file in "$build"/source/*.so* "$build"/platform/*.so* "$build"/host/varlo-analytics-host "$build"/tools/varlo-analytics "$build"/tests/*-tests
do
    [ -x "$file" ] && [ ! -L "$file" ] && objects+=(-object "$file")
done
llvm-cov export --instr-profile "$build/all.profdata" "${objects[@]}" >"$build/coverage.json"
exec "$(dirname "$0")/coverage-table.py" "$root" "$build/coverage.json" "${report[@]}"
