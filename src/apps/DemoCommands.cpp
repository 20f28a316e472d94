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
#include "host/HTMLHelp.h"
#include "platform/map/view/Picture.h"
#include "platform/raster/Storage.h"
#include "platform/runtime/Text.h"

namespace halvane::apps {
namespace {

namespace fs = std::filesystem;
using Clock = std::chrono::steady_clock;

// One line per stage on stderr: its number and name, a bar that follows the
// stage's own progress dialog, and the seconds it took. A terminal sees the
// bar fill in place; a log gets the finished line only.
class StageBar {
public:
    explicit StageBar(int stages) : redraws_(isatty(STDERR_FILENO)), stages_(stages) {}
    ~StageBar() { End(); }

    void Begin(const std::string& name) {
        End();
        name_ = name;
        ++stage_;
        fraction_ = 0;
        started_ = Clock::now();
        open_ = true;
        if (redraws_) Draw(false);
    }
    void Fraction(double fraction) {
        if (!open_ || !(fraction > fraction_)) return;
        fraction_ = std::min(fraction, 1.0);
        if (redraws_) Draw(false);
    }
    // Something else is about to be written: the bar goes on below it.
    void Interrupt() {
        if (open_ && redraws_) std::cerr << "\n";
    }
    void End() {
        if (!open_) return;
        fraction_ = 1.0;
        Draw(true);
        open_ = false;
    }

private:
    void Draw(bool done) {
        constexpr int kWidth = 24;
        const int filled = static_cast<int>(fraction_ * kWidth + 0.5);
        std::ostringstream line;
        line << "  " << stage_ << "/" << stages_ << "  " << std::left << std::setw(40) << name_
             << " [" << std::string(filled, '#') << std::string(kWidth - filled, '-') << "] "
             << std::right << std::setw(3) << static_cast<int>(fraction_ * 100 + 0.5) << "%";
        if (done) {
            const std::chrono::duration<double> took = Clock::now() - started_;
            line << std::fixed << std::setprecision(1) << std::setw(7) << took.count() << " s";
        }
        std::cerr << (redraws_ ? "\r" : "") << line.str() << (done ? "\n" : "") << std::flush;
    }

