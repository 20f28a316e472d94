#include "pages/RequiredData.h"

#include <QLabel>
#include <QPushButton>

namespace halvane::pages {

Slot<frmZoneSetup_resampling_reqdataPage> frmZoneSetup_resampling_reqdata(
    "frmZoneSetup_resampling_reqdata");
Slot<frmZoneStep1_reqdataPage> frmZoneStep1_reqdata("frmZoneStep1_reqdata");
Slot<frmZoneStep2_reqdataPage> frmZoneStep2_reqdata("frmZoneStep2_reqdata");
Slot<frmZoneStep3_reqdataPage> frmZoneStep3_reqdata("frmZoneStep3_reqdata");

RequiredDataPage::RequiredDataPage(PageSlot& slot, const char* module, const char* caption,
                                   PageSlot& stage)
    : Page(slot, module) {
    setWindowTitle(QString::fromLatin1(caption));
    NewLabel("Label1", QStringLiteral("Working Directory"));
    NewLabel("Label2", QStringLiteral("Please select working directory:"));
    NewLabel("lblInputData", QStringLiteral("Input Data"));
    cmdOK = NewButton("cmdOK", QStringLiteral("OK"), ButtonRow());
    OnClick(cmdOK, "cmdOK_Click", kTopLevel, [this, &stage] { HandOver(stage); });
}

frmZoneSetup_resampling_reqdataPage::frmZoneSetup_resampling_reqdataPage(PageSlot& slot)
    : RequiredDataPage(slot, "frmZoneSetup_resampling_reqdata", "Resample - Required Data",
                       frmZoneSetup_resampling) {}

frmZoneStep1_reqdataPage::frmZoneStep1_reqdataPage(PageSlot& slot)
    : RequiredDataPage(slot, "frmZoneStep1_reqdata", "Broad Scale - Required Data", frmZoneStep1) {}

frmZoneStep2_reqdataPage::frmZoneStep2_reqdataPage(PageSlot& slot)
    : RequiredDataPage(slot, "frmZoneStep2_reqdata", "Fine Scale - Required Data", frmZoneStep2) {}

frmZoneStep3_reqdataPage::frmZoneStep3_reqdataPage(PageSlot& slot)
    : RequiredDataPage(slot, "frmZoneStep3_reqdata", "Standardize BPI - Required", frmZoneStep3) {}

}  // namespace halvane::pages
