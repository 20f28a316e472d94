// The wizard flow: hand-over forward and back, the two run modes, the guards
// of the stage pages and ExitProj, walked as a user walks them.

#include <gtest/gtest.h>

#include <QPushButton>
#include <filesystem>
#include <functional>

#include "classification/clsXMLPrjFile.h"
#include "pages/frmZoneStep8.h"
#include "support/GridFiles.h"
#include "support/PageDesktop.h"

namespace halvane {
namespace {

using namespace pages;
using Names = std::vector<std::string>;
using ui::Event;

const std::string kExitQuestion =
    "Are you sure you want to exit?  All changes not saved will be lost.";

class FlowTest : public testing::PageDesktop {
protected:
    // Inputs that let every stage page pass its guard.
    static void SessionWithAllInputs() {
        g_s_WorkingDir = "/data/work";
        g_s_InputDataSet = "dem";
        g_s_InputDataPath = "/data/in";
        g_s_BPI_DataSet = "dem";
        g_s_SS_BPI_InputDataSet = "broad";
        g_s_LS_BPI_InputDataSet = "fine";
    }
    static Names Only(const char* page) { return {page}; }

    // Grids and the default dictionary that a Finish runs on, in the session
    // as the stages before the final page leave them.
    void SessionReadyToFinish() {
        const raster::Grid grid{500000, 6000000, 10, 10, 6, 5};
        std::vector<double> depths(30), positions(30);
        for (std::size_t i = 0; i < depths.size(); ++i) {
            depths[i] = -20.0 - static_cast<double>(i % 7);
            positions[i] = static_cast<double>(i % 5) * 60.0 - 120.0;
        }
        testing::WriteGrid(folder_ / "dem.tif", grid, depths);
        testing::WriteGrid(folder_ / "broadstd.tif", grid, positions, true);
        testing::WriteGrid(folder_ / "finestd.tif", grid, positions, true);
        g_s_WorkingDir = folder_ / "work";
        std::filesystem::create_directories(g_s_WorkingDir);
        g_s_BPI_DataSet = "dem.tif";
        g_s_BPI_DataPath = folder_.Path().string();
        g_p_BPI_RasterDataset = raster::RasterDataset::Open(folder_ / "dem.tif");
        g_p_SmScale_Std_RasterDataset = raster::RasterDataset::Open(folder_ / "broadstd.tif");
        g_p_LgScale_Std_RasterDataset = raster::RasterDataset::Open(folder_ / "finestd.tif");
        g_s_ClassDictionary_Path = classification::DefaultDictionaryPath();
    }

    // Finish on the final page, the map declined: the zone grid is written
    // and the completion page shows, without a hand-over.
    void FinishDecliningTheMap() {
        PageSlot* const handedOver = g_frm_PreviousPage;
        const std::size_t reportsBefore = Reports().size();
        ui.Answer(ui::vbNo);
        Click(frmZoneStep8, "cmdFinish");
        EXPECT_EQ(ShownPages(), Only("frmZoneStep8_comp"));
        EXPECT_EQ(g_frm_PreviousPage, handedOver);
        EXPECT_TRUE(std::filesystem::exists(g_s_WorkingDir + "/ZONES.tif"));
        EXPECT_EQ(Reports().size(), reportsBefore);
    }

    static const Event& MapQuestion() {
        static const Event question{"question",
                                    "Calculation complete. Would you like to add data to the map?",
                                    "Add Data to Map?", ui::vbYesNo};
        return question;
    }

