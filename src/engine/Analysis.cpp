#include "engine/Analysis.h"

#include "engine/RasterAccess.h"
#include "engine/Session.h"
#include "platform/reporting/ErrorHandling.h"
#include "platform/runtime/Convert.h"

namespace halvane {
namespace {

using runtime::Deref;

constexpr const char* kModule = "modUtil";
constexpr const char* kTitle = "Processing";

// The first two lines of every BPI progress message; the third tells how far.
constexpr const char* kBpiHead = "Please be patient...\r\nCreating BPI Output files...\r\n";
constexpr const char* kBpiLong =
    "This process take a long time, depending on the size of the dataset.";

// One step of a six-step job; false once the user has cancelled.
bool Step(const std::string& message, std::int32_t position, std::int32_t hWnd) {
    ShowProgress(message, kTitle, 0, 6, position, hWnd);
    return static_cast<bool>(g_b_Continue);
}

// Opens a grid just saved in the working folder: null, without a word, when
// it isn't there (the copy may have been refused).
raster::RasterDatasetPtr OpenSaved(const std::string& sName) {
    return OpenDatasetInWorkspace(GetRasterWorkspace(g_s_WorkingDir), sName);
}

// The keyword of Resample for a method text of the resampling page; the
// second text keeps the page's spelling, and anything else gives none.
std::string ResampleKeyword(const std::string& sMethod) {
    if (sMethod == "Cubic Convolution") return "Cubic";
    if (sMethod == "Bilinear Interoplation") return "Bilinear";
    if (sMethod == "Nearest Neighbor") return "Nearest";
    return "";
}

}  // namespace

raster::RasterPtr BPI_Build(const raster::RasterPtr& pRaster, std::string& sInner,
                            std::string& sOuter, const std::string& sName, const std::string& sTag,
                            std::int32_t hWnd) {
    return Guarded({"BPI_Build", kModule, kTopLevel}, [&]() -> raster::RasterPtr {
        const std::string standard = std::string(kBpiHead) + kBpiLong;
        if (!Step(standard, 1, hWnd)) return nullptr;
        if (!Step(standard, 2, hWnd)) return nullptr;

        raster::RasterMapAlgebraOp pMapAlgebraOp;
        pMapAlgebraOp.OutWorkspace(nuWS_PathOpenIRasterWorkspace(g_s_WorkingDir));
        // The inner radius as the cell size setting is what the stage has
        // always passed; the setting keeps the largest input cell anyway.
        pMapAlgebraOp.SetCellSize(1, sInner);
        pMapAlgebraOp.SetExtent(2, pRaster);
        if (!Step(standard, 3, hWnd)) return nullptr;

        pMapAlgebraOp.BindRaster(pRaster, "inRaster");
        raster::RasterPtr pOutRaster =
            pMapAlgebraOp.Execute("int(([inRaster] - Focalmean([inRaster], annulus, " + sInner +
                                  ", " + sOuter + ")) + .5)");
        pMapAlgebraOp.UnbindRaster("inRaster");
        if (!Step(std::string(kBpiHead) + "Almost done..", 4, hWnd)) return nullptr;

        const std::string gridName = sName.empty() ? "tmp" + sTag : sName;
        MakePerminentGrid(pOutRaster, g_s_WorkingDir, gridName);
        raster::RasterDatasetPtr saved = OpenSaved(gridName);
        if (sTag == "BroadBPI") {
            g_p_SS_BPI_RasterDataset = saved;
            g_s_SS_BPI_InputDataSet = gridName;
        } else {
            g_p_LS_BPI_RasterDataset = saved;
            g_s_LS_BPI_InputDataSet = gridName;
        }
        sInner.clear();
        sOuter.clear();
        ShowProgress(std::string(kBpiHead) + "Whew, that was a killer...", kTitle, 0, 6, 5, hWnd);
        return pOutRaster;
    });
}

void calcRasterStats(const raster::RasterPtr& pRaster, const std::string& sTag) {
    Guarded({"calcRasterStats", kModule, kTopLevel}, [&] {
        const raster::RasterStatistics& statistics = Deref(Deref(pRaster).Item(0)).Statistics();
        double& mean = sTag == "Small" ? g_d_SS_BPI_Mean : g_d_LS_BPI_Mean;
        double& deviation = sTag == "Small" ? g_d_SS_BPI_StdDev : g_d_LS_BPI_StdDev;
        mean = statistics.Mean;
        deviation = statistics.StandardDeviation;
    });
}

raster::RasterPtr BPI_Standardize(const raster::RasterPtr& pRaster, double& dMean, double& dStdDev,
                                  std::string& sName, const std::string& sTag, std::int32_t hWnd) {
    return Guarded({"BPI_Standardize", kModule, kTopLevel}, [&]() -> raster::RasterPtr {
        const std::string message = "Creating Output files";
        if (!Step(message, 1, hWnd)) return nullptr;
        raster::RasterMapAlgebraOp pMapAlgebraOp;
        pMapAlgebraOp.OutWorkspace(nuWS_PathOpenIRasterWorkspace(g_s_WorkingDir));
        if (!Step(message, 2, hWnd)) return nullptr;
        pMapAlgebraOp.BindRaster(pRaster, "inRaster");
        if (!Step(message, 3, hWnd)) return nullptr;
        // .05, not the .5 of the BPI: the z-score is cut, not rounded.
        raster::RasterPtr pOutRaster =
            pMapAlgebraOp.Execute("int(((([inRaster] - " + runtime::CStr(dMean) + ") / " +
                                  runtime::CStr(dStdDev) + ") * 100) + .05)");
        if (!Step(message, 4, hWnd)) return nullptr;

        const bool broad = sTag == "BroadBPI";
        const std::string gridName = sName.empty() ? (broad ? "tmpBroadstd" : "tmpFinestd") : sName;
        MakePerminentGrid(pOutRaster, g_s_WorkingDir, gridName);
        raster::RasterDatasetPtr saved = OpenSaved(gridName);
        if (broad) {
            g_p_SmScale_Std_RasterDataset = saved;
            g_s_Save_SmScale_Std_Grid = gridName;
        } else {
            g_p_LgScale_Std_RasterDataset = saved;
            g_s_Save_LgScale_Std_Grid = gridName;
        }
        ShowProgress(message, kTitle, 0, 6, 5, hWnd);
        return pOutRaster;
    });
}

void BuildSlope() {
    Guarded({"BuildSlope", kModule, kTopLevel}, [&] {
        raster::RasterSurfaceOp pSurfaceOp;
        const raster::RasterDatasetPtr pGeoDataset =
            OpenRasterDataset(g_s_BPI_DataPath, g_s_BPI_DataSet);
        raster::RasterPtr pSlope = pSurfaceOp.Slope(Deref(pGeoDataset).CreateDefaultRaster(), 1);
        MakePerminentGrid(pSlope, g_s_WorkingDir, "SLOPE");
        g_s_SlopeGrid = "SLOPE";
        g_p_SlopeRaster = pSlope;
    });
}

raster::RasterPtr ResampleRas(const raster::RasterPtr& pRaster, const std::string& sCellSize,
                              const std::string& sMethod, const std::string& sName) {
    return Guarded({"ResampleRas", kModule, kTopLevel}, [&] {
        const std::string message = "Resampling Input Grid";
        // The job runs to its end whatever the dialog's Cancel says.
        ShowProgress(message, kTitle, 0, 6, 1, 0);
        raster::RasterMapAlgebraOp pMapAlgebraOp;
        pMapAlgebraOp.OutWorkspace(nuWS_PathOpenIRasterWorkspace(g_s_WorkingDir));
        pMapAlgebraOp.SetCellSize(1, sCellSize);
        pMapAlgebraOp.SetExtent(2, pRaster);
        ShowProgress(message, kTitle, 0, 6, 2, 0);
        pMapAlgebraOp.BindRaster(pRaster, "inRaster");
        ShowProgress(message, kTitle, 0, 6, 3, 0);
        raster::RasterPtr pOutRaster = pMapAlgebraOp.Execute("Resample([inRaster], " + sCellSize +
                                                             ", " + ResampleKeyword(sMethod) + ")");
        ShowProgress(message, kTitle, 0, 6, 4, 0);

        const std::string gridName = sName.empty() ? "tmpres" : sName;
        MakePerminentGrid(pOutRaster, g_s_WorkingDir, gridName);
        g_p_BPI_RasterDataset = OpenSaved(gridName);
        if (!sName.empty()) g_s_BPI_DataSet = sName;
        ShowProgress(message, kTitle, 0, 6, 5, 0);
        return pOutRaster;
    });
}

}  // namespace halvane
