#pragma once
// Commands over the classification: the wizard's whole route from a
// bathymetric grid to the zone grid, and a dictionary printed as a table.

#include "apps/CommandLine.h"

namespace halvane::apps {

int RunClassify(const Arguments& arguments);
int RunDictionary(const Arguments& arguments);

}  // namespace halvane::apps
