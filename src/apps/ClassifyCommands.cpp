#include "apps/ClassifyCommands.h"

#include <filesystem>
#include <iomanip>
#include <iostream>
#include <sstream>

#include "apps/RasterCommands.h"
#include "classification/ZoneClassification.h"
#include "engine/Analysis.h"
#include "engine/RasterAccess.h"
#include "engine/Session.h"
#include "platform/reporting/modProgDialog.h"
#include "platform/raster/Storage.h"

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
}

// What the setup page refuses: a grid without a projected reference.
bool Projected(const raster::RasterDatasetPtr& dataset) {
    if (dataset->CreateDefaultRaster()->IsProjected()) return true;
    ui::Services().MsgBox(
        "Error: This Raster Dataset is not projected. Please project the layer and try again.",
        ui::vbOKOnly, "Error: Projection Undefined");
    return false;
}

}  // namespace

void PrintZones(std::ostream& stream, const raster::RasterDatasetPtr& zones) {
    // Formatted apart, so the caller's stream keeps its own settings.
    std::ostringstream out;
    const raster::AttributeTable& table = zones->GetAttributeTable();
    const raster::Grid& grid = zones->CreateDefaultRaster()->GetGrid();
    const double cellKm2 = grid.cellX * grid.cellY / 1e6;
    std::int64_t total = 0;
    for (const raster::AttributeRow& row : table) total += row.Count;
    const auto line = [&](const std::string& value, const std::string& name, std::int64_t cells) {
        const double share = total > 0 ? 100.0 * static_cast<double>(cells) / total : 0.0;
        out << std::right << std::setw(5) << value << "  " << std::left << std::setw(28) << name
            << std::right << std::setw(10) << cells << std::fixed << std::setprecision(2)
            << std::setw(10) << share << std::setprecision(3) << std::setw(12)
            << static_cast<double>(cells) * cellKm2 << "\n";
    };
    out << std::right << std::setw(5) << "class" << "  " << std::left << std::setw(28) << "zone"
        << std::right << std::setw(10) << "cells" << std::setw(10) << "share %" << std::setw(12)
        << "area km2" << "\n";
    for (const raster::AttributeRow& row : table) {
        // Labels are found by value, as on the map.
        std::string name = "(no class)";
        if (g_dict_Zones) {
            const auto found = g_dict_Zones->find(row.Value);
            if (found != g_dict_Zones->end()) name = found->second;
        }
        line(std::to_string(row.Value), name, row.Count);
    }
    line("", "all zones", total);
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
    if (page.m_iClassCount == 0) {
        std::cerr << "halvane: no classes were read from " << route.dictionary << "\n";
        return false;
    }

    // The setup page.
    ResetSession();
    g_b_StandAloneRun = false;
    g_s_WorkingDir = route.workDir;
    std::filesystem::create_directories(g_s_WorkingDir);
    const raster::RasterDatasetPtr inputDataset =
        OpenRasterDataset(PathOfRaster(route.input), NameOfRaster(route.input));
    if (!inputDataset || !Projected(inputDataset)) return false;
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

int RunClassify(const Arguments& arguments) {
    ClassifyRoute route;
    RadiiOf(arguments, "--broad", route.broadInner, route.broadOuter);
    RadiiOf(arguments, "--fine", route.fineInner, route.fineOuter);
    route.cellSize = arguments.Optional("--resample");
    if (arguments.Has("--method") && route.cellSize.empty()) {
        throw UsageError{"--method goes with --resample"};
    }
    route.method = arguments.Optional("--method", route.method);
    route.dictionary =
        std::filesystem::absolute(
            arguments.Optional("--dictionary", classification::DefaultDictionaryPath()))
            .string();
    route.output = arguments.Optional("--name", route.output);
    route.workDir = arguments.Required("--workdir");
    if (arguments.positional.size() != 1) throw UsageError{"give exactly one input grid"};
    route.input = std::filesystem::absolute(arguments.positional[0]).string();

    return RunReported("classify", arguments.Has("--trace"), [&] {
        if (!RunClassifyRoute(route)) return false;
        std::cout << g_p_OutputRasterDataset->Path() << "\n";
        PrintZones(std::cout, g_p_OutputRasterDataset);
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
