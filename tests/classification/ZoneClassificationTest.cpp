// The zone classification run: the class expressions, the grids a run
// leaves, the values of the zone grid against a plain loop over the rules, and
// the Finish button's checks and closing question.

#include "classification/ZoneClassification.h"

#include <fstream>

#include "engine/RasterAccess.h"
#include "platform/map/Layers.h"
#include "platform/map/Map.h"
#include "platform/map/Renderers.h"
#include "support/StageFixture.h"
#include "support/Unprivileged.h"
#include "classification/ClassRules.h"

namespace halvane::classification {
namespace {

using testing::kNoData;
using testing::OpenRaster;
using testing::ReadAll;

clsClassificationRec Rule(std::int16_t cls, std::vector<std::string> bounds,
                          const std::string& zone = "") {
    bounds.resize(8);
    clsClassificationRec record;
    record.Class = cls;
    record.Zone = zone.empty() ? "Zone " + std::to_string(cls) : zone;
    std::string* fields[] = {&record.SSB_LowerBounds,   &record.SSB_UpperBounds,
                             &record.LSB_LowerBounds,   &record.LSB_UpperBounds,
                             &record.Slope_LowerBounds, &record.Slope_UpperBounds,
                             &record.Depth_LowerBounds, &record.Depth_UpperBounds};
    for (int i = 0; i < 8; ++i) *fields[i] = bounds[static_cast<std::size_t>(i)];
    return record;
}

class ZoneClassificationTest : public testing::StageFixture {
protected:
    void SetUp() override {
        StageFixture::SetUp();
        grid_ = {500000, 6000000, 10, 10, 6, 5};
    }

    // Four inputs cell by cell; NaN for NoData.
    void Inputs(const std::vector<std::array<double, 4>>& cells, std::int64_t cols) {
        grid_.cols = cols;
        grid_.rows = static_cast<std::int64_t>(cells.size()) / cols;
        cells_ = cells;
        const char* names[] = {"sbpi", "lbpi", "slope", "depth"};
        for (std::size_t k = 0; k < 4; ++k) {
            std::vector<double> values;
            for (const auto& cell : cells) values.push_back(cell[k]);
            Input(grid_, values, names[k]);
        }
        const auto open = [&](const char* name) {
            return raster::RasterDataset::Open(InputFolder() + "/" + name + ".tif");
        };
        g_p_SmScale_Std_RasterDataset = open("sbpi");
        g_p_LgScale_Std_RasterDataset = open("lbpi");
        g_p_SlopeRaster = open("slope")->CreateDefaultRaster();
        g_p_BPI_RasterDataset = open("depth");
    }

    // Every combination of the values on each axis, with one hole.
    void GridOfInputs() {
        std::vector<std::array<double, 4>> cells;
        for (double s : {-150.0, -100.0, 0.0, 100.0})
            for (double l : {-100.0, 50.0, 100.0})
                for (double slope : {0.0, 5.0, 12.5})
                    cells.push_back({s, l, slope, -10.0 - s / 10.0});
        cells[5][2] = kNoData;
        Inputs(cells, 6);
    }

    // Writes the records as the dictionary file and gives the page a copy read
    // from it, as the page fills itself.
    ZoneRunPage Page(const std::vector<clsClassificationRec>& records, std::int16_t count = -1) {
        clsXMLPrjFile file;
        for (const auto& record : records)
            file.Classifications->Add(std::make_shared<clsClassificationRec>(record));
        g_s_ClassDictionary_Path = " " + (dictionaries_ / "dict.xml") + " ";
        file.SaveFile(dictionaries_ / "dict.xml");
        ZoneRunPage page;
        page.g_s_OutputDataSet = "ZONES";
        page.m_prjFile = std::make_shared<clsXMLPrjFile>();
        page.m_prjFile->XML(dictionaries_ / "dict.xml");
        page.m_iClassCount = count >= 0 ? count : static_cast<std::int16_t>(records.size());
        return page;
    }

    // Grids the earlier stages leave for the cleaning step.
    void LeaveTemporaries() {
        for (const char* name : {"tmpFineBPI", "tmpBroadstd"}) {
            MakePerminentGrid(OpenRaster(InputFolder() + "/sbpi.tif"), g_s_WorkingDir, name);
        }
    }

