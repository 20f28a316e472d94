#pragma once
// The windows behind the Qt services: message box, error window, progress
// dialog and help window. They are exposed so that tests can look at them (and
// photograph them) without running a modal loop.

#include <QDialog>
#include <QMessageBox>
#include <memory>
#include <string>

#include "platform/ui/Services.h"

class QLabel;
class QPlainTextEdit;
class QProgressBar;
class QPushButton;
class QTextBrowser;

namespace halvane::ui::qt {

// The box MsgBox shows for `buttons` (buttons + icon + default button). An
// empty title shows the application's name, as a message without a title does.
std::unique_ptr<QMessageBox> MakeMessageBox(const std::string& prompt, int buttons,
                                            const std::string& title);

// The answer of a box that was closed with `clicked`.
MsgBoxResult ResultOf(QMessageBox::StandardButton clicked);

// The error window: the report as selectable text and a Close button.
class ErrorWindow : public QDialog, public IErrorWindow {
public:
    ErrorWindow();
    void SetText(const std::string& text) override;
    // True waits until the user has closed it, so a report is read before the
    // reporting procedure carries on; false takes it away.
    void Show(bool show) override;

    QPlainTextEdit* report;
    QPushButton* closeButton;
};

// A tracker that lets the window system deliver a pending Cancel click before
// it answers, so a job on the UI thread sees the press at its next step.
class EventPumpingTracker : public CancelTracker {
public:
    bool Continue() override;
};

// The progress dialog. It is a window of its own (no owner) and lets Qt
// process events at every call, so that it stays painted and its Cancel
// clickable while a long job runs on the UI thread.
class ProgressDialog : public QDialog, public IStepProgressor, public IProgressDialog2 {
public:
    explicit ProgressDialog(std::shared_ptr<ITrackCancel> tracker);

    void Message(const std::string& text) override;
    void MinRange(std::int32_t value) override;
    void MaxRange(std::int32_t value) override;
    void Position(std::int32_t value) override;
    void Animation(int animation) override;
    void CancelEnabled(bool enabled) override;
    void Title(const std::string& title) override;
    void Description(const std::string& description) override;
    void HideDialog() override;

    QLabel* description;
    QLabel* message;
    QProgressBar* bar;
    QPushButton* cancelButton;

private:
    void ShowBar();
    void Repaint();

    std::shared_ptr<ITrackCancel> tracker_;
    std::int32_t min_ = 0, max_ = 0, position_ = 0;
};

// The help window: one for the whole program, showing one topic at a time.
class HelpWindow : public QDialog {
public:
    HelpWindow();
    // Shows `topic` of the help folder `file`; false (and nothing shown) when
    // either is missing.
    bool ShowTopic(const std::string& file, const std::string& topic);

    QTextBrowser* browser;
};

}  // namespace halvane::ui::qt
