#include "synth/Synth.h"

#include <cpl_string.h>
#include <gdal_priv.h>
#include <ogr_spatialref.h>

#include <algorithm>
#include <cmath>
#include <memory>
#include <stdexcept>

namespace halvane::synth {
namespace {

// Fractions of the grid width, west to east: shelf, then slope down to the rise.
constexpr double kShelfBreak = 0.38;
constexpr double kSlopeFoot = 0.72;
// 2^-0.7: each octave at half the wavelength keeps this share of the amplitude,
// a Hurst exponent of 0.7, near what multibeam surveys of natural seafloor show.
constexpr double kPersistence = 0.6155722066724582;
constexpr double kSandWaveLength = 180.0;  // metres
constexpr int kMaxOctaves = 14;

// Salts keep the noise fields of different features independent of one another.
enum Salt : std::uint64_t {
    kWarp = 1,
    kRoughness,
    kRidge,
    kSandPatch,
    kSandPhase,
    kCanyon,
    kMeander,
    kBank,
    kPit,
    kMount,
    kRagged,
    kBlob,
    kBlobEdge,
    kTrack,
    kTrackWidth,
    kTrackOn,
};

constexpr std::uint64_t Mix(std::uint64_t x) {
    x ^= x >> 30;
    x *= 0xbf58476d1ce4e5b9ULL;
    x ^= x >> 27;
    x *= 0x94d049bb133111ebULL;
    x ^= x >> 31;
    return x;
}

constexpr std::uint64_t Hash(std::uint64_t seed, std::int64_t ix, std::int64_t iy,
                             std::uint64_t salt) {
    return Mix(seed + Mix(static_cast<std::uint64_t>(ix) +
                          Mix(static_cast<std::uint64_t>(iy) + Mix(salt))));
}

constexpr double Unit(std::uint64_t h) { return static_cast<double>(h >> 11) * 0x1.0p-53; }

constexpr double Clamp01(double t) { return t < 0.0 ? 0.0 : (t > 1.0 ? 1.0 : t); }

constexpr double Smooth(double t) {
    t = Clamp01(t);
    return t * t * (3.0 - 2.0 * t);
}

constexpr double Smoother(double t) {
    t = Clamp01(t);
    return t * t * t * (t * (t * 6.0 - 15.0) + 10.0);
}

// Gradient noise on the unit lattice, roughly in [-1, 1], zero at lattice points.
double Noise(double x, double y, std::uint64_t seed) {
    const double fx = std::floor(x);
    const double fy = std::floor(y);
    const auto ix = static_cast<std::int64_t>(fx);
    const auto iy = static_cast<std::int64_t>(fy);
    const double tx = x - fx;
    const double ty = y - fy;
    auto corner = [seed](std::int64_t cx, std::int64_t cy, double dx, double dy) {
        switch (Hash(seed, cx, cy, 0) & 7) {
            case 0:
                return dx + dy;
            case 1:
                return dx - dy;
            case 2:
                return dy - dx;
            case 3:
                return -dx - dy;
            case 4:
                return dx;
            case 5:
                return -dx;
            case 6:
                return dy;
            default:
                return -dy;
        }
    };
    const double n00 = corner(ix, iy, tx, ty);
    const double n10 = corner(ix + 1, iy, tx - 1.0, ty);
    const double n01 = corner(ix, iy + 1, tx, ty - 1.0);
    const double n11 = corner(ix + 1, iy + 1, tx - 1.0, ty - 1.0);
    const double u = Smoother(tx);
    const double v = Smoother(ty);
    const double top = n00 + (n10 - n00) * u;
    const double bottom = n01 + (n11 - n01) * u;
    return top + (bottom - top) * v;
}

// Octaves rotate by the 3-4-5 angle so that lattice axes of successive octaves do
// not line up into a visible grain.
double Fbm(double x, double y, int octaves, double persistence, std::uint64_t seed) {
    double sum = 0.0;
    double amplitude = 1.0;
    for (int o = 0; o < octaves; ++o) {
        sum += amplitude * Noise(x, y, seed + static_cast<std::uint64_t>(o));
        const double rx = 0.8 * x - 0.6 * y;
        const double ry = 0.6 * x + 0.8 * y;
        x = 2.0 * rx + 17.3;
        y = 2.0 * ry - 5.9;
        amplitude *= persistence;
    }
    return sum;
}

std::uint64_t Salted(std::uint64_t seed, Salt salt) { return Mix(seed ^ Mix(salt)); }

}  // namespace

Relief::Relief(const Params& params) : params_(params) {
    if (params.cols <= 0 || params.rows <= 0 || !(params.cell > 0.0) ||
        !(params.depthStep >= 0.0)) {
        throw std::invalid_argument(
            "synth: columns, rows and cell size must be positive, the depth step not negative");
    }
    width_ = params.cols * params.cell;
    height_ = params.rows * params.cell;
    scale_ = std::min(width_, height_);
    // Small grids get a gentler margin so the slope stays a slope and not a cliff.
    drop_ = std::clamp(0.06 * scale_, 150.0, 2500.0);
    // Roughness octaves from a quarter of the extent down to the last one a few cells
    // can still draw.
    octaves_ = 1;
    for (double wavelength = scale_ / 8.0;
         wavelength >= 2.5 * params.cell && octaves_ < kMaxOctaves; wavelength /= 2.0) {
        ++octaves_;
    }

    const std::uint64_t seed = params.seed;
    const int canyons = std::clamp(static_cast<int>(height_ / 8000.0 + 0.5) + 2, 3, 12);
    for (int k = 0; k < canyons; ++k) {
        const std::uint64_t h = Hash(seed, k, 0, kCanyon);
        canyons_.push_back({(k + 0.5 + 0.6 * (Unit(h) - 0.5)) / canyons,
                            scale_ * (0.02 + 0.015 * Unit(Mix(h + 1))),
                            drop_ * (0.08 + 0.08 * Unit(Mix(h + 2))), Mix(h + 3)});
    }

    auto place = [&](Salt salt, int count, double x0, double x1, double r0, double r1, double h0,
                     double h1, double share) {
        for (int k = 0; k < count; ++k) {
            const std::uint64_t h = Hash(seed, k, 1, salt);
            bumps_.push_back({width_ * (x0 + (x1 - x0) * Unit(h)),
                              height_ * (0.08 + 0.84 * Unit(Mix(h + 1))),
                              scale_ * (r0 + (r1 - r0) * Unit(Mix(h + 2))),
                              drop_ * (h0 + (h1 - h0) * Unit(Mix(h + 3))), share});
        }
    };
    place(kBank, 2 + static_cast<int>(Hash(seed, 0, 2, kBank) % 3), 0.05, 0.30, 0.04, 0.09, 0.0,
          0.0, 0.8);
    place(kPit, 3 + static_cast<int>(Hash(seed, 0, 2, kPit) % 4), 0.05, 0.95, 0.008, 0.02, -0.03,
          -0.01, 0.0);
    place(kMount, 1 + static_cast<int>(Hash(seed, 0, 2, kMount) % 2), 0.80, 0.95, 0.03, 0.06, 0.15,
          0.3, 0.0);
}

double Relief::Surface(double x, double y) const {
    const std::uint64_t seed = params_.seed;
    const double v = y / height_;
    const double warpScale = scale_ * 0.35;
    const double u =
        x / width_ + 0.06 * Fbm(x / warpScale, y / warpScale, 3, 0.5, Salted(seed, kWarp));

    const double shelfEdge = -(10.0 + 0.05 * drop_);
    double z;
    if (u < kShelfBreak) {
        z = -10.0 + (shelfEdge + 10.0) * Clamp01(u / kShelfBreak);
    } else if (u < kSlopeFoot) {
        z = shelfEdge - drop_ * Smoother((u - kShelfBreak) / (kSlopeFoot - kShelfBreak));
    } else {
        z = shelfEdge - drop_ * (1.0 + 0.08 * Clamp01((u - kSlopeFoot) / (1.1 - kSlopeFoot)));
    }
    const double onSlope =
        Smooth((u - kShelfBreak + 0.05) / 0.1) * (1.0 - Smooth((u - kSlopeFoot) / 0.1));

    // Canyons head just inside the shelf break and fade out on the rise.
    const double headU = kShelfBreak - 0.06;
    const double tailU = kSlopeFoot + 0.15;
    if (u > headU && u < tailU) {
        for (const Canyon& c : canyons_) {
            const double halfWidth = c.halfWidth * (0.5 + Clamp01((u - headU) / (tailU - headU)));
            // Meanders swing about a width either way, as incised channels do.
            const double reach = 2.5 * c.halfWidth / height_;
            if (std::abs(v - c.axis) > reach * 1.6 + halfWidth / height_) continue;
            const double axis = c.axis + reach * (Noise(u * 3.0, 0.5, c.salt) +
                                                  0.4 * Noise(u * 9.0, 3.5, c.salt + kMeander));
            const double across = std::abs(v - axis) * height_ / halfWidth;
            if (across >= 1.0) continue;
            const double along = Smooth((u - headU) / 0.1) *
                                 (1.0 - 0.6 * Smooth((u - kSlopeFoot + 0.05) / 0.15)) *
                                 (1.0 - Smooth((u - tailU + 0.08) / 0.08));
            z -= c.depth * along * (1.0 - Smooth(across));
        }
    }

    // Abyssal hills: ridged noise stretched along the margin.
    const double onRise = Smooth((u - kSlopeFoot + 0.03) / 0.12);
    if (onRise > 0.0) {
        const double wavelength = scale_ / 30.0;
        double ridged = 0.0;
        double amplitude = 1.0;
        double rx = x / wavelength;
        double ry = y / (4.0 * wavelength);
        for (int o = 0; o < 3; ++o) {
            const double n = 1.0 - std::abs(Noise(rx, ry, Salted(seed, kRidge) + o));
            ridged += amplitude * n * n;
            rx *= 2.1;
            ry *= 2.1;
            amplitude *= 0.45;
        }
        z += onRise * drop_ * 0.05 * (ridged - 0.8);
    }

    // Sand waves on parts of the shelf, only where cells are fine enough to draw them.
    const double resolved = Clamp01((kSandWaveLength / params_.cell - 4.0) / 4.0);
    if (resolved > 0.0 && u < kShelfBreak - 0.03) {
        const double patchScale = scale_ * 0.2;
        const double patch =
            Smooth((Noise(x / patchScale, y / patchScale, Salted(seed, kSandPatch)) - 0.05) /
                   0.25) *
            (1.0 - Smooth((u - kShelfBreak + 0.1) / 0.07));
        if (patch > 0.0) {
            const double phase = (0.6 * x + 0.8 * y) / kSandWaveLength +
                                 0.6 * Noise(x / 700.0, y / 700.0, Salted(seed, kSandPhase));
            const double tri = 2.0 * std::abs(phase - std::floor(phase) - 0.5);
            z += resolved * patch * 2.5 * (Smooth(tri) - 0.5);
        }
    }

    for (const Bump& b : bumps_) {
        const double dx = x - b.x;
        const double dy = y - b.y;
        const double d2 = dx * dx + dy * dy;
        const double reach = b.radius * 1.2;
        if (d2 >= reach * reach) continue;
        const double ragged =
            1.0 + 0.15 * Noise(x / (b.radius * 0.3), y / (b.radius * 0.3), Salted(seed, kRagged));
        const double shape = 1.0 - Smooth(std::sqrt(d2) / b.radius * ragged);
        // A bank rises by a share of the water over it, so it never breaks the surface.
        z += shape * (b.share > 0.0 ? b.share * std::max(-8.0 - z, 0.0) : b.height);
    }

    const double coarsest = scale_ / 4.0;
    z += drop_ * 0.035 * (0.5 + 0.8 * onSlope) *
         Fbm(x / coarsest, y / coarsest, octaves_, kPersistence, Salted(seed, kRoughness));

    return std::min(z, -0.5);
}

// Holes the way multibeam surveys leave them: blotches of lost bottom detection and
// thin gaps between swaths along north-south survey lines.
bool Relief::IsGap(double x, double y) const {
    const std::uint64_t seed = params_.seed;
    const double blob = scale_ * 0.12;
    const double edge = scale_ * 0.02;
    if (Noise(x / blob, y / blob, Salted(seed, kBlob)) +
            0.25 * Noise(x / edge, y / edge, Salted(seed, kBlobEdge)) >
        0.55) {
        return true;
    }
    const double spacing = scale_ / 7.0;
    const double p =
        (x + 0.05 * scale_ * Noise(y / (scale_ * 0.2), 3.5, Salted(seed, kTrack))) / spacing;
    const double line = std::floor(p);
    const double gapRun = scale_ * 0.08;
    if (Noise(y / gapRun, line * 3.7 + 0.5, Salted(seed, kTrackOn)) < 0.2) return false;
    const double offset = std::min(p - line, line + 1.0 - p) * spacing;
    const double halfWidth =
        params_.cell *
        (0.8 + 1.5 * (0.5 + 0.5 * Noise(y / (scale_ * 0.03), line, Salted(seed, kTrackWidth))));
    return offset < halfWidth;
}

float Relief::At(int col, int row) const {
    const double x = (col + 0.5) * params_.cell;
    const double y = (row + 0.5) * params_.cell;
    if (IsGap(x, y)) return kNoData;
    const double z = Surface(x, y);
    const double step = params_.depthStep;
    return static_cast<float>(step > 0.0 ? std::round(z / step) * step : z);
}

void Relief::Fill(int col0, int row0, int width, int height, float* out) const {
    for (int r = 0; r < height; ++r) {
        for (int c = 0; c < width; ++c) {
            out[static_cast<std::size_t>(r) * width + c] = At(col0 + c, row0 + r);
        }
    }
}

void WriteGeoTiff(const Params& params, const std::string& path,
                  const std::function<void(double)>& progress) {
    const Relief relief(params);
    GDALAllRegister();
    GDALDriver* driver = GetGDALDriverManager()->GetDriverByName("GTiff");
    if (driver == nullptr) throw std::runtime_error("synth: GDAL has no GTiff driver");

    CPLStringList options;
    options.SetNameValue("TILED", "YES");
    options.SetNameValue("BLOCKXSIZE", std::to_string(kBlock).c_str());
    options.SetNameValue("BLOCKYSIZE", std::to_string(kBlock).c_str());
    options.SetNameValue("COMPRESS", "ZSTD");
    options.SetNameValue("ZSTD_LEVEL", "1");
    options.SetNameValue("PREDICTOR", "3");
    options.SetNameValue("BIGTIFF", "IF_SAFER");
    options.SetNameValue("NUM_THREADS", "ALL_CPUS");

    auto closer = [](GDALDataset* ds) { GDALClose(ds); };
    std::unique_ptr<GDALDataset, decltype(closer)> dataset(
        driver->Create(path.c_str(), params.cols, params.rows, 1, GDT_Float32, options.List()),
        closer);
    if (!dataset) throw std::runtime_error("synth: cannot create " + path);

    double transform[6] = {kOriginX, params.cell, 0.0, kOriginY, 0.0, -params.cell};
    OGRSpatialReference srs;
    if (srs.importFromEPSG(kEpsg) != OGRERR_NONE ||
        dataset->SetGeoTransform(transform) != CE_None || dataset->SetSpatialRef(&srs) != CE_None) {
        throw std::runtime_error("synth: cannot georeference " + path);
    }
    GDALRasterBand* band = dataset->GetRasterBand(1);
    band->SetNoDataValue(kNoData);

    const auto cols = static_cast<std::size_t>(params.cols);
    std::vector<float> strip(cols * kBlock);
    for (int row0 = 0; row0 < params.rows; row0 += kBlock) {
        const int height = std::min(kBlock, params.rows - row0);
#pragma omp parallel for schedule(dynamic, 4)
        for (int r = 0; r < height; ++r) {
            relief.Fill(0, row0 + r, params.cols, 1, strip.data() + cols * r);
        }
        CPLErrorReset();
        const CPLErr written = band->RasterIO(GF_Write, 0, row0, params.cols, height, strip.data(),
                                              params.cols, height, GDT_Float32, 0, 0, nullptr);
        // Flushing each strip keeps GDAL's cache from holding many dirty strips.
        dataset->FlushCache(false);
        if (written != CE_None || CPLGetLastErrorType() >= CE_Failure) {
            throw std::runtime_error("synth: cannot write " + path + ": " + CPLGetLastErrorMsg());
        }
        if (progress) progress(static_cast<double>(row0 + height) / params.rows);
    }
    CPLErrorReset();
    dataset.reset();
    if (CPLGetLastErrorType() >= CE_Failure) {
        throw std::runtime_error("synth: cannot finish " + path + ": " + CPLGetLastErrorMsg());
    }
}

}  // namespace halvane::synth
