#pragma once
// A session in a fresh working folder, with the desktop scripted and every
// call on the map algebra operators written down.

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <string>
#include <vector>

#include "engine/Session.h"
#include "platform/raster/MapAlgebra.h"
#include "platform/reporting/ErrorHandling.h"
#include "platform/reporting/modProgDialog.h"
#include "support/GridFiles.h"
#include "support/ScriptedDesktop.h"

namespace halvane::testing {

// Cells compared one by one: NoData where expected, else equal within a
// relative tolerance.
inline void ExpectCells(const std::vector<double>& actual, const std::vector<double>& expected,
                        double tolerance = 0) {
    ASSERT_EQ(actual.size(), expected.size());
    for (std::size_t i = 0; i < actual.size(); ++i) {
        if (std::isnan(expected[i])) {
            EXPECT_TRUE(std::isnan(actual[i])) << "cell " << i << " = " << actual[i];
        } else {
            EXPECT_NEAR(actual[i], expected[i], tolerance * std::abs(expected[i])) << "cell " << i;
        }
    }
}

class StageFixture : public ScriptedDesktop {
protected:
    void SetUp() override {
        // A window kept from an earlier test would report to that test's desktop.
        ErrorHandling::ReleaseErrorWindow();
        ErrorHandling::m_bErrorTextBuilt = false;
        ResetSession();
        CloseProgress();
        g_b_Continue = false;
        std::filesystem::create_directories(work_.Path());
        g_s_WorkingDir = work_.Path().string();
        raster::Journal() = [this](const std::string& line) { journal.push_back(line); };
    }
    void TearDown() override {
        raster::Journal() = nullptr;
        CloseProgress();
        ResetSession();
        ScriptedDesktop::TearDown();
    }

    // Writes an input grid outside the working folder and gives its raster.
    raster::RasterPtr Input(const raster::Grid& grid, const std::vector<double>& values,
                            const std::string& name = "depth") {
        WriteGrid(input_ / (name + ".tif"), grid, values);
        return OpenRaster(input_ / (name + ".tif"));
    }
    std::string InputFolder() const { return input_.Path().string(); }

    // The grids in the working folder, as file names.
    std::vector<std::string> Saved() const {
        std::vector<std::string> names;
        for (const auto& entry : std::filesystem::directory_iterator(work_.Path())) {
            if (entry.path().extension() == ".tif") names.push_back(entry.path().filename());
        }
        std::sort(names.begin(), names.end());
        return names;
    }

    // The expressions executed, in order, from the journal.
    std::vector<std::string> Executed() const {
        std::vector<std::string> expressions;
        for (const std::string& line : journal) {
            if (line.rfind("Execute ", 0) == 0) expressions.push_back(line.substr(8));
        }
        return expressions;
    }

    std::vector<std::string> journal;

private:
    TempDir input_;
    TempDir work_;
};

}  // namespace halvane::testing
