#pragma once
// Commands over the raster engine alone: calc, slope, info.

#include <functional>
#include <memory>
#include <string>

#include "apps/CommandLine.h"
#include "platform/ui/ConsoleServices.h"

namespace halvane::apps {

int RunCalc(const Arguments& arguments);
int RunSlope(const Arguments& arguments);
int RunInfo(const Arguments& arguments);

// Runs body with the console as the desktop, and the engine's passes on a bar
// of the command's own beside the stages' progress dialog; a failure is
// reported as the desktop would report it, and with `trace` every call on the
// map algebra operators is printed there too. Gives the exit status: 0, or 1
// when body gave false or any failure was reported.
int RunReported(const std::string& command, bool trace, const std::function<bool()>& body);
// The same on the caller's console, which shows the progress it chooses to;
// the engine's own passes show none.
int RunReported(ui::ConsoleServices& console, const std::string& command, bool trace,
                const std::function<bool()>& body);

// Makes the console of each run of the first RunReported: on stderr, unless a
// test has put a maker of its own here to watch what the runs show.
std::function<std::unique_ptr<ui::ConsoleServices>()>& RunConsole();

}  // namespace halvane::apps
