#pragma once
// The completion page of the classification. For now a shell: heading and the
// two buttons; the result's place and classes come with the classification's
// own work.

#include "pages/Pages.h"

namespace halvane::pages {

class frmZoneStep8_compPage : public Page {
public:
    explicit frmZoneStep8_compPage(PageSlot& slot);

    QLabel* Label1;
    QPushButton* cmdCreateRug;

protected:
    void Form_Load() override;
};

}  // namespace halvane::pages
