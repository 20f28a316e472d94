#include "platform/map/view/Rendering.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <unordered_map>

#include "platform/map/Renderers.h"

namespace halvane::map::view {
namespace {

// A class whose symbol was never set still shows, in a neutral grey.
const QColor kDefaultFill(0xc0, 0xc0, 0xc0);

QColor ColorOf(const SymbolPtr& symbol) {
    if (!symbol) return kDefaultFill;
    const Color& c = symbol->Color();
    return QColor(c.red, c.green, c.blue);
}

const RasterUniqueValueRenderer* UniqueValuesOf(const RasterLayer& layer) {
    return dynamic_cast<const RasterUniqueValueRenderer*>(layer.Renderer().get());
}

// The colour of every cell value of one layer, worked out once per drawing.
class CellColors {
public:
    explicit CellColors(const RasterLayer& layer) : classes_(UniqueValuesOf(layer)) {
        if (classes_) {
            // A value listed under two classes takes the first, as a reader
            // of the legend from the top would expect.
            for (std::int32_t h = 0; h < classes_->HeadingCount(); ++h) {
                for (std::int32_t k = 0; k < classes_->ClassCount(h); ++k) {
                    const QRgb rgb = ColorOf(classes_->Symbol(h, k)).rgb();
                    for (std::int32_t v = 0; v < classes_->ValueCount(h, k); ++v) {
                        byValue_.emplace(classes_->Value(h, k, v), rgb);
                    }
                }
            }
            return;
        }
        stretch_ = StretchOf(layer.Raster()->Item(0)->Statistics());
        for (std::size_t i = 0; i < ramp_.size(); ++i) {
            ramp_[i] = RampColor(static_cast<double>(i) / (ramp_.size() - 1)).rgb();
        }
    }

