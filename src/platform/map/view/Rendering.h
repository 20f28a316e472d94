#pragma once
// Drawing the map model: raster layers painted on any QPainter (a widget, or
// an image with no window at all, for pictures written by the command line),
// and the legend each layer shows.
//
// A map extent is always drawn over the whole of the target size; callers
// keep the extent's shape that of the size when cells are to stay square.

#include <QColor>
#include <QImage>
#include <QPainter>
#include <QSize>
#include <optional>
#include <string>
#include <vector>

#include "platform/map/Layers.h"
#include "platform/map/Map.h"
#include "platform/raster/Storage.h"

namespace halvane::map::view {

// The value range that a grid without a renderer of its own is spread over:
// mean +- 2 standard deviations, kept within the grid's values, so a few
// outliers do not wash the rest into one colour.
struct Stretch {
    double low = 0.0;
    double high = 0.0;
};
Stretch StretchOf(const raster::RasterStatistics& statistics);

// The colour of a stretched value at `t` (0 = low, 1 = high, clamped):
// dark violet through blue and green to yellow, so deep water reads dark.
QColor RampColor(double t);

struct LegendClass {
    QColor color;
    std::string label;
    // The cell values the class stands for, e.g. "3" or "4, 7"; empty for a ramp's ends.
    std::string values;
};
struct LegendGroup {
    std::string heading;
    std::vector<LegendClass> classes;
};
// What a layer list shows under a layer: a unique-value renderer's headings
// with a swatch and label per class; for a stretched grid one group with the
// high and low ends, and the stretch itself for a ramp swatch.
struct Legend {
    std::vector<LegendGroup> groups;
    std::optional<Stretch> stretch;
};
Legend LegendOf(const RasterLayer& layer);

// Paints the layer's cells inside `extent` onto `size` pixels of the painter.
// NoData, and values a unique-value renderer has no class for, stay
// unpainted. Only about one cell per pixel is read, whatever the grid's size.
// `hillshade` darkens slopes facing away from a light in the north-west and
// brightens those facing it, so that the relief shows through the colours.
void DrawLayer(QPainter& painter, const RasterLayer& layer, const raster::Envelope& extent,
               const QSize& size, bool hillshade = false);

// The shading of a row-major block of heights whose columns stand at
// `eastings` and rows at `southings` (map units from the first, growing east
// and south): 1 on flat ground, 0 on ground facing away from the light, up to
// 1/sin 45 degrees facing it. Heights are exaggerated `exaggeration` times; a
// NaN neighbour counts as the cell itself, and at the block's edge the cell
// stands in for the missing neighbour. NaN cells get 1.
std::vector<float> Hillshade(const std::vector<double>& heights,
                             const std::vector<double>& eastings,
                             const std::vector<double>& southings, double exaggeration);

// Paints the visible raster layers of the map, the bottom layer first.
void DrawMap(QPainter& painter, const IMap& map, const raster::Envelope& extent,
             const QSize& size);

// The layer alone on a transparent image.
QImage RenderLayer(const RasterLayer& layer, const raster::Envelope& extent, const QSize& size);

// The extent of all raster layers of the map; nothing when it has none.
std::optional<raster::Envelope> FullExtent(const IMap& map);

// The layer's cell value at a map position; nothing outside the grid or on NoData.
std::optional<double> CellValueAt(const RasterLayer& layer, double x, double y);

}  // namespace halvane::map::view
