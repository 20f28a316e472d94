#include "pages/GridBrowse.h"

#include <QLineEdit>

#include "engine/RasterAccess.h"
#include "engine/Session.h"
#include "pages/Page.h"
#include "platform/map/Layers.h"
#include "platform/raster/Storage.h"
#include "platform/runtime/Failure.h"

namespace halvane::pages {
namespace {

void CreateLayerFrom(const std::string& path) {
    map::RasterLayer layer;
    layer.CreateFromFilePath(path);
}

}  // namespace

void StoreInputGrid(const std::string& name, const std::string& folder) {
    g_s_InputDataSet = name;
    g_s_InputDataPath = folder;
}

std::size_t LastSeparator(const std::string& path) { return path.rfind('/'); }

raster::RasterDatasetPtr OpenInFolder(const std::string& folder, const std::string& name) {
    return OpenDatasetInWorkspace(GetRasterWorkspace(folder), name);
}

void BrowseWorkingDir(Page& page, QLineEdit& box) {
    const std::string folder = getWorkspaceInput("Select the working directory:", page.hWnd());
    box.setText(QString::fromStdString(folder));
    g_s_WorkingDir = folder;
}

void TestRasterOpens(const std::string& path) {
    ui::Services().SetMousePointer(ui::vbHourglass);
    CreateLayerFrom(path);
    ui::Services().SetMousePointer(ui::vbDefault);
}

void BrowseProjectedGrid(Page& page, const std::string& title, QLineEdit& box,
                         const StoreGrid& store) {
    const std::string path = getRasterInput(title, page.hWnd());
    const std::size_t separator = LastSeparator(path);
    if (separator == std::string::npos) return;

    ui::Services().SetMousePointer(ui::vbHourglass);
    const std::string folder = path.substr(0, separator);
    const std::string name = path.substr(separator + 1);
    const raster::RasterDatasetPtr dataset =
        OpenDatasetInWorkspace(GetRasterWorkspace(folder), name);
    // A grid that did not open fails here, as a missing dataset does.
    if (!runtime::Deref(dataset).CreateDefaultRaster()->IsProjected()) {
        ui::Services().MsgBox(
            "Error: This Raster Dataset is not projected. Please project the layer and try again.",
            ui::vbOKOnly, "Error: Projection Undefined");
        ui::Services().SetMousePointer(ui::vbDefault);
        return;
    }
    box.setText(QString::fromStdString(path));
    store(name, folder);
    CreateLayerFrom(path);
    ui::Services().SetMousePointer(ui::vbDefault);
}

}  // namespace halvane::pages
