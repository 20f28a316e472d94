#include "platform/reporting/CommandLineStyle.h"

#include <algorithm>
#include <atomic>
#include <csignal>
#include <iomanip>
#include <ostream>
#include <sstream>

#include "platform/reporting/ErrorHandling.h"

namespace halvane::reporting {
namespace {

volatile std::sig_atomic_t g_stopSignal = 0;

constexpr int kBarWidth = 24;
constexpr int kLogTicks = 40;  // 2.5% each, as GDAL's progress prints them

class StageProgress : public ui::IStepProgressor, public ui::IProgressDialog2 {
public:
    explicit StageProgress(StageBars& bars) : bars_(bars) {}
    void Message(const std::string&) override {}
    void MinRange(std::int32_t value) override { min_ = value; }
    void MaxRange(std::int32_t value) override { max_ = value; }
    void Position(std::int32_t value) override {
        if (max_ > min_) bars_.Fraction(static_cast<double>(value - min_) / (max_ - min_));
    }
    void Animation(int) override {}
    void CancelEnabled(bool) override {}
    void Title(const std::string&) override {}
    void Description(const std::string&) override {}
    void HideDialog() override {}

private:
    StageBars& bars_;
    std::int32_t min_ = 0, max_ = 0;
};

class StageProgressFactory : public ui::IProgressDialogFactory {
public:
    explicit StageProgressFactory(StageBars& bars) : bars_(bars) {}
    std::shared_ptr<ui::IStepProgressor> Create(std::shared_ptr<ui::ITrackCancel>,
                                                ui::WindowHandle) override {
        return std::make_shared<StageProgress>(bars_);
    }

private:
    StageBars& bars_;
};

class TraceWindow : public ui::IErrorWindow {
public:
    TraceWindow(std::ostream& out, bool shows) : out_(out), shows_(shows) {}
    void SetText(const std::string& text) override { text_ = text; }
    void Show(bool show) override {
        if (!show || !shows_) return;
        std::string text;
        for (char c : text_) {
            if (c != '\r') text += c;
        }
        out_ << text << (text.ends_with('\n') ? "" : "\n") << std::flush;
    }

private:
    std::ostream& out_;
    bool shows_;
    std::string text_;
};

}  // namespace

std::string OneLine(const std::string& text) {
    std::string line;
    for (char c : text) {
        const bool blank = c == '\r' || c == '\n' || c == '\t' || c == ' ';
        if (blank) {
            if (!line.empty() && line.back() != ' ') line += ' ';
        } else {
            line += c;
        }
    }
    while (!line.empty() && line.back() == ' ') line.pop_back();
    return line;
}

void RequestStop(int signal) noexcept { g_stopSignal = signal; }
int StopRequested() noexcept { return g_stopSignal; }
void ClearStopRequest() noexcept { g_stopSignal = 0; }

void ThrowIfStopped() {
    if (const int signal = g_stopSignal) throw runtime::RunStopped{signal};
}

StageBars::StageBars(std::ostream& out, CommandLineStyle style, int stages)
    : out_(out), style_(std::move(style)), stages_(stages) {}

void StageBars::Begin(const std::string& name) {
    End();
    name_ = name;
    ++stage_;
    fraction_ = passBase_ = 0.0;
    passDone_ = 0;
    ticks_ = 0;
    started_ = std::chrono::steady_clock::now();
    open_ = true;
    if (style_.quiet) return;
    if (style_.terminal) {
        Draw();
    } else {
        out_ << stage_ << "/" << stages_ << " " << name_ << ": 0" << std::flush;
    }
}

void StageBars::Fraction(double fraction) {
    ThrowIfStopped();
    if (!open_ || !(fraction > fraction_)) return;
    fraction_ = std::min(fraction, 1.0);
    Draw();
}

void StageBars::Pass(std::int64_t done, std::int64_t total) {
    if (total <= 0) return;
    // A count that starts again is the next pass.
    if (done < passDone_) passBase_ = fraction_;
    passDone_ = done;
    const double within = static_cast<double>(done) / static_cast<double>(total);
    Fraction(passBase_ + (1.0 - passBase_) * 0.9 * within);
}

void StageBars::End() {
    if (!open_) return;
    fraction_ = 1.0;
    Draw();
    open_ = false;
    if (style_.quiet) return;
    const std::chrono::duration<double> took = std::chrono::steady_clock::now() - started_;
    std::ostringstream seconds;
    seconds << std::fixed << std::setprecision(1) << took.count() << " s";
    out_ << (style_.terminal ? " " : " - done in ") << seconds.str() << "\n" << std::flush;
}

void StageBars::Stop() {
    if (!open_) return;
    open_ = false;
    if (!style_.quiet) out_ << "\n" << std::flush;
}

void StageBars::Draw() {
    if (style_.quiet || !open_) return;
    if (!style_.terminal) {
        // Only ever appends: a log keeps one line per stage.
        const int ticks = static_cast<int>(fraction_ * kLogTicks);
        for (; ticks_ < ticks; ++ticks_) {
            const int tick = ticks_ + 1;
            if (tick % 4 == 0) {
                out_ << tick * 100 / kLogTicks;
            } else {
                out_ << '.';
            }
        }
        out_ << std::flush;
        return;
    }
    const int filled = static_cast<int>(fraction_ * kBarWidth + 0.5);
    std::ostringstream line;
    line << "\r  " << stage_ << "/" << stages_ << "  " << std::left << std::setw(40) << name_
         << " [" << std::string(filled, '#') << std::string(kBarWidth - filled, '-') << "] "
         << std::right << std::setw(3) << static_cast<int>(fraction_ * 100 + 0.5) << "%";
    out_ << line.str() << std::flush;
}

CommandLineServices::CommandLineServices(std::ostream& out, CommandLineStyle style, StageBars& bars)
    : ConsoleServices(out, ui::QuestionPolicy::AnswerNo, style.terminal),
      out_(out),
      style_(std::move(style)),
      bars_(bars) {
    TopLevelReporting() = {style_.trace, [this](const runtime::Failure& origin) {
                               Fail(OneLine(origin.description));
                           }};
}

CommandLineServices::~CommandLineServices() { TopLevelReporting() = {}; }

ui::MsgBoxResult CommandLineServices::MsgBox(const std::string& prompt, int buttons,
                                             const std::string&) {
    switch (buttons & ui::kButtonsMask) {
        case ui::vbYesNo:
            return ui::vbNo;
        case ui::vbOKCancel:
            return ui::vbCancel;
        default:
            Fail(OneLine(prompt));
    }
}

std::shared_ptr<ui::IErrorWindow> CommandLineServices::NewErrorWindow() {
    bars_.Stop();
    return std::make_shared<TraceWindow>(out_, style_.trace);
}

std::shared_ptr<ui::IProgressDialogFactory> CommandLineServices::NewProgressDialogFactory() {
    return std::make_shared<StageProgressFactory>(bars_);
}

void CommandLineServices::Fail(const std::string& text) {
    bars_.Stop();
    out_ << "halvane " << style_.command << ": " << text << "\n" << std::flush;
    ++failures_;
    throw runtime::RunStopped{0};
}

}  // namespace halvane::reporting
