#include "apps/DemoCommands.h"

#include <unistd.h>

#include <chrono>
#include <filesystem>
#include <iomanip>
#include <iostream>
#include <map>
#include <sstream>

#include "apps/AnalysisCommands.h"
#include "apps/ClassifyCommands.h"
#include "apps/RasterCommands.h"
#include "classification/clsXMLPrjFile.h"
#include "engine/RasterAccess.h"
#include "engine/ResultLayers.h"
#include "engine/Session.h"
#include "platform/map/view/Picture.h"
#include "platform/raster/Storage.h"
#include "platform/reporting/HTMLHelp.h"
#include "platform/runtime/Text.h"

namespace halvane::apps {
namespace {

namespace fs = std::filesystem;
using Clock = std::chrono::steady_clock;

std::string Metres(double value) {
    std::ostringstream text;
    text << std::fixed << std::setprecision(1) << value;
    return text.str();
}

map::RasterLayerPtr LayerOf(const raster::RasterDatasetPtr& dataset) {
    auto layer = std::make_shared<map::RasterLayer>();
    layer->CreateFromDataset(dataset);
    return layer;
}

// Zone grids get the unique-value renderer the zone page gives them, labelled
// from `labels` (by value, as on the map); other grids keep the stretch.
void RenderZonesOf(const map::RasterLayerPtr& layer,
                   const std::shared_ptr<ZoneDictionary>& labels) {
    if (!layer->Raster()->IsInteger() || !layer->Raster()->Item(0)->HasTable()) return;
    g_dict_Zones = labels;
    ChangeRenderToUVRenderer(layer);
}

bool Save(CommandRun& run, const map::view::Picture& picture, const std::string& path) {
    if (!picture.image.save(QString::fromStdString(path), "PNG")) run.Fail(path + ": cannot write");
    return true;
}

// The dictionary's zone texts by record position, as the zone run keys them;
// null when the file gave no classes.
std::shared_ptr<ZoneDictionary> LabelsOf(const std::string& dictionary) {
    classification::clsXMLPrjFile file;
    file.XML(fs::absolute(dictionary).string());
    if (file.Classifications->Count() == 0) return nullptr;
    auto labels = std::make_shared<ZoneDictionary>();
    int position = 0;
    for (const auto& record : file.Classifications->NewEnum()) {
        labels->emplace(++position, record->Zone);
    }
    return labels;
}

// The grids a demo leaves in its folder.
constexpr const char* kDemoGrids[] = {"ZONES", "SLOPE", "RUGOSITY"};

}  // namespace

std::string SamplePath() {
    return ResourceFolder() + runtime::kPathSeparator + "sample" + runtime::kPathSeparator +
           "bathymetry.tif";
}

int RunDemo(const Arguments& arguments) {
    if (!arguments.positional.empty()) throw UsageError{"demo takes no arguments"};
    ClassifyRoute route;
    route.workDir = fs::absolute(arguments.Optional("--workdir", "halvane-demo")).string();
    route.input = fs::absolute(arguments.Optional("--input", SamplePath())).string();
    route.dictionary = fs::absolute(classification::DefaultDictionaryPath()).string();
    if (!fs::is_regular_file(route.input)) {
        std::cerr << "halvane demo: no grid at " << route.input << "\n";
        return 1;
    }
    // As every stage of the system, the demo never writes over a grid.
    for (const char* grid : kDemoGrids) {
        const fs::path existing = fs::path(route.workDir) / (std::string(grid) + ".tif");
        if (fs::exists(existing)) {
            std::cerr << "halvane demo: " << existing.string()
                      << " exists already, and grids are never overwritten. Remove the folder's "
                         "grids or give another --workdir.\n";
            return 1;
        }
    }

    const TableFormat format = FormatOf(arguments);
    const Clock::time_point started = Clock::now();
    std::vector<std::string> stages = RouteStageNames(route);
    stages.push_back("Rugosity");
    stages.push_back("Pictures");
    std::ostream& err = RunConsole() ? *RunConsole() : std::cerr;
    return RunReported(arguments, {"demo", route.workDir, stages}, [&](CommandRun& run) {
        // One dataset for the summary and the picture, so its statistics are read once.
        const raster::RasterDatasetPtr inputDataset = raster::RasterDataset::Open(route.input);
        const raster::RasterPtr input = inputDataset->CreateDefaultRaster();
        const raster::Grid& grid = input->GetGrid();
        const raster::RasterStatistics& depths = input->Item(0)->Statistics();
        if (!arguments.Has("--quiet"))
            err << "Classifying " << route.input << "\n  " << grid.cols << " x " << grid.rows
                << " cells of " << runtime::CStr(grid.cellX) << " m, depths "
                << Metres(depths.Minimum) << " to " << Metres(depths.Maximum)
                << " m\n  with the dictionary " << route.dictionary << "\n  into " << route.workDir
                << "\n\n";

        const bool classified = RunClassifyRoute(route, [&](RouteStage) { run.NextStage(); });
        if (!classified) return false;
        const raster::RasterDatasetPtr zones = g_p_OutputRasterDataset;
        const std::shared_ptr<ZoneDictionary> labels = g_dict_Zones;

        run.NextStage();
        const raster::RasterDatasetPtr rugosity =
            RugosityOf(route.workDir, route.input, "RUGOSITY");
        if (!rugosity) return false;

        run.NextStage();
        const map::view::HeadlessGui gui;
        const map::RasterLayerPtr zoneLayer = LayerOf(zones);
        RenderZonesOf(zoneLayer, labels);
        const std::string zonesPng = (fs::path(route.workDir) / "zones.png").string();
        const std::string bathymetryPng = (fs::path(route.workDir) / "bathymetry.png").string();
        const std::string source = fs::path(route.input).filename().string();
        const map::view::PictureOptions zonesView{
            .title = "Seafloor zones",
            .subtitle = source + " classified with the default dictionary"};
        const map::view::PictureOptions depthView{
            .title = "Bathymetry",
            .subtitle = source + ", hillshaded, lit from the north-west",
            .units = "Depth (m)",
            .hillshade = true};
        if (!Save(run, map::view::ComposePicture(*zoneLayer, zonesView), zonesPng) ||
            !Save(run, map::view::ComposePicture(*LayerOf(inputDataset), depthView),
                  bathymetryPng)) {
            return false;
        }
        g_dict_Zones = labels;
        if (format != TableFormat::Text) {
            PrintZones(std::cout, {SummaryOf(route.input, zones)}, format);
            return true;
        }
        std::cout << "\nZones of " << zones->Path() << "\n\n";
        PrintZones(std::cout, {SummaryOf(route.input, zones)}, format);
        std::cout << "\nRugosity: " << rugosity->Path()
                  << "\nSlope:    " << (fs::path(route.workDir) / "SLOPE.tif").string()
                  << "\nPictures: " << zonesPng << "\n          " << bathymetryPng << "\n";
        const std::chrono::duration<double> took = Clock::now() - started;
        std::cout << "\nDone in " << std::fixed << std::setprecision(1) << took.count() << " s.\n";
        return true;
    });
}

int RunMap(const Arguments& arguments) {
    if (arguments.positional.size() != 1) throw UsageError{"give exactly one grid"};
    const std::string out = arguments.Required("--out");
    const std::string dictionary = arguments.Optional("--dictionary");
    const std::string path = arguments.positional[0];
    return RunReported(arguments, {"map", "", {"Picture"}}, [&](CommandRun& run) {
        auto labels = std::make_shared<ZoneDictionary>();
        if (!dictionary.empty() && !(labels = LabelsOf(dictionary))) {
            run.Fail(dictionary + ": no classes were read");
        }
        run.CheckInput(path);
        run.NextStage();
        const raster::RasterDatasetPtr dataset = raster::RasterDataset::Open(path);
        const map::view::HeadlessGui gui;
        const map::RasterLayerPtr layer = LayerOf(dataset);
        RenderZonesOf(layer, labels);
        const std::string name = fs::path(path).filename().string();
        map::view::PictureOptions options;
        options.title = arguments.Optional("--title", name);
        options.subtitle = dictionary.empty() ? path : path + ", zones of " + dictionary;
        options.hillshade = arguments.Has("--hillshade");
        if (!Save(run, map::view::ComposePicture(*layer, options), out)) return false;
        std::cout << out << "\n";
        return true;
    });
}

}  // namespace halvane::apps
