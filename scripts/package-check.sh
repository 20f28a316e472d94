#!/usr/bin/env bash
# Builds the Debian package in build/, installs it with apt-get as a user
# would, runs the installed `halvane demo` from a fresh folder under /tmp, and
# removes the package again. Any failure fails the script.
#   scripts/package-check.sh [--keep]   --keep leaves the package installed
set -euo pipefail
cd "$(dirname "$0")/.."

keep=0
[ "${1:-}" = "--keep" ] && keep=1

sudo=""
if [ "$(id -u)" -ne 0 ]; then
    command -v sudo >/dev/null || { echo "package-check: need root or sudo" >&2; exit 1; }
    sudo=sudo
fi
# Another apt on the machine holds the lock for a while; wait for it.
apt=($sudo env DEBIAN_FRONTEND=noninteractive apt-get -o DPkg::Lock::Timeout=600 -y -qq)

scripts/install-deps.sh
cmake -S . -B build -G Ninja -DHALVANE_MPI=OFF >/dev/null
cmake --build build
rm -f build/halvane_*.deb
(cd build && cpack -G DEB >/dev/null)
deb=$(ls build/halvane_*.deb)
echo "package-check: built $deb" >&2
dpkg-deb --contents "$deb" | awk '{print $6}' | grep -E 'bin/|lib/halvane/|share/halvane/[^/]*$' >&2

"${apt[@]}" install "./$deb" >/dev/null
work=$(mktemp -d /tmp/halvane-package-XXXXXX)
cleanup() {
    rm -rf "$work"
    if [ "$keep" = 0 ]; then "${apt[@]}" purge halvane >/dev/null || true; fi
}
trap cleanup EXIT

/usr/bin/halvane --version
/usr/bin/halvane-desktop --version
(cd "$work" && QT_QPA_PLATFORM=offscreen /usr/bin/halvane demo >/dev/null)
for file in ZONES.tif SLOPE.tif RUGOSITY.tif zones.png bathymetry.png; do
    [ -s "$work/halvane-demo/$file" ] || { echo "package-check: no $file" >&2; exit 1; }
done
echo "package-check: the installed halvane demo ran in $work" >&2
