#pragma once
// Commands over the raster engine alone: calc, slope, info.

#include <functional>
#include <string>

#include "apps/CommandLine.h"
#include "platform/ui/ConsoleServices.h"

namespace halvane::apps {

int RunCalc(const Arguments& arguments);
int RunSlope(const Arguments& arguments);
int RunInfo(const Arguments& arguments);

// Runs body with the console as the desktop and the engine's progress on
// stderr; a failure is reported as the desktop would report it, and with
// `trace` every call on the map algebra operators is printed there too. Gives
// the exit status: 0, or 1 when body gave false or any failure was reported.
int RunReported(const std::string& command, bool trace, const std::function<bool()>& body);
// The same on the caller's console, which shows the progress it chooses to;
// the engine's own passes show none.
int RunReported(ui::ConsoleServices& console, const std::string& command, bool trace,
                const std::function<bool()>& body);

}  // namespace halvane::apps
