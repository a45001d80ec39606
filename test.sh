#!/usr/bin/env bash
# Installs what is missing, builds, and tests: the Debian packages of what ./run.sh builds, all suites under
# AddressSanitizer with UndefinedBehaviorSanitizer, those of threads under ThreadSanitizer, then what an emulated 32-bit
# Arm can show. The second build fuzzes as well, each program for FUZZ_SECONDS (10). Options go to ctest.
# PRESETS="dev" runs all suites without a sanitizer and the packages, and what only it has: the console's page in
# browsers, and other makers' clients; each unit test is a test of ctest there: PRESETS=dev ./test.sh -R Settings.
# PRESETS="arm64" is the last for 64-bit Arm.
set -euo pipefail
root=$(cd "$(dirname "$0")" && pwd)

"$root/cmake/install-packages.sh" build test
cd "$root"
export UBSAN_OPTIONS=print_stacktrace=1
rm -f build/asan/fuzz/*.result
for preset in ${PRESETS:-release asan tsan armhf}
do
    # Single tests that were asked for aren't the packages'.
    [ "$preset" != release ] || [ $# -eq 0 ] || continue
    case $preset in dev | arm*) cmake/install-packages.sh "$preset" ;; esac
    case $preset in arm*) cmake/make-sysroot.sh "$preset" ;; esac
    cmake --preset "$preset" >/dev/null
    cmake --build --preset "$preset"
    [ "$preset" = release ] || ctest --preset "$preset" "$@"
    case $preset in
    release | dev) [ $# -gt 0 ] || packaging/test-packages.sh "build/$preset" ;;
    esac
done
if compgen -G 'build/asan/fuzz/*.result' >/dev/null
then
    awk '{ inputs += $3 } END { print "Fuzzed " NR " programs with " inputs " inputs, no finding" }' build/asan/fuzz/*.result
fi
