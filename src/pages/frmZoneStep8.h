#pragma once
// The final output page (slope and zones) and its stand-alone entry. For now
// shells: caption and button rows with the hand-over; the inputs, the
// dictionary's classes and the run come with the classification's own work.

#include "pages/Pages.h"

namespace halvane::pages {

class frmZoneStep8Page : public Page {
public:
    explicit frmZoneStep8Page(PageSlot& slot);

    QPushButton* cmdFinish;

protected:
    void Form_Load() override;
};

class frmZoneStep8_reqdataPage : public Page {
public:
    explicit frmZoneStep8_reqdataPage(PageSlot& slot);

protected:
    void Form_Load() override;
};

}  // namespace halvane::pages
