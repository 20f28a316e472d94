#pragma once
// Small grids written by the tests themselves, and a folder that cleans up.

#include <cpl_conv.h>
#include <gdal.h>
#include <ogr_srs_api.h>

#include <cmath>
#include <cstdio>
#include <filesystem>
#include <limits>
#include <stdexcept>
#include <string>
#include <vector>

#include "platform/raster/MapAlgebra.h"

namespace halvane::testing {

inline constexpr double kNoData = std::numeric_limits<double>::quiet_NaN();

class TempDir {
public:
    TempDir() {
        std::string pattern = (std::filesystem::temp_directory_path() / "halvane-XXXXXX").string();
        path_ = ::mkdtemp(pattern.data());
    }
    ~TempDir() { std::filesystem::remove_all(path_); }
    TempDir(const TempDir&) = delete;
    TempDir& operator=(const TempDir&) = delete;

    const std::filesystem::path& Path() const { return path_; }
    std::string operator/(const std::string& name) const { return (path_ / name).string(); }

private:
    std::filesystem::path path_;
};

inline std::string EpsgWkt(int code) {
    OGRSpatialReferenceH srs = OSRNewSpatialReference(nullptr);
    OSRImportFromEPSG(srs, code);
    char* wkt = nullptr;
    OSRExportToWkt(srs, &wkt);
    std::string text = wkt;
    CPLFree(wkt);
    OSRDestroySpatialReference(srs);
    return text;
}

inline std::string UtmWkt() { return EpsgWkt(32633); }

// Writes values (row by row, NaN for NoData) as a plain GeoTIFF.
inline void WriteGrid(const std::string& path, const raster::Grid& grid,
                      const std::vector<double>& values, bool integer = false,
                      const std::string& wkt = UtmWkt()) {
    raster::EnsureGdal();
    const double noData = integer ? -9999.0 : -3.0e38;
    GDALDatasetH ds =
        GDALCreate(GDALGetDriverByName("GTiff"), path.c_str(), static_cast<int>(grid.cols),
                   static_cast<int>(grid.rows), 1, integer ? GDT_Int32 : GDT_Float32, nullptr);
    double transform[6] = {grid.left, grid.cellX, 0, grid.top, 0, -grid.cellY};
    GDALSetGeoTransform(ds, transform);
    if (!wkt.empty()) GDALSetProjection(ds, wkt.c_str());
    GDALRasterBandH band = GDALGetRasterBand(ds, 1);
    GDALSetRasterNoDataValue(band, noData);
    std::vector<double> cells(values);
    for (double& v : cells) v = std::isnan(v) ? noData : v;
    if (GDALRasterIO(band, GF_Write, 0, 0, static_cast<int>(grid.cols), static_cast<int>(grid.rows),
                     cells.data(), static_cast<int>(grid.cols), static_cast<int>(grid.rows),
                     GDT_Float64, 0, 0) != CE_None) {
        throw std::runtime_error("cannot write test grid " + path);
    }
    GDALClose(ds);
}

// What GDAL's own cloud-optimized GeoTIFF validation finds wrong with a file,
// errors and warnings one a line; empty for a valid file. Debian's python3,
// whatever python3 the PATH finds, is the one with GDAL's modules.
inline std::string CloudOptimizedProblems(const std::string& path) {
    const std::string command =
        "/usr/bin/python3 -c 'import sys\n"
        "from osgeo_utils.samples import validate_cloud_optimized_geotiff as v\n"
        "try:\n"
        "    warnings, errors, _ = v.validate(sys.argv[1], full_check=True)\n"
        "except Exception as e:\n"
        "    warnings, errors = [], [str(e)]\n"
        "print(\"\\n\".join(errors + warnings))' '" +
        path + "' 2>&1";
    std::string output;
    if (FILE* pipe = ::popen(command.c_str(), "r")) {
        char buffer[512];
        while (std::fgets(buffer, sizeof buffer, pipe)) output += buffer;
        if (::pclose(pipe) != 0) output += "(the validation did not run)";
    } else {
        output = "(cannot run python3)";
    }
    while (!output.empty() && output.back() == '\n') output.pop_back();
    return output;
}

// A dataset-level metadata item of an open file, or "(missing)".
inline std::string MetadataItem(GDALDatasetH dataset, const char* key) {
    const char* value = GDALGetMetadataItem(dataset, key, nullptr);
    return value ? std::string(value) : std::string("(missing)");
}

inline raster::RasterPtr OpenRaster(const std::string& path) {
    return raster::RasterDataset::Open(path)->CreateDefaultRaster();
}

inline std::vector<double> ReadAll(const raster::RasterPtr& raster) {
    const raster::Grid& g = raster->GetGrid();
    return raster->Read({0, 0, g.cols, g.rows});
}

// Deterministic test values: a tilted, wavy surface with whole or fractional cells.
inline std::vector<double> Surface(const raster::Grid& grid, bool whole, int seed = 1) {
    std::vector<double> values(static_cast<std::size_t>(grid.Cells()));
    for (std::int64_t r = 0; r < grid.rows; ++r) {
        for (std::int64_t c = 0; c < grid.cols; ++c) {
            double v =
                -100.0 + 3.0 * static_cast<double>(c) - 2.0 * static_cast<double>(r) +
                17.0 * std::sin(0.7 * static_cast<double>(c * seed) + 0.3 * static_cast<double>(r));
            values[r * grid.cols + c] = whole ? std::round(v) : v;
        }
    }
    return values;
}

// The BPI by its definition: the cell minus the mean of the valid cells whose
// centres lie in the ring inner < d <= outer, plus .5, cut toward zero.
inline std::vector<double> ReferenceBpi(const raster::Grid& grid, const std::vector<double>& z,
                                        double inner, double outer) {
    std::vector<double> out(z.size(), kNoData);
    const int cols = static_cast<int>(grid.cols), rows = static_cast<int>(grid.rows);
    const int reach = static_cast<int>(std::ceil(outer));
    for (int r = 0; r < rows; ++r) {
        for (int c = 0; c < cols; ++c) {
            if (std::isnan(z[r * cols + c])) continue;
            double sum = 0;
            int count = 0;
            for (int dr = -reach; dr <= reach; ++dr) {
                for (int dc = -reach; dc <= reach; ++dc) {
                    const double d = std::hypot(dr, dc);
                    const int rr = r + dr, cc = c + dc;
                    if (d <= inner || d > outer || rr < 0 || cc < 0 || rr >= rows || cc >= cols)
                        continue;
                    if (std::isnan(z[rr * cols + cc])) continue;
                    sum += z[rr * cols + cc];
                    ++count;
                }
            }
            if (count > 0) out[r * cols + c] = std::trunc(z[r * cols + c] - sum / count + .5);
        }
    }
    return out;
}

}  // namespace halvane::testing
