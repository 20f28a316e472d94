// The map model: the layer list and its listeners, raster layers, the
// unique-value renderer and the colour ramp.

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <functional>
#include <vector>

#include "platform/map/Application.h"
#include "platform/raster/Storage.h"
#include "support/GridFiles.h"

namespace halvane::map {
namespace {

// The failure's number, or 0 when `call` does not fail.
int FailureNumber(const std::function<void()>& call) {
    try {
        call();
    } catch (const runtime::Failure& failure) {
        return failure.number;
    }
    return 0;
}

std::vector<Color> Colors(std::int32_t size, std::int32_t seed) {
    RandomColorRamp ramp;
    ramp.Size(size);
    ramp.Seed(seed);
    bool ok = false;
    ramp.CreateRamp(ok);
    EXPECT_TRUE(ok);
    std::vector<Color> colors;
    for (std::int32_t i = 0; i < size; ++i) colors.push_back(ramp.Color(i));
    return colors;
}

TEST(RandomColorRampTest, SameSeedGivesTheSameVariedColoursAndAnotherSeedOthers) {
    const auto first = Colors(12, 100);
    EXPECT_EQ(first, Colors(12, 100));
    EXPECT_NE(std::count(first.begin(), first.end(), first.front()), 12);
    // Colour i does not depend on the size: a larger ramp begins with a smaller one.
    const auto larger = Colors(30, 100);
    EXPECT_EQ(std::vector<Color>(larger.begin(), larger.begin() + 12), first);
    EXPECT_NE(Colors(12, 101), first);
}

TEST(RandomColorRampTest, ColoursAreNeitherDarkNorGreyAndNeighboursDiffer) {
    const auto colors = Colors(500, 100);
    for (std::size_t i = 0; i < colors.size(); ++i) {
        const Color& c = colors[i];
        const int high = std::max({c.red, c.green, c.blue});
        EXPECT_GE(high, 150) << "dark colour " << i;
        EXPECT_GE(high - std::min({c.red, c.green, c.blue}), 60) << "greyish colour " << i;
        if (i == 0) continue;
        const Color& b = colors[i - 1];
        const int distance =
            std::abs(c.red - b.red) + std::abs(c.green - b.green) + std::abs(c.blue - b.blue);
        EXPECT_GE(distance, 60) << "colours " << i - 1 << " and " << i << " look alike";
    }
}

TEST(MapModelTest, RasterLayerShowsItsDatasetUnderItsName) {
    testing::TempDir dir;
    testing::WriteGrid(dir / "Zones.tif", {0, 20, 10, 10, 2, 2}, {1, 2, 3, 4}, true);
    RasterLayer layer;
    EXPECT_EQ(FailureNumber([&] { layer.CreateFromDataset(nullptr); }), runtime::kObjectNotSet);
    layer.Renderer(std::make_shared<RasterUniqueValueRenderer>());
    layer.CreateFromDataset(raster::RasterDataset::Open(dir / "Zones.tif"));
    EXPECT_EQ(layer.Name(), "Zones");
    ASSERT_NE(layer.Raster(), nullptr);
    EXPECT_EQ(testing::ReadAll(layer.Raster()), (std::vector<double>{1, 2, 3, 4}));
    EXPECT_EQ(layer.Renderer(), nullptr);  // one made for other data would misdraw these
}

TEST(MapModelTest, NewLayersGoOnTopAndListenersAreToldAfterwards) {
    const Application app;
    const MapPtr map = app.Document()->FocusMap();
    EXPECT_EQ(app.Document()->FocusMap(), map);
    std::vector<std::string> seen;  // the top layer's name at each notice
    const int subscription = map->Subscribe([&] { seen.push_back(map->Layer(0)->Name()); });
    int laterCalls = 0;
    int later = 0;
    map->Subscribe([&] { map->Unsubscribe(later); });  // while the others are told
    later = map->Subscribe([&] { ++laterCalls; });

    std::vector<LayerPtr> layers;
    for (const char* name : {"broad", "fine"}) {
        layers.push_back(std::make_shared<RasterLayer>());
        layers.back()->Name(name);
        map->AddLayer(layers.back());
    }
    ASSERT_EQ(map->LayerCount(), 2);
    EXPECT_EQ(map->Layer(0), layers[1]);
    EXPECT_EQ(map->Layer(1), layers[0]);
    EXPECT_EQ(seen, (std::vector<std::string>{"broad", "fine"}));
    EXPECT_EQ(laterCalls, 0);
    EXPECT_EQ(FailureNumber([&] { map->Layer(2); }), runtime::kSubscriptOutOfRange);
    EXPECT_EQ(FailureNumber([&] { map->AddLayer(nullptr); }), runtime::kObjectNotSet);

    map->Unsubscribe(subscription);
    map->AddLayer(std::make_shared<RasterLayer>());
    EXPECT_EQ(map->LayerCount(), 3);
    EXPECT_EQ(seen.size(), 2u);
}

}  // namespace
}  // namespace halvane::map
