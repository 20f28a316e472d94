#include "platform/ui/Services.h"

#include "platform/ui/ConsoleServices.h"

namespace halvane::ui {
namespace {

UiServices*& Installed() {
    static UiServices* installed = nullptr;
    return installed;
}

}  // namespace

UiServices& Services() {
    if (UiServices* services = Installed()) return *services;
    static ConsoleServices fallback;
    return fallback;
}

ServicesScope::ServicesScope(UiServices& services) : previous_(Installed()) {
    Installed() = &services;
}

ServicesScope::~ServicesScope() { Installed() = previous_; }

bool GxDialog::DoModalOpen(WindowHandle parent, std::vector<std::string>& selection) const {
    selection.clear();
    return Services().ShowGxDialog(*this, parent, selection);
}

void CommonDialog::ShowOpen() { Services().ShowFileDialog(*this, FileDialogMode::Open); }

void CommonDialog::ShowSave() { Services().ShowFileDialog(*this, FileDialogMode::Save); }

}  // namespace halvane::ui
