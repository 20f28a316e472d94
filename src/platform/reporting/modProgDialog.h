#pragma once
// The progress dialog of long jobs: ShowProgress before each step, CloseProgress
// when a stage is over. One dialog exists at a time; its title and owner are
// those of the call that opened it.

#include <cstdint>
#include <memory>
#include <string>

#include "platform/runtime/Convert.h"
#include "platform/ui/Services.h"

namespace halvane {

// The tracker's answer at the last ShowProgress: False once the user pressed
// Cancel. Part of the session record; ResetSession leaves it alone.
extern runtime::VbBool g_b_Continue;

extern std::shared_ptr<ui::IProgressDialog2> g_p_ProgressDialog;
extern std::shared_ptr<ui::IStepProgressor> g_p_StepProgressor;
extern std::shared_ptr<ui::ITrackCancel> g_p_TrackCancel;
extern std::shared_ptr<ui::IProgressDialogFactory> g_p_ProgressDialogFactory;

// Opens the dialog if none is open, sets range, position and message, and
// stores the tracker's answer in g_b_Continue. A failure shows its number in a
// bare message box; after 13 the next statement runs, after any other the
// call ends there.
void ShowProgress(const std::string& sMessage, const std::string& sTitle, std::int32_t lMinRange,
                  std::int32_t lMaxRange, std::int32_t lPosition, std::int32_t lhWnd);

// Hides and forgets the dialog; g_b_Continue keeps its value.
void CloseProgress();

}  // namespace halvane
