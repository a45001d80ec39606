#!/usr/bin/env bash
# The table of docs/reliability.md: for each fuzz program the inputs of its log and the lines of our own
# files that its corpus goes through, out of those that it is for. Builds the programs for coverage.
#
#   report.sh LOGS      the logs of long runs, LOGS/NAME.log (run.sh with FUZZ_LOG)
set -euo pipefail
logs=$(cd "$1" && pwd)
root=$(cd "$(dirname "$0")/.." && pwd)
build=$root/build/fuzz-coverage
cd "$root"
cmake --preset coverage -B "$build" -D FUZZING=ON -D BUILD_TESTING=OFF >/dev/null
cmake --build "$build" --target fuzz-programs >/dev/null
export LLVM_PROFILE_FILE=$build/lines.profraw

# What each program is for: files of llvm-cov's report, by a pattern.
conversion='video-analytics/source/conversion'
declare -A files=(
    [reader]='net/RequestReader[.]cpp'
    [message]='/(source/Soap|schema/Answer[.]cpp|video-analytics/source/[^/]*[.]cpp|platform/source/store/Profile)'
    [behavior]="$conversion/([A-R]|St|frame/)"
    [scene]="$conversion/Scene"
    [engine]="$conversion/.*OnvifDoc|$conversion/frame/.*Rule|store/ProfileDocument|xml/ProfileDoc[.]cpp"
    [settings]='platform/source/settings/|xml/XmlFile|access/AccessSettings|net/ServerSettings[.]cpp'
    [manifest]='plugins/Plugin[.]|xml/XmlFile'
    [query]='xml/(Document|DocumentNode|Namespaces|Nodes|Path|Reader|Text)[.]'
    [access]='access/(Passwords|Users)[.]')
declare -A seeds=(
    [behavior]="tests/data platform/data/plugins" [scene]="tests/data/sceneanalyzer platform/data/plugins"
    [engine]="tests/data platform/data/plugins" [settings]="platform/data" [manifest]="platform/data/plugins")

echo "| Program | Inputs | Seconds | Lines of its files |"
echo "|---|---|---|---|"
for name in reader message behavior scene engine settings manifest query access
do
    program=$build/fuzz/fuzz-$name
    # shellcheck disable=SC2086
    "$program" -runs=0 fuzz/corpus/$name ${seeds[$name]:-} >/dev/null 2>&1 </dev/null
    llvm-profdata merge -sparse -o "$build/lines.profdata" "$LLVM_PROFILE_FILE"
    lines=$(llvm-cov report "$program" -object "$build"/platform/libvarlo-analytics-platform.so \
        -instr-profile="$build/lines.profdata" 2>/dev/null | awk -v files="${files[$name]}" \
        '$1 ~ files { all += $8; missed += $9 } END { printf "%d of %d (%.0f %%)", all - missed, all, 100 * (all - missed) / all }')
    inputs=$(sed -n 's/^stat::number_of_executed_units: *//p' "$logs/$name.log" 2>/dev/null || true)
    seconds=$(sed -n 's/^Done [0-9]* runs in \([0-9]*\) second.*/\1/p' "$logs/$name.log" 2>/dev/null || true)
    echo "| $name | ${inputs:-} | ${seconds:-} | $lines |"
done
