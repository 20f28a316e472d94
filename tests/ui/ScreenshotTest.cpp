// Pictures of what a user sees: the welcome page, a stop message, the progress
// dialog and the error window, drawn offscreen into screenshots/ of the build
// tree for a person to look at. The test checks that each picture was written
// and holds more than a blank window.

#include <gtest/gtest.h>

#include <QDir>
#include <QImage>
#include <QMessageBox>
#include <QPainter>
#include <QPixmap>
#include <set>

#include "host/ErrorHandling.h"
#include "pages/frmIntro.h"
#include "platform/runtime/Failure.h"
#include "platform/ui/qt/QtDialogs.h"
#include "support/PageDesktop.h"

namespace halvane {
namespace {

using namespace ui::qt;

class ScreenshotTest : public testing::PageDesktop {
protected:
    // The offscreen platform draws no window frame; a plain title bar shows
    // the caption a user would read above the window.
    static QPixmap WithTitleBar(const QPixmap& content, const QString& title) {
        const int bar = 26;
        QPixmap framed(content.width() + 2, content.height() + bar + 1);
        framed.fill(QColor(0x5a, 0x6a, 0x7a));
        QPainter painter(&framed);
        painter.fillRect(1, 1, content.width(), bar - 1, QColor(0x2f, 0x4f, 0x6f));
        painter.setPen(Qt::white);
        painter.drawText(QRect(10, 1, content.width() - 20, bar - 1), Qt::AlignVCenter, title);
        painter.drawPixmap(1, bar, content);
        return framed;
    }

    static void Photograph(QWidget& window, const char* name) {
        window.resize(window.size().expandedTo(window.sizeHint()));
        window.show();
        QCoreApplication::processEvents();
        const QString folder = QStringLiteral(HALVANE_SCREENSHOT_DIR);
        ASSERT_TRUE(QDir().mkpath(folder));
        const QString file = QDir(folder).filePath(QString::fromLatin1(name) + ".png");
        const QImage image = WithTitleBar(window.grab(), window.windowTitle()).toImage();
        ASSERT_TRUE(image.save(file)) << file.toStdString();

        // Text, icons and frames make for many shades; a blank window has one or two.
        std::set<QRgb> shades;
        for (int y = 0; y < image.height(); y += 2) {
            for (int x = 0; x < image.width(); x += 2) shades.insert(image.pixel(x, y));
        }
        EXPECT_GT(shades.size(), 8u) << name;
        window.hide();
    }
};

TEST_F(ScreenshotTest, WelcomePage) {
    StartWizard();
    Photograph(*pages::frmIntro, "frmIntro");
}

TEST_F(ScreenshotTest, StopMessage) {
    auto box = MakeMessageBox("Please select your input data source or existing BPI Grids.",
                              ui::vbCritical, "Please Select Input Data..");
    Photograph(*box, "stop-message");
}

TEST_F(ScreenshotTest, ProgressDialog) {
    ProgressDialog dialog(std::make_shared<ui::CancelTracker>());
    dialog.Animation(0);
    dialog.CancelEnabled(true);
    dialog.Title("Processing");
    dialog.Description("Processing...Please be patient.");
    dialog.MinRange(0);
    dialog.MaxRange(6);
    dialog.Position(4);
    dialog.Message("Creating Output files");
    Photograph(dialog, "progress-dialog");
}

TEST_F(ScreenshotTest, ErrorWindow) {
    // A real report: a failure two levels down, caught by a top-level handler.
    Guarded({"cmdSet_smallScale_BPI_Click", "frmZoneStep1", kTopLevel}, [] {
        Guarded({"BPI_Build", "modUtil", kPassOn},
                [] { throw runtime::RuntimeFailure(runtime::kObjectNotSet); });
    });
    ASSERT_FALSE(ui.Events().empty());
    ErrorWindow window;
    window.SetText(ui.Events().back().text);
    Photograph(window, "error-window");
}

}  // namespace
}  // namespace halvane
