#include "pages/frmRugosity.h"

#include <QLabel>
#include <QPushButton>

#include "engine/Session.h"

namespace halvane::pages {

Slot<frmRugosityPage> frmRugosity("frmRugosity");

frmRugosityPage::frmRugosityPage(PageSlot& slot) : Page(slot, "frmRugosity") {
    NewLabel("lblHeading", QStringLiteral("Rugosity grid"));
    cmdAboutBathymPositionIndexGrids =
        NewButton("cmdAboutBathymPositionIndexGrids", QStringLiteral("More about Rugosity..."));
    NewButtonRow();
    cmdNext->setText(QStringLiteral("Finish"));
    // The page does not collect its input and output names yet: Finish stays
    // off rather than lead to a completion page that no run reached.
    cmdNext->setEnabled(false);
    OnClick(cmdAboutBathymPositionIndexGrids, "cmdAboutBathymPositionIndexGrids_Click", kTopLevel,
            [this] { ShowHelp("rugosity.htm"); });
    // No hand-over: the completion page goes back where this page goes back.
    OnClick(cmdNext, "cmdNext_Click", kTopLevel, [this] {
        Hide();
        frmRugosity_comp.Show();
    });
    OnClick(cmdBack, "cmdBack_Click", kTopLevel, [this] { GoBack(); });
    OnClick(cmdCancel, "cmdCancel_Click", kTopLevel, [] { ExitProj(); });
}

void frmRugosityPage::Form_Load() {
    Event("Form_Load", kTopLevel, [this] { m_frmPrevious = g_frm_PreviousPage; });
}

}  // namespace halvane::pages
