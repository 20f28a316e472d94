// The whole chain a user runs (classify, then rugosity) on a synthetic survey of
// several tiles and blocks, with gaps: every grid it stores, and every grid a
// run stopped at its last class leaves behind, cell for cell against plain
// loops over the definitions, with the same arithmetic in the same order.

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <sstream>

#include "apps/ClassifyCommands.h"
#include "apps/RasterCommands.h"
#include "classification/ClassRules.h"
#include "classification/clsXMLPrjFile.h"
#include "platform/runtime/Convert.h"
#include "support/GridFiles.h"
#include "support/Halvane.h"
#include "support/StageFixture.h"
#include "synth/Synth.h"

namespace halvane::classification {
namespace {

namespace fs = std::filesystem;
using testing::Halvane;
using testing::kNoData;

// Past one 512-cell tile and several 256-cell blocks each way, and not a
// multiple of either.
const synth::Params kParams{600, 530, 10.0, 5};

double AsFloat(double v) { return std::isnan(v) ? v : static_cast<double>(static_cast<float>(v)); }

std::vector<double> AsFloats(std::vector<double> values) {
    for (double& v : values) v = AsFloat(v);
    return values;
}

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
    const double deviation =
        std::stod(runtime::CStr(std::sqrt(squares / n - (sum / n) * (sum / n))));
    std::vector<double> out;
    for (double v : bpi) {
        out.push_back(std::isnan(v) ? kNoData : std::trunc((v - mean) / deviation * 100 + .05));
    }
    return out;
}

// Horn's slope in degrees; a missing neighbour takes the centre's depth.
std::vector<double> Slope(const raster::Grid& grid, const std::vector<double>& z) {
    const int cols = static_cast<int>(grid.cols), rows = static_cast<int>(grid.rows);
    std::vector<double> out(z.size(), kNoData);
    for (int r = 0; r < rows; ++r) {
        for (int c = 0; c < cols; ++c) {
            const double e = z[r * cols + c];
            if (std::isnan(e)) continue;
            const auto at = [&](int dr, int dc) {
                const int rr = r + dr, cc = c + dc;
                if (rr < 0 || cc < 0 || rr >= rows || cc >= cols) return e;
                const double v = z[rr * cols + cc];
                return std::isnan(v) ? e : v;
            };
            const double a = at(-1, -1), b = at(-1, 0), cc = at(-1, 1), d = at(0, -1), f = at(0, 1),
                         g = at(1, -1), h = at(1, 0), k = at(1, 1);
            const double dzdx = ((cc + 2 * f + k) - (a + 2 * d + g)) / (8 * grid.cellX);
            const double dzdy = ((g + 2 * h + k) - (a + 2 * b + cc)) / (8 * grid.cellY);
            out[r * cols + c] = std::atan(std::hypot(dzdx, dzdy)) * (180.0 / M_PI);
        }
    }
    return out;
}

// The rugosity's 34 expressions folded into one loop: half-edges, the eight
// triangles by the law of cosines, their sum over the planar cell s^2. Only
// the interior has all eight neighbours, so the result is two cells smaller.
std::vector<double> Rugosity(const raster::Grid& grid, const std::vector<double>& z, double s) {
    const int cols = static_cast<int>(grid.cols), rows = static_cast<int>(grid.rows);
    // The diagonal goes into the expression as 15-digit text.
    const double d = std::stod(runtime::CStr(std::sqrt(s * s + s * s)));
    const auto half = [](double p, double q, double l) {
        return std::sqrt((p - q) * (p - q) + l * l) / 2;
    };
    const auto area = [](double a, double b, double c) {
        return (a * std::sqrt(b * b - ((a * a + b * b - c * c) / (a * 2)) *
                                          ((a * a + b * b - c * c) / (a * 2)))) /
               2;
    };
    std::vector<double> out;
    for (int r = 1; r + 1 < rows; ++r) {
        for (int c = 1; c + 1 < cols; ++c) {
            const auto at = [&](int dr, int dc) { return z[(r + dr) * cols + c + dc]; };
            const double zc = at(0, 0), z1 = at(-1, -1), z2 = at(-1, 0), z3 = at(-1, 1),
                         z4 = at(0, -1), z5 = at(0, 1), z6 = at(1, -1), z7 = at(1, 0),
                         z8 = at(1, 1);
            const double e[17] = {0,
                                  half(zc, z1, d),
                                  half(zc, z2, s),
                                  half(zc, z3, d),
                                  half(zc, z4, s),
                                  half(zc, z5, s),
                                  half(zc, z6, d),
                                  half(zc, z7, s),
                                  half(zc, z8, d),
                                  half(z1, z2, s),
                                  half(z2, z3, s),
                                  half(z1, z4, s),
                                  half(z3, z5, s),
                                  half(z6, z4, s),
                                  half(z5, z8, s),
                                  half(z6, z7, s),
                                  half(z7, z8, s)};
            const double total = area(e[1], e[2], e[9]) + area(e[2], e[3], e[10]) +
                                 area(e[1], e[4], e[11]) + area(e[3], e[5], e[12]) +
                                 area(e[4], e[6], e[13]) + area(e[5], e[8], e[14]) +
                                 area(e[6], e[7], e[15]) + area(e[7], e[8], e[16]);
            out.push_back(total / (s * s));
        }
    }
    return out;
}

class ChainTest : public ::testing::Test {
protected:
    void SetUp() override {
        synth::WriteGeoTiff(kParams, input_);
        depth_ = testing::ReadAll(testing::OpenRaster(input_));
        broad_ = testing::ReferenceBpi(grid_, depth_, 1, 5);
        fine_ = testing::ReferenceBpi(grid_, depth_, 1, 3);
        slope_ = Slope(grid_, depth_);
    }

