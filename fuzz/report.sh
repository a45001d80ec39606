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

platform=platform/source
conversion=video-analytics/source/conversion
declare -A files=(
    [reader]="$platform/net/RequestReader.cpp $platform/net/RequestParser.cpp"
    [message]="source/SoapIO.cpp source/SoapRequest.cpp schema/Answer.cpp $(echo video-analytics/source/*.cpp) $(echo $platform/store/*.cpp)"
    [behavior]="$(echo $conversion/[A-R]*.cpp $conversion/St*.cpp $conversion/frame)"
    [scene]="$(echo $conversion/Scene*.cpp)"
    [engine]="$(echo $conversion/*OnvifDoc.cpp) $conversion/frame $platform/store/ProfileDocument.cpp $platform/xml/EngineDocument.cpp $platform/xml/ProfileDoc.cpp"
    [settings]="$platform/settings $platform/access/AccessSettings.cpp $platform/xml/XmlFile.cpp $platform/net/Limits.cpp $platform/net/ConfiguredEndpoint.cpp"
    [manifest]="$platform/plugins/ManifestFile.cpp $platform/xml/XmlFile.cpp"
    [query]="$(echo $platform/xml/{Document,DocumentNode,Parser,Query,Text,Tree,Path,PathReader,Writer}.cpp)"
    [access]="$platform/access/BasicCredentials.cpp $platform/access/Users.cpp")
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
    # shellcheck disable=SC2086
    lines=$(llvm-cov report "$program" -object "$build"/platform/libvarlo-analytics-platform.so \
        -instr-profile="$build/lines.profdata" ${files[$name]} 2>/dev/null | awk '/^TOTAL/ { print $8 - $9 " of " $8 " (" $10 ")" }')
    inputs=$(sed -n 's/^stat::number_of_executed_units: *//p' "$logs/$name.log" 2>/dev/null || true)
    seconds=$(sed -n 's/^Done [0-9]* runs in \([0-9]*\) second.*/\1/p' "$logs/$name.log" 2>/dev/null || true)
    echo "| $name | ${inputs:-} | ${seconds:-} | $lines |"
done
