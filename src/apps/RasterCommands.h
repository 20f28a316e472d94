#pragma once
// Commands over the raster engine alone: calc, slope, info.

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "apps/CommandLine.h"
#include "platform/raster/Fwd.h"
#include "platform/reporting/CommandLineStyle.h"

namespace halvane::apps {

int RunCalc(const Arguments& arguments);
int RunSlope(const Arguments& arguments);
int RunInfo(const Arguments& arguments);

// What a run shows and where it writes.
struct RunPlan {
    std::string command;              // "classify"
    std::string workFolder;           // all or nothing there; empty: writes no grids
    std::vector<std::string> stages;  // one progress bar each; none: no bars
};

// A run under way: its stage bars and its console in the command line's style.
class CommandRun {
public:
    CommandRun(const RunPlan& plan, reporting::StageBars& bars,
               reporting::CommandLineServices& console)
        : plan_(plan), bars_(bars), console_(console) {}
    // The next stage's bar, ending the one before.
    void NextStage();
    reporting::StageBars& Bars() { return bars_; }
    // Reports `text` as the run's failure and stops the run.
    [[noreturn]] void Fail(const std::string& text) { console_.Fail(text); }
    // Fails unless `path` is a grid that can be read: it is missing, empty,
    // or no raster.
    void CheckInput(const std::string& path);

private:
    const RunPlan& plan_;
    reporting::StageBars& bars_;
    reporting::CommandLineServices& console_;
    std::size_t stage_ = 0;
};

// Runs body in the command line's style (see CommandLineStyle.h), with
// --trace and --quiet taken from `arguments`: body starts each stage's bar,
// the engine's passes move the bar of the stage under way, a failure is one
// line and ends the run, and SIGINT or SIGTERM stop it. A run that fails or
// is stopped leaves its working folder as it found it. Gives the exit status:
// 0; 1 when the run failed; 128 + the signal when one stopped it.
int RunReported(const Arguments& arguments, const RunPlan& plan,
                const std::function<bool(CommandRun&)>& body);

// Where runs write their reports and bars: stderr, unless a test puts a
// stream here (its bars then take the log style).
std::ostream*& RunConsole();

// The input grid of a command, opened; the check of CommandRun::CheckInput first.
raster::RasterPtr OpenInput(CommandRun& run, const std::string& path);

}  // namespace halvane::apps
