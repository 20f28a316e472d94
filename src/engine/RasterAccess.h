#pragma once
// modUtil's way to raster data: browse dialogs, workspaces, opening, testing,
// saving and deleting grids. Paths are split at "/".

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "platform/raster/MapAlgebra.h"

namespace halvane {

// Full path of the chosen folder or raster; empty after Cancel.
std::string getWorkspaceInput(const std::string& sTitle, std::int32_t hWnd);
std::string getRasterInput(const std::string& sTitle, std::int32_t hWnd);

// Null, without a message, when the folder is no raster workspace.
raster::RasterWorkspacePtr GetRasterWorkspace(const std::string& sPath);
// Opens the folder without testing it.
raster::RasterWorkspacePtr nuWS_PathOpenIRasterWorkspace(const std::string& sPath);
// Null when the grid isn't there; never reports.
raster::RasterDatasetPtr OpenDatasetInWorkspace(const raster::RasterWorkspacePtr& pWorkspace,
                                                const std::string& sName);
// The folder, made a raster workspace first (by a "halvane_var" inside) if it
// is none yet. No handler: failures go to the caller.
raster::RasterWorkspacePtr OpenOrMakeRasterWorkspace(const std::string& sPath);
// The workspace sPath/sName, made if missing.
raster::RasterWorkspacePtr createTempRasterWS(const std::string& sPath, const std::string& sName);
raster::RasterDatasetPtr OpenRasterDataset(const std::string& sPath, const std::string& sName);

std::string PathOfRaster(const std::string& sFullPath);
std::string NameOfRaster(const std::string& sFullPath);
// False, silently, on any failure.
bool RasterExists(const std::string& sFullPath);
// Shows "cannot delete raster" when the grid may not be deleted.
bool DeleteRaster(const std::string& sPath, const std::string& sName);
// Saves a computed raster as sPath/sName and returns that path; empty if the
// raster can't be copied. No handler: failures go to the caller.
std::string MakePerminentGrid(const raster::RasterPtr& pRaster, const std::string& sPath,
                              const std::string& sName);

// MakePerminentGrid of each raster in turn, in one pass over the cells they
// share; where one cannot be stored, those before it stand and the failure
// goes to the caller.
void MakePerminentGrids(const std::vector<std::pair<raster::RasterPtr, std::string>>& rasters,
                        const std::string& sPath);

// While one stands, MakePerminentGrid checks the name at once but saves the
// cells later: in the pass of the next MakePerminentGrids into the same
// folder, first, as though saved just before those grids, or when
// StoreDeferredGrids is called.
class DeferredGridSaves {
public:
    DeferredGridSaves();
    ~DeferredGridSaves();
    DeferredGridSaves(const DeferredGridSaves&) = delete;
    DeferredGridSaves& operator=(const DeferredGridSaves&) = delete;
};
// Saves the deferred rasters that no pass has taken yet.
void StoreDeferredGrids();

}  // namespace halvane
