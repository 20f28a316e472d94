"""The provider inside QGIS, headless: the classify algorithm run into a
project gives a paletted zone layer named with the dictionary's classes; a
cancelled or failed run leaves nothing behind. Needs Debian's python3 with
QGIS's modules, QT_QPA_PLATFORM=offscreen, and halvane on PATH.
   in_qgis.py SAMPLE_GRID DICTIONARY"""

import os
import shutil
import subprocess
import sys
import tempfile
import unittest
import xml.etree.ElementTree as ET

import numpy
from osgeo import gdal
from qgis.core import (QgsApplication, QgsProcessingContext, QgsProcessingException,
                       QgsProcessingFeedback, QgsProject)

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), ".."))

SAMPLE, DICTIONARY = [os.path.abspath(a) for a in sys.argv[1:3]]
del sys.argv[1:3]
# A copy: QGIS keeps the statistics of the grids it opens in a file beside them.
HOLD = tempfile.TemporaryDirectory()
SAMPLE = shutil.copy(SAMPLE, HOLD.name)

QgsApplication.setPrefixPath("/usr", True)
APP = QgsApplication([], False)
APP.initQgis()
sys.path.append("/usr/share/qgis/python/plugins")
import processing  # noqa: E402
from processing.core.Processing import Processing  # noqa: E402

from halvane.plugin import HalvanePlugin  # noqa: E402

Processing.initialize()
PLUGIN = HalvanePlugin(None)
PLUGIN.initProcessing()


def dictionary_names(path):
    # The first record of a class names it; 0 is where no class holds.
    names = {0: "Unclassified"}
    for record in ET.parse(path).getroot().iter("ClassRec"):
        names.setdefault(int(record.findtext("Class")), record.findtext("Zone"))
    return names


class CancelAt(QgsProcessingFeedback):
    def __init__(self, percent):
        super().__init__()
        self.at = percent
        self.progressChanged.connect(self.check)

    def check(self, percent):
        if percent >= self.at:
            self.cancel()


