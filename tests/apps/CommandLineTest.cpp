// The command line end to end on a small grid: what it saves, what it prints,
// and its exit status.

#include <gtest/gtest.h>

#include <filesystem>

#include "apps/CommandLine.h"
#include "support/Halvane.h"
#include "support/GridFiles.h"

namespace halvane::apps {
namespace {

using testing::Halvane;

class CommandLineTest : public ::testing::Test {
protected:
    void SetUp() override {
        testing::WriteGrid(dir_ / "depth.tif", grid_, {-10, -12, -11, testing::kNoData, -14, -13});
    }
    testing::TempDir dir_;
    raster::Grid grid_{0, 20, 10, 10, 3, 2};
};

TEST_F(CommandLineTest, CalcSlopeAndInfo) {
    const std::string work = dir_ / "work";
    EXPECT_EQ(Halvane({"calc", "--workdir", work, "--name", "deeper", "--bind",
                       "inRaster=" + (dir_ / "depth.tif"), "int([inRaster] * 2)"}),
              0);
    ::testing::internal::CaptureStdout();
    EXPECT_EQ(Halvane({"info", "--json", work + "/deeper.tif"}), 0);
    const std::string json = ::testing::internal::GetCapturedStdout();
    const std::size_t provenance = json.find(", \"provenance\": {");
    ASSERT_NE(provenance, std::string::npos) << json;
    // -20 -24 -22 / NoData -28 -26: mean -24, population deviation sqrt(8).
    EXPECT_EQ(json.substr(0, provenance),
              "{\"columns\": 3, \"rows\": 2, \"cell_size\": [10, 10], \"extent\": [0, 0, 30, 20], "
              "\"type\": \"integer\", \"projected\": true, \"crs\": {\"name\": \"WGS 84 / UTM zone "
              "33N\", \"epsg\": 32633}, \"nodata_cells\": 1, \"mean\": -24, "
              "\"stddev\": 2.8284271247461903, \"table\": [[-28, 1], [-26, 1], [-24, 1], [-22, 1], "
              "[-20, 1]], \"classes\": null");
    // The command line comes back as a shell would take it, quotes escaped for JSON.
    for (const std::string& item :
         {std::string("\"HALVANE_EXPRESSION\": \"int([inRaster] * 2)\""),
          "\"HALVANE_INPUT_inRaster\": \"" + (dir_ / "depth.tif") + "\"",
          "\"HALVANE_COMMAND\": \"halvane calc --workdir " + work +
              " --name deeper --bind inRaster=" + (dir_ / "depth.tif") + " 'int([inRaster] * 2)'\"",
          std::string("\"TIFFTAG_SOFTWARE\": \"Halvane "),
          std::string("\"TIFFTAG_DATETIME\": \"20")}) {
        EXPECT_NE(json.find(item, provenance), std::string::npos) << item << "\nin " << json;
    }
    EXPECT_EQ(json.substr(json.size() - 4), "\"}}\n");
    // A grid without a reference system has none to tell.
    testing::WriteGrid(dir_ / "nowhere.tif", grid_, {1, 2, 3, 4, 5, 6}, false, "");
    ::testing::internal::CaptureStdout();
    EXPECT_EQ(Halvane({"info", "--json", dir_ / "nowhere.tif"}), 0);
    EXPECT_NE(
        ::testing::internal::GetCapturedStdout().find("\"projected\": false, \"crs\": null, "),
        std::string::npos);
    // Only the commands that write grids take a layout, and only a known one.
    EXPECT_EQ(Halvane({"calc", "--workdir", work, "--name", "x", "--layout", "fancy", "[a]"}), 2);
    EXPECT_EQ(Halvane({"info", "--layout", "cog", dir_ / "nowhere.tif"}), 2);
    EXPECT_EQ(Halvane({"slope", "--workdir", work, "--name", "slope", dir_ / "depth.tif"}), 0);
    EXPECT_TRUE(std::filesystem::exists(work + "/slope.tif"));

    // A reported failure (the name exists) and a usage error.
    EXPECT_EQ(Halvane({"slope", "--workdir", work, "--name", "SLOPE", dir_ / "depth.tif"}), 1);
    EXPECT_EQ(Halvane({"calc", "--workdir", work, "'[a]'"}), 2);
    EXPECT_EQ(Halvane({"calc", "--bogus", "x"}), 2);
    EXPECT_EQ(Halvane({"calc", "--help"}), 0);
}

}  // namespace
}  // namespace halvane::apps
