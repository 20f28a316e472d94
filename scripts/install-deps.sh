#!/usr/bin/env bash
# Installs the Debian packages that building, testing and running Halvane need,
# and only those that are missing, so a second run costs a second. Names given
# as arguments are installed too (the checks that need more than the build).
set -euo pipefail

packages=(
    g++ cmake ninja-build pkg-config
    libgdal-dev libtiff-dev libpugixml-dev qtbase5-dev
    libgtest-dev libgmock-dev libbenchmark-dev
    python3-gdal
    xvfb xauth fonts-dejavu-core
    "$@"
)

missing=()
for p in "${packages[@]}"; do
    if ! dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q 'install ok installed'; then
        missing+=("$p")
    fi
done

if [ ${#missing[@]} -eq 0 ]; then
    exit 0
fi

sudo=""
if [ "$(id -u)" -ne 0 ]; then
    command -v sudo >/dev/null || { echo "install-deps: need root or sudo to install: ${missing[*]}" >&2; exit 1; }
    sudo=sudo
fi

echo "install-deps: installing ${missing[*]}" >&2
export DEBIAN_FRONTEND=noninteractive
$sudo apt-get update -qq
$sudo apt-get install -y -qq --no-install-recommends "${missing[@]}" >/dev/null
