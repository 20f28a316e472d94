#include "apps/ClassifyCommands.h"

#include <filesystem>
#include <iomanip>
#include <iostream>

#include "apps/RasterCommands.h"
#include "classification/ZoneClassification.h"
#include "engine/Analysis.h"
#include "engine/RasterAccess.h"
#include "engine/Session.h"
#include "host/modProgDialog.h"
#include "platform/raster/Storage.h"

namespace halvane::apps {
namespace {

using classification::clsXMLPrjFile;

struct Radii {
    std::string inner, outer;
};

// "INNER,OUTER", each kept as typed: the radii go into the expression as text.
Radii RadiiOf(const Arguments& arguments, const std::string& option, const Radii& fallback) {
    if (!arguments.Has(option)) return fallback;
    const std::string text = arguments.Required(option);
    const std::size_t comma = text.find(',');
    if (comma == std::string::npos || comma == 0 || comma + 1 == text.size()) {
        throw UsageError{option + " takes INNER,OUTER, not '" + text + "'"};
    }
    return {text.substr(0, comma), text.substr(comma + 1)};
}

// What the setup page refuses: a grid without a projected reference.
bool Projected(const raster::RasterDatasetPtr& dataset) {
    if (dataset->CreateDefaultRaster()->IsProjected()) return true;
    ui::Services().MsgBox(
        "Error: This Raster Dataset is not projected. Please project the layer and try again.",
        ui::vbOKOnly, "Error: Projection Undefined");
    return false;
}

void PrintZones(const raster::RasterDatasetPtr& zones) {
    std::cout << std::left << std::setw(7) << "class" << std::setw(32) << "zone" << "cells\n";
    for (const raster::AttributeRow& row : zones->GetAttributeTable()) {
        // Labels are found by value, as on the map.
        std::string name = "(no class)";
        if (g_dict_Zones) {
            const auto found = g_dict_Zones->find(row.Value);
            if (found != g_dict_Zones->end()) name = found->second;
        }
        std::cout << std::setw(7) << row.Value << std::setw(32) << name << row.Count << "\n";
    }
}

}  // namespace

int RunClassify(const Arguments& arguments) {
    const Radii broad = RadiiOf(arguments, "--broad", {"1", "5"});
    const Radii fine = RadiiOf(arguments, "--fine", {"1", "3"});
    const std::string cellSize = arguments.Optional("--resample");
    if (arguments.Has("--method") && cellSize.empty()) {
        throw UsageError{"--method goes with --resample"};
    }
    const std::string method = arguments.Optional("--method", "Cubic Convolution");
    const std::string dictionary =
        std::filesystem::absolute(
            arguments.Optional("--dictionary", classification::DefaultDictionaryPath()))
            .string();
    const std::string output = arguments.Optional("--name", "ZONES");
    const std::string workDir = arguments.Required("--workdir");
    if (arguments.positional.size() != 1) throw UsageError{"give exactly one input grid"};
    const std::string input = std::filesystem::absolute(arguments.positional[0]).string();

    return RunReported("classify", arguments.Has("--trace"), [&] {
        // The final page's list of classes, read first so that a file without
        // any stops the run before anything is computed.
        classification::ZoneRunPage page;
        page.g_s_OutputDataSet = output;
        page.m_prjFile = std::make_shared<clsXMLPrjFile>();
        page.m_prjFile->XML(dictionary);
        page.m_iClassCount = static_cast<std::int16_t>(page.m_prjFile->Classifications->Count());
        if (page.m_iClassCount == 0) {
            std::cerr << "halvane classify: no classes were read from " << dictionary << "\n";
            return false;
        }

        // The setup page.
        ResetSession();
        g_b_StandAloneRun = false;
        g_s_WorkingDir = workDir;
        std::filesystem::create_directories(g_s_WorkingDir);
        const raster::RasterDatasetPtr inputDataset =
            OpenRasterDataset(PathOfRaster(input), NameOfRaster(input));
        if (!inputDataset || !Projected(inputDataset)) return false;
        g_s_InputDataSet = g_s_BPI_DataSet = NameOfRaster(input);
        g_s_InputDataPath = g_s_BPI_DataPath = PathOfRaster(input);
        g_p_InputRasterDataset = inputDataset;
        g_p_BPI_RasterDataset = OpenRasterDataset(g_s_BPI_DataPath, g_s_BPI_DataSet);

        // The resampling page, whose grid then stands for the input.
        if (!cellSize.empty()) {
            const std::string resampled = output + "_res";
            ResampleRas(g_p_InputRasterDataset->CreateDefaultRaster(), cellSize, method, resampled);
            if (!g_p_BPI_RasterDataset || g_p_BPI_RasterDataset->Name() != resampled) return false;
            g_s_ResampledDataSet = g_s_BPI_DataSet = resampled;
            g_s_BPI_DataPath = g_s_WorkingDir;
        }

        // Both position indices and their standardization, as temporary grids
        // that the final run cleans away.
        g_i_SmScaleBPI_inner_radius = broad.inner;
        g_i_SmScaleBPI_outer_radius = broad.outer;
        BPI_Build(g_p_BPI_RasterDataset->CreateDefaultRaster(), g_i_SmScaleBPI_inner_radius,
                  g_i_SmScaleBPI_outer_radius, "", "BroadBPI", 0);
        g_i_LgScaleBPI_inner_radius = fine.inner;
        g_i_LgScaleBPI_outer_radius = fine.outer;
        BPI_Build(g_p_BPI_RasterDataset->CreateDefaultRaster(), g_i_LgScaleBPI_inner_radius,
                  g_i_LgScaleBPI_outer_radius, "", "FineBPI", 0);
        CloseProgress();
        if (!g_p_SS_BPI_RasterDataset || !g_p_LS_BPI_RasterDataset) return false;
        calcRasterStats(g_p_LS_BPI_RasterDataset->CreateDefaultRaster(), "Large");
        calcRasterStats(g_p_SS_BPI_RasterDataset->CreateDefaultRaster(), "Small");
        BPI_Standardize(g_p_SS_BPI_RasterDataset->CreateDefaultRaster(), g_d_SS_BPI_Mean,
                        g_d_SS_BPI_StdDev, g_s_Save_SmScale_Std_Grid, "BroadBPI", 0);
        BPI_Standardize(g_p_LS_BPI_RasterDataset->CreateDefaultRaster(), g_d_LS_BPI_Mean,
                        g_d_LS_BPI_StdDev, g_s_Save_LgScale_Std_Grid, "FineBPI", 0);
        CloseProgress();
        if (!g_p_SmScale_Std_RasterDataset || !g_p_LgScale_Std_RasterDataset) return false;

        // The dictionary page's choice, and the final page's Finish.
        g_s_ClassDictionary_Path = dictionary;
        if (!classification::cmdFinish_Click(page) || !g_p_OutputRasterDataset) return false;
        std::cout << g_p_OutputRasterDataset->Path() << "\n";
        PrintZones(g_p_OutputRasterDataset);
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
