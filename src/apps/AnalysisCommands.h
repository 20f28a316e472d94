#pragma once
// Commands that run one analysis stage through the session record, as its
// page would: bpi, standardize, resample, rugosity.

#include "apps/CommandLine.h"

namespace halvane::apps {

int RunBpi(const Arguments& arguments);
int RunStandardize(const Arguments& arguments);
int RunResample(const Arguments& arguments);
int RunRugosity(const Arguments& arguments);

}  // namespace halvane::apps
