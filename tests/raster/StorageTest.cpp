// Workspaces, names, atomic copies, statistics and tables, and the tiled
// evaluator against the whole-grid reference.

#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <bit>
#include <cmath>
#include <filesystem>
#include <fstream>
#include <functional>
#include <map>
#include <set>

#include "platform/raster/Engine.h"
#include "platform/raster/MapAlgebra.h"
#include "platform/raster/Team.h"
#include "support/GridFiles.h"

namespace halvane::raster {
namespace {

namespace fs = std::filesystem;
using testing::kNoData;

std::set<std::string> Files(const fs::path& folder) {
    std::set<std::string> names;
    for (const auto& entry : fs::directory_iterator(folder)) names.insert(entry.path().filename());
    return names;
}

TEST(WorkspaceTest, FolderRulesAndNamesWithoutCase) {
    testing::TempDir dir;
    RasterWorkspaceFactory factory;
    EXPECT_FALSE(factory.IsWorkspace(dir.Path()));  // empty
    EXPECT_FALSE(factory.IsWorkspace(dir / "missing"));
    EXPECT_THROW(factory.OpenFromFile(dir / "missing", 0), runtime::Failure);
    factory.Create(dir.Path(), "halvane_var", nullptr, 0);
    EXPECT_TRUE(factory.IsWorkspace(dir / "halvane_var"));
    EXPECT_FALSE(factory.IsWorkspace(dir.Path()));  // a workspace inside is not a raster

    const Grid grid{0, 30, 10, 10, 3, 3};
    testing::WriteGrid(dir / "Depth.tif", grid, testing::Surface(grid, true));
    std::ofstream(dir / "notes.txt") << "not a grid";
    EXPECT_TRUE(factory.IsWorkspace(dir.Path()));
    RasterWorkspacePtr workspace = factory.OpenFromFile(dir.Path(), 0);
    RasterDatasetPtr dataset = workspace->OpenRasterDataset("DEPTH");
    EXPECT_EQ(dataset->Name(), "Depth");
    EXPECT_THROW(workspace->OpenRasterDataset("notes"), runtime::Failure);
    // Any format GDAL reads is a grid too, here an ASCII grid without a reference system.
    std::ofstream(dir / "Shoal.asc") << "ncols 2\nnrows 2\nxllcorner 100\nyllcorner 200\n"
                                        "cellsize 5\nNODATA_value -9999\n-1 -2\n-9999 -4\n";
    RasterPtr shoal = workspace->OpenRasterDataset("shoal")->CreateDefaultRaster();
    EXPECT_EQ(shoal->Extent().XMax, 110);
    EXPECT_EQ(shoal->Item(0)->Statistics().validCells, 3);
    EXPECT_FALSE(shoal->IsProjected());
    EXPECT_TRUE(dataset->CreateDefaultRaster()->IsProjected());
    EXPECT_THROW(workspace->OpenRasterDataset("Dept"), runtime::Failure);

    // A name made from a browsed file name keeps its inner dot; only the
    // last extension is the file's.
    testing::WriteGrid(dir / "Depth.tif_50.tif", grid, testing::Surface(grid, true));
    RasterDatasetPtr scaled = workspace->OpenRasterDataset("depth.tif_50");
    EXPECT_EQ(scaled->Name(), "Depth.tif_50");
    EXPECT_EQ(workspace->OpenRasterDataset("Depth.tif")->Name(), "Depth");
}

TEST(WorkspaceTest, CopyNeverOverwritesAndLeavesNothingHalfWritten) {
    testing::TempDir dir;
    const Grid grid{0, 30, 10, 10, 3, 3};
    testing::WriteGrid(dir / "depth.tif", grid, testing::Surface(grid, true));
    RasterWorkspacePtr workspace = RasterWorkspaceFactory().OpenFromFile(dir.Path(), 0);
    RasterDatasetPtr depth = workspace->OpenRasterDataset("depth");
    RasterMapAlgebraOp op;
    op.BindRaster(depth->CreateDefaultRaster(), "inRaster");
    RasterDatasetPtr result = op.Execute("[inRaster] * 2")->Item(0)->RasterDataset();
    EXPECT_TRUE(result->IsTemporary());
    ASSERT_TRUE(result->CanCopy());
    const std::set<std::string> before = Files(dir.Path());
    try {
        result->Copy("DEPTH", workspace);
        ADD_FAILURE() << "copied over an existing grid";
    } catch (const runtime::Failure& failure) {
        EXPECT_EQ(failure.description, "Grid 'DEPTH' already exists in " + dir.Path().string());
    }
    EXPECT_EQ(Files(dir.Path()), before);

    // The source vanishes half-way: the copy fails and leaves no trace.
    testing::WriteGrid(dir / "gone.tif", grid, testing::Surface(grid, true));
    op.BindRaster(workspace->OpenRasterDataset("gone")->CreateDefaultRaster(), "gone");
    RasterDatasetPtr doomed = op.Execute("[gone] + 1")->Item(0)->RasterDataset();
    fs::remove(dir / "gone.tif");
    const std::set<std::string> beforeFailure = Files(dir.Path());
    EXPECT_THROW(doomed->Copy("twice", workspace), runtime::Failure);
    EXPECT_EQ(Files(dir.Path()), beforeFailure);

    RasterDatasetPtr twice = result->Copy("twice", workspace);
    EXPECT_EQ(twice->Name(), "twice");
    EXPECT_TRUE(fs::exists(dir / "twice.tif"));
    ASSERT_TRUE(twice->CanDelete());
    twice->Delete();
    EXPECT_EQ(Files(dir.Path()), beforeFailure);
}

// Grids stored together stand as if copied one after the other: each holds
// its own cells, and where one cannot be stored (a taken name, a source that
// vanished) those before it stand, those after it do not, and the failure is
// the one Copy gives.
TEST(WorkspaceTest, GridsStoredTogetherStandAsIfCopiedInTurn) {
    testing::TempDir dir;
    const Grid grid{0, 30, 10, 10, 600, 530};
    testing::WriteGrid(dir / "depth.tif", grid, testing::Surface(grid, false));
    RasterWorkspacePtr workspace = RasterWorkspaceFactory().OpenFromFile(dir.Path(), 0);
    const std::vector<double> depth =
        testing::ReadAll(workspace->OpenRasterDataset("depth")->CreateDefaultRaster());
    RasterMapAlgebraOp op;
    op.BindRaster(workspace->OpenRasterDataset("depth")->CreateDefaultRaster(), "d");
    const auto computed = [&](const std::string& expression) {
        return op.Execute(expression)->Item(0)->RasterDataset();
    };
    RasterDatasetPtr twice = computed("[d] * 2");
    RasterDatasetPtr deep = computed("con([d] < -100, 1, 0)");
    RasterDatasetPtr both = computed("sum([d] * 2, con([d] < -100, 1, 0))");
    const std::vector<RasterDatasetPtr> stored =
        RasterDataset::CopyAll({{twice, "twice"}, {deep, "deep"}, {both, "both"}}, workspace);
    ASSERT_EQ(stored.size(), 3u);
    std::vector<double> expected[3];
    for (double v : depth) {
        expected[0].push_back(static_cast<float>(v * 2));
        expected[1].push_back(v < -100 ? 1 : 0);
        expected[2].push_back(static_cast<float>(v * 2 + (v < -100 ? 1 : 0)));
    }
    for (int k = 0; k < 3; ++k) {
        EXPECT_EQ(testing::ReadAll(stored[k]->CreateDefaultRaster()), expected[k]) << k;
        const std::vector<double> again = testing::ReadAll(
            workspace->OpenRasterDataset(stored[k]->Name())->CreateDefaultRaster());
        EXPECT_EQ(again, expected[k]) << k;
    }

    // The grids that appeared since `before`, side files aside.
    const auto Grown = [&](const std::set<std::string>& before) {
        std::set<std::string> grown;
        for (const std::string& name : Files(dir.Path())) {
            if (!before.contains(name) && !name.ends_with(".aux.xml")) grown.insert(name);
        }
        return grown;
    };
    std::set<std::string> before = Files(dir.Path());
    try {
        RasterDataset::CopyAll({{twice, "first"}, {deep, "DEEP"}, {both, "third"}}, workspace);
        ADD_FAILURE() << "stored over an existing grid";
    } catch (const runtime::Failure& failure) {
        EXPECT_EQ(failure.description, "Grid 'DEEP' already exists in " + dir.Path().string());
    }
    EXPECT_EQ(Grown(before), (std::set<std::string>{"first.tif"}));

    testing::WriteGrid(dir / "gone.tif", grid, depth);
    op.BindRaster(workspace->OpenRasterDataset("gone")->CreateDefaultRaster(), "gone");
    RasterDatasetPtr doomed = computed("[gone] + 1");
    fs::remove(dir / "gone.tif");
    before = Files(dir.Path());
    EXPECT_THROW(
        RasterDataset::CopyAll({{deep, "second"}, {doomed, "lost"}, {twice, "fourth"}}, workspace),
        runtime::Failure);
    EXPECT_EQ(Grown(before), (std::set<std::string>{"second.tif"}));
}

TEST(StatisticsTest, ExactMeanDeviationAndTableKeptWithTheGrid) {
    testing::TempDir dir;
    const Grid grid{0, 300, 10, 10, 37, 29};
    std::vector<double> values = testing::Surface(grid, true);
    for (std::size_t i = 0; i < values.size(); i += 5) values[i] = kNoData;
    testing::WriteGrid(dir / "z.tif", grid, values, true);
    double sum = 0;
    std::map<int, std::int64_t> counts;
    for (double v : values) {
        if (std::isnan(v)) continue;
        sum += v;
        ++counts[static_cast<int>(v)];
    }
    std::int64_t n = 0;
    for (const auto& [value, count] : counts) n += count;
    const double mean = sum / static_cast<double>(n);
    double squares = 0;
    for (double v : values) {
        if (!std::isnan(v)) squares += (v - mean) * (v - mean);
    }
    const double deviation = std::sqrt(squares / static_cast<double>(n));

    RasterWorkspacePtr workspace = RasterWorkspaceFactory().OpenFromFile(dir.Path(), 0);
    RasterMapAlgebraOp op;
    op.BindRaster(workspace->OpenRasterDataset("z")->CreateDefaultRaster(), "z");
    auto check = [&](RasterBand& band) {
        EXPECT_NEAR(band.Statistics().Mean, mean, 1e-12);
        EXPECT_NEAR(band.Statistics().StandardDeviation, deviation, 1e-12);
        EXPECT_EQ(band.Statistics().validCells, n);
        ASSERT_TRUE(band.HasTable());
        std::map<int, std::int64_t> table;
        for (const AttributeRow& row : band.AttributeTable()) table[row.Value] = row.Count;
        EXPECT_EQ(table, counts);
    };
    check(*op.Execute("[z] + 0")->Item(0));  // computed on the fly
    op.Execute("[z] + 0")->Item(0)->RasterDataset()->Copy("saved", workspace);
    EXPECT_TRUE(fs::exists(dir / "saved.tif.aux.xml"));
    check(*workspace->OpenRasterDataset("saved")->CreateDefaultRaster()->Item(0));  // as stored

    // Too many distinct values for a table; floating grids never have one.
    const Grid wide{0, 300, 1, 1, 300, 300};
    std::vector<double> distinct(90000);
    for (std::size_t i = 0; i < distinct.size(); ++i) distinct[i] = static_cast<double>(i);
    testing::WriteGrid(dir / "wide.tif", wide, distinct, true);
    EXPECT_FALSE(workspace->OpenRasterDataset("wide")->HasTable());
    op.BindRaster(workspace->OpenRasterDataset("wide")->CreateDefaultRaster(), "wide");
    op.Execute("[wide] + 1")->Item(0)->RasterDataset()->Copy("wider", workspace);
    RasterDatasetPtr wider = workspace->OpenRasterDataset("wider");
    EXPECT_FALSE(wider->HasTable());
    EXPECT_EQ(wider->Statistics().validCells, 90000);
    EXPECT_FALSE(op.Execute("[z] / 2")->Item(0)->HasTable());
}

// Whole grids are summed in exact integers: small values, values whose
// squares no double holds exactly, values at the ends of 32 bits and missing
// cells give the exact mean and deviation and the true range, whatever the
// tiles.
TEST(StatisticsTest, WholeStatisticsAreExactForEveryMagnitude) {
    testing::TempDir dir;
    const Grid grid{0, 3000, 10, 10, 67, 53};
    std::vector<double> values = testing::Surface(grid, true);
    const double big[] = {32767, 32768, -32769, 46341, -3037000, 2147483647, -2147483647};
    for (std::size_t i = 0; i < values.size(); i += 11) values[i] = big[(i / 11) % std::size(big)];
    for (std::size_t i = 3; i < values.size(); i += 13) values[i] = kNoData;
    testing::WriteGrid(dir / "z.tif", grid, values, true);

    __int128 sum = 0, squares = 0;
    std::int64_t n = 0;
    double low = 1e300, high = -1e300;
    for (double v : values) {
        if (std::isnan(v)) continue;
        const auto whole = static_cast<std::int64_t>(v);
        ++n;
        sum += whole;
        squares += static_cast<__int128>(whole) * whole;
        low = std::min(low, v);
        high = std::max(high, v);
    }
    const auto mean = static_cast<double>(static_cast<long double>(sum) / n);
    const auto spread = static_cast<long double>(squares * n - sum * sum);
    const auto deviation =
        static_cast<double>(std::sqrt(spread / (static_cast<long double>(n) * n)));

    RasterWorkspacePtr workspace = RasterWorkspaceFactory().OpenFromFile(dir.Path(), 0);
    RasterMapAlgebraOp op;
    op.BindRaster(workspace->OpenRasterDataset("z")->CreateDefaultRaster(), "z");
    const EvalSettings saved = Settings();
    for (const std::int64_t tile : {1, 7, 64, 4096}) {
        Settings().tileSize = tile;
        const RasterStatistics s = op.Execute("[z] + 0")->Item(0)->Statistics();
        EXPECT_EQ(s.validCells, n) << tile;
        EXPECT_EQ(s.Mean, mean) << tile;
        EXPECT_EQ(s.StandardDeviation, deviation) << tile;
        EXPECT_EQ(s.Minimum, low) << tile;
        EXPECT_EQ(s.Maximum, high) << tile;
    }
    Settings() = saved;
}

// A whole grid is counted as it is written, in a window of values that moves
// with the tiles or that the grid's operators set: values that drift from
// tile row to tile row, zeros that the expression turns into -0 (at the end
// of the range or not), missing cells and class grids must give the cells,
// the exact statistics and the table of a plain count, whatever the tiles.
TEST(StatisticsTest, WholeGridsWrittenKeepExactStatisticsAsTheirValuesDrift) {
    testing::TempDir dir;
    const Grid grid{0, 3000, 10, 10, 97, 83};
    std::vector<double> values(static_cast<std::size_t>(grid.Cells()));
    for (std::int64_t r = 0; r < grid.rows; ++r) {
        for (std::int64_t c = 0; c < grid.cols; ++c) {
            values[static_cast<std::size_t>(r * grid.cols + c)] =
                static_cast<double>((r / 9) * 7000 - 30000 + (c % 7) - 3);
        }
    }
    for (std::size_t i = 5; i < values.size(); i += 17) values[i] = 0.0;
    for (std::size_t i = 2; i < values.size(); i += 13) values[i] = kNoData;
    values[0] = kNoData;  // a first tile of one cell holds nothing
    testing::WriteGrid(dir / "z.tif", grid, values, true);

    RasterWorkspacePtr workspace = RasterWorkspaceFactory().OpenFromFile(dir.Path(), 0);
    RasterMapAlgebraOp op;
    op.BindRaster(workspace->OpenRasterDataset("z")->CreateDefaultRaster(), "z");
    const struct {
        const char* expression;
        std::function<double(double)> cell;
    } cases[] = {{"[z] * -1", [](double v) { return -v; }},
                 {"con([z] > 0, 0, 1) * -1", [](double v) { return v > 0 ? -0.0 : -1.0; }},
                 {"con([z] > 0, 3, 0)", [](double v) { return v > 0 ? 3.0 : 0.0; }}};
    const EvalSettings saved = Settings();
    int run = 0;
    for (const auto& [expression, cell] : cases) {
        std::vector<double> expected(values.size());
        std::map<std::int64_t, std::int64_t> counts;
        __int128 sum = 0, squares = 0;
        std::int64_t n = 0;
        for (std::size_t i = 0; i < values.size(); ++i) {
            expected[i] = std::isnan(values[i]) ? kNoData : cell(values[i]);
            if (std::isnan(expected[i])) continue;
            const auto whole = static_cast<std::int64_t>(expected[i]);
            ++counts[whole];
            ++n;
            sum += whole;
            squares += static_cast<__int128>(whole) * whole;
        }
        const auto mean = static_cast<double>(static_cast<long double>(sum) / n);
        const auto deviation = static_cast<double>(std::sqrt(
            static_cast<long double>(squares * n - sum * sum) / (static_cast<long double>(n) * n)));
        RasterPtr result = op.Execute(expression);
        for (const std::int64_t tile : {1, 7, 64, 4096}) {
            Settings().tileSize = tile;
            const std::string name = "out" + std::to_string(run++);
            RasterDatasetPtr stored = result->Item(0)->RasterDataset()->Copy(name, workspace);
            const std::string what = std::string(expression) + ", tile " + std::to_string(tile);
            const std::vector<double> cells = testing::ReadAll(stored->CreateDefaultRaster());
            ASSERT_EQ(cells.size(), expected.size());
            for (std::size_t i = 0; i < cells.size(); ++i) {
                ASSERT_TRUE(cells[i] == expected[i] ||
                            (std::isnan(cells[i]) && std::isnan(expected[i])))
                    << what << ", cell " << i;
            }
            const RasterDatasetPtr reopened = workspace->OpenRasterDataset(name);
            const RasterStatistics s = reopened->Statistics();
            EXPECT_EQ(s.validCells, n) << what;
            EXPECT_EQ(s.Mean, mean) << what;
            EXPECT_EQ(s.StandardDeviation, deviation) << what;
            EXPECT_EQ(s.Minimum, static_cast<double>(counts.begin()->first)) << what;
            EXPECT_EQ(s.Maximum, static_cast<double>(counts.rbegin()->first)) << what;
            // Where a -0 ends the range, its sign is the one statistics
            // computed cell by cell over the same tiles give.
            const RasterStatistics computed = op.Execute(expression)->Item(0)->Statistics();
            EXPECT_EQ(std::signbit(s.Minimum), std::signbit(computed.Minimum)) << what;
            EXPECT_EQ(std::signbit(s.Maximum), std::signbit(computed.Maximum)) << what;
            ASSERT_TRUE(reopened->HasTable()) << what;
            std::map<std::int64_t, std::int64_t> table;
            for (const AttributeRow& row : reopened->GetAttributeTable()) {
                table[row.Value] = row.Count;
            }
            EXPECT_EQ(table, counts) << what;
        }
    }
    Settings() = saved;
}

// The tiles' partial statistics of a floating grid are combined in tile order:
// combined in the order threads finish them, the last bits of the mean would
// change from run to run, and runs by several processes could never match.
TEST(StatisticsTest, FloatingStatisticsAreTheSameBitsWhateverTheThreads) {
    testing::TempDir dir;
    const Grid grid{0, 3000, 10, 10, 173, 151};
    std::vector<double> values = testing::Surface(grid, false);
    for (std::size_t i = 0; i < values.size(); i += 7) values[i] = kNoData;
    testing::WriteGrid(dir / "z.tif", grid, values);
    RasterWorkspacePtr workspace = RasterWorkspaceFactory().OpenFromFile(dir.Path(), 0);
    RasterMapAlgebraOp op;
    op.BindRaster(workspace->OpenRasterDataset("z")->CreateDefaultRaster(), "z");

    const EvalSettings saved = Settings();
    Settings().tileSize = 9;  // hundreds of parts to combine
    Settings().threads = 1;
    const RasterStatistics alone = op.Execute("[z] / 3 + 1000")->Item(0)->Statistics();
    Settings().threads = 2;
    for (int run = 0; run < 8; ++run) {
        const RasterStatistics threaded = op.Execute("[z] / 3 + 1000")->Item(0)->Statistics();
        EXPECT_EQ(std::bit_cast<std::uint64_t>(threaded.Mean),
                  std::bit_cast<std::uint64_t>(alone.Mean));
        EXPECT_EQ(std::bit_cast<std::uint64_t>(threaded.StandardDeviation),
                  std::bit_cast<std::uint64_t>(alone.StandardDeviation));
    }
    Settings() = saved;
    // And they are the statistics: two passes over the 32-bit values the
    // grid holds, computed from the 32-bit values the input holds.
    std::vector<double> cells;
    for (double v : values) {
        if (!std::isnan(v)) cells.push_back(static_cast<float>(static_cast<float>(v) / 3 + 1000));
    }
    const auto n = static_cast<double>(cells.size());
    double sum = 0;
    for (double v : cells) sum += v;
    const double mean = sum / n;
    double squares = 0;
    for (double v : cells) squares += (v - mean) * (v - mean);
    EXPECT_NEAR(alone.Mean, mean, 1e-9);
    EXPECT_NEAR(alone.StandardDeviation, std::sqrt(squares / n), 1e-9);
}

// Grids computed from a depth grid "d" of the test's own, bound as [d], and
// stored in the same folder.
class StoredGridTest : public ::testing::Test {
protected:
    void WriteDepth(const Grid& grid, const std::vector<double>& values, bool integer) {
        testing::WriteGrid(dir_ / "d.tif", grid, values, integer);
        workspace_ = RasterWorkspaceFactory().OpenFromFile(dir_.Path(), 0);
        op_.BindRaster(workspace_->OpenRasterDataset("d")->CreateDefaultRaster(), "d");
    }
    void Save(const std::string& expression, const std::string& name) {
        op_.Execute(expression)->Item(0)->RasterDataset()->Copy(name, workspace_);
    }
    std::string Path(const std::string& name) const { return dir_ / (name + ".tif"); }
    GDALDataType StoredType(const std::string& name) const {
        GDALDatasetH file = GDALOpen(Path(name).c_str(), GA_ReadOnly);
        if (!file) return GDT_Unknown;
        const GDALDataType type = GDALGetRasterDataType(GDALGetRasterBand(file, 1));
        GDALClose(file);
        return type;
    }

