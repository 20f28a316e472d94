// `halvane demo` and `halvane map` end to end: the zone table against the zone
// grid counted in the test, and the pictures' pixels against the colours the
// map gives each class, or the stretch worked out by hand.

#include <gtest/gtest.h>

#include <QImage>
#include <cmath>
#include <filesystem>
#include <fstream>
#include <map>
#include <sstream>

#include "classification/clsXMLPrjFile.h"
#include "engine/ResultLayers.h"
#include "engine/Session.h"
#include "platform/map/Symbols.h"
#include "platform/map/view/Rendering.h"
#include "support/GridFiles.h"
#include "support/Halvane.h"
#include "synth/Synth.h"

namespace halvane::apps {
namespace {

namespace fs = std::filesystem;
using testing::Halvane;

struct Captured {
    int status;
    std::string out;
};

Captured RunCaptured(const std::vector<std::string>& args) {
    ::testing::internal::CaptureStdout();
    const int status = Halvane(args);
    return {status, ::testing::internal::GetCapturedStdout()};
}

// Where a picture drew its map, from the texts its PNG keeps.
struct Placement {
    double left, top, width, height;
    raster::Envelope extent;

    QPoint PixelOf(const raster::Grid& g, std::int64_t col, std::int64_t row) const {
        const double x = g.left + (static_cast<double>(col) + 0.5) * g.cellX;
        const double y = g.top - (static_cast<double>(row) + 0.5) * g.cellY;
        return {static_cast<int>(left + (x - extent.XMin) / (extent.XMax - extent.XMin) * width),
                static_cast<int>(top + (extent.YMax - y) / (extent.YMax - extent.YMin) * height)};
    }
};

Placement PlacementOf(const QImage& image) {
    Placement p{};
    std::istringstream area(image.text("Map area").toStdString());
    area >> p.left >> p.top >> p.width >> p.height;
    std::istringstream extent(image.text("Extent").toStdString());
    extent >> p.extent.XMin >> p.extent.YMin >> p.extent.XMax >> p.extent.YMax;
    return p;
}

class DemoCommandTest : public ::testing::Test {
protected:
    testing::TempDir dir_;
    const std::string work_ = dir_ / "demo";
};

TEST_F(DemoCommandTest, TableAndZonePictureAgreeWithTheZoneGrid) {
    const std::string input = dir_ / "survey.tif";
    synth::WriteGeoTiff({90, 80, 10.0, 11}, input);
    const Captured run = RunCaptured({"demo", "--workdir", work_, "--input", input});
    ASSERT_EQ(run.status, 0) << run.out;
    for (const char* file :
         {"ZONES.tif", "SLOPE.tif", "RUGOSITY.tif", "zones.png", "bathymetry.png"}) {
        EXPECT_TRUE(fs::exists(fs::path(work_) / file)) << file;
        EXPECT_NE(run.out.find((fs::path(work_) / file).string()), std::string::npos) << file;
    }

    // The zone grid counted cell by cell.
    const raster::RasterPtr zones = testing::OpenRaster(work_ + "/ZONES.tif");
    const raster::Grid& grid = zones->GetGrid();
    const std::vector<double> cells = testing::ReadAll(zones);
    std::map<int, std::int64_t> counts;
    std::int64_t zoned = 0;
    for (double v : cells) {
        if (std::isnan(v)) continue;
        ++counts[static_cast<int>(v)];
        ++zoned;
    }
    ASSERT_GT(counts.size(), 3u);

    // Rows: class, a zone name of several words, cells, share %, km2; and the total.
    std::map<int, std::int64_t> printed;
    std::istringstream lines(run.out.substr(run.out.find("share %")));
    std::string line;
    std::getline(lines, line);
    while (std::getline(lines, line) && !line.empty()) {
        std::istringstream words(line);
        std::vector<std::string> w;
        for (std::string word; words >> word;) w.push_back(word);
        ASSERT_GE(w.size(), 4u) << line;
        const auto n = w.size();
        const std::int64_t count = std::stoll(w[n - 3]);
        const double share = std::stod(w[n - 2]), km2 = std::stod(w[n - 1]);
        // Printed to two and three decimals.
        EXPECT_NEAR(share, 100.0 * count / zoned, 0.005 + 1e-9) << line;
        EXPECT_NEAR(km2, count * 100.0 / 1e6, 0.0005 + 1e-9) << line;
        if (line.find("all zones") != std::string::npos) {
            EXPECT_EQ(count, zoned);
        } else {
            printed[std::stoi(w[0])] = count;
        }
    }
    EXPECT_EQ(printed, counts);
    EXPECT_NE(run.out.find("Open plain"), std::string::npos);

    // The colours the map gives each class.
    auto layer = std::make_shared<map::RasterLayer>();
    layer->CreateFromDataset(raster::RasterDataset::Open(work_ + "/ZONES.tif"));
    ChangeRenderToUVRenderer(layer);
    std::map<int, QColor> colorOf;
    const map::view::Legend legend = map::view::LegendOf(*layer);
    for (const map::view::LegendClass& entry : legend.groups.at(0).classes) {
        colorOf[std::stoi(entry.values)] = entry.color;
    }
    ASSERT_EQ(colorOf.size(), counts.size());

    // Cells inside a patch of one class show its colour; a hole shows no class.
    const QImage picture(QString::fromStdString(work_ + "/zones.png"));
    ASSERT_FALSE(picture.isNull());
    const Placement at = PlacementOf(picture);
    EXPECT_EQ(at.extent.XMin, grid.left);
    EXPECT_EQ(at.extent.YMax, grid.top);
    int checked = 0;
    for (std::int64_t r = 1; r + 1 < grid.rows; r += 3) {
        for (std::int64_t c = 1; c + 1 < grid.cols; c += 3) {
            const double v = cells[r * grid.cols + c];
            bool uniform = true;
            for (int dr = -1; dr <= 1; ++dr) {
                for (int dc = -1; dc <= 1; ++dc) {
                    const double n = cells[(r + dr) * grid.cols + c + dc];
                    uniform = uniform && (n == v || (std::isnan(n) && std::isnan(v)));
                }
            }
            if (!uniform) continue;
            const QColor pixel = picture.pixelColor(at.PixelOf(grid, c, r));
            if (std::isnan(v)) {
                for (const auto& [value, color] : colorOf) EXPECT_NE(pixel, color);
            } else {
                EXPECT_EQ(pixel, colorOf.at(static_cast<int>(v))) << "cell " << c << "," << r;
            }
            ++checked;
        }
    }
    EXPECT_GT(checked, 20);
}

TEST_F(DemoCommandTest, NeverWritesOverAGridAndChecksItsInput) {
    fs::create_directories(work_);
    { std::ofstream(work_ + "/SLOPE.tif") << "mine"; }
    const std::string input = dir_ / "survey.tif";
    synth::WriteGeoTiff({20, 20, 10.0, 3}, input);
    EXPECT_EQ(Halvane({"demo", "--workdir", work_, "--input", input}), 1);
    EXPECT_EQ(std::distance(fs::directory_iterator(work_), fs::directory_iterator()), 1);
    std::ifstream kept(work_ + "/SLOPE.tif");
    EXPECT_EQ(std::string(std::istreambuf_iterator<char>(kept), {}), "mine");

    EXPECT_EQ(Halvane({"demo", "--workdir", dir_ / "other", "--input", dir_ / "none.tif"}), 1);
    EXPECT_EQ(Halvane({"demo", "extra"}), 2);
}

TEST_F(DemoCommandTest, MapStretchesAFloatingGridAndLabelsAZoneGrid) {
    // Quadrants 0, 10, 20, 30: mean 15, deviation 11.2, so the stretch is
    // clamped to the values, 0 to 30, and the quadrants sit at 0, 1/3, 2/3, 1.
    const raster::Grid grid{500000, 6000000, 10, 10, 20, 20};
    std::vector<double> values(grid.Cells());
    for (std::int64_t r = 0; r < grid.rows; ++r) {
        for (std::int64_t c = 0; c < grid.cols; ++c) {
            values[r * grid.cols + c] = 10.0 * ((r >= 10 ? 2 : 0) + (c >= 10 ? 1 : 0));
        }
    }
    testing::WriteGrid(dir_ / "quadrants.tif", grid, values);
    const std::string png = dir_ / "quadrants.png";
    ASSERT_EQ(Halvane({"map", "--out", png, dir_ / "quadrants.tif"}), 0);
    const QImage picture(QString::fromStdString(png));
    const Placement at = PlacementOf(picture);
    EXPECT_EQ(picture.pixelColor(at.PixelOf(grid, 5, 5)), map::view::RampColor(0.0));
    EXPECT_EQ(picture.pixelColor(at.PixelOf(grid, 15, 5)), map::view::RampColor(1.0 / 3));
    EXPECT_EQ(picture.pixelColor(at.PixelOf(grid, 5, 15)), map::view::RampColor(2.0 / 3));
    EXPECT_EQ(picture.pixelColor(at.PixelOf(grid, 15, 15)), map::view::RampColor(1.0));

    // The same cells as integers with a table are classes; 1..4 stand for the
    // dictionary's first four zones.
    for (double& v : values) v = v / 10 + 1;
    testing::WriteGrid(dir_ / "zones.tif", grid, values, true);
    EXPECT_EQ(Halvane({"map", "--out", dir_ / "zones.png", "--dictionary",
                       classification::DefaultDictionaryPath(), dir_ / "zones.tif"}),
              0);
    ASSERT_TRUE(g_dict_Zones);
    EXPECT_EQ(g_dict_Zones->at(1), "Trough in a basin");
    EXPECT_EQ(Halvane({"map", "--out", dir_ / "x.png", "--dictionary", png, dir_ / "zones.tif"}),
              1);
    EXPECT_EQ(Halvane({"map", dir_ / "zones.tif"}), 2);
}

}  // namespace
}  // namespace halvane::apps
