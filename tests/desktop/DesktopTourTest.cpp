// A tour of the desktop host as a user takes it: the component's toolbar and
// menu, a click on the wizard and on a stand-alone command, a bathymetry grid
// opened from the File menu, a zone grid added with its labelled classes, and
// a picture of it all with the menu open (screenshots/desktop-tour.png).

#include <gtest/gtest.h>

#include <QMenu>
#include <QMouseEvent>
#include <QPainter>
#include <QStatusBar>
#include <QToolButton>
#include <QTreeWidget>
#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <fstream>
#include <optional>
#include <set>

#include "apps/desktop/LayerList.h"
#include "apps/desktop/MainWindow.h"
#include "apps/desktop/MapView.h"
#include "apps/desktop/Registration.h"
#include "engine/ResultLayers.h"
#include "engine/Session.h"
#include "host/component/Registry.h"
#include "support/GridFiles.h"
#include "synth/Synth.h"
#include "support/PageDesktop.h"
#include "support/Screenshot.h"

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
    // Another build's component, registered earlier, gives way to this one's.
    const std::string elsewhere = dir_ / "libhalvane_component.so";
    std::ofstream(elsewhere) << "another build";
    host::RegisterEntries(
        {{"Halvane.clsToolbar", "{F7EA5D5C-DD5A-41B2-B602-90BBA0066560}", elsewhere}});
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
    EXPECT_EQ(pages::frmIntro.Get().m_pApp, window->App());
    EXPECT_FALSE(g_b_StandAloneRun);
    // A stand-alone stage first asks for its data.
    Entry(*menu, "Build Broad Scale BPI")->trigger();
    EXPECT_EQ(ShownPages(), (std::vector<std::string>{"frmIntro", "frmZoneStep1_reqdata"}));
    EXPECT_EQ(pages::frmZoneStep1.Get().m_pApp, window->App());
    EXPECT_TRUE(g_b_StandAloneRun);

    // Bathymetry from File > Open Raster: a stretched grid.
    synth::Params relief;
    relief.cols = 200;
    relief.rows = 120;
    relief.seed = 3;
    synth::WriteGeoTiff(relief, dir_ / "bathymetry.tif");
    ui.Select({dir_ / "bathymetry.tif"});
    window->OpenRaster();
    auto& layers = window->Layers();
    ASSERT_EQ(layers.topLevelItemCount(), 1);
    const std::vector<std::string> ramp = LegendLines(layers, 0);
    ASSERT_EQ(ramp.size(), 3u);
    EXPECT_EQ(ramp[0], "Value");
    EXPECT_EQ(ramp[1].rfind("High : ", 0), 0u);

    // A zone grid over the middle of it: four depth bands of equal share,
    // shallow first, as an integer grid with its table.
    const std::vector<double> depths = testing::ReadAll(testing::OpenRaster(dir_ / "bathymetry.tif"));
    const raster::Grid zones{synth::kOriginX + 40 * relief.cell, synth::kOriginY - 20 * relief.cell,
                             relief.cell, relief.cell, 120, 80};
    auto depthAt = [&](std::int64_t c, std::int64_t r) { return depths[(r + 20) * relief.cols + c + 40]; };
    std::vector<double> sorted;
    for (std::int64_t i = 0; i < zones.Cells(); ++i) {
        if (const double d = depthAt(i % zones.cols, i / zones.cols); !std::isnan(d)) sorted.push_back(d);
    }
    std::sort(sorted.begin(), sorted.end(), std::greater<>());
    std::vector<double> cells(zones.Cells(), testing::kNoData);
    for (std::int64_t i = 0; i < zones.Cells(); ++i) {
        const double d = depthAt(i % zones.cols, i / zones.cols);
        if (std::isnan(d)) continue;
        int band = 1;
        while (band < 4 && d < sorted[band * sorted.size() / 4]) ++band;
        cells[i] = band;
    }
    testing::WriteGrid(dir_ / "zones.tif", zones, cells, true);
    g_dict_Zones = std::make_shared<ZoneDictionary>(ZoneDictionary{
        {1, "Shelf"}, {2, "Shelf Break"}, {3, "Slope"}, {4, "Basin"}});
    map::MxDocumentPtr doc;
    map::MapPtr map;
    const map::RasterLayerPtr layer =
        AddDatasetToMap(window->App(), doc, map, raster::RasterDataset::Open(dir_ / "zones.tif"),
                        ChangeRenderToUVRenderer);
    ASSERT_EQ(map, window->FocusMap());
    ASSERT_EQ(layers.topLevelItemCount(), 2);
    EXPECT_EQ(layers.topLevelItem(0)->text(0), QStringLiteral("zones"));
    EXPECT_EQ(LegendLines(layers, 0),
              (std::vector<std::string>{"All Data Values", "Shelf", "Shelf Break", "Slope", "Basin"}));

    // Zoomed to the zones, a cell amid each class is drawn in the class's colour.
    window->View().ZoomTo(layer->Raster()->Extent());
    const QImage drawn = window->View().grab().toImage();
    const auto& renderer = dynamic_cast<const map::RasterUniqueValueRenderer&>(*layer->Renderer());
    auto amid = [&](double value) -> std::optional<raster::Pnt> {
        for (std::int64_t r = 3; r + 3 < zones.rows; ++r) {
            for (std::int64_t c = 3; c + 3 < zones.cols; ++c) {
                bool same = true;
                for (std::int64_t i = -3; i <= 3 && same; ++i) {
                    for (std::int64_t j = -3; j <= 3 && same; ++j) {
                        same = cells[(r + i) * zones.cols + c + j] == value;
                    }
                }
                if (same) return raster::Pnt{zones.left + (c + 0.5) * zones.cellX,
                                             zones.top - (r + 0.5) * zones.cellY};
            }
        }
        return std::nullopt;
    };
    ASSERT_EQ(renderer.ClassCount(0), 4);
    std::optional<raster::Pnt> basin;
    for (int k = 0; k < renderer.ClassCount(0); ++k) {
        const int value = renderer.Value(0, k, 0);
        const auto centre = amid(value);
        ASSERT_TRUE(centre) << "no wide patch of class " << value;
        if (value == 4) basin = centre;
        const map::Color want = renderer.Symbol(0, k)->Color();
        EXPECT_EQ(QColor(drawn.pixel(window->View().ToPixel(*centre).toPoint())),
                  QColor(want.red, want.green, want.blue))
            << "class " << value;
    }
    // The status bar tells where the cursor is and the top layer's value there.
    QMouseEvent move(QEvent::MouseMove, window->View().ToPixel(*basin), Qt::NoButton,
                     Qt::NoButton, Qt::NoModifier);
    QCoreApplication::sendEvent(&window->View(), &move);
    const auto* position =
        window->statusBar()->findChild<QLabel*>(QStringLiteral("cursorPosition"));
    ASSERT_NE(position, nullptr);
    EXPECT_TRUE(position->text().endsWith(QStringLiteral("Value: 4")))
        << position->text().toStdString();

    // The whole map, the zones amid the bathymetry, with the menu open.
    window->View().ZoomToFullExtent();
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
    testing::SaveScreenshot(testing::WithTitleBar(picture, window->windowTitle()), "desktop-tour");
}

