#!/usr/bin/env bash
# Installs what is missing, builds, and runs the whole test suite.
#   scripts/test.sh              normal build in build/
#   scripts/test.sh --sanitize   AddressSanitizer + UndefinedBehaviorSanitizer build in build-asan/
set -euo pipefail
cd "$(dirname "$0")/.."

build=build
flags=()
if [ "${1:-}" = "--sanitize" ]; then
    build=build-asan
    flags=(-DHALVANE_SANITIZE=ON -DCMAKE_BUILD_TYPE=Debug)
fi

scripts/install-deps.sh
# Set before the build too: listing the tests of a binary runs it.
export QT_QPA_PLATFORM=offscreen
export ASAN_OPTIONS=detect_leaks=1:abort_on_error=1
export LSAN_OPTIONS="suppressions=$PWD/scripts/lsan.supp:print_suppressions=0"
export UBSAN_OPTIONS=print_stacktrace=1:halt_on_error=1
# The suite of one process; scripts/mpi-check.sh runs the one under mpirun.
cmake -S . -B "$build" -G Ninja -DHALVANE_MPI=OFF "${flags[@]}" >/dev/null
cmake --build "$build"
ctest --test-dir "$build" --output-on-failure -j "$(nproc)"
