// The rugosity: its 34 executions, the whole cell size s and its quirks, the
// three progress stages, and the values against the formula worked out here.

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

#include "engine/Rugosity.h"
#include "platform/runtime/Failure.h"
#include "support/StageFixture.h"

namespace halvane {
namespace {

using Lines = std::vector<std::string>;

class RugosityTest : public testing::StageFixture {
protected:
    // Runs on a grid with these cells and gives the saved result's cells on
    // the input's lattice. The result covers only where all eight shifted
    // copies overlap the input, so the input's outer ring has no value.
    std::vector<double> Run(const raster::Grid& grid, const std::vector<double>& values) {
        Input(grid, values);
        g_p_Rugosity_RasterDataset = raster::RasterDataset::Open(InputFolder() + "/depth.tif");
        g_s_SaveRugosity_OutputData = "rugosity";
        BuildRugosity();
        const raster::RasterPtr result =
            runtime::Deref(g_p_Rugosity_OutputRasterDataset).CreateDefaultRaster();
        const raster::Grid& g = result->GetGrid();
        EXPECT_EQ(g.cellX, grid.cellX);
        const double column = (g.left - grid.left) / grid.cellX;
        const double row = (grid.top - g.top) / grid.cellY;
        EXPECT_EQ(column, std::round(column));
        EXPECT_EQ(row, std::round(row));
        const std::vector<double> cells = testing::ReadAll(result);
        std::vector<double> placed(values.size(), testing::kNoData);
        for (std::int64_t r = 0; r < g.rows; ++r) {
            for (std::int64_t c = 0; c < g.cols; ++c) {
                placed.at((r + static_cast<std::int64_t>(row)) * grid.cols + c +
                          static_cast<std::int64_t>(column)) = cells[r * g.cols + c];
            }
        }
        return placed;
    }
};

// Half the distance between two cell centres of depths a and b, planar length l.
double HalfEdge(double a, double b, double l) { return std::sqrt((a - b) * (a - b) + l * l) / 2; }
double Triangle(double a, double b, double c) {
    const double foot = (a * a + b * b - c * c) / (2 * a);
    return a * std::sqrt(b * b - foot * foot) / 2;
}

// The ratio of the eight triangles' area to the planar cell, from the
// neighbours numbered 1 2 3 / 4 c 5 / 6 7 8; NoData where one is missing.
std::vector<double> ReferenceRugosity(const raster::Grid& grid, const std::vector<double>& z,
                                      double s) {
    const int cols = static_cast<int>(grid.cols), rows = static_cast<int>(grid.rows);
    std::vector<double> out(z.size(), testing::kNoData);
    const double d = std::sqrt(2 * s * s);
    for (int r = 1; r + 1 < rows; ++r) {
        for (int c = 1; c + 1 < cols; ++c) {
            const auto at = [&](int dr, int dc) { return z[(r + dr) * cols + c + dc]; };
            const double zc = at(0, 0), z1 = at(-1, -1), z2 = at(-1, 0), z3 = at(-1, 1),
                         z4 = at(0, -1), z5 = at(0, 1), z6 = at(1, -1), z7 = at(1, 0),
                         z8 = at(1, 1);
            const double total =
                Triangle(HalfEdge(zc, z1, d), HalfEdge(zc, z2, s), HalfEdge(z1, z2, s)) +
                Triangle(HalfEdge(zc, z2, s), HalfEdge(zc, z3, d), HalfEdge(z2, z3, s)) +
                Triangle(HalfEdge(zc, z1, d), HalfEdge(zc, z4, s), HalfEdge(z1, z4, s)) +
                Triangle(HalfEdge(zc, z3, d), HalfEdge(zc, z5, s), HalfEdge(z3, z5, s)) +
                Triangle(HalfEdge(zc, z4, s), HalfEdge(zc, z6, d), HalfEdge(z6, z4, s)) +
                Triangle(HalfEdge(zc, z5, s), HalfEdge(zc, z8, d), HalfEdge(z5, z8, s)) +
                Triangle(HalfEdge(zc, z6, d), HalfEdge(zc, z7, s), HalfEdge(z6, z7, s)) +
                Triangle(HalfEdge(zc, z7, s), HalfEdge(zc, z8, d), HalfEdge(z7, z8, s));
            out[r * cols + c] = total / (s * s);  // NaN from any missing neighbour
        }
    }
    return out;
}

TEST_F(RugosityTest, FlatGroundOfTenMetreCellsRatesOneInsideAndNoDataOnTheRing) {
    const raster::Grid grid{600000, 5000000, 10, 10, 7, 6};
    const std::vector<double> flat(grid.Cells(), -42.0);
    const std::vector<double> cells = Run(grid, flat);
    std::vector<double> expected(flat.size(), testing::kNoData);
    for (int r = 1; r < 5; ++r) {
        for (int c = 1; c < 6; ++c) expected[r * 7 + c] = 1.0;
    }
    testing::ExpectCells(cells, expected, 1e-6);
    EXPECT_EQ(Saved(), Lines{"rugosity.tif"});
    EXPECT_EQ(g_p_Rugosity_OutputRasterDataset->Name(), "rugosity");
}

TEST_F(RugosityTest, RoughGroundWithAHoleFollowsTheFormula) {
    const raster::Grid grid{600000, 5000000, 10, 10, 9, 8};
    std::vector<double> z = testing::Surface(grid, false);
    z[4 * 9 + 5] = testing::kNoData;
    testing::ExpectCells(Run(grid, z), ReferenceRugosity(grid, z, 10), 1e-5);
}

TEST_F(RugosityTest, ThirtyFourExecutionsWithTheirBindingsInOrder) {
    const raster::Grid grid{1000, 2000, 10, 10, 5, 5};
    Run(grid, std::vector<double>(grid.Cells(), 3.0));
    const std::vector<std::string> executed = Executed();
    ASSERT_EQ(executed.size(), 34u);
    // XMin 1000, YMin 1950, s 10.
    EXPECT_EQ(executed[0], "Shift([bathy], 1010, 1940)");
    EXPECT_EQ(executed[1], "Shift([bathy], 1000, 1940)");
    EXPECT_EQ(executed[2], "Shift([bathy], 990, 1940)");
    EXPECT_EQ(executed[3], "Shift([bathy], 1010, 1950)");
    EXPECT_EQ(executed[4], "Shift([bathy], 990, 1950)");
    EXPECT_EQ(executed[5], "Shift([bathy], 1010, 1960)");
    EXPECT_EQ(executed[6], "Shift([bathy], 1000, 1960)");
    EXPECT_EQ(executed[7], "Shift([bathy], 990, 1960)");
    EXPECT_EQ(executed[8], "(Sqrt(Sqr([bathy] - [shift1]) + Sqr(14.142135623731)) / 2)");
    EXPECT_EQ(executed[9], "(Sqrt(Sqr([bathy] - [shift2]) + Sqr(10)) / 2)");
    EXPECT_EQ(executed[15], "(Sqrt(Sqr([bathy] - [shift8]) + Sqr(14.142135623731)) / 2)");
    EXPECT_EQ(executed[16], "(Sqrt(Sqr([shift1] - [shiftA]) + Sqr(10)) / 2)");
    EXPECT_EQ(executed[20], "(Sqrt(Sqr([shift6] - [shiftE]) + Sqr(10)) / 2)");
    EXPECT_EQ(executed[23], "(Sqrt(Sqr([shift7] - [shiftH]) + Sqr(10)) / 2)");
    for (int k = 24; k < 32; ++k) {
        EXPECT_EQ(executed[k],
                  "([SideA] * (Sqrt((Sqr([SideB])) - (Sqr(((Sqr([SideA])) + (Sqr([SideB])) - "
                  "(Sqr([SideC]))) / ([SideA] * 2)))))) / 2 ");
    }
    EXPECT_EQ(executed[32],
              " Sum([Area1], [Area2], [Area3], [Area4], [Area5], [Area6], [Area7], [Area8]) ");
    EXPECT_EQ(executed[33], " ( [TotalArea] / Sqr(10)) ");

    // One main operator with the output folder; each triangle has its own without one.
    EXPECT_EQ(journal.at(0), "RasterMapAlgebraOp");
    EXPECT_EQ(journal.at(1), "OutWorkspace " + g_s_WorkingDir);
    EXPECT_EQ(std::count(journal.begin(), journal.end(), "RasterMapAlgebraOp"), 9);
    EXPECT_EQ(std::count_if(journal.begin(), journal.end(),
                            [](const std::string& l) { return l.rfind("OutWorkspace", 0) == 0; }),
              1);

    const auto around = [&](const std::string& expression) {
        const auto at = std::find(journal.begin(), journal.end(), "Execute " + expression);
        return Lines(at - 2, at + 3);
    };
    EXPECT_EQ(around(executed[16]),
              (Lines{"BindRaster shift1", "BindRaster shiftA", "Execute " + executed[16],
                     "UnbindRaster shift1", "UnbindRaster shiftA"}));
    const auto triangle = std::find(journal.begin(), journal.end(), "Execute " + executed[24]);
    EXPECT_EQ(Lines(triangle - 4, triangle + 4),
              (Lines{"RasterMapAlgebraOp", "BindRaster SideA", "BindRaster SideB",
                     "BindRaster SideC", "Execute " + executed[24], "UnbindRaster SideA",
                     "UnbindRaster SideB", "UnbindRaster SideC"}));
    const auto sum = std::find(journal.begin(), journal.end(), "Execute " + executed[32]);
    EXPECT_EQ(*(sum - 8), "BindRaster Area1");
    EXPECT_EQ(*(sum + 8), "UnbindRaster Area8");
    EXPECT_EQ(journal.back(), "UnbindRaster TotalArea");
}

TEST_F(RugosityTest, ThreeProgressStagesStepByStepWithTheirQuirks) {
    const raster::Grid grid{0, 50, 10, 10, 5, 5};
    // Cancel changes nothing: the run goes on to the end.
    ui.onProgressMessage = [](ui::ScriptedProgressDialog& dialog) { dialog.PressCancel(); };
    Run(grid, std::vector<double>(grid.Cells(), 1.0));

    Lines expected = {"0/8 Calculating Shift Grid 1 of 8",     "1/8 Calculating Shift Grid 1 of 8",
                      "2/8 Calculating Shift Grid 2 of 8",     "3/8 Calculating Shift Grid 3 of 8",
                      "4/8 Calculating Shift Grid 4 of 8",     "5/8 Calculating Shift Grid 5 of 8",
                      "6/8 Calculating Shift Grid 6 of 8",     "7/8 Calculating Shift Grid 7 of 8",
                      "8/8 Calculating Shift Grid 8 of 8",     "close",
                      "0/16 Calculating Triangle Edge 1 of 16"};
    for (int n = 1; n <= 14; ++n) {
        expected.push_back(std::to_string(n) + "/16 Calculating Triangle Edge " +
                           std::to_string(n) + " of 16");
    }
    expected.push_back("15/100 Calculating Triangle Edge 15 of 16");
    expected.push_back("16/16 Calculating Triangle Edge 16 of 16");
    expected.push_back("close");
    for (int n = 0; n <= 11; ++n) {
        expected.push_back(std::to_string(n) + "/11 Calculating Triangle Area");
    }
    expected.push_back("close");
    EXPECT_EQ(ProgressSteps(), expected);
    ASSERT_EQ(ui.ProgressDialogs().size(), 3u);
    for (const auto& dialog : ui.ProgressDialogs()) {
        EXPECT_EQ(dialog->title, "Processing");
        EXPECT_EQ(dialog->minRange, 0);
        EXPECT_EQ(dialog->owner, 0);
    }
    EXPECT_NE(g_p_Rugosity_OutputRasterDataset, nullptr);
}

TEST_F(RugosityTest, CellsOfTwoAndAHalfMetresAreRatedWithTwo) {
    const raster::Grid grid{100, 200, 2.5, 2.5, 8, 8};
    const std::vector<double> cells = Run(grid, std::vector<double>(grid.Cells(), -7.5));
    const std::vector<std::string> executed = Executed();
    EXPECT_EQ(executed[0], "Shift([bathy], 102, 178)");  // XMin 100, YMin 180, moved by 2
    EXPECT_EQ(executed[8], "(Sqrt(Sqr([bathy] - [shift1]) + Sqr(2.82842712474619)) / 2)");
    EXPECT_EQ(executed[33], " ( [TotalArea] / Sqr(2)) ");
    // Flat ground still rates 1 wherever the engine finds all eight neighbours.
    int rated = 0;
    for (double v : cells) {
        if (std::isnan(v)) continue;
        EXPECT_NEAR(v, 1.0, 1e-6);
        ++rated;
    }
    EXPECT_GT(rated, 0);
}

TEST_F(RugosityTest, CellsSmallerThanHalfAUnitGiveSZeroAndNoCrash) {
    const raster::Grid grid{0, 2, 0.4, 0.4, 5, 5};
    const std::vector<double> cells = Run(grid, testing::Surface(grid, false));
    EXPECT_EQ(Executed().back(), " ( [TotalArea] / Sqr(0)) ");
    EXPECT_EQ(Executed()[0], "Shift([bathy], 0, 0)");
    for (double v : cells) EXPECT_TRUE(std::isnan(v));
}

TEST_F(RugosityTest, FailuresGoToTheCallerUnreported) {
    const raster::Grid huge{0, 4e6, 40000, 40000, 4, 4};
    Input(huge, std::vector<double>(huge.Cells(), 1.0));
    g_p_Rugosity_RasterDataset = raster::RasterDataset::Open(InputFolder() + "/depth.tif");
    g_s_SaveRugosity_OutputData = "rugosity";
    try {
        BuildRugosity();
        ADD_FAILURE() << "a cell size beyond 16 bits must overflow";
    } catch (const runtime::Failure& failure) {
        EXPECT_EQ(failure.number, runtime::kOverflow);
    }

    g_p_Rugosity_RasterDataset.reset();
    EXPECT_THROW(BuildRugosity(), runtime::Failure);
    EXPECT_TRUE(Reports().empty());
    EXPECT_EQ(g_p_Rugosity_OutputRasterDataset, nullptr);
    EXPECT_TRUE(Saved().empty());
}

}  // namespace
}  // namespace halvane
