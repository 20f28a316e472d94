#include "pages/frmZoneStep3.h"

#include <QLabel>
#include <QPushButton>

#include "engine/Session.h"

namespace halvane::pages {

Slot<frmZoneStep3Page> frmZoneStep3("frmZoneStep3");

namespace {
constexpr const char* kModule = "frmZoneStep3";
}

frmZoneStep3Page::frmZoneStep3Page(PageSlot& slot) : Page(slot, kModule) {
    NewLabel("lblHeading", QStringLiteral("BPI grid standardization"));
    cmdSubmit = NewButton("cmdSubmit", QStringLiteral("Submit"));
    cmdAboutBPIGridStandardization = NewButton(
        "cmdAboutBPIGridStandardization", QStringLiteral("More about BPI grid standardization..."));
    NewButtonRow();
    OnClick(cmdAboutBPIGridStandardization, "cmdAboutBPIGridStandardization_Click", kTopLevel,
            [this] { ShowHelp("bpistd.htm"); });
    OnClick(cmdNext, "cmdNext_Click", kTopLevel, [this] { HandOver(frmZoneStep4); });
    OnClick(cmdBack, "cmdBack_Click", kTopLevel, [this] { GoBack(); });
    OnClick(cmdCancel, "cmdCancel_Click", kTopLevel, [] { ExitProj(); });
}

void frmZoneStep3Page::Form_Load() {
    Event("Form_Load", kTopLevel, [this] {
        const bool haveInputs = !g_s_SS_BPI_InputDataSet.empty() &&
                                !g_s_LS_BPI_InputDataSet.empty() && !g_s_WorkingDir.empty();
        if (!HasInputElse(haveInputs, frmZoneStep3_reqdata)) return;
        ApplyRunMode();
        m_frmPrevious = g_frm_PreviousPage;
    });
}

}  // namespace halvane::pages
