#include "pages/frmZoneSetup_resampling.h"

#include <QLabel>
#include <QPushButton>

#include "engine/Session.h"

namespace halvane::pages {

Slot<frmZoneSetup_resamplingPage> frmZoneSetup_resampling("frmZoneSetup_resampling");

namespace {
constexpr const char* kModule = "frmZoneSetup_resampling";
}

frmZoneSetup_resamplingPage::frmZoneSetup_resamplingPage(PageSlot& slot) : Page(slot, kModule) {
    NewLabel("lblHeading", QStringLiteral("Resampling"));
    cmdSubmitResampleData = NewButton("cmdSubmitResampleData", QStringLiteral("Submit"));
    cmdWhyResample = NewButton("cmdWhyResample", QStringLiteral("More about resampling..."));
    NewButtonRow();
    OnClick(cmdWhyResample, "cmdWhyResample_Click", kTopLevel,
            [this] { ShowHelp("resample.htm"); });
    OnClick(cmdNext, "cmdNext_Click", kTopLevel, [this] { HandOver(frmZoneStep1); });
    OnClick(cmdBack, "cmdBack_Click", kTopLevel, [this] { GoBack(); });
    OnClick(cmdCancel, "cmdCancel_Click", kTopLevel, [] { ExitProj(); });
}

void frmZoneSetup_resamplingPage::Form_Load() {
    Event("Form_Load", kTopLevel, [this] {
        if (!HasInputElse(!g_s_InputDataSet.empty(), frmZoneSetup_resampling_reqdata)) return;
        ApplyRunMode();
        m_frmPrevious = g_frm_PreviousPage;
        cmdSubmitResampleData->setEnabled(false);
    });
}

void frmZoneSetup_resamplingPage::Form_Unload() {
    Event("Form_Unload", kTopLevel, [this] { m_pApp = nullptr; });
}

}  // namespace halvane::pages
