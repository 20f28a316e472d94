#include "platform/reporting/modProgDialog.h"

#include <functional>
#include <vector>

#include "platform/runtime/Failure.h"

namespace halvane {

runtime::VbBool g_b_Continue;
std::shared_ptr<ui::IProgressDialog2> g_p_ProgressDialog;
std::shared_ptr<ui::IStepProgressor> g_p_StepProgressor;
std::shared_ptr<ui::ITrackCancel> g_p_TrackCancel;
std::shared_ptr<ui::IProgressDialogFactory> g_p_ProgressDialogFactory;

namespace {

using Statement = std::function<void()>;

// ShowProgress's own handler: a failure shows its number in a bare message
// box; after 13 the next statement runs, after any other the rest is skipped.
void RunResumingAfterTypeMismatch(const std::vector<Statement>& statements) {
    for (const Statement& statement : statements) {
        try {
            statement();
        } catch (const runtime::RunStopped&) {
            throw;
        } catch (...) {
            const runtime::Failure failure = runtime::CurrentFailure();
            ui::Services().MsgBox(std::to_string(failure.number));
            if (failure.number != runtime::kTypeMismatch) return;
        }
    }
}

}  // namespace

void ShowProgress(const std::string& sMessage, const std::string& sTitle, std::int32_t lMinRange,
                  std::int32_t lMaxRange, std::int32_t lPosition, std::int32_t lhWnd) {
    using runtime::Deref;
    std::vector<Statement> statements;
    if (!g_p_ProgressDialog) {
        statements = {
            [] { g_p_TrackCancel = ui::Services().NewCancelTracker(); },
            [] { g_p_ProgressDialogFactory = ui::Services().NewProgressDialogFactory(); },
            [&] {
                auto created = Deref(g_p_ProgressDialogFactory).Create(g_p_TrackCancel, lhWnd);
                // The step progressor is asked for its dialog interface, which
                // fails as a type mismatch when it has none.
                auto dialog = std::dynamic_pointer_cast<ui::IProgressDialog2>(created);
                if (created && !dialog) throw runtime::RuntimeFailure(runtime::kTypeMismatch);
                g_p_ProgressDialog = dialog;
            },
            [] { Deref(g_p_ProgressDialog).Animation(0); },
            [] { Deref(g_p_ProgressDialog).CancelEnabled(true); },
            [&] { Deref(g_p_ProgressDialog).Title(sTitle); },
            [] { Deref(g_p_ProgressDialog).Description("Processing...Please be patient."); },
            [] {
                g_p_StepProgressor =
                    std::dynamic_pointer_cast<ui::IStepProgressor>(g_p_ProgressDialog);
            },
        };
    }
    statements.insert(statements.end(),
                      {
                          [&] { Deref(g_p_StepProgressor).MinRange(lMinRange); },
                          [&] { Deref(g_p_StepProgressor).MaxRange(lMaxRange); },
                          [&] { Deref(g_p_StepProgressor).Position(lPosition); },
                          [&] { Deref(g_p_StepProgressor).Message(sMessage); },
                          [] { g_b_Continue = Deref(g_p_TrackCancel).Continue(); },
                      });
    RunResumingAfterTypeMismatch(statements);
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
