#pragma once
// The setup page: working directory and the choice between the full and the
// short run. For now a shell: the choice and the hand-over; the boxes, browse
// buttons and checks come with the setup page's own work.

#include <array>

#include "pages/Pages.h"

class QRadioButton;

namespace halvane::pages {

class frmZoneSetup_inputdataPage : public Page {
public:
    explicit frmZoneSetup_inputdataPage(PageSlot& slot);

    // Index 0: previously made grids (the short run); 1: the full run.
    std::array<QRadioButton*, 2> InputOption;
    QLabel* Label4;
    QLabel* Label5;
    QPushButton* cmdWhyResample;

protected:
    void Form_Load() override;

private:
    void cmdNext_Click();
};

}  // namespace halvane::pages
