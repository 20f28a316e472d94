#include "platform/raster/Meter.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <fstream>

namespace halvane::raster {
namespace {

// Bytes read and written by every thread of the process through read() and
// write(), page cache included: what the grids cost to move, whether or not
// the disk was touched.
void KernelBytes(std::int64_t& read, std::int64_t& written) {
    read = written = 0;
    std::ifstream io("/proc/self/io");
    std::string key;
    std::int64_t value = 0;
    while (io >> key >> value) {
        if (key == "rchar:") read = value;
        if (key == "wchar:") written = value;
    }
}

}  // namespace

StageMeter::StageMeter(std::string stage)
    : stage_(std::move(stage)), log_(std::getenv("HALVANE_STAGE_LOG")) {
    if (!log_ || !*log_) return;
    KernelBytes(read_, written_);
    start_ = std::chrono::steady_clock::now();
}

StageMeter::~StageMeter() {
    if (!log_ || !*log_) return;
    const double seconds =
        std::chrono::duration<double>(std::chrono::steady_clock::now() - start_).count();
    std::int64_t read = 0, written = 0;
    KernelBytes(read, written);
    // One write of a whole line, so the two commands of a chain can share a log.
    char line[512];
    const int length = std::snprintf(line, sizeof line, "%s,%.3f,%lld,%lld\n", stage_.c_str(),
                                     seconds, static_cast<long long>(read - read_),
                                     static_cast<long long>(written - written_));
    if (std::FILE* file = std::fopen(log_, "a")) {
        std::fwrite(line, 1, static_cast<std::size_t>(std::max(length, 0)), file);
        std::fclose(file);
    }
}

}  // namespace halvane::raster
