#include "pages/frmZoneStep1.h"

#include <QLabel>
#include <QPushButton>

#include "engine/Session.h"

namespace halvane::pages {

Slot<frmZoneStep1Page> frmZoneStep1("frmZoneStep1");

namespace {
constexpr const char* kModule = "frmZoneStep1";
}

frmZoneStep1Page::frmZoneStep1Page(PageSlot& slot) : Page(slot, kModule) {
    NewLabel("lblHeading", QStringLiteral("Broad scale BPI grid"));
    cmdSet_smallScale_BPI = NewButton("cmdSet_smallScale_BPI", QStringLiteral("Generate Grid"));
    cmdAboutBathymPositionIndexGrids =
        NewButton("cmdAboutBathymPositionIndexGrids",
                  QStringLiteral("More about Bathymetric Position Index grids..."));
    NewButtonRow();
    OnClick(cmdAboutBathymPositionIndexGrids, "cmdAboutBathymPositionIndexGrids_Click", kTopLevel,
            [this] { ShowHelp("bpi.htm"); });
    OnClick(cmdNext, "cmdNext_Click", kTopLevel, [this] { HandOver(frmZoneStep2); });
    OnClick(cmdBack, "cmdBack_Click", kTopLevel, [this] { GoBack(); });
    OnClick(cmdCancel, "cmdCancel_Click", kTopLevel, [] { ExitProj(); });
}

void frmZoneStep1Page::Form_Load() {
    Event("Form_Load", kTopLevel, [this] {
        // This page takes its Back link before its guard, unlike the fine-scale page.
        m_frmPrevious = g_frm_PreviousPage;
        if (!HasInputElse(!g_s_BPI_DataSet.empty(), frmZoneStep1_reqdata)) return;
        ApplyRunMode();
    });
}

}  // namespace halvane::pages
