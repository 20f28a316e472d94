#include <QLabel>
#include <QPushButton>

#include "engine/Session.h"
#include "pages/frmZoneStep8.h"

namespace halvane::pages {

Slot<frmZoneStep8_reqdataPage> frmZoneStep8_reqdata("frmZoneStep8_reqdata");

frmZoneStep8_reqdataPage::frmZoneStep8_reqdataPage(PageSlot& slot)
    : Page(slot, "frmZoneStep8_reqdata") {
    NewLabel("lblHeading", QStringLiteral("Final output: required data"));
    NewButtonRow();
    cmdNext->setText(QStringLiteral("Next"));
    OnClick(cmdNext, "cmdNext_Click", kTopLevel, [this] { HandOver(frmZoneStep8); });
    OnClick(cmdBack, "cmdBack_Click", kTopLevel, [this] {
        Unload();
        runtime::Deref(m_frmPrevious).Show();
    });
    OnClick(cmdCancel, "cmdCancel_Click", kTopLevel, [] { ExitProj(); });
}

void frmZoneStep8_reqdataPage::Form_Load() {
    Event("Form_Load", kTopLevel, [this] {
        m_frmPrevious = g_frm_PreviousPage;
        cmdBack->setVisible(false);
    });
}

}  // namespace halvane::pages
