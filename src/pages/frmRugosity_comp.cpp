#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QVBoxLayout>

#include "engine/Session.h"
#include "pages/frmRugosity.h"
#include "platform/reporting/HTMLHelp.h"
#include "platform/runtime/Text.h"

namespace halvane::pages {

Slot<frmRugosity_compPage> frmRugosity_comp("frmRugosity_comp");

frmRugosity_compPage::frmRugosity_compPage(PageSlot& slot) : Page(slot, "frmRugosity_comp") {
    Label1 = NewBanner(QStringLiteral("Rugosity Grid"), {}, "Label1");
    lbl_InputDataSet[0] = NewLabel(
        "lbl_InputDataSet(0)", QStringLiteral("The Rugosity Grid is complete and is located at:"));
    txtlRugosityGridLocation = NewBox("txtlRugosityGridLocation");
    Body()->addWidget(txtlRugosityGridLocation);
    Body()->addSpacing(12);
    lbl_InputDataSet[1] =
        NewLabel("lbl_InputDataSet(1)", QString::fromLatin1(kRugosityExplanation));

    // The one help button whose window belongs to the application.
    cmdAboutBathymPositionIndexGrids =
        NewHelpButton("cmdAboutBathymPositionIndexGrids", "cmdAboutBathymPositionIndexGrids_Click",
                      QStringLiteral("More about Rugosity..."), [] {
                          std::string topic = "rugosity.htm";
                          ShowHelpTopic(1, topic);
                      });
    cmdBack = NewButton("cmdBack", QStringLiteral("<- Back"), ButtonRow());
    cmdNext = NewButton("cmdNext", QStringLiteral("Close"), ButtonRow());
    resize(520, 250);

    // Not this page's way back to the rugosity page: nothing on the way here
    // wrote the link, so both go back to the page that last handed over.
    OnClick(cmdBack, "cmdBack_Click", kTopLevel, [this] { GoBack(); });
    // Leaving the result goes through the same exit as a cancel.
    OnClick(cmdNext, "cmdNext_Click", kTopLevel, [] { ExitProj(); });
}

void frmRugosity_compPage::Form_Load() {
    Event("Form_Load", kTopLevel, [this] {
        m_frmPrevious = g_frm_PreviousPage;
        txtlRugosityGridLocation->setText(QString::fromStdString(
            g_s_WorkingDir + runtime::kPathSeparator + g_s_SaveRugosity_OutputData));
    });
}

}  // namespace halvane::pages
