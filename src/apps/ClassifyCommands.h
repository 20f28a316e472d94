#pragma once
// Commands over the classification: the wizard's whole route from a
// bathymetric grid to the zone grid, and a dictionary printed as a table.

#include <functional>
#include <ostream>
#include <string>

#include "apps/CommandLine.h"
#include "platform/raster/Fwd.h"

namespace halvane::apps {

int RunClassify(const Arguments& arguments);
int RunDictionary(const Arguments& arguments);

// What the wizard's pages would be given on the way to a zone grid. Radii are
// in cells and kept as typed: they go into the expressions as text.
struct ClassifyRoute {
    std::string input;       // an absolute path
    std::string workDir;
    std::string dictionary;  // an absolute path
    std::string output = "ZONES";
    std::string broadInner = "1", broadOuter = "5";
    std::string fineInner = "1", fineOuter = "3";
    std::string cellSize;  // resample first to this cell size, unless empty
    std::string method = "Cubic Convolution";
};

// The stages of the route, in order, as `onStage` is told of them.
enum class RouteStage { Resample, BroadBpi, FineBpi, Standardize, Zones };

// Runs the route through the pages' procedures and session record: the setup
// page's projection check, resampling, both position indices, their
// standardization, and the final page's Finish. The zone grid is then
// g_p_OutputRasterDataset and its labels g_dict_Zones. False when a stage
// failed (it has reported) or a check stopped the run. Run it under
// RunReported, which shows what the stages report.
bool RunClassifyRoute(const ClassifyRoute& route,
                      const std::function<void(RouteStage)>& onStage = {});

// The zone grid's table: class, zone (from g_dict_Zones, by value), cells, the
// share of the cells with a zone in percent, and their area in km2.
void PrintZones(std::ostream& out, const raster::RasterDatasetPtr& zones);

}  // namespace halvane::apps
