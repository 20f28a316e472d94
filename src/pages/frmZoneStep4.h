#pragma once
// The dictionary editor. For now a shell: caption, help and the button row
// with its run mode; the dictionary grid comes with the editor's own work.

#include "pages/Pages.h"

namespace halvane::pages {

class frmZoneStep4Page : public Page {
public:
    explicit frmZoneStep4Page(PageSlot& slot);

    QPushButton* cmdAbout_ClassDictionary;

protected:
    void Form_Load() override;
};

}  // namespace halvane::pages