// File > Open of a grid that stores its class names and colours shows them in
// the layer list, with no dictionary in the session; a grid without them
// keeps its stretch.
TEST_F(DesktopTourTest, OpenedGridShowsTheClassesItStores) {
    g_dict_Zones.reset();
    const raster::Grid grid{500000, 6000000, 10, 10, 8, 6};
    std::vector<double> depth = testing::Surface(grid, true);
    testing::WriteGrid(dir_ / "depth.tif", grid, depth);
    raster::RasterWorkspacePtr workspace =
        raster::RasterWorkspaceFactory().OpenFromFile(dir_.Path(), 0);
    raster::RasterMapAlgebraOp op;
    op.BindRaster(workspace->OpenRasterDataset("depth")->CreateDefaultRaster(), "d");
    raster::RasterPtr zones = op.Execute("con([d] > -90, 5, 2)");
    zones->Dataset()->Description().nameClasses = [](raster::AttributeTable& table) {
        for (raster::AttributeRow& row : table) {
            row.Class_Name = row.Value == 2 ? "Deep" : "Shallow";
            row.color = raster::Rgb{static_cast<std::uint8_t>(row.Value * 40), 10, 20};
        }
    };
    zones->Item(0)->RasterDataset()->Copy("named", workspace);

    auto window = StartDesktop();
    window->AddRaster(dir_ / "named.tif");
    window->AddRaster(dir_ / "depth.tif");
    const QTreeWidget& layers = window->Layers();
    ASSERT_EQ(layers.topLevelItemCount(), 2);
    EXPECT_EQ(LegendLines(layers, 1),
              (std::vector<std::string>{"All Data Values", "Deep", "Shallow"}));
    const auto* named = dynamic_cast<const map::RasterLayer*>(window->FocusMap()->Layer(1).get());
    ASSERT_NE(named, nullptr);
    const auto* classes =
        dynamic_cast<const map::RasterUniqueValueRenderer*>(named->Renderer().get());
    ASSERT_NE(classes, nullptr);
    EXPECT_EQ(classes->Symbol(0, 1)->Color(), (map::Color{200, 10, 20}));
    EXPECT_EQ(LegendLines(layers, 0).front(), "Value");
}

}  // namespace
}  // namespace halvane
