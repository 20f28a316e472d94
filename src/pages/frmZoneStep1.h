#pragma once
// Broad scale BPI grid. For now a shell: caption, help, the run button and the button row,
// with the Form_Load guard and run mode of the flow; the stage's controls and
// its run come with the stage's own work.

#include "pages/Pages.h"

namespace halvane::pages {

class frmZoneStep1Page : public Page {
public:
    explicit frmZoneStep1Page(PageSlot& slot);

    QPushButton* cmdAboutBathymPositionIndexGrids;
    QPushButton* cmdSet_smallScale_BPI;

protected:
    void Form_Load() override;
};

}  // namespace halvane::pages
