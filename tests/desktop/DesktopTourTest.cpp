// A tour of the desktop host as a user takes it: the component's toolbar and
// menu, a click on the wizard and on a stand-alone command, a bathymetry grid
// opened from the File menu, a zone grid added with its labelled classes, and
// a picture of it all with the menu open (screenshots/desktop-tour.png).

#include <gtest/gtest.h>

#include <QDir>
#include <QMenu>
#include <QMouseEvent>
#include <QPainter>
#include <QStatusBar>
#include <QToolButton>
#include <QTreeWidget>
#include <cstdlib>
#include <set>

#include "apps/desktop/LayerList.h"
#include "apps/desktop/MainWindow.h"
#include "apps/desktop/MapView.h"
#include "apps/desktop/Registration.h"
#include "engine/ResultLayers.h"
#include "engine/Session.h"
#include "host/component/Registry.h"
#include "support/GridFiles.h"
#include "support/PageDesktop.h"

namespace halvane {
namespace {

using desktop::MainWindow;

class DesktopTourTest : public testing::PageDesktop {
protected:
    DesktopTourTest() {
        // A machine of its own: nothing registered yet.
        setenv("HALVANE_REGISTRY", (dir_ / "registry").c_str(), 1);
    }
    ~DesktopTourTest() override { unsetenv("HALVANE_REGISTRY"); }

    // The window with the component registered and loaded, as on a first run.
    std::unique_ptr<MainWindow> StartDesktop() {
        std::string error;
        EXPECT_TRUE(desktop::EnsureComponentRegistered(HALVANE_COMPONENT_LIBRARY, error)) << error;
        auto window = std::make_unique<MainWindow>();
        EXPECT_TRUE(window->LoadComponent());
        window->show();
        QCoreApplication::processEvents();
        return window;
    }

    static QMenu* HalvaneMenu(const MainWindow& window) {
        QToolBar* toolbar = window.ComponentToolbar(QStringLiteral("Halvane Toolbar"));
        if (!toolbar) return nullptr;
        auto* button = toolbar->findChild<QToolButton*>(QStringLiteral("Halvane Menu"));
        return button ? button->menu() : nullptr;
    }

    static QAction* Entry(QMenu& menu, const char* caption) {
        for (QAction* action : menu.actions()) {
            if (action->text() == QLatin1String(caption)) return action;
        }
        ADD_FAILURE() << "no menu entry " << caption;
        return nullptr;
    }

    // The texts under a layer's entry in the layer list.
    static std::vector<std::string> LegendLines(const QTreeWidget& list, int layer) {
        std::vector<std::string> lines;
        const QTreeWidgetItem* entry = list.topLevelItem(layer);
        for (int i = 0; entry && i < entry->childCount(); ++i) {
            lines.push_back(entry->child(i)->text(0).toStdString());
        }
        return lines;
    }

