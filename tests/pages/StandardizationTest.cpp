// The standardization page on grids of the test's own: which statistics each
// tab shows, what a load that cannot open a grid leaves, and what a run
// writes, cell by cell, and puts on the map.

#include <gtest/gtest.h>

#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTabWidget>
#include <cmath>
#include <cstdio>
#include <cstdlib>

#include "engine/RasterAccess.h"
#include "pages/frmZoneStep3.h"
#include "platform/map/Application.h"
#include "platform/map/Map.h"
#include "support/PageDesktop.h"
#include "support/StageFixture.h"

namespace halvane {
namespace {

using namespace pages;
using testing::kNoData;

const raster::Grid kGrid{500000, 6000000, 10, 10, 12, 9};

// Cells alternating between two values, after `holes` NoData cells.
std::vector<double> Alternating(double a, double b, int holes) {
    std::vector<double> cells(static_cast<std::size_t>(kGrid.Cells()), kNoData);
    for (std::size_t i = static_cast<std::size_t>(holes); i < cells.size(); ++i) {
        cells[i] = (i % 2 == 0) ? a : b;
    }
    return cells;
}

// Whole depths of a wavy surface with a few holes, as a BPI grid may have.
std::vector<double> BpiLike(int seed, double scale) {
    std::vector<double> cells = testing::Surface(kGrid, true, seed);
    for (double& v : cells) v = std::round(v * scale);
    for (std::size_t i = 5; i < cells.size(); i += 17) cells[i] = kNoData;
    return cells;
}

// 100 times the z-score, cut toward zero after adding .05, with the mean and
// deviation as the expression gets them: 15 significant digits.
std::vector<double> Standardized(const std::vector<double>& cells) {
    long double sum = 0, n = 0;
    for (double v : cells) {
        if (!std::isnan(v)) sum += v, n += 1;
    }
    const long double mean = sum / n;
    long double squares = 0;
    for (double v : cells) {
        if (!std::isnan(v)) squares += (v - mean) * (v - mean);
    }
    const auto asWritten = [](long double value) {
        char text[40];
        std::snprintf(text, sizeof text, "%.15Lg", value);
        return std::strtod(text, nullptr);
    };
    const double m = asWritten(mean), s = asWritten(std::sqrt(squares / n));
    std::vector<double> out(cells.size(), kNoData);
    for (std::size_t i = 0; i < cells.size(); ++i) {
        if (!std::isnan(cells[i])) out[i] = std::trunc(((cells[i] - m) / s) * 100 + .05);
    }
    return out;
}

class StandardizationPageTest : public testing::PageDesktop {
protected:
    // The two BPI grids and the folder, as the required-data dialog leaves
    // them; a grid given no cells is named but does not open.
    void Inputs(const std::vector<double>& fine, const std::vector<double>& broad) {
        const std::string folder = input_.Path().string();
        if (!fine.empty()) testing::WriteGrid(input_ / "fine.tif", kGrid, fine, true);
        if (!broad.empty()) testing::WriteGrid(input_ / "broad.tif", kGrid, broad, true);
        g_s_LS_BPI_InputDataSet = "fine";
        g_s_LS_BPI_InputDataPath = folder;
        g_p_LS_BPI_RasterDataset = OpenDatasetInWorkspace(GetRasterWorkspace(folder), "fine");
        g_s_SS_BPI_InputDataSet = "broad";
        g_s_SS_BPI_InputDataPath = folder;
        g_p_SS_BPI_RasterDataset = OpenDatasetInWorkspace(GetRasterWorkspace(folder), "broad");
        g_s_WorkingDir = work_.Path().string();
    }

    void Open(bool standAlone) {
        g_b_StandAloneRun = standAlone;
        frmZoneStep3->m_pApp = app_;
        frmZoneStep3.Show();
    }

    // Names typed on both tabs, "" for "No thanks.", then Submit.
    void Submit(const std::string& fine, const std::string& broad) {
        if (fine.empty())
            Click(frmZoneStep3, "optSave_LS_StdGrid(0)");
        else
            Type(frmZoneStep3, "g_s_Save_LgScale_Std_Grid", fine);
        Click(frmZoneStep3, "cmdNext_This");
        if (broad.empty())
            Click(frmZoneStep3, "optSave_SS_StdGrid(0)");
        else
            Type(frmZoneStep3, "g_s_Save_SmScale_Std_Grid", broad);
        Click(frmZoneStep3, "cmdSubmit(1)");
    }

