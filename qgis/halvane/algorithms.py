"""The Processing algorithms: one per command of `halvane` that makes grids."""

import os
from typing import Dict, List, Optional, Tuple

from qgis.core import (
    QgsProcessingAlgorithm,
    QgsProcessingContext,
    QgsProcessingException,
    QgsProcessingFeedback,
    QgsProcessingParameterDefinition,
    QgsProcessingParameterEnum,
    QgsProcessingParameterFile,
    QgsProcessingParameterNumber,
    QgsProcessingParameterRasterDestination,
    QgsProcessingParameterRasterLayer,
    QgsProcessingParameterString,
    QgsProviderRegistry,
    QgsRasterLayer,
)

from . import runner
from .styling import ZonePostProcessor

SETTING_PROGRAM = "HALVANE_PROGRAM"

# The resampling methods as the command line takes them (its own spelling),
# and as the dialog shows them.
METHODS = [
    ("Cubic Convolution", "Cubic convolution"),
    ("Bilinear Interoplation", "Bilinear interpolation"),
    ("Nearest Neighbor", "Nearest neighbour"),
]
SCALES = ["broad", "fine"]

RADII_HELP = (
    "Radii are counted in cells. The scale in metres is the radius times the "
    "cell size: on a grid of 10 m cells an outer radius of 5 cells is a 50 m "
    "scale. The log of a run gives the scales of its grid in metres."
)


def program_setting() -> Optional[str]:
    try:
        from processing.core.ProcessingConfig import ProcessingConfig
    except ImportError:  # Processing not loaded: the PATH decides
        return None
    value = ProcessingConfig.getSetting(SETTING_PROGRAM)
    return str(value).strip() if value else None


def grid_path(layer: Optional[QgsRasterLayer], what: str) -> str:
    """The file of a raster layer, as halvane opens it."""
    if layer is None:
        raise QgsProcessingException("no %s was given" % what)
    if layer.providerType() != "gdal":
        raise QgsProcessingException("%s is not a file grid (provider %s)" % (layer.name(), layer.providerType()))
    path = QgsProviderRegistry.instance().decodeUri("gdal", layer.source()).get("path", "")
    if not os.path.exists(path):
        raise QgsProcessingException("%s is not a local file: %s" % (layer.name(), layer.source()))
    return path


def cell_size(layer: QgsRasterLayer) -> float:
    return abs(layer.rasterUnitsPerPixelX())


def number(value: float) -> str:
    """A number as halvane reads it: no exponent, no trailing zeros."""
    text = ("%.10f" % value).rstrip("0").rstrip(".")
    return text if text not in ("", "-0") else "0"


class HalvaneAlgorithm(QgsProcessingAlgorithm):
    """Runs one command; subclasses say which, with what, and what it writes."""

    command = ""
    title = ""
    summary = ""
    group_name = "Grid tools"

    def name(self) -> str:
        return self.command

    def displayName(self) -> str:
        return self.title

    def group(self) -> str:
        return self.group_name

    def groupId(self) -> str:
        return self.group_name.lower().replace(" ", "")

    def shortHelpString(self) -> str:
        return self.summary + "<p>Runs <code>halvane %s</code>.</p>" % self.command

    def createInstance(self):
        return type(self)()

    def add_input(self, description: str = "Bathymetric grid") -> None:
        param = QgsProcessingParameterRasterLayer("INPUT", description)
        param.setHelp("A projected grid, read from its file.")
        self.addParameter(param)

    def add_output(self, name: str, description: str, optional: bool = False) -> None:
        param = QgsProcessingParameterRasterDestination(name, description, optional=optional,
                                                        createByDefault=not optional)
        self.addParameter(param)

    def arguments(self, parameters, context: QgsProcessingContext,
                  feedback: QgsProcessingFeedback) -> Tuple[List[str], Dict[str, str]]:
        """The command's arguments, and the grids it writes: their names in the
        working folder by output parameter."""
        raise NotImplementedError

    def processAlgorithm(self, parameters, context, feedback):
        setting = program_setting()
        program = runner.find_program(setting)
        if program is None:
            where = ("%s, named in the Processing options, is no program" % setting if setting
                     else "it is not on PATH")
            raise QgsProcessingException(
                "halvane was not found (%s): give its path in "
                "Settings > Options > Processing > Providers > Halvane" % where)
        args, grids = self.arguments(parameters, context, feedback)
        destinations = {}
        for output, grid in grids.items():
            if output in parameters and parameters[output] is None:
                continue  # an optional output that was not asked for
            path = self.parameterAsOutputLayer(parameters, output, context)
            if not path:
                continue
            if not path.lower().endswith(".tif"):
                raise QgsProcessingException("halvane writes GeoTIFF grids: %s is not a .tif" % path)
            destinations[output] = (grid, path)
        try:
            printed = runner.run(program, self.command, args,
                                 {grid: path for grid, path in destinations.values()}, feedback)
        except runner.HalvaneError as error:
            # Cancelled too: the outputs Processing would load were never written.
            raise QgsProcessingException(str(error))
        for line in printed:
            feedback.pushInfo(line)
        self.after_run(destinations, context)
        return {output: path for output, (_, path) in destinations.items()}

    def after_run(self, destinations, context: QgsProcessingContext) -> None:
        pass


