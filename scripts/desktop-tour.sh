#!/usr/bin/env bash
# The desktop toured in a real window: halvane-desktop started as a user starts
# it on a virtual X server, every entry of the Halvane menu clicked through the
# toolbar, each command taken to its end on the bundled sample with its real
# dialogs answered (tests/tour/tour.py, through the accessibility tree and real
# X events), a picture of every page and of the map, and a contact sheet of
# them all. Installs what it needs; leaves everything in OUT.
#   scripts/desktop-tour.sh [OUT [LEG...]]   OUT: build/tour unless given;
#   LEGs (names in tests/tour/tour.py) take part of the tour only.
set -euo pipefail
cd "$(dirname "$0")/.."

scripts/install-deps.sh xdotool at-spi2-core python3-pyatspi dbus-x11 imagemagick openbox x11-utils
build=${BUILD:-build}
if [ ! -x "$build/src/apps/halvane-desktop" ]; then
    cmake -S . -B "$build" -G Ninja >/dev/null
fi
cmake --build "$build" --target halvane-desktop halvane_component >/dev/null

out=$(realpath -m "${1:-build/tour}")
legs=("${@:2}")
rm -rf "$out"
mkdir -p "$out/shots" "$out/work" "$out/home" "$out/runtime"
chmod 700 "$out/runtime"
desktop=$(realpath "$build/src/apps/halvane-desktop")
sample=$(realpath resources/sample/bathymetry.tif)

# A first start in an empty home, as on a new account: the desktop registers
# its component itself. The session bus carries the accessibility bus.
export HOME=$out/home XDG_RUNTIME_DIR=$out/runtime QT_LINUX_ACCESSIBILITY_ALWAYS_ON=1
status=0
dbus-run-session -- bash -euo pipefail -c '
    Xvfb -displayfd 3 -screen 0 1600x1000x24 -nolisten tcp 3>"$1/display" 2>/dev/null &
    xvfb=$!
    for _ in $(seq 100); do [ -s "$1/display" ] && break; sleep 0.1; done
    export DISPLAY=:$(cat "$1/display")
    openbox >/dev/null 2>&1 &  # title bars and placement, as on a desktop
    (cd "$HOME" && exec "$2") >"$1/desktop.log" 2>&1 &
    desktop=$!
    # Qt joins the accessibility bus when that bus comes up after it started:
    # the tour wakes the bus only once the window is there.
    for _ in $(seq 600); do
        xdotool search --onlyvisible --name "^Halvane$" >/dev/null 2>&1 && break
        kill -0 "$desktop" 2>/dev/null || { echo "desktop-tour: the desktop ended at start" >&2; exit 1; }
        sleep 0.2
    done
    if ! xdotool search --onlyvisible --name "^Halvane$" >/dev/null 2>&1; then
        echo "desktop-tour: no desktop window after 120 s" >&2
        import -window root "$1/screen.png" || true
        exit 1
    fi
    status=0
    /usr/bin/python3 tests/tour/tour.py "$3" "$1/work" "$1/shots" "${@:4}" || status=$?
    if [ "$status" -eq 0 ]; then
        wait "$desktop" || { echo "desktop-tour: the desktop ended with status $?" >&2; status=1; }
    else
        kill "$desktop" 2>/dev/null || true
    fi
    kill %openbox "$xvfb" 2>/dev/null || true
    exit "$status"
' tour "$out" "$desktop" "$sample" "${legs[@]}" 2> >(grep -v '^dbus-daemon' >&2) || status=$?

shots=("$out"/shots/*.png)
if [ -e "${shots[0]}" ]; then
    montage -label '%t' "${shots[@]}" -thumbnail 360x270 -pointsize 11 -geometry +8+8 \
        -tile 6x -background '#d8d8d8' "$out/contact-sheet.png"
    echo "desktop-tour: ${#shots[@]} pictures in $out/shots, contact sheet $out/contact-sheet.png"
fi
if [ "$status" -ne 0 ]; then
    echo "desktop-tour: failed; the desktop's output:" >&2
    tail -20 "$out/desktop.log" >&2 || true
fi
exit "$status"
