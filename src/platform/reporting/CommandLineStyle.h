#pragma once
// The command line's style of the reporting services. A failure is one line,
// "halvane <command>: <what>: <why>", and ends the run (the desktop's report
// with its call chain only with --trace). Progress is one bar per stage of the
// command, with its percent and, when done, its seconds: redrawn in place on
// a terminal, in GDAL's "0...10...20" style in a log, nothing with --quiet.
// Questions are answered without being shown, and no desktop text (progress
// messages, dialog titles) reaches the console.

#include <chrono>
#include <cstdint>
#include <iosfwd>
#include <string>

#include "platform/runtime/Failure.h"
#include "platform/ui/ConsoleServices.h"

namespace halvane::reporting {

struct CommandLineStyle {
    std::string command;    // "classify": every line is "halvane classify: ..."
    bool trace = false;     // the full report with its call chain, before the line
    bool quiet = false;     // no progress
    bool terminal = false;  // bars redraw in place
};

// A failure's description as one line: line breaks and tabs become single
// blanks, and blanks at either end go.
std::string OneLine(const std::string& text);

// A stop asked for by a signal. RequestStop is safe in a signal handler; the
// run notices at its next step (ThrowIfStopped) and ends as if it failed.
void RequestStop(int signal) noexcept;
int StopRequested() noexcept;
void ClearStopRequest() noexcept;
void ThrowIfStopped();

class StageBars {
public:
    StageBars(std::ostream& out, CommandLineStyle style, int stages);
    ~StageBars() { Stop(); }

    // Ends the stage before, if any, and starts the next one.
    void Begin(const std::string& name);
    // How far the stage is, 0 to 1; the bar only moves forward.
    void Fraction(double fraction);
    // `done` of `total` steps of one pass of the engine. A stage may take
    // several passes: each moves the bar over part of what is left, so the
    // bar never runs back and reaches 100% only when the stage ends.
    void Pass(std::int64_t done, std::int64_t total);
    // The stage is done: the line shows 100% and the seconds, and ends.
    void End();
    // The run stopped: the line of an unfinished stage ends as it stands.
    void Stop();

private:
    void Draw();

    std::ostream& out_;
    CommandLineStyle style_;
    int stages_;
    int stage_ = 0;
    std::string name_;
    double fraction_ = 0.0;
    double passBase_ = 0.0;
    std::int64_t passDone_ = 0;
    int ticks_ = 0;  // of the log style: one per 2.5%
    bool open_ = false;
    std::chrono::steady_clock::time_point started_;
};

// Console services in the command line's style; while one lives, failures
// that reach a top-level procedure are its one-line reports.
class CommandLineServices : public ui::ConsoleServices {
public:
    CommandLineServices(std::ostream& out, CommandLineStyle style, StageBars& bars);
    ~CommandLineServices() override;
    CommandLineServices(const CommandLineServices&) = delete;
    CommandLineServices& operator=(const CommandLineServices&) = delete;

    // A question is answered No (Cancel) unseen; any other message box is a
    // failure of the run, reported in one line.
    ui::MsgBoxResult MsgBox(const std::string& prompt, int buttons,
                            const std::string& title) override;
    // The full report with --trace; else the one line says it all.
    std::shared_ptr<ui::IErrorWindow> NewErrorWindow() override;
    // The stages' progress dialogs move the stage bar and show no text.
    std::shared_ptr<ui::IProgressDialogFactory> NewProgressDialogFactory() override;

    // Prints "halvane <command>: <text>" on one line and stops the run
    // (throws runtime::RunStopped).
    [[noreturn]] void Fail(const std::string& text);
    int Failures() const { return failures_; }

private:
    std::ostream& out_;
    CommandLineStyle style_;
    StageBars& bars_;
    int failures_ = 0;
};

}  // namespace halvane::reporting
