// Drawing layers without any window: pixels against the cell under each
// pixel's centre, worked out by a plain loop, for classified and stretched
// grids, zoomed in, panned and zoomed out.

#include <gtest/gtest.h>

#include <cmath>
#include <map>

#include "platform/map/view/Picture.h"
#include "platform/map/view/Rendering.h"
#include "support/GridFiles.h"

namespace halvane::map::view {
namespace {

using raster::Envelope;
using raster::Grid;
using testing::kNoData;

class RenderingTest : public ::testing::Test {
protected:
    RasterLayerPtr Layer(const Grid& grid, const std::vector<double>& values, bool integer) {
        const std::string path = dir_ / ("grid" + std::to_string(++grids_) + ".tif");
        testing::WriteGrid(path, grid, values, integer);
        auto layer = std::make_shared<RasterLayer>();
        layer->CreateFromDataset(raster::RasterDataset::Open(path));
        return layer;
    }

    // Every pixel of `image` against `expected`(value of the cell under the
    // pixel's centre, or NaN outside the grid).
    template <class Expected>
    static void ExpectPixels(const QImage& image, const Envelope& extent, const Grid& grid,
                             const std::vector<double>& values, Expected expected,
                             const char* what) {
        const double ux = (extent.XMax - extent.XMin) / image.width();
        const double uy = (extent.YMax - extent.YMin) / image.height();
        for (int py = 0; py < image.height(); ++py) {
            for (int px = 0; px < image.width(); ++px) {
                const double x = extent.XMin + (px + 0.5) * ux;
                const double y = extent.YMax - (py + 0.5) * uy;
                const auto col = static_cast<std::int64_t>(std::floor((x - grid.left) / grid.cellX));
                const auto row = static_cast<std::int64_t>(std::floor((grid.top - y) / grid.cellY));
                const bool inside = col >= 0 && row >= 0 && col < grid.cols && row < grid.rows;
                const double value = inside ? values[row * grid.cols + col] : kNoData;
                ASSERT_EQ(QColor::fromRgba(image.pixel(px, py)), expected(value))
                    << what << ": pixel " << px << "," << py << ", cell " << col << "," << row;
            }
        }
    }

