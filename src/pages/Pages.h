#pragma once
// The sixteen pages, each behind a global slot of the page's own name:
// `frmZoneStep1.Show()`, `frmZoneStep1->cmdNext`, `g_frm_PreviousPage = &frmIntro`.
// Include a page's own header to reach its controls.

#include "pages/Page.h"

namespace halvane::pages {

class frmIntroPage;
class frmZoneSetup_inputdataPage;
class frmZoneSetup_resamplingPage;
class frmZoneSetup_resampling_reqdataPage;
class frmZoneStep1Page;
class frmZoneStep1_reqdataPage;
class frmZoneStep2Page;
class frmZoneStep2_reqdataPage;
class frmZoneStep3Page;
class frmZoneStep3_reqdataPage;
class frmZoneStep4Page;
class frmZoneStep8Page;
class frmZoneStep8_reqdataPage;
class frmZoneStep8_compPage;
class frmRugosityPage;
class frmRugosity_compPage;

extern Slot<frmIntroPage> frmIntro;
extern Slot<frmZoneSetup_inputdataPage> frmZoneSetup_inputdata;
extern Slot<frmZoneSetup_resamplingPage> frmZoneSetup_resampling;
extern Slot<frmZoneSetup_resampling_reqdataPage> frmZoneSetup_resampling_reqdata;
extern Slot<frmZoneStep1Page> frmZoneStep1;
extern Slot<frmZoneStep1_reqdataPage> frmZoneStep1_reqdata;
extern Slot<frmZoneStep2Page> frmZoneStep2;
extern Slot<frmZoneStep2_reqdataPage> frmZoneStep2_reqdata;
extern Slot<frmZoneStep3Page> frmZoneStep3;
extern Slot<frmZoneStep3_reqdataPage> frmZoneStep3_reqdata;
extern Slot<frmZoneStep4Page> frmZoneStep4;
extern Slot<frmZoneStep8Page> frmZoneStep8;
extern Slot<frmZoneStep8_reqdataPage> frmZoneStep8_reqdata;
extern Slot<frmZoneStep8_compPage> frmZoneStep8_comp;
extern Slot<frmRugosityPage> frmRugosity;
extern Slot<frmRugosity_compPage> frmRugosity_comp;

// Ends a run: in the wizard after asking, in a stand-alone run at once, it
// unloads every page in a fixed order and empties the session. It deletes
// nothing on disk.
void ExitProj();

}  // namespace halvane::pages
