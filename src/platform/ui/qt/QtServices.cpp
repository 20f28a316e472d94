#include "platform/ui/qt/QtServices.h"

#include <QApplication>
#include <QFileDialog>
#include <QPointer>
#include <QWidget>
#include <QWindow>

#include "platform/ui/qt/QtBrowse.h"
#include "platform/ui/qt/QtDialogs.h"

namespace halvane::ui::qt {
namespace {

// Windows handed out as shared references may outlive the QApplication in
// module state (the error window is kept until the component unloads); a
// widget cannot be destroyed after it, so such a late release leaves it.
template <class Widget>
std::shared_ptr<Widget> Shared(Widget* widget) {
    return std::shared_ptr<Widget>(widget, [](Widget* w) {
        if (QCoreApplication::instance()) delete w;
    });
}

class ProgressDialogFactory : public IProgressDialogFactory {
public:
    // The owner handle is not used: the dialog is a window of its own, so that
    // it can be seen whichever page started the job.
    std::shared_ptr<IStepProgressor> Create(std::shared_ptr<ITrackCancel> trackCancel,
                                            WindowHandle) override {
        return Shared(new ProgressDialog(std::move(trackCancel)));
    }
};

QWidget* WindowOf(WindowHandle handle) {
    return handle == 0 ? nullptr : QWidget::find(static_cast<WId>(handle));
}

}  // namespace

QtServices::QtServices() = default;
QtServices::~QtServices() = default;

MsgBoxResult QtServices::MsgBox(const std::string& prompt, int buttons, const std::string& title) {
    auto box = MakeMessageBox(prompt, buttons, title);
    box->exec();
    return ResultOf(box->standardButton(box->clickedButton()));
}

void QtServices::Beep() { QApplication::beep(); }

void QtServices::SetMousePointer(int pointer) {
    // The override cursor stacks; the screen's pointer is one setting.
    while (QApplication::overrideCursor()) QApplication::restoreOverrideCursor();
    if (pointer == vbHourglass) QApplication::setOverrideCursor(Qt::WaitCursor);
    pointer_ = pointer;
}

std::shared_ptr<IErrorWindow> QtServices::NewErrorWindow() { return Shared(new ErrorWindow); }

std::shared_ptr<ITrackCancel> QtServices::NewCancelTracker() {
    return std::make_shared<EventPumpingTracker>();
}

std::shared_ptr<IProgressDialogFactory> QtServices::NewProgressDialogFactory() {
    return std::make_shared<ProgressDialogFactory>();
}

bool QtServices::ShowGxDialog(const GxDialog& dialog, WindowHandle parent,
                              std::vector<std::string>& selection) {
    if (dialog.ObjectFilter == GxObjectFilter::RasterDatasets) {
        RasterBrowser browser(dialog.Title);
        if (QWidget* owner = WindowOf(parent)) browser.setParent(owner, Qt::Dialog);
        if (browser.exec() != QDialog::Accepted) return false;
        selection = {browser.Chosen()};
        return true;
    }
    QFileDialog folders(WindowOf(parent));
    ConfigureFolderDialog(folders, dialog.Title);
    if (folders.exec() != QDialog::Accepted) return false;
    for (const QString& path : folders.selectedFiles()) selection.push_back(path.toStdString());
    if (!dialog.AllowMultiSelect && selection.size() > 1) selection.resize(1);
    return !selection.empty();
}

bool QtServices::ShowFileDialog(CommonDialog& dialog, FileDialogMode mode) {
    QFileDialog files;
    ConfigureFileDialog(files, dialog, mode);
    if (files.exec() != QDialog::Accepted || files.selectedFiles().isEmpty()) return false;
    dialog.FileName = files.selectedFiles().first().toStdString();
    const int index = files.nameFilters().indexOf(files.selectedNameFilter());
    if (index >= 0) dialog.FilterIndex = index + 1;
    return true;
}

WindowHandle QtServices::HtmlHelp(WindowHandle caller, const std::string& file, int command,
                                  const std::string& topic) {
    if (command != HH_DISPLAY_TOPIC) return 0;
    if (!help_) help_ = std::make_unique<HelpWindow>();
    // With an owner the help window belongs to that window; without, it
    // stands on its own.
    const WId id = help_->winId();
    QWidget* owner = WindowOf(caller);
    help_->windowHandle()->setTransientParent(owner ? owner->window()->windowHandle() : nullptr);
    if (!help_->ShowTopic(file, topic)) return 0;
    return static_cast<WindowHandle>(id);
}

}  // namespace halvane::ui::qt
