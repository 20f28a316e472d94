#pragma once
// Commands over the classification: the wizard's whole route from a
// bathymetric grid to the zone grid, and a dictionary printed as a table.

#include <cstdint>
#include <functional>
#include <ostream>
#include <string>
#include <vector>

#include "apps/CommandLine.h"
#include "platform/raster/Fwd.h"

namespace halvane::apps {

int RunClassify(const Arguments& arguments);
int RunDictionary(const Arguments& arguments);

// What the wizard's pages would be given on the way to a zone grid. Radii are
// in cells and kept as typed: they go into the expressions as text.
struct ClassifyRoute {
    std::string input;  // an absolute path
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

// The names of the stages of a route, as their bars show them.
std::vector<std::string> RouteStageNames(const ClassifyRoute& route);

// A zone grid's table: class, zone (from g_dict_Zones, by value) and cells.
struct ZoneSummary {
    struct Row {
        std::int32_t value;
        std::string zone;
        std::int64_t cells;
    };
    std::string input, path;
    std::vector<Row> zones;
    double cellKm2;
};
ZoneSummary SummaryOf(const std::string& input, const raster::RasterDatasetPtr& zones);

enum class TableFormat { Text, Json, Csv };
// --format: table (the default), json or csv.
TableFormat FormatOf(const Arguments& arguments);

// The zone tables of the inputs: class, zone, cells, the share of the cells
// with a zone in percent, and their area in km2; as one text table (with an
// input column when there are several), a JSON array of one object per input,
// or CSV rows.
void PrintZones(std::ostream& out, const std::vector<ZoneSummary>& summaries, TableFormat format);

}  // namespace halvane::apps
