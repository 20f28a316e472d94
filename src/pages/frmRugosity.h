#pragma once
// The rugosity page and its completion page. For now shells: caption, help and
// buttons with the hand-over; the boxes and the run come with the rugosity
// pages' own work.

#include "pages/Pages.h"

namespace halvane::pages {

class frmRugosityPage : public Page {
public:
    explicit frmRugosityPage(PageSlot& slot);

    QPushButton* cmdAboutBathymPositionIndexGrids;

protected:
    void Form_Load() override;
};

class frmRugosity_compPage : public Page {
public:
    explicit frmRugosity_compPage(PageSlot& slot);

    QPushButton* cmdAboutBathymPositionIndexGrids;

protected:
    void Form_Load() override;
};

}  // namespace halvane::pages
