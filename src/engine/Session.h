#pragma once
// The analysis session of modUtil: one global of each, filled page by page.
// An empty string means the step is not done yet; radii and cell sizes stay
// the text the user or a conversion wrote.

#include <map>
#include <memory>
#include <string>

#include "platform/raster/Fwd.h"
#include "platform/reporting/modProgDialog.h"  // g_b_Continue belongs to the session too
#include "platform/runtime/Convert.h"

namespace halvane {

namespace pages {
// A page's permanent slot: it outlives the page it makes, so a reference to
// it stays valid across Unload and Show makes the page again.
class PageSlot;
}  // namespace pages

// Record position (1..n) to zone text.
using ZoneDictionary = std::map<int, std::string>;

extern runtime::VbBool g_b_StandAloneRun;

// From here on, in declaration order, everything ResetSession empties.
extern pages::PageSlot* g_frm_PreviousPage;

extern std::string g_s_WorkingDir;
extern raster::RasterDatasetPtr g_p_InputRasterDataset;
extern std::string g_s_InputDataSet;
extern std::string g_s_InputDataPath;
extern std::string g_s_InputDataCellSize;
extern std::string g_s_ResampledDataSet;
extern raster::RasterDatasetPtr g_p_CellSizeRasterDataset;

extern raster::RasterDatasetPtr g_p_BPI_RasterDataset;
extern std::string g_s_BPI_DataSet;
extern std::string g_s_BPI_DataPath;
extern std::string g_s_BPI_CellSize;

extern std::string g_i_SmScaleBPI_inner_radius;
extern std::string g_i_SmScaleBPI_outer_radius;
extern std::string g_i_LgScaleBPI_inner_radius;
extern std::string g_i_LgScaleBPI_outer_radius;

extern std::string g_s_SS_BPI_InputDataSet;
extern std::string g_s_SS_BPI_InputDataPath;
extern raster::RasterDatasetPtr g_p_SS_BPI_RasterDataset;
extern double g_d_SS_BPI_Mean;
extern double g_d_SS_BPI_StdDev;
extern std::string g_s_LS_BPI_InputDataSet;
extern std::string g_s_LS_BPI_InputDataPath;
extern raster::RasterDatasetPtr g_p_LS_BPI_RasterDataset;
extern double g_d_LS_BPI_Mean;
extern double g_d_LS_BPI_StdDev;

extern std::string g_s_Save_SmScale_Std_Grid;
extern std::string g_s_SmScale_Std_GridPath;
extern raster::RasterDatasetPtr g_p_SmScale_Std_RasterDataset;
extern std::string g_s_Save_LgScale_Std_Grid;
extern std::string g_s_LgScale_Std_GridPath;
extern raster::RasterDatasetPtr g_p_LgScale_Std_RasterDataset;

extern std::string g_s_ClassDictionary_Path;
extern std::string g_s_SlopeGrid;
extern raster::RasterPtr g_p_SlopeRaster;
extern std::string g_s_OutputDataSet;
extern raster::RasterDatasetPtr g_p_OutputRasterDataset;
extern std::shared_ptr<ZoneDictionary> g_dict_Zones;

extern std::string g_s_Rugosity_InputDataSet;
extern std::string g_s_Rugosity_InputDataPath;
extern raster::RasterDatasetPtr g_p_Rugosity_RasterDataset;
extern std::string g_s_SaveRugosity_OutputData;
extern raster::RasterDatasetPtr g_p_Rugosity_OutputRasterDataset;

// Empties every variable above from g_frm_PreviousPage on, in declaration
// order; g_b_StandAloneRun and g_b_Continue keep their values.
void ResetSession();

}  // namespace halvane
