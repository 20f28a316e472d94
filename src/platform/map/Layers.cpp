#include "platform/map/Layers.h"

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
