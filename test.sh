#!/usr/bin/env bash
# Installs what is missing, builds, and runs every test: as a user builds it, then under
# AddressSanitizer with UndefinedBehaviorSanitizer, then under ThreadSanitizer, then what an emulated 32-bit Arm can show.
# The second build fuzzes as well, each program for FUZZ_SECONDS (10). Options go to ctest, as in: ./test.sh -R Settings.
# PRESETS="dev" runs the first alone, PRESETS="arm64" the last for 64-bit Arm.
set -euo pipefail
root=$(cd "$(dirname "$0")" && pwd)

"$root/cmake/install-packages.sh" build test
cd "$root"
export UBSAN_OPTIONS=print_stacktrace=1
rm -f build/asan/fuzz/*.result
for preset in ${PRESETS:-dev asan tsan armhf}
do
    case $preset in
    arm*)
        cmake/install-packages.sh arm
        cmake/make-sysroot.sh "$preset"
        ;;
    esac
    cmake --preset "$preset" >/dev/null
    cmake --build --preset "$preset"
    ctest --preset "$preset" "$@"
    # The Debian packages of the build as a user builds it, unless single tests were asked for.
    if [ "$preset" = dev ] && [ $# -eq 0 ]
    then
        packaging/test-packages.sh "build/$preset"
    fi
done
if compgen -G 'build/asan/fuzz/*.result' >/dev/null
then
    awk '{ inputs += $3 } END { print "Fuzzed " NR " programs with " inputs " inputs, no finding" }' build/asan/fuzz/*.result
fi
