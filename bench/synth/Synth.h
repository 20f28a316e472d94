#pragma once
// Synthetic projected bathymetry for benchmarks and the bundled sample: a shelf, a
// slope cut by canyons, abyssal ridges, banks, depressions, fractal roughness and
// multibeam-like NoData gaps. Every cell is a pure function of the seed, the grid
// size and its own position, so any block can be made on its own and the result is
// the same on every machine (integer hashing, no library random numbers, no
// transcendental functions whose last bit may differ between C libraries).

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace halvane::synth {

constexpr float kNoData = -9999.0f;
constexpr int kEpsg = 32631;  // UTM zone 31N: a projected system with metres
constexpr double kOriginX = 400000.0;
constexpr double kOriginY = 6000000.0;  // upper-left corner
constexpr int kBlock = 256;

struct Params {
    int cols = 1000;
    int rows = 1000;
    double cell = 10.0;
    std::uint64_t seed = 1;
    // Depths are rounded to a multiple of this many metres; 0 keeps every bit.
    // A power of two (1/64 m) leaves the low mantissa bits zero, which is what
    // lets a 1000 x 1000 sample compress to under 2 MB; survey soundings are no
    // finer than a centimetre anyway.
    double depthStep = 0.0;
};

class Relief {
public:
    explicit Relief(const Params& params);

    // Depth in metres (negative down) of one cell, or kNoData.
    float At(int col, int row) const;
    // Row-major window of width x height cells starting at (col0, row0).
    void Fill(int col0, int row0, int width, int height, float* out) const;

    const Params& Grid() const { return params_; }

private:
    struct Bump {
        double x, y, radius, height;
        double share;  // > 0: rise by this share of the local water depth instead
    };
    struct Canyon {
        double axis, halfWidth, depth;
        std::uint64_t salt;
    };

    double Surface(double x, double y) const;
    bool IsGap(double x, double y) const;

    Params params_;
    double width_, height_, scale_, drop_;
    int octaves_;
    std::vector<Canyon> canyons_;
    std::vector<Bump> bumps_;
};

// Writes the grid as a tiled, compressed Float32 GeoTIFF, one strip of blocks at a
// time, so memory stays near one strip whatever the grid size. `progress` (may be
// empty) gets the fraction done after each strip. Throws std::runtime_error.
void WriteGeoTiff(const Params& params, const std::string& path,
                  const std::function<void(double)>& progress = {});

}  // namespace halvane::synth