def radius(name: str, description: str, default: int, minimum: int) -> QgsProcessingParameterNumber:
    param = QgsProcessingParameterNumber(name, description, QgsProcessingParameterNumber.Integer,
                                         default, False, minimum)
    param.setHelp(RADII_HELP)
    return param


def check_ring(inner: int, outer: int, which: str) -> None:
    if outer <= inner:
        raise QgsProcessingException("the %s outer radius (%d) must exceed its inner radius (%d)"
                                     % (which, outer, inner))


def report_scales(feedback, cell: float, rings: List[Tuple[str, int, int]]) -> None:
    for which, inner, outer in rings:
        feedback.pushInfo("%s scale: ring of %d to %d cells, %s to %s m at %s m cells"
                          % (which, inner, outer, number(inner * cell), number(outer * cell), number(cell)))


class Classify(HalvaneAlgorithm):
    command = "classify"
    title = "Classify seafloor zones"
    group_name = "Seafloor classification"
    summary = (
        "The whole classification of a projected bathymetric grid: optional "
        "resampling, the broad and fine bathymetric position indices, their "
        "standardization, slope, and the zone grid of a classification "
        "dictionary. The zone grid is loaded with the dictionary's class "
        "names and colours. " + RADII_HELP
    )

    def initAlgorithm(self, config=None):
        self.add_input()
        dictionary = QgsProcessingParameterFile("DICTIONARY", "Classification dictionary",
                                                extension="xml", optional=True)
        dictionary.setHelp("The XML dictionary of classes; the default one installed "
                           "with halvane when left empty.")
        self.addParameter(dictionary)
        self.addParameter(radius("BROAD_INNER", "Broad scale inner radius (cells)", 1, 0))
        self.addParameter(radius("BROAD_OUTER", "Broad scale outer radius (cells)", 5, 1))
        self.addParameter(radius("FINE_INNER", "Fine scale inner radius (cells)", 1, 0))
        self.addParameter(radius("FINE_OUTER", "Fine scale outer radius (cells)", 3, 1))
        resample = QgsProcessingParameterNumber("RESAMPLE", "Resample first to this cell size (m)",
                                                QgsProcessingParameterNumber.Double, None, True, 0.0)
        resample.setHelp("Empty: the grid is classified at its own cell size.")
        self.addParameter(resample)
        method = QgsProcessingParameterEnum("METHOD", "Resampling method", [m[1] for m in METHODS],
                                            defaultValue=0)
        method.setFlags(method.flags() | QgsProcessingParameterDefinition.FlagAdvanced)
        self.addParameter(method)
        self.add_output("OUTPUT", "Zones")
        self.add_output("SLOPE", "Slope", optional=True)
        self.add_output("RESAMPLED", "Resampled grid", optional=True)

    def arguments(self, parameters, context, feedback):
        layer = self.parameterAsRasterLayer(parameters, "INPUT", context)
        source = grid_path(layer, "bathymetric grid")
        radii = [self.parameterAsInt(parameters, p, context)
                 for p in ("BROAD_INNER", "BROAD_OUTER", "FINE_INNER", "FINE_OUTER")]
        check_ring(radii[0], radii[1], "broad")
        check_ring(radii[2], radii[3], "fine")
        args = ["--broad", "%d,%d" % tuple(radii[:2]), "--fine", "%d,%d" % tuple(radii[2:])]
        dictionary = self.parameterAsFile(parameters, "DICTIONARY", context)
        if dictionary:
            args += ["--dictionary", dictionary]
        cell = cell_size(layer)
        resample = parameters.get("RESAMPLE")
        if resample is not None and resample != "":
            size = self.parameterAsDouble(parameters, "RESAMPLE", context)
            if size <= 0:
                raise QgsProcessingException("the cell size to resample to must be positive")
            method = METHODS[self.parameterAsEnum(parameters, "METHOD", context)][0]
            args += ["--resample", number(size), "--method", method]
            cell = size
        report_scales(feedback, cell, [("broad", radii[0], radii[1]), ("fine", radii[2], radii[3])])
        args += ["--name", "ZONES", source]
        return args, {"OUTPUT": "ZONES", "SLOPE": "SLOPE", "RESAMPLED": "ZONES_res"}

    def processAlgorithm(self, parameters, context, feedback):
        resample = parameters.get("RESAMPLE")
        if (resample is None or resample == "") and parameters.get("RESAMPLED") not in (None, ""):
            # Without resampling there is no resampled grid to give.
            parameters = dict(parameters)
            parameters["RESAMPLED"] = None
        return super().processAlgorithm(parameters, context, feedback)

    def after_run(self, destinations, context):
        if "OUTPUT" in destinations and context.willLoadLayerOnCompletion(destinations["OUTPUT"][1]):
            details = context.layerToLoadOnCompletionDetails(destinations["OUTPUT"][1])
            details.setPostProcessor(ZonePostProcessor.create())


