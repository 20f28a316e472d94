#pragma once
// The desktop services on Qt Widgets. They need a QApplication and run on its
// thread; every dialog but the progress dialog and the help window is modal.

#include <memory>

#include "platform/ui/Services.h"

namespace halvane::ui::qt {

class HelpWindow;

class QtServices : public UiServices {
public:
    QtServices();
    ~QtServices() override;

    MsgBoxResult MsgBox(const std::string& prompt, int buttons, const std::string& title) override;
    void Beep() override;
    void SetMousePointer(int pointer) override;
    int MousePointer() const override { return pointer_; }
    std::shared_ptr<IErrorWindow> NewErrorWindow() override;
    std::shared_ptr<ITrackCancel> NewCancelTracker() override;
    std::shared_ptr<IProgressDialogFactory> NewProgressDialogFactory() override;
    bool ShowGxDialog(const GxDialog& dialog, WindowHandle parent,
                      std::vector<std::string>& selection) override;
    bool ShowFileDialog(CommonDialog& dialog, FileDialogMode mode) override;
    WindowHandle HtmlHelp(WindowHandle caller, const std::string& file, int command,
                          const std::string& topic) override;

    // The help window, once a topic was shown; null before.
    HelpWindow* Help() const { return help_.get(); }

private:
    int pointer_ = vbDefault;
    std::unique_ptr<HelpWindow> help_;
};

}  // namespace halvane::ui::qt
