#!/usr/bin/env bash
# Installs what is missing, builds, and runs the main job. Until the command
# line exists the main job is the smoke test: a guarded job on the console that
# shows its progress bar and then the failure report a user would read.
set -euo pipefail
cd "$(dirname "$0")/.."

scripts/install-deps.sh
cmake -S . -B build -G Ninja >/dev/null
cmake --build build
build/tests/reporting_tests --gtest_filter='SmokeTest.*' --gtest_brief=1
