#pragma once
// What a newcomer runs first: the whole classification of the bundled sample
// with a table and pictures of the result; and the picture of any grid.

#include <string>

#include "apps/CommandLine.h"

namespace halvane::apps {

int RunDemo(const Arguments& arguments);
int RunMap(const Arguments& arguments);

// The bundled sample beside the program.
std::string SamplePath();

}  // namespace halvane::apps