class Bpi(HalvaneAlgorithm):
    command = "bpi"
    title = "Bathymetric position index"
    summary = ("Each cell's depth minus the mean depth of a ring of cells around it: "
               "positive on crests, negative in hollows. " + RADII_HELP)

    def initAlgorithm(self, config=None):
        self.add_input()
        self.addParameter(radius("INNER", "Inner radius (cells)", 1, 0))
        self.addParameter(radius("OUTER", "Outer radius (cells)", 5, 1))
        scale = QgsProcessingParameterEnum("SCALE", "Scale", SCALES, defaultValue=0)
        scale.setHelp("Which of the classification's two scales the grid stands for.")
        self.addParameter(scale)
        self.add_output("OUTPUT", "BPI")

    def arguments(self, parameters, context, feedback):
        layer = self.parameterAsRasterLayer(parameters, "INPUT", context)
        inner = self.parameterAsInt(parameters, "INNER", context)
        outer = self.parameterAsInt(parameters, "OUTER", context)
        check_ring(inner, outer, "")
        scale = SCALES[self.parameterAsEnum(parameters, "SCALE", context)]
        report_scales(feedback, cell_size(layer), [(scale, inner, outer)])
        return (["--inner", str(inner), "--outer", str(outer), "--scale", scale, "--name", "BPI",
                 grid_path(layer, "bathymetric grid")], {"OUTPUT": "BPI"})


class Standardize(HalvaneAlgorithm):
    command = "standardize"
    title = "Standardize BPI"
    summary = ("A bathymetric position index as 100 times its z-score (its departure "
               "from the grid's mean in standard deviations), so that the two scales compare.")

    def initAlgorithm(self, config=None):
        self.add_input("BPI grid")
        scale = QgsProcessingParameterEnum("SCALE", "Scale", SCALES, defaultValue=0)
        scale.setHelp("The scale the BPI grid was made at.")
        self.addParameter(scale)
        self.add_output("OUTPUT", "Standardized BPI")

    def arguments(self, parameters, context, feedback):
        layer = self.parameterAsRasterLayer(parameters, "INPUT", context)
        scale = SCALES[self.parameterAsEnum(parameters, "SCALE", context)]
        return (["--scale", scale, "--name", "STD", grid_path(layer, "BPI grid")], {"OUTPUT": "STD"})


