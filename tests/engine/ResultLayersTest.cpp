// Results on the map: the unique-value rendering of a zone grid, labelled from
// the zone dictionary, and adding grids to the focus map after the question.

#include <gtest/gtest.h>

#include <numeric>

#include "engine/ResultLayers.h"
#include "engine/Session.h"
#include "platform/raster/Storage.h"
#include "platform/reporting/ErrorHandling.h"
#include "support/GridFiles.h"
#include "support/ScriptedDesktop.h"

namespace halvane {
namespace {

using map::RasterLayer;
using map::RasterUniqueValueRenderer;
using testing::kNoData;

const std::string kAddQuestion = "Calculation complete. Would you like to add data to the map?";

class ResultLayersTest : public testing::ScriptedDesktop {
protected:
    void SetUp() override {
        ResetSession();
        ErrorHandling::m_bErrorTextBuilt = false;
        ErrorHandling::ReleaseErrorWindow();
    }
    void TearDown() override {
        ResetSession();
        ErrorHandling::ReleaseErrorWindow();
        ScriptedDesktop::TearDown();
    }

    // A grid of one row holding `values`, stored as integer or floating cells.
    raster::RasterDatasetPtr Dataset(const std::string& name, const std::vector<double>& values,
                                     bool integer = true) {
        const raster::Grid grid{0, 10, 10, 10, static_cast<std::int64_t>(values.size()), 1};
        testing::WriteGrid(dir_ / (name + ".tif"), grid, values, integer);
        return raster::RasterDataset::Open(dir_ / (name + ".tif"));
    }
    std::shared_ptr<RasterLayer> Layer(const std::vector<double>& values, bool integer = true) {
        auto layer = std::make_shared<RasterLayer>();
        layer->CreateFromDataset(Dataset("zones" + std::to_string(++grids_), values, integer));
        return layer;
    }
    static std::shared_ptr<RasterUniqueValueRenderer> UniqueValues(const RasterLayer& layer) {
        return std::dynamic_pointer_cast<RasterUniqueValueRenderer>(layer.Renderer());
    }
    static std::vector<std::string> Labels(const RasterUniqueValueRenderer& renderer) {
        std::vector<std::string> labels;
        for (int i = 0; i < renderer.ClassCount(0); ++i) labels.push_back(renderer.Label(0, i));
        return labels;
    }
    static std::vector<map::Color> Colors(const RasterUniqueValueRenderer& renderer) {
        std::vector<map::Color> colors;
        for (int i = 0; i < renderer.ClassCount(0); ++i)
            colors.push_back(renderer.Symbol(0, i)->Color());
        return colors;
    }
    // The one report, which must name this procedure and the failure.
    void ExpectOneReport(const std::string& failure) const {
        ASSERT_EQ(Reports().size(), 1u);
        EXPECT_NE(Reports()[0].find("ChangeRenderToUVRenderer modUtil"), std::string::npos);
        EXPECT_NE(Reports()[0].find(failure), std::string::npos) << Reports()[0];
    }

