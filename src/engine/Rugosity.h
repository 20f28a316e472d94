#pragma once
// modRugosity: the true surface area of the eight triangles between a cell and
// its neighbours, over the planar area of a cell, in 34 map algebra
// executions. No handler of its own: failures go to the calling page's.

#include "platform/raster/Fwd.h"

namespace halvane {

// Reads g_p_Rugosity_RasterDataset, g_s_WorkingDir and
// g_s_SaveRugosity_OutputData; saves the grid and opens it into
// g_p_Rugosity_OutputRasterDataset.
void BuildRugosity();

// Base times height over two, cell by cell, for a triangle of these sides; a
// fresh operator of its own, with no output workspace.
raster::RasterPtr TriangleArea(raster::RasterPtr& SideA, raster::RasterPtr& SideB,
                               raster::RasterPtr& SideC);

}  // namespace halvane