    std::vector<double> Zones() const {
        return ReadAll(raster::RasterDataset::Open(g_s_WorkingDir + "/ZONES.tif")
                           ->CreateDefaultRaster());
    }

    // The zone grid the rules define: the sum of the class grids.
    std::vector<double> Expected(const std::vector<clsClassificationRec>& records) const {
        std::vector<double> expected;
        for (const auto& cell : cells_) {
            double sum = 0;
            for (const auto& record : records) sum += ClassValue(record, cell);
            expected.push_back(sum);
        }
        return expected;
    }

    raster::Grid grid_;
    std::vector<std::array<double, 4>> cells_;
    testing::TempDir dictionaries_;
};

TEST(ClassExpression, LoneBoundsAreInclusivePairedBoundsExclusiveInTheFixedOrder) {
    struct Case {
        clsClassificationRec record;
        std::string expression;
    };
    const std::vector<Case> cases = {
        {Rule(3, {"-100", "100", "-100", "100", "0", "5", "-40", "-10"}),
         "con([inSBPI] > -100, con([inSBPI] < 100, con([inLBPI] > -100, con([inLBPI] < 100, "
         "con([inSlope] > 0, con([inSlope] < 5, con([inDepth] > -40, con([inDepth] < -10, 3, 0), "
         "0), 0), 0), 0), 0), 0), 0)"},
        {Rule(2, {"100", "", "", "", "", "5"}), "con([inSBPI] >= 100, con([inSlope] <= 5, 2, 0), 0)"},
        {Rule(-7, {"", "", "", " 1e2 ", "", "", "abc", ""}),
         "con([inLBPI] <=  1e2 , con([inDepth] >= abc, -7, 0), 0)"},
        {Rule(9, {}), ""},
    };
    for (const Case& c : cases) EXPECT_EQ(ClassExpression(c.record), c.expression);
}

TEST_F(ZoneClassificationTest, EachRecordMakesAClassGridAndTheirSumIsTheZoneGrid) {
    GridOfInputs();
    LeaveTemporaries();
    // The second and third overlap on flat ground, where the cell gets 2 + 4.
    const std::vector<clsClassificationRec> records = {
        Rule(1, {"", "-100"}, "Basin"), Rule(2, {"-100", "100", "", "", "", "5"}, "Plain"),
        Rule(4, {"", "", "-100", "", "", "", "-15", "-5"}, "Overlap")};
    ZoneRunPage page = Page(records);
    g_dict_Zones = nullptr;
    RunFinalOutput(page);

    EXPECT_TRUE(Reports().empty());
    testing::ExpectCells(Zones(), Expected(records));
    EXPECT_EQ(Saved(), std::vector<std::string>{"ZONES.tif"});
    EXPECT_EQ(*g_dict_Zones, (ZoneDictionary{{1, "Basin"}, {2, "Plain"}, {3, "Overlap"}}));
    EXPECT_EQ(g_p_OutputRasterDataset->Name(), "ZONES");
    EXPECT_EQ(page.m_prjFile, nullptr);

    std::vector<std::string> executed = Executed();
    ASSERT_EQ(executed.size(), 4u);
    EXPECT_EQ(executed[3], "sum([tmpRas1], [tmpRas2], [tmpRas3])");
    const auto firstBind = std::find(journal.begin(), journal.end(), "BindRaster inLBPI");
    ASSERT_LE(firstBind + 9, journal.end());
    const std::vector<std::string> firstRecord(firstBind, firstBind + 9);
    EXPECT_EQ(firstRecord, (std::vector<std::string>{
                               "BindRaster inLBPI", "BindRaster inSBPI", "BindRaster inSlope",
                               "BindRaster inDepth", "Execute " + executed[0], "UnbindRaster inLBPI",
                               "UnbindRaster inSBPI", "UnbindRaster inSlope",
                               "UnbindRaster inDepth"}));
    EXPECT_EQ(ProgressSteps(),
              (std::vector<std::string>{
                  "15/100 Creating Output files",
                  "20/100 Creating Output files\r\nBuilding Class Grids",
                  "25/100 Creating Output files Building Class Grid 1 of 3",
                  "30/100 Creating Output files Building Class Grid 2 of 3",
                  "35/100 Creating Output files Building Class Grid 3 of 3",
                  "90/100 Creating Output files .. Combining Class Grids",
                  "95/100 Creating Output files .. Cleaning up"}));
}

TEST_F(ZoneClassificationTest, ClassNumbersGoIntoTheGridWhileLabelsAreKeyedByPosition) {
    GridOfInputs();
    const std::vector<clsClassificationRec> records = {Rule(30, {"100"}, "High"),
                                                       Rule(-2, {"", "-100"}, "Low")};
    ZoneRunPage page = Page(records);
    RunFinalOutput(page);
    testing::ExpectCells(Zones(), Expected(records));
    EXPECT_EQ(*g_dict_Zones, (ZoneDictionary{{1, "High"}, {2, "Low"}}));
}

TEST_F(ZoneClassificationTest, RunsThatCannotFinishAreReportedAndCleanNothing) {
    struct Case {
        const char* what;
        std::vector<clsClassificationRec> records;
        std::int16_t count;
        std::vector<std::string> left;  // in the working folder afterwards
    };
    const std::vector<Case> cases = {
        // The sum's closing parenthesis only comes with a second record.
        {"one record", {Rule(1, {"0"})}, 1, {"ZONES1.tif", "tmpBroadstd.tif", "tmpFineBPI.tif"}},
        {"no bounds", {Rule(1, {})}, 1, {"tmpBroadstd.tif", "tmpFineBPI.tif"}},
        // The file has two records, the page three: the third never binds.
        {"counts differ",
         {Rule(1, {"0"}), Rule(2, {"", "0"})},
         3,
         {"ZONES1.tif", "ZONES2.tif", "tmpBroadstd.tif", "tmpFineBPI.tif"}},
    };
    GridOfInputs();
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        LeaveTemporaries();
        const std::size_t before = Reports().size();
        const raster::RasterDatasetPtr earlier = g_p_BPI_RasterDataset;
        g_p_OutputRasterDataset = earlier;
        ZoneRunPage page = Page(c.records, c.count);
        RunFinalOutput(page);
        ASSERT_EQ(Reports().size(), before + 1);
        EXPECT_NE(Reports().back().find("RunFinalOutput frmZoneStep8"), std::string::npos);
        EXPECT_EQ(Saved(), c.left);
        EXPECT_EQ(g_p_OutputRasterDataset, earlier);
        EXPECT_NE(page.m_prjFile, nullptr);
        for (const std::string& name : Saved()) DeleteRaster(g_s_WorkingDir, name.substr(0, name.size() - 4));
    }
}

TEST_F(ZoneClassificationTest, AFileLongerThanThePagesListRunsPastItsEndOutOfRange) {
    GridOfInputs();
    const std::vector<clsClassificationRec> records = {Rule(1, {"0"}), Rule(2, {"", "0"})};
    ZoneRunPage page = Page(records);
    // The file gains a record after the page was filled.
    clsXMLPrjFile file;
    for (const auto& record : records)
        file.Classifications->Add(std::make_shared<clsClassificationRec>(record));
    file.Classifications->Add(std::make_shared<clsClassificationRec>(Rule(3, {"50"})));
    file.SaveFile(dictionaries_ / "dict.xml");

    RunFinalOutput(page);
    EXPECT_EQ(Reports(), std::vector<std::string>{testing::OwnFailureReport(
                             "RunFinalOutput frmZoneStep8 ", 9, "Subscript out of range")});
    EXPECT_EQ(Saved(), (std::vector<std::string>{"ZONES1.tif", "ZONES2.tif"}));
}

TEST_F(ZoneClassificationTest, NoRecordsWriteNothingButStillClean) {
    GridOfInputs();
    LeaveTemporaries();
    auto earlier = std::make_shared<ZoneDictionary>(ZoneDictionary{{1, "kept"}});
    g_dict_Zones = earlier;
    ZoneRunPage page = Page({});
    RunFinalOutput(page);
    EXPECT_TRUE(Saved().empty());
    EXPECT_EQ(g_dict_Zones, earlier);
    EXPECT_EQ(ProgressSteps(), (std::vector<std::string>{
                                   "15/100 Creating Output files",
                                   "20/100 Creating Output files\r\nBuilding Class Grids",
                                   "95/100 Creating Output files .. Cleaning up"}));
    EXPECT_TRUE(Reports().empty());
}

TEST_F(ZoneClassificationTest, ProgressPastThirteenRecordsIsNotClamped) {
    Inputs({{0, 0, 0, 0}}, 1);
    std::vector<clsClassificationRec> records;
    for (std::int16_t i = 1; i <= 17; ++i) records.push_back(Rule(i, {std::to_string(i)}));
    ZoneRunPage page = Page(records);
    RunFinalOutput(page);
    std::vector<std::string> positions;
    for (const std::string& step : ProgressSteps()) positions.push_back(step.substr(0, step.find('/')));
    EXPECT_EQ(std::vector<std::string>(positions.end() - 6, positions.end()),
              (std::vector<std::string>{"90", "95", "100", "105", "90", "95"}));
    EXPECT_EQ(Saved(), std::vector<std::string>{"ZONES.tif"});
}

TEST_F(ZoneClassificationTest, DefaultDictionaryGivesEveryValidCellExactlyOneClass) {
    // The class boundaries of the indices and slope, and values just around them.
    std::vector<std::array<double, 4>> cells;
    for (double s : {-300.0, -101.0, -100.0, -99.0, 0.0, 99.0, 100.0, 101.0, 300.0})
        for (double l : {-250.0, -100.0, -99.0, 99.0, 100.0, 250.0})
            for (double slope : {0.0, 4.99, 5.0, 5.01, 30.0, 90.0})
                cells.push_back({s, l, slope, -50.0});
    cells[7][1] = kNoData;
    Inputs(cells, 18);

    clsXMLPrjFile dictionary;
    dictionary.XML(DefaultDictionaryPath());
    std::vector<clsClassificationRec> records;
    for (const auto& record : dictionary.Classifications->NewEnum()) records.push_back(*record);
    for (const auto& cell : cells) {
        if (std::isnan(cell[1])) continue;
        const auto claims = std::count_if(records.begin(), records.end(),
                                          [&](const auto& r) { return ClassValue(r, cell) != 0; });
        EXPECT_EQ(claims, 1) << cell[0] << " " << cell[1] << " " << cell[2];
    }
    ZoneRunPage page = Page(records);
    RunFinalOutput(page);
    testing::ExpectCells(Zones(), Expected(records));
}

TEST_F(ZoneClassificationTest, FinishChecksTheNameAndTheSlopeGridInTheirOrder) {
    const std::string resample =
        "Please resample the input dataset, or select 'No' when asked if you want to Resample the "
        "input dataset.";
    const std::string blank =
        "'my zones' contains a space. Spaces are not allowed in Raster Data Set names. Please "
        "rename with out spaces.";
    struct Case {
        std::string name;
        bool slopeStands, outputStands;
        std::vector<std::string> messages;
        bool runs;
    };
    const std::vector<Case> cases = {
        {"", false, false, {resample}, false},
        {"my zones", false, false, {blank}, false},
        {"ZONES", false, true,
         {"ZONES already exists in the working directory. Please try using a different name."},
         false},
        // Clearing away a slope grid lets the run go ahead, unchecked.
        {"my zones", true, false, {}, true},
        {"", true, false, {resample}, true},
        // No length limit applies.
        {"zones_12345", false, false, {}, true},
    };
    GridOfInputs();
    g_s_BPI_DataPath = InputFolder();
    g_s_BPI_DataSet = "depth";
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        for (const std::string& name : Saved()) DeleteRaster(g_s_WorkingDir, name.substr(0, name.size() - 4));
        if (c.slopeStands) MakePerminentGrid(OpenRaster(InputFolder() + "/slope.tif"), g_s_WorkingDir, "slope");
        if (c.outputStands) MakePerminentGrid(OpenRaster(InputFolder() + "/slope.tif"), g_s_WorkingDir, "ZONES");
        ZoneRunPage page = Page({Rule(1, {"0"}), Rule(2, {"", "0"})});
        page.g_s_OutputDataSet = c.name;
        const std::size_t before = ui.Messages().size();
        if (c.runs) ui.Answer(ui::vbNo);
        EXPECT_EQ(cmdFinish_Click(page), c.runs);

        std::vector<std::string> stops;
        const auto messages = ui.Messages();
        for (std::size_t i = before; i < messages.size(); ++i) {
            if (messages[i].kind == "stop") stops.push_back(messages[i].text);
        }
        EXPECT_EQ(stops, c.messages);
        const auto saved = Saved();
        EXPECT_EQ(std::count(saved.begin(), saved.end(), "SLOPE.tif"), c.runs ? 1 : 0);
        if (c.runs && !c.name.empty()) {
            EXPECT_EQ(std::count(saved.begin(), saved.end(), c.name + ".tif"), 1);
        }
    }
}

