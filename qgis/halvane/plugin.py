from qgis.core import QgsApplication

from .provider import HalvaneProvider


class HalvanePlugin:
    """Registers the provider; the desktop calls initGui, qgis_process only
    initProcessing, and either may come first."""

    def __init__(self, iface=None) -> None:
        self.iface = iface
        self.provider = None

    def initProcessing(self) -> None:
        if self.provider is None:
            self.provider = HalvaneProvider()
            QgsApplication.processingRegistry().addProvider(self.provider)

    def initGui(self) -> None:
        self.initProcessing()

    def unload(self) -> None:
        if self.provider is not None:
            QgsApplication.processingRegistry().removeProvider(self.provider)
            self.provider = None
