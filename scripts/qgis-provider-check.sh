#!/usr/bin/env bash
# The QGIS plugin in the desktop GIS of Debian 12 (QGIS 3.22), headless:
#  - its own tests (progress reading, runs, cancel) with Debian's python3;
#  - `qgis_process list` shows the provider's algorithms, with the plugin
#    unpacked from the zip the plugin manager would install;
#  - `qgis_process run halvane:classify` on the bundled sample writes a zone
#    grid equal cell for cell to `halvane classify` with the same arguments;
#  - the classify algorithm run into a project loads a paletted zone layer
#    with the dictionary's class names (qgis/tests/in_qgis.py).
# Debian's /usr/bin/qgis_process adds --noversioncheck, which the 3.22 runner
# refuses, so the runner itself, /usr/bin/qgis_process.bin, is called.
#   scripts/qgis-provider-check.sh     HALVANE=path/to/halvane picks the program
set -euo pipefail
cd "$(dirname "$0")/.."

scripts/install-deps.sh qgis python3-qgis python3-numpy

halvane=${HALVANE:-build/src/apps/halvane}
if [ ! -x "$halvane" ]; then
    cmake -S . -B build -G Ninja >/dev/null
    cmake --build build --target halvane
fi
cmake -S . -B build -G Ninja >/dev/null
cmake --build build --target qgis_plugin_zip >/dev/null
version=$(sed -n 's/^project(Halvane VERSION \([0-9.]*\).*/\1/p' CMakeLists.txt)
grep -qx "version=$version" qgis/halvane/metadata.txt ||
    { echo "qgis-provider-check: metadata.txt's version is not the project's $version" >&2; exit 1; }

# Debian's python3, whatever python3 the PATH finds: it has the GIS's modules.
python=/usr/bin/python3
PYTHONDONTWRITEBYTECODE=1 $python -m unittest discover -s qgis/tests -p 'test_*.py'

work=$(mktemp -d /tmp/halvane-qgis-provider-XXXXXX)
trap 'rm -rf "$work"' EXIT
chmod 700 "$work"
# A profile of our own, in which the plugin is enabled: qgis_process loads
# only enabled plugins that have a Processing provider.
profile=$work/home/.local/share/QGIS/QGIS3/profiles/default/QGIS
mkdir -p "$profile" "$work/plugins" "$work/cli" "$work/qgis"
printf '[PythonPlugins]\nhalvane=true\n' >"$profile/QGIS3.ini"
(cd "$work/plugins" && $python -m zipfile -e "$OLDPWD/build/halvane-qgis-$version.zip" .)

export HOME=$work/home XDG_RUNTIME_DIR=$work QT_QPA_PLATFORM=offscreen
export QGIS_PLUGINPATH=$work/plugins PYTHONDONTWRITEBYTECODE=1
PATH=$(cd "$(dirname "$halvane")" && pwd):$PATH
export PATH
qgis_process=/usr/bin/qgis_process.bin

listed=$($qgis_process list 2>/dev/null)
for algorithm in classify bpi standardize slope resample rugosity calc; do
    grep -q "^[[:space:]]*halvane:$algorithm[[:space:]]" <<<"$listed" ||
        { echo "qgis-provider-check: qgis_process list lacks halvane:$algorithm" >&2; exit 1; }
done
echo "qgis-provider-check: qgis_process lists the provider's seven algorithms"

# A copy: QGIS keeps the statistics of the grids it opens in a file beside them.
sample=$work/bathymetry.tif
cp resources/sample/bathymetry.tif "$sample"
dictionary=$PWD/resources/def_dict.xml
# Radii other than the defaults, so that both sides must pass them on.
$qgis_process run halvane:classify -- INPUT="$sample" DICTIONARY="$dictionary" \
    BROAD_INNER=2 BROAD_OUTER=7 FINE_INNER=1 FINE_OUTER=2 OUTPUT="$work/qgis/zones.tif" \
    >"$work/qgis.log" 2>&1 || { cat "$work/qgis.log" >&2; exit 1; }
halvane classify --workdir "$work/cli" --dictionary "$dictionary" --broad 2,7 --fine 1,2 \
    "$sample" >/dev/null 2>&1
$python - "$work/qgis/zones.tif" "$work/cli/ZONES.tif" <<'PY'
import sys
import numpy
from osgeo import gdal

ours, theirs = (gdal.Open(p) for p in sys.argv[1:3])
problems = []
for what, get in (("size", lambda d: (d.RasterXSize, d.RasterYSize, d.RasterCount)),
                  ("geotransform", lambda d: d.GetGeoTransform()),
                  ("reference", lambda d: d.GetProjection()),
                  ("type", lambda d: d.GetRasterBand(1).DataType),
                  ("nodata", lambda d: d.GetRasterBand(1).GetNoDataValue()),
                  ("class names", lambda d: d.GetRasterBand(1).GetCategoryNames())):
    if get(ours) != get(theirs):
        problems.append("the %s differs: %r against %r" % (what, get(ours), get(theirs)))
a, b = ours.ReadAsArray(), theirs.ReadAsArray()
if a.shape != b.shape or not numpy.array_equal(a, b):
    problems.append("%d cells differ" % (numpy.count_nonzero(a != b) if a.shape == b.shape else -1))
if len(numpy.unique(a)) < 3:
    problems.append("the zone grid holds fewer than three values")
for problem in problems:
    print("qgis-provider-check: qgis_process against halvane classify: " + problem, file=sys.stderr)
if problems:
    sys.exit(1)
print("qgis-provider-check: qgis_process run halvane:classify equals halvane classify, "
      "%d x %d cells" % a.shape[::-1])
PY
ls -A "$work/qgis" | grep -qv '^zones\.tif' &&
    { echo "qgis-provider-check: the run left $(ls -A "$work/qgis")" >&2; exit 1; }

QGIS_PLUGINPATH= $python qgis/tests/in_qgis.py "$sample" "$dictionary"
echo "qgis-provider-check: in a project, the zone layer is paletted with the dictionary's names"
