#include "platform/map/Layers.h"

#include <algorithm>

#include "platform/raster/Storage.h"
#include "platform/runtime/Failure.h"

namespace halvane::map {

void RasterLayer::CreateFromDataset(const raster::RasterDatasetPtr& dataset) {
    raster::RasterDataset& source = runtime::Deref(dataset);
    raster_ = source.CreateDefaultRaster();
    Name(source.Name());
    // A renderer made for other data would misdraw this one.
    renderer_.reset();
}

void RasterLayer::CreateFromFilePath(const std::string& path) {
    CreateFromDataset(raster::RasterDataset::Open(path));
}

}  // namespace halvane::map

namespace halvane::map {

bool ShowStoredClasses(RasterLayer& layer) {
    const raster::RasterPtr& raster = layer.Raster();
    const auto band = runtime::Deref(raster).Item(0);
    if (!band->HasTable()) return false;
    const raster::AttributeTable& table = band->AttributeTable();
    if (std::ranges::none_of(table,
                             [](const raster::AttributeRow& r) { return r.color.has_value(); })) {
        return false;
    }
    auto renderer = std::make_shared<RasterUniqueValueRenderer>();
    renderer->Raster(raster);
    renderer->HeadingCount(1);
    renderer->Heading(0, "All Data Values");
    renderer->ClassCount(0, static_cast<std::int32_t>(table.size()));
    renderer->Field("Value");
    for (std::size_t i = 0; i < table.size(); ++i) {
        const auto k = static_cast<std::int32_t>(i);
        renderer->AddValue(0, k, table[i].Value);
        renderer->Label(0, k, table[i].Class_Name);
        const raster::Rgb rgb = table[i].color.value_or(raster::Rgb{});
        auto symbol = std::make_shared<SimpleFillSymbol>();
        symbol->Color({rgb.red, rgb.green, rgb.blue});
        renderer->Symbol(0, k, symbol);
    }
    renderer->Update();
    layer.Renderer(renderer);
    return true;
}

}  // namespace halvane::map
