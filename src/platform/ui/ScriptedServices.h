#pragma once
// A scripted stand-in for the desktop, for tests: it answers dialogs from a
// queue, in order, and records every call as an event, so that a test reads
// like a user's session. A dialog that the script did not expect is a test
// failure, reported through `onUnexpected`.

#include <cstdint>
#include <deque>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <variant>
#include <vector>

#include "platform/ui/Services.h"

namespace halvane::ui {

struct Event {
    std::string kind;   // "stop", "notice", "question", "exclamation", "information",
                        // "beep", "pointer", "error-window", "progress", "browse",
                        // "file-open", "file-save", "help"
    std::string text;   // message, report, progress message, file name or topic
    std::string title;  // title given, if any
    int flags = 0;      // message box style, or dialog flags

    bool operator==(const Event&) const = default;
};

// What the scripted progress dialog was told, in order, and where it stands.
class ScriptedProgressDialog : public IStepProgressor, public IProgressDialog2 {
public:
    struct Shared;
    ScriptedProgressDialog(std::shared_ptr<Shared> shared, std::shared_ptr<ITrackCancel> tracker,
                           WindowHandle owner);

    void Message(const std::string& text) override;
    void MinRange(std::int32_t value) override;
    void MaxRange(std::int32_t value) override;
    void Position(std::int32_t value) override;
    void Animation(int animation) override;
    void CancelEnabled(bool enabled) override;
    void Title(const std::string& title) override;
    void Description(const std::string& description) override;
    void HideDialog() override;

    // The user's click on Cancel.
    void PressCancel();

    std::vector<std::string> calls;  // "MinRange 0", "Title Processing", ...
    WindowHandle owner;
    std::string title, description, message;
    std::int32_t minRange = 0, maxRange = 0, position = 0;
    int animation = -1;
    bool cancelEnabled = false;
    bool visible = true;

private:
    void Call(const std::string& operation, const std::string& argument);

    std::weak_ptr<Shared> shared_;  // the services own their dialogs, not the other way
    std::shared_ptr<ITrackCancel> tracker_;
};

class ScriptedServices : public UiServices {
    // First, since onProgressMessage below refers into it.
    std::shared_ptr<ScriptedProgressDialog::Shared> shared_;

public:
    ScriptedServices();

    // --- the script: answers taken in order by the dialogs that need one
    void Answer(MsgBoxResult answer);             // next Yes/No or OK/Cancel box
    void Select(std::vector<std::string> paths);  // next browse dialog; none = Cancel
    void ChooseFile(std::string path);            // next file dialog; "" = Cancel
    // The next call of `operation` on a progress dialog or error window
    // ("Title", "MinRange", "SetText", ...) fails with `number`.
    void FailNext(const std::string& operation, std::int32_t number);
    // Runs after every progress message, so a test can press Cancel mid-job.
    std::function<void(ScriptedProgressDialog&)>& onProgressMessage;
    // Runs at every event as it is recorded, for a log that follows the session live.
    std::function<void(const Event&)>& onEvent;
    // Called with a description of a dialog the script had no answer for, or
    // of answers left over at Verify(). The default prints it and aborts.
    std::function<void(const std::string&)> onUnexpected;

    // --- what happened
    const std::vector<Event>& Events() const;
    // Only the message boxes, the kinds a user reads.
    std::vector<Event> Messages() const;
    const std::vector<std::shared_ptr<ScriptedProgressDialog>>& ProgressDialogs() const;
    int ErrorWindowsMade() const;
    // Reports answers the script holds that no dialog took.
    void Verify();

    // --- UiServices
    MsgBoxResult MsgBox(const std::string& prompt, int buttons, const std::string& title) override;
    // The kind of event a message box of this style is recorded as.
    static std::string KindOfMessage(int buttons);
    void Beep() override;
    void SetMousePointer(int pointer) override;
    int MousePointer() const override;
    std::shared_ptr<IErrorWindow> NewErrorWindow() override;
    std::shared_ptr<ITrackCancel> NewCancelTracker() override;
    std::shared_ptr<IProgressDialogFactory> NewProgressDialogFactory() override;
    bool ShowGxDialog(const GxDialog& dialog, WindowHandle parent,
                      std::vector<std::string>& selection) override;
    bool ShowFileDialog(CommonDialog& dialog, FileDialogMode mode) override;
    WindowHandle HtmlHelp(WindowHandle caller, const std::string& file, int command,
                          const std::string& topic) override;

protected:
    void Record(Event event);

private:
    using Response = std::variant<MsgBoxResult, std::vector<std::string>, std::string>;
    template <class T>
    bool Take(const std::string& dialog, T& answer);

    std::deque<Response> responses_;
    int pointer_ = vbDefault;
};

// The log and script that the services share with the dialogs and error
// windows they make. Those hold it weakly: a dialog left in module state after
// its test has ended records nothing and keeps nothing alive.
struct ScriptedProgressDialog::Shared {
    std::vector<Event> events;
    std::map<std::string, std::deque<std::int32_t>> failures;
    std::vector<std::shared_ptr<ScriptedProgressDialog>> dialogs;
    std::function<void(ScriptedProgressDialog&)> onProgressMessage;
    std::function<void(const Event&)> onEvent;
    int errorWindows = 0;

    void Record(Event event);

    // Raises the failure scripted for `operation`, if any.
    void MaybeFail(const std::string& operation);
};

}  // namespace halvane::ui
