#pragma once
// modUtil's results on the host's map: the question that offers them, adding
// a grid as a raster layer, and the unique-value rendering of the zone grid.

#include <functional>
#include <vector>

#include "platform/map/Application.h"
#include "platform/raster/Fwd.h"

namespace halvane {

// Gives the layer one class per row of its raster's attribute table, in table
// order, labelled from g_dict_Zones with the row's value as the key (so that
// reading makes the key when it is missing) and coloured from a ramp of seed
// 100. A raster without a table keeps the default rendering. Failures are
// reported; the layer then keeps the renderer it had, since it is set last.
void ChangeRenderToUVRenderer(const std::shared_ptr<map::RasterLayer>& pLayer);

// The colours ChangeRenderToUVRenderer gives the n rows of a table, in table
// order; a zone grid stores them too, so the file and the map agree.
std::vector<map::Color> UniqueValueColors(std::int32_t n);

// "Calculation complete. Would you like to add data to the map?"; true on Yes.
bool AskToAddDataToMap();

// Keeps the application's document and its focus map in `doc` and `map`, and,
// when there is a dataset, adds it to that map as a new raster layer, which it
// returns (null without a dataset). `beforeAdding` runs on the new layer
// before it goes on the map, for a page that gives it a renderer first. No
// handler: failures go to the caller.
map::RasterLayerPtr AddDatasetToMap(
    const map::ApplicationPtr& app, map::MxDocumentPtr& doc, map::MapPtr& map,
    const raster::RasterDatasetPtr& dataset,
    const std::function<void(const map::RasterLayerPtr&)>& beforeAdding = {});

// Adds the standardized fine-scale and then the broad-scale grid of the
// session to `map`, each only when it is set. No handler.
void loadlayer(const map::MapPtr& map);

}  // namespace halvane
