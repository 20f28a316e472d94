#pragma once
// Failure reporting. A failure climbs the call chain as an exception; each
// protected procedure on the way adds its location to the description, and
// the first top-level procedure shows the collected text and returns normally
// with its default result.
//
// A procedure protects its body with Guarded(), declaring once its name, its
// module and whether it reports or passes on:
//
//     bool BPI_Build(...) {
//         return Guarded({"BPI_Build", "modUtil", kTopLevel}, [&] {
//             ...
//             return true;
//         });
//     }

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <type_traits>

#include "platform/runtime/Failure.h"
#include "platform/ui/Services.h"

namespace halvane {

namespace ErrorHandling {
// True while a failure climbs whose description was already dressed with its
// number. A failure raised out of the top of a pass-on chain leaves it True,
// and the next report then carries the bare description.
extern bool m_bErrorTextBuilt;
// The error window, made at the first report and kept until the component
// unloads.
extern std::shared_ptr<ui::IErrorWindow> m_pErrorWindow;
// What the component does with the window when it unloads.
void ReleaseErrorWindow();
}  // namespace ErrorHandling

// "" for line 0, else "Line : " and the number.
std::string GetErrorLineNumberString(std::int32_t line);

// Passes the failure on (throws, with `sLocation` added) when `bTopProcedure`
// is false; otherwise reports it, in the error window for mode 4 and in a
// message box for any other mode, and returns.
void HandleError(bool bTopProcedure, const std::string& sLocation, std::int32_t lNumber,
                 const std::string& sSource, const std::string& sDescription,
                 std::int32_t lMode = 4, std::int32_t lReserved = 0);

void ShowErrorWindow(const std::string& sLocation, const std::string& sDescription);

inline constexpr bool kTopLevel = true;  // reports and returns
inline constexpr bool kPassOn = false;   // adds its location and raises to the caller

struct Procedure {
    const char* name;    // as "cmdNext_Click"
    const char* module;  // the source file's module, as "frmRugosity"
    bool topLevel;
};

// The location text of a procedure: its name, one blank, its module, one
// blank and the line text ("cmdNext_Click frmRugosity ").
std::string LocationOf(const Procedure& procedure, std::int32_t line = 0);

// How failures that reach a top-level procedure are reported: in the error
// window, as the desktop does, unless `report` is set (the command line's
// style, see CommandLineStyle.h). Then `report` gets the failure as it arose,
// after the error window's full report when `fullReport` is set; it may throw
// runtime::RunStopped to end the run.
struct FailureReporting {
    bool fullReport = false;
    std::function<void(const runtime::Failure& origin)> report;
};
FailureReporting& TopLevelReporting();

// The handler of a protected procedure; call it inside a catch block only.
void HandleCurrentFailure(const Procedure& procedure);

// Runs `body`; on failure calls `onFailure` with it, for the few procedures
// that handle a failure their own way (a message of their own, or silence),
// and returns the result type's default. A stopped run is no failure: it
// passes through.
template <class Body, class OnFailure>
auto WithHandler(Body&& body, OnFailure&& onFailure) -> std::invoke_result_t<Body&> {
    using Result = std::invoke_result_t<Body&>;
    try {
        return body();
    } catch (const runtime::RunStopped&) {
        throw;
    } catch (...) {
        onFailure(runtime::CurrentFailure());
        if constexpr (!std::is_void_v<Result>) return Result{};
    }
}

// Runs `body` as the protected body of `procedure`. On failure a top-level
// procedure reports and returns its result type's default (false, 0, "",
// an empty reference); a pass-on procedure raises to its caller.
template <class Body>
auto Guarded(const Procedure& procedure, Body&& body) -> std::invoke_result_t<Body&> {
    // Still inside the handler's catch block, where the failure is current.
    return WithHandler(body, [&](const runtime::Failure&) { HandleCurrentFailure(procedure); });
}

}  // namespace halvane
