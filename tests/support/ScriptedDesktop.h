#pragma once
// A test fixture in which the desktop is the scripted double: every dialog is
// answered from the test's script and every message is recorded. Module state
// of the reporting layer is put back to a fresh component's before each test.

#include <gtest/gtest.h>

#include "platform/ui/ScriptedServices.h"

namespace halvane::testing {

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

    ui::ScriptedServices ui;

private:
    ui::ServicesScope scope_;
};

}  // namespace halvane::testing
