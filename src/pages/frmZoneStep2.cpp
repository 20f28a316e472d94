#include "pages/frmZoneStep2.h"

#include "engine/Session.h"

namespace halvane::pages {

Slot<frmZoneStep2Page> frmZoneStep2("frmZoneStep2");

namespace {

const BpiScale kFine = {
    .module = "frmZoneStep2",
    .heading = "Create Fine Scale Bathymetric Position Index (BPI) grid",
    .subHeading = "Radii in cells; the scale factor is the outer radius in map units",
    .frame = "Fine scale BPI grid",
    .innerBox = "g_i_LgScaleBPI_inner_radius",
    .outerBox = "g_i_LgScaleBPI_outer_radius",
    .scaleLabel = "lbl_lgScaleBPI_ScaleFactor",
    .saveOption = "optSaveLargeScaleBPI_OutputData",
    .nameBox = "g_s_SaveLargeScaleBPI_OutputData",
    .runButton = "cmdSet_largeScale_BPI",
    .namedCaption = "Yes. Please specify output data set.",
    .outerOnLoad = "3",
    .innerRadius = &g_i_LgScaleBPI_inner_radius,
    .outerRadius = &g_i_LgScaleBPI_outer_radius,
    .grid = &g_s_LS_BPI_InputDataSet,
    .gridDataset = &g_p_LS_BPI_RasterDataset,
    .tag = "FineBPI",
    .temporary = "tmpFineBPI",
    .requiredData = &frmZoneStep2_reqdata,
    .next = &frmZoneStep3,
    .noNameTitle = "Please Specify An Output Dataset..",
    .noNameText = "Please specify an Output Dataset before submitting.",
    .outerNotGreaterText = "The Outer Radius cannot be smaller than the inner cell size",
    .notBuiltTitle = "Please build a Large Scale BPI..",
    .notBuiltText = "Please build a Large Scale BPI grid before continuing.",
    .fine = true,
};

}  // namespace

frmZoneStep2Page::frmZoneStep2Page(PageSlot& slot) : BpiPage(slot, kFine) {}

}  // namespace halvane::pages
