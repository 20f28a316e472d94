#include "apps/desktop/MainWindow.h"

#include <QAction>
#include <QCloseEvent>
#include <QCoreApplication>
#include <QDockWidget>
#include <QMenu>
#include <QMenuBar>
#include <QStatusBar>
#include <QToolButton>

#include "apps/desktop/LayerList.h"
#include "apps/desktop/MapView.h"
#include "platform/map/view/Rendering.h"
#include "platform/runtime/Convert.h"
#include "platform/runtime/Failure.h"
#include "platform/ui/Services.h"

namespace halvane::desktop {
namespace {

constexpr double kZoomStep = 2.0;

QString Text(const std::string& text) { return QString::fromStdString(text); }

// A command as an entry of a toolbar or menu: its caption, its tooltip, its
// message in the status bar, and OnClick when chosen.
void AddCommand(QWidget* owner, host::ICommand& command) {
    auto* action = new QAction(Text(command.Caption()), owner);
    action->setToolTip(Text(command.Tooltip()));
    action->setStatusTip(Text(command.Message()));
    action->setEnabled(command.Enabled());
    QObject::connect(action, &QAction::triggered, [&command] { command.OnClick(); });
    owner->addAction(action);
}

}  // namespace

MainWindow::MainWindow(QWidget* parent) : QMainWindow(parent) {
    setWindowTitle(QStringLiteral("Halvane"));
    // The window is the owner of the dialogs the system opens, so it needs
    // its handle before the application is handed out.
    app_ = std::make_shared<map::Application>(static_cast<ui::WindowHandle>(winId()));
    const map::MapPtr map = FocusMap();

    view_ = new MapView(map, this);
    setCentralWidget(view_);
    layers_ = new LayerList(map, this);
    layers_->setObjectName(QStringLiteral("layerList"));
    auto* dock = new QDockWidget(QStringLiteral("Layers"), this);
    dock->setObjectName(QStringLiteral("layersDock"));
    dock->setFeatures(QDockWidget::NoDockWidgetFeatures);
    dock->setWidget(layers_);
    addDockWidget(Qt::LeftDockWidgetArea, dock);

    QMenu* file = menuBar()->addMenu(QStringLiteral("&File"));
    file->addAction(QStringLiteral("Open Raster..."), this, &MainWindow::OpenRaster);
    file->addSeparator();
    file->addAction(QStringLiteral("Exit"), this, &QWidget::close);

    QToolBar* tools = addToolBar(QStringLiteral("Tools"));
    tools->setObjectName(QStringLiteral("tools"));
    tools->addAction(QStringLiteral("Zoom In"), this, [this] { view_->Zoom(kZoomStep); });
    tools->addAction(QStringLiteral("Zoom Out"), this, [this] { view_->Zoom(1 / kZoomStep); });
    tools->addAction(QStringLiteral("Full Extent"), view_, &MapView::ZoomToFullExtent);
    auto zoomToLayer = [this](const map::LayerPtr& layer) {
        const auto* raster = dynamic_cast<const map::RasterLayer*>(layer.get());
        if (raster && raster->Raster()) view_->ZoomTo(raster->Raster()->Extent());
    };
    tools->addAction(QStringLiteral("Zoom To Layer"), this,
                     [this, zoomToLayer] { zoomToLayer(layers_->CurrentLayer()); });
    connect(layers_, &LayerList::ZoomToLayerRequested, this, zoomToLayer);
    connect(layers_, &LayerList::VisibilityChanged, view_, &MapView::Redraw);

    position_ = new QLabel(this);
    position_->setObjectName(QStringLiteral("cursorPosition"));
    statusBar()->addPermanentWidget(position_);
    connect(view_, &MapView::CursorMoved, this, &MainWindow::ShowCursor);
    connect(view_, &MapView::CursorLeft, position_, &QLabel::clear);
    connect(view_, &MapView::DrawingFailed, this,
            [this](const QString& why) { statusBar()->showMessage(why); });

    subscription_ = map->Subscribe([this] { MapChanged(); });
    resize(1100, 720);
}

MainWindow::~MainWindow() {
    FocusMap()->Unsubscribe(subscription_);
    component_.Release();
}

map::MapPtr MainWindow::FocusMap() const { return app_->Document()->FocusMap(); }

bool MainWindow::LoadComponent() {
    const bool loaded = component_.Load();
    if (!component_.Error().empty()) statusBar()->showMessage(Text(component_.Error()));
    if (!loaded) return false;
    component_.CreateCommands(app_);
    for (const host::ComponentHost::Toolbar& toolbar : component_.Toolbars()) AddToolbar(toolbar);
    return true;
}

void MainWindow::AddToolbar(const host::ComponentHost::Toolbar& definition) {
    auto* toolbar = new QToolBar(Text(definition.definition->Caption()), this);
    toolbar->setObjectName(Text(definition.definition->Name()));
    addToolBar(toolbar);
    componentToolbars_.push_back(toolbar);
    for (const host::ComponentHost::Item& item : component_.ToolbarItems(*definition.definition)) {
        if (item.group) toolbar->addSeparator();
        if (item.command) {
            AddCommand(toolbar, *item.command);
            continue;
        }
        if (!item.menu) continue;
        auto* button = new QToolButton(toolbar);
        button->setText(Text(item.menu->Caption()));
        button->setObjectName(Text(item.menu->Name()));
        button->setPopupMode(QToolButton::InstantPopup);
        auto* menu = new QMenu(button);
        for (const host::ComponentHost::Item& entry : component_.MenuItems(*item.menu)) {
            if (!entry.command) continue;
            if (entry.group) menu->addSeparator();
            AddCommand(menu, *entry.command);
        }
        button->setMenu(menu);
        toolbar->addWidget(button);
    }
}

QToolBar* MainWindow::ComponentToolbar(const QString& caption) const {
    for (QToolBar* toolbar : componentToolbars_) {
        if (toolbar->windowTitle() == caption) return toolbar;
    }
    return nullptr;
}

void MainWindow::OpenRaster() {
    ui::GxDialog dialog;
    dialog.Title = "Open Raster";
    dialog.ObjectFilter = ui::GxObjectFilter::RasterDatasets;
    std::vector<std::string> chosen;
    if (!dialog.DoModalOpen(app_->hWnd(), chosen)) return;
    for (const std::string& path : chosen) AddRaster(path);
}

void MainWindow::AddRaster(const std::string& path) {
    try {
        auto layer = std::make_shared<map::RasterLayer>();
        layer->CreateFromDataset(raster::RasterDataset::Open(path));
        // A grid of classes that names them shows its classes, not a stretch.
        map::ShowStoredClasses(*layer);
        FocusMap()->AddLayer(layer);
    } catch (const runtime::Failure& failure) {
        ui::Services().MsgBox(failure.description, ui::vbCritical, "Open Raster");
    }
}

void MainWindow::MapChanged() {
    layers_->Rebuild();
    // The first layer decides where the map is; later ones leave the view be.
    if (!view_->Extent()) {
        view_->ZoomToFullExtent();
    } else {
        view_->Redraw();
    }
}

void MainWindow::ShowCursor(double x, double y) {
    QString text = QStringLiteral("X: %1  Y: %2").arg(x, 0, 'f', 2).arg(y, 0, 'f', 2);
    const map::MapPtr map = FocusMap();
    for (std::int32_t i = 0; i < map->LayerCount(); ++i) {
        const auto* layer = dynamic_cast<const map::RasterLayer*>(map->Layer(i).get());
        if (!layer || !layer->Visible()) continue;
        try {
            if (const auto value = map::view::CellValueAt(*layer, x, y)) {
                text += QStringLiteral("  Value: ") + Text(runtime::CStr(*value));
            }
        } catch (const runtime::Failure&) {
            // The map view reports what cannot be read.
        }
        break;
    }
    position_->setText(text);
}

void MainWindow::closeEvent(QCloseEvent* event) {
    QMainWindow::closeEvent(event);
    if (event->isAccepted()) QCoreApplication::quit();
}

}  // namespace halvane::desktop
