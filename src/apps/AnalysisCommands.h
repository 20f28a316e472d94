#pragma once
// Commands that run one analysis stage through the session record, as its
// page would: bpi, standardize, resample, rugosity.

#include <string>

#include "apps/CommandLine.h"
#include "platform/raster/Fwd.h"

namespace halvane::apps {

int RunBpi(const Arguments& arguments);
int RunStandardize(const Arguments& arguments);
int RunResample(const Arguments& arguments);
int RunRugosity(const Arguments& arguments);

// The rugosity page's run on the grid at `input`, saved in `workDir` as
// `name` in a session of its own: the grid stored, or null when it failed
// (the stage has reported). Run it under RunReported.
raster::RasterDatasetPtr RugosityOf(const std::string& workDir, const std::string& input,
                                    const std::string& name);

}  // namespace halvane::apps
