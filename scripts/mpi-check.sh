#!/usr/bin/env bash
# The grid commands under mpirun: installs Open MPI (an optional dependency),
# builds `halvane` with it, and runs the tests that compare runs of three
# processes (and of one, two and four for classify) with lone runs, bit for
# bit, and kill a process mid-run.
set -euo pipefail
cd "$(dirname "$0")/.."

scripts/install-deps.sh libopenmpi-dev openmpi-bin
# Open MPI refuses to run as root unless told; CI containers run as root.
export OMPI_ALLOW_RUN_AS_ROOT=1 OMPI_ALLOW_RUN_AS_ROOT_CONFIRM=1
# A build of its own: the package and the suite of build/ stay single-process.
cmake -S . -B build-mpi -G Ninja -DHALVANE_MPI=ON >/dev/null
cmake --build build-mpi --target halvane team_tests
ctest --test-dir build-mpi --output-on-failure -R '^TeamTest\.'
