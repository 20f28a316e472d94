#include "engine/Session.h"

namespace halvane {

runtime::VbBool g_b_StandAloneRun;
pages::PageSlot* g_frm_PreviousPage = nullptr;
std::string g_s_WorkingDir;
raster::RasterDatasetPtr g_p_InputRasterDataset;
std::string g_s_InputDataSet;
std::string g_s_InputDataPath;
std::string g_s_InputDataCellSize;
std::string g_s_ResampledDataSet;
raster::RasterDatasetPtr g_p_CellSizeRasterDataset;
raster::RasterDatasetPtr g_p_BPI_RasterDataset;
std::string g_s_BPI_DataSet;
std::string g_s_BPI_DataPath;
std::string g_s_BPI_CellSize;
std::string g_i_SmScaleBPI_inner_radius;
std::string g_i_SmScaleBPI_outer_radius;
std::string g_i_LgScaleBPI_inner_radius;
std::string g_i_LgScaleBPI_outer_radius;
std::string g_s_SS_BPI_InputDataSet;
std::string g_s_SS_BPI_InputDataPath;
raster::RasterDatasetPtr g_p_SS_BPI_RasterDataset;
double g_d_SS_BPI_Mean = 0.0;
double g_d_SS_BPI_StdDev = 0.0;
std::string g_s_LS_BPI_InputDataSet;
std::string g_s_LS_BPI_InputDataPath;
raster::RasterDatasetPtr g_p_LS_BPI_RasterDataset;
double g_d_LS_BPI_Mean = 0.0;
double g_d_LS_BPI_StdDev = 0.0;
std::string g_s_Save_SmScale_Std_Grid;
std::string g_s_SmScale_Std_GridPath;
raster::RasterDatasetPtr g_p_SmScale_Std_RasterDataset;
std::string g_s_Save_LgScale_Std_Grid;
std::string g_s_LgScale_Std_GridPath;
raster::RasterDatasetPtr g_p_LgScale_Std_RasterDataset;
std::string g_s_ClassDictionary_Path;
std::string g_s_SlopeGrid;
raster::RasterPtr g_p_SlopeRaster;
std::string g_s_OutputDataSet;
raster::RasterDatasetPtr g_p_OutputRasterDataset;
std::shared_ptr<ZoneDictionary> g_dict_Zones;
std::string g_s_Rugosity_InputDataSet;
std::string g_s_Rugosity_InputDataPath;
raster::RasterDatasetPtr g_p_Rugosity_RasterDataset;
std::string g_s_SaveRugosity_OutputData;
raster::RasterDatasetPtr g_p_Rugosity_OutputRasterDataset;

void ResetSession() {
    g_frm_PreviousPage = nullptr;
    g_s_WorkingDir.clear();
    g_p_InputRasterDataset = nullptr;
    g_s_InputDataSet.clear();
    g_s_InputDataPath.clear();
    g_s_InputDataCellSize.clear();
    g_s_ResampledDataSet.clear();
    g_p_CellSizeRasterDataset = nullptr;
    g_p_BPI_RasterDataset = nullptr;
    g_s_BPI_DataSet.clear();
    g_s_BPI_DataPath.clear();
    g_s_BPI_CellSize.clear();
    g_i_SmScaleBPI_inner_radius.clear();
    g_i_SmScaleBPI_outer_radius.clear();
    g_i_LgScaleBPI_inner_radius.clear();
    g_i_LgScaleBPI_outer_radius.clear();
    g_s_SS_BPI_InputDataSet.clear();
    g_s_SS_BPI_InputDataPath.clear();
    g_p_SS_BPI_RasterDataset = nullptr;
    g_d_SS_BPI_Mean = 0.0;
    g_d_SS_BPI_StdDev = 0.0;
    g_s_LS_BPI_InputDataSet.clear();
    g_s_LS_BPI_InputDataPath.clear();
    g_p_LS_BPI_RasterDataset = nullptr;
    g_d_LS_BPI_Mean = 0.0;
    g_d_LS_BPI_StdDev = 0.0;
    g_s_Save_SmScale_Std_Grid.clear();
    g_s_SmScale_Std_GridPath.clear();
    g_p_SmScale_Std_RasterDataset = nullptr;
    g_s_Save_LgScale_Std_Grid.clear();
    g_s_LgScale_Std_GridPath.clear();
    g_p_LgScale_Std_RasterDataset = nullptr;
    g_s_ClassDictionary_Path.clear();
    g_s_SlopeGrid.clear();
    g_p_SlopeRaster = nullptr;
    g_s_OutputDataSet.clear();
    g_p_OutputRasterDataset = nullptr;
    g_dict_Zones = nullptr;
    g_s_Rugosity_InputDataSet.clear();
    g_s_Rugosity_InputDataPath.clear();
    g_p_Rugosity_RasterDataset = nullptr;
    g_s_SaveRugosity_OutputData.clear();
    g_p_Rugosity_OutputRasterDataset = nullptr;
}

}  // namespace halvane
