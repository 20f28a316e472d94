#pragma once
// BPI grid standardization. For now a shell: caption, help, the run button and the button row,
// with the Form_Load guard and run mode of the flow; the stage's controls and
// its run come with the stage's own work.

#include "pages/Pages.h"

namespace halvane::pages {

class frmZoneStep3Page : public Page {
public:
    explicit frmZoneStep3Page(PageSlot& slot);

    QPushButton* cmdAboutBPIGridStandardization;
    QPushButton* cmdSubmit;

protected:
    void Form_Load() override;
};

}  // namespace halvane::pages