    testing::TempDir dir_;
    int grids_ = 0;
};

TEST_F(RenderingTest, ClassesInTheirSymbolColoursAndEverythingElseClear) {
    // 40 x 30 cells of 1 m: classes 1, 2 and 5 in bands, 9 without a class, NoData holes.
    const Grid grid{1000, 2000, 1, 1, 40, 30};
    std::vector<double> values(grid.Cells());
    for (std::int64_t i = 0; i < grid.Cells(); ++i) {
        const std::int64_t c = i % grid.cols;
        values[i] = i % 13 == 0 ? kNoData : c < 10 ? 1 : c < 20 ? 2 : c < 30 ? 5 : 9;
    }
    const RasterLayerPtr layer = Layer(grid, values, true);
    const std::map<int, QColor> colors = {{1, QColor(200, 30, 30)}, {2, QColor(30, 160, 60)},
                                          {5, QColor(40, 40, 220)}};
    auto renderer = std::make_shared<RasterUniqueValueRenderer>();
    renderer->Raster(layer->Raster());
    renderer->HeadingCount(1);
    renderer->Heading(0, "All Data Values");
    renderer->ClassCount(0, 3);
    int k = 0;
    for (const auto& [value, color] : colors) {
        renderer->AddValue(0, k, value);
        renderer->Label(0, k, "class " + std::to_string(value));
        auto symbol = std::make_shared<SimpleFillSymbol>();
        symbol->Color({static_cast<std::uint8_t>(color.red()),
                       static_cast<std::uint8_t>(color.green()),
                       static_cast<std::uint8_t>(color.blue())});
        renderer->Symbol(0, k++, symbol);
    }
    layer->Renderer(renderer);

    auto expected = [&](double value) {
        const auto found = colors.find(std::isnan(value) ? -1 : static_cast<int>(value));
        return found == colors.end() ? QColor(Qt::transparent) : found->second;
    };
    const struct {
        const char* what;
        Envelope extent;
        QSize size;
    } views[] = {
        {"whole grid, 8 px a cell", {1000, 1970, 1040, 2000}, {320, 240}},
        {"panned half off the grid", {1017.25, 1955.5, 1057.25, 1985.5}, {160, 120}},
        {"zoomed in on a few cells", {1008.4, 1990, 1012.4, 1993}, {100, 75}},
        {"zoomed out, 4 cells a px", {1000, 1970, 1040, 2000}, {10, 8}},
    };
    for (const auto& view : views) {
        ExpectPixels(RenderLayer(*layer, view.extent, view.size), view.extent, grid, values,
                     expected, view.what);
    }

    const Legend legend = LegendOf(*layer);
    ASSERT_EQ(legend.groups.size(), 1u);
    EXPECT_EQ(legend.groups[0].heading, "All Data Values");
    ASSERT_EQ(legend.groups[0].classes.size(), 3u);
    EXPECT_EQ(legend.groups[0].classes[2].label, "class 5");
    EXPECT_EQ(legend.groups[0].classes[2].color, colors.at(5));
    EXPECT_FALSE(legend.stretch);

    EXPECT_EQ(CellValueAt(*layer, 1025.5, 1999.5), 5.0);
    EXPECT_EQ(CellValueAt(*layer, 1000.5, 1999.5), std::nullopt);  // cell 0 is NoData
    EXPECT_EQ(CellValueAt(*layer, 999.5, 1999.5), std::nullopt);   // off the grid
}

TEST_F(RenderingTest, GridWithoutRendererSpreadsTwoDeviationsAroundTheMean) {
    // Nine cells of 0 and one of 100: mean 10, deviation 30, so the stretch
    // runs from 0 (the minimum, above 10 - 60) to 70.
    const Grid grid{0, 30, 10, 10, 4, 3};
    const RasterLayerPtr layer =
        Layer(grid, {0, 0, 0, 0, 0, kNoData, 0, 0, 0, 0, 100, kNoData}, false);
    const Legend legend = LegendOf(*layer);
    ASSERT_TRUE(legend.stretch);
    EXPECT_DOUBLE_EQ(legend.stretch->low, 0);
    EXPECT_DOUBLE_EQ(legend.stretch->high, 70);
    ASSERT_EQ(legend.groups.size(), 1u);
    EXPECT_EQ(legend.groups[0].classes[0].label, "High : 70");
    EXPECT_EQ(legend.groups[0].classes[1].label, "Low : 0");

    const QImage image = RenderLayer(*layer, {0, 0, 40, 30}, {4, 3});
    EXPECT_EQ(QColor::fromRgba(image.pixel(0, 0)), RampColor(0.0));
    EXPECT_EQ(QColor::fromRgba(image.pixel(2, 2)), RampColor(1.0));
    EXPECT_EQ(QColor::fromRgba(image.pixel(1, 1)), QColor(Qt::transparent));
    EXPECT_LT(RampColor(0.0).lightness(), RampColor(1.0).lightness());  // deep reads dark
}

TEST_F(RenderingTest, MapDrawsVisibleLayersBottomFirst) {
    const Grid grid{0, 20, 10, 10, 2, 2};
    const RasterLayerPtr bottom = Layer(grid, {1, 1, 1, 1}, false);
    const RasterLayerPtr top = Layer(grid, {kNoData, 3, 4, 5}, false);
    Map map;
    map.AddLayer(bottom);
    map.AddLayer(top);
    ASSERT_EQ(FullExtent(map)->XMax, 20);

    auto draw = [&] {
        QImage image(2, 2, QImage::Format_ARGB32);
        image.fill(Qt::white);
        QPainter painter(&image);
        DrawMap(painter, map, {0, 0, 20, 20}, image.size());
        return image;
    };
    QImage image = draw();
    // The bottom grid has one value, which the stretch draws in the middle of the ramp.
    EXPECT_EQ(QColor(image.pixel(0, 0)), RampColor(0.5));
    EXPECT_EQ(QColor(image.pixel(1, 1)), RampColor(1.0));
    top->Visible(false);
    image = draw();
    EXPECT_EQ(QColor(image.pixel(1, 1)), RampColor(0.5));
}

// Planes whose shading is known from geometry alone: the light stands at
// azimuth 315 and 45 degrees up, and 1 is flat ground. Cells are unevenly
// spaced, as a thinned-out read leaves them, which a plane must not notice.
TEST(HillshadeTest, PlanesShadeByTheirAngleToTheLightWhateverTheSpacing) {
    const std::vector<double> eastings = {0, 10, 30, 40, 60, 70};
    const std::vector<double> southings = {0, 20, 30, 50, 60};
    struct Case {
        double dzEast, dzNorth, exaggeration, expected;
        const char* what;
    } cases[] = {
        {0, 0, 3, 1.0, "flat"},
        // The normal points at the light: cos 0 over sin 45.
        {std::sqrt(0.5), -std::sqrt(0.5), 1, std::sqrt(2.0), "facing the light"},
        {std::sqrt(0.125), -std::sqrt(0.125), 2, std::sqrt(2.0), "half as steep, twice as high"},
        {-1, 1, 1, 0.0, "turned away, steeper than the light is high"},
        // Across the light's azimuth: sin 45 cos(slope) over sin 45.
        {-1, -1, 1, 1 / std::sqrt(3.0), "across the light"},
    };
    for (const Case& c : cases) {
        std::vector<double> heights;
        for (double s : southings) {
            for (double e : eastings) heights.push_back(c.dzEast * e - c.dzNorth * s);
        }
        for (float shade : Hillshade(heights, eastings, southings, c.exaggeration)) {
            ASSERT_NEAR(shade, c.expected, 1e-5) << c.what;
        }
    }
    // A hole, and cells next to it, on flat ground stay flat.
    std::vector<double> flat(30, -20.0);
    flat[14] = kNoData;
    for (float shade : Hillshade(flat, eastings, southings, 3)) EXPECT_FLOAT_EQ(shade, 1.0f);
}

TEST(PictureTest, ScaleBarIsTheLongestRoundLengthThatFits) {
    const std::pair<double, double> cases[] = {{2500, 2000}, {1000, 1000}, {999, 500},
                                               {7, 5},       {0.3, 0.2},   {0, 0}};
    for (const auto& [most, length] : cases) EXPECT_DOUBLE_EQ(ScaleBarLength(most), length) << most;
}

}  // namespace
}  // namespace halvane::map::view
