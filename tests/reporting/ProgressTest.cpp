#include <gtest/gtest.h>

#include "platform/reporting/modProgDialog.h"
#include "support/ScriptedDesktop.h"

namespace halvane {
namespace {

using Calls = std::vector<std::string>;

class ProgressTest : public testing::ScriptedDesktop {
protected:
    void SetUp() override {
        CloseProgress();
        g_b_Continue = false;
    }
    void TearDown() override {
        CloseProgress();
        ScriptedDesktop::TearDown();
    }
    ui::ScriptedProgressDialog& dialog(std::size_t i = 0) { return *ui.ProgressDialogs().at(i); }
};

TEST_F(ProgressTest, FirstCallOpensTheDialogThenSetsRangePositionAndMessage) {
    ShowProgress("Resampling Input Grid", "Processing", 0, 6, 1, 77);
    ASSERT_EQ(ui.ProgressDialogs().size(), 1u);
    EXPECT_EQ(dialog().calls, (Calls{"Animation 0", "CancelEnabled True", "Title Processing",
                                     "Description Processing...Please be patient.", "MinRange 0",
                                     "MaxRange 6", "Position 1", "Message Resampling Input Grid"}));
    EXPECT_EQ(dialog().owner, 77);
    EXPECT_TRUE(g_b_Continue);
    EXPECT_EQ(g_b_Continue.Value(), -1);
    EXPECT_TRUE(g_p_ProgressDialog && g_p_StepProgressor && g_p_TrackCancel &&
                g_p_ProgressDialogFactory);
}

TEST_F(ProgressTest, LaterCallsKeepTitleAndOwnerAndPassThePositionAsItStands) {
    ShowProgress("one", "Processing", 0, 6, 1, 0);
    ShowProgress("two\r\nsecond line", "Other title", 0, 16, 20, 5);
    ASSERT_EQ(ui.ProgressDialogs().size(), 1u);
    EXPECT_EQ(dialog().title, "Processing");
    EXPECT_EQ(dialog().owner, 0);
    EXPECT_EQ(dialog().maxRange, 16);
    EXPECT_EQ(dialog().position, 20);
    EXPECT_EQ(dialog().message, "two\r\nsecond line");
    const Calls secondCall(dialog().calls.end() - 4, dialog().calls.end());
    EXPECT_EQ(secondCall,
              (Calls{"MinRange 0", "MaxRange 16", "Position 20", "Message two\r\nsecond line"}));
}

TEST_F(ProgressTest, CancelHoldsUntilANewDialogIsOpened) {
    ShowProgress("step 1", "Processing", 0, 6, 1, 0);
    dialog().PressCancel();
    EXPECT_TRUE(g_b_Continue);  // seen only at the next step
    ShowProgress("step 2", "Processing", 0, 6, 2, 0);
    EXPECT_FALSE(g_b_Continue);
    ShowProgress("step 3", "Processing", 0, 6, 3, 0);
    EXPECT_FALSE(g_b_Continue);
    CloseProgress();
    EXPECT_FALSE(g_b_Continue);  // a job reads after closing whether it was cancelled

    ShowProgress("again", "Processing", 0, 6, 1, 0);
    EXPECT_EQ(ui.ProgressDialogs().size(), 2u);
    EXPECT_TRUE(g_b_Continue);
}

TEST_F(ProgressTest, CancelPressedDuringAMessageIsSeenByThatCall) {
    ui.onProgressMessage = [](ui::ScriptedProgressDialog& d) {
        if (d.message == "step 2") d.PressCancel();
    };
    ShowProgress("step 1", "Processing", 0, 6, 1, 0);
    EXPECT_TRUE(g_b_Continue);
    ShowProgress("step 2", "Processing", 0, 6, 2, 0);
    EXPECT_FALSE(g_b_Continue);
}

TEST_F(ProgressTest, CloseHidesAndForgetsTheDialogAndDoesNothingWhenClosed) {
    CloseProgress();
    EXPECT_TRUE(ui.ProgressDialogs().empty());
    ShowProgress("x", "Processing", 0, 6, 1, 0);
    CloseProgress();
    EXPECT_FALSE(dialog().visible);
    EXPECT_EQ(dialog().calls.back(), "HideDialog");
    EXPECT_FALSE(g_p_ProgressDialog || g_p_StepProgressor || g_p_TrackCancel ||
                 g_p_ProgressDialogFactory);
    CloseProgress();
    EXPECT_EQ(dialog().calls.back(), "HideDialog");
    EXPECT_EQ(std::count(dialog().calls.begin(), dialog().calls.end(), "HideDialog"), 1);
}

TEST_F(ProgressTest, TypeMismatchShowsItsNumberAndGoesOnWithTheNextStatement) {
    ui.FailNext("Title", 13);
    ShowProgress("x", "Processing", 0, 6, 1, 0);
    ASSERT_EQ(ui.Messages().size(), 1u);
    EXPECT_EQ(ui.Messages()[0], (ui::Event{"notice", "13", "", 0}));
    EXPECT_EQ(dialog().description, "Processing...Please be patient.");
    EXPECT_EQ(dialog().message, "x");
    EXPECT_TRUE(g_b_Continue);
}

TEST_F(ProgressTest, AnyOtherFailureShowsItsNumberAndEndsTheCall) {
    ShowProgress("first", "Processing", 0, 6, 1, 0);
    dialog().PressCancel();
    ui.FailNext("MinRange", 5);
    ShowProgress("second", "Processing", 0, 6, 2, 0);
    ASSERT_EQ(ui.Messages().size(), 1u);
    EXPECT_EQ(ui.Messages()[0].text, "5");
    EXPECT_EQ(dialog().message, "first");
    EXPECT_TRUE(g_b_Continue);  // left as the last completed call set it
}

TEST_F(ProgressTest, AFailedOpeningLeavesNoDialogAndTheNextCallTriesAgain) {
    ui.FailNext("Create", 440);
    ShowProgress("x", "Processing", 0, 6, 1, 0);
    EXPECT_EQ(ui.Messages().at(0).text, "440");
    EXPECT_FALSE(g_p_ProgressDialog);
    ShowProgress("y", "Processing", 0, 6, 2, 0);
    ASSERT_EQ(ui.ProgressDialogs().size(), 1u);
    EXPECT_EQ(dialog().message, "y");
}

}  // namespace
}  // namespace halvane
