// `halvane classify` and `halvane dictionary` end to end: the zone grid of a
// projected bathymetric grid against zones computed from the grid in the test.

#include <gtest/gtest.h>

#include <filesystem>
#include <numeric>

#include "apps/CommandLine.h"
#include "support/Halvane.h"
#include "classification/ClassRules.h"
#include "classification/clsXMLPrjFile.h"
#include "platform/runtime/Convert.h"
#include "support/StageFixture.h"
#include "synth/Synth.h"

namespace halvane::classification {
namespace {

namespace fs = std::filesystem;
using testing::kNoData;

using testing::Halvane;

// 100 times the z-score, cut toward zero after adding .05, with the mean and
// deviation written into the expression as 15-digit text.
std::vector<double> Standardized(const std::vector<double>& bpi) {
    double sum = 0, squares = 0, n = 0;
    for (double v : bpi) {
        if (std::isnan(v)) continue;
        sum += v;
        squares += v * v;
        ++n;
    }
    const double mean = std::stod(runtime::CStr(sum / n));
    const double deviation = std::stod(runtime::CStr(std::sqrt(squares / n - (sum / n) * (sum / n))));
    std::vector<double> out;
    for (double v : bpi) out.push_back(std::isnan(v) ? kNoData : std::trunc((v - mean) / deviation * 100 + .05));
    return out;
}

class ClassifyCommandTest : public ::testing::Test {
protected:
    testing::TempDir dir_;
    const std::string work_ = dir_ / "work";
};

TEST_F(ClassifyCommandTest, ZonesOfAProjectedGridFollowTheDefaultDictionary) {
    const synth::Params params{70, 60, 10.0, 7};
    const std::string input = dir_ / "bathymetry.tif";
    synth::WriteGeoTiff(params, input);
    ASSERT_EQ(Halvane({"classify", "--workdir", work_, input}), 0);

    std::vector<std::string> left;
    for (const auto& entry : fs::directory_iterator(work_)) {
        if (entry.path().extension() == ".tif") left.push_back(entry.path().filename());
    }
    std::sort(left.begin(), left.end());
    EXPECT_EQ(left, (std::vector<std::string>{"SLOPE.tif", "ZONES.tif"}));

    const raster::Grid grid{synth::kOriginX, synth::kOriginY, 10, 10, params.cols, params.rows};
    const std::vector<double> depth = testing::ReadAll(testing::OpenRaster(input));
    const std::vector<double> broad = Standardized(testing::ReferenceBpi(grid, depth, 1, 5));
    const std::vector<double> fine = Standardized(testing::ReferenceBpi(grid, depth, 1, 3));
    const std::vector<double> slope = testing::ReadAll(testing::OpenRaster(work_ + "/SLOPE.tif"));

    clsXMLPrjFile dictionary;
    dictionary.XML(DefaultDictionaryPath());
    std::vector<double> expected;
    for (std::size_t i = 0; i < depth.size(); ++i) {
        double zone = 0;
        for (const auto& record : dictionary.Classifications->NewEnum()) {
            zone += ClassValue(*record, {broad[i], fine[i], slope[i], depth[i]});
        }
        expected.push_back(zone);
    }
    testing::ExpectCells(testing::ReadAll(testing::OpenRaster(work_ + "/ZONES.tif")), expected);
}

TEST_F(ClassifyCommandTest, ExitStatusTellsUsageErrorsFromRefusedRuns) {
    const std::string input = dir_ / "bathymetry.tif";
    synth::WriteGeoTiff({20, 20, 10.0, 3}, input);
    const std::string unprojected = dir_ / "lonlat.tif";
    const raster::Grid grid{10, 50, 0.001, 0.001, 8, 8};
    OGRSpatialReferenceH geographic = OSRNewSpatialReference(nullptr);
    OSRImportFromEPSG(geographic, 4326);
    char* wkt = nullptr;
    OSRExportToWkt(geographic, &wkt);
    testing::WriteGrid(unprojected, grid, testing::Surface(grid, false), false, wkt);
    CPLFree(wkt);
    OSRDestroySpatialReference(geographic);
    const std::string zonesAgain = dir_ / "again";
    ASSERT_EQ(Halvane({"classify", "--workdir", zonesAgain, "--name", "Z", input}), 0);

    struct Case {
        std::vector<std::string> args;
        int status;
    };
    const std::vector<Case> cases = {
        {{"classify", "--workdir", work_, "--broad", "1", input}, 2},
        {{"classify", "--workdir", work_, "--method", "Nearest Neighbor", input}, 2},
        {{"classify", "--workdir", work_, unprojected}, 1},
        // The zone grid stands: Finish refuses the name.
        {{"classify", "--workdir", zonesAgain, "--name", "Z", input}, 1},
        {{"classify", "--workdir", work_, "--dictionary", dir_ / "none.xml", input}, 1},
        {{"dictionary", "show", DefaultDictionaryPath()}, 0},
        {{"dictionary", "show", dir_ / "none.xml"}, 1},
        {{"dictionary", DefaultDictionaryPath()}, 2},
    };
    for (const Case& c : cases) EXPECT_EQ(Halvane(c.args), c.status) << c.args.back();
    EXPECT_FALSE(fs::exists(work_ + "/ZONES.tif"));
}

}  // namespace
}  // namespace halvane::classification
