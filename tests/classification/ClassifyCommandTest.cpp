// `halvane classify` and `halvane dictionary` end to end: the zone grid of a
// projected bathymetric grid against zones computed from the grid in the test.

#include <gdal_rat.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <map>
#include <numeric>
#include <set>
#include <tuple>

#include "apps/CommandLine.h"
#include "classification/ClassRules.h"
#include "classification/clsXMLPrjFile.h"
#include "engine/ResultLayers.h"
#include "platform/map/Layers.h"
#include "platform/map/view/Rendering.h"
#include "platform/runtime/Convert.h"
#include "support/GridFiles.h"
#include "support/Halvane.h"
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

// The zone grid as any GIS reads it: a byte grid whose colour table, category
// names and attribute table name each value after the dictionary's record of
// that Class, not of that position; the value no record claims and the sum of
// two overlapping classes get names of their own. The map's colours are the
// file's, and the desktop's layer shows the file's names.
TEST_F(ClassifyCommandTest, ZoneGridCarriesTheDictionarysClassesByValue) {
    const synth::Params params{60, 50, 10.0, 11};
    const std::string input = dir_ / "bathymetry.tif";
    synth::WriteGeoTiff(params, input);
    const std::vector<double> depth = testing::ReadAll(testing::OpenRaster(input));
    std::vector<double> sorted;
    for (double d : depth) {
        if (!std::isnan(d)) sorted.push_back(d);
    }
    std::sort(sorted.begin(), sorted.end());
    // Bounds halfway between two depths, so that no cell lies on one and the
    // 15-digit text of a bound decides no cell's class.
    const auto quantile = [&](double q) {
        auto k = static_cast<std::size_t>(q * sorted.size());
        while (sorted[k + 1] == sorted[k]) ++k;
        return (sorted[k] + sorted[k + 1]) / 2;
    };
    const double q25 = quantile(0.25), q50 = quantile(0.5), q75 = quantile(0.75);
    // Deep (class 4) takes depths up to the median, Middle (class 2) those
    // strictly between the quartiles; Ridge (class 9) claims nothing.
    const auto record = [](int id, int cls, const std::string& zone, const std::string& lower,
                           const std::string& upper) {
        return "<ClassRec ID=\"" + std::to_string(id) + "\"><Class>" + std::to_string(cls) +
               "</Class><Zone>" + zone +
               "</Zone><SSB_LowerBounds/><SSB_UpperBounds/><LSB_LowerBounds/><LSB_UpperBounds/>"
               "<Slope_LowerBounds/><Slope_UpperBounds/><Depth_LowerBounds>" +
               lower + "</Depth_LowerBounds><Depth_UpperBounds>" + upper +
               "</Depth_UpperBounds></ClassRec>";
    };
    const std::string dictionary = dir_ / "bands.xml";
    std::ofstream(dictionary) << "<ClassDict><PrjName>Depth bands</PrjName><PRJDescription/>"
                              << "<Classifications>" << record(2, 4, "Deep", "", runtime::CStr(q50))
                              << record(3, 2, "Middle", runtime::CStr(q25), runtime::CStr(q75))
                              << record(4, 9, "Ridge", "100000", "")
                              << "</Classifications></ClassDict>";
    ASSERT_EQ(Halvane({"classify", "--workdir", work_, "--dictionary", dictionary, input}), 0);

    std::map<int, std::int64_t> counts;
    for (double d : depth) {
        if (!std::isnan(d)) ++counts[(d <= q50 ? 4 : 0) + (d > q25 && d < q75 ? 2 : 0)];
    }
    ASSERT_EQ(counts.size(), 4u);  // 0, 2, 4 and the overlap 6
    const std::map<int, std::string> names = {
        {0, "Unclassified"}, {2, "Middle"}, {4, "Deep"}, {6, "Overlap"}};

    const std::string zones = work_ + "/ZONES.tif";
    GDALDatasetH file = GDALOpen(zones.c_str(), GA_ReadOnly);
    ASSERT_NE(file, nullptr);
    GDALRasterBandH band = GDALGetRasterBand(file, 1);
    EXPECT_EQ(GDALGetRasterDataType(band), GDT_Byte);
    GDALColorTableH colors = GDALGetRasterColorTable(band);
    char** categories = GDALGetRasterCategoryNames(band);
    GDALRasterAttributeTableH rat = GDALGetDefaultRAT(band);
    ASSERT_TRUE(colors && categories && rat);
    const int nameColumn = GDALRATGetColOfUsage(rat, GFU_Name);
    ASSERT_GE(nameColumn, 0);
    EXPECT_STREQ(GDALRATGetNameOfCol(rat, nameColumn), "Class_Name");
    const int red = GDALRATGetColOfUsage(rat, GFU_Red),
              green = GDALRATGetColOfUsage(rat, GFU_Green),
              blue = GDALRATGetColOfUsage(rat, GFU_Blue);
    ASSERT_TRUE(red >= 0 && green >= 0 && blue >= 0);
    ASSERT_EQ(GDALRATGetRowCount(rat), 4);

    // The map colours the rows of the table as the described renderer does.
    auto layer = std::make_shared<map::RasterLayer>();
    layer->CreateFromDataset(raster::RasterDataset::Open(zones));
    ChangeRenderToUVRenderer(layer);
    auto* mapClasses = dynamic_cast<map::RasterUniqueValueRenderer*>(layer->Renderer().get());
    ASSERT_NE(mapClasses, nullptr);

    std::set<std::tuple<int, int, int>> distinct;
    int row = 0;
    for (const auto& [value, count] : counts) {
        SCOPED_TRACE("value " + std::to_string(value));
        EXPECT_EQ(GDALRATGetValueAsInt(rat, row, 0), value);
        EXPECT_EQ(GDALRATGetValueAsDouble(rat, row, 1), static_cast<double>(count));
        EXPECT_EQ(GDALRATGetValueAsString(rat, row, nameColumn), names.at(value));
        EXPECT_EQ(CSLCount(categories) > value ? std::string(categories[value]) : "(none)",
                  names.at(value));
        const GDALColorEntry* entry = GDALGetColorEntry(colors, value);
        ASSERT_NE(entry, nullptr);
        const std::tuple<int, int, int> rgb{GDALRATGetValueAsInt(rat, row, red),
                                            GDALRATGetValueAsInt(rat, row, green),
                                            GDALRATGetValueAsInt(rat, row, blue)};
        EXPECT_EQ(rgb, std::make_tuple(int{entry->c1}, int{entry->c2}, int{entry->c3}));
        const map::Color shown = mapClasses->Symbol(0, row)->Color();
        EXPECT_EQ(rgb, std::make_tuple(int{shown.red}, int{shown.green}, int{shown.blue}));
        distinct.insert(rgb);
        ++row;
    }
    EXPECT_EQ(distinct.size(), counts.size());

    // Where the grid came from.
    auto item = [&](const char* key) { return testing::MetadataItem(file, key); };
    EXPECT_EQ(item("HALVANE_DICTIONARY"), dictionary);
    EXPECT_EQ(item("HALVANE_DICTIONARY_TITLE"), "Depth bands");
    EXPECT_EQ(item("HALVANE_EXPRESSION"), "sum([tmpRas1], [tmpRas2], [tmpRas3])");
    EXPECT_EQ(item("HALVANE_INPUT_inDepth"), input);
    EXPECT_EQ(item("HALVANE_COMMAND"),
              "halvane classify --workdir " + work_ + " --dictionary " + dictionary + " " + input);
    GDALClose(file);

    ::testing::internal::CaptureStdout();
    EXPECT_EQ(Halvane({"info", "--json", zones}), 0);
    EXPECT_NE(::testing::internal::GetCapturedStdout().find(
                  "\"classes\": [[0, \"Unclassified\"], [2, \"Middle\"], [4, \"Deep\"], [6, "
                  "\"Overlap\"]], \"provenance\": {"),
              std::string::npos);

    // The desktop's layer of the file, as File > Open makes it, lists the names.
    map::RasterLayer opened;
    opened.CreateFromDataset(raster::RasterDataset::Open(zones));
    ASSERT_TRUE(map::ShowStoredClasses(opened));
    const map::view::Legend legend = map::view::LegendOf(opened);
    ASSERT_EQ(legend.groups.size(), 1u);
    std::vector<std::string> labels;
    for (const auto& swatch : legend.groups[0].classes) labels.push_back(swatch.label);
    EXPECT_EQ(labels, (std::vector<std::string>{"Unclassified", "Middle", "Deep", "Overlap"}));
    // A grid that names no classes keeps its stretch.
    map::RasterLayer slope;
    slope.CreateFromDataset(raster::RasterDataset::Open(work_ + "/SLOPE.tif"));
    EXPECT_FALSE(map::ShowStoredClasses(slope));
    EXPECT_EQ(slope.Renderer(), nullptr);
}

