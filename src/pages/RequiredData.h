#pragma once
// The required-data dialogs of the stand-alone commands. For now shells: their
// captions, headings and OK, which hands over to the stage; the boxes, browse
// buttons and checks come with the dialogs' own work.

#include "pages/Pages.h"

namespace halvane::pages {

// The family's common part; none has Back, Cancel, help or a picture.
class RequiredDataPage : public Page {
public:
    QPushButton* cmdOK;

protected:
    RequiredDataPage(PageSlot& slot, const char* module, const char* caption, PageSlot& stage);
};

class frmZoneSetup_resampling_reqdataPage : public RequiredDataPage {
public:
    explicit frmZoneSetup_resampling_reqdataPage(PageSlot& slot);
};

class frmZoneStep1_reqdataPage : public RequiredDataPage {
public:
    explicit frmZoneStep1_reqdataPage(PageSlot& slot);
};

class frmZoneStep2_reqdataPage : public RequiredDataPage {
public:
    explicit frmZoneStep2_reqdataPage(PageSlot& slot);
};

class frmZoneStep3_reqdataPage : public RequiredDataPage {
public:
    explicit frmZoneStep3_reqdataPage(PageSlot& slot);
};

}  // namespace halvane::pages
