#include "apps/ClassifyCommands.h"

#include <filesystem>
#include <iomanip>
#include <iostream>
#include <set>
#include <sstream>

#include "apps/RasterCommands.h"
#include "classification/ZoneClassification.h"
#include "engine/Analysis.h"
#include "engine/RasterAccess.h"
#include "engine/Session.h"
#include "platform/raster/Storage.h"
#include "platform/reporting/modProgDialog.h"
#include "platform/runtime/Failure.h"
#include "platform/runtime/Text.h"

namespace halvane::apps {
using classification::clsXMLPrjFile;

namespace {

// "INNER,OUTER", each kept as typed: the radii go into the expression as text.
void RadiiOf(const Arguments& arguments, const std::string& option, std::string& inner,
             std::string& outer) {
    if (!arguments.Has(option)) return;
    const std::string text = arguments.Required(option);
    const std::size_t comma = text.find(',');
    if (comma == std::string::npos || comma == 0 || comma + 1 == text.size()) {
        throw UsageError{option + " takes INNER,OUTER, not '" + text + "'"};
    }
    inner = text.substr(0, comma);
    outer = text.substr(comma + 1);
    CheckRadii(option + " " + text, inner, outer);
}

// A failure of the route, told as the command line tells it.
[[noreturn]] void RouteFailure(const std::string& text) {
    throw runtime::Failure(runtime::kInvalidProcedureCall, "halvane", text);
}

}  // namespace

ZoneSummary SummaryOf(const std::string& input, const raster::RasterDatasetPtr& zones) {
    ZoneSummary summary{input, zones->Path(), {}, 0.0};
    const raster::Grid& grid = zones->CreateDefaultRaster()->GetGrid();
    summary.cellKm2 = grid.cellX * grid.cellY / 1e6;
    for (const raster::AttributeRow& row : zones->GetAttributeTable()) {
        // Labels are found by value, as on the map.
        std::string name = "(no class)";
        if (g_dict_Zones) {
            const auto found = g_dict_Zones->find(row.Value);
            if (found != g_dict_Zones->end()) name = found->second;
        }
        summary.zones.push_back({row.Value, name, row.Count});
    }
    return summary;
}

void PrintZones(std::ostream& stream, const std::vector<ZoneSummary>& summaries,
                TableFormat format) {
    // Formatted apart, so the caller's stream keeps its own settings.
    std::ostringstream out;
    const bool several = summaries.size() > 1;
    const auto share = [](std::int64_t cells, std::int64_t total) {
        return total > 0 ? 100.0 * static_cast<double>(cells) / static_cast<double>(total) : 0.0;
    };
    if (format == TableFormat::Csv) out << "input,class,zone,cells,share_percent,area_km2\n";
    if (format == TableFormat::Json) out << "[";
    const char* separator = "";
    for (const ZoneSummary& summary : summaries) {
        std::int64_t total = 0;
        for (const ZoneSummary::Row& row : summary.zones) total += row.cells;
        const auto area = [&](std::int64_t cells) {
            return static_cast<double>(cells) * summary.cellKm2;
        };
        const std::string input = std::filesystem::path(summary.input).stem().string();
        switch (format) {
            case TableFormat::Csv:
                for (const ZoneSummary::Row& row : summary.zones) {
                    std::string zone = row.zone;
                    if (zone.find_first_of(",\"") != std::string::npos) {
                        std::string quoted = "\"";
                        for (char c : zone)
                            quoted += c == '"' ? std::string("\"\"") : std::string(1, c);
                        zone = quoted + "\"";
                    }
                    out << summary.input << "," << row.value << "," << zone << "," << row.cells
                        << "," << std::fixed << std::setprecision(2) << share(row.cells, total)
                        << "," << std::setprecision(3) << area(row.cells) << "\n";
                }
                break;
            case TableFormat::Json:
                out << separator << "{\"input\": " << runtime::JsonString(summary.input)
                    << ", \"grid\": " << runtime::JsonString(summary.path)
                    << ", \"cells\": " << total << ", \"zones\": [";
                for (std::size_t i = 0; i < summary.zones.size(); ++i) {
                    const ZoneSummary::Row& row = summary.zones[i];
                    out << (i ? ", " : "") << "{\"class\": " << row.value
                        << ", \"zone\": " << runtime::JsonString(row.zone)
                        << ", \"cells\": " << row.cells << std::fixed << std::setprecision(2)
                        << ", \"share_percent\": " << share(row.cells, total)
                        << std::setprecision(3) << ", \"area_km2\": " << area(row.cells) << "}";
                }
                out << "]}";
                separator = ", ";
                break;
            case TableFormat::Text: {
                const auto line = [&](const std::string& value, const std::string& name,
                                      std::int64_t cells) {
                    if (several) out << std::left << std::setw(16) << input << "  ";
                    out << std::right << std::setw(5) << value << "  " << std::left << std::setw(28)
                        << name << std::right << std::setw(10) << cells << std::fixed
                        << std::setprecision(2) << std::setw(10) << share(cells, total)
                        << std::setprecision(3) << std::setw(12) << area(cells) << "\n";
                };
                if (separator[0] == '\0') {
                    if (several)
                        out << std::left << std::setw(16) << "input"
                            << "  ";
                    out << std::right << std::setw(5) << "class"
                        << "  " << std::left << std::setw(28) << "zone" << std::right
                        << std::setw(10) << "cells" << std::setw(10) << "share %" << std::setw(12)
                        << "area km2"
                        << "\n";
                    separator = " ";
                }
                for (const ZoneSummary::Row& row : summary.zones) {
                    line(std::to_string(row.value), row.zone, row.cells);
                }
                line("", "all zones", total);
                break;
            }
        }
    }
    if (format == TableFormat::Json) out << "]\n";
    stream << out.str();
}

bool RunClassifyRoute(const ClassifyRoute& route, const std::function<void(RouteStage)>& onStage) {
    const auto stage = [&](RouteStage s) {
        if (onStage) onStage(s);
    };
    // The final page's list of classes, read first so that a file without
    // any stops the run before anything is computed.
    classification::ZoneRunPage page;
    page.g_s_OutputDataSet = route.output;
    page.m_prjFile = std::make_shared<clsXMLPrjFile>();
    page.m_prjFile->XML(route.dictionary);
    page.m_iClassCount = static_cast<std::int16_t>(page.m_prjFile->Classifications->Count());
    if (page.m_iClassCount == 0) RouteFailure(route.dictionary + ": no classes were read");

    // The setup page.
    ResetSession();
    g_b_StandAloneRun = false;
    g_s_WorkingDir = route.workDir;
    std::filesystem::create_directories(g_s_WorkingDir);
    const raster::RasterDatasetPtr inputDataset =
        OpenRasterDataset(PathOfRaster(route.input), NameOfRaster(route.input));
    if (!inputDataset) return false;
    // What the setup page refuses.
    if (!inputDataset->CreateDefaultRaster()->IsProjected()) {
        RouteFailure(route.input + ": the grid is not projected; project it and try again");
    }
    g_s_InputDataSet = g_s_BPI_DataSet = NameOfRaster(route.input);
    g_s_InputDataPath = g_s_BPI_DataPath = PathOfRaster(route.input);
    g_p_InputRasterDataset = inputDataset;
    g_p_BPI_RasterDataset = OpenRasterDataset(g_s_BPI_DataPath, g_s_BPI_DataSet);

    // The resampling page, whose grid then stands for the input.
    if (!route.cellSize.empty()) {
        stage(RouteStage::Resample);
        const std::string resampled = route.output + "_res";
        ResampleRas(g_p_InputRasterDataset->CreateDefaultRaster(), route.cellSize, route.method,
                    resampled);
        if (!g_p_BPI_RasterDataset || g_p_BPI_RasterDataset->Name() != resampled) return false;
        g_s_ResampledDataSet = g_s_BPI_DataSet = resampled;
        g_s_BPI_DataPath = g_s_WorkingDir;
    }

    // Both position indices and their standardization, as temporary grids
    // that the final run cleans away.
    stage(RouteStage::BroadBpi);
    g_i_SmScaleBPI_inner_radius = route.broadInner;
    g_i_SmScaleBPI_outer_radius = route.broadOuter;
    BPI_Build(g_p_BPI_RasterDataset->CreateDefaultRaster(), g_i_SmScaleBPI_inner_radius,
              g_i_SmScaleBPI_outer_radius, "", "BroadBPI", 0);
    stage(RouteStage::FineBpi);
    g_i_LgScaleBPI_inner_radius = route.fineInner;
    g_i_LgScaleBPI_outer_radius = route.fineOuter;
    BPI_Build(g_p_BPI_RasterDataset->CreateDefaultRaster(), g_i_LgScaleBPI_inner_radius,
              g_i_LgScaleBPI_outer_radius, "", "FineBPI", 0);
    CloseProgress();
    if (!g_p_SS_BPI_RasterDataset || !g_p_LS_BPI_RasterDataset) return false;
    stage(RouteStage::Standardize);
    calcRasterStats(g_p_LS_BPI_RasterDataset->CreateDefaultRaster(), "Large");
    calcRasterStats(g_p_SS_BPI_RasterDataset->CreateDefaultRaster(), "Small");
    BPI_Standardize(g_p_SS_BPI_RasterDataset->CreateDefaultRaster(), g_d_SS_BPI_Mean,
                    g_d_SS_BPI_StdDev, g_s_Save_SmScale_Std_Grid, "BroadBPI", 0);
    BPI_Standardize(g_p_LS_BPI_RasterDataset->CreateDefaultRaster(), g_d_LS_BPI_Mean,
                    g_d_LS_BPI_StdDev, g_s_Save_LgScale_Std_Grid, "FineBPI", 0);
    CloseProgress();
    if (!g_p_SmScale_Std_RasterDataset || !g_p_LgScale_Std_RasterDataset) return false;

    // The dictionary page's choice, and the final page's Finish.
    stage(RouteStage::Zones);
    g_s_ClassDictionary_Path = route.dictionary;
    return classification::cmdFinish_Click(page) && g_p_OutputRasterDataset;
}

std::vector<std::string> RouteStageNames(const ClassifyRoute& route) {
    std::vector<std::string> names;
    if (!route.cellSize.empty()) names.push_back("Resampling to cells of " + route.cellSize);
    names.push_back("Broad-scale BPI, ring of " + route.broadInner + " to " + route.broadOuter +
                    " cells");
    names.push_back("Fine-scale BPI, ring of " + route.fineInner + " to " + route.fineOuter +
                    " cells");
    names.push_back("Standardized BPI at both scales");
    names.push_back("Slope, class grids and zones");
    return names;
}

TableFormat FormatOf(const Arguments& arguments) {
    const std::string format = arguments.Optional("--format", "table");
    if (format == "table") return TableFormat::Text;
    if (format == "json") return TableFormat::Json;
    if (format == "csv") return TableFormat::Csv;
    throw UsageError{"--format " + format + ": the formats are table, json and csv"};
}

int RunClassify(const Arguments& arguments) {
    ClassifyRoute route;
    RadiiOf(arguments, "--broad", route.broadInner, route.broadOuter);
    RadiiOf(arguments, "--fine", route.fineInner, route.fineOuter);
    route.cellSize = arguments.Optional("--resample");
    if (arguments.Has("--method") && route.cellSize.empty()) {
        throw UsageError{"--method goes with --resample"};
    }
    route.method = MethodOf(arguments);
    const TableFormat format = FormatOf(arguments);
    route.dictionary =
        std::filesystem::absolute(
            arguments.Optional("--dictionary", classification::DefaultDictionaryPath()))
            .string();
    route.output = arguments.Optional("--name", route.output);
    const std::string workDir = arguments.Required("--workdir");
    if (arguments.positional.empty()) throw UsageError{"give at least one input grid"};
    // Several inputs: one sub-folder of the working folder each, named after it.
    std::vector<ClassifyRoute> routes;
    std::set<std::string> folders;
    for (const std::string& input : arguments.positional) {
        ClassifyRoute each = route;
        each.input = std::filesystem::absolute(input).string();
        const std::string stem = std::filesystem::path(input).stem().string();
        if (arguments.positional.size() > 1 && !folders.insert(stem).second) {
            throw UsageError{input + ": another input has the name " + stem};
        }
        each.workDir = arguments.positional.size() == 1
                           ? workDir
                           : (std::filesystem::path(workDir) / stem).string();
        routes.push_back(each);
    }
    std::vector<std::string> stages;
    for (const ClassifyRoute& each : routes) {
        for (std::string name : RouteStageNames(each)) {
            if (routes.size() > 1)
                name = std::filesystem::path(each.input).stem().string() + ": " + name;
            stages.push_back(name);
        }
    }

    return RunReported(arguments, {"classify", workDir, stages}, [&](CommandRun& run) {
        std::vector<ZoneSummary> summaries;
        for (const ClassifyRoute& each : routes) {
            run.CheckInput(each.input);
            // Refused before the run rather than at its Finish.
            const std::string zones = each.workDir + "/" + each.output;
            if (RasterExists(zones)) {
                run.Fail(zones +
                         ": a grid of that name exists already; give another --name or "
                         "--workdir");
            }
            if (!RunClassifyRoute(each, [&](RouteStage) { run.NextStage(); })) {
                return false;
            }
            summaries.push_back(SummaryOf(each.input, g_p_OutputRasterDataset));
        }
        if (format == TableFormat::Text) {
            for (const ZoneSummary& summary : summaries) std::cout << summary.path << "\n";
        }
        PrintZones(std::cout, summaries, format);
        return true;
    });
}

int RunDictionary(const Arguments& arguments) {
    if (arguments.positional.size() != 2 || arguments.positional[0] != "show") {
        throw UsageError{"the one action is: show FILE"};
    }
    const std::string path = arguments.positional[1];
    if (!std::filesystem::is_regular_file(path)) {
        std::cerr << "halvane dictionary: no file " << path << "\n";
        return 1;
    }
    clsXMLPrjFile dictionary;
    dictionary.XML(path);
    const auto& records = dictionary.Classifications->NewEnum();
    if (dictionary.PrjName.empty() && records.empty()) {
        std::cerr << "halvane dictionary: nothing was read from " << path
                  << " (the file does not parse, or its path lacks \".xml\" in lower case)\n";
        return 1;
    }
    std::cout << "Title:       " << dictionary.PrjName << "\n"
              << "Description: " << dictionary.PRJDescription << "\n\n";
    const auto bound = [](const std::string& lower, const std::string& upper) {
        // How the run reads it: a lone bound takes its value in, a pair leaves both out.
        if (!lower.empty() && !upper.empty()) return lower + " < x < " + upper;
        if (!lower.empty()) return "x >= " + lower;
        if (!upper.empty()) return "x <= " + upper;
        return std::string("-");
    };
    std::cout << std::left << std::setw(6) << "class" << std::setw(26) << "zone" << std::setw(18)
              << "broad BPI" << std::setw(18) << "fine BPI" << std::setw(16) << "slope"
              << "depth\n";
    for (const auto& record : records) {
        std::cout << std::setw(6) << record->Class << std::setw(26) << record->Zone << std::setw(18)
                  << bound(record->SSB_LowerBounds, record->SSB_UpperBounds) << std::setw(18)
                  << bound(record->LSB_LowerBounds, record->LSB_UpperBounds) << std::setw(16)
                  << bound(record->Slope_LowerBounds, record->Slope_UpperBounds)
                  << bound(record->Depth_LowerBounds, record->Depth_UpperBounds) << "\n";
    }
    return 0;
}

}  // namespace halvane::apps
