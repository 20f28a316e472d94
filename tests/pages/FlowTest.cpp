// The wizard flow: hand-over forward and back, the two run modes, the guards
// of the stage pages and ExitProj, walked as a user walks them.

#include <gtest/gtest.h>

#include <QPushButton>
#include <functional>

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
    // What Finish does once the final run went through: no hand-over.
    static void ShowCompletionAsFinishDoes() {
        frmZoneStep8.Hide();
        frmZoneStep8_comp.Show();
        EXPECT_EQ(ShownPages(), Only("frmZoneStep8_comp"));
    }
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

    // Back from the final page unloads it; the next visit loads it afresh.
    ASSERT_EQ(ShownPages(), Only("frmZoneStep8"));
    QWidget* firstVisit = &frmZoneStep8.Get();
    Click(frmZoneStep8, "cmdBack");
    EXPECT_EQ(ShownPages(), Only("frmZoneStep4"));
    EXPECT_FALSE(frmZoneStep8.Loaded());
    Click(frmZoneStep4, "cmdNext");
    EXPECT_NE(&frmZoneStep8.Get(), firstVisit);
    EXPECT_EQ(frmZoneStep8.Get().m_frmPrevious, &frmZoneStep4);

    // Finish (once its run went through) and Create Rugosity Grids hand over
    // without writing the link, so Back on the rugosity page skips both the
    // final and the completion page.
    ShowCompletionAsFinishDoes();
    Click(frmZoneStep8_comp, "cmdCreateRug");
    EXPECT_EQ(ShownPages(), Only("frmRugosity"));
    Click(frmRugosity, "cmdBack");
    EXPECT_EQ(ShownPages(), Only("frmZoneStep4"));
    EXPECT_TRUE(ui.Messages().empty());
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
    SessionWithAllInputs();
    g_frm_PreviousPage = &frmZoneStep4;  // the wizard came through the dictionary
    frmZoneStep8.Show();
    ShowCompletionAsFinishDoes();
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
    EXPECT_EQ(ui.Messages().size(), 2u);
    EXPECT_TRUE(LoadedPages().empty());
    EXPECT_EQ(g_s_WorkingDir, "");
}

TEST_F(FlowTest, StandAloneClassificationLeadsRugosityBackToItsEntry) {
    g_b_StandAloneRun = true;
    frmZoneStep8_reqdata.Show();
    EXPECT_FALSE(Visible(frmZoneStep8_reqdata, "cmdBack"));
    EXPECT_EQ(Text(frmZoneStep8_reqdata, "cmdNext"), "Next");
    Click(frmZoneStep8_reqdata, "cmdNext");
    ShowCompletionAsFinishDoes();
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
