#include <gtest/gtest.h>

#include <sstream>

#include "platform/ui/ConsoleServices.h"

namespace halvane::ui {
namespace {

TEST(ConsoleServicesTest, QuestionsFollowThePolicy) {
    std::ostringstream out;
    ConsoleServices yes(out, QuestionPolicy::AnswerYes);
    ConsoleServices no(out, QuestionPolicy::AnswerNo);
    EXPECT_EQ(yes.MsgBox("Add to map?", vbYesNo, "Halvane"), vbYes);
    EXPECT_EQ(no.MsgBox("Add to map?", vbYesNo, "Halvane"), vbNo);
    EXPECT_EQ(no.MsgBox("Done", vbOKOnly, ""), vbOK);
    EXPECT_EQ(out.str(), "Halvane: Add to map? [Yes]\nHalvane: Add to map? [No]\nDone\n");
}

TEST(ConsoleServicesTest, DialogsThatNeedAPersonAreCancelled) {
    std::ostringstream out;
    ConsoleServices console(out);
    std::vector<std::string> selection;
    const GxDialog pick{"Pick", false, GxObjectFilter::Folders};
    EXPECT_FALSE(console.ShowGxDialog(pick, 0, selection));
    CommonDialog dialog;
    dialog.FileName = "keep.xml";
    EXPECT_FALSE(console.ShowFileDialog(dialog, FileDialogMode::Save));
    EXPECT_EQ(dialog.FileName, "keep.xml");
}

TEST(ConsoleProgressTest, FormatsTitleBarPositionAndMessageOnOneLine) {
    EXPECT_EQ(FormatProgressLine("Processing", "Step\r\ntwo", 0, 6, 3, 10),
              "Processing [#####-----] 3/6  Step two");
    EXPECT_EQ(FormatProgressLine("", "", 0, 6, 9, 4), "[####] 9/6");  // beyond the range
    EXPECT_EQ(FormatProgressLine("", "", 0, 0, 0, 4), "[----] 0/0");  // empty range
    EXPECT_EQ(FormatProgressLine("", "", 0, 6, -1, 4), "[----] -1/6");
}

TEST(ConsoleProgressTest, ALogGetsOneLinePerNewMessage) {
    std::ostringstream out;
    ConsoleServices console(out, QuestionPolicy::AnswerNo, /*redrawBar=*/false);
    auto progress = console.NewProgressDialogFactory()->Create(console.NewCancelTracker(), 0);
    auto dialog = std::dynamic_pointer_cast<IProgressDialog2>(progress);
    ASSERT_TRUE(dialog);
    dialog->Title("Processing");
    progress->MinRange(0);
    progress->MaxRange(2);
    progress->Position(1);
    progress->Message("one");
    progress->Position(2);
    progress->Message("one");
    progress->Message("two");
    dialog->HideDialog();
    EXPECT_EQ(out.str(), FormatProgressLine("Processing", "one", 0, 2, 1) + "\n" +
                             FormatProgressLine("Processing", "two", 0, 2, 2) + "\n");
}

TEST(ConsoleProgressTest, BarsOnATerminalTakeTurnsOnOneLineAndEndItOnce) {
    std::ostringstream out;
    ConsoleServices console(out, QuestionPolicy::AnswerNo, /*redrawBar=*/true);
    auto dialog = console.NewProgressDialogFactory()->Create(console.NewCancelTracker(), 0);
    auto own = console.NewBar("halvane classify");
    dialog->MaxRange(100);
    dialog->Message("Creating Output files .. Combining Class Grids");
    own->MaxRange(100);
    own->Position(40);
    std::dynamic_pointer_cast<IProgressDialog2>(dialog)->HideDialog();
    own->HideDialog();
    own->Position(50);

    const std::string first =
        FormatProgressLine("", "Creating Output files .. Combining Class Grids", 0, 100, 0);
    const std::string second = FormatProgressLine("halvane classify", "", 0, 100, 40);
    ASSERT_GT(first.size(), second.size());
    // The shorter line blanks out what is left of the longer one; a line that
    // was ended is not padded over.
    EXPECT_EQ(out.str(), "\r" + first + "\r" + second +
                             std::string(first.size() - second.size(), ' ') + "\n\r" +
                             FormatProgressLine("halvane classify", "", 0, 100, 50));
}

}  // namespace
}  // namespace halvane::ui
