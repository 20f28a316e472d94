#include "pages/frmZoneStep8_comp.h"

#include <QBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>

#include "engine/Session.h"
#include "platform/runtime/Text.h"

namespace halvane::pages {

Slot<frmZoneStep8_compPage> frmZoneStep8_comp("frmZoneStep8_comp");

frmZoneStep8_compPage::frmZoneStep8_compPage(PageSlot& slot)
    : ClassListPage(slot, "frmZoneStep8_comp") {
    Label1 = NewLabel("Label1", QStringLiteral("Terrain Classification Process Complete"));
    QFont heading = Label1->font();
    heading.setBold(true);
    heading.setPointSizeF(heading.pointSizeF() * 1.2);
    Label1->setFont(heading);
    Body()->addSpacing(8);
    Label67 = NewLabel("Label67", QStringLiteral("The completed terrain classification data set "
                                                 "is located at the following location:"));
    g_s_OutputDataSet = NewBox("g_s_OutputDataSet");
    Body()->addWidget(g_s_OutputDataSet);
    Body()->addSpacing(10);
    Body()->addLayout(NewClassList(), 1);
    cmdCreateRug = NewButton("cmdCreateRug", QStringLiteral("Create Rugosity Grids"), ButtonRow());
    cmdCancel = NewButton("cmdCancel", QStringLiteral("Exit"), ButtonRow());
    resize(500, 580);

    // No hand-over: g_frm_PreviousPage stays with the page before the run,
    // and the session stays for the rugosity page to find its grid in.
    OnClick(cmdCreateRug, "cmdCreateRug_Click", kTopLevel, [this] {
        Hide();
        frmRugosity.Show();
    });
    // The wizard asks its question here too, though the results are saved.
    OnClick(cmdCancel, "cmdCancel_Click", kTopLevel, [] { ExitProj(); });
}

void frmZoneStep8_compPage::Form_Load() {
    Event("Form_Load", kTopLevel, [this] {
        m_frmPrevious = g_frm_PreviousPage;
        DesignGridLayout();
        NewDictionary();
        g_s_OutputDataSet->setText(QString::fromStdString(g_s_WorkingDir + runtime::kPathSeparator +
                                                          halvane::g_s_OutputDataSet));
        // The file is read once more: the list is what it holds now.
        LoadSessionDictionary();
    });
}

}  // namespace halvane::pages
