#include "platform/ui/ScriptedServices.h"

#include <cstdlib>
#include <iostream>

#include "platform/runtime/Failure.h"

namespace halvane::ui {
namespace {

constexpr const char* kScriptSource = "ScriptedServices";

}  // namespace

std::string ScriptedServices::KindOfMessage(int buttons) {
    if ((buttons & kButtonsMask) == vbYesNo) return "question";
    switch (buttons & kIconMask) {
        case vbCritical:
            return "stop";
        case vbQuestion:
            return "question";
        case vbExclamation:
            return "exclamation";
        case vbInformation:
            return "information";
        default:
            return "notice";
    }
}

namespace {

class ScriptedErrorWindow : public IErrorWindow {
public:
    explicit ScriptedErrorWindow(std::weak_ptr<ScriptedProgressDialog::Shared> shared)
        : shared_(std::move(shared)) {}
    void SetText(const std::string& text) override {
        if (auto shared = shared_.lock()) shared->MaybeFail("SetText");
        text_ = text;
    }
    void Show(bool show) override {
        auto shared = shared_.lock();
        if (!shared) return;
        shared->MaybeFail("Show");
        if (show) shared->Record({"error-window", text_, {}, 0});
    }

private:
    std::weak_ptr<ScriptedProgressDialog::Shared> shared_;
    std::string text_;
};

class ScriptedProgressFactory : public IProgressDialogFactory {
public:
    explicit ScriptedProgressFactory(std::weak_ptr<ScriptedProgressDialog::Shared> shared)
        : shared_(std::move(shared)) {}
    std::shared_ptr<IStepProgressor> Create(std::shared_ptr<ITrackCancel> trackCancel,
                                            WindowHandle owner) override {
        auto shared = shared_.lock();
        if (!shared) throw runtime::RuntimeFailure(runtime::kObjectNotSet);
        shared->MaybeFail("Create");
        auto dialog =
            std::make_shared<ScriptedProgressDialog>(shared, std::move(trackCancel), owner);
        shared->dialogs.push_back(dialog);
        return dialog;
    }

private:
    std::weak_ptr<ScriptedProgressDialog::Shared> shared_;
};

}  // namespace

void ScriptedProgressDialog::Shared::Record(Event event) {
    events.push_back(std::move(event));
    if (onEvent) onEvent(events.back());
}

void ScriptedServices::Record(Event event) { shared_->Record(std::move(event)); }

void ScriptedProgressDialog::Shared::MaybeFail(const std::string& operation) {
    auto found = failures.find(operation);
    if (found == failures.end() || found->second.empty()) return;
    const std::int32_t number = found->second.front();
    found->second.pop_front();
    throw runtime::Failure(
        number, kScriptSource,
        "Scripted failure of " + operation + ": " + runtime::RuntimeDescription(number));
}

ScriptedProgressDialog::ScriptedProgressDialog(std::shared_ptr<Shared> shared,
                                               std::shared_ptr<ITrackCancel> tracker,
                                               WindowHandle owner)
    : owner(owner), shared_(shared), tracker_(std::move(tracker)) {}

void ScriptedProgressDialog::Call(const std::string& operation, const std::string& argument) {
    if (auto shared = shared_.lock()) shared->MaybeFail(operation);
    calls.push_back(argument.empty() ? operation : operation + " " + argument);
}

void ScriptedProgressDialog::Message(const std::string& text) {
    Call("Message", text);
    message = text;
    auto shared = shared_.lock();
    if (!shared) return;
    shared->Record({"progress", text, title, 0});
    if (shared->onProgressMessage) shared->onProgressMessage(*this);
}

void ScriptedProgressDialog::MinRange(std::int32_t value) {
    Call("MinRange", std::to_string(value));
    minRange = value;
}

void ScriptedProgressDialog::MaxRange(std::int32_t value) {
    Call("MaxRange", std::to_string(value));
    maxRange = value;
}

void ScriptedProgressDialog::Position(std::int32_t value) {
    Call("Position", std::to_string(value));
    position = value;
}

void ScriptedProgressDialog::Animation(int value) {
    Call("Animation", std::to_string(value));
    animation = value;
}

void ScriptedProgressDialog::CancelEnabled(bool enabled) {
    Call("CancelEnabled", enabled ? "True" : "False");
    cancelEnabled = enabled;
}

void ScriptedProgressDialog::Title(const std::string& text) {
    Call("Title", text);
    title = text;
}

void ScriptedProgressDialog::Description(const std::string& text) {
    Call("Description", text);
    description = text;
}

void ScriptedProgressDialog::HideDialog() {
    Call("HideDialog", {});
    visible = false;
}

void ScriptedProgressDialog::PressCancel() {
    if (cancelEnabled && tracker_) tracker_->Cancel();
}

ScriptedServices::ScriptedServices()
    : shared_(std::make_shared<ScriptedProgressDialog::Shared>()),
      onProgressMessage(shared_->onProgressMessage),
      onEvent(shared_->onEvent),
      onUnexpected([](const std::string& what) {
          std::cerr << "ScriptedServices: " << what << std::endl;
          std::abort();
      }) {}

void ScriptedServices::Answer(MsgBoxResult answer) { responses_.emplace_back(answer); }

void ScriptedServices::Select(std::vector<std::string> paths) {
    responses_.emplace_back(std::move(paths));
}

void ScriptedServices::ChooseFile(std::string path) { responses_.emplace_back(std::move(path)); }

void ScriptedServices::FailNext(const std::string& operation, std::int32_t number) {
    shared_->failures[operation].push_back(number);
}

const std::vector<Event>& ScriptedServices::Events() const { return shared_->events; }

std::vector<Event> ScriptedServices::Messages() const {
    std::vector<Event> boxes;
    for (const Event& event : shared_->events) {
        if (event.kind == "stop" || event.kind == "notice" || event.kind == "question" ||
            event.kind == "exclamation" || event.kind == "information") {
            boxes.push_back(event);
        }
    }
    return boxes;
}

const std::vector<std::shared_ptr<ScriptedProgressDialog>>& ScriptedServices::ProgressDialogs()
    const {
    return shared_->dialogs;
}

int ScriptedServices::ErrorWindowsMade() const { return shared_->errorWindows; }

void ScriptedServices::Verify() {
    if (!responses_.empty()) {
        onUnexpected(std::to_string(responses_.size()) + " scripted answer(s) left untaken");
        responses_.clear();
    }
}

template <class T>
bool ScriptedServices::Take(const std::string& dialog, T& answer) {
    if (responses_.empty() || !std::holds_alternative<T>(responses_.front())) {
        onUnexpected("no scripted answer for " + dialog);
        return false;
    }
    answer = std::get<T>(responses_.front());
    responses_.pop_front();
    return true;
}

MsgBoxResult ScriptedServices::MsgBox(const std::string& prompt, int buttons,
                                      const std::string& title) {
    Record({KindOfMessage(buttons), prompt, title, buttons});
    if ((buttons & kButtonsMask) == vbOKOnly) return vbOK;
    MsgBoxResult answer = vbCancel;
    Take("message box \"" + prompt + "\"", answer);
    return answer;
}

void ScriptedServices::Beep() { Record({"beep", {}, {}, 0}); }

void ScriptedServices::SetMousePointer(int pointer) {
    pointer_ = pointer;
    Record({"pointer", std::to_string(pointer), {}, 0});
}

int ScriptedServices::MousePointer() const { return pointer_; }

std::shared_ptr<IErrorWindow> ScriptedServices::NewErrorWindow() {
    shared_->MaybeFail("NewErrorWindow");
    ++shared_->errorWindows;
    return std::make_shared<ScriptedErrorWindow>(shared_);
}

std::shared_ptr<ITrackCancel> ScriptedServices::NewCancelTracker() {
    return std::make_shared<CancelTracker>();
}

std::shared_ptr<IProgressDialogFactory> ScriptedServices::NewProgressDialogFactory() {
    return std::make_shared<ScriptedProgressFactory>(shared_);
}

bool ScriptedServices::ShowGxDialog(const GxDialog& dialog, WindowHandle,
                                    std::vector<std::string>& selection) {
    Record({"browse", {}, dialog.Title, dialog.AllowMultiSelect ? 1 : 0});
    if (!Take("browse dialog \"" + dialog.Title + "\"", selection)) return false;
    return !selection.empty();
}

bool ScriptedServices::ShowFileDialog(CommonDialog& dialog, FileDialogMode mode) {
    const bool save = mode == FileDialogMode::Save;
    Record(
        {save ? "file-save" : "file-open", dialog.FileName, dialog.DialogTitle, dialog.Flags});
    std::string chosen;
    if (!Take("file dialog \"" + dialog.DialogTitle + "\"", chosen) || chosen.empty()) return false;
    dialog.FileName = chosen;
    return true;
}

WindowHandle ScriptedServices::HtmlHelp(WindowHandle caller, const std::string& file, int,
                                        const std::string& topic) {
    Record({"help", topic, file, static_cast<int>(caller)});
    return 0;
}

}  // namespace halvane::ui
