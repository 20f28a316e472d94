// Pictures of what a user sees: the welcome page, a stop message, the progress
// dialog and the error window, drawn offscreen into screenshots/ of the build
// tree for a person to look at. The test checks that each picture was written
// and holds more than a blank window.

#include <gtest/gtest.h>

#include <QMessageBox>
#include <set>

#include "pages/frmIntro.h"
#include "platform/reporting/ErrorHandling.h"
#include "platform/runtime/Failure.h"
#include "platform/ui/qt/QtDialogs.h"
#include "support/PageDesktop.h"
#include "support/Screenshot.h"

namespace halvane {
namespace {

using namespace ui::qt;

class ScreenshotTest : public testing::PageDesktop {
protected:
    static void Photograph(QWidget& window, const char* name) {
        window.resize(window.size().expandedTo(window.sizeHint()));
        window.show();
        QCoreApplication::processEvents();
        const QImage image = testing::WithTitleBar(window.grab().toImage(), window.windowTitle());
        testing::SaveScreenshot(image, name);

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