    const bool redraws_;
    int stages_;
    int stage_ = 0;
    std::string name_;
    double fraction_ = 0;
    bool open_ = false;
    Clock::time_point started_;
};

// The stages' progress dialogs, drawn as the demo's stage bar instead of bars
// of their own.
class StageProgress : public ui::IStepProgressor, public ui::IProgressDialog2 {
public:
    explicit StageProgress(StageBar& bar) : bar_(bar) {}
    void Message(const std::string&) override {}
    void MinRange(std::int32_t value) override { min_ = value; }
    void MaxRange(std::int32_t value) override { max_ = value; }
    void Position(std::int32_t value) override {
        if (max_ > min_) bar_.Fraction(static_cast<double>(value - min_) / (max_ - min_));
    }
    void Animation(int) override {}
    void CancelEnabled(bool) override {}
    void Title(const std::string&) override {}
    void Description(const std::string&) override {}
    void HideDialog() override {}

private:
    StageBar& bar_;
    std::int32_t min_ = 0, max_ = 0;
};

// The console for a demo: messages and reports as usual, progress on the bar.
class DemoConsole : public ui::ConsoleServices {
public:
    explicit DemoConsole(StageBar& bar) : bar_(bar), factory_(std::make_shared<Factory>(bar)) {}
    ui::MsgBoxResult MsgBox(const std::string& prompt, int buttons,
                            const std::string& title) override {
        bar_.Interrupt();
        return ConsoleServices::MsgBox(prompt, buttons, title);
    }
    std::shared_ptr<ui::IProgressDialogFactory> NewProgressDialogFactory() override {
        return factory_;
    }

private:
    struct Factory : ui::IProgressDialogFactory {
        explicit Factory(StageBar& bar) : bar(bar) {}
        std::shared_ptr<ui::IStepProgressor> Create(std::shared_ptr<ui::ITrackCancel>,
                                                    ui::WindowHandle) override {
            return std::make_shared<StageProgress>(bar);
        }
        StageBar& bar;
    };
    StageBar& bar_;
    std::shared_ptr<Factory> factory_;
};

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

bool Save(const map::view::Picture& picture, const std::string& path) {
    if (picture.image.save(QString::fromStdString(path), "PNG")) return true;
    std::cerr << "halvane: cannot write " << path << "\n";
    return false;
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

    const Clock::time_point started = Clock::now();
    StageBar bar(6);
    DemoConsole console(bar);
    return RunReported(console, "demo", false, [&] {
        // One dataset for the summary and the picture, so its statistics are read once.
        const raster::RasterDatasetPtr inputDataset = raster::RasterDataset::Open(route.input);
        const raster::RasterPtr input = inputDataset->CreateDefaultRaster();
        const raster::Grid& grid = input->GetGrid();
        const raster::RasterStatistics& depths = input->Item(0)->Statistics();
        std::cerr << "Classifying " << route.input << "\n  " << grid.cols << " x " << grid.rows
                  << " cells of " << runtime::CStr(grid.cellX) << " m, depths "
                  << Metres(depths.Minimum) << " to " << Metres(depths.Maximum)
                  << " m\n  with the dictionary " << route.dictionary << "\n  into "
                  << route.workDir << "\n\n";

        const std::map<RouteStage, std::string> stageNames = {
            {RouteStage::BroadBpi,
             "Broad-scale BPI, ring of " + route.broadInner + " to " + route.broadOuter + " cells"},
            {RouteStage::FineBpi,
             "Fine-scale BPI, ring of " + route.fineInner + " to " + route.fineOuter + " cells"},
            {RouteStage::Standardize, "Standardized BPI at both scales"},
            {RouteStage::Zones, "Slope, class grids and zones"},
        };
        const bool classified = RunClassifyRoute(route, [&](RouteStage stage) {
            if (const auto named = stageNames.find(stage); named != stageNames.end()) {
                bar.Begin(named->second);
            }
        });
        if (!classified) return false;
        const raster::RasterDatasetPtr zones = g_p_OutputRasterDataset;
        const std::shared_ptr<ZoneDictionary> labels = g_dict_Zones;

        bar.Begin("Rugosity");
        const raster::RasterDatasetPtr rugosity =
            RugosityOf(route.workDir, route.input, "RUGOSITY");
        if (!rugosity) return false;

        bar.Begin("Pictures");
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
        if (!Save(map::view::ComposePicture(*zoneLayer, zonesView), zonesPng) ||
            !Save(map::view::ComposePicture(*LayerOf(inputDataset), depthView), bathymetryPng)) {
            return false;
        }
        bar.End();

        std::cout << "\nZones of " << zones->Path() << "\n\n";
        g_dict_Zones = labels;
        PrintZones(std::cout, zones);
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
    return RunReported("map", false, [&] {
        auto labels = std::make_shared<ZoneDictionary>();
        if (!dictionary.empty() && !(labels = LabelsOf(dictionary))) {
            std::cerr << "halvane map: no classes were read from " << dictionary << "\n";
            return false;
        }
        const raster::RasterDatasetPtr dataset = raster::RasterDataset::Open(path);
        const map::view::HeadlessGui gui;
        const map::RasterLayerPtr layer = LayerOf(dataset);
        RenderZonesOf(layer, labels);
        const std::string name = fs::path(path).filename().string();
        map::view::PictureOptions options;
        options.title = arguments.Optional("--title", name);
        options.subtitle = dictionary.empty() ? path : path + ", zones of " + dictionary;
        options.hillshade = arguments.Has("--hillshade");
        if (!Save(map::view::ComposePicture(*layer, options), out)) return false;
        std::cout << out << "\n";
        return true;
    });
}

}  // namespace halvane::apps
