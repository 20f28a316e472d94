#pragma once
// A test fixture in which the desktop is the scripted double: every dialog is
// answered from the test's script and every message is recorded, and the
// progress dialogs' steps read as "position/maximum message". Module state of
// the reporting layer is put back to a fresh component's before each test.

#include <gtest/gtest.h>

#include "platform/ui/ScriptedServices.h"

namespace halvane::testing {

// The text of a report shown by the procedure at `location` ("OpenRasterDataset
// modUtil ") of a failure of its own: heading, location, number, description.
inline std::string OwnFailureReport(const std::string& location, std::int32_t number,
                                    const std::string& description) {
    return "Record Call Stack Sequence - Bottom line is error line.\r\n\r\n\t" + location +
           "\r\n\r\nError Number \r\n\t" + std::to_string(number) + "\r\nDescription\r\n\t" +
           description + "\r\n\r\n";
}

class ScriptedDesktop : public ::testing::Test {
protected:
    ScriptedDesktop() : scope_(ui) {
        ui.onUnexpected = [](const std::string& what) { ADD_FAILURE() << what; };
    }
    void TearDown() override { ui.Verify(); }

    // The texts of the failure reports, in order.
    std::vector<std::string> Reports() const {
        std::vector<std::string> texts;
        for (const auto& event : ui.Events()) {
            if (event.kind == "error-window") texts.push_back(event.text);
        }
        return texts;
    }

    // Every step of every progress dialog, "position/maximum message", with a
    // "close" where a dialog was hidden.
    std::vector<std::string> ProgressSteps() const {
        std::vector<std::string> steps;
        for (const auto& dialog : ui.ProgressDialogs()) {
            std::string maximum, position;
            for (const std::string& call : dialog->calls) {
                const auto take = [&](const char* prefix, std::string& into) {
                    if (call.rfind(prefix, 0) != 0) return false;
                    into = call.substr(std::string(prefix).size());
                    return true;
                };
                std::string message;
                if (take("MaxRange ", maximum) || take("Position ", position)) continue;
                if (take("Message ", message))
                    steps.push_back(position + "/" + maximum + " " + message);
                if (call == "HideDialog") steps.push_back("close");
            }
        }
        return steps;
    }

    ui::ScriptedServices ui;

private:
    ui::ServicesScope scope_;
};

}  // namespace halvane::testing
