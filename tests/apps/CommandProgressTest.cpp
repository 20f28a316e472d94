// The progress dialog of command-line runs shows the stages' own steps, as
// the stages give them, and nothing of the command line's: the engine's passes
// go to a bar of the command's own on the console.

#include <gtest/gtest.h>

#include <memory>
#include <sstream>

#include "apps/RasterCommands.h"
#include "classification/clsXMLPrjFile.h"
#include "support/GridFiles.h"
#include "support/Halvane.h"
#include "support/ScriptedDesktop.h"

namespace halvane::apps {
namespace {

using testing::Halvane;
using Steps = std::vector<std::string>;

// The console of a run, writing to a string, whose progress dialogs are the
// scripted desktop's, so that their every call is recorded.
class WatchedConsole : public ui::ConsoleServices {
public:
    WatchedConsole(std::ostream& out, ui::ScriptedServices& desktop)
        : ConsoleServices(out, ui::QuestionPolicy::AnswerNo, /*redrawBar=*/false),
          desktop_(desktop) {}
    std::shared_ptr<ui::ITrackCancel> NewCancelTracker() override {
        return desktop_.NewCancelTracker();
    }
    std::shared_ptr<ui::IProgressDialogFactory> NewProgressDialogFactory() override {
        return desktop_.NewProgressDialogFactory();
    }

private:
    ui::ScriptedServices& desktop_;
};

class CommandProgressTest : public testing::ScriptedDesktop {
protected:
    void SetUp() override {
        RunConsole() = [this] { return std::make_unique<WatchedConsole>(console_, ui); };
        testing::WriteGrid(dir_ / "depth.tif", grid_, testing::Surface(grid_, false));
    }
    void TearDown() override {
        RunConsole() = nullptr;
        ScriptedDesktop::TearDown();
    }

    // The steps without the closings, which are the command's to place; and
    // a check that every dialog was closed and had the stages' title.
    Steps StepsOfClosedDialogs() const {
        for (const auto& dialog : ui.ProgressDialogs()) {
            EXPECT_EQ(dialog->title, "Processing");
            EXPECT_FALSE(dialog->visible);
        }
        Steps steps;
        for (const std::string& step : ProgressSteps()) {
            if (step != "close") steps.push_back(step);
        }
        return steps;
    }

    testing::TempDir dir_;
    const std::string work_ = dir_ / "work";
    const raster::Grid grid_{400000, 5000000, 10, 10, 12, 9};
    std::ostringstream console_;
};

// The five steps of one position index, out of 6.
Steps BpiSteps() {
    const std::string head = "Please be patient...\r\nCreating BPI Output files...\r\n";
    const std::string longTime =
        head + "This process take a long time, depending on the size of the dataset.";
    return {"1/6 " + longTime, "2/6 " + longTime, "3/6 " + longTime,
            "4/6 " + head + "Almost done..", "5/6 " + head + "Whew, that was a killer..."};
}

TEST_F(CommandProgressTest, BpiShowsTheFiveStepsOfThePositionIndex) {
    ASSERT_EQ(
        Halvane({"bpi", "--workdir", work_, "--inner", "1", "--outer", "3", dir_ / "depth.tif"}),
        0);
    EXPECT_EQ(StepsOfClosedDialogs(), BpiSteps());
    EXPECT_EQ(ProgressSteps().back(), "close");
    // The engine's passes were shown, on a bar of the command's own.
    EXPECT_NE(console_.str().find("halvane bpi ["), std::string::npos) << console_.str();
    EXPECT_NE(console_.str().find("Computing"), std::string::npos);
}

TEST_F(CommandProgressTest, ClassifyShowsTheStepsOfEachStageInTurn) {
    classification::clsXMLPrjFile dictionary;
    for (std::int16_t i = 1; i <= 2; ++i) {
        auto record = std::make_shared<classification::clsClassificationRec>();
        record->ID = static_cast<std::int16_t>(i + 1);
        record->Class = i;
        record->Zone = "Zone " + std::to_string(i);
        (i == 1 ? record->SSB_LowerBounds : record->SSB_UpperBounds) = "0";
        dictionary.Classifications->Add(record);
    }
    dictionary.SaveFile(dir_ / "two.xml");
    ASSERT_EQ(Halvane({"classify", "--workdir", work_, "--dictionary", dir_ / "two.xml",
                       dir_ / "depth.tif"}),
              0);

    // Both position indices, both standardizations, then Finish and the run
    // it starts with its two class grids.
    Steps expected = BpiSteps();
    const Steps fine = BpiSteps();
    expected.insert(expected.end(), fine.begin(), fine.end());
    for (int scale = 0; scale < 2; ++scale) {
        for (int position = 1; position <= 5; ++position) {
            expected.push_back(std::to_string(position) + "/6 Creating Output files");
        }
    }
    const Steps finish = {
        "0/100 Creating Output files\r\nBuilding Slope Grid",
        "10/100 Creating Output files\r\nPost-Slope Processing",
        "15/100 Creating Output files",
        "20/100 Creating Output files\r\nBuilding Class Grids",
        "25/100 Creating Output files Building Class Grid 1 of 2",
        "30/100 Creating Output files Building Class Grid 2 of 2",
        "90/100 Creating Output files .. Combining Class Grids",
        "95/100 Creating Output files .. Cleaning up",
        "100/100 Creating Output files",
    };
    expected.insert(expected.end(), finish.begin(), finish.end());
    EXPECT_EQ(StepsOfClosedDialogs(), expected);
    EXPECT_NE(console_.str().find("halvane classify ["), std::string::npos) << console_.str();
}

}  // namespace
}  // namespace halvane::apps
