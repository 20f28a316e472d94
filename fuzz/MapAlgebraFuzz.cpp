// libFuzzer harness: any text as a map algebra expression over two small
// grids, one floating and one integer, each with a NoData cell. An expression
// the engine refuses fails with its Failure; one it accepts is evaluated over
// the whole grid. Anything else (a crash, a sanitizer report, another
// exception) is a finding.

#include <cpl_conv.h>
#include <gdal.h>

#include <cstdint>
#include <cstdlib>
#include <ostream>
#include <string>

#include "platform/raster/MapAlgebra.h"
#include "platform/raster/Storage.h"
#include "platform/runtime/Failure.h"
#include "platform/ui/ConsoleServices.h"

namespace {

using namespace halvane;

// A 7 x 5 grid on a UTM plane with values that climb by cell, NoData at one.
std::string WriteGrid(const char* path, GDALDataType type) {
    GDALDatasetH ds = GDALCreate(GDALGetDriverByName("GTiff"), path, 7, 5, 1, type, nullptr);
    double transform[6] = {500000, 10, 0, 4000050, 0, -10};
    GDALSetGeoTransform(ds, transform);
    GDALSetProjection(ds, "EPSG:32633");
    GDALRasterBandH band = GDALGetRasterBand(ds, 1);
    GDALSetRasterNoDataValue(band, -9999);
    double cells[35];
    for (int i = 0; i < 35; ++i) cells[i] = i == 17 ? -9999 : (i % 7) * 1.5 - (i / 7) * 2.25;
    if (GDALRasterIO(band, GF_Write, 0, 0, 7, 5, cells, 7, 5, GDT_Float64, 0, 0) != CE_None) {
        std::abort();
    }
    GDALClose(ds);
    return path;
}

raster::RasterPtr g_depth, g_classes;
constexpr std::int64_t kLargestEvaluated = 1 << 20;

}  // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
    // Reports of refused input go nowhere.
    static std::ostream nowhere(nullptr);
    static halvane::ui::ConsoleServices quiet(nowhere);
    static halvane::ui::ServicesScope scope(quiet);
    raster::EnsureGdal();
    CPLSetConfigOption("CPL_LOG", "/dev/null");
    CPLPushErrorHandler(CPLQuietErrorHandler);
    char folder[] = "/tmp/halvane-fuzz-XXXXXX";
    if (!mkdtemp(folder)) std::abort();
    const std::string base(folder);
    g_depth = raster::RasterDataset::Open(WriteGrid((base + "/depth.tif").c_str(), GDT_Float32))
                  ->CreateDefaultRaster();
    g_classes = raster::RasterDataset::Open(WriteGrid((base + "/classes.tif").c_str(), GDT_Int32))
                    ->CreateDefaultRaster();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string expression(reinterpret_cast<const char*>(data), size);
    raster::RasterMapAlgebraOp op;
    op.BindRaster(g_depth, "inDepth");
    op.BindRaster(g_classes, "zones");
    try {
        const raster::RasterPtr result = op.Execute(expression);
        // A resampling to millimetre cells is a fair request whose answer is
        // only slow: the harness is after faults, so it leaves such grids be.
        const raster::Grid& grid = result->GetGrid();
        if (grid.rows * grid.cols > kLargestEvaluated) return 0;
        result->Item(0)->Statistics();
    } catch (const runtime::Failure&) {
        // Refused with a report: what the engine owes a bad expression.
    }
    return 0;
}
