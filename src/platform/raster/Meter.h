#pragma once
// What each stage of a run costs: wall time and the bytes the process moved
// through the kernel while it ran. A stage is one pass of the engine over a
// grid (a grid written, statistics gathered, a grid removed). bench/ needs to
// see inside one command to tell which pass is slow; nothing else reads it.

#include <chrono>
#include <cstdint>
#include <string>

namespace halvane::raster {

// Measures from construction to destruction, and appends one line
// "stage,seconds,bytes read,bytes written" to the file named by the
// environment variable HALVANE_STAGE_LOG, if it is set. Costs nothing else.
class StageMeter {
public:
    explicit StageMeter(std::string stage);
    ~StageMeter();
    StageMeter(const StageMeter&) = delete;
    StageMeter& operator=(const StageMeter&) = delete;

private:
    std::string stage_;
    const char* log_ = nullptr;
    std::chrono::steady_clock::time_point start_;
    std::int64_t read_ = 0;
    std::int64_t written_ = 0;
};

}  // namespace halvane::raster