    testing::TempDir dir_;
};

TEST_F(DesktopTourTest, ToolbarMenuCommandsAndTheLabelledZoneLayer) {
    auto window = StartDesktop();
    ASSERT_FALSE(host::ReadRegistry().empty());

    // "Halvane Toolbar" holds one button, "Halvane Menu", whose entries are
    // the nine captions with a separator before each group; the tenth item has
    // no ID and does not show.
    QToolBar* toolbar = window->ComponentToolbar(QStringLiteral("Halvane Toolbar"));
    ASSERT_NE(toolbar, nullptr);
    EXPECT_EQ(toolbar->actions().size(), 1);
    QMenu* menu = HalvaneMenu(*window);
    ASSERT_NE(menu, nullptr);
    std::vector<std::string> entries;
    for (QAction* action : menu->actions()) {
        entries.push_back(action->isSeparator() ? "---" : action->text().toStdString());
    }
    EXPECT_EQ(entries, (std::vector<std::string>{
                           "Halvane Classification Wizard", "---", "Resample",
                           "Build Broad Scale BPI", "Build Fine Scale BPI", "Standardize BPI Grids",
                           "Classification Dictionary Editor", "Terrain Classification Builder",
                           "Rugosity Builder", "---", "Help"}));

    // The wizard shows its welcome page with this window's application.
    Entry(*menu, "Halvane Classification Wizard")->trigger();
    EXPECT_EQ(ShownPages(), std::vector<std::string>{"frmIntro"});
    EXPECT_EQ(pages::frmIntro->m_pApp, window->App());
    EXPECT_FALSE(g_b_StandAloneRun);
    // A stand-alone stage first asks for its data.
    Entry(*menu, "Build Broad Scale BPI")->trigger();
    EXPECT_EQ(ShownPages(), (std::vector<std::string>{"frmIntro", "frmZoneStep1_reqdata"}));
    EXPECT_EQ(pages::frmZoneStep1->m_pApp, window->App());
    EXPECT_TRUE(g_b_StandAloneRun);
    for (pages::PageSlot* page : pages::AllPageSlots()) {
        if (page->Loaded()) page->Get().hide();
    }

    // Bathymetry from File > Open Raster: a stretched grid.
    const raster::Grid bathymetry{500000, 4650000, 10, 10, 160, 100};
    testing::WriteGrid(dir_ / "bathymetry.tif", bathymetry, testing::Surface(bathymetry, false));
    ui.Select({dir_ / "bathymetry.tif"});
    window->OpenRaster();
    auto& layers = window->Layers();
    ASSERT_EQ(layers.topLevelItemCount(), 1);
    const std::vector<std::string> ramp = LegendLines(layers, 0);
    ASSERT_EQ(ramp.size(), 3u);
    EXPECT_EQ(ramp[0], "Value");
    EXPECT_EQ(ramp[1].rfind("High : ", 0), 0u);

    // The zone grid, over part of the bathymetry: classes 1 to 4 in blocks of
    // 20 x 20 cells, and a class 7 the dictionary has no record for.
    const raster::Grid zones{500200, 4649800, 10, 10, 100, 40};
    std::vector<double> cells(zones.Cells());
    for (std::int64_t i = 0; i < zones.Cells(); ++i) {
        const std::int64_t block = (i % zones.cols) / 20 + 5 * ((i / zones.cols) / 20);
        cells[i] = block < 4 ? 1 + block : block == 9 ? testing::kNoData : 7;
    }
    testing::WriteGrid(dir_ / "zones.tif", zones, cells, true);
    g_dict_Zones = std::make_shared<ZoneDictionary>(ZoneDictionary{
        {1, "Flat Plains"}, {2, "Depressions"}, {3, "Crests"}, {4, "Steep Slopes"}});
    map::MxDocumentPtr doc;
    map::MapPtr map;
    const map::RasterLayerPtr layer =
        AddDatasetToMap(window->App(), doc, map, raster::RasterDataset::Open(dir_ / "zones.tif"),
                        ChangeRenderToUVRenderer);
    ASSERT_EQ(map, window->FocusMap());
    ASSERT_EQ(layers.topLevelItemCount(), 2);
    EXPECT_EQ(layers.topLevelItem(0)->text(0), QStringLiteral("zones"));
    EXPECT_EQ(LegendLines(layers, 0),
              (std::vector<std::string>{"All Data Values", "Flat Plains", "Depressions", "Crests",
                                        "Steep Slopes", ""}));

    // Zoomed to the zones, the centre of each block is drawn in its class's colour.
    window->View().ZoomTo(layer->Raster()->Extent());
    const QImage drawn = window->View().grab().toImage();
    const auto& renderer = dynamic_cast<const map::RasterUniqueValueRenderer&>(*layer->Renderer());
    for (int k = 0; k < renderer.ClassCount(0); ++k) {
        const int value = renderer.Value(0, k, 0);
        const int block = value == 7 ? 4 : value - 1;  // the first block of the value
        const raster::Pnt centre{zones.left + (block % 5 * 20 + 10) * zones.cellX,
                                 zones.top - (block / 5 * 20 + 10) * zones.cellY};
        const QPoint pixel = window->View().ToPixel(centre).toPoint();
        const map::Color want = renderer.Symbol(0, k)->Color();
        EXPECT_EQ(QColor(drawn.pixel(pixel)), QColor(want.red, want.green, want.blue))
            << "class " << value;
    }
    // The status bar tells where the cursor is and the top layer's value there.
    const QPointF over = window->View().ToPixel({zones.left + 75 * 10, zones.top - 5 * 10});
    QMouseEvent move(QEvent::MouseMove, over, Qt::NoButton, Qt::NoButton, Qt::NoModifier);
    QCoreApplication::sendEvent(&window->View(), &move);
    const auto* position = window->statusBar()->findChild<QLabel*>(QStringLiteral("cursorPosition"));
    ASSERT_NE(position, nullptr);
    EXPECT_TRUE(position->text().endsWith(QStringLiteral("Value: 4"))) << position->text().toStdString();

    // Zoomed out a step to show the bathymetry round the zones, with the menu open.
    window->View().Zoom(0.6);
    menu->popup(toolbar->mapToGlobal(toolbar->rect().bottomLeft()));
    QCoreApplication::processEvents();
    QImage picture = window->grab().toImage();
    {
        // The offscreen platform keeps the menu a window apart; put it where
        // it opened over the main window.
        QPainter painter(&picture);
        painter.drawPixmap(menu->geometry().topLeft() - window->geometry().topLeft(), menu->grab());
    }
    menu->hide();
    const QString folder = QStringLiteral(HALVANE_SCREENSHOT_DIR);
    ASSERT_TRUE(QDir().mkpath(folder));
    ASSERT_TRUE(picture.save(QDir(folder).filePath(QStringLiteral("desktop-tour.png"))));
}

}  // namespace
}  // namespace halvane
