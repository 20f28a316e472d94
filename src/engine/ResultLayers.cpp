#include "engine/ResultLayers.h"

#include "engine/Session.h"
#include "platform/raster/Storage.h"
#include "platform/reporting/ErrorHandling.h"
#include "platform/runtime/Convert.h"

namespace halvane {
namespace {

using runtime::Deref;

constexpr const char* kModule = "modUtil";
constexpr std::int32_t kRampSeed = 100;  // fixed, so two runs give the same colours

map::RasterLayerPtr AddLayerOfDataset(
    const map::MapPtr& map, const raster::RasterDatasetPtr& dataset,
    const std::function<void(const map::RasterLayerPtr&)>& beforeAdding = {}) {
    if (!dataset) return nullptr;
    auto layer = std::make_shared<map::RasterLayer>();
    layer->CreateFromDataset(dataset);
    if (beforeAdding) beforeAdding(layer);
    Deref(map).AddLayer(layer);
    return layer;
}

}  // namespace

void ChangeRenderToUVRenderer(const std::shared_ptr<map::RasterLayer>& pLayer) {
    Guarded({"ChangeRenderToUVRenderer", kModule, kTopLevel}, [&] {
        const raster::RasterPtr& layerRaster = Deref(pLayer).Raster();
        const auto band = Deref(layerRaster).Item(0);
        if (!band->HasTable()) return;

        const raster::AttributeTable& table = band->AttributeTable();
        const std::int16_t n = runtime::CInt(static_cast<double>(table.size()));
        // "Value" is a column of every table the raster engine keeps, so the
        // field is always found; rows carry it as AttributeRow::Value.

        map::RandomColorRamp ramp;
        ramp.Size(n);
        ramp.Seed(kRampSeed);
        bool ok = false;
        ramp.CreateRamp(ok);

        auto renderer = std::make_shared<map::RasterUniqueValueRenderer>();
        renderer->Raster(layerRaster);
        renderer->Update();

        renderer->HeadingCount(1);
        renderer->Heading(0, "All Data Values");
        renderer->ClassCount(0, n);
        renderer->Field("Value");

        std::int32_t i = 0;
        for (const raster::AttributeRow& row : table) {
            const std::int16_t value = runtime::CInt(static_cast<double>(row.Value));
            // Keyed by the value although the dictionary's keys are record
            // positions; operator[] makes a missing key with empty text.
            if (!g_dict_Zones) g_dict_Zones = std::make_shared<ZoneDictionary>();
            const std::string zone = (*g_dict_Zones)[value];
            renderer->AddValue(0, i, value);
            renderer->Label(0, i, zone);

            auto symbol = std::make_shared<map::SimpleFillSymbol>();
            symbol->Color(ramp.Color(i));
            renderer->Symbol(0, i, symbol);
            ++i;
        }

        renderer->Update();
        pLayer->Renderer(renderer);
    });
}

std::vector<map::Color> UniqueValueColors(std::int32_t n) {
    map::RandomColorRamp ramp;
    ramp.Size(n);
    ramp.Seed(kRampSeed);
    bool ok = false;
    ramp.CreateRamp(ok);
    std::vector<map::Color> colors;
    for (std::int32_t i = 0; i < n; ++i) colors.push_back(ramp.Color(i));
    return colors;
}

bool AskToAddDataToMap() {
    return ui::Services().MsgBox("Calculation complete. Would you like to add data to the map?",
                                 ui::vbYesNo, "Add Data to Map?") == ui::vbYes;
}

map::RasterLayerPtr AddDatasetToMap(
    const map::ApplicationPtr& app, map::MxDocumentPtr& doc, map::MapPtr& map,
    const raster::RasterDatasetPtr& dataset,
    const std::function<void(const map::RasterLayerPtr&)>& beforeAdding) {
    doc = Deref(app).Document();
    map = Deref(doc).FocusMap();
    return AddLayerOfDataset(map, dataset, beforeAdding);
}

void loadlayer(const map::MapPtr& map) {
    AddLayerOfDataset(map, g_p_LgScale_Std_RasterDataset);
    AddLayerOfDataset(map, g_p_SmScale_Std_RasterDataset);
}

}  // namespace halvane
