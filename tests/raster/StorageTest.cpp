// Workspaces, names, atomic copies, statistics and tables, and the tiled
// evaluator against the whole-grid reference.

#include <gtest/gtest.h>
#include <unistd.h>

#include <cmath>
#include <filesystem>
#include <fstream>
#include <map>
#include <set>

#include "platform/raster/MapAlgebra.h"
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

TEST(EvaluatorTest, TilesAndThreadsGiveTheWholeGridResult) {
    testing::TempDir dir;
    const Grid grid{500, 9000, 10, 10, 61, 47};
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
    for (std::int64_t tile : {1, 7, 64, 512}) {
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
                    const auto r = window.row0 + static_cast<std::int64_t>(
                                                     (i + 0.5) * double(window.rows) / double(rows));
                    const auto c = window.col0 + static_cast<std::int64_t>(
                                                     (j + 0.5) * double(window.cols) / double(cols));
                    const double want = (*all)[r * grid.cols + c];
                    const double got = sampled[i * cols + j];
                    ASSERT_TRUE(got == want || (std::isnan(got) && std::isnan(want)))
                        << (raster == stored ? "stored" : "computed") << " " << cols << "x"
                        << rows << " at " << i << "," << j;
                }
            }
        }
    }
    EXPECT_THROW(stored->ReadSampled({-1, 0, 10, 10}, 5, 5), runtime::Failure);
    EXPECT_THROW(stored->ReadSampled({0, 0, 10, 10}, 11, 5), runtime::Failure);
}

}  // namespace
}  // namespace halvane::raster
