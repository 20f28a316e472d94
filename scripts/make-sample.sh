#!/usr/bin/env bash
# Remakes the bundled sample, resources/sample/bathymetry.tif, from the relief
# generator: 1000 x 1000 cells of 10 m, seed 7, depths kept to 1/64 m. The same
# arguments always give the same cells (the synth tests hold it to that).
set -euo pipefail
cd "$(dirname "$0")/.."

scripts/install-deps.sh
cmake -S . -B build -G Ninja >/dev/null
cmake --build build --target halvane-synth
build/bench/synth/halvane-synth --cols 1000 --rows 1000 --cell 10 --seed 7 \
    --depth-step 0.015625 --out resources/sample/bathymetry.tif
ls -l resources/sample/bathymetry.tif
