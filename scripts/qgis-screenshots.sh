#!/usr/bin/env bash
# Takes the README's screenshots of the QGIS plugin under Xvfb: the classify
# dialog and the labelled zone grid, into docs/. Not part of CI.
#   scripts/qgis-screenshots.sh        HALVANE=path/to/halvane picks the program
set -euo pipefail
cd "$(dirname "$0")/.."
halvane=${HALVANE:-build/src/apps/halvane}
work=$(mktemp -d /tmp/halvane-shots-XXXXXX)
trap 'rm -rf "$work"' EXIT
chmod 700 "$work"
# A copy: QGIS keeps the statistics of the grids it opens in a file beside them.
cp resources/sample/bathymetry.tif "$work/"
PATH=$(cd "$(dirname "$halvane")" && pwd):$PATH HOME=$work XDG_RUNTIME_DIR=$work \
    PYTHONDONTWRITEBYTECODE=1 xvfb-run -a -s "-screen 0 1280x900x24" \
    /usr/bin/python3 scripts/qgis-screenshots.py "$work/bathymetry.tif" \
    resources/def_dict.xml docs
