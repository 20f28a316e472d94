#include <QLabel>
#include <QPushButton>

#include "engine/Session.h"
#include "pages/frmRugosity.h"
#include "platform/reporting/HTMLHelp.h"

namespace halvane::pages {

Slot<frmRugosity_compPage> frmRugosity_comp("frmRugosity_comp");

frmRugosity_compPage::frmRugosity_compPage(PageSlot& slot) : Page(slot, "frmRugosity_comp") {
    NewLabel("lblHeading", QStringLiteral("Rugosity grid complete"));
    cmdAboutBathymPositionIndexGrids =
        NewButton("cmdAboutBathymPositionIndexGrids", QStringLiteral("More about Rugosity..."));
    cmdBack = NewButton("cmdBack", QStringLiteral("<- Back"), ButtonRow());
    cmdNext = NewButton("cmdNext", QStringLiteral("Close"), ButtonRow());
    // The one help button whose window belongs to the application.
    OnClick(cmdAboutBathymPositionIndexGrids, "cmdAboutBathymPositionIndexGrids_Click", kTopLevel,
            [] {
                std::string topic = "rugosity.htm";
                ShowHelpTopic(1, topic);
            });
    OnClick(cmdBack, "cmdBack_Click", kTopLevel, [this] { GoBack(); });
    OnClick(cmdNext, "cmdNext_Click", kTopLevel, [] { ExitProj(); });
}

void frmRugosity_compPage::Form_Load() {
    Event("Form_Load", kTopLevel, [this] { m_frmPrevious = g_frm_PreviousPage; });
}

}  // namespace halvane::pages
