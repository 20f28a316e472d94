"""Screenshots of the QGIS plugin for the README: the classify algorithm's
dialog, and its zone grid in a map with the legend of its classes. Run by
scripts/qgis-screenshots.sh under Xvfb.
   qgis-screenshots.py SAMPLE DICTIONARY OUT_FOLDER"""

import os
import sys
import tempfile

SAMPLE, DICTIONARY, OUT = [os.path.abspath(a) for a in sys.argv[1:4]]
HERE = os.path.dirname(os.path.abspath(__file__))
sys.path.insert(0, os.path.join(HERE, "..", "qgis"))
sys.path.append("/usr/share/qgis/python/plugins")

from qgis.core import QgsApplication, QgsProject, QgsRasterLayer  # noqa: E402
from qgis.gui import QgsLayerTreeMapCanvasBridge, QgsLayerTreeView, QgsMapCanvas  # noqa: E402
from qgis.core import QgsLayerTreeModel  # noqa: E402
from qgis.PyQt.QtCore import Qt  # noqa: E402
from qgis.PyQt.QtWidgets import QHBoxLayout, QSplitter, QWidget  # noqa: E402

QgsApplication.setPrefixPath("/usr", True)
app = QgsApplication([], True)
app.initQgis()
app.setStyle("Fusion")

import processing  # noqa: E402
from processing.core.Processing import Processing  # noqa: E402
from processing.gui.AlgorithmDialog import AlgorithmDialog  # noqa: E402

from halvane.plugin import HalvanePlugin  # noqa: E402

Processing.initialize()
plugin = HalvanePlugin(None)
plugin.initProcessing()


def settle():
    for _ in range(20):
        app.processEvents()


def save(widget, name):
    path = os.path.join(OUT, name)
    image = widget.grab().toImage()
    # Few colours: an indexed PNG is a fraction of the size.
    image.convertToFormat(image.Format_Indexed8, Qt.ThresholdDither).save(path, "PNG", 0)
    print("%s: %d bytes" % (path, os.path.getsize(path)))


# The dialog, with the sample as its input.
QgsProject.instance().addMapLayer(QgsRasterLayer(SAMPLE, "bathymetry"))
algorithm = QgsApplication.processingRegistry().createAlgorithmById("halvane:classify")
dialog = AlgorithmDialog(algorithm)
dialog.resize(900, 640)
dialog.show()
settle()
save(dialog, "qgis-classify-dialog.png")
dialog.close()

# The result, loaded as the dialog loads it, in a map with its legend.
work = tempfile.mkdtemp(prefix="halvane-shots-")
processing.runAndLoadResults("halvane:classify", {
    "INPUT": SAMPLE, "DICTIONARY": DICTIONARY, "OUTPUT": os.path.join(work, "zones.tif")})
zones = [l for l in QgsProject.instance().mapLayers().values() if l.source().startswith(work)][0]
zones.setName("Zones")
QgsProject.instance().removeMapLayers([l.id() for l in QgsProject.instance().mapLayers().values()
                                       if l is not zones])

window = QWidget()
layout = QHBoxLayout(window)
splitter = QSplitter()
model = QgsLayerTreeModel(QgsProject.instance().layerTreeRoot())
legend = QgsLayerTreeView()
legend.setModel(model)
canvas = QgsMapCanvas()
canvas.setCanvasColor(Qt.white)
QgsLayerTreeMapCanvasBridge(QgsProject.instance().layerTreeRoot(), canvas)
canvas.setDestinationCrs(zones.crs())
canvas.setLayers([zones])
canvas.setExtent(zones.extent())
splitter.addWidget(legend)
splitter.addWidget(canvas)
splitter.setSizes([260, 520])
layout.addWidget(splitter)
window.resize(800, 520)
window.show()
legend.expandAll()
canvas.refresh()
canvas.waitWhileRendering()
settle()
canvas.waitWhileRendering()
settle()
save(window, "qgis-zones.png")
sys.stdout.flush()
os._exit(0)
