#pragma once
// The desktop host's main window: the application, its document and focus
// map; the layer list and the map view; a File menu of its own; and the
// toolbars of the registered component, whose commands get this window's
// application at OnCreate.

#include <QLabel>
#include <QMainWindow>
#include <QToolBar>
#include <memory>

#include "host/component/ComponentHost.h"
#include "platform/map/Application.h"

namespace halvane::desktop {

class LayerList;
class MapView;

class MainWindow : public QMainWindow {
    Q_OBJECT

public:
    explicit MainWindow(QWidget* parent = nullptr);
    // Releases the component's objects first: their pages go while the
    // application still runs.
    ~MainWindow() override;

    const map::ApplicationPtr& App() const { return app_; }
    map::MapPtr FocusMap() const;
    MapView& View() const { return *view_; }
    LayerList& Layers() const { return *layers_; }

    // Loads the registered component, calls OnCreate on its commands and
    // shows its toolbars. False when nothing could be loaded; the reason is
    // then in the status bar.
    bool LoadComponent();
    host::ComponentHost& Component() { return component_; }
    // The component's toolbar with this caption, or null.
    QToolBar* ComponentToolbar(const QString& caption) const;

    // Asks for rasters and adds each as a layer on top.
    void OpenRaster();
    // Adds any raster GDAL reads as a layer on top; a stop message when it
    // cannot be opened.
    void AddRaster(const std::string& path);

protected:
    // Leaving the map leaves the program, whatever page or help window is open.
    void closeEvent(QCloseEvent* event) override;

private:
    void AddToolbar(const host::ComponentHost::Toolbar& toolbar);
    void MapChanged();
    void ShowCursor(double x, double y);

    map::ApplicationPtr app_;
    host::ComponentHost component_;
    MapView* view_ = nullptr;
    LayerList* layers_ = nullptr;
    QLabel* position_ = nullptr;
    int subscription_ = 0;
    std::vector<QToolBar*> componentToolbars_;
};

}  // namespace halvane::desktop
