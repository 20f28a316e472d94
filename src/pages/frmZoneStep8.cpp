#include "pages/frmZoneStep8.h"

#include <QLabel>
#include <QPushButton>

#include "engine/Session.h"

namespace halvane::pages {

Slot<frmZoneStep8Page> frmZoneStep8("frmZoneStep8");

frmZoneStep8Page::frmZoneStep8Page(PageSlot& slot) : Page(slot, "frmZoneStep8") {
    NewLabel("lblHeading", QStringLiteral("Final output: slope and zones"));
    cmdBack = NewButton("cmdBack", QStringLiteral("<- Back"), ButtonRow());
    cmdFinish = NewButton("cmdFinish", QStringLiteral("Finish"), ButtonRow());
    cmdCancel = NewButton("cmdCancel", QStringLiteral("Cancel"), ButtonRow());
    // The run needs the dictionary's classes and the output name, which this
    // page does not collect yet: Finish stays off rather than lead to a
    // completion page that no run reached.
    cmdFinish->setEnabled(false);
    // Finish does not write g_frm_PreviousPage: the completion page and the
    // rugosity page after it go back to the page that handed over last.
    OnClick(cmdFinish, "cmdFinish_Click", kTopLevel, [this] {
        Hide();
        frmZoneStep8_comp.Show();
    });
    // Back unloads, so that the next visit loads the page afresh.
    OnClick(cmdBack, "cmdBack_Click", kTopLevel, [this] {
        Unload();
        runtime::Deref(m_frmPrevious).Show();
    });
    OnClick(cmdCancel, "cmdCancel_Click", kTopLevel, [] { ExitProj(); });
}

void frmZoneStep8Page::Form_Load() {
    Event("Form_Load", kTopLevel, [this] { m_frmPrevious = g_frm_PreviousPage; });
}

}  // namespace halvane::pages
