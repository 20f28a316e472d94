"""Halvane's Processing provider for QGIS."""


def classFactory(iface):  # QGIS's entry point
    from .plugin import HalvanePlugin
    return HalvanePlugin(iface)
