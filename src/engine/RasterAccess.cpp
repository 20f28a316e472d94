#include "engine/RasterAccess.h"

#include <algorithm>
#include <utility>

#include "platform/reporting/ErrorHandling.h"
#include "platform/runtime/Text.h"

namespace halvane {
namespace {

using runtime::Deref;

constexpr const char* kModule = "modUtil";

std::string BrowseFirst(const ui::GxDialog& dialog, std::int32_t hWnd) {
    std::vector<std::string> selection;
    if (dialog.DoModalOpen(hWnd, selection) && !selection.empty()) return selection.front();
    return "";
}

void ShowSplitFailure(const runtime::Failure& failure) {
    ui::Services().MsgBox("Workspace Split:" + failure.description, ui::vbOKOnly);
}

}  // namespace

std::string getWorkspaceInput(const std::string& sTitle, std::int32_t hWnd) {
    return Guarded({"getWorkspaceInput", kModule, kTopLevel}, [&] {
        ui::GxDialog dialog;
        dialog.Title = sTitle;
        dialog.AllowMultiSelect = false;
        dialog.ObjectFilter = ui::GxObjectFilter::Folders;
        return BrowseFirst(dialog, hWnd);
    });
}

std::string getRasterInput(const std::string& sTitle, std::int32_t hWnd) {
    return Guarded({"getRasterInput", kModule, kTopLevel}, [&] {
        ui::GxDialog dialog;
        dialog.ObjectFilter = ui::GxObjectFilter::RasterDatasets;
        dialog.Title = sTitle;
        return BrowseFirst(dialog, hWnd);
    });
}

raster::RasterWorkspacePtr GetRasterWorkspace(const std::string& sPath) {
    return Guarded({"GetRasterWorkspace", kModule, kTopLevel}, [&] {
        raster::RasterWorkspaceFactory factory;
        return factory.IsWorkspace(sPath) ? factory.OpenFromFile(sPath, 0)
                                          : raster::RasterWorkspacePtr();
    });
}

raster::RasterWorkspacePtr nuWS_PathOpenIRasterWorkspace(const std::string& sPath) {
    return Guarded({"nuWS_PathOpenIRasterWorkspace", kModule, kTopLevel},
                   [&] { return raster::RasterWorkspaceFactory().OpenFromFile(sPath, 0); });
}

raster::RasterDatasetPtr OpenDatasetInWorkspace(const raster::RasterWorkspacePtr& pWorkspace,
                                                const std::string& sName) {
    return WithHandler(
        [&] {
            raster::RasterDatasetPtr dataset = Deref(pWorkspace).OpenRasterDataset(sName);
            return dataset ? Deref(pWorkspace).OpenRasterDataset(sName) : dataset;
        },
        [](const runtime::Failure&) {});
}

raster::RasterWorkspacePtr OpenOrMakeRasterWorkspace(const std::string& sPath) {
    raster::RasterWorkspaceFactory factory;
    if (factory.IsWorkspace(sPath)) return factory.OpenFromFile(sPath, 0);
    createTempRasterWS(sPath, "halvane_var");
    return factory.OpenFromFile(sPath, 0);
}

raster::RasterWorkspacePtr createTempRasterWS(const std::string& sPath, const std::string& sName) {
    return Guarded({"createTempRasterWS", kModule, kTopLevel}, [&] {
        raster::RasterWorkspaceFactory factory;
        const std::string full = sPath + runtime::kPathSeparator + sName;
        if (!factory.IsWorkspace(full)) factory.Create(sPath, sName, nullptr, 0);
        return factory.OpenFromFile(full, 0);
    });
}

raster::RasterDatasetPtr OpenRasterDataset(const std::string& sPath, const std::string& sName) {
    return Guarded({"OpenRasterDataset", kModule, kTopLevel}, [&] {
        // The folder is opened as nuWS_PathOpenIRasterWorkspace opens it, not
        // through it: that procedure reports its own failures, so a missing
        // folder would be shown twice, the second time as an empty reference.
        const raster::RasterWorkspacePtr workspace =
            raster::RasterWorkspaceFactory().OpenFromFile(sPath, 0);
        return workspace->OpenRasterDataset(sName);
    });
}

std::string PathOfRaster(const std::string& sFullPath) {
    return WithHandler(
        [&] {
            const runtime::PathSplit split = runtime::SplitAtLastSeparator(sFullPath);
            return split.found ? split.before : std::string();
        },
        ShowSplitFailure);
}

std::string NameOfRaster(const std::string& sFullPath) {
    return WithHandler(
        [&] {
            const runtime::PathSplit split = runtime::SplitAtLastSeparator(sFullPath);
            if (!split.found || split.after.empty()) return std::string();
            return split.after.substr(0, split.after.find('.'));
        },
        ShowSplitFailure);
}

bool RasterExists(const std::string& sFullPath) {
    return WithHandler(
        [&] {
            const std::string path = PathOfRaster(sFullPath);
            raster::RasterWorkspaceFactory factory;
            if (!factory.IsWorkspace(path)) return false;
            raster::RasterWorkspacePtr workspace = factory.OpenFromFile(path, 0);
            return workspace->OpenRasterDataset(NameOfRaster(sFullPath)) != nullptr;
        },
        [](const runtime::Failure&) {});
}

bool DeleteRaster(const std::string& sPath, const std::string& sName) {
    return Guarded({"DeleteRaster", kModule, kTopLevel}, [&] {
        const raster::RasterDatasetPtr dataset = OpenRasterDataset(sPath, sName);
        if (Deref(dataset).CanDelete()) {
            dataset->Delete();
            return true;
        }
        ui::Services().MsgBox("cannot delete raster", ui::vbOKOnly);
        return false;
    });
}

namespace {

struct DeferredGrid {
    raster::RasterPtr raster;
    std::string path;
    std::string name;
};

std::vector<DeferredGrid>& Deferred() {
    static std::vector<DeferredGrid> grids;
    return grids;
}

bool g_b_DeferringSaves = false;

}  // namespace

std::string MakePerminentGrid(const raster::RasterPtr& pRaster, const std::string& sPath,
                              const std::string& sName) {
    if (!g_b_DeferringSaves) StoreDeferredGrids();
    raster::RasterWorkspacePtr workspace = OpenOrMakeRasterWorkspace(sPath);
    const raster::RasterDatasetPtr dataset = Deref(Deref(pRaster).Item(0)).RasterDataset();
    if (!Deref(dataset).CanCopy()) return "";
    if (g_b_DeferringSaves) {
        dataset->CheckCopy(sName, Deref(workspace));
        Deferred().push_back({pRaster, sPath, sName});
    } else {
        dataset->Copy(sName, workspace);
    }
    return sPath + runtime::kPathSeparator + sName;
}

void MakePerminentGrids(const std::vector<std::pair<raster::RasterPtr, std::string>>& rasters,
                        const std::string& sPath) {
    if (rasters.empty()) return;
    if (std::ranges::any_of(Deferred(), [&](const auto& grid) { return grid.path != sPath; })) {
        StoreDeferredGrids();
    }
    std::vector<std::pair<raster::RasterPtr, std::string>> all;
    for (DeferredGrid& grid : std::exchange(Deferred(), {})) {
        all.emplace_back(std::move(grid.raster), std::move(grid.name));
    }
    all.insert(all.end(), rasters.begin(), rasters.end());
    raster::RasterWorkspacePtr workspace = OpenOrMakeRasterWorkspace(sPath);
    std::vector<std::pair<raster::RasterDatasetPtr, std::string>> grids;
    for (const auto& [raster, name] : all) {
        const raster::RasterDatasetPtr dataset = Deref(Deref(raster).Item(0)).RasterDataset();
        if (Deref(dataset).CanCopy()) grids.emplace_back(dataset, name);
    }
    raster::RasterDataset::CopyAll(grids, workspace);
}

DeferredGridSaves::DeferredGridSaves() { g_b_DeferringSaves = true; }

DeferredGridSaves::~DeferredGridSaves() { g_b_DeferringSaves = false; }

void StoreDeferredGrids() {
    for (DeferredGrid& grid : std::exchange(Deferred(), {})) {
        MakePerminentGrids({{grid.raster, grid.name}}, grid.path);
    }
}

}  // namespace halvane
