#include "pages/frmZoneStep1.h"

#include "engine/Session.h"

namespace halvane::pages {

Slot<frmZoneStep1Page> frmZoneStep1("frmZoneStep1");

namespace {

const BpiScale kBroad = {
    .module = "frmZoneStep1",
    .heading = "Create Broad Scale Bathymetric Position Index (BPI) grid",
    .subHeading = "Radii in cells; the scale factor is the outer radius in map units",
    .frame = "Broad scale BPI grid",
    .innerBox = "g_i_SmScaleBPI_inner_radius",
    .outerBox = "g_i_SmScaleBPI_outer_radius",
    .scaleLabel = "lbl_SmScaleBPI_ScaleFactor",
    .saveOption = "optSaveSmallScaleBPI_OutputData",
    .nameBox = "g_s_SaveSmallScaleBPI_OutputData",
    .runButton = "cmdSet_smallScale_BPI",
    .namedCaption = "Yes. Please specify output data set name.",
    .outerOnLoad = "5",
    .innerRadius = &g_i_SmScaleBPI_inner_radius,
    .outerRadius = &g_i_SmScaleBPI_outer_radius,
    .grid = &g_s_SS_BPI_InputDataSet,
    .gridDataset = &g_p_SS_BPI_RasterDataset,
    .tag = "BroadBPI",
    .temporary = "tmpBroadBPI",
    .requiredData = &frmZoneStep1_reqdata,
    .next = &frmZoneStep2,
    .noNameTitle = "Please Specify An output data set name..",
    .noNameText = "Please specify an output data set name.",
    .outerNotGreaterText = "The Outer Radius cannot be smaller than the Inner radius",
    .notBuiltTitle = "Please build a Broad Scale BPI..",
    .notBuiltText = "Please build a Broad Scale BPI grid before continuing.",
    .fine = false,
};

}  // namespace

frmZoneStep1Page::frmZoneStep1Page(PageSlot& slot) : BpiPage(slot, kBroad) {}

}  // namespace halvane::pages
