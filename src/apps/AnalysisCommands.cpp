#include "apps/AnalysisCommands.h"

#include <filesystem>
#include <iostream>

#include "apps/RasterCommands.h"
#include "engine/Analysis.h"
#include "engine/RasterAccess.h"
#include "engine/Rugosity.h"
#include "engine/Session.h"
#include "platform/runtime/Convert.h"

namespace halvane::apps {
namespace {

// The working folder and the input grid of a stage, read before it runs so
// that a missing one is a usage error.
struct Places {
    std::string workDir, path, name;
    std::string input;  // as given, made absolute
};

// The single INPUT argument is split into folder and name as the stages do;
// a relative path is taken from the current folder, so that it has a folder.
Places PlacesOf(const Arguments& arguments) {
    const std::string workDir = arguments.Required("--workdir");
    if (arguments.positional.size() != 1) throw UsageError{"give exactly one input grid"};
    const std::string full = std::filesystem::absolute(arguments.positional[0]).string();
    return {workDir, PathOfRaster(full), NameOfRaster(full), full};
}

bool IsBroad(const Arguments& arguments) {
    const std::string scale = arguments.Optional("--scale", "broad");
    if (scale != "broad" && scale != "fine") {
        throw UsageError{"--scale is broad or fine, not '" + scale + "'"};
    }
    return scale == "broad";
}

// Starts a session in the working folder, which is made if it is missing;
// writes the input's folder and name into the stage's two variables and opens
// it: null, reported, when it can't be opened.
raster::RasterDatasetPtr StartSession(const Places& places, std::string& path, std::string& name) {
    ResetSession();
    g_b_StandAloneRun = true;
    g_s_WorkingDir = places.workDir;
    std::filesystem::create_directories(g_s_WorkingDir);
    path = places.path;
    name = places.name;
    return OpenRasterDataset(places.path, places.name);
}

// Prints where a stage's grid was stored; false when nothing was.
bool Stored(const raster::RasterDatasetPtr& dataset) {
    if (!dataset) return false;
    std::cout << dataset->Path() << "\n";
    return true;
}

}  // namespace

int RunBpi(const Arguments& arguments) {
    const bool broad = IsBroad(arguments);
    const std::string inner = arguments.Required("--inner");
    const std::string outer = arguments.Required("--outer");
    CheckRadii("--inner " + inner + " --outer " + outer, inner, outer);
    const std::string name = arguments.Optional("--name");
    const Places places = PlacesOf(arguments);
    const std::string stage = "BPI, ring of " + inner + " to " + outer + " cells";
    return RunReported(arguments, {"bpi", places.workDir, {stage}}, [&](CommandRun& run) {
        run.CheckInput(places.input);
        run.NextStage();
        g_p_BPI_RasterDataset = StartSession(places, g_s_BPI_DataPath, g_s_BPI_DataSet);
        if (!g_p_BPI_RasterDataset) return false;
        std::string& innerRadius =
            broad ? g_i_SmScaleBPI_inner_radius : g_i_LgScaleBPI_inner_radius;
        std::string& outerRadius =
            broad ? g_i_SmScaleBPI_outer_radius : g_i_LgScaleBPI_outer_radius;
        innerRadius = inner;
        outerRadius = outer;
        BPI_Build(g_p_BPI_RasterDataset->CreateDefaultRaster(), innerRadius, outerRadius, name,
                  broad ? "BroadBPI" : "FineBPI", 0);
        return Stored(broad ? g_p_SS_BPI_RasterDataset : g_p_LS_BPI_RasterDataset);
    });
}

int RunStandardize(const Arguments& arguments) {
    const bool broad = IsBroad(arguments);
    const std::string name = arguments.Optional("--name");
    const Places places = PlacesOf(arguments);
    return RunReported(
        arguments, {"standardize", places.workDir, {"Standardized BPI"}}, [&](CommandRun& run) {
            run.CheckInput(places.input);
            run.NextStage();
            raster::RasterDatasetPtr& bpi =
                broad ? g_p_SS_BPI_RasterDataset : g_p_LS_BPI_RasterDataset;
            bpi = StartSession(places, broad ? g_s_SS_BPI_InputDataPath : g_s_LS_BPI_InputDataPath,
                               broad ? g_s_SS_BPI_InputDataSet : g_s_LS_BPI_InputDataSet);
            if (!bpi) return false;
            double& mean = broad ? g_d_SS_BPI_Mean : g_d_LS_BPI_Mean;
            double& deviation = broad ? g_d_SS_BPI_StdDev : g_d_LS_BPI_StdDev;
            calcRasterStats(bpi->CreateDefaultRaster(), broad ? "Small" : "Large");
            std::cout << "mean " << runtime::CStr(mean) << ", standard deviation "
                      << runtime::CStr(deviation) << "\n";
            std::string& output = broad ? g_s_Save_SmScale_Std_Grid : g_s_Save_LgScale_Std_Grid;
            output = name;
            BPI_Standardize(bpi->CreateDefaultRaster(), mean, deviation, output,
                            broad ? "BroadBPI" : "FineBPI", 0);
            return Stored(broad ? g_p_SmScale_Std_RasterDataset : g_p_LgScale_Std_RasterDataset);
        });
}

int RunResample(const Arguments& arguments) {
    const std::string name = arguments.Required("--name");
    const std::string cellSize = arguments.Required("--cell-size");
    const std::string method = MethodOf(arguments);
    const Places places = PlacesOf(arguments);
    const std::string stage = "Resampling to cells of " + cellSize;
    return RunReported(arguments, {"resample", places.workDir, {stage}}, [&](CommandRun& run) {
        run.CheckInput(places.input);
        run.NextStage();
        g_p_InputRasterDataset = StartSession(places, g_s_InputDataPath, g_s_InputDataSet);
        if (!g_p_InputRasterDataset) return false;
        ResampleRas(g_p_InputRasterDataset->CreateDefaultRaster(), cellSize, method, name);
        return Stored(g_p_BPI_RasterDataset);
    });
}

raster::RasterDatasetPtr RugosityOf(const std::string& workDir, const std::string& input,
                                    const std::string& name) {
    const std::string full = std::filesystem::absolute(input).string();
    g_p_Rugosity_RasterDataset =
        StartSession({workDir, PathOfRaster(full), NameOfRaster(full), full},
                     g_s_Rugosity_InputDataPath, g_s_Rugosity_InputDataSet);
    if (!g_p_Rugosity_RasterDataset) return nullptr;
    g_s_SaveRugosity_OutputData = name;
    BuildRugosity();
    return g_p_Rugosity_OutputRasterDataset;
}

int RunRugosity(const Arguments& arguments) {
    const std::string name = arguments.Required("--name");
    const Places places = PlacesOf(arguments);
    return RunReported(arguments, {"rugosity", places.workDir, {"Rugosity"}}, [&](CommandRun& run) {
        run.CheckInput(places.input);
        run.NextStage();
        return Stored(RugosityOf(places.workDir, arguments.positional[0], name));
    });
}

}  // namespace halvane::apps
