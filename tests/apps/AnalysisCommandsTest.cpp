// The stage commands end to end: which session names and tags they pass on,
// what they save, and their exit status.

#include <gtest/gtest.h>

#include <cmath>
#include <filesystem>

#include "apps/CommandLine.h"
#include "platform/runtime/Convert.h"
#include "support/GridFiles.h"
#include "support/Halvane.h"

namespace halvane::apps {
namespace {

namespace fs = std::filesystem;

using testing::Halvane;

std::vector<double> Cells(const std::string& path) {
    return testing::ReadAll(testing::OpenRaster(path));
}

class AnalysisCommandsTest : public ::testing::Test {
protected:
    void SetUp() override {
        values_ = testing::Surface(grid_, true);
        testing::WriteGrid(dir_ / "depth.tif", grid_, values_);
    }
    std::string Work(const std::string& name) const { return work_ + "/" + name + ".tif"; }

    testing::TempDir dir_;
    const std::string work_ = dir_ / "work";
    raster::Grid grid_{300000, 6000000, 10, 10, 6, 5};
    std::vector<double> values_;
};

TEST_F(AnalysisCommandsTest, BpiPicksTheScaleNameAndRadiiAsGiven) {
    const std::string input = dir_ / "depth.tif";
    EXPECT_EQ(Halvane({"bpi", "--workdir", work_, "--inner", "1", "--outer", "2", input}), 0);
    EXPECT_TRUE(fs::exists(Work("tmpBroadBPI")));
    EXPECT_EQ(Halvane({"bpi", "--workdir", work_, "--inner", "0", "--outer", "1.5", "--scale",
                       "fine", input}),
              0);
    EXPECT_TRUE(fs::exists(Work("tmpFineBPI")));
    EXPECT_EQ(Halvane({"bpi", "--workdir", work_, "--inner", "1", "--outer", "3", "--name",
                       "broad13", input}),
              0);
    EXPECT_TRUE(fs::exists(Work("broad13")));

    // A ring 0 < d <= 1.5 over a corner cell holds its three neighbours.
    const std::vector<double> fine = Cells(Work("tmpFineBPI"));
    const double mean = (values_[1] + values_[6] + values_[7]) / 3;
    EXPECT_EQ(fine[0], std::trunc(values_[0] - mean + .5));

    // The name is taken; a grid that isn't there; a radius that is no number,
    // refused before anything runs.
    EXPECT_EQ(Halvane({"bpi", "--workdir", work_, "--inner", "1", "--outer", "2", input}), 1);
    EXPECT_EQ(
        Halvane({"bpi", "--workdir", work_, "--inner", "1", "--outer", "x", "--name", "b2", input}),
        2);
    EXPECT_FALSE(fs::exists(Work("b2")));
    EXPECT_EQ(Halvane({"bpi", "--workdir", work_, "--inner", "1", "--outer", "2", "--name", "b3",
                       dir_ / "nothing.tif"}),
              1);
    // Usage errors.
    EXPECT_EQ(Halvane({"bpi", "--workdir", work_, "--inner", "1", "--scale", "medium", input}), 2);
    EXPECT_EQ(Halvane({"bpi", "--workdir", work_, "--inner", "1", "--outer", "2"}), 2);
    EXPECT_EQ(Halvane({"bpi", "--inner", "1", "--outer", "2", input}), 2);
    EXPECT_EQ(Halvane({"bpi", "--help"}), 0);
}

TEST_F(AnalysisCommandsTest, StandardizeUsesTheGridsOwnStatistics) {
    ASSERT_EQ(Halvane({"bpi", "--workdir", work_, "--inner", "1", "--outer", "2", "--name", "bpi",
                       dir_ / "depth.tif"}),
              0);
    ASSERT_EQ(Halvane({"standardize", "--workdir", work_, "--scale", "fine", Work("bpi")}), 0);
    ASSERT_TRUE(fs::exists(Work("tmpFinestd")));

    const std::vector<double> bpi = Cells(Work("bpi"));
    double sum = 0, squares = 0;
    for (double v : bpi) sum += v;
    const double exactMean = sum / bpi.size();
    for (double v : bpi) squares += (v - exactMean) * (v - exactMean);
    // The numbers reach the expression as 15-digit text.
    const double mean = runtime::CDbl(runtime::CStr(exactMean));
    const double deviation = runtime::CDbl(runtime::CStr(std::sqrt(squares / bpi.size())));
    const std::vector<double> standardized = Cells(Work("tmpFinestd"));
    for (std::size_t i = 0; i < bpi.size(); ++i) {
        EXPECT_EQ(standardized[i], std::trunc((bpi[i] - mean) / deviation * 100 + .05)) << i;
    }
    EXPECT_EQ(Halvane({"standardize", "--workdir", work_, "--name", "std", Work("bpi")}), 0);
    EXPECT_TRUE(fs::exists(Work("std")));
}

TEST_F(AnalysisCommandsTest, ResampleTakesThePagesMethodTexts) {
    const std::string input = dir_ / "depth.tif";
    EXPECT_EQ(Halvane({"resample", "--workdir", work_, "--name", "r20", "--cell-size", "20",
                       "--method", "Nearest Neighbor", input}),
              0);
    const raster::RasterPtr resampled = testing::OpenRaster(Work("r20"));
    EXPECT_EQ(resampled->GetGrid().cellX, 20.0);
    EXPECT_EQ(resampled->GetGrid().cols, 3);
    EXPECT_EQ(Halvane({"resample", "--workdir", work_, "--name", "r15", "--cell-size", "15",
                       "--method", "Bilinear Interoplation", input}),
              0);
    EXPECT_EQ(
        Halvane({"resample", "--workdir", work_, "--name", "r25", "--cell-size", "25", input}),
        0);  // Cubic Convolution
    // The usual spelling is neither the page's nor a short name: refused
    // before anything runs.
    EXPECT_EQ(Halvane({"resample", "--workdir", work_, "--name", "r30", "--cell-size", "30",
                       "--method", "Bilinear Interpolation", input}),
              2);
    EXPECT_FALSE(fs::exists(Work("r30")));
    EXPECT_EQ(Halvane({"resample", "--workdir", work_, "--cell-size", "30", input}), 2);
}

TEST_F(AnalysisCommandsTest, RugosityOfFlatGroundIsOne) {
    testing::WriteGrid(dir_ / "flat.tif", grid_, std::vector<double>(grid_.Cells(), -20.0));
    EXPECT_EQ(Halvane({"rugosity", "--workdir", work_, "--name", "rug", dir_ / "flat.tif"}), 0);
    const std::vector<double> cells = Cells(Work("rug"));
    EXPECT_EQ(cells.size(), 4u * 3u);  // the ring without neighbours is left out
    for (double v : cells) EXPECT_NEAR(v, 1.0, 1e-6);
    EXPECT_EQ(Halvane({"rugosity", "--workdir", work_, "--name", "RUG", dir_ / "flat.tif"}), 1);
}

}  // namespace
}  // namespace halvane::apps
