"""The Processing provider "Halvane" and its setting: where `halvane` is."""

import os

from qgis.core import QgsProcessingProvider
from qgis.PyQt.QtGui import QIcon

from .algorithms import ALGORITHMS, SETTING_PROGRAM

ICON = os.path.join(os.path.dirname(__file__), "icon.svg")


class HalvaneProvider(QgsProcessingProvider):
    def id(self) -> str:
        return "halvane"

    def name(self) -> str:
        return "Halvane"

    def longName(self) -> str:
        return "Halvane seafloor classification"

    def icon(self) -> QIcon:
        return QIcon(ICON)

    def svgIconPath(self) -> str:
        return ICON

    def load(self) -> bool:
        # The setting shows under Processing > Providers > Halvane in the options.
        from processing.core.ProcessingConfig import ProcessingConfig, Setting
        ProcessingConfig.settingIcons[self.name()] = self.icon()
        ProcessingConfig.addSetting(Setting(
            self.name(), SETTING_PROGRAM,
            "Path to halvane (empty: the one on PATH)", "", valuetype=Setting.FILE))
        ProcessingConfig.readSettings()
        self.refreshAlgorithms()
        return True

    def unload(self) -> None:
        from processing.core.ProcessingConfig import ProcessingConfig
        if SETTING_PROGRAM in ProcessingConfig.settings:
            ProcessingConfig.removeSetting(SETTING_PROGRAM)

    def loadAlgorithms(self) -> None:
        for algorithm in ALGORITHMS:
            self.addAlgorithm(algorithm())

    def supportedOutputRasterLayerExtensions(self):
        return ["tif"]

    def defaultRasterFileExtension(self) -> str:
        return "tif"
