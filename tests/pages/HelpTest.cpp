// Help launching: which button opens which topic, with which owner, and that
// the help file beside the program holds every topic referred to.

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <regex>
#include <sstream>

#include "platform/reporting/HTMLHelp.h"
#include "support/PageDesktop.h"

namespace halvane {
namespace {

using namespace pages;
namespace fs = std::filesystem;

class HelpTest : public testing::PageDesktop {
protected:
    void TearDown() override {
        AppRef::Register(0);
        PageDesktop::TearDown();
    }
};

std::string ReadFile(const fs::path& path) {
    std::ifstream in(path);
    std::stringstream text;
    text << in.rdbuf();
    return text.str();
}

TEST_F(HelpTest, TheHelpFileLiesInTheHelpFolderBesideTheComponent) {
    const fs::path program = fs::read_symlink("/proc/self/exe");
    EXPECT_EQ(ComponentFolder(), program.parent_path().string());
    EXPECT_EQ(GetHelpFilePath(1), program.parent_path().string() + "/Help/HalvaneTool.help");
    EXPECT_EQ(GetHelpFilePath(0), "");
    EXPECT_EQ(GetHelpFilePath(2), "");
    EXPECT_TRUE(fs::is_directory(GetHelpFilePath(1)));

    // The help of the rugosity completion page, with the application as owner.
    AppRef::Register(77);
    std::string topic = "rugosity.htm";
    ShowHelpTopic(2, topic);
    EXPECT_EQ(topic, "rugosity.htm");
    EXPECT_EQ(ui.Events().back(), (ui::Event{"help", "rugosity.htm", "", 77}));
}

TEST_F(HelpTest, EveryHelpButtonOpensItsTopic) {
    g_s_InputDataSet = g_s_BPI_DataSet = "dem";
    g_s_SS_BPI_InputDataSet = g_s_LS_BPI_InputDataSet = "bpi";
    g_s_WorkingDir = "/data/work";
    AppRef::Register(4242);
    struct Button {
        PageSlot& page;
        const char* control;
        const char* caption;
        const char* topic;
        int owner;
    };
    const Button buttons[] = {
        {frmIntro, "cmdAboutHalvane", "More about the Halvane Classification Wizard...",
         "wizard.htm", 0},
        {frmZoneSetup_inputdata, "cmdWhyResample", "More about Halvane methods...", "process.htm",
         0},
        {frmZoneSetup_resampling, "cmdWhyResample", "More about resampling...", "resample.htm", 0},
        {frmZoneStep1, "cmdAboutBathymPositionIndexGrids",
         "More about Bathymetric Position Index grids...", "bpi.htm", 0},
        {frmZoneStep2, "cmdAboutBathymPositionIndexGrids",
         "More about Bathymetric Position Index grids...", "bpi.htm", 0},
        {frmZoneStep3, "cmdAboutBPIGridStandardization", "More about BPI grid standardization...",
         "bpistd.htm", 0},
        {frmZoneStep4, "cmdAbout_ClassDictionary", "More about classification dictionaries...",
         "classdict.htm", 0},
        {frmRugosity, "cmdAboutBathymPositionIndexGrids", "More about Rugosity...", "rugosity.htm",
         0},
        // The one whose help window belongs to the application.
        {frmRugosity_comp, "cmdAboutBathymPositionIndexGrids", "More about Rugosity...",
         "rugosity.htm", 4242},
    };
    for (const Button& button : buttons) {
        SCOPED_TRACE(button.page.Name());
        button.page.Show();
        EXPECT_EQ(Text(button.page, button.control), button.caption);
        Click(button.page, button.control);
        ASSERT_FALSE(ui.Events().empty());
        EXPECT_EQ(ui.Events().back(),
                  (ui::Event{"help", button.topic, GetHelpFilePath(1), button.owner}));
        EXPECT_EQ(ShownPages(), std::vector<std::string>{button.page.Name()});
        button.page.Hide();
    }
    EXPECT_TRUE(ui.Messages().empty());
}

// Every topic the buttons and the Help command refer to, each a titled HTML
// page whose links between topics lead somewhere.
TEST_F(HelpTest, TheHelpFileHoldsEveryTopicReferredTo) {
    const fs::path help = GetHelpFilePath(1);
    for (const char* topic : {"wizard.htm", "process.htm", "resample.htm", "bpi.htm", "bpistd.htm",
                              "classdict.htm", "rugosity.htm", "introduction.htm"}) {
        SCOPED_TRACE(topic);
        ASSERT_TRUE(fs::is_regular_file(help / topic));
        const std::string page = ReadFile(help / topic);
        EXPECT_TRUE(std::regex_search(page, std::regex("<title>[^<]+</title>")));
        const std::regex link("href=\"([^\"#:]+)[\"#]");
        for (auto it = std::sregex_iterator(page.begin(), page.end(), link);
             it != std::sregex_iterator(); ++it) {
            EXPECT_TRUE(fs::exists(help / (*it)[1].str())) << "broken link " << (*it)[1];
        }
    }
}

}  // namespace
}  // namespace halvane
