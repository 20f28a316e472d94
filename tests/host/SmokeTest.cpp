// The foundation end to end on the console, as the command line will use it:
// a guarded job shows its progress, fails two levels down, and the report
// reaches the user with both locations. Run with -V to see what a user sees.

#include <gtest/gtest.h>

#include <iostream>
#include <sstream>

#include "platform/reporting/ErrorHandling.h"
#include "platform/reporting/modProgDialog.h"
#include "platform/runtime/Convert.h"
#include "platform/ui/ConsoleServices.h"

namespace halvane {
namespace {

std::int16_t ReadRadius(const std::string& text) {
    return Guarded({"ReadRadius", "modSmoke", kPassOn}, [&] { return runtime::CInt(text); });
}

bool RunJob(const std::vector<std::string>& radii) {
    return Guarded({"RunJob", "modSmoke", kTopLevel}, [&] {
        const auto steps = static_cast<std::int32_t>(radii.size());
        for (std::int32_t i = 0; i < steps; ++i) {
            ShowProgress("Reading radius " + radii[i], "Processing", 0, steps, i + 1, 0);
            ReadRadius(radii[i]);
        }
        CloseProgress();
        return true;
    });
}

TEST(SmokeTest, ProgressAndAFailureReportOnTheConsole) {
    std::ostringstream console;
    ui::ConsoleServices services(console);
    ui::ServicesScope scope(services);

    EXPECT_TRUE(RunJob({"1", "5"}));
    EXPECT_FALSE(RunJob({"3", "five"}));
    CloseProgress();  // a failed job leaves the dialog open, as a user would see
    ErrorHandling::ReleaseErrorWindow();

    std::cout << console.str();
    const std::string text = console.str();
    EXPECT_NE(text.find("Processing [############------------] 1/2  Reading radius 1"),
              std::string::npos);
    EXPECT_NE(text.find("Reading radius five"), std::string::npos);
    EXPECT_NE(text.find("\tRunJob modSmoke \r\n\tReadRadius modSmoke \r\n\r\nError Number \r\n\t13"
                        "\r\nDescription\r\n\tType mismatch"),
              std::string::npos);
}

}  // namespace
}  // namespace halvane
