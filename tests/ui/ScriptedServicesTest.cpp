#include <gtest/gtest.h>

#include "platform/ui/ScriptedServices.h"

namespace halvane::ui {
namespace {

class ScriptedServicesTest : public ::testing::Test {
protected:
    ScriptedServicesTest() : scope_(ui) {
        ui.onUnexpected = [this](const std::string& what) { unexpected.push_back(what); };
    }
    ScriptedServices ui;
    std::vector<std::string> unexpected;

private:
    ServicesScope scope_;
};

TEST_F(ScriptedServicesTest, RecordsMessagesByKindAndAnswersQuestionsInOrder) {
    ui.Answer(vbYes);
    ui.Answer(vbNo);
    EXPECT_EQ(Services().MsgBox("Stop it", vbCritical, "Missing"), vbOK);
    EXPECT_EQ(Services().MsgBox("Go on?", vbYesNo, "Halvane"), vbYes);
    EXPECT_EQ(Services().MsgBox("Really?", vbYesNo), vbNo);
    EXPECT_EQ(Services().MsgBox("FYI"), vbOK);
    EXPECT_EQ(ui.Messages(), (std::vector<Event>{{"stop", "Stop it", "Missing", 16},
                                                 {"question", "Go on?", "Halvane", 4},
                                                 {"question", "Really?", "", 4},
                                                 {"notice", "FYI", "", 0}}));
    EXPECT_TRUE(unexpected.empty());
}

TEST_F(ScriptedServicesTest, AQuestionWithoutAnAnswerIsReported) {
    Services().MsgBox("Overwrite?", vbYesNo, "Halvane");
    ASSERT_EQ(unexpected.size(), 1u);
    EXPECT_NE(unexpected[0].find("Overwrite?"), std::string::npos);
}

TEST_F(ScriptedServicesTest, AnAnswerOfTheWrongKindIsReported) {
    ui.ChooseFile("/tmp/a.xml");
    std::vector<std::string> selection;
    const GxDialog dialog{"Pick a folder", false, GxObjectFilter::Folders};
    EXPECT_FALSE(dialog.DoModalOpen(0, selection));
    EXPECT_EQ(unexpected.size(), 1u);
    ui.Verify();
    EXPECT_EQ(unexpected.size(), 2u);  // the file answer was never taken
}

TEST_F(ScriptedServicesTest, FileDialogSetsTheNameOnlyOnOk) {
    ui.ChooseFile("/data/dict.xml");
    ui.ChooseFile("");
    CommonDialog dialog;
    dialog.DialogTitle = "<name> File to Import";
    dialog.Filter = "XML File(*.xml)|*.xml";
    dialog.Flags = cdlOFNHideReadOnly + cdlOFNFileMustExist;
    dialog.ShowOpen();
    EXPECT_EQ(dialog.FileName, "/data/dict.xml");
    dialog.FileName = "typed.xml";
    dialog.ShowSave();
    EXPECT_EQ(dialog.FileName, "typed.xml");
    EXPECT_EQ(ui.Events()[0], (Event{"file-open", "", "<name> File to Import", 4100}));
    EXPECT_EQ(ui.Events()[1].kind, "file-save");
}

TEST_F(ScriptedServicesTest, DialogsOutlivingTheirServicesStayHarmless) {
    std::shared_ptr<IStepProgressor> progress;
    {
        ScriptedServices other;
        auto tracker = other.NewCancelTracker();
        progress = other.NewProgressDialogFactory()->Create(tracker, 0);
    }
    progress->Message("after the test ended");  // must not touch freed state
    SUCCEED();
}

}  // namespace
}  // namespace halvane::ui