// With --layout cog every grid the route and the stage commands write is a
// valid cloud-optimized GeoTIFF by GDAL's own check, and tells its provenance.
TEST_F(ClassifyCommandTest, EveryOutputIsCloudOptimizedWhenAskedAndTellsItsSource) {
    const std::string input = dir_ / "bathymetry.tif";
    synth::WriteGeoTiff({600, 540, 10.0, 5}, input);
    const std::string cog[] = {"--layout", "cog"};
    auto run = [&](std::vector<std::string> args) {
        args.insert(args.begin() + 1, std::begin(cog), std::end(cog));
        return Halvane(args);
    };
    ASSERT_EQ(run({"classify", "--workdir", work_, input}), 0);
    ASSERT_EQ(run({"rugosity", "--workdir", work_, "--name", "RUGOSITY", input}), 0);
    ASSERT_EQ(run({"bpi", "--workdir", work_, "--inner", "1", "--outer", "5", input}), 0);
    ASSERT_EQ(run({"standardize", "--workdir", work_, work_ + "/tmpBroadBPI.tif"}), 0);
    ASSERT_EQ(run({"resample", "--workdir", work_, "--name", "coarse", "--cell-size", "15", input}),
              0);
    for (const char* grid :
         {"ZONES", "SLOPE", "RUGOSITY", "tmpBroadBPI", "tmpBroadstd", "coarse"}) {
        const std::string path = work_ + "/" + grid + ".tif";
        EXPECT_EQ(testing::CloudOptimizedProblems(path), "") << grid;
        GDALDatasetH file = GDALOpen(path.c_str(), GA_ReadOnly);
        ASSERT_NE(file, nullptr) << grid;
        EXPECT_GE(GDALGetOverviewCount(GDALGetRasterBand(file, 1)), 1) << grid;
        for (const char* key :
             {"TIFFTAG_SOFTWARE", "TIFFTAG_DATETIME", "HALVANE_EXPRESSION", "HALVANE_COMMAND"}) {
            EXPECT_NE(GDALGetMetadataItem(file, key, nullptr), nullptr) << grid << " " << key;
        }
        GDALClose(file);
    }
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