class InQgis(unittest.TestCase):
    def setUp(self):
        self.dir = tempfile.TemporaryDirectory()
        self.addCleanup(self.dir.cleanup)

    def test_classify_loads_a_paletted_layer_with_the_class_names(self):
        out = os.path.join(self.dir.name, "zones.tif")
        QgsProject.instance().clear()
        results = processing.runAndLoadResults("halvane:classify", {
            "INPUT": SAMPLE, "DICTIONARY": DICTIONARY, "OUTPUT": out})
        self.assertEqual(results["OUTPUT"], out)
        layers = [l for l in QgsProject.instance().mapLayers().values() if l.source() == out]
        self.assertEqual(len(layers), 1, "the zone grid is not in the project")
        renderer = layers[0].renderer()
        self.assertEqual(renderer.type(), "paletted")
        labels = {c.value: c.label for c in renderer.classes()}
        dataset = gdal.Open(out)  # kept: its band dies with it
        band = dataset.GetRasterBand(1)
        cells = band.ReadAsArray()
        values = numpy.unique(cells[cells != band.GetNoDataValue()])
        self.assertGreater(len(values), 3)
        names = dictionary_names(DICTIONARY)
        for value in values:
            self.assertEqual(labels.get(int(value)), names.get(int(value), "Overlap"), value)
        # Only classes: no entries for values the grid cannot hold.
        self.assertLessEqual(set(labels.values()), set(names.values()) | {"Overlap"})
        self.assertEqual(sorted(os.listdir(self.dir.name)), ["zones.tif", "zones.tif.aux.xml"])

    def test_cancel_leaves_nothing(self):
        out = os.path.join(self.dir.name, "zones.tif")
        feedback = CancelAt(10)
        with self.assertRaises(QgsProcessingException):
            processing.run("halvane:classify", {"INPUT": SAMPLE, "OUTPUT": out},
                           context=QgsProcessingContext(), feedback=feedback)
        self.assertTrue(feedback.isCanceled())
        self.assertEqual(os.listdir(self.dir.name), [])

    def test_failure_reports_the_programs_words(self):
        unprojected = os.path.join(self.dir.name, "lonlat.tif")
        gdal.Warp(unprojected, SAMPLE, dstSRS="EPSG:4326")
        out = os.path.join(self.dir.name, "zones.tif")
        with self.assertRaises(QgsProcessingException) as raised:
            processing.run("halvane:classify", {"INPUT": unprojected, "OUTPUT": out},
                           context=QgsProcessingContext(), feedback=QgsProcessingFeedback())
        self.assertIn("not projected", str(raised.exception))
        # (QGIS may keep the input's statistics beside it.)
        self.assertEqual([f for f in os.listdir(self.dir.name) if not f.startswith("lonlat.tif")], [])

    def test_each_step_writes_what_its_command_writes(self):
        # Each algorithm against its command with the arguments it should
        # pass, on a corner of the sample to keep it quick.
        corner = os.path.join(self.dir.name, "corner.tif")
        gdal.Translate(corner, SAMPLE, srcWin=[600, 0, 200, 200])
        cli = os.path.join(self.dir.name, "cli")
        # The CLI's own grids first: standardize reads the bpi grid.
        commands = {
            "bpi": (["--inner", "2", "--outer", "6", "--scale", "fine", "--name", "b", corner],
                    {"INNER": 2, "OUTER": 6, "SCALE": 1, "INPUT": corner}),
            "standardize": (["--scale", "fine", "--name", "s", os.path.join(cli, "b.tif")],
                            {"SCALE": 1, "INPUT": os.path.join(cli, "b.tif")}),
            "slope": (["--name", "sl", corner], {"INPUT": corner}),
            "rugosity": (["--name", "r", corner], {"INPUT": corner}),
            "resample": (["--name", "re", "--cell-size", "25", "--method", "Nearest Neighbor", corner],
                         {"CELL_SIZE": 25, "METHOD": 2, "INPUT": corner}),
            "calc": (["--name", "c", "--bind", "a=" + corner, "--bind", "b=" + corner,
                      "con([a] < -300, [b] * 2, 0)"],
                     {"EXPRESSION": "con([a] < -300, [b] * 2, 0)", "A": corner, "B": corner}),
        }
        for command, (args, parameters) in commands.items():
            with self.subTest(command=command):
                subprocess.run(["halvane", command, "--workdir", cli] + args, check=True,
                               stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
                expected = os.path.join(cli, args[args.index("--name") + 1] + ".tif")
                out = os.path.join(self.dir.name, command + ".tif")
                processing.run("halvane:" + command, dict(parameters, OUTPUT=out),
                               context=QgsProcessingContext(), feedback=QgsProcessingFeedback())
                ours, theirs = gdal.Open(out), gdal.Open(expected)
                self.assertEqual(ours.GetGeoTransform(), theirs.GetGeoTransform())
                a, b = ours.ReadAsArray(), theirs.ReadAsArray()
                self.assertTrue(numpy.array_equal(a, b, equal_nan=True), command)
                self.assertGreater(len(numpy.unique(a)), 1, command)

    def test_the_setting_chooses_the_program(self):
        from processing.core.ProcessingConfig import ProcessingConfig
        from halvane.algorithms import SETTING_PROGRAM
        self.addCleanup(ProcessingConfig.setSettingValue, SETTING_PROGRAM, "")
        out = os.path.join(self.dir.name, "slope.tif")
        # A file that is no program: an error, not another halvane found on PATH.
        ProcessingConfig.setSettingValue(SETTING_PROGRAM, DICTIONARY)
        with self.assertRaises(QgsProcessingException) as raised:
            processing.run("halvane:slope", {"INPUT": SAMPLE, "OUTPUT": out},
                           context=QgsProcessingContext(), feedback=QgsProcessingFeedback())
        self.assertIn("halvane was not found", str(raised.exception))
        # Its folder will do, even with no halvane on PATH.
        folder = os.path.dirname(shutil.which("halvane"))
        path = os.environ["PATH"]
        self.addCleanup(os.environ.__setitem__, "PATH", path)
        os.environ["PATH"] = "/usr/bin:/bin"
        ProcessingConfig.setSettingValue(SETTING_PROGRAM, folder)
        processing.run("halvane:slope", {"INPUT": SAMPLE, "OUTPUT": out},
                       context=QgsProcessingContext(), feedback=QgsProcessingFeedback())
        self.assertTrue(os.path.isfile(out))

    def test_rings_that_are_not_rings_are_refused_before_running(self):
        out = os.path.join(self.dir.name, "bpi.tif")
        with self.assertRaises(QgsProcessingException) as raised:
            processing.run("halvane:bpi", {"INPUT": SAMPLE, "INNER": 4, "OUTER": 4, "OUTPUT": out},
                           context=QgsProcessingContext(), feedback=QgsProcessingFeedback())
        self.assertIn("must exceed", str(raised.exception))


if __name__ == "__main__":
    result = unittest.main(exit=False).result
    sys.stdout.flush()
    sys.stderr.flush()
    HOLD.cleanup()
    # The bindings crash while the interpreter tears them down; the verdict is in.
    os._exit(0 if result.wasSuccessful() else 1)
