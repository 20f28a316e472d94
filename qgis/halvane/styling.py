"""The zone grid as a paletted layer named after the dictionary's classes."""

from typing import List, Tuple

from osgeo import gdal
from qgis.core import (
    QgsPalettedRasterRenderer,
    QgsProcessingLayerPostProcessorInterface,
    QgsRasterLayer,
)
from qgis.PyQt.QtGui import QColor

Zone = Tuple[int, str, Tuple[int, int, int]]


def zone_classes(path: str) -> List[Zone]:
    """Value, name and colour of each class the zone grid stores: from its
    attribute table, else from its category names and colour table."""
    dataset = gdal.Open(path)
    if dataset is None:
        return []
    band = dataset.GetRasterBand(1)
    rat = band.GetDefaultRAT()
    if rat is not None and rat.GetRowCount() > 0:
        columns = {rat.GetNameOfCol(i): i for i in range(rat.GetColumnCount())}
        if {"Value", "Class_Name", "Red", "Green", "Blue"} <= set(columns):
            return [(rat.GetValueAsInt(r, columns["Value"]),
                     rat.GetValueAsString(r, columns["Class_Name"]),
                     tuple(rat.GetValueAsInt(r, columns[c]) for c in ("Red", "Green", "Blue")))
                    for r in range(rat.GetRowCount())]
    names = band.GetCategoryNames() or []
    table = band.GetColorTable()
    zones = []
    for value, name in enumerate(names):
        if name:
            entry = table.GetColorEntry(value) if table and value < table.GetCount() else (128, 128, 128)
            zones.append((value, name, tuple(entry[:3])))
    return zones


def style_zones(layer: QgsRasterLayer) -> bool:
    """Shows the layer one colour per class, labelled with the class names.
    False when the grid stores no classes."""
    zones = zone_classes(layer.source())
    if not zones:
        return False
    classes = [QgsPalettedRasterRenderer.Class(value, QColor(*rgb), name) for value, name, rgb in zones]
    layer.setRenderer(QgsPalettedRasterRenderer(layer.dataProvider(), 1, classes))
    layer.triggerRepaint()
    return True


class ZonePostProcessor(QgsProcessingLayerPostProcessorInterface):
    # Processing keeps a bare pointer to the post-processor: the Python object
    # must outlive the run, so every one made is kept here.
    _made: List["ZonePostProcessor"] = []

    @classmethod
    def create(cls) -> "ZonePostProcessor":
        made = cls()
        cls._made.append(made)
        return made

    def postProcessLayer(self, layer, context, feedback):
        if isinstance(layer, QgsRasterLayer) and not style_zones(layer):
            feedback.reportError("%s holds no zone classes" % layer.source())
