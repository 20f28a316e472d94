#include <gdal_priv.h>
#include <gtest/gtest.h>
#include <ogr_spatialref.h>

#include <algorithm>
#include <bit>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <vector>

#include "synth/Synth.h"

namespace halvane::synth {
namespace {

constexpr Params kSample{1000, 1000, 10.0, 7};

std::vector<float> Window(const Relief& relief, int col0, int row0, int width, int height) {
    std::vector<float> cells(static_cast<std::size_t>(width) * height);
    relief.Fill(col0, row0, width, height, cells.data());
    return cells;
}

std::uint64_t Fingerprint(const std::vector<float>& cells) {
    std::uint64_t h = 1469598103934665603ULL;
    for (float c : cells) {
        h = (h ^ std::bit_cast<std::uint32_t>(c)) * 1099511628211ULL;
    }
    return h;
}

TEST(SynthTest, SameSeedSameCellsOtherSeedOtherCells) {
    const auto a = Window(Relief(kSample), 400, 200, 64, 64);
    EXPECT_EQ(a, Window(Relief(kSample), 400, 200, 64, 64));
    Params other = kSample;
    other.seed = 8;
    EXPECT_NE(a, Window(Relief(other), 400, 200, 64, 64));
}

// The bundled sample grid is made by this generator: these bits must come out the
// same with any compiler, optimization level or C library. If the relief is changed
// on purpose, update the number (and regenerate the sample).
TEST(SynthTest, CellsAreBitForBitThoseOfTheReference) {
    EXPECT_EQ(Fingerprint(Window(Relief(kSample), 500, 300, 32, 32)), 17403448803369275508ULL);
}

TEST(SynthTest, AnyWindowAgreesWithTheSameCellsMadeOneByOne) {
    const Relief relief(kSample);
    // Straddles a block boundary, so a seam between blocks would show here.
    const auto window = Window(relief, kBlock - 5, kBlock - 3, 11, 7);
    for (int r = 0; r < 7; ++r) {
        for (int c = 0; c < 11; ++c) {
            EXPECT_EQ(window[r * 11 + c], relief.At(kBlock - 5 + c, kBlock - 3 + r));
        }
    }
}

TEST(SynthTest, DepthsAreNegativeDeepenOffshoreAndHaveSomeGaps) {
    const Relief relief(kSample);
    const auto all = Window(relief, 0, 0, kSample.cols, kSample.rows);
    std::size_t gaps = 0;
    double shelf = 0.0, deep = 0.0;
    int shelfCount = 0, deepCount = 0;
    for (int r = 0; r < kSample.rows; ++r) {
        for (int c = 0; c < kSample.cols; ++c) {
            const float z = all[static_cast<std::size_t>(r) * kSample.cols + c];
            if (z == kNoData) {
                ++gaps;
                continue;
            }
            ASSERT_LT(z, 0.0f);
            if (c < 100) shelf += z, ++shelfCount;
            if (c >= 900) deep += z, ++deepCount;
        }
    }
    const double share = static_cast<double>(gaps) / all.size();
    EXPECT_GT(share, 0.005);
    EXPECT_LT(share, 0.1);
    EXPECT_LT(deep / deepCount + 300.0, shelf / shelfCount);
}

TEST(SynthTest, WritesATiledProjectedGeoTiffWithNoDataAndTheSameCells) {
    const auto dir = std::filesystem::temp_directory_path() / "halvane_synth_test";
    std::filesystem::remove_all(dir);
    std::filesystem::create_directories(dir);
    const std::string path = (dir / "grid.tif").string();
    // Sizes that are no multiple of the block leave partial blocks at both edges.
    const Params params{300, 270, 25.0, 3};
    WriteGeoTiff(params, path);

    GDALAllRegister();
    std::unique_ptr<GDALDataset> ds(GDALDataset::Open(path.c_str(), GDAL_OF_RASTER));
    ASSERT_TRUE(ds);
    EXPECT_EQ(ds->GetRasterXSize(), 300);
    EXPECT_EQ(ds->GetRasterYSize(), 270);
    const OGRSpatialReference* srs = ds->GetSpatialRef();
    ASSERT_NE(srs, nullptr);
    EXPECT_TRUE(srs->IsProjected());
    double transform[6];
    ASSERT_EQ(ds->GetGeoTransform(transform), CE_None);
    EXPECT_EQ(transform[1], 25.0);
    EXPECT_EQ(transform[5], -25.0);

    GDALRasterBand* band = ds->GetRasterBand(1);
    int blockX = 0, blockY = 0;
    band->GetBlockSize(&blockX, &blockY);
    EXPECT_EQ(blockX, kBlock);
    EXPECT_EQ(blockY, kBlock);
    int hasNoData = 0;
    EXPECT_EQ(band->GetNoDataValue(&hasNoData), kNoData);
    EXPECT_TRUE(hasNoData);

    std::vector<float> read(300 * 270);
    ASSERT_EQ(
        band->RasterIO(GF_Read, 0, 0, 300, 270, read.data(), 300, 270, GDT_Float32, 0, 0, nullptr),
        CE_None);
    EXPECT_EQ(read, Window(Relief(params), 0, 0, 300, 270));
    EXPECT_NE(std::find(read.begin(), read.end(), kNoData), read.end());
    ds.reset();
    std::filesystem::remove_all(dir);
}

// The committed sample must be what scripts/make-sample.sh makes, or a change
// to the relief would leave the repository's sample behind unnoticed.
TEST(SynthTest, BundledSampleIsTheGeneratorsGridWithItsDepthStep) {
    Params params = kSample;
    params.depthStep = 1.0 / 64;
    EXPECT_LE(std::filesystem::file_size(HALVANE_SAMPLE), 2u << 20);
    GDALAllRegister();
    std::unique_ptr<GDALDataset> ds(GDALDataset::Open(HALVANE_SAMPLE, GDAL_OF_RASTER));
    ASSERT_TRUE(ds);
    ASSERT_EQ(ds->GetRasterXSize(), params.cols);
    ASSERT_EQ(ds->GetRasterYSize(), params.rows);
    const Relief relief(params);
    // Strips at both edges and across the middle: every block column, a few block rows.
    for (const int row0 : {0, 431, params.rows - 9}) {
        std::vector<float> read(static_cast<std::size_t>(params.cols) * 9);
        ASSERT_EQ(ds->GetRasterBand(1)->RasterIO(GF_Read, 0, row0, params.cols, 9, read.data(),
                                                 params.cols, 9, GDT_Float32, 0, 0, nullptr),
                  CE_None);
        EXPECT_EQ(read, Window(relief, 0, row0, params.cols, 9)) << "rows from " << row0;
    }
}

}  // namespace
}  // namespace halvane::synth
