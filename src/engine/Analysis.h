#pragma once
// The analysis stages of modUtil: BPI, its statistics and standardization,
// slope and resampling. Each is one map algebra expression (slope one surface
// call) over the session record; the pages fill the record before they call.

#include <cstdint>
#include <string>

#include "platform/raster/Fwd.h"

namespace halvane {

// The ring's mean subtracted from each cell, rounded to an integer, saved as
// sName (or "tmp" & sTag when empty). The radii go into the expression as the
// user typed them and are emptied after a finished run. sTag "BroadBPI" fills
// the broad variables; any other text the fine ones. Null after a cancel or
// a reported failure.
raster::RasterPtr BPI_Build(const raster::RasterPtr& pRaster, std::string& sInner,
                            std::string& sOuter, const std::string& sName, const std::string& sTag,
                            std::int32_t hWnd);

// Mean and standard deviation of the grid into the broad variables for sTag
// "Small", into the fine ones for any other text.
void calcRasterStats(const raster::RasterPtr& pRaster, const std::string& sTag);

// 100 times the z-score, cut toward zero after adding .05, saved as sName
// (or the tag's temporary name when empty). Null after a cancel or failure.
raster::RasterPtr BPI_Standardize(const raster::RasterPtr& pRaster, double& dMean, double& dStdDev,
                                  std::string& sName, const std::string& sTag, std::int32_t hWnd);

// "SLOPE" in degrees from the grid BPI works on, saved in the working folder.
void BuildSlope();

// The grid at a new cell size, as one of the page's three method texts says;
// saved as sName, or as "tmpres" when empty. Cancel is not looked at.
raster::RasterPtr ResampleRas(const raster::RasterPtr& pRaster, const std::string& sCellSize,
                              const std::string& sMethod, const std::string& sName);

}  // namespace halvane
