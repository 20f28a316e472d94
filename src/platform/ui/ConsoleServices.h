#pragma once
// Services for the command line: messages, reports and the progress bar go to
// a stream (stderr), questions are answered by a fixed policy, and dialogs that
// would need a person answer Cancel.

#include <iosfwd>
#include <memory>

#include "platform/ui/Services.h"

namespace halvane::ui {

enum class QuestionPolicy { AnswerYes, AnswerNo };

class ConsoleServices : public UiServices {
public:
    // `redrawBar`: draw the progress bar in place (a terminal) rather than
    // one line per step (a log file).
    explicit ConsoleServices(std::ostream& out, QuestionPolicy policy = QuestionPolicy::AnswerNo,
                             bool redrawBar = false);
    // stderr, redrawing the bar when it is a terminal.
    explicit ConsoleServices(QuestionPolicy policy = QuestionPolicy::AnswerNo);

    MsgBoxResult MsgBox(const std::string& prompt, int buttons, const std::string& title) override;
    void Beep() override {}
    void SetMousePointer(int pointer) override { pointer_ = pointer; }
    int MousePointer() const override { return pointer_; }
    std::shared_ptr<IErrorWindow> NewErrorWindow() override;
    std::shared_ptr<ITrackCancel> NewCancelTracker() override;
    std::shared_ptr<IProgressDialogFactory> NewProgressDialogFactory() override;
    bool ShowGxDialog(const GxDialog& dialog, WindowHandle parent,
                      std::vector<std::string>& selection) override;
    bool ShowFileDialog(CommonDialog& dialog, FileDialogMode mode) override;
    WindowHandle HtmlHelp(WindowHandle caller, const std::string& file, int command,
                          const std::string& topic) override;

    // Failure reports shown so far by this console's error windows.
    int ReportsShown() const { return *reportsShown_; }

private:
    std::ostream& out_;
    QuestionPolicy policy_;
    std::shared_ptr<int> reportsShown_ = std::make_shared<int>(0);
    bool redrawBar_;
    int pointer_ = vbDefault;
};

// One line of the console progress bar, e.g. "Processing [######----]  3/6  Creating Output files".
// Exposed for its tests; `width` is the number of cells in the bar.
std::string FormatProgressLine(const std::string& title, const std::string& message,
                               std::int32_t minRange, std::int32_t maxRange, std::int32_t position,
                               int width = 24);

}  // namespace halvane::ui
