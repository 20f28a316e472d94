#!/usr/bin/env bash
# Installs what is missing, builds the desktop host with its component, and
# starts it. Rasters named on the command line open as layers.
set -euo pipefail
root="$(cd "$(dirname "$0")/.." && pwd)"

rasters=()
for path in "$@"; do rasters+=("$(realpath "$path")"); done

"$root/scripts/install-deps.sh"
cmake -S "$root" -B "$root/build" -G Ninja >/dev/null
cmake --build "$root/build" --target halvane-desktop
desktop="$root/build/src/apps/halvane-desktop"
if [ -z "${DISPLAY:-}" ] && [ -z "${WAYLAND_DISPLAY:-}" ]; then
    echo "desktop: no display to show the window on; on a machine without one run" >&2
    echo "  xvfb-run $desktop" >&2
    exit 1
fi
exec "$desktop" "${rasters[@]}"
