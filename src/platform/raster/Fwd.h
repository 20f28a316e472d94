#pragma once
// Handles of the raster engine, for code that only keeps them.

#include <memory>

namespace halvane::raster {

class Raster;
class RasterBand;
class RasterDataset;
class RasterWorkspace;

using RasterPtr = std::shared_ptr<Raster>;
using RasterDatasetPtr = std::shared_ptr<RasterDataset>;
using RasterWorkspacePtr = std::shared_ptr<RasterWorkspace>;

}  // namespace halvane::raster
