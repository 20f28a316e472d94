#!/usr/bin/env bash
# Opens the zone grid of `halvane classify` in the desktop GIS of Debian 12
# (QGIS 3.22) through its Python API, headless, and checks that it comes up
# as a paletted layer whose classes and legend carry the dictionary's names
# and the file's colours. Installs qgis and python3-qgis when missing.
#   scripts/qgis-check.sh          HALVANE=path/to/halvane picks the program
set -euo pipefail
cd "$(dirname "$0")/.."

scripts/install-deps.sh qgis python3-qgis

halvane=${HALVANE:-build/src/apps/halvane}
if [ ! -x "$halvane" ]; then
    cmake -S . -B build -G Ninja >/dev/null
    cmake --build build --target halvane
fi
work=$(mktemp -d /tmp/halvane-qgis-XXXXXX)
trap 'rm -rf "$work"' EXIT
"$halvane" classify --workdir "$work" resources/sample/bathymetry.tif >/dev/null 2>&1

# Debian's python3, whatever python3 the PATH finds: it has the GIS's modules.
chmod 700 "$work"
QT_QPA_PLATFORM=offscreen XDG_RUNTIME_DIR=$work /usr/bin/python3 - "$work/ZONES.tif" \
    resources/def_dict.xml <<'PY'
import os
import sys
import xml.etree.ElementTree as ET

from osgeo import gdal
from qgis.core import QgsApplication, QgsRasterLayer

path, dictionary = sys.argv[1:3]
names = {}
for record in ET.parse(dictionary).getroot().iter("ClassRec"):
    names.setdefault(int(record.findtext("Class")), record.findtext("Zone"))

dataset = gdal.Open(path)  # kept: its band dies with it
rat = dataset.GetRasterBand(1).GetDefaultRAT()
columns = {rat.GetNameOfCol(i): i for i in range(rat.GetColumnCount())}
rows = [(rat.GetValueAsInt(r, columns["Value"]), rat.GetValueAsString(r, columns["Class_Name"]),
         tuple(rat.GetValueAsInt(r, columns[c]) for c in ("Red", "Green", "Blue")))
        for r in range(rat.GetRowCount())]

QgsApplication.setPrefixPath("/usr", True)
app = QgsApplication([], False)
app.initQgis()
layer = QgsRasterLayer(path, "zones")
problems = []
if not layer.isValid():
    problems.append("the GIS cannot open " + path)
elif layer.renderer().type() != "paletted":
    problems.append("opened with the renderer '%s', not as a paletted layer" % layer.renderer().type())
else:
    classes = {c.value: c for c in layer.renderer().classes()}
    legend = [label for label, _ in layer.renderer().legendSymbologyItems()]
    for value, name, rgb in rows:
        expected = names.get(value, "Unclassified" if value == 0 else "Overlap")
        shown = classes.get(value)
        if name != expected:
            problems.append("value %d: the file names it '%s', the dictionary '%s'" % (value, name, expected))
        if shown is None or shown.label != expected:
            problems.append("value %d: the GIS labels it '%s'" % (value, shown.label if shown else None))
        elif (shown.color.red(), shown.color.green(), shown.color.blue()) != rgb:
            problems.append("value %d: the GIS colours it otherwise than the file's table" % value)
        if expected not in legend:
            problems.append("value %d: '%s' is not in the legend" % (value, expected))
for problem in problems:
    print("qgis-check: " + problem, file=sys.stderr)
if not problems:
    print("qgis-check: the GIS shows %d paletted classes named as the dictionary names them"
          % len(rows))
sys.stdout.flush()
sys.stderr.flush()
# The GIS's Python bindings crash while the interpreter tears them down; the
# verdict is in, so leave without the teardown.
del layer
app.exitQgis()
os._exit(1 if problems else 0)
PY
