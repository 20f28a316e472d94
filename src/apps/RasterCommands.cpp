#include "apps/RasterCommands.h"

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <iostream>
#include <optional>
#include <sstream>

#include "engine/RasterAccess.h"
#include "platform/runtime/Text.h"
#include "host/ErrorHandling.h"
#include "host/modProgDialog.h"
#include "platform/runtime/Convert.h"
#include "platform/ui/ConsoleServices.h"

namespace halvane::apps {
namespace {

// The grid a path names: a raster file or a grid folder.
raster::RasterPtr OpenInput(const std::string& path) {
    return raster::RasterDataset::Open(path)->CreateDefaultRaster();
}

// Saves a result the way the system saves every grid.
bool Save(const raster::RasterPtr& result, const std::string& folder, const std::string& name) {
    std::filesystem::create_directories(folder);
    MakePerminentGrid(result, folder, name);
    std::cout << (std::filesystem::path(folder) / (name + ".tif")).string() << "\n";
    return true;
}

std::string Number(double value) {
    char text[40];
    std::snprintf(text, sizeof text, "%.17g", value);
    return text;
}

// The items that tell where a grid came from: the writer, the date, and ours.
std::vector<std::pair<std::string, std::string>> Provenance(const raster::RasterDataset& dataset) {
    std::vector<std::pair<std::string, std::string>> items;
    for (auto& [key, value] : dataset.StoredItems()) {
        if (key == "TIFFTAG_SOFTWARE" || key == "TIFFTAG_DATETIME" ||
            key.rfind("HALVANE_", 0) == 0) {
            items.emplace_back(key, value);
        }
    }
    return items;
}

}  // namespace

std::function<std::unique_ptr<ui::ConsoleServices>()>& RunConsole() {
    static std::function<std::unique_ptr<ui::ConsoleServices>()> maker;
    return maker;
}

int RunReported(const std::string& command, bool trace, const std::function<bool()>& body) {
    const std::unique_ptr<ui::ConsoleServices> console =
        RunConsole() ? RunConsole()() : std::make_unique<ui::ConsoleServices>();
    // The engine's passes get a bar of their own: the stages' progress dialog
    // shows the stages' steps and nothing else.
    const std::shared_ptr<ui::ConsoleBar> passes = console->NewBar("halvane " + command);
    passes->MaxRange(100);
    raster::EvalSettings& settings = raster::Settings();
    int shown = -1;
    settings.onProgress = [&](std::int64_t done, std::int64_t total) {
        const int percent = static_cast<int>(100 * done / total);
        if (percent == shown) return;
        shown = percent;
        passes->Position(percent);
        passes->Message("Computing");
    };
    const int status = RunReported(*console, command, trace, body);
    settings.onProgress = nullptr;
    passes->HideDialog();
    return status;
}

int RunReported(ui::ConsoleServices& console, const std::string& command, bool trace,
                const std::function<bool()>& body) {
    ui::ServicesScope scope(console);
    if (trace) raster::Journal() = [](const std::string& line) { std::cerr << line << "\n"; };
    // A window kept from an earlier run in this process would count for that run.
    ErrorHandling::ReleaseErrorWindow();
    const bool succeeded = Guarded({"halvane", command.c_str(), kTopLevel}, body);
    raster::Journal() = nullptr;
    CloseProgress();
    ErrorHandling::ReleaseErrorWindow();
    // The stages report their own failures and go on, as they do for a page.
    return succeeded && console.ReportsShown() == 0 ? 0 : 1;
}

int RunCalc(const Arguments& arguments) {
    const std::string folder = arguments.Required("--workdir");
    const std::string name = arguments.Required("--name");
    if (arguments.positional.size() != 1) throw UsageError{"give exactly one expression"};
    std::vector<std::pair<std::string, std::string>> bindings;
    for (auto [it, end] = arguments.options.equal_range("--bind"); it != end; ++it) {
        const std::size_t equals = it->second.find('=');
        if (equals == std::string::npos || equals == 0) {
            throw UsageError{"--bind takes NAME=PATH, not '" + it->second + "'"};
        }
        bindings.emplace_back(it->second.substr(0, equals), it->second.substr(equals + 1));
    }
    return RunReported("calc", arguments.Has("--trace"), [&] {
        // The output workspace must exist before it is opened; Save would make it too late.
        std::filesystem::create_directories(folder);
        raster::RasterMapAlgebraOp op;
        op.OutWorkspace(nuWS_PathOpenIRasterWorkspace(folder));
        for (const auto& [bound, path] : bindings) op.BindRaster(OpenInput(path), bound);
        return Save(op.Execute(arguments.positional[0]), folder, name);
    });
}

int RunSlope(const Arguments& arguments) {
    const std::string folder = arguments.Required("--workdir");
    const std::string name = arguments.Required("--name");
    if (arguments.positional.size() != 1) throw UsageError{"give exactly one input grid"};
    return RunReported("slope", arguments.Has("--trace"), [&] {
        return Save(raster::RasterSurfaceOp().Slope(OpenInput(arguments.positional[0]), 1), folder,
                    name);
    });
}

int RunInfo(const Arguments& arguments) {
    if (arguments.positional.size() != 1) throw UsageError{"give exactly one grid"};
    const bool json = arguments.Has("--json");
    return RunReported("info", false, [&] {
        raster::RasterPtr raster = OpenInput(arguments.positional[0]);
        const raster::Grid& grid = raster->GetGrid();
        const raster::Envelope extent = raster->Extent();
        const std::shared_ptr<raster::RasterBand> band = raster->Item(0);
        const raster::RasterStatistics& statistics = band->Statistics();
        const std::int64_t noData = grid.Cells() - statistics.validCells;
        const bool hasValues = statistics.validCells > 0;
        const std::string reference = raster->SpatialReferenceName();
        const std::optional<int> epsg = raster->EpsgCode();
        const bool named =
            band->HasTable() && std::ranges::any_of(band->AttributeTable(), [](const auto& row) {
                return !row.Class_Name.empty();
            });
        const auto provenance = Provenance(*band->RasterDataset());
        std::ostringstream out;
        if (json) {
            out << "{\"columns\": " << grid.cols << ", \"rows\": " << grid.rows
                << ", \"cell_size\": [" << Number(grid.cellX) << ", " << Number(grid.cellY)
                << "], \"extent\": [" << Number(extent.XMin) << ", " << Number(extent.YMin) << ", "
                << Number(extent.XMax) << ", " << Number(extent.YMax) << "], \"type\": \""
                << (raster->IsInteger() ? "integer" : "floating")
                << "\", \"projected\": " << (raster->IsProjected() ? "true" : "false")
                << ", \"crs\": ";
            if (reference.empty()) {
                out << "null";
            } else {
                out << "{\"name\": " << runtime::JsonString(reference)
                    << ", \"epsg\": " << (epsg ? std::to_string(*epsg) : "null") << "}";
            }
            out << ", \"nodata_cells\": " << noData
                << ", \"mean\": " << (hasValues ? Number(statistics.Mean) : "null")
                << ", \"stddev\": " << (hasValues ? Number(statistics.StandardDeviation) : "null")
                << ", \"table\": ";
            if (band->HasTable()) {
                out << "[";
                const char* separator = "";
                for (const raster::AttributeRow& row : band->AttributeTable()) {
                    out << separator << "[" << row.Value << ", " << row.Count << "]";
                    separator = ", ";
                }
                out << "]";
            } else {
                out << "null";
            }
            out << ", \"classes\": ";
            if (named) {
                out << "[";
                const char* separator = "";
                for (const raster::AttributeRow& row : band->AttributeTable()) {
                    out << separator << "[" << row.Value << ", " << runtime::JsonString(row.Class_Name) << "]";
                    separator = ", ";
                }
                out << "]";
            } else {
                out << "null";
            }
            out << ", \"provenance\": {";
            const char* separator = "";
            for (const auto& [key, value] : provenance) {
                out << separator << runtime::JsonString(key) << ": " << runtime::JsonString(value);
                separator = ", ";
            }
            out << "}}\n";
        } else {
            out << "columns       " << grid.cols << "\nrows          " << grid.rows
                << "\ncell size     " << runtime::CStr(grid.cellX) << " x "
                << runtime::CStr(grid.cellY) << "\nextent        " << runtime::CStr(extent.XMin)
                << " " << runtime::CStr(extent.YMin) << " " << runtime::CStr(extent.XMax) << " "
                << runtime::CStr(extent.YMax) << "\ntype          "
                << (raster->IsInteger() ? "integer" : "floating") << "\nprojected     "
                << (raster->IsProjected() ? "yes" : "no") << "\nreference     "
                << (reference.empty() ? "-" : reference)
                << (epsg ? " (EPSG:" + std::to_string(*epsg) + ")" : "") << "\nNoData cells  "
                << noData << "\nmean          "
                << (hasValues ? runtime::CStr(statistics.Mean) : "-") << "\nstddev        "
                << (hasValues ? runtime::CStr(statistics.StandardDeviation) : "-") << "\n";
            if (band->HasTable()) {
                out << "table         value  count\n";
                for (const raster::AttributeRow& row : band->AttributeTable()) {
                    out << "              " << row.Value << "  " << row.Count
                        << (named ? "  " + row.Class_Name : "") << "\n";
                }
            }
            for (const auto& [key, value] : provenance) out << key << "  " << value << "\n";
        }
        std::cout << out.str();
        return true;
    });
}

}  // namespace halvane::apps
