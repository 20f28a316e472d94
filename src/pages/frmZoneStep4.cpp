#include "pages/frmZoneStep4.h"

#include <QLabel>
#include <QPushButton>

#include "engine/Session.h"

namespace halvane::pages {

Slot<frmZoneStep4Page> frmZoneStep4("frmZoneStep4");

namespace {
constexpr const char* kModule = "frmZoneStep4";
}

frmZoneStep4Page::frmZoneStep4Page(PageSlot& slot) : Page(slot, kModule) {
    NewLabel("lblHeading", QStringLiteral("Classification dictionary"));
    cmdAbout_ClassDictionary = NewButton(
        "cmdAbout_ClassDictionary", QStringLiteral("More about classification dictionaries..."));
    NewButtonRow();
    // This help handler passes its failures on, unlike every other.
    OnClick(cmdAbout_ClassDictionary, "cmdAbout_ClassDictionary_Click", kPassOn,
            [this] { ShowHelp("classdict.htm"); });
    OnClick(cmdNext, "cmdNext_Click", kTopLevel, [this] { HandOver(frmZoneStep8); });
    OnClick(cmdBack, "cmdBack_Click", kTopLevel, [this] { GoBack(); });
    OnClick(cmdCancel, "cmdCancel_Click", kTopLevel, [] { ExitProj(); });
}

void frmZoneStep4Page::Form_Load() {
    Event("Form_Load", kTopLevel, [this] {
        ApplyRunMode();
        m_frmPrevious = g_frm_PreviousPage;
    });
}

}  // namespace halvane::pages
