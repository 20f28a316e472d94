#pragma once
// A picture of one raster layer for a report or a README: the map drawn as
// the map view draws it, a legend, a scale bar and a north arrow, on an image
// that needs no window. The command line writes these as PNG files.

#include <QImage>
#include <QRect>
#include <array>
#include <memory>
#include <string>

#include "platform/map/Layers.h"
#include "platform/raster/Storage.h"

class QGuiApplication;

namespace halvane::map::view {

struct PictureOptions {
    std::string title;
    // Under the title, in a smaller hand: where the grid came from.
    std::string subtitle;
    // The heading of a stretched grid's ramp, e.g. "Depth (m)".
    std::string units = "Value";
    // Shade the stretched colours by the relief, lit from the north-west.
    bool hillshade = false;
    // The longer side of the map, in pixels.
    int mapSize = 800;
};

// The image, and where on it the layer's extent was drawn, so that a cell's
// pixel can be found again. The image carries both as the texts "Map area"
// ("left top width height" in pixels) and "Extent" ("xmin ymin xmax ymax"),
// which a PNG file keeps.
struct Picture {
    QImage image;
    QRect mapArea;
    raster::Envelope extent;
};

// Needs a QGuiApplication for its text: see HeadlessGui.
Picture ComposePicture(const RasterLayer& layer, const PictureOptions& options);

// The scale bar's length in map units: 1, 2 or 5 times a power of ten, the
// longest such that is at most `most`.
double ScaleBarLength(double most);

// Text needs a QGuiApplication. A program without windows makes one on the
// offscreen platform for as long as this lives; where one exists already, it
// is used as it is.
class HeadlessGui {
public:
    HeadlessGui();
    ~HeadlessGui();
    HeadlessGui(const HeadlessGui&) = delete;
    HeadlessGui& operator=(const HeadlessGui&) = delete;

private:
    int argc_ = 0;
    std::array<char*, 4> argv_{};
    std::unique_ptr<QGuiApplication> app_;
};

}  // namespace halvane::map::view