    // 0 is fully transparent: nothing is painted.
    QRgb operator()(double value) const {
        if (std::isnan(value)) return 0;
        if (classes_) {
            if (value != std::floor(value) || std::abs(value) > 2147483647.0) return 0;
            const auto found = byValue_.find(static_cast<std::int32_t>(value));
            return found == byValue_.end() ? 0 : found->second;
        }
        const double span = stretch_.high - stretch_.low;
        const double t = span > 0 ? (value - stretch_.low) / span : 0.5;
        const auto last = static_cast<double>(ramp_.size() - 1);
        return ramp_[static_cast<std::size_t>(std::lround(std::clamp(t, 0.0, 1.0) * last))];
    }

private:
    const RasterUniqueValueRenderer* classes_;
    std::unordered_map<std::int32_t, QRgb> byValue_;
    Stretch stretch_;
    std::array<QRgb, 256> ramp_{};
};

std::int64_t ClampedIndex(double index, std::int64_t count) {
    return static_cast<std::int64_t>(std::clamp(index, 0.0, static_cast<double>(count)));
}

std::string Number(double value) { return QString::number(value, 'g', 6).toStdString(); }

}  // namespace

Stretch StretchOf(const raster::RasterStatistics& statistics) {
    if (statistics.validCells == 0) return {};
    const double spread = 2.0 * statistics.StandardDeviation;
    return {std::max(statistics.Minimum, statistics.Mean - spread),
            std::min(statistics.Maximum, statistics.Mean + spread)};
}

QColor RampColor(double t) {
    static const std::array<QColor, 5> stops = {QColor(68, 1, 84), QColor(59, 82, 139),
                                                QColor(33, 145, 140), QColor(94, 201, 98),
                                                QColor(253, 231, 37)};
    const double at = std::clamp(t, 0.0, 1.0) * (stops.size() - 1);
    const auto below = std::min(static_cast<std::size_t>(at), stops.size() - 2);
    const double f = at - static_cast<double>(below);
    const QColor& a = stops[below];
    const QColor& b = stops[below + 1];
    auto mix = [f](int from, int to) { return static_cast<int>(std::lround(from + f * (to - from))); };
    return QColor(mix(a.red(), b.red()), mix(a.green(), b.green()), mix(a.blue(), b.blue()));
}

Legend LegendOf(const RasterLayer& layer) {
    Legend legend;
    if (const RasterUniqueValueRenderer* classes = UniqueValuesOf(layer)) {
        for (std::int32_t h = 0; h < classes->HeadingCount(); ++h) {
            LegendGroup& group = legend.groups.emplace_back();
            group.heading = classes->Heading(h);
            for (std::int32_t k = 0; k < classes->ClassCount(h); ++k) {
                std::string values;
                for (std::int32_t v = 0; v < classes->ValueCount(h, k); ++v) {
                    values += (v ? ", " : "") + std::to_string(classes->Value(h, k, v));
                }
                group.classes.push_back(
                    {ColorOf(classes->Symbol(h, k)), classes->Label(h, k), values});
            }
        }
        return legend;
    }
    if (!layer.Raster()) return legend;
    const Stretch stretch = StretchOf(layer.Raster()->Item(0)->Statistics());
    legend.stretch = stretch;
    legend.groups.push_back({"Value",
                             {{RampColor(1.0), "High : " + Number(stretch.high), {}},
                              {RampColor(0.0), "Low : " + Number(stretch.low), {}}}});
    return legend;
}

std::vector<float> Hillshade(const std::vector<double>& heights,
                             const std::vector<double>& eastings,
                             const std::vector<double>& southings, double exaggeration) {
    // The light: azimuth 315 degrees, 45 degrees above the horizon.
    constexpr double kHalfRootTwo = 0.70710678118654752;
    constexpr double kLightEast = -0.5, kLightNorth = 0.5, kLightUp = kHalfRootTwo;
    const auto cols = static_cast<std::int64_t>(eastings.size());
    const auto rows = static_cast<std::int64_t>(southings.size());
    std::vector<float> shade(heights.size(), 1.0f);
    for (std::int64_t r = 0; r < rows; ++r) {
        const std::int64_t north = std::max<std::int64_t>(r - 1, 0);
        const std::int64_t south = std::min(r + 1, rows - 1);
        for (std::int64_t c = 0; c < cols; ++c) {
            const double centre = heights[r * cols + c];
            if (std::isnan(centre)) continue;
            const std::int64_t west = std::max<std::int64_t>(c - 1, 0);
            const std::int64_t east = std::min(c + 1, cols - 1);
            auto z = [&](std::int64_t cc, std::int64_t rr) {
                const double v = heights[rr * cols + cc];
                return std::isnan(v) ? centre : v;
            };
            // Horn's 1-2-1 weights over the neighbours' true distances, which
            // differ from sample to sample when a read thins the cells out.
            const double across = eastings[east] - eastings[west];
            const double along = southings[south] - southings[north];
            const double dzEast =
                across > 0 ? ((z(east, north) + 2 * z(east, r) + z(east, south)) -
                              (z(west, north) + 2 * z(west, r) + z(west, south))) / (4 * across)
                           : 0.0;
            const double dzNorth =
                along > 0 ? ((z(west, north) + 2 * z(c, north) + z(east, north)) -
                             (z(west, south) + 2 * z(c, south) + z(east, south))) / (4 * along)
                          : 0.0;
            const double gx = -dzEast * exaggeration, gy = -dzNorth * exaggeration;
            const double lit = (gx * kLightEast + gy * kLightNorth + kLightUp) /
                               std::sqrt(gx * gx + gy * gy + 1.0);
            shade[r * cols + c] = static_cast<float>(std::max(lit, 0.0) / kLightUp);
        }
    }
    return shade;
}

void DrawLayer(QPainter& painter, const RasterLayer& layer, const raster::Envelope& extent,
               const QSize& size, bool hillshade) {
    const raster::RasterPtr& raster = layer.Raster();
    if (!raster || size.isEmpty() || extent.XMax <= extent.XMin || extent.YMax <= extent.YMin) {
        return;
    }
    const raster::Grid& g = raster->GetGrid();
    const double unitsPerPixelX = (extent.XMax - extent.XMin) / size.width();
    const double unitsPerPixelY = (extent.YMax - extent.YMin) / size.height();
    const std::int64_t col0 = ClampedIndex(std::floor((extent.XMin - g.left) / g.cellX), g.cols);
    const std::int64_t col1 = ClampedIndex(std::ceil((extent.XMax - g.left) / g.cellX), g.cols);
    const std::int64_t row0 = ClampedIndex(std::floor((g.top - extent.YMax) / g.cellY), g.rows);
    const std::int64_t row1 = ClampedIndex(std::ceil((g.top - extent.YMin) / g.cellY), g.rows);
    if (col0 >= col1 || row0 >= row1) return;
    const raster::Window window{col0, row0, col1 - col0, row1 - row0};
    const QRectF target((g.left + static_cast<double>(col0) * g.cellX - extent.XMin) / unitsPerPixelX,
                        (extent.YMax - (g.top - static_cast<double>(row0) * g.cellY)) / unitsPerPixelY,
                        static_cast<double>(window.cols) * g.cellX / unitsPerPixelX,
                        static_cast<double>(window.rows) * g.cellY / unitsPerPixelY);

    // Never more cells than pixels: a zoomed-out view of a large grid reads
    // one cell per pixel, a zoomed-in one every cell it shows.
    auto samples = [](std::int64_t cells, double pixels) {
        return std::clamp<std::int64_t>(static_cast<std::int64_t>(std::ceil(pixels)), 1, cells);
    };
    const std::int64_t cols = samples(window.cols, target.width());
    const std::int64_t rows = samples(window.rows, target.height());
    const std::vector<double> values = raster->ReadSampled(window, cols, rows);

    const CellColors colorOf(layer);
    std::vector<float> shade;
    if (hillshade) {
        // Seafloor relief is gentle next to its extent: three times its height
        // lets shelf ripples show as well as the slope.
        std::vector<double> eastings(static_cast<std::size_t>(cols));
        std::vector<double> southings(static_cast<std::size_t>(rows));
        for (std::int64_t c = 0; c < cols; ++c) {
            eastings[c] = static_cast<double>(raster::SampledIndex(c, cols, window.cols)) * g.cellX;
        }
        for (std::int64_t r = 0; r < rows; ++r) {
            southings[r] = static_cast<double>(raster::SampledIndex(r, rows, window.rows)) * g.cellY;
        }
        shade = Hillshade(values, eastings, southings, 3.0);
    }
    QImage image(static_cast<int>(cols), static_cast<int>(rows), QImage::Format_ARGB32);
    for (std::int64_t r = 0; r < rows; ++r) {
        auto* line = reinterpret_cast<QRgb*>(image.scanLine(static_cast<int>(r)));
        for (std::int64_t c = 0; c < cols; ++c) {
            QRgb rgb = colorOf(values[r * cols + c]);
            if (hillshade && qAlpha(rgb) != 0) {
                // Flat ground keeps its colour; a fully shaded slope keeps a third.
                const double f = 0.35 + 0.65 * shade[r * cols + c];
                auto lit = [f](int channel) { return std::min(255, static_cast<int>(channel * f)); };
                rgb = qRgb(lit(qRed(rgb)), lit(qGreen(rgb)), lit(qBlue(rgb)));
            }
            line[c] = rgb;
        }
    }
    painter.save();
    // Cells stay sharp squares when zoomed in.
    painter.setRenderHint(QPainter::SmoothPixmapTransform, false);
    painter.drawImage(target, image);
    painter.restore();
}

void DrawMap(QPainter& painter, const IMap& map, const raster::Envelope& extent,
             const QSize& size) {
    for (std::int32_t i = map.LayerCount() - 1; i >= 0; --i) {
        const LayerPtr layer = map.Layer(i);
        const auto* rasterLayer = dynamic_cast<const RasterLayer*>(layer.get());
        if (rasterLayer && layer->Visible()) DrawLayer(painter, *rasterLayer, extent, size);
    }
}

QImage RenderLayer(const RasterLayer& layer, const raster::Envelope& extent, const QSize& size) {
    QImage image(size, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    QPainter painter(&image);
    DrawLayer(painter, layer, extent, size);
    return image;
}

std::optional<raster::Envelope> FullExtent(const IMap& map) {
    std::optional<raster::Envelope> full;
    for (std::int32_t i = 0; i < map.LayerCount(); ++i) {
        const auto* layer = dynamic_cast<const RasterLayer*>(map.Layer(i).get());
        if (!layer || !layer->Raster()) continue;
        const raster::Envelope e = layer->Raster()->Extent();
        if (!full) {
            full = e;
            continue;
        }
        full = raster::Envelope{std::min(full->XMin, e.XMin), std::min(full->YMin, e.YMin),
                                std::max(full->XMax, e.XMax), std::max(full->YMax, e.YMax)};
    }
    return full;
}

std::optional<double> CellValueAt(const RasterLayer& layer, double x, double y) {
    if (!layer.Raster()) return std::nullopt;
    const raster::Grid& g = layer.Raster()->GetGrid();
    const double col = std::floor((x - g.left) / g.cellX);
    const double row = std::floor((g.top - y) / g.cellY);
    if (!(col >= 0 && row >= 0 && col < static_cast<double>(g.cols) &&
          row < static_cast<double>(g.rows))) {
        return std::nullopt;
    }
    const double value = layer.Raster()->Read(
        {static_cast<std::int64_t>(col), static_cast<std::int64_t>(row), 1, 1})[0];
    if (std::isnan(value)) return std::nullopt;
    return value;
}

}  // namespace halvane::map::view
