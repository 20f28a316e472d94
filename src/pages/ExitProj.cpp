#include "engine/Session.h"
#include "pages/Pages.h"

namespace halvane::pages {

void ExitProj() {
    Guarded({"ExitProj", "modUtil", kTopLevel}, [] {
        if (!g_b_StandAloneRun) {
            const auto answer = ui::Services().MsgBox(
                "Are you sure you want to exit?  All changes not saved will be lost.", ui::vbYesNo,
                "Exit?");
            if (answer != ui::vbYes) return;
        }
        // The order is fixed and takes no account of what was shown.
        frmIntro.Unload();
        frmZoneSetup_inputdata.Unload();
        frmZoneSetup_resampling.Unload();
        frmZoneSetup_resampling_reqdata.Unload();
        frmZoneStep1.Unload();
        frmZoneStep1_reqdata.Unload();
        frmZoneStep2.Unload();
        frmZoneStep2_reqdata.Unload();
        frmZoneStep3.Unload();
        frmZoneStep3_reqdata.Unload();
        frmZoneStep4.Unload();
        frmZoneStep8_reqdata.Unload();
        frmZoneStep8.Unload();
        frmZoneStep8_comp.Unload();
        frmRugosity.Unload();
        frmRugosity_comp.Unload();
        ResetSession();
    });
}

}  // namespace halvane::pages
