#include "platform/ui/ConsoleServices.h"

#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <iostream>

namespace halvane::ui {
namespace {

// Message texts carry CR LF; on one console line they read as one blank.
std::string OneLine(const std::string& text) {
    std::string line;
    for (char c : text) {
        if (c == '\r') continue;
        line += c == '\n' ? ' ' : c;
    }
    return line;
}

class ConsoleErrorWindow : public IErrorWindow {
public:
    ConsoleErrorWindow(std::ostream& out, std::shared_ptr<int> shown)
        : out_(out), shown_(std::move(shown)) {}
    void SetText(const std::string& text) override { text_ = text; }
    void Show(bool show) override {
        if (!show) return;
        out_ << text_ << (text_.ends_with('\n') ? "" : "\n") << std::flush;
        ++*shown_;
    }

private:
    std::ostream& out_;
    std::shared_ptr<int> shown_;
    std::string text_;
};

class ConsoleProgressFactory : public IProgressDialogFactory {
public:
    ConsoleProgressFactory(std::ostream& out, bool redraw, std::shared_ptr<ConsoleBar::Line> line)
        : out_(out), redraw_(redraw), line_(std::move(line)) {}
    std::shared_ptr<IStepProgressor> Create(std::shared_ptr<ITrackCancel>, WindowHandle) override {
        return std::make_shared<ConsoleBar>(out_, redraw_, line_);
    }

private:
    std::ostream& out_;
    bool redraw_;
    std::shared_ptr<ConsoleBar::Line> line_;
};

}  // namespace

std::string FormatProgressLine(const std::string& title, const std::string& message,
                               std::int32_t minRange, std::int32_t maxRange, std::int32_t position,
                               int width) {
    // A position beyond the range is shown as it stands; only the bar is clamped.
    const double span = static_cast<double>(maxRange) - minRange;
    const double done =
        span > 0 ? std::clamp((static_cast<double>(position) - minRange) / span, 0.0, 1.0) : 0.0;
    const int filled = static_cast<int>(done * width + 0.5);
    std::string line = title.empty() ? "" : title + " ";
    line += "[" + std::string(filled, '#') + std::string(width - filled, '-') + "] ";
    line += std::to_string(position) + "/" + std::to_string(maxRange);
    if (!message.empty()) line += "  " + OneLine(message);
    return line;
}

ConsoleBar::ConsoleBar(std::ostream& out, bool redraw, std::shared_ptr<Line> line)
    : out_(out), redraw_(redraw), line_(std::move(line)) {}

void ConsoleBar::Message(const std::string& text) {
    const bool changed = text != message_;
    message_ = text;
    if (redraw_ || changed) Draw();
}

void ConsoleBar::Position(std::int32_t value) {
    position_ = value;
    if (redraw_) Draw();
}

void ConsoleBar::HideDialog() {
    if (redraw_ && line_->open) out_ << '\n' << std::flush;
    line_->open = false;
}

void ConsoleBar::Draw() {
    const std::string line = FormatProgressLine(title_, message_, min_, max_, position_);
    if (redraw_) {
        // Pad over the remains of a longer line drawn before, by this bar or another.
        const std::size_t last = line_->open ? line_->width : 0;
        out_ << '\r' << line << std::string(last > line.size() ? last - line.size() : 0, ' ');
        line_->width = line.size();
        line_->open = true;
    } else {
        out_ << line << '\n';
    }
    out_ << std::flush;
}

ConsoleServices::ConsoleServices(std::ostream& out, QuestionPolicy policy, bool redrawBar)
    : out_(out), policy_(policy), redrawBar_(redrawBar) {}

ConsoleServices::ConsoleServices(QuestionPolicy policy)
    : ConsoleServices(std::cerr, policy, isatty(STDERR_FILENO) != 0) {}

MsgBoxResult ConsoleServices::MsgBox(const std::string& prompt, int buttons,
                                     const std::string& title) {
    const std::string heading = title.empty() ? "" : title + ": ";
    out_ << heading << prompt;
    MsgBoxResult answer = vbOK;
    switch (buttons & kButtonsMask) {
        case vbYesNo:
            answer = policy_ == QuestionPolicy::AnswerYes ? vbYes : vbNo;
            out_ << (answer == vbYes ? " [Yes]" : " [No]");
            break;
        case vbOKCancel:
            answer = policy_ == QuestionPolicy::AnswerYes ? vbOK : vbCancel;
            out_ << (answer == vbOK ? " [OK]" : " [Cancel]");
            break;
        default:
            break;
    }
    out_ << '\n' << std::flush;
    return answer;
}

std::shared_ptr<IErrorWindow> ConsoleServices::NewErrorWindow() {
    return std::make_shared<ConsoleErrorWindow>(out_, reportsShown_);
}

std::shared_ptr<ITrackCancel> ConsoleServices::NewCancelTracker() {
    return std::make_shared<CancelTracker>();
}

std::shared_ptr<IProgressDialogFactory> ConsoleServices::NewProgressDialogFactory() {
    return std::make_shared<ConsoleProgressFactory>(out_, redrawBar_, line_);
}

std::shared_ptr<ConsoleBar> ConsoleServices::NewBar(const std::string& title) {
    auto bar = std::make_shared<ConsoleBar>(out_, redrawBar_, line_);
    bar->Title(title);
    return bar;
}

bool ConsoleServices::ShowGxDialog(const GxDialog& dialog, WindowHandle,
                                   std::vector<std::string>&) {
    out_ << dialog.Title << ": no dialogs on the command line; cancelled\n" << std::flush;
    return false;
}

bool ConsoleServices::ShowFileDialog(CommonDialog& dialog, FileDialogMode) {
    out_ << dialog.DialogTitle << ": no dialogs on the command line; cancelled\n" << std::flush;
    return false;
}

WindowHandle ConsoleServices::HtmlHelp(WindowHandle, const std::string& file, int,
                                       const std::string& topic) {
    std::error_code error;
    if (!std::filesystem::exists(file, error)) return 0;
    out_ << "Help: " << file << " (" << topic << ")\n" << std::flush;
    return 1;
}

}  // namespace halvane::ui
