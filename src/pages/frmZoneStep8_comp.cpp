#include "pages/frmZoneStep8_comp.h"

#include <QLabel>
#include <QPushButton>

#include "engine/Session.h"

namespace halvane::pages {

Slot<frmZoneStep8_compPage> frmZoneStep8_comp("frmZoneStep8_comp");

frmZoneStep8_compPage::frmZoneStep8_compPage(PageSlot& slot) : Page(slot, "frmZoneStep8_comp") {
    Label1 = NewLabel("Label1", QStringLiteral("Terrain Classification Process Complete"));
    cmdCreateRug = NewButton("cmdCreateRug", QStringLiteral("Create Rugosity Grids"), ButtonRow());
    cmdCancel = NewButton("cmdCancel", QStringLiteral("Exit"), ButtonRow());
    // No hand-over: g_frm_PreviousPage stays with the page before the run.
    OnClick(cmdCreateRug, "cmdCreateRug_Click", kTopLevel, [this] {
        Hide();
        frmRugosity.Show();
    });
    // The wizard asks its question here too, though the results are saved.
    OnClick(cmdCancel, "cmdCancel_Click", kTopLevel, [] { ExitProj(); });
}

void frmZoneStep8_compPage::Form_Load() {
    Event("Form_Load", kTopLevel, [this] { m_frmPrevious = g_frm_PreviousPage; });
}

}  // namespace halvane::pages