class Slope(HalvaneAlgorithm):
    command = "slope"
    title = "Slope"
    summary = "The slope of each cell in degrees, from its eight neighbours (Horn's method)."

    def initAlgorithm(self, config=None):
        self.add_input()
        self.add_output("OUTPUT", "Slope")

    def arguments(self, parameters, context, feedback):
        layer = self.parameterAsRasterLayer(parameters, "INPUT", context)
        return ["--name", "SLOPE", grid_path(layer, "grid")], {"OUTPUT": "SLOPE"}


class Resample(HalvaneAlgorithm):
    command = "resample"
    title = "Resample"
    summary = "A grid at a new cell size, as the classification resamples it."

    def initAlgorithm(self, config=None):
        self.add_input("Grid")
        size = QgsProcessingParameterNumber("CELL_SIZE", "Cell size (m)",
                                            QgsProcessingParameterNumber.Double, 20.0, False, 0.0)
        size.setHelp("In the grid's own units, metres for a projected grid.")
        self.addParameter(size)
        self.addParameter(QgsProcessingParameterEnum("METHOD", "Method", [m[1] for m in METHODS],
                                                     defaultValue=0))
        self.add_output("OUTPUT", "Resampled")

    def arguments(self, parameters, context, feedback):
        layer = self.parameterAsRasterLayer(parameters, "INPUT", context)
        size = self.parameterAsDouble(parameters, "CELL_SIZE", context)
        if size <= 0:
            raise QgsProcessingException("the cell size must be positive")
        method = METHODS[self.parameterAsEnum(parameters, "METHOD", context)][0]
        return (["--name", "RESAMPLED", "--cell-size", number(size), "--method", method,
                 grid_path(layer, "grid")], {"OUTPUT": "RESAMPLED"})


class Rugosity(HalvaneAlgorithm):
    command = "rugosity"
    title = "Rugosity"
    summary = ("The true surface area of the eight triangles between each cell and its "
               "neighbours over the cell's planar area: 1 on flat ground, more where it is rough.")

    def initAlgorithm(self, config=None):
        self.add_input()
        self.add_output("OUTPUT", "Rugosity")

    def arguments(self, parameters, context, feedback):
        layer = self.parameterAsRasterLayer(parameters, "INPUT", context)
        return ["--name", "RUGOSITY", grid_path(layer, "grid")], {"OUTPUT": "RUGOSITY"}


class Calc(HalvaneAlgorithm):
    command = "calc"
    title = "Map algebra"
    summary = ("Evaluates one map algebra expression over up to four grids, bound as "
               "[a], [b], [c] and [d]: for instance <code>con([a] &gt; 5, 1, 0)</code>.")
    BOUND = ("a", "b", "c", "d")

    def initAlgorithm(self, config=None):
        expression = QgsProcessingParameterString("EXPRESSION", "Expression", "[a]")
        expression.setHelp("The grids below are [a], [b], [c] and [d] in it.")
        self.addParameter(expression)
        for i, bound in enumerate(self.BOUND):
            self.addParameter(QgsProcessingParameterRasterLayer(
                bound.upper(), "Grid [%s]" % bound, optional=i > 0))
        self.add_output("OUTPUT", "Result")

    def arguments(self, parameters, context, feedback):
        expression = self.parameterAsString(parameters, "EXPRESSION", context).strip()
        if not expression:
            raise QgsProcessingException("the expression is empty")
        args = ["--name", "CALC"]
        for bound in self.BOUND:
            layer = self.parameterAsRasterLayer(parameters, bound.upper(), context)
            if layer is not None:
                args += ["--bind", "%s=%s" % (bound, grid_path(layer, "grid [%s]" % bound))]
        return args + [expression], {"OUTPUT": "CALC"}


ALGORITHMS = [Classify, Bpi, Standardize, Slope, Resample, Rugosity, Calc]
