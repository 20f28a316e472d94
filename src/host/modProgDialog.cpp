#include "host/modProgDialog.h"

#include "platform/runtime/Failure.h"

namespace halvane {

runtime::VbBool g_b_Continue;
std::shared_ptr<ui::IProgressDialog2> g_p_ProgressDialog;
std::shared_ptr<ui::IStepProgressor> g_p_StepProgressor;
std::shared_ptr<ui::ITrackCancel> g_p_TrackCancel;
std::shared_ptr<ui::IProgressDialogFactory> g_p_ProgressDialogFactory;

namespace {

// One statement under ShowProgress's own handler: true when the next
// statement is to run.
template <class Statement>
bool Step(Statement&& statement) {
    try {
        statement();
        return true;
    } catch (...) {
        const runtime::Failure failure = runtime::CurrentFailure();
        ui::Services().MsgBox(std::to_string(failure.number));
        return failure.number == runtime::kTypeMismatch;
    }
}

}  // namespace

void ShowProgress(const std::string& sMessage, const std::string& sTitle, std::int32_t lMinRange,
                  std::int32_t lMaxRange, std::int32_t lPosition, std::int32_t lhWnd) {
    using runtime::Deref;
    if (!g_p_ProgressDialog) {
        if (!Step([] { g_p_TrackCancel = ui::Services().NewCancelTracker(); })) return;
        if (!Step([] { g_p_ProgressDialogFactory = ui::Services().NewProgressDialogFactory(); })) {
            return;
        }
        if (!Step([&] {
                auto created = Deref(g_p_ProgressDialogFactory).Create(g_p_TrackCancel, lhWnd);
                // The step progressor is asked for its dialog interface, which
                // fails as a type mismatch when it has none.
                auto dialog = std::dynamic_pointer_cast<ui::IProgressDialog2>(created);
                if (created && !dialog) throw runtime::RuntimeFailure(runtime::kTypeMismatch);
                g_p_ProgressDialog = dialog;
            })) {
            return;
        }
        if (!Step([] { Deref(g_p_ProgressDialog).Animation(0); })) return;
        if (!Step([] { Deref(g_p_ProgressDialog).CancelEnabled(true); })) return;
        if (!Step([&] { Deref(g_p_ProgressDialog).Title(sTitle); })) return;
        if (!Step(
                [] { Deref(g_p_ProgressDialog).Description("Processing...Please be patient."); })) {
            return;
        }
        if (!Step([] {
                g_p_StepProgressor =
                    std::dynamic_pointer_cast<ui::IStepProgressor>(g_p_ProgressDialog);
            })) {
            return;
        }
    }
    if (!Step([&] { Deref(g_p_StepProgressor).MinRange(lMinRange); })) return;
    if (!Step([&] { Deref(g_p_StepProgressor).MaxRange(lMaxRange); })) return;
    if (!Step([&] { Deref(g_p_StepProgressor).Position(lPosition); })) return;
    if (!Step([&] { Deref(g_p_StepProgressor).Message(sMessage); })) return;
    Step([] { g_b_Continue = Deref(g_p_TrackCancel).Continue(); });
}

void CloseProgress() {
    if (!g_p_ProgressDialog) return;
    g_p_ProgressDialog->HideDialog();
    g_p_ProgressDialog.reset();
    g_p_TrackCancel.reset();
    g_p_ProgressDialogFactory.reset();
    g_p_StepProgressor.reset();
}

}  // namespace halvane
