#!/usr/bin/env bash
# Builds the libFuzzer harnesses with clang under ASan+UBSan in build-fuzz/
# and runs each for SECONDS (default 60) on a copy of its seed corpus in
# fuzz/corpus/<harness>/, one after the other. Prints each run's executions
# and coverage; a crash fails the script and leaves the input in
# build-fuzz/findings/ (turn it into a regression test).
#   scripts/fuzz.sh [SECONDS] [HARNESS]   HARNESS: map_algebra or dictionary
set -euo pipefail
cd "$(dirname "$0")/.."

seconds=${1:-60}
only=${2:-}
scripts/install-deps.sh
if ! command -v clang++ >/dev/null || ! dpkg-query -W -f='${Status}' libclang-rt-14-dev 2>/dev/null |
    grep -q 'install ok installed'; then
    sudo=""
    [ "$(id -u)" -ne 0 ] && sudo=sudo
    $sudo env DEBIAN_FRONTEND=noninteractive apt-get -o DPkg::Lock::Timeout=600 install -y -qq \
        clang libclang-rt-14-dev >/dev/null
fi
export ASAN_OPTIONS=detect_leaks=0:abort_on_error=1
export UBSAN_OPTIONS=print_stacktrace=1:halt_on_error=1
CC=clang CXX=clang++ cmake -S . -B build-fuzz -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo \
    -DHALVANE_SANITIZE=ON -DHALVANE_FUZZ=ON -DHALVANE_BUILD_TESTS=OFF >/dev/null
harnesses=(map_algebra dictionary)
[ -n "$only" ] && harnesses=("$only")
cmake --build build-fuzz --target "${harnesses[@]/#/fuzz_}" -- -k 0

mkdir -p build-fuzz/findings
for harness in "${harnesses[@]}"; do
    corpus=build-fuzz/corpus/$harness
    mkdir -p "$corpus"
    cp -n fuzz/corpus/"$harness"/* "$corpus"/ 2>/dev/null || true
    log=build-fuzz/$harness.log
    echo "== fuzz $harness for $seconds s =="
    status=0
    build-fuzz/fuzz/fuzz_"$harness" -max_total_time="$seconds" -max_len=4096 -timeout=60 \
        -print_final_stats=1 -artifact_prefix=build-fuzz/findings/"$harness"- \
        "$corpus" >"$log" 2>&1 || status=$?
    grep -E 'DONE|stat::number_of_executed_units|stat::peak_rss_mb' "$log" || true
    if [ "$status" -ne 0 ]; then
        tail -40 "$log"
        echo "fuzz: $harness found a failing input (build-fuzz/findings/)" >&2
        exit 1
    fi
done
