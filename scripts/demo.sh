#!/usr/bin/env bash
# Installs what is missing, builds, and runs the main job: the classification
# of the bundled sample, with its zone table and two pictures, into
# ./halvane-demo (a second run refuses to overwrite it: remove it first).
set -euo pipefail
cd "$(dirname "$0")/.."

scripts/install-deps.sh
cmake -S . -B build -G Ninja >/dev/null
cmake --build build
build/src/apps/halvane demo "$@"