    std::vector<std::string> LayerNames() const {
        std::vector<std::string> names;
        const map::MapPtr focus = app_->Document()->FocusMap();
        for (std::int32_t i = 0; i < focus->LayerCount(); ++i)
            names.push_back(focus->Layer(i)->Name());
        return names;
    }

    std::vector<double> Saved(const std::string& name) const {
        return testing::ReadAll(testing::OpenRaster(work_ / (name + ".tif")));
    }

    std::shared_ptr<map::Application> app_ = std::make_shared<map::Application>();
    testing::TempDir input_, work_;
};

TEST_F(StandardizationPageTest, EachTabShowsTheStatisticsOfItsOwnGrid) {
    // -3 and 3 in equal numbers: mean 0, deviation 3; 10 and 20: 15 and 5.
    // The holes would move both if they were counted.
    Inputs(Alternating(-3, 3, 2), Alternating(10, 20, 4));
    Open(true);
    EXPECT_EQ(Text(frmZoneStep3, "lbl_LgScale_BPI_Grid(0)"), "fine");
    EXPECT_EQ(Text(frmZoneStep3, "lbl_Lg_ScaleBPI_Mean(0)"), "0");
    EXPECT_EQ(Text(frmZoneStep3, "lbl_Lg_ScaleBPI_StDev(0)"), "3");
    EXPECT_EQ(Text(frmZoneStep3, "g_s_Save_LgScale_Std_Grid"), "finestd");
    EXPECT_EQ(Text(frmZoneStep3, "lbl_SmScale_BPI_Grid(1)"), "broad");
    EXPECT_EQ(Text(frmZoneStep3, "lbl_SmScale_BPIStat_Mean(1)"), "15");
    EXPECT_EQ(Text(frmZoneStep3, "lbl_SmScale_BPIStat_StDev(1)"), "5");
    EXPECT_EQ(Text(frmZoneStep3, "g_s_Save_SmScale_Std_Grid"), "broadstd");
    EXPECT_TRUE(Reports().empty());
}

TEST_F(StandardizationPageTest, AGridThatDoesNotOpenEndsTheLoadWithTheDesignTexts) {
    const std::string report = testing::OwnFailureReport(
        "Form_Load frmZoneStep3 ", 91, "Object variable or With block variable not set");
    struct Case {
        const char* what;
        bool fineOpens;
        std::vector<std::string> fineTab, broadTab;
    };
    const Case cases[] = {
        {"no fine grid",
         false,
         {"[lbpigrid]", "[Mean]", "[stDev]"},
         {"[sbpigrid]", "[Mean]", "[stdDev]"}},
        {"no broad grid", true, {"fine", "0", "3"}, {"[sbpigrid]", "[Mean]", "[stdDev]"}},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        Inputs(c.fineOpens ? Alternating(-3, 3, 0) : std::vector<double>{}, {});
        Open(true);
        EXPECT_EQ(Reports().back(), report);
        const std::vector<std::string> fineTab = {Text(frmZoneStep3, "lbl_LgScale_BPI_Grid(0)"),
                                                  Text(frmZoneStep3, "lbl_Lg_ScaleBPI_Mean(0)"),
                                                  Text(frmZoneStep3, "lbl_Lg_ScaleBPI_StDev(0)")};
        const std::vector<std::string> broadTab = {
            Text(frmZoneStep3, "lbl_SmScale_BPI_Grid(1)"),
            Text(frmZoneStep3, "lbl_SmScale_BPIStat_Mean(1)"),
            Text(frmZoneStep3, "lbl_SmScale_BPIStat_StDev(1)")};
        EXPECT_EQ(fineTab, c.fineTab);
        EXPECT_EQ(broadTab, c.broadTab);
        // The page stays up in the state the load reached.
        EXPECT_EQ(ShownPages(), std::vector<std::string>{"frmZoneStep3"});
        frmZoneStep3.Unload();
        FlushUnloads();
    }
    EXPECT_EQ(Reports().size(), 2u);
}

TEST_F(StandardizationPageTest, ARunSavesBothGridsCellForCellAndMapsThemFineFirst) {
    const std::vector<double> fine = BpiLike(1, 1), broad = BpiLike(3, 7.5);
    Inputs(fine, broad);
    Open(false);
    ui.Answer(ui::vbYes);
    Submit("finez", "broadz");

    testing::ExpectCells(Saved("finez"), Standardized(fine));
    testing::ExpectCells(Saved("broadz"), Standardized(broad));
    // The broad grid first, in a dialog of its own, then the fine one.
    std::vector<std::string> oneDialog;
    for (int position = 0; position <= 6; ++position) {
        oneDialog.push_back(std::to_string(position) + "/6 Creating Output files");
    }
    oneDialog.push_back("close");
    std::vector<std::string> both = oneDialog;
    both.insert(both.end(), oneDialog.begin(), oneDialog.end());
    EXPECT_EQ(ProgressSteps(), both);
    // New layers go on top: the broad grid, added last, is the top one.
    EXPECT_EQ(LayerNames(), (std::vector<std::string>{"broadz", "finez"}));
    EXPECT_EQ(ui.MousePointer(), ui::vbDefault);
    EXPECT_TRUE(frmZoneStep3->cmdNext->isEnabled());
    EXPECT_FALSE(frmZoneStep3->cmdSubmit->isEnabled());
    EXPECT_TRUE(Reports().empty());
}

TEST_F(StandardizationPageTest, TheFineTabAloneDecidesWhetherTheMapIsOffered) {
    struct Case {
        const char* fine;
        const char* broad;
        std::size_t questions;
        std::vector<std::string> layers;
    };
    const Case cases[] = {
        // A temporary grid goes on the map too, when the fine tab asks.
        {"finez", "", 1, {"tmpbroadstd", "finez"}},
        {"", "broadz", 0, {}},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(std::string(c.fine) + "|" + c.broad);
        testing::TempDir work;
        Inputs(Alternating(-3, 3, 0), Alternating(10, 20, 0));
        g_s_WorkingDir = work.Path().string();
        app_ = std::make_shared<map::Application>();
        const std::size_t before = ui.Messages().size();
        Open(true);
        if (c.questions) ui.Answer(ui::vbYes);
        Submit(c.fine, c.broad);
        EXPECT_EQ(ui.Messages().size() - before, c.questions);
        EXPECT_EQ(LayerNames(), c.layers);
        EXPECT_TRUE(frmZoneStep3->cmdNext->isEnabled());
        frmZoneStep3.Unload();
        FlushUnloads();
    }
}

TEST_F(StandardizationPageTest,
       ACancelledRunLeavesTheButtonsAndInTheWizardRefreshesTheBroadScalePage) {
    for (const bool standAlone : {true, false}) {
        SCOPED_TRACE(standAlone ? "stand-alone" : "wizard");
        Inputs(Alternating(-3, 3, 0), Alternating(10, 20, 0));
        ui.onProgressMessage = [](ui::ScriptedProgressDialog& dialog) {
            if (dialog.position == 3) dialog.PressCancel();
        };
        Open(standAlone);
        Submit("finez", "broadz");
        EXPECT_FALSE(frmZoneStep3->cmdNext->isEnabled());
        EXPECT_TRUE(frmZoneStep3->cmdSubmit->isEnabled());
        EXPECT_EQ(ui.MousePointer(), ui::vbHourglass);
        EXPECT_EQ(g_p_ProgressDialog, nullptr);
        EXPECT_FALSE(std::filesystem::exists(work_ / "broadz.tif"));
        // Refreshing that page makes it, unseen and without its Form_Load.
        EXPECT_EQ(frmZoneStep1.Loaded(), !standAlone);
        EXPECT_FALSE(frmZoneStep1.Shown());
        ui.onProgressMessage = nullptr;
        for (PageSlot* page : AllPageSlots()) page->Unload();
        FlushUnloads();
    }
}

}  // namespace
}  // namespace halvane
