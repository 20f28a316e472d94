// The welcome page as a user sees it.

#include <gtest/gtest.h>

#include <QImage>
#include <QPixmap>
#include <QPushButton>
#include <set>

#include "pages/frmIntro.h"
#include "platform/reporting/HTMLHelp.h"
#include "support/PageDesktop.h"

namespace halvane {
namespace {

using namespace pages;

class IntroTest : public testing::PageDesktop {};

TEST_F(IntroTest, ShowsItsTextsAndButtons) {
    StartWizard();
    EXPECT_EQ(frmIntro->windowTitle().toStdString(), "Halvane");
    EXPECT_EQ(Text(frmIntro, "Label4"), "Welcome to the Halvane Classification Wizard. ");
    EXPECT_EQ(Text(frmIntro, "Label1"),
              "This wizard allows users to classify benthic zones and associated structures "
              "from bathymetric data sets in ESRI's Grid raster data format.  As you move through "
              "the halvane classification process, click on the More about... buttons to launch "
              "the interactive help window and obtain more information on the methods utilized "
              "by the Halvane.");
    EXPECT_EQ(Text(frmIntro, "Label2"), "Click on the Next -> button to begin.");
    EXPECT_EQ(Text(frmIntro, "cmdAboutHalvane"), "More about the Halvane Classification Wizard...");
    EXPECT_EQ(Text(frmIntro, "cmdNext"), "Next ->");
    EXPECT_EQ(Text(frmIntro, "cmdCancel"), "Cancel");
    // Back is on the page by design but can be neither seen nor used.
    EXPECT_FALSE(Visible(frmIntro, "cmdBack"));
    EXPECT_FALSE(frmIntro->cmdBack->isEnabled());
    EXPECT_FALSE(frmIntro->isModal());
    EXPECT_EQ(frmIntro->parentWidget(), nullptr);

    // The picture is a picture, not an empty frame.
    const QPixmap picture = frmIntro->Picture1->pixmap(Qt::ReturnByValue);
    ASSERT_FALSE(picture.isNull());
    const QImage image = picture.toImage();
    std::set<QRgb> colours;
    for (int y = 0; y < image.height(); y += 4) {
        for (int x = 0; x < image.width(); x += 4) colours.insert(image.pixel(x, y));
    }
    EXPECT_GT(colours.size(), 20u);
}

TEST_F(IntroTest, TheHelpButtonOpensTheWizardTopicAndChangesNothingElse) {
    StartWizard();
    g_s_WorkingDir = "/data/work";
    Click(frmIntro, "cmdAboutHalvane");
    Click(frmIntro, "cmdAboutHalvane");  // a second request is the help window's matter
    const ui::Event help{"help", "wizard.htm", HelpFilePath(), 0};
    EXPECT_EQ(ui.Events(), (std::vector<ui::Event>{help, help}));
    EXPECT_EQ(ShownPages(), std::vector<std::string>{"frmIntro"});
    EXPECT_EQ(g_s_WorkingDir, "/data/work");
    EXPECT_EQ(g_frm_PreviousPage, nullptr);
}

}  // namespace
}  // namespace halvane