    std::vector<double> Stored(const std::string& work, const std::string& name) const {
        return testing::ReadAll(testing::OpenRaster(work + "/" + name + ".tif"));
    }

    // The class grid of each record, in the dictionary's order. The classes
    // compare the slope as computed, not as stored.
    std::vector<std::vector<double>> ClassGrids(const clsXMLPrjFile& dictionary) const {
        const std::vector<double> broad = Standardized(broad_), fine = Standardized(fine_);
        std::vector<std::vector<double>> grids;
        for (const auto& record : dictionary.Classifications->NewEnum()) {
            std::vector<double>& grid = grids.emplace_back();
            for (std::size_t i = 0; i < depth_.size(); ++i) {
                grid.push_back(ClassValue(*record, {broad[i], fine[i], slope_[i], depth_[i]}));
            }
        }
        return grids;
    }

    testing::TempDir dir_;
    const std::string input_ = dir_ / "survey.tif";
    const raster::Grid grid_{synth::kOriginX, synth::kOriginY, 10, 10, kParams.cols, kParams.rows};
    std::vector<double> depth_, broad_, fine_, slope_;
};

TEST_F(ChainTest, EveryStoredGridOfTheChainFollowsItsDefinitionCellForCell) {
    const std::string work = dir_ / "work";
    ASSERT_EQ(Halvane({"classify", "--broad", "1,5", "--fine", "1,3", "--workdir", work, input_}),
              0);
    ASSERT_EQ(Halvane({"rugosity", "--workdir", work, "--name", "rugosity", input_}), 0);
    ASSERT_TRUE(std::ranges::any_of(depth_, [](double v) { return std::isnan(v); }))
        << "the survey is to have gaps";

    clsXMLPrjFile dictionary;
    dictionary.XML(DefaultDictionaryPath());
    std::vector<double> zones(depth_.size(), 0.0);
    for (const std::vector<double>& grid : ClassGrids(dictionary)) {
        for (std::size_t i = 0; i < zones.size(); ++i) zones[i] += grid[i];
    }
    testing::ExpectCells(Stored(work, "ZONES"), zones);
    testing::ExpectCells(Stored(work, "SLOPE"), AsFloats(slope_));
    testing::ExpectCells(Stored(work, "rugosity"), AsFloats(Rugosity(grid_, depth_, 10)));
}

// A record without bounds fails at its Execute. Last, after every other class
// grid was made, the wizard's route leaves each of them, the four temporary
// grids and SLOPE, each holding what it was computed to hold, and no zones;
// first, before the class grids' pass, the temporary grids and SLOPE.
TEST_F(ChainTest, ARunStoppedAtAClassLeavesEveryGridBeforeItAsComputed) {
    std::ifstream in(DefaultDictionaryPath());
    const std::string xml((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
    std::string unbounded = "<ClassRec ID=\"99\"><Class>13</Class><Zone>Nothing</Zone>";
    for (const char* bound : {"SSB", "LSB", "Slope", "Depth"}) {
        for (const char* side : {"Lower", "Upper"}) {
            const std::string tag = std::string(bound) + "_" + side + "Bounds";
            unbounded += "<" + tag + "></" + tag + ">";
        }
    }
    unbounded += "</ClassRec>\n";
    const std::size_t first = xml.find("<ClassRec ");
    const std::size_t end = xml.find("</Classifications>");
    ASSERT_NE(first, std::string::npos);
    ASSERT_NE(end, std::string::npos);

    for (const bool last : {true, false}) {
        SCOPED_TRACE(last ? "stops at the last class" : "stops at the first class");
        const std::string run = last ? "last" : "first";
        std::string stops = xml;
        stops.insert(last ? end : first, unbounded);
        const std::string path = dir_ / (run + ".xml");
        std::ofstream(path) << stops;

        // The command line puts its working folder back as it found it.
        const std::string cli = dir_ / (run + "-cli");
        fs::create_directories(cli);
        EXPECT_EQ(Halvane({"classify", "--broad", "1,5", "--fine", "1,3", "--dictionary", path,
                           "--workdir", cli, input_}),
                  1);
        EXPECT_TRUE(fs::is_empty(cli));

        // The route under it, as the wizard runs it, leaves what it made.
        const std::string work = dir_ / run;
        apps::ClassifyRoute route;
        route.input = input_;
        route.workDir = work;
        route.dictionary = path;
        route.broadInner = "1", route.broadOuter = "5", route.fineInner = "1",
        route.fineOuter = "3";
        std::ostringstream console;
        apps::RunConsole() = &console;
        EXPECT_EQ(
            apps::RunReported({}, {"classify", "", {}},
                              [&](apps::CommandRun&) { return apps::RunClassifyRoute(route); }),
            1);
        apps::RunConsole() = nullptr;

        clsXMLPrjFile dictionary;
        dictionary.XML(path);
        const std::vector<std::vector<double>> classes = ClassGrids(dictionary);
        ASSERT_EQ(classes.size(), 13u);
        for (std::size_t k = 0; k + 1 < classes.size(); ++k) {
            SCOPED_TRACE("class grid " + std::to_string(k + 1));
            if (last) {
                testing::ExpectCells(Stored(work, "ZONES" + std::to_string(k + 1)), classes[k]);
            } else {
                EXPECT_FALSE(fs::exists(work + "/ZONES" + std::to_string(k + 1) + ".tif"));
            }
        }
        EXPECT_FALSE(fs::exists(work + "/ZONES13.tif"));
        EXPECT_FALSE(fs::exists(work + "/ZONES.tif"));
        testing::ExpectCells(Stored(work, "tmpBroadBPI"), broad_);
        testing::ExpectCells(Stored(work, "tmpFineBPI"), fine_);
        testing::ExpectCells(Stored(work, "tmpBroadstd"), Standardized(broad_));
        testing::ExpectCells(Stored(work, "tmpFinestd"), Standardized(fine_));
        testing::ExpectCells(Stored(work, "SLOPE"), AsFloats(slope_));
    }
}

}  // namespace
}  // namespace halvane::classification