    testing::TempDir folder_;
};

TEST_F(FlowTest, NextFromTheWelcomePageHandsOverAndBackReturnsToIt) {
    StartWizard();
    EXPECT_EQ(ShownPages(), Only("frmIntro"));

    Click(frmIntro, "cmdNext");
    EXPECT_EQ(ShownPages(), Only("frmZoneSetup_inputdata"));
    EXPECT_EQ(g_frm_PreviousPage, &frmIntro);
    EXPECT_TRUE(frmIntro.Loaded());  // going forward unloads nothing

    Click(frmZoneSetup_inputdata, "cmdBack");
    EXPECT_EQ(ShownPages(), Only("frmIntro"));
    EXPECT_EQ(g_frm_PreviousPage, &frmIntro);
    EXPECT_TRUE(ui.Messages().empty());
}

TEST_F(FlowTest, CancelAnsweredNoKeepsThePageAndTheSession) {
    StartWizard();
    g_s_WorkingDir = "/data/work";
    g_s_InputDataSet = "dem";
    ui.Answer(ui::vbNo);
    Click(frmIntro, "cmdCancel");

    EXPECT_EQ(ui.Messages(),
              (std::vector<Event>{{"question", kExitQuestion, "Exit?", ui::vbYesNo}}));
    EXPECT_EQ(ShownPages(), Only("frmIntro"));
    FlushUnloads();
    EXPECT_EQ(LoadedPages(), Only("frmIntro"));
    EXPECT_EQ(g_s_WorkingDir, "/data/work");
    EXPECT_EQ(g_s_InputDataSet, "dem");
}

TEST_F(FlowTest, CancelAnsweredYesUnloadsAllPagesInOrderAndEmptiesTheSession) {
    SessionWithAllInputs();
    StartWizard();
    Click(frmIntro, "cmdNext");
    // Every page loaded, whatever was shown: the order is ExitProj's own.
    Names unloaded;
    for (PageSlot* page : AllPageSlots()) {
        QObject::connect(&page->Get(), &QObject::destroyed,
                         [&unloaded, name = page->Name()] { unloaded.push_back(name); });
    }
    ui.Answer(ui::vbYes);
    Click(frmZoneSetup_inputdata, "cmdCancel");
    FlushUnloads();

    EXPECT_EQ(ui.Messages().size(), 1u);
    EXPECT_EQ(unloaded,
              (Names{"frmIntro", "frmZoneSetup_inputdata", "frmZoneSetup_resampling",
                     "frmZoneSetup_resampling_reqdata", "frmZoneStep1", "frmZoneStep1_reqdata",
                     "frmZoneStep2", "frmZoneStep2_reqdata", "frmZoneStep3", "frmZoneStep3_reqdata",
                     "frmZoneStep4", "frmZoneStep8_reqdata", "frmZoneStep8", "frmZoneStep8_comp",
                     "frmRugosity", "frmRugosity_comp"}));
    EXPECT_TRUE(LoadedPages().empty());
    EXPECT_EQ(g_frm_PreviousPage, nullptr);
    EXPECT_EQ(g_s_WorkingDir, "");
    EXPECT_EQ(g_s_SS_BPI_InputDataSet, "");

    // The wizard again: a fresh welcome page, and nothing else loaded.
    StartWizard();
    EXPECT_EQ(ShownPages(), Only("frmIntro"));
    EXPECT_EQ(LoadedPages(), Only("frmIntro"));
}

TEST_F(FlowTest, CloseOnAStandAlonePageAsksNothingAndEndsTheRun) {
    g_b_StandAloneRun = true;
    SessionWithAllInputs();
    frmZoneStep1.Show();
    ASSERT_EQ(ShownPages(), Only("frmZoneStep1"));
    ASSERT_EQ(Text(frmZoneStep1, "cmdCancel"), "Close");

    Click(frmZoneStep1, "cmdCancel");
    FlushUnloads();
    EXPECT_TRUE(ui.Messages().empty());
    EXPECT_TRUE(LoadedPages().empty());
    EXPECT_EQ(g_s_BPI_DataSet, "");
    EXPECT_TRUE(g_b_StandAloneRun);  // the session's reset leaves the mode alone
}

TEST_F(FlowTest, TheFullRouteGoesBackPageByPageAndForwardAgainAsItStood) {
    SessionWithAllInputs();
    StartWizard();
    Click(frmIntro, "cmdNext");
    Type(frmZoneSetup_inputdata, "g_s_WorkingDir", "/data/work");
    Type(frmZoneSetup_inputdata, "g_s_InputDataSet", "/data/in/dem");
    Click(frmZoneSetup_inputdata, "cmdNext");

    struct Step {
        PageSlot& page;
        PageSlot& back;
    };
    const Step route[] = {{frmZoneSetup_resampling, frmZoneSetup_inputdata},
                          {frmZoneStep1, frmZoneSetup_resampling},
                          {frmZoneStep2, frmZoneStep1},
                          {frmZoneStep3, frmZoneStep2},
                          {frmZoneStep4, frmZoneStep3}};
    for (const Step& step : route) {
        SCOPED_TRACE(step.page.Name());
        ASSERT_EQ(ShownPages(), Only(step.page.Name()));
        // The route takes the stages' runs as done: a stage page's Next
        // opens with its run, and the standardization's Next wants the names
        // its run leaves.
        if (auto* next = Find<QPushButton>(step.page, "cmdNext")) next->setEnabled(true);
        g_s_Save_SmScale_Std_Grid = "broadstd";
        g_s_Save_LgScale_Std_Grid = "finestd";
        // A page shown again after Back runs no Form_Load: switching the mode
        // now would hide its buttons if it did.
        g_b_StandAloneRun = true;
        Click(step.page, "cmdBack");
        EXPECT_EQ(ShownPages(), Only(step.back.Name()));
        Click(step.back, "cmdNext");
        EXPECT_EQ(ShownPages(), Only(step.page.Name()));
        EXPECT_TRUE(Visible(step.page, "cmdNext"));
        g_b_StandAloneRun = false;
        Click(step.page, "cmdNext");
    }

    // Back from the final page unloads it; the next visit loads it afresh,
    // and reads the dictionary that the session names now.
    ASSERT_EQ(ShownPages(), Only("frmZoneStep8"));
    SessionReadyToFinish();
    QWidget* firstVisit = &frmZoneStep8.Get();
    Click(frmZoneStep8, "cmdBack");
    EXPECT_EQ(ShownPages(), Only("frmZoneStep4"));
    EXPECT_FALSE(frmZoneStep8.Loaded());
    Click(frmZoneStep4, "cmdNext");
    EXPECT_NE(&frmZoneStep8.Get(), firstVisit);
    EXPECT_EQ(frmZoneStep8.Get().m_frmPrevious, &frmZoneStep4);

    EXPECT_EQ(frmZoneStep8->m_iClassCount, 12);

    // Finish and Create Rugosity Grids hand over without writing the link,
    // so Back on the rugosity page skips both the final and the completion
    // page.
    FinishDecliningTheMap();
    Click(frmZoneStep8_comp, "cmdCreateRug");
    EXPECT_EQ(ShownPages(), Only("frmRugosity"));
    Click(frmRugosity, "cmdBack");
    EXPECT_EQ(ShownPages(), Only("frmZoneStep4"));
    EXPECT_EQ(ui.Messages(), std::vector<Event>{MapQuestion()});
}

TEST_F(FlowTest, TheShortRouteGoesBackFromTheDictionaryToTheSetupPage) {
    StartWizard();
    Click(frmIntro, "cmdNext");
    Type(frmZoneSetup_inputdata, "g_s_WorkingDir", "/data/work");
    Click(frmZoneSetup_inputdata, "InputOption(0)");
    Click(frmZoneSetup_inputdata, "cmdNext");
    EXPECT_EQ(ShownPages(), Only("frmZoneStep4"));
    Click(frmZoneStep4, "cmdBack");
    EXPECT_EQ(ShownPages(), Only("frmZoneSetup_inputdata"));
}

TEST_F(FlowTest, TheCompletionPagesEndTheRunThroughTheExitQuestion) {
    SessionReadyToFinish();
    g_frm_PreviousPage = &frmZoneStep4;  // the wizard came through the dictionary
    frmZoneStep8.Show();
    FinishDecliningTheMap();
    ui.Answer(ui::vbNo);
    Click(frmZoneStep8_comp, "cmdCancel");  // "Exit", asked though all is saved
    EXPECT_EQ(ShownPages(), Only("frmZoneStep8_comp"));

    Click(frmZoneStep8_comp, "cmdCreateRug");
    // What the rugosity page's Finish does once its run went through.
    frmRugosity.Hide();
    frmRugosity_comp.Show();
    ASSERT_EQ(ShownPages(), Only("frmRugosity_comp"));
    EXPECT_EQ(frmRugosity_comp.Get().m_frmPrevious, &frmZoneStep4);
    ui.Answer(ui::vbYes);
    Click(frmRugosity_comp, "cmdNext");  // "Close"
    FlushUnloads();
    EXPECT_EQ(ui.Messages(), (std::vector<Event>{MapQuestion(),
                                                 {"question", kExitQuestion, "Exit?", ui::vbYesNo},
                                                 {"question", kExitQuestion, "Exit?", ui::vbYesNo}}));
    EXPECT_TRUE(LoadedPages().empty());
    EXPECT_EQ(g_s_WorkingDir, "");
}

TEST_F(FlowTest, StandAloneClassificationLeadsRugosityBackToItsEntry) {
    g_b_StandAloneRun = true;
    SessionReadyToFinish();
    frmZoneStep8_reqdata.Show();
    EXPECT_FALSE(Visible(frmZoneStep8_reqdata, "cmdBack"));
    EXPECT_EQ(Text(frmZoneStep8_reqdata, "cmdNext"), "Next");
    // Paths typed by hand pass Next; the session's values are what runs.
    for (const char* box : {"g_s_InputDataSet", "g_sbpi_std", "g_lbpi_std",
                            "txt_Classification_Dictionary"}) {
        Type(frmZoneStep8_reqdata, box, "typed by hand");
    }
    Click(frmZoneStep8_reqdata, "cmdNext");
    EXPECT_EQ(ShownPages(), Only("frmZoneStep8"));
    FinishDecliningTheMap();
    Click(frmZoneStep8_comp, "cmdCreateRug");
    Click(frmRugosity, "cmdBack");
    EXPECT_EQ(ShownPages(), Only("frmZoneStep8_reqdata"));
}

TEST_F(FlowTest, BackOnAFreshStandAloneRugosityPageFailsByTheConvention) {
    g_b_StandAloneRun = true;
    frmRugosity.Show();
    Click(frmRugosity, "cmdBack");
    const auto& events = ui.Events();
    ASSERT_FALSE(events.empty());
    EXPECT_EQ(events.back().kind, "error-window");
    EXPECT_NE(events.back().text.find("\tcmdBack_Click frmRugosity \r\n"), std::string::npos);
    EXPECT_NE(events.back().text.find("\t91\r\n"), std::string::npos);
}

TEST_F(FlowTest, StagePagesWithoutTheirInputShowTheirRequiredDataDialog) {
    struct Guard {
        PageSlot& page;
        PageSlot& requiredData;
        std::vector<std::string*> needs;
    };
    const Guard guards[] = {
        {frmZoneSetup_resampling, frmZoneSetup_resampling_reqdata, {&g_s_InputDataSet}},
        {frmZoneStep1, frmZoneStep1_reqdata, {&g_s_BPI_DataSet}},
        {frmZoneStep2, frmZoneStep2_reqdata, {&g_s_BPI_DataSet}},
        {frmZoneStep3,
         frmZoneStep3_reqdata,
         {&g_s_SS_BPI_InputDataSet, &g_s_LS_BPI_InputDataSet, &g_s_WorkingDir}},
    };
    for (const Guard& guard : guards) {
        // Each needed value missing in turn, the others present.
        for (std::string* missing : guard.needs) {
            SCOPED_TRACE(std::string(guard.page.Name()) + " without one input");
            SessionWithAllInputs();
            missing->clear();
            guard.page.Show();
            FlushUnloads();
            EXPECT_EQ(ShownPages(), Only(guard.requiredData.Name()));
            EXPECT_FALSE(guard.page.Loaded());
            guard.requiredData.Unload();
        }
        SCOPED_TRACE(std::string(guard.page.Name()) + " with its inputs");
        SessionWithAllInputs();
        guard.page.Show();
        EXPECT_EQ(ShownPages(), Only(guard.page.Name()));
        guard.page.Unload();
        FlushUnloads();
    }
    EXPECT_TRUE(ui.Messages().empty());
}

TEST_F(FlowTest, StandAloneStagePagesDoOneStageAndTheOthersKeepTheirButtons) {
    SessionWithAllInputs();
    for (bool standAlone : {false, true}) {
        g_b_StandAloneRun = standAlone;
        const std::vector<PageSlot*> stages = {&frmZoneSetup_resampling, &frmZoneStep1,
                                               &frmZoneStep2, &frmZoneStep3, &frmZoneStep4};
        for (PageSlot* page : stages) {
            SCOPED_TRACE(std::string(page->Name()) + (standAlone ? " alone" : " in the wizard"));
            page->Show();
            EXPECT_EQ(Visible(*page, "cmdNext"), !standAlone);
            EXPECT_EQ(Visible(*page, "cmdBack"), !standAlone);
            EXPECT_EQ(Text(*page, "cmdCancel"), standAlone ? "Close" : "Cancel");
            page->Unload();
        }
        frmZoneStep8.Show();
        EXPECT_TRUE(Visible(frmZoneStep8, "cmdBack"));
        frmRugosity.Show();
        EXPECT_TRUE(Visible(frmRugosity, "cmdBack"));
        EXPECT_TRUE(Visible(frmRugosity, "cmdNext"));
        EXPECT_EQ(Text(frmRugosity, "cmdCancel"), "Cancel");
        frmZoneStep8.Unload();
        frmRugosity.Unload();
        FlushUnloads();
    }
}

}  // namespace
}  // namespace halvane
