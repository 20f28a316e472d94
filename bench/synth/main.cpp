// halvane-synth: writes a synthetic projected bathymetry GeoTIFF, for benchmarks and
// for remaking the bundled sample (scripts/make-sample.sh).

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <string>
#include <string_view>
#include <type_traits>

#include "synth/Synth.h"

namespace {

constexpr const char* kUsage =
    "usage: halvane-synth [--cols N] [--rows N] [--cell METRES] [--seed N] [--depth-step METRES]\n"
    "                     --out PATH\n"
    "Writes a Float32 GeoTIFF (EPSG:32631, depths in metres, negative down, NoData -9999)\n"
    "of a shelf, a canyon-cut slope, ridges, banks, depressions and survey gaps.\n"
    "Defaults: 1000 x 1000 cells of 10 m, seed 1, depths kept to every bit (a depth step\n"
    "of 0). The same arguments give the same file.\n";

[[noreturn]] void Usage(const std::string& problem) {
    std::fprintf(stderr, "halvane-synth: %s\n%s", problem.c_str(), kUsage);
    std::exit(2);
}

template <typename T>
T Number(std::string_view option, const char* text) {
    std::size_t used = 0;
    try {
        T value;
        if constexpr (std::is_same_v<T, double>) {
            value = std::stod(text, &used);
        } else {
            value = static_cast<T>(std::stoull(text, &used));
        }
        if (text[used] == '\0') return value;
    } catch (const std::exception&) {
    }
    Usage(std::string(option) + " needs a number, not '" + text + "'");
}

}  // namespace

int main(int argc, char** argv) {
    halvane::synth::Params params;
    std::string out;
    for (int i = 1; i < argc; ++i) {
        const std::string_view arg = argv[i];
        if (arg == "--help" || arg == "-h") {
            std::fputs(kUsage, stdout);
            return 0;
        }
        if (i + 1 >= argc) Usage("missing value after " + std::string(arg));
        const char* value = argv[++i];
        if (arg == "--cols") {
            params.cols = Number<int>(arg, value);
        } else if (arg == "--rows") {
            params.rows = Number<int>(arg, value);
        } else if (arg == "--cell") {
            params.cell = Number<double>(arg, value);
        } else if (arg == "--seed") {
            params.seed = Number<std::uint64_t>(arg, value);
        } else if (arg == "--depth-step") {
            params.depthStep = Number<double>(arg, value);
        } else if (arg == "--out") {
            out = value;
        } else {
            Usage("unknown option " + std::string(arg));
        }
    }
    if (out.empty()) Usage("--out is required");

    try {
        int shown = -1;
        halvane::synth::WriteGeoTiff(params, out, [&shown](double done) {
            const int percent = static_cast<int>(done * 100.0);
            if (percent / 10 != shown / 10) {
                shown = percent;
                std::fprintf(stderr, "\rhalvane-synth: %3d%%", percent);
                if (percent == 100) std::fputc('\n', stderr);
            }
        });
    } catch (const std::exception& failure) {
        std::fprintf(stderr, "halvane-synth: %s\n", failure.what());
        return 1;
    }
    return 0;
}
