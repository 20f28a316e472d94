#include "pages/frmZoneSetup_inputdata.h"

#include <QGridLayout>
#include <QLabel>
#include <QPushButton>
#include <QRadioButton>

#include "engine/Session.h"

namespace halvane::pages {

Slot<frmZoneSetup_inputdataPage> frmZoneSetup_inputdata("frmZoneSetup_inputdata");

namespace {
constexpr const char* kModule = "frmZoneSetup_inputdata";
}

frmZoneSetup_inputdataPage::frmZoneSetup_inputdataPage(PageSlot& slot) : Page(slot, kModule) {
    NewLabel("lblHeading", QStringLiteral("<b>Halvane Classification Setup</b><br>Input Data"));
    auto* options = new QGridLayout;
    Body()->addLayout(options);
    for (int i = 0; i < 2; ++i) {
        InputOption[i] = new QRadioButton(this);
        InputOption[i]->setObjectName(QStringLiteral("InputOption(%1)").arg(i));
    }
    Label4 = NewLabel("Label4",
                      QStringLiteral("Run an entire zonal classification session. Please specify "
                                     "input bathymetric data set."),
                      nullptr);
    Label5 = NewLabel("Label5",
                      QStringLiteral("Use previously created BATHYMETRIC and STANDARDIZED BPI "
                                     "GRIDS in session. Please specify input BPI GRIDS."),
                      nullptr);
    options->addWidget(InputOption[1], 0, 0);
    options->addWidget(Label4, 0, 1);
    options->addWidget(InputOption[0], 1, 0);
    options->addWidget(Label5, 1, 1);
    options->setColumnStretch(1, 1);
    cmdWhyResample = NewButton("cmdWhyResample", QStringLiteral("More about Halvane methods..."));

    NewButtonRow();
    OnClick(cmdWhyResample, "cmdWhyResample_Click", kTopLevel, [this] { ShowHelp("process.htm"); });
    OnClick(cmdNext, "cmdNext_Click", kTopLevel, [this] { cmdNext_Click(); });
    OnClick(cmdBack, "cmdBack_Click", kTopLevel, [this] { GoBack(); });
    OnClick(cmdCancel, "cmdCancel_Click", kTopLevel, [] { ExitProj(); });
}

void frmZoneSetup_inputdataPage::Form_Load() {
    Event("Form_Load", kTopLevel, [this] { m_frmPrevious = g_frm_PreviousPage; });
}

void frmZoneSetup_inputdataPage::cmdNext_Click() {
    if (InputOption[0]->isChecked()) {
        HandOver(frmZoneStep4);
    } else if (InputOption[1]->isChecked()) {
        HandOver(frmZoneSetup_resampling);
    } else {
        ui::Services().MsgBox("Please select your input data source or existing BPI Grids.",
                              ui::vbCritical, "Please Select Input Data..");
    }
}

}  // namespace halvane::pages