    testing::TempDir dir_;
    RasterWorkspacePtr workspace_;
    RasterMapAlgebraOp op_;
};

// The stored cell type follows the range the operators allow: a type too
// small would clip values, and NoData must not land on a value of the grid.
TEST_F(StoredGridTest, SmallestCellTypeHoldsEveryValueAndNoData) {
    const Grid grid{0, 60, 10, 10, 7, 6};
    std::vector<double> depth = testing::Surface(grid, true);
    depth[4] = kNoData;
    WriteDepth(grid, depth, true);

    struct Case {
        const char* expression;
        GDALDataType type;
        std::function<double(double)> cell;  // of a valid depth
    };
    const Case cases[] = {
        {"con([d] > -90, 254, 0)", GDT_Byte, [](double d) { return d > -90 ? 254 : 0; }},
        {"con([d] >= -95, 3, 0) * 2", GDT_Byte, [](double d) { return d >= -95 ? 6 : 0; }},
        {"sum(con([d] > -90, 200, 0), con([d] < -80, 55, 1))", GDT_UInt16,
         [](double d) { return (d > -90 ? 200 : 0) + (d < -80 ? 55 : 1); }},
        {"con([d] > -90, 65534, 3)", GDT_UInt16, [](double d) { return d > -90 ? 65534 : 3; }},
        {"Sqr(con([d] > -90, 16, -16)) - 300", GDT_Int16, [](double) { return 256 - 300; }},
        {"con([d] > -90, -32767, 32767)", GDT_Int16,
         [](double d) { return d > -90 ? -32767 : 32767; }},
        {"con([d] > -90, 65535, 0)", GDT_Int32, [](double d) { return d > -90 ? 65535 : 0; }},
        {"[d] * 3", GDT_Int32, [](double d) { return d * 3; }},
        {"int([d] / 2)", GDT_Int32, [](double d) { return std::trunc(d / 2); }},
        {"[d] / 2", GDT_Float32, [](double d) { return d / 2; }},
    };
    int run = 0;
    for (const Case& c : cases) {
        const std::string name = "t" + std::to_string(run++);
        Save(c.expression, name);
        EXPECT_EQ(StoredType(name), c.type) << c.expression;
        const std::vector<double> cells = testing::ReadAll(testing::OpenRaster(Path(name)));
        for (std::size_t i = 0; i < depth.size(); ++i) {
            if (std::isnan(depth[i])) {
                EXPECT_TRUE(std::isnan(cells[i])) << c.expression << " cell " << i;
            } else {
                EXPECT_EQ(cells[i], c.cell(depth[i])) << c.expression << " cell " << i;
            }
        }
    }
}

// A byte grid saved again stays a byte grid: its NoData value is no value of
// its cells; one more than its largest value no longer fits.
TEST_F(StoredGridTest, ByteGridStaysByteWhenSavedAgain) {
    const Grid grid{0, 60, 10, 10, 7, 6};
    std::vector<double> depth = testing::Surface(grid, true);
    depth[9] = kNoData;
    WriteDepth(grid, depth, true);
    Save("con([d] > -90, 254, 1)", "bytes");
    op_.BindRaster(workspace_->OpenRasterDataset("bytes")->CreateDefaultRaster(), "b");
    Save("[b]", "again");
    Save("[b] + 1", "higher");
    EXPECT_EQ(StoredType("again"), GDT_Byte);
    EXPECT_EQ(StoredType("higher"), GDT_UInt16);
    const std::vector<double> again = testing::ReadAll(testing::OpenRaster(Path("again")));
    EXPECT_TRUE(std::isnan(again[9]));
    EXPECT_EQ(again[0], depth[0] > -90 ? 254 : 1);
}

// Every stored grid names its writer, its time, its expression and each file
// it was computed from, also through computed inputs.
TEST_F(StoredGridTest, ProvenanceNamesTheExpressionAndEveryInputFile) {
    const Grid grid{0, 60, 10, 10, 7, 6};
    WriteDepth(grid, testing::Surface(grid, false), false);
    op_.BindRaster(workspace_->OpenRasterDataset("d")->CreateDefaultRaster(), "inDepth");
    op_.BindRaster(op_.Execute("[inDepth] * 2"), "twice");
    op_.BindRaster(RasterSurfaceOp().Slope(op_.Execute("[inDepth] + 1"), 1), "steep");
    const std::string saved = Writer().commandLine;
    Writer().commandLine = "halvane calc --name out";
    Save("[twice] + [steep] + [INDEPTH]", "out");
    Writer().commandLine = saved;

    GDALDatasetH out = GDALOpen(Path("out").c_str(), GA_ReadOnly);
    ASSERT_NE(out, nullptr);
    auto item = [&](const char* key) { return testing::MetadataItem(out, key); };
    EXPECT_EQ(item("TIFFTAG_SOFTWARE").rfind("Halvane ", 0), 0u);
    // "YYYY:MM:DD HH:MM:SS", as TIFF dates are written.
    const std::string date = item("TIFFTAG_DATETIME");
    EXPECT_TRUE(date.size() == 19 && date[4] == ':' && date[10] == ' ') << date;
    EXPECT_EQ(item("HALVANE_EXPRESSION"), "[twice] + [steep] + [INDEPTH]");
    EXPECT_EQ(item("HALVANE_INPUT_twice"), "[inDepth] * 2");
    EXPECT_EQ(item("HALVANE_INPUT_steep"), "Slope([surface]) in degrees, z factor 1");
    EXPECT_EQ(item("HALVANE_INPUT_surface"), "[inDepth] + 1");
    EXPECT_EQ(item("HALVANE_INPUT_inDepth"), Path("d"));
    EXPECT_EQ(item("HALVANE_COMMAND"), "halvane calc --name out");
    GDALClose(out);
}

// Cloud-optimized files pass GDAL's own validation and carry overviews that
// keep the values of a class grid (nearest) and smooth a continuous one
// (average); the one-pass plain file holds the same cells, table and items.
TEST_F(StoredGridTest, CloudOptimizedFilesValidateWithOverviewsOfEachKind) {
    const Grid grid{0, 7000, 10, 10, 1100, 700};
    std::vector<double> depth = testing::Surface(grid, false);
    for (std::size_t i = 0; i < depth.size(); i += 97) depth[i] = kNoData;
    WriteDepth(grid, depth, false);
    const WriteSettings saved = Writing();
    for (const bool cloud : {true, false}) {
        Writing().cloudOptimized = cloud;
        const std::string suffix = cloud ? "cog" : "plain";
        Save("con([d] > -60, 3, 7)", "classes" + suffix);
        Save("[d] / 3", "third" + suffix);
    }
    Writing() = saved;

    for (const char* name : {"classes", "third"}) {
        const std::string cog = Path(std::string(name) + "cog");
        const std::string plain = Path(std::string(name) + "plain");
        EXPECT_EQ(testing::CloudOptimizedProblems(cog), "") << name;
        EXPECT_NE(testing::CloudOptimizedProblems(plain), "") << name;
        const std::vector<double> cells = testing::ReadAll(testing::OpenRaster(cog));
        const std::vector<double> plainCells = testing::ReadAll(testing::OpenRaster(plain));
        ASSERT_EQ(cells.size(), plainCells.size());
        for (std::size_t i = 0; i < cells.size(); ++i) {
            ASSERT_TRUE(cells[i] == plainCells[i] ||
                        (std::isnan(cells[i]) && std::isnan(plainCells[i])))
                << name << " cell " << i;
        }
        RasterDatasetPtr reopened = RasterDataset::Open(cog);
        EXPECT_EQ(reopened->HasTable(), std::string(name) == "classes");
        EXPECT_EQ(reopened->Statistics().validCells,
                  RasterDataset::Open(plain)->Statistics().validCells);

        GDALDatasetH file = GDALOpen(cog.c_str(), GA_ReadOnly);
        ASSERT_NE(file, nullptr);
        EXPECT_NE(GDALGetMetadataItem(file, "HALVANE_EXPRESSION", nullptr), nullptr);
        GDALRasterBandH band = GDALGetRasterBand(file, 1);
        ASSERT_GE(GDALGetOverviewCount(band), 1);
        GDALRasterBandH half = GDALGetOverview(band, 0);
        const int cols = GDALGetRasterBandXSize(half), rows = GDALGetRasterBandYSize(half);
        ASSERT_EQ(cols, 550);
        ASSERT_EQ(rows, 350);
        std::vector<double> overview(static_cast<std::size_t>(cols) * rows);
        ASSERT_EQ(GDALRasterIO(half, GF_Read, 0, 0, cols, rows, overview.data(), cols, rows,
                               GDT_Float64, 0, 0),
                  CE_None);
        int hasNoData = 0;
        const double noData = GDALGetRasterNoDataValue(half, &hasNoData);
        ASSERT_TRUE(hasNoData);
        int mixed = 0;
        for (int r = 0; r < rows; ++r) {
            for (int c = 0; c < cols; ++c) {
                std::vector<double> block;
                for (int k = 0; k < 4; ++k) {
                    const double v = cells[(2 * r + k / 2) * grid.cols + 2 * c + k % 2];
                    if (!std::isnan(v)) block.push_back(v);
                }
                const double got = overview[static_cast<std::size_t>(r) * cols + c];
                if (block.empty()) {
                    ASSERT_EQ(got, noData);
                } else if (std::string(name) == "classes") {
                    // A cell of the block, never a blend of two classes.
                    ASSERT_TRUE(got == 3 || got == 7 || (got == noData && block.size() < 4)) << got;
                    mixed += std::count(block.begin(), block.end(), got) <
                             static_cast<long>(block.size());
                } else {
                    double mean = 0;
                    for (double v : block) mean += v / static_cast<double>(block.size());
                    ASSERT_NEAR(got, mean, 1e-4) << r << "," << c;
                }
            }
        }
        if (std::string(name) == "classes") {
            EXPECT_GT(mixed, 0);
        }
        GDALClose(file);
    }
}

// The grid spans blocks of the file with part blocks at its edges, so that
// tiles fill blocks whole, in parts, and across block edges.
TEST(EvaluatorTest, TilesAndThreadsGiveTheWholeGridResult) {
    testing::TempDir dir;
    const Grid grid{500, 9000, 10, 10, 300, 270};
    std::vector<double> values = testing::Surface(grid, true);
    for (std::size_t i = 3; i < values.size(); i += 11) values[i] = kNoData;
    testing::WriteGrid(dir / "bathy.tif", grid, values);
    RasterWorkspacePtr workspace = RasterWorkspaceFactory().OpenFromFile(dir.Path(), 0);
    RasterMapAlgebraOp op;
    op.BindRaster(workspace->OpenRasterDataset("bathy")->CreateDefaultRaster(), "inRaster");
    // Chained results share inputs: the evaluator must still give each cell once.
    RasterPtr bpi = op.Execute("int(([inRaster] - Focalmean([inRaster], annulus, 1, 5)) + .5)");
    op.BindRaster(bpi, "bpi");
    op.BindRaster(op.Execute("Shift([inRaster], 510, 8540)"), "shifted");
    RasterPtr chained = op.Execute("con([bpi] > 0, [bpi] + [shifted], Sqr([bpi]) - [inRaster])");
    const Grid& g = chained->GetGrid();
    const std::vector<double> reference = chained->Read({0, 0, g.cols, g.rows});

    const EvalSettings saved = Settings();
    int run = 0;
    for (std::int64_t tile : {7, 100, 256, 512}) {
        for (int threads : {1, 2}) {
            Settings().tileSize = tile;
            Settings().threads = threads;
            const std::string name = "out" + std::to_string(run++);
            RasterDatasetPtr stored = chained->Item(0)->RasterDataset()->Copy(name, workspace);
            const std::vector<double> cells = testing::ReadAll(stored->CreateDefaultRaster());
            ASSERT_EQ(cells.size(), reference.size());
            for (std::size_t i = 0; i < cells.size(); ++i) {
                ASSERT_TRUE(cells[i] == reference[i] ||
                            (std::isnan(cells[i]) && std::isnan(reference[i])))
                    << "tile " << tile << ", threads " << threads << ", cell " << i;
            }
        }
    }
    Settings() = saved;
}

// Windows of one stored grid shifted against each other are served from one
// wider read per tile: each shift must still see its own cells, NoData beyond
// the edges, whatever the tile size and the order the shifts are asked in.
TEST(EvaluatorTest, ShiftedWindowsOfOneGridEachSeeTheirOwnCells) {
    testing::TempDir dir;
    const Grid grid{500, 9000, 10, 10, 45, 38};
    std::vector<double> values = testing::Surface(grid, false);
    for (std::size_t i = 2; i < values.size(); i += 13) values[i] = kNoData;
    testing::WriteGrid(dir / "z.tif", grid, values);
    RasterWorkspacePtr workspace = RasterWorkspaceFactory().OpenFromFile(dir.Path(), 0);
    RasterMapAlgebraOp op;
    op.BindRaster(workspace->OpenRasterDataset("z")->CreateDefaultRaster(), "z");
    // Cell offsets (columns right, rows down) each shifted copy shows at a cell.
    const std::vector<std::pair<int, int>> offsets{{1, -1}, {0, -1}, {-1, 1},
                                                   {2, 0},  {-3, 2}, {30, 0}};
    std::string sum = "[z]";
    for (std::size_t k = 0; k < offsets.size(); ++k) {
        const auto [dc, dr] = offsets[k];
        const std::string name = "s" + std::to_string(k);
        // Moving the corner left by a cell shows each cell its right neighbour.
        op.BindRaster(op.Execute("Shift([z], " + std::to_string(500 - 10 * dc) + ", " +
                                 std::to_string(9000 - 380 + 10 * dr) + ")"),
                      name);
        sum = "(" + sum + ") * 2 + [" + name + "]";
    }
    RasterPtr shifted = op.Execute(sum);
    const Grid& g = shifted->GetGrid();
    ASSERT_EQ(g.cols, 45 - 30 - 3);
    ASSERT_EQ(g.rows, 38 - 3);

    const std::vector<double> z =
        testing::ReadAll(workspace->OpenRasterDataset("z")->CreateDefaultRaster());
    std::vector<double> expected;
    for (int r = 0; r < g.rows; ++r) {
        for (int c = 0; c < g.cols; ++c) {
            const int r0 = r + 1, c0 = c + 3;  // the intersection's corner in z
            double v = z[r0 * 45 + c0];
            for (const auto& [dc, dr] : offsets) v = v * 2 + z[(r0 + dr) * 45 + c0 + dc];
            expected.push_back(v);
        }
    }
    const EvalSettings saved = Settings();
    for (std::int64_t tile : {1, 5, 16, 512}) {
        Settings().tileSize = tile;
        const std::string name = "out" + std::to_string(tile);
        RasterDatasetPtr stored = shifted->Item(0)->RasterDataset()->Copy(name, workspace);
        const std::vector<double> cells = testing::ReadAll(stored->CreateDefaultRaster());
        ASSERT_EQ(cells.size(), expected.size());
        for (std::size_t i = 0; i < cells.size(); ++i) {
            const double want =
                std::isnan(expected[i]) ? expected[i] : static_cast<float>(expected[i]);
            ASSERT_TRUE(cells[i] == want || (std::isnan(cells[i]) && std::isnan(want)))
                << "tile " << tile << ", cell " << i << ": " << cells[i] << " != " << want;
        }
    }
    Settings() = saved;
}

// A drawing reads a grid thinned out; stored and computed grids must pick the
// cell under each sample's centre, as a plain loop over all cells does.
TEST(EvaluatorTest, SampledReadsPickTheCellUnderEachSampleCentre) {
    testing::TempDir dir;
    const Grid grid{500, 9000, 10, 10, 61, 47};
    std::vector<double> values = testing::Surface(grid, false);
    for (std::size_t i = 2; i < values.size(); i += 7) values[i] = kNoData;
    testing::WriteGrid(dir / "bathy.tif", grid, values);
    RasterPtr stored = testing::OpenRaster(dir / "bathy.tif");
    RasterMapAlgebraOp op;
    op.BindRaster(stored, "inRaster");
    RasterPtr computed = op.Execute("Focalmean([inRaster], annulus, 1, 2) * 2");
    const std::vector<double> storedAll = testing::ReadAll(stored);
    const std::vector<double> computedAll = testing::ReadAll(computed);

    using Source = std::pair<RasterPtr, const std::vector<double>*>;
    const Source sources[] = {{stored, &storedAll}, {computed, &computedAll}};
    const Window window{5, 3, 50, 40};
    const std::pair<std::int64_t, std::int64_t> sizes[] = {{7, 9}, {50, 40}, {1, 1}, {13, 40}};
    for (const auto& [cols, rows] : sizes) {
        for (const auto& [raster, all] : sources) {
            const std::vector<double> sampled = raster->ReadSampled(window, cols, rows);
            ASSERT_EQ(sampled.size(), static_cast<std::size_t>(cols * rows));
            for (std::int64_t i = 0; i < rows; ++i) {
                for (std::int64_t j = 0; j < cols; ++j) {
                    const auto r =
                        window.row0 +
                        static_cast<std::int64_t>((i + 0.5) * double(window.rows) / double(rows));
                    const auto c =
                        window.col0 +
                        static_cast<std::int64_t>((j + 0.5) * double(window.cols) / double(cols));
                    const double want = (*all)[r * grid.cols + c];
                    const double got = sampled[i * cols + j];
                    ASSERT_TRUE(got == want || (std::isnan(got) && std::isnan(want)))
                        << (raster == stored ? "stored" : "computed") << " " << cols << "x" << rows
                        << " at " << i << "," << j;
                }
            }
        }
    }
    EXPECT_THROW(stored->ReadSampled({-1, 0, 10, 10}, 5, 5), runtime::Failure);
    EXPECT_THROW(stored->ReadSampled({0, 0, 10, 10}, 11, 5), runtime::Failure);
}

// A member of a team exchanging nothing: only its place in the team matters.
class Member : public Team {
public:
    Member(int rank, int size) : rank_(rank), size_(size) {}
    int Rank() const override { return rank_; }
    int Size() const override { return size_; }
    std::vector<std::string> AllGather(const std::string&) override { return {}; }

private:
    int rank_, size_;
};

// The first process assembles a team's grid by copying compressed 256-row
// blocks, and each band must hold only the tiles a lone run computes: every
// band starts on a tile edge and a block edge, and the bands, in rank order,
// hold every row once.
TEST(TeamBandsTest, BandsAreWholeTilesAndBlocksAndCoverEveryRowOnce) {
    for (const std::int64_t tileSize : {128, 512, 9}) {
        for (const std::int64_t rows : {1, 255, 1300, 2049}) {
            for (int size = 2; size <= 5; ++size) {
                std::int64_t next = 0;
                for (int rank = 0; rank < size; ++rank) {
                    Member member(rank, size);
                    CurrentTeam() = &member;
                    const auto [first, end] = SharedRows(rows, tileSize);
                    CurrentTeam() = nullptr;
                    const std::string where = std::to_string(rows) + " rows, tiles of " +
                                              std::to_string(tileSize) + ", rank " +
                                              std::to_string(rank) + " of " + std::to_string(size);
                    EXPECT_EQ(first, next) << where;
                    EXPECT_LE(first, end) << where;
                    if (first < end) {
                        EXPECT_EQ(first % tileSize, 0) << where;
                        EXPECT_EQ(first % 256, 0) << where;
                    }
                    next = end;
                }
                EXPECT_EQ(next, rows) << rows << " rows, tiles of " << tileSize << ", " << size;
            }
        }
    }
    // Alone, a process computes every row.
    EXPECT_EQ(SharedRows(1300, 128), (std::pair<std::int64_t, std::int64_t>{0, 1300}));
}

}  // namespace
}  // namespace halvane::raster