    testing::TempDir dir_;
    int grids_ = 0;
};

TEST_F(ResultLayersTest, GridWithoutTableKeepsTheDefaultRenderingSilently) {
    const auto floating = Layer({1.5, 2.5, 2.5}, false);
    ChangeRenderToUVRenderer(floating);
    EXPECT_EQ(floating->Renderer(), nullptr);
    EXPECT_TRUE(ui.Events().empty());
    EXPECT_EQ(g_dict_Zones, nullptr);
}

TEST_F(ResultLayersTest, OneClassPerTableRowInValueOrder) {
    g_dict_Zones = std::make_shared<ZoneDictionary>(
        ZoneDictionary{{1, "Depression"}, {2, "Flat"}, {3, "Crest"}, {5, "Slope"}});
    const auto layer = Layer({5, 2, kNoData, 3, 5, 2, 1});
    ChangeRenderToUVRenderer(layer);

    const auto renderer = UniqueValues(*layer);
    ASSERT_NE(renderer, nullptr);
    EXPECT_EQ(renderer->Raster(), layer->Raster());
    EXPECT_EQ(renderer->HeadingCount(), 1);
    EXPECT_EQ(renderer->Heading(0), "All Data Values");
    EXPECT_EQ(renderer->Field(), "Value");
    ASSERT_EQ(renderer->ClassCount(0), 4);
    for (int i = 0; i < 4; ++i) {
        ASSERT_EQ(renderer->ValueCount(0, i), 1);
        EXPECT_EQ(renderer->Value(0, i, 0), (std::vector<int>{1, 2, 3, 5})[i]);  // ascending
    }
    EXPECT_EQ(Labels(*renderer),
              (std::vector<std::string>{"Depression", "Flat", "Crest", "Slope"}));
    EXPECT_TRUE(ui.Events().empty());
}

TEST_F(ResultLayersTest, LabelsAreLookedUpByValueAndMissingKeysAreMadeEmpty) {
    // Keys are record positions: the value 10 of the second record finds
    // nothing, and the value 2 takes the text of the second record.
    g_dict_Zones =
        std::make_shared<ZoneDictionary>(ZoneDictionary{{1, "Depression"}, {2, "Crest"}});
    const auto layer = Layer({0, 10, 2, 1, 7});
    ChangeRenderToUVRenderer(layer);

    const auto renderer = UniqueValues(*layer);
    ASSERT_NE(renderer, nullptr);
    EXPECT_EQ(Labels(*renderer), (std::vector<std::string>{"", "Depression", "Crest", "", ""}));
    EXPECT_EQ(*g_dict_Zones,
              (ZoneDictionary{{0, ""}, {1, "Depression"}, {2, "Crest"}, {7, ""}, {10, ""}}));
    // The value 0 is a class like any other, coloured too.
    ASSERT_NE(renderer->Symbol(0, 0), nullptr);
    EXPECT_EQ(renderer->Value(0, 0, 0), 0);
}

TEST_F(ResultLayersTest, MissingDictionaryIsMadeOnlyWhenARowIsRead) {
    const auto layer = Layer({3, 4});
    ChangeRenderToUVRenderer(layer);
    ASSERT_NE(g_dict_Zones, nullptr);
    EXPECT_EQ(*g_dict_Zones, (ZoneDictionary{{3, ""}, {4, ""}}));
    EXPECT_EQ(Labels(*UniqueValues(*layer)), (std::vector<std::string>{"", ""}));

    // No rows, no reading: the dictionary stays missing, and the renderer is
    // set all the same, with no classes.
    g_dict_Zones = nullptr;
    const auto empty = Layer({kNoData, kNoData, kNoData});
    ASSERT_TRUE(empty->Raster()->Item(0)->HasTable());
    ASSERT_TRUE(empty->Raster()->Item(0)->AttributeTable().empty());
    ChangeRenderToUVRenderer(empty);
    const auto renderer = UniqueValues(*empty);
    ASSERT_NE(renderer, nullptr);
    EXPECT_EQ(renderer->HeadingCount(), 1);
    EXPECT_EQ(renderer->ClassCount(0), 0);
    EXPECT_EQ(g_dict_Zones, nullptr);
    EXPECT_TRUE(ui.Events().empty());
}

TEST_F(ResultLayersTest, ColoursAreTheSameOnEveryRun) {
    const std::vector<double> values = {4, 8, 15, 16, 23, 42, 8, 4};
    const auto first = Layer(values);
    const auto second = Layer(values);
    ChangeRenderToUVRenderer(first);
    ChangeRenderToUVRenderer(second);
    const auto colors = Colors(*UniqueValues(*first));
    ASSERT_EQ(colors.size(), 6u);
    EXPECT_EQ(Colors(*UniqueValues(*second)), colors);
    EXPECT_NE(std::count(colors.begin(), colors.end(), colors.front()), 6);
}

TEST_F(ResultLayersTest, ValueBeyond16BitsIsReportedAndTheLayerKeepsItsRenderer) {
    const auto layer = Layer({1, 40000});
    ChangeRenderToUVRenderer(layer);
    EXPECT_EQ(layer->Renderer(), nullptr);
    ExpectOneReport("Overflow");
    // The row before the failing one was read.
    EXPECT_EQ(*g_dict_Zones, (ZoneDictionary{{1, ""}}));

    // A renderer set before stays as it was.
    const auto earlier = std::make_shared<RasterUniqueValueRenderer>();
    layer->Renderer(earlier);
    ChangeRenderToUVRenderer(layer);
    EXPECT_EQ(layer->Renderer(), earlier);
    EXPECT_EQ(Reports().size(), 2u);
}

TEST_F(ResultLayersTest, MoreRowsThan16BitsCountIsReportedBeforeAnyRowIsRead) {
    // 32768 distinct values (0..32767), each within 16 bits; only their number is not.
    std::vector<double> values(32768);
    std::iota(values.begin(), values.end(), 0.0);
    const auto layer = Layer(values);
    ChangeRenderToUVRenderer(layer);
    EXPECT_EQ(layer->Renderer(), nullptr);
    ExpectOneReport("Overflow");
    EXPECT_EQ(g_dict_Zones, nullptr);
}

TEST_F(ResultLayersTest, QuestionBeforeAddingAndYesAddsTheDatasetByName) {
    const auto app = std::make_shared<map::Application>();
    map::MxDocumentPtr doc;
    map::MapPtr focus;
    const auto dataset = Dataset("Zones", {1, 2});
    ui.Answer(ui::vbNo);
    ui.Answer(ui::vbYes);
    for (int run = 0; run < 2; ++run) {
        if (AskToAddDataToMap()) AddDatasetToMap(app, doc, focus, dataset);
    }
    const ui::Event question{"question", kAddQuestion, "Add Data to Map?", ui::vbYesNo};
    EXPECT_EQ(ui.Messages(), (std::vector<ui::Event>{question, question}));
    // Only the Yes added, to the focus map it kept with its document.
    EXPECT_EQ(doc, app->Document());
    EXPECT_EQ(focus, doc->FocusMap());
    ASSERT_EQ(focus->LayerCount(), 1);
    const auto layer = std::dynamic_pointer_cast<RasterLayer>(focus->Layer(0));
    ASSERT_NE(layer, nullptr);
    EXPECT_EQ(layer->Name(), "Zones");
    EXPECT_EQ(layer->Renderer(), nullptr);  // the default rendering

    // Without a dataset nothing is added; without an application the page's
    // handler gets the failure.
    EXPECT_EQ(AddDatasetToMap(app, doc, focus, nullptr), nullptr);
    EXPECT_EQ(focus->LayerCount(), 1);
    map::MxDocumentPtr noDoc;
    EXPECT_THROW(AddDatasetToMap(nullptr, noDoc, focus, dataset), runtime::Failure);
}

TEST_F(ResultLayersTest, RendererIsGivenBeforeTheLayerGoesOnTheMap) {
    const auto app = std::make_shared<map::Application>();
    map::MxDocumentPtr doc;
    map::MapPtr focus = app->Document()->FocusMap();
    bool renderedWhenAdded = false;
    focus->Subscribe([&] {
        auto top = std::dynamic_pointer_cast<RasterLayer>(focus->Layer(0));
        renderedWhenAdded = top->Renderer() != nullptr;
    });
    const auto layer = AddDatasetToMap(app, doc, focus, Dataset("zones", {1, 2, 3}),
                                       [&](const map::RasterLayerPtr& added) {
                                           EXPECT_EQ(focus->LayerCount(), 0);
                                           ChangeRenderToUVRenderer(added);
                                       });
    EXPECT_EQ(focus->Layer(0), layer);
    EXPECT_TRUE(renderedWhenAdded);
    EXPECT_EQ(UniqueValues(*layer)->ClassCount(0), 3);
}

TEST_F(ResultLayersTest, LoadlayerAddsFineThenBroadSoBroadIsOnTop) {
    map::Application app;
    const map::MapPtr focus = app.Document()->FocusMap();
    // Lg is the fine scale, Sm the broad one.
    g_p_LgScale_Std_RasterDataset = Dataset("fine_std", {1, 2});
    g_p_SmScale_Std_RasterDataset = Dataset("broad_std", {3, 4});
    loadlayer(focus);
    ASSERT_EQ(focus->LayerCount(), 2);
    EXPECT_EQ(focus->Layer(0)->Name(), "broad_std");
    EXPECT_EQ(focus->Layer(1)->Name(), "fine_std");

    g_p_LgScale_Std_RasterDataset = nullptr;
    loadlayer(focus);
    EXPECT_EQ(focus->LayerCount(), 3);
    EXPECT_EQ(focus->Layer(0)->Name(), "broad_std");
    EXPECT_TRUE(ui.Events().empty());
}

}  // namespace
}  // namespace halvane