TEST_F(ZoneClassificationTest, FinishStopsWhenTheUserMayNotDeleteTheSlopeGrid) {
    GridOfInputs();
    MakePerminentGrid(OpenRaster(InputFolder() + "/slope.tif"), g_s_WorkingDir, "slope");
    const ui::Event refused{"notice", "cannot delete raster", "", 0};
    const ui::Event stands{"stop",
                           "Raster 'slope' already exists in the working directory and it cannot "
                           "be removed at this time. Please removing the raster data set 'slope' "
                           "or use a different working directory .",
                           "File Exists", ui::vbCritical};
    const ui::Event noName{"stop",
                           "Please resample the input dataset, or select 'No' when asked if you "
                           "want to Resample the input dataset.",
                           "Please Resample The Input Data..", ui::vbCritical};
    const std::vector<std::pair<std::string, std::vector<ui::Event>>> cases = {
        {"ZONES", {refused, stands}},
        {"", {noName, refused, stands}},
    };
    for (const auto& [name, messages] : cases) {
        SCOPED_TRACE(name);
        ZoneRunPage page = Page({Rule(1, {"0"}), Rule(2, {"", "0"})});
        page.g_s_OutputDataSet = name;
        testing::UnprivilegedRun run;
        {
            const testing::ReadOnlyFolder readOnly(g_s_WorkingDir);
            run = testing::RunUnprivileged(ui, [&] { return cmdFinish_Click(page); });
        }
        ASSERT_TRUE(run.ran);
        EXPECT_FALSE(run.result);
        EXPECT_EQ(run.events, messages);
        EXPECT_EQ(Saved(), std::vector<std::string>{"slope.tif"});
    }
}

