#include "platform/reporting/ErrorHandling.h"

#include "platform/runtime/Failure.h"

namespace halvane {

namespace ErrorHandling {
bool m_bErrorTextBuilt = false;
std::shared_ptr<ui::IErrorWindow> m_pErrorWindow;

void ReleaseErrorWindow() { m_pErrorWindow.reset(); }
}  // namespace ErrorHandling

namespace {
constexpr const char* kCrLf = "\r\n";
constexpr const char* kCallStackHeading = "Record Call Stack Sequence - Bottom line is error line.";
}  // namespace

std::string GetErrorLineNumberString(std::int32_t line) {
    return line == 0 ? std::string() : "Line : " + std::to_string(line);
}

void HandleError(bool bTopProcedure, const std::string& sLocation, std::int32_t lNumber,
                 const std::string& sSource, const std::string& sDescription, std::int32_t lMode,
                 std::int32_t /*lReserved*/) {
    using ErrorHandling::m_bErrorTextBuilt;
    std::string description = sDescription;
    // Only the deepest handler dresses the text; the flag tells the others.
    if (!m_bErrorTextBuilt) {
        description = std::string(kCrLf) + "Error Number " + kCrLf + "\t" +
                      std::to_string(lNumber) + kCrLf + "Description" + kCrLf + "\t" + description +
                      kCrLf + kCrLf;
    }
    if (!bTopProcedure) {
        m_bErrorTextBuilt = true;
        throw runtime::Failure(lNumber, sSource, "\t" + sLocation + kCrLf + description);
    }
    m_bErrorTextBuilt = false;
    if (lMode == 4) {
        ShowErrorWindow(sLocation, description);
        return;
    }
    ui::Services().Beep();
    ui::Services().MsgBox(std::string("An error has occured in the application.   Record the call "
                                      "stack sequence") +
                              kCrLf + "and the description of the error." + kCrLf + kCrLf +
                              "Error Call Stack Sequence " + kCrLf + "\t" + sLocation + kCrLf +
                              description,
                          ui::vbOKOnly + ui::vbExclamation, "Unexpected Program Error");
}

void ShowErrorWindow(const std::string& sLocation, const std::string& sDescription) {
    using ErrorHandling::m_pErrorWindow;
    if (!m_pErrorWindow) m_pErrorWindow = ui::Services().NewErrorWindow();
    m_pErrorWindow->SetText(std::string(kCallStackHeading) + kCrLf + kCrLf + "\t" + sLocation +
                            kCrLf + sDescription);
    m_pErrorWindow->Show(true);
}

std::string LocationOf(const Procedure& procedure, std::int32_t line) {
    return std::string(procedure.name) + " " + procedure.module + " " +
           GetErrorLineNumberString(line);
}

FailureReporting& TopLevelReporting() {
    static FailureReporting reporting;
    return reporting;
}

void HandleCurrentFailure(const Procedure& procedure) {
    const runtime::Failure failure = runtime::CurrentFailure();
    runtime::Failure origin = failure;
    if (!failure.origin.empty()) origin.description = failure.origin;
    const FailureReporting& reporting = TopLevelReporting();
    if (procedure.topLevel && reporting.report) {
        if (reporting.fullReport) {
            HandleError(true, LocationOf(procedure), failure.number, failure.source,
                        failure.description, 4, 0);
        }
        ErrorHandling::m_bErrorTextBuilt = false;
        reporting.report(origin);
        return;
    }
    try {
        HandleError(procedure.topLevel, LocationOf(procedure), failure.number, failure.source,
                    failure.description, 4, 0);
    } catch (runtime::Failure& passed) {
        passed.origin = origin.description;
        throw;
    }
}

}  // namespace halvane
