#pragma once
// Services for the command line: messages, reports and the progress bar go to
// a stream (stderr), questions are answered by a fixed policy, and dialogs that
// would need a person answer Cancel.

#include <iosfwd>
#include <memory>

#include "platform/ui/Services.h"

namespace halvane::ui {

enum class QuestionPolicy { AnswerYes, AnswerNo };

// A progress bar on the console's stream, one line as "Processing [######----]
// 3/6  Creating Output files". The console's progress dialogs are such bars,
// and so is a bar of a program's own; on a terminal they take turns on one
// line, redrawn in place, and a log gets one line per new message.
class ConsoleBar : public IStepProgressor, public IProgressDialog2 {
public:
    // What stands on the stream's current line, shared by the bars that draw there.
    struct Line {
        std::size_t width = 0;  // of the bar drawn last
        bool open = false;      // a bar was drawn and no line break followed
    };

    ConsoleBar(std::ostream& out, bool redraw, std::shared_ptr<Line> line);

    void Message(const std::string& text) override;
    void MinRange(std::int32_t value) override { min_ = value; }
    void MaxRange(std::int32_t value) override { max_ = value; }
    void Position(std::int32_t value) override;
    void Animation(int) override {}
    void CancelEnabled(bool) override {}
    void Title(const std::string& title) override { title_ = title; }
    void Description(const std::string&) override {}
    // Ends the line of a bar left on a terminal.
    void HideDialog() override;

private:
    void Draw();

    std::ostream& out_;
    bool redraw_;
    std::shared_ptr<Line> line_;
    std::string title_, message_;
    std::int32_t min_ = 0, max_ = 0, position_ = 0;
};

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

    // A bar of the program's own, titled `title`, apart from the progress
    // dialogs: it is no dialog that ShowProgress opens, and takes no Cancel.
    std::shared_ptr<ConsoleBar> NewBar(const std::string& title);

private:
    std::ostream& out_;
    QuestionPolicy policy_;
    std::shared_ptr<int> reportsShown_ = std::make_shared<int>(0);
    bool redrawBar_;
    std::shared_ptr<ConsoleBar::Line> line_ = std::make_shared<ConsoleBar::Line>();
    int pointer_ = vbDefault;
};

// One line of the console progress bar, e.g. "Processing [######----]  3/6  Creating Output files".
// Exposed for its tests; `width` is the number of cells in the bar.
std::string FormatProgressLine(const std::string& title, const std::string& message,
                               std::int32_t minRange, std::int32_t maxRange, std::int32_t position,
                               int width = 24);

}  // namespace halvane::ui
