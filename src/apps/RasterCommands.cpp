#include "apps/RasterCommands.h"

#include <signal.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <exception>
#include <filesystem>
#include <iostream>
#include <optional>
#include <sstream>

#include "apps/WorkFolder.h"
#include "engine/RasterAccess.h"
#include "platform/raster/Team.h"
#include "platform/reporting/ErrorHandling.h"
#include "platform/reporting/modProgDialog.h"
#include "platform/runtime/Convert.h"
#include "platform/runtime/Text.h"

namespace halvane::apps {
namespace {

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

std::ostream*& RunConsole() {
    static std::ostream* stream = nullptr;
    return stream;
}

void CommandRun::NextStage() {
    if (stage_ < plan_.stages.size()) bars_.Begin(plan_.stages[stage_++]);
}

void CommandRun::CheckInput(const std::string& path) {
    std::error_code error;
    const std::filesystem::file_status status = std::filesystem::status(path, error);
    if (!std::filesystem::exists(status)) Fail(path + ": no such file or folder");
    if (std::filesystem::is_regular_file(status) && std::filesystem::file_size(path, error) == 0) {
        Fail(path + ": the file is empty, not a grid");
    }
    if (!raster::IsRaster(path)) Fail(path + ": not a raster that GDAL can read");
}

raster::RasterPtr OpenInput(CommandRun& run, const std::string& path) {
    run.CheckInput(path);
    return raster::RasterDataset::Open(path)->CreateDefaultRaster();
}

namespace {

void OnStopSignal(int signal) {
    // A second signal does not wait for the run to wind up.
    if (reporting::StopRequested() != 0) ::_exit(128 + signal);
    reporting::RequestStop(signal);
}

// SIGINT and SIGTERM ask the run to stop while it lives.
class StopSignals {
public:
    StopSignals() {
        reporting::ClearStopRequest();
        struct sigaction action {};
        action.sa_handler = OnStopSignal;
        sigemptyset(&action.sa_mask);
        ::sigaction(SIGINT, &action, &interrupt_);
        ::sigaction(SIGTERM, &action, &terminate_);
    }
    ~StopSignals() {
        ::sigaction(SIGINT, &interrupt_, nullptr);
        ::sigaction(SIGTERM, &terminate_, nullptr);
        reporting::ClearStopRequest();
    }
    StopSignals(const StopSignals&) = delete;
    StopSignals& operator=(const StopSignals&) = delete;

private:
    struct sigaction interrupt_ = {};
    struct sigaction terminate_ = {};
};

const char* SignalName(int signal) {
    return signal == SIGINT ? "SIGINT" : signal == SIGTERM ? "SIGTERM" : "a signal";
}

}  // namespace

namespace {

// The process that speaks for the run: the only one alone, the first of a team.
bool LeadsRun() { return !raster::InTeam() || raster::CurrentTeam()->Rank() == 0; }

// In a team, whether every process is ready to run; alone, `ready`.
bool AllReady(bool ready) {
    if (!raster::InTeam()) return ready;
    try {
        const auto all = raster::Exchange(ready ? "" : "not ready");
        return std::ranges::all_of(all, [](const std::string& s) { return s.empty(); });
    } catch (const runtime::Failure&) {
        return false;
    }
}

}  // namespace

int RunReported(const Arguments& arguments, const RunPlan& plan,
                const std::function<bool(CommandRun&)>& body) {
    const bool lead = LeadsRun();
    raster::LeftBehind() = false;
    // The first process of a team speaks for the run; what the others would
    // tell goes to it at the end.
    std::ostringstream told;
    std::ostream& out = !lead ? told : RunConsole() ? *RunConsole() : std::cerr;
    const reporting::CommandLineStyle style{plan.command, arguments.Has("--trace"),
                                            arguments.Has("--quiet") || !lead,
                                            lead && !RunConsole() && isatty(STDERR_FILENO) != 0};
    StopSignals signals;
    std::optional<WorkFolderRun> folder;
    reporting::StageBars bars(out, style, static_cast<int>(plan.stages.size()));
    reporting::CommandLineServices console(out, style, bars);
    ui::ServicesScope scope(console);
    CommandRun run(plan, bars, console);
    raster::EvalSettings& settings = raster::Settings();
    settings.onProgress = [&](std::int64_t done, std::int64_t total) { bars.Pass(done, total); };
    if (style.trace) raster::Journal() = [&out](const std::string& line) { out << line << "\n"; };
    // A window kept from an earlier run in this process would count for that run.
    ErrorHandling::ReleaseErrorWindow();
    bool succeeded = false;
    int stoppedBy = 0;
    // What the run prints comes after its last bar, and only when it succeeded:
    // the paths of grids rolled back would name nothing.
    std::ostringstream results;
    std::streambuf* const standardOut = std::cout.rdbuf(results.rdbuf());
    try {
        // The first process of a team keeps the working folder for all: the
        // others' temporaries are in it, and a failure rolls back theirs too.
        std::exception_ptr unready;
        try {
            if (lead && !plan.workFolder.empty()) folder.emplace(plan.workFolder);
        } catch (...) {
            unready = std::current_exception();
        }
        const bool ready = AllReady(!unready);
        if (unready) std::rethrow_exception(unready);
        if (ready) {
            succeeded =
                Guarded({"halvane", plan.command.c_str(), kTopLevel}, [&] { return body(run); });
        }
        reporting::ThrowIfStopped();
        if (succeeded) {
            bars.End();
        } else if (console.Failures() == 0) {
            console.Fail("the run failed");
        }
    } catch (const runtime::RunStopped& stop) {
        stoppedBy = stop.signal;
        succeeded = false;
    } catch (const std::filesystem::filesystem_error& error) {
        // The working folder itself could not be made or noted.
        out << "halvane " << plan.command << ": " << error.path1().string() << ": "
            << error.code().message() << "\n";
        succeeded = false;
    }
    std::cout.rdbuf(standardOut);
    settings.onProgress = nullptr;
    raster::Journal() = nullptr;
    CloseProgress();
    ErrorHandling::ReleaseErrorWindow();
    bars.Stop();
    if (raster::InTeam()) {
        // Every process ends here, whatever it met; the first tells what the
        // others met that it could not know of. A process that failed reports
        // what it would have told, after "!", or "~" when its failure only
        // echoes another's.
        const std::string mark = raster::LeftBehind() ? "~" : "!";
        const auto reports = raster::EndTogether(succeeded ? "" : mark + told.str());
        auto failed = std::ranges::find_if(reports.begin() + 1, reports.end(),
                                           [](const std::string& r) { return r[0] == '!'; });
        if (failed == reports.end()) {
            failed = std::ranges::find_if(reports.begin() + 1, reports.end(),
                                          [](const std::string& r) { return !r.empty(); });
        }
        if (lead && failed != reports.end() && (succeeded || raster::LeftBehind())) {
            if (failed->size() > 1) {
                out << failed->substr(1);
            } else {
                out << "halvane " << plan.command << ": another process of the run failed\n";
            }
            succeeded = false;
        }
    }
    if (folder) {
        if (succeeded) {
            folder->Keep();
        } else if (!folder->RollBack()) {
            out << "halvane " << plan.command << ": " << plan.workFolder
                << ": not everything the run wrote could be removed\n";
        }
    }
    if (succeeded && lead) std::cout << results.str() << std::flush;
    if (stoppedBy != 0) {
        out << "halvane " << plan.command << ": stopped by " << SignalName(stoppedBy)
            << (folder ? "; the working folder is as it was" : "") << "\n";
        return 128 + stoppedBy;
    }
    return succeeded ? 0 : 1;
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
    return RunReported(arguments, {"calc", folder, {"Map algebra"}}, [&](CommandRun& run) {
        // The output workspace must exist before it is opened; Save would make it too late.
        std::filesystem::create_directories(folder);
        raster::RasterMapAlgebraOp op;
        op.OutWorkspace(nuWS_PathOpenIRasterWorkspace(folder));
        for (const auto& [bound, path] : bindings) op.BindRaster(OpenInput(run, path), bound);
        const raster::RasterPtr result = op.Execute(arguments.positional[0]);
        run.NextStage();
        return Save(result, folder, name);
    });
}

int RunSlope(const Arguments& arguments) {
    const std::string folder = arguments.Required("--workdir");
    const std::string name = arguments.Required("--name");
    if (arguments.positional.size() != 1) throw UsageError{"give exactly one input grid"};
    return RunReported(arguments, {"slope", folder, {"Slope in degrees"}}, [&](CommandRun& run) {
        const raster::RasterPtr input = OpenInput(run, arguments.positional[0]);
        run.NextStage();
        return Save(raster::RasterSurfaceOp().Slope(input, 1), folder, name);
    });
}

int RunInfo(const Arguments& arguments) {
    if (arguments.positional.size() != 1) throw UsageError{"give exactly one grid"};
    const bool json = arguments.Has("--json");
    return RunReported(arguments, {"info", "", {}}, [&](CommandRun& run) {
        raster::RasterPtr raster = OpenInput(run, arguments.positional[0]);
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
                    out << separator << "[" << row.Value << ", "
                        << runtime::JsonString(row.Class_Name) << "]";
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
