#include "engine/Rugosity.h"

#include <array>
#include <cmath>
#include <string>

#include "engine/RasterAccess.h"
#include "engine/Session.h"
#include "platform/raster/MapAlgebra.h"
#include "platform/reporting/modProgDialog.h"
#include "platform/runtime/Convert.h"

namespace halvane {
namespace {

using runtime::CStr;
using runtime::Deref;

constexpr const char* kTitle = "Processing";

void Progress(const std::string& message, std::int32_t position, std::int32_t maximum) {
    ShowProgress(message, kTitle, 0, maximum, position, 0);
}

// Where each shifted copy puts its lower-left corner, in steps of s from the
// input's: a copy moved right and down shows each cell its upper-left
// neighbour. Neighbours are numbered 1 2 3 / 4 c 5 / 6 7 8.
struct ShiftStep {
    int x, y;
};
constexpr std::array<ShiftStep, 8> kShifts{
    {{+1, -1}, {0, -1}, {-1, -1}, {+1, 0}, {-1, 0}, {+1, +1}, {0, +1}, {-1, +1}}};

// One half-edge: the grid bound as P (0 the input, else shift n), the name Q
// is bound under and the shift grid it stands for, and whether its planar
// length is the diagonal.
struct EdgeRow {
    int p;
    const char* q;
    int qGrid;
    bool diagonal;
};
constexpr std::array<EdgeRow, 16> kEdges{{{0, "shift1", 1, true},
                                          {0, "shift2", 2, false},
                                          {0, "shift3", 3, true},
                                          {0, "shift4", 4, false},
                                          {0, "shift5", 5, false},
                                          {0, "shift6", 6, true},
                                          {0, "shift7", 7, false},
                                          {0, "shift8", 8, true},
                                          {1, "shiftA", 2, false},
                                          {2, "shiftB", 3, false},
                                          {1, "shiftC", 4, false},
                                          {3, "shiftD", 5, false},
                                          {6, "shiftE", 4, false},
                                          {5, "shiftF", 8, false},
                                          {6, "shiftG", 7, false},
                                          {7, "shiftH", 8, false}}};

// The three edges of each triangle, as indices 1..16 into the edge grids.
struct AreaRow {
    int a, b, c;
};
constexpr std::array<AreaRow, 8> kAreas{{{1, 2, 9},
                                         {2, 3, 10},
                                         {1, 4, 11},
                                         {3, 5, 12},
                                         {4, 6, 13},
                                         {5, 8, 14},
                                         {6, 7, 15},
                                         {7, 8, 16}}};

std::string Of(int n, int total) { return std::to_string(n) + " of " + std::to_string(total); }

}  // namespace

raster::RasterPtr TriangleArea(raster::RasterPtr& SideA, raster::RasterPtr& SideB,
                               raster::RasterPtr& SideC) {
    raster::RasterMapAlgebraOp pMapAlgebraOp;
    pMapAlgebraOp.BindRaster(SideA, "SideA");
    pMapAlgebraOp.BindRaster(SideB, "SideB");
    pMapAlgebraOp.BindRaster(SideC, "SideC");
    raster::RasterPtr pArea = pMapAlgebraOp.Execute(
        "([SideA] * (Sqrt((Sqr([SideB])) - (Sqr(((Sqr([SideA])) + (Sqr([SideB])) - "
        "(Sqr([SideC]))) / ([SideA] * 2)))))) / 2 ");
    pMapAlgebraOp.UnbindRaster("SideA");
    pMapAlgebraOp.UnbindRaster("SideB");
    pMapAlgebraOp.UnbindRaster("SideC");
    return pArea;
}

void BuildRugosity() {
    raster::RasterPtr pBathy = Deref(g_p_Rugosity_RasterDataset).CreateDefaultRaster();
    raster::RasterMapAlgebraOp pMapAlgebraOp;
    pMapAlgebraOp.OutWorkspace(raster::RasterWorkspaceFactory().OpenFromFile(g_s_WorkingDir, 0));

    const raster::Envelope extent = pBathy->Extent();
    const raster::Pnt cellSize = pBathy->MeanCellSize();
    // Whole units on purpose: every later number uses s, so a 2.5 m grid is
    // shifted by 2 and rated against a planar cell of 4.
    const std::int16_t s = runtime::CInt((cellSize.X + cellSize.Y) / 2);
    const double d = std::sqrt(static_cast<double>(s) * s + static_cast<double>(s) * s);
    const std::string sText = std::to_string(s);
    const std::string dText = CStr(d);

    std::array<raster::RasterPtr, 9> shift;  // 1..8
    for (int k = 1; k <= 8; ++k) {
        Progress("Calculating Shift Grid " + Of(k == 1 ? 1 : k - 1, 8), k - 1, 8);
        const ShiftStep step = kShifts[k - 1];
        pMapAlgebraOp.BindRaster(pBathy, "bathy");
        shift[k] = pMapAlgebraOp.Execute("Shift([bathy], " + CStr(extent.XMin + step.x * s) + ", " +
                                         CStr(extent.YMin + step.y * s) + ")");
        pMapAlgebraOp.UnbindRaster("bathy");
    }
    Progress("Calculating Shift Grid " + Of(8, 8), 8, 8);
    CloseProgress();

    std::array<raster::RasterPtr, 17> edge;  // 1..16
    for (int k = 1; k <= 16; ++k) {
        // The bar's maximum of 100 before the last edge is how the stage has
        // always shown it.
        Progress("Calculating Triangle Edge " + Of(k == 1 ? 1 : k - 1, 16), k - 1,
                 k == 16 ? 100 : 16);
        const EdgeRow& row = kEdges[k - 1];
        const std::string p = row.p == 0 ? "bathy" : "shift" + std::to_string(row.p);
        pMapAlgebraOp.BindRaster(row.p == 0 ? pBathy : shift[row.p], p);
        pMapAlgebraOp.BindRaster(shift[row.qGrid], row.q);
        edge[k] = pMapAlgebraOp.Execute("(Sqrt(Sqr([" + p + "] - [" + row.q + "]) + Sqr(" +
                                        (row.diagonal ? dText : sText) + ")) / 2)");
        pMapAlgebraOp.UnbindRaster(p);
        pMapAlgebraOp.UnbindRaster(row.q);
    }
    Progress("Calculating Triangle Edge " + Of(16, 16), 16, 16);
    CloseProgress();

    const std::string areaText = "Calculating Triangle Area";
    std::array<raster::RasterPtr, 9> area;  // 1..8
    for (int k = 1; k <= 8; ++k) {
        Progress(areaText, k - 1, 11);
        const AreaRow& row = kAreas[k - 1];
        area[k] = TriangleArea(edge[row.a], edge[row.b], edge[row.c]);
    }
    Progress(areaText, 8, 11);

    Progress(areaText, 9, 11);
    for (int k = 1; k <= 8; ++k) pMapAlgebraOp.BindRaster(area[k], "Area" + std::to_string(k));
    raster::RasterPtr pTotalArea = pMapAlgebraOp.Execute(
        " Sum([Area1], [Area2], [Area3], [Area4], [Area5], [Area6], [Area7], [Area8]) ");
    for (int k = 1; k <= 8; ++k) pMapAlgebraOp.UnbindRaster("Area" + std::to_string(k));

    Progress(areaText, 10, 11);
    pMapAlgebraOp.BindRaster(pTotalArea, "TotalArea");
    raster::RasterPtr pRugosity = pMapAlgebraOp.Execute(" ( [TotalArea] / Sqr(" + sText + ")) ");
    pMapAlgebraOp.UnbindRaster("TotalArea");

    MakePerminentGrid(pRugosity, g_s_WorkingDir, g_s_SaveRugosity_OutputData);
    g_p_Rugosity_OutputRasterDataset =
        OpenDatasetInWorkspace(GetRasterWorkspace(g_s_WorkingDir), g_s_SaveRugosity_OutputData);
    Progress(areaText, 11, 11);
    CloseProgress();
}

}  // namespace halvane