TEST_F(ZoneClassificationTest, FinishBuildsSlopeRunsAndPutsTheLabelledGridOnTheMap) {
    GridOfInputs();
    g_s_BPI_DataPath = InputFolder();
    g_s_BPI_DataSet = "depth";
    ZoneRunPage page = Page({Rule(1, {"", "-100"}, "Basin"), Rule(2, {"0"}, "Rest")});
    page.m_pApp = std::make_shared<map::Application>();
    ui.Answer(ui::vbYes);
    ASSERT_TRUE(cmdFinish_Click(page));

    const auto steps = ProgressSteps();
    EXPECT_EQ(steps.front(), "0/100 Creating Output files\r\nBuilding Slope Grid");
    EXPECT_EQ(steps[1], "10/100 Creating Output files\r\nPost-Slope Processing");
    EXPECT_EQ(std::vector<std::string>(steps.end() - 2, steps.end()),
              (std::vector<std::string>{"100/100 Creating Output files", "close"}));
    EXPECT_EQ(ui.MousePointer(), ui::vbDefault);
    const auto question = ui.Messages().back();
    EXPECT_EQ(question.text, "Calculation complete. Would you like to add data to the map?");

    ASSERT_EQ(page.m_pMap->LayerCount(), 1);
    const auto layer = std::dynamic_pointer_cast<map::RasterLayer>(page.m_pMap->Layer(0));
    const auto renderer = std::dynamic_pointer_cast<map::RasterUniqueValueRenderer>(layer->Renderer());
    ASSERT_NE(renderer, nullptr);
    std::vector<std::string> labels;
    for (int i = 0; i < renderer->ClassCount(0); ++i) labels.push_back(renderer->Label(0, i));
    EXPECT_EQ(labels, (std::vector<std::string>{"Basin", "Rest"}));  // values 1 and 2
}

TEST_F(ZoneClassificationTest, AFailedRunStillAsksTheClosingQuestionAndAddsNothing) {
    GridOfInputs();
    g_s_BPI_DataPath = InputFolder();
    g_s_BPI_DataSet = "depth";
    ZoneRunPage page = Page({Rule(1, {})});
    page.m_pApp = std::make_shared<map::Application>();
    ui.Answer(ui::vbYes);
    EXPECT_TRUE(cmdFinish_Click(page));
    EXPECT_EQ(Reports().size(), 1u);
    EXPECT_EQ(page.m_pMap->LayerCount(), 0);
}

}  // namespace
}  // namespace halvane::classification
