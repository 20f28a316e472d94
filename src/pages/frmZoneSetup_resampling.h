#pragma once
// Resampling. For now a shell: caption, help, the run button and the button row,
// with the Form_Load guard and run mode of the flow; the stage's controls and
// its run come with the stage's own work.

#include "pages/Pages.h"

namespace halvane::pages {

class frmZoneSetup_resamplingPage : public Page {
public:
    explicit frmZoneSetup_resamplingPage(PageSlot& slot);

    QPushButton* cmdWhyResample;
    QPushButton* cmdSubmitResampleData;

protected:
    void Form_Load() override;
    void Form_Unload() override;
};

}  // namespace halvane::pages
