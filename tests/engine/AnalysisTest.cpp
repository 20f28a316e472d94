// The analysis stages: BPI, statistics, standardization, slope, resampling,
// checked for their expressions, their values, what they leave in the session
// and the folder, and where Cancel stops them.

#include <gtest/gtest.h>

#include <cmath>

#include "engine/Analysis.h"
#include "engine/RasterAccess.h"
#include "platform/runtime/Convert.h"
#include "support/StageFixture.h"

namespace halvane {
namespace {

using Lines = std::vector<std::string>;

const raster::Grid kGrid{500000, 4000000, 10, 10, 9, 8};

// Depths with a hole, so rings that reach it leave it out.
std::vector<double> Depths() {
    std::vector<double> values = testing::Surface(kGrid, false);
    values[3 * 9 + 4] = testing::kNoData;
    return values;
}

class AnalysisTest : public testing::StageFixture {
protected:
    // Presses Cancel while the progress dialog shows this position.
    void CancelAt(std::int32_t position) {
        ui.onProgressMessage = [position](ui::ScriptedProgressDialog& dialog) {
            if (dialog.position == position) dialog.PressCancel();
        };
    }
};

TEST_F(AnalysisTest, BroadBpiOfASmallGridFollowsItsDefinition) {
    g_i_SmScaleBPI_inner_radius = "1";
    g_i_SmScaleBPI_outer_radius = "3";
    raster::RasterPtr input = Input(kGrid, Depths());
    const raster::RasterPtr result = BPI_Build(input, g_i_SmScaleBPI_inner_radius,
                                               g_i_SmScaleBPI_outer_radius, "", "BroadBPI", 42);
    ASSERT_NE(result, nullptr);

    EXPECT_EQ(journal,
              (Lines{"RasterMapAlgebraOp", "OutWorkspace " + g_s_WorkingDir, "SetCellSize 1 1",
                     "SetExtent 2", "BindRaster inRaster",
                     "Execute int(([inRaster] - Focalmean([inRaster], annulus, 1, 3)) + .5)",
                     "UnbindRaster inRaster"}));
    const std::string head = "Please be patient...\r\nCreating BPI Output files...\r\n";
    const std::string standard =
        head + "This process take a long time, depending on the size of the dataset.";
    EXPECT_EQ(ProgressSteps(), (Lines{"1/6 " + standard, "2/6 " + standard, "3/6 " + standard,
                                      "4/6 " + head + "Almost done..",
                                      "5/6 " + head + "Whew, that was a killer..."}));
    EXPECT_EQ(ui.ProgressDialogs().at(0)->owner, 42);
    EXPECT_TRUE(ui.ProgressDialogs().at(0)->visible);  // the page closes it

    EXPECT_EQ(Saved(), Lines{"tmpBroadBPI.tif"});
    EXPECT_EQ(g_s_SS_BPI_InputDataSet, "tmpBroadBPI");
    ASSERT_NE(g_p_SS_BPI_RasterDataset, nullptr);
    EXPECT_EQ(g_p_LS_BPI_RasterDataset, nullptr);
    EXPECT_EQ(g_s_LS_BPI_InputDataSet, "");
    EXPECT_EQ(g_i_SmScaleBPI_inner_radius, "");
    EXPECT_EQ(g_i_SmScaleBPI_outer_radius, "");
    raster::RasterPtr saved = g_p_SS_BPI_RasterDataset->CreateDefaultRaster();
    EXPECT_TRUE(saved->IsInteger());
    testing::ExpectCells(testing::ReadAll(saved), testing::ReferenceBpi(kGrid, Depths(), 1, 3));
    EXPECT_TRUE(Reports().empty());
}

TEST_F(AnalysisTest, FineAndOtherTagsFillTheFineVariablesUnderTheirNames) {
    raster::RasterPtr input = Input(kGrid, Depths());
    std::string inner = "1.5", outer = "2.5";
    ASSERT_NE(BPI_Build(input, inner, outer, "fine_2", "FineBPI", 0), nullptr);
    EXPECT_EQ(Executed().at(0),
              "int(([inRaster] - Focalmean([inRaster], annulus, 1.5, 2.5)) + .5)");
    EXPECT_EQ(g_s_LS_BPI_InputDataSet, "fine_2");
    ASSERT_NE(g_p_LS_BPI_RasterDataset, nullptr);
    testing::ExpectCells(testing::ReadAll(g_p_LS_BPI_RasterDataset->CreateDefaultRaster()),
                         testing::ReferenceBpi(kGrid, Depths(), 1.5, 2.5));

    inner = "1", outer = "2";
    ASSERT_NE(BPI_Build(input, inner, outer, "", "Medium", 0), nullptr);
    EXPECT_EQ(g_s_LS_BPI_InputDataSet, "tmpMedium");
    EXPECT_EQ(Saved(), (Lines{"fine_2.tif", "tmpMedium.tif"}));
    EXPECT_EQ(g_s_SS_BPI_InputDataSet, "");
}

TEST_F(AnalysisTest, BpiRadiusTextThatIsNoNumberFailsInTheEngineAndChangesNothing) {
    raster::RasterPtr input = Input(kGrid, Depths());
    g_i_SmScaleBPI_inner_radius = "one";
    g_i_SmScaleBPI_outer_radius = "5";
    EXPECT_EQ(BPI_Build(input, g_i_SmScaleBPI_inner_radius, g_i_SmScaleBPI_outer_radius, "",
                        "BroadBPI", 0),
              nullptr);
    EXPECT_EQ(Executed(), Lines{"int(([inRaster] - Focalmean([inRaster], annulus, one, 5)) + .5)"});
    ASSERT_EQ(Reports().size(), 1u);
    EXPECT_NE(Reports()[0].find("\tBPI_Build modUtil \r\n"), std::string::npos) << Reports()[0];
    EXPECT_EQ(g_i_SmScaleBPI_inner_radius, "one");
    EXPECT_EQ(g_i_SmScaleBPI_outer_radius, "5");
    EXPECT_EQ(g_s_SS_BPI_InputDataSet, "");
    EXPECT_TRUE(Saved().empty());
}

TEST_F(AnalysisTest, BpiCancelledAtEachTestLeavesSessionAndFolderUntouched) {
    raster::RasterPtr input = Input(kGrid, Depths());
    // The operator's calls made before each test point.
    const std::vector<std::size_t> callsBefore = {0, 0, 4, 7};
    for (std::int32_t position = 1; position <= 4; ++position) {
        SCOPED_TRACE(position);
        journal.clear();
        CloseProgress();
        CancelAt(position);
        g_i_SmScaleBPI_inner_radius = "1";
        g_i_SmScaleBPI_outer_radius = "5";
        EXPECT_EQ(BPI_Build(input, g_i_SmScaleBPI_inner_radius, g_i_SmScaleBPI_outer_radius, "",
                            "BroadBPI", 0),
                  nullptr);
        EXPECT_EQ(journal.size(), callsBefore[position - 1]);
        EXPECT_EQ(ProgressSteps().back().substr(0, 4), std::to_string(position) + "/6 ");
        EXPECT_EQ(g_i_SmScaleBPI_inner_radius, "1");
        EXPECT_EQ(g_i_SmScaleBPI_outer_radius, "5");
        EXPECT_EQ(g_s_SS_BPI_InputDataSet, "");
        EXPECT_EQ(g_p_SS_BPI_RasterDataset, nullptr);
        EXPECT_TRUE(Saved().empty());
    }
    EXPECT_TRUE(Reports().empty());
}

TEST_F(AnalysisTest, BpiSavedUnderATakenNameIsReportedAndNotRecorded) {
    raster::RasterPtr input = Input(kGrid, Depths());
    std::string inner = "1", outer = "3";
    ASSERT_NE(BPI_Build(input, inner, outer, "bpi", "BroadBPI", 0), nullptr);
    g_s_SS_BPI_InputDataSet.clear();
    g_p_SS_BPI_RasterDataset.reset();
    inner = "1", outer = "3";
    EXPECT_EQ(BPI_Build(input, inner, outer, "BPI", "BroadBPI", 0), nullptr);
    ASSERT_EQ(Reports().size(), 1u);
    EXPECT_NE(Reports()[0].find("already exists"), std::string::npos) << Reports()[0];
    EXPECT_EQ(g_s_SS_BPI_InputDataSet, "");
    EXPECT_EQ(g_p_SS_BPI_RasterDataset, nullptr);
    EXPECT_EQ(inner, "1");
}

TEST_F(AnalysisTest, StatisticsGoToTheVariablesOfTheExactTag) {
    raster::RasterPtr input = Input(kGrid, Depths());
    // The summary itself is the storage's, checked with it; here only where it goes.
    const double mean = input->Item(0)->Statistics().Mean;
    const double deviation = input->Item(0)->Statistics().StandardDeviation;
    ASSERT_NE(mean, 0.0);

    calcRasterStats(input, "Small");
    EXPECT_EQ(g_d_SS_BPI_Mean, mean);
    EXPECT_EQ(g_d_SS_BPI_StdDev, deviation);
    EXPECT_EQ(g_d_LS_BPI_Mean, 0.0);

    g_d_SS_BPI_Mean = 0;
    calcRasterStats(input, "small");  // not the broad tag: the test is exact
    EXPECT_EQ(g_d_SS_BPI_Mean, 0.0);
    EXPECT_EQ(g_d_LS_BPI_Mean, mean);
    EXPECT_EQ(g_d_LS_BPI_StdDev, deviation);

    calcRasterStats(nullptr, "Large");
    ASSERT_EQ(Reports().size(), 1u);
    EXPECT_NE(Reports()[0].find("\tcalcRasterStats modUtil \r\n"), std::string::npos);
    EXPECT_EQ(g_d_LS_BPI_Mean, mean);
}

TEST_F(AnalysisTest, StandardizationTextsCarryTheNumbersInTheStandardForm) {
    raster::RasterPtr input = Input(kGrid, Depths());
    const std::vector<std::tuple<double, double, std::string>> cases = {
        {-0.25, 3.5, "int(((([inRaster] - -0.25) / 3.5) * 100) + .05)"},
        {1.5e-7, 0, "int(((([inRaster] - 1.5E-07) / 0) * 100) + .05)"},
        {-12.3456789012345678, 2e15,
         "int(((([inRaster] - -12.3456789012346) / 2E+15) * 100) + .05)"},
    };
    int n = 0;
    for (auto [mean, deviation, text] : cases) {
        std::string name = "std" + std::to_string(++n);
        journal.clear();
        ASSERT_NE(BPI_Standardize(input, mean, deviation, name, "BroadBPI", 0), nullptr) << text;
        EXPECT_EQ(journal, (Lines{"RasterMapAlgebraOp", "OutWorkspace " + g_s_WorkingDir,
                                  "BindRaster inRaster", "Execute " + text}));
    }
    // A deviation of 0 divides by zero in every cell: nothing but NoData.
    const std::vector<double> cells = testing::ReadAll(
        raster::RasterDataset::Open(g_s_WorkingDir + "/std2.tif")->CreateDefaultRaster());
    for (double v : cells) EXPECT_TRUE(std::isnan(v));
    EXPECT_EQ(ProgressSteps().front(), "1/6 Creating Output files");
    EXPECT_EQ(ProgressSteps().back(), "5/6 Creating Output files");
}

TEST_F(AnalysisTest, StandardizedValuesAreCutTowardZeroAfterAddingAHundredthOfAHalf) {
    std::vector<double> z = Depths();
    raster::RasterPtr input = Input(kGrid, z);
    calcRasterStats(input, "Small");
    std::string name;  // empty: the temporary name of the tag
    ASSERT_NE(BPI_Standardize(input, g_d_SS_BPI_Mean, g_d_SS_BPI_StdDev, name, "BroadBPI", 0),
              nullptr);
    EXPECT_EQ(g_s_Save_SmScale_Std_Grid, "tmpBroadstd");
    ASSERT_NE(g_p_SmScale_Std_RasterDataset, nullptr);
    const double mean = runtime::CDbl(runtime::CStr(g_d_SS_BPI_Mean));
    const double deviation = runtime::CDbl(runtime::CStr(g_d_SS_BPI_StdDev));
    std::vector<double> expected(z.size());
    int negative = 0;
    for (std::size_t i = 0; i < z.size(); ++i) {
        expected[i] = std::isnan(z[i]) ? z[i] : std::trunc((z[i] - mean) / deviation * 100 + .05);
        negative += expected[i] < 0;
    }
    EXPECT_GT(negative, 5);  // truncation toward zero is exercised
    testing::ExpectCells(testing::ReadAll(g_p_SmScale_Std_RasterDataset->CreateDefaultRaster()),
                         expected);

    name.clear();
    ASSERT_NE(BPI_Standardize(input, g_d_SS_BPI_Mean, g_d_SS_BPI_StdDev, name, "FineBPI", 0),
              nullptr);
    EXPECT_EQ(g_s_Save_LgScale_Std_Grid, "tmpFinestd");
    EXPECT_EQ(Saved(), (Lines{"tmpBroadstd.tif", "tmpFinestd.tif"}));
}

TEST_F(AnalysisTest, StandardizationCancelledAtEachTestSavesNothing) {
    raster::RasterPtr input = Input(kGrid, Depths());
    for (std::int32_t position = 1; position <= 4; ++position) {
        SCOPED_TRACE(position);
        CloseProgress();
        CancelAt(position);
        double mean = 1, deviation = 2;
        g_s_Save_SmScale_Std_Grid = "tmpbroadstd";
        EXPECT_EQ(BPI_Standardize(input, mean, deviation, g_s_Save_SmScale_Std_Grid, "BroadBPI", 0),
                  nullptr);
        EXPECT_EQ(g_s_Save_SmScale_Std_Grid, "tmpbroadstd");  // as the page gave it
        EXPECT_EQ(g_p_SmScale_Std_RasterDataset, nullptr);
        EXPECT_TRUE(Saved().empty());
    }
}

TEST_F(AnalysisTest, SlopeIsSavedAsSlopeFromTheGridBpiWorksOn) {
    Input(kGrid, Depths(), "resampled");
    g_s_BPI_DataPath = InputFolder();
    g_s_BPI_DataSet = "resampled";
    BuildSlope();
    EXPECT_EQ(journal, Lines{"Slope 1"});  // no operator, no environment
    EXPECT_EQ(g_s_SlopeGrid, "SLOPE");
    ASSERT_NE(g_p_SlopeRaster, nullptr);
    EXPECT_EQ(Saved(), Lines{"SLOPE.tif"});
    EXPECT_TRUE(ui.ProgressDialogs().empty());

    // A second run meets the grid it made: the copy refuses, and it is reported.
    g_s_SlopeGrid.clear();
    BuildSlope();
    ASSERT_EQ(Reports().size(), 1u);
    EXPECT_NE(Reports()[0].find("\tBuildSlope modUtil \r\n"), std::string::npos);
    EXPECT_EQ(g_s_SlopeGrid, "");
}

TEST_F(AnalysisTest, SlopeWithoutItsInputFolderShowsTheCauseThenTheEmptyDataset) {
    Input(kGrid, Depths(), "resampled");
    const std::string vanished = InputFolder();
    std::filesystem::remove_all(vanished);
    g_s_BPI_DataSet = "resampled";

    // Opening reports the cause and gives nothing; slope then fails on the
    // empty dataset and reports that in its turn.
    const std::string emptyDataset = testing::OwnFailureReport(
        "BuildSlope modUtil ", 91, "Object variable or With block variable not set");
    for (const std::string& folder : {vanished, std::string()}) {
        SCOPED_TRACE(folder);
        g_s_BPI_DataPath = folder;
        const std::size_t before = Reports().size();
        BuildSlope();
        const Lines reports = Reports();
        EXPECT_EQ(Lines(reports.begin() + static_cast<std::ptrdiff_t>(before), reports.end()),
                  (Lines{testing::OwnFailureReport("OpenRasterDataset modUtil ",
                                                   raster::kEngineErrorNumber,
                                                   "Workspace '" + folder + "' does not exist"),
                         emptyDataset}));
    }
    EXPECT_EQ(g_p_SlopeRaster, nullptr);
    EXPECT_EQ(g_s_SlopeGrid, "");
    EXPECT_TRUE(Saved().empty());
}

TEST_F(AnalysisTest, ResampleMapsThePageTextsToKeywords) {
    raster::RasterPtr input = Input(kGrid, Depths());
    const std::vector<std::pair<std::string, std::string>> methods = {
        {"Cubic Convolution", "Cubic"},
        {"Bilinear Interoplation", "Bilinear"},
        {"Nearest Neighbor", "Nearest"},
    };
    for (const auto& [text, keyword] : methods) {
        journal.clear();
        const std::string name = "res_" + keyword;
        const raster::RasterPtr result = ResampleRas(input, "20", text, name);
        ASSERT_NE(result, nullptr) << text;
        EXPECT_EQ(journal, (Lines{"RasterMapAlgebraOp", "OutWorkspace " + g_s_WorkingDir,
                                  "SetCellSize 1 20", "SetExtent 2", "BindRaster inRaster",
                                  "Execute Resample([inRaster], 20, " + keyword + ")"}));
        EXPECT_EQ(g_s_BPI_DataSet, name);
        ASSERT_NE(g_p_BPI_RasterDataset, nullptr);
        EXPECT_EQ(g_p_BPI_RasterDataset->CreateDefaultRaster()->GetGrid().cellX, 20.0);
    }
    journal.clear();
    EXPECT_EQ(ResampleRas(input, "20", "Bilinear Interpolation", "res_x"), nullptr);
    EXPECT_EQ(journal.back(), "Execute Resample([inRaster], 20, )");
    ASSERT_EQ(Reports().size(), 1u);
    EXPECT_NE(Reports()[0].find("\tResampleRas modUtil \r\n"), std::string::npos);
    EXPECT_EQ(g_s_BPI_DataSet, "res_Nearest");
}

TEST_F(AnalysisTest, ResampleWithoutANameKeepsTmpresAndIgnoresCancel) {
    raster::RasterPtr input = Input(kGrid, Depths());
    g_s_BPI_DataSet = "depth";
    CancelAt(1);
    ASSERT_NE(ResampleRas(input, "15", "Nearest Neighbor", ""), nullptr);
    EXPECT_FALSE(g_b_Continue);  // the dialog was cancelled, and the run went on
    EXPECT_EQ(ProgressSteps(), (Lines{"1/6 Resampling Input Grid", "2/6 Resampling Input Grid",
                                      "3/6 Resampling Input Grid", "4/6 Resampling Input Grid",
                                      "5/6 Resampling Input Grid"}));
    EXPECT_EQ(Saved(), Lines{"tmpres.tif"});
    EXPECT_EQ(g_s_BPI_DataSet, "depth");
    ASSERT_NE(g_p_BPI_RasterDataset, nullptr);
    EXPECT_EQ(g_p_BPI_RasterDataset->Name(), "tmpres");
}

}  // namespace
}  // namespace halvane
