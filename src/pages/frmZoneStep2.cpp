#include "pages/frmZoneStep2.h"

#include <QLabel>
#include <QPushButton>

#include "engine/Session.h"

namespace halvane::pages {

Slot<frmZoneStep2Page> frmZoneStep2("frmZoneStep2");

namespace {
constexpr const char* kModule = "frmZoneStep2";
}

frmZoneStep2Page::frmZoneStep2Page(PageSlot& slot) : Page(slot, kModule) {
    NewLabel("lblHeading", QStringLiteral("Fine scale BPI grid"));
    cmdSet_largeScale_BPI = NewButton("cmdSet_largeScale_BPI", QStringLiteral("Generate Grid"));
    cmdAboutBathymPositionIndexGrids =
        NewButton("cmdAboutBathymPositionIndexGrids",
                  QStringLiteral("More about Bathymetric Position Index grids..."));
    NewButtonRow();
    OnClick(cmdAboutBathymPositionIndexGrids, "cmdAboutBathymPositionIndexGrids_Click", kTopLevel,
            [this] { ShowHelp("bpi.htm"); });
    OnClick(cmdNext, "cmdNext_Click", kTopLevel, [this] { HandOver(frmZoneStep3); });
    OnClick(cmdBack, "cmdBack_Click", kTopLevel, [this] { GoBack(); });
    OnClick(cmdCancel, "cmdCancel_Click", kTopLevel, [] { ExitProj(); });
}

void frmZoneStep2Page::Form_Load() {
    Event("Form_Load", kTopLevel, [this] {
        if (!HasInputElse(!g_s_BPI_DataSet.empty(), frmZoneStep2_reqdata)) return;
        ApplyRunMode();
        // Only once the input test has passed, unlike the broad-scale page.
        m_frmPrevious = g_frm_PreviousPage;
    });
}

}  // namespace halvane::pages
