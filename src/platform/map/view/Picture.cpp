#include "platform/map/view/Picture.h"

#include <QFont>
#include <QFontMetrics>
#include <QGuiApplication>
#include <QLinearGradient>
#include <QPainter>
#include <QPainterPath>
#include <algorithm>
#include <cmath>
#include <cstdio>

#include "platform/map/view/Rendering.h"

namespace halvane::map::view {
namespace {

constexpr int kMargin = 24;
constexpr int kGap = 28;  // between the map and the legend
constexpr int kLegendWidth = 300;
constexpr int kSwatchWidth = 22;
constexpr int kSwatchHeight = 14;
constexpr int kRowHeight = 22;
constexpr int kRampHeight = 220;
constexpr int kRampTicks = 5;
// What shows where a grid has no data: its holes should read as holes, not as
// a class or a depth.
const QColor kNoDataColor(0xdc, 0xdc, 0xdc);
const QColor kInk(0x20, 0x20, 0x20);
const QColor kMuted(0x60, 0x60, 0x60);

QFont Font(int pixels, bool bold = false, bool italic = false) {
    QFont font(QStringLiteral("DejaVu Sans"));
    font.setPixelSize(pixels);
    font.setBold(bold);
    font.setItalic(italic);
    return font;
}

QString Text(const std::string& text) { return QString::fromStdString(text); }

// "250 m", "2 km", "1.5 km".
QString Distance(double metres) {
    if (metres < 1000.0) return QString::number(metres, 'g', 6) + QStringLiteral(" m");
    return QString::number(metres / 1000.0, 'g', 6) + QStringLiteral(" km");
}

// The legend is laid out once to know its height, and once more to draw it;
// `painter` is null on the first pass.
int LegendPanel(QPainter* painter, const RasterLayer& layer, const PictureOptions& options, int x,
                int y) {
    const Legend legend = LegendOf(layer);
    auto text = [&](int top, const QFont& font, const QColor& color, const QString& line,
                    int indent = 0) {
        if (!painter) return;
        painter->setFont(font);
        painter->setPen(color);
        painter->drawText(QRect(x + indent, top, kLegendWidth - indent, kRowHeight),
                          Qt::AlignLeft | Qt::AlignVCenter, line);
    };
    auto swatch = [&](int top, const QColor& color) {
        if (!painter) return;
        painter->setPen(kMuted);
        painter->setBrush(color);
        painter->drawRect(x, top + (kRowHeight - kSwatchHeight) / 2, kSwatchWidth, kSwatchHeight);
    };

    text(y, Font(15, true), kInk, Text(layer.Name()));
    y += kRowHeight + 4;
    if (legend.stretch) {
        text(y, Font(13, false, true), kMuted, Text(options.units));
        y += kRowHeight + 6;
        if (painter) {
            QLinearGradient ramp(0, y, 0, y + kRampHeight);
            for (int i = 0; i <= 10; ++i) ramp.setColorAt(i / 10.0, RampColor(1.0 - i / 10.0));
            painter->setPen(kMuted);
            painter->setBrush(ramp);
            painter->drawRect(x, y, kSwatchWidth, kRampHeight);
        }
        const Stretch& stretch = *legend.stretch;
        // Enough decimals that neighbouring ticks never read the same.
        const double step = (stretch.high - stretch.low) / (kRampTicks - 1);
        const int decimals =
            step > 0 ? std::clamp(1 - static_cast<int>(std::floor(std::log10(step))), 0, 6) : 1;
        for (int i = 0; i < kRampTicks; ++i) {
            const double t = static_cast<double>(i) / (kRampTicks - 1);
            const int at = y + static_cast<int>(std::lround(t * kRampHeight));
            const double value = stretch.high - t * (stretch.high - stretch.low);
            if (painter) painter->drawLine(x + kSwatchWidth, at, x + kSwatchWidth + 5, at);
            text(at - kRowHeight / 2, Font(13), kInk, QString::number(value, 'f', decimals),
                 kSwatchWidth + 10);
        }
        y += kRampHeight + kRowHeight / 2 + 8;
        text(y, Font(12), kMuted, QStringLiteral("Mean \u00b1 2 SD, within the data"));
        y += kRowHeight + 8;
    }
    // A stretched grid's group only names the ramp's ends, which the ramp shows.
    const std::size_t classGroups = legend.stretch ? 0 : legend.groups.size();
    for (std::size_t g = 0; g < classGroups; ++g) {
        const LegendGroup& group = legend.groups[g];
        text(y, Font(13, false, true), kMuted, Text(group.heading));
        y += kRowHeight + 2;
        for (const LegendClass& entry : group.classes) {
            swatch(y, entry.color);
            text(y, Font(13, true), kInk, Text(entry.values), kSwatchWidth + 10);
            text(y, Font(13), kInk, Text(entry.label), kSwatchWidth + 44);
            y += kRowHeight;
        }
        y += 8;
    }
    swatch(y, kNoDataColor);
    text(y, Font(13), kInk, QStringLiteral("No data"), kSwatchWidth + 10);
    return y + kRowHeight;
}

// Under the map's left edge, as long as a round distance near a quarter of
// the map's width.
void ScaleBar(QPainter& painter, const QRect& map, const raster::Envelope& extent) {
    const double metresPerPixel = (extent.XMax - extent.XMin) / map.width();
    const double length = ScaleBarLength(map.width() / 4.0 * metresPerPixel);
    if (length <= 0) return;
    const int pixels = static_cast<int>(std::lround(length / metresPerPixel));
    const int left = map.left();
    const int top = map.bottom() + 28;
    constexpr int kSegments = 4;
    for (int i = 0; i < kSegments; ++i) {
        const int from = left + pixels * i / kSegments;
        const int to = left + pixels * (i + 1) / kSegments;
        painter.setPen(kInk);
        painter.setBrush(i % 2 ? Qt::white : kInk);
        painter.drawRect(from, top, to - from, 7);
    }
    painter.setFont(Font(12));
    auto label = [&](int at, const QString& text) {
        painter.drawText(QRect(at - 40, top - 20, 80, 18), Qt::AlignCenter, text);
    };
    label(left, QStringLiteral("0"));
    label(left + pixels / 2, Distance(length / 2));
    label(left + pixels, Distance(length));
}

constexpr int kNorthArrowHeight = 64;

// Half dark, half light, as on a chart: it reads at any size.
void NorthArrow(QPainter& painter, int left, int top) {
    const QPointF tip(left + 14, top + 24);
    const QPointF base(tip.x(), tip.y() + 26);
    QPainterPath west, east;
    west.moveTo(tip);
    west.lineTo(tip.x() - 11, tip.y() + 36);
    west.lineTo(base);
    west.closeSubpath();
    east.moveTo(tip);
    east.lineTo(tip.x() + 11, tip.y() + 36);
    east.lineTo(base);
    east.closeSubpath();
    painter.setPen(QPen(kInk, 1));
    painter.setBrush(kInk);
    painter.drawPath(west);
    painter.setBrush(Qt::white);
    painter.drawPath(east);
    painter.setFont(Font(15, true));
    painter.drawText(QRectF(left, top, 28, 20), Qt::AlignCenter, QStringLiteral("N"));
}

}  // namespace

double ScaleBarLength(double most) {
    if (!(most > 0) || !std::isfinite(most)) return 0;
    const double power = std::pow(10.0, std::floor(std::log10(most)));
    for (const double step : {5.0, 2.0, 1.0}) {
        if (step * power <= most) return step * power;
    }
    return power;
}

Picture ComposePicture(const RasterLayer& layer, const PictureOptions& options) {
    Picture picture;
    picture.extent = layer.Raster()->Extent();
    const double width = picture.extent.XMax - picture.extent.XMin;
    const double height = picture.extent.YMax - picture.extent.YMin;
    const double scale = options.mapSize / std::max(width, height);
    const int titleHeight = options.subtitle.empty() ? 40 : 60;
    picture.mapArea = QRect(kMargin, kMargin + titleHeight,
                            std::max(1, static_cast<int>(std::lround(width * scale))),
                            std::max(1, static_cast<int>(std::lround(height * scale))));
    const int legendX = picture.mapArea.right() + 1 + kGap;
    const int legendBottom = LegendPanel(nullptr, layer, options, legendX, picture.mapArea.top());
    const int footer = 44;  // the scale bar
    picture.image = QImage(
        legendX + kLegendWidth + kMargin,
        std::max(picture.mapArea.bottom() + 1 + footer, legendBottom + 16 + kNorthArrowHeight) +
            kMargin,
        QImage::Format_RGB32);
    picture.image.fill(Qt::white);
    // Kept in the PNG file, so that a reader can tell which pixel shows which
    // place: the map's rectangle in pixels and the extent it shows.
    const QRect& area = picture.mapArea;
    picture.image.setText(QStringLiteral("Map area"), QStringLiteral("%1 %2 %3 %4")
                                                          .arg(area.left())
                                                          .arg(area.top())
                                                          .arg(area.width())
                                                          .arg(area.height()));
    const raster::Envelope& e = picture.extent;
    picture.image.setText(QStringLiteral("Extent"), QStringLiteral("%1 %2 %3 %4")
                                                        .arg(e.XMin, 0, 'g', 17)
                                                        .arg(e.YMin, 0, 'g', 17)
                                                        .arg(e.XMax, 0, 'g', 17)
                                                        .arg(e.YMax, 0, 'g', 17));

    QPainter painter(&picture.image);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setRenderHint(QPainter::TextAntialiasing);
    painter.setPen(kInk);
    painter.setFont(Font(22, true));
    painter.drawText(QRect(kMargin, kMargin, picture.image.width() - 2 * kMargin, 28),
                     Qt::AlignLeft | Qt::AlignVCenter, Text(options.title));
    if (!options.subtitle.empty()) {
        painter.setPen(kMuted);
        painter.setFont(Font(13));
        painter.drawText(QRect(kMargin, kMargin + 30, picture.image.width() - 2 * kMargin, 20),
                         Qt::AlignLeft | Qt::AlignVCenter, Text(options.subtitle));
    }

    painter.fillRect(picture.mapArea, kNoDataColor);
    painter.save();
    painter.translate(picture.mapArea.topLeft());
    DrawLayer(painter, layer, picture.extent, picture.mapArea.size(), options.hillshade);
    painter.restore();
    painter.setPen(kMuted);
    painter.setBrush(Qt::NoBrush);
    painter.drawRect(picture.mapArea.adjusted(-1, -1, 0, 0));
    ScaleBar(painter, picture.mapArea, picture.extent);

    const raster::Grid& grid = layer.Raster()->GetGrid();
    painter.setPen(kMuted);
    painter.setFont(Font(12));
    painter.drawText(
        QRect(picture.mapArea.left(), picture.mapArea.bottom() + 8, picture.mapArea.width(), 20),
        Qt::AlignRight | Qt::AlignVCenter,
        QStringLiteral("%1 x %2 cells of %3, north up")
            .arg(grid.cols)
            .arg(grid.rows)
            .arg(Distance(grid.cellX)));
    LegendPanel(&painter, layer, options, legendX, picture.mapArea.top());
    NorthArrow(painter, legendX, legendBottom + 16);
    return picture;
}

HeadlessGui::HeadlessGui() {
    if (QCoreApplication::instance()) return;
    // Qt keeps the count and the list for the application's whole life, and
    // takes the options it knows out of them.
    static char program[] = "halvane";
    static char option[] = "-platform";
    static char platform[] = "offscreen";
    argc_ = 3;
    argv_ = {program, option, platform, nullptr};
    // Starting up, Qt warns of things a picture does not need, such as a
    // missing runtime folder for root; only real trouble is passed on.
    const QtMessageHandler previous = qInstallMessageHandler(
        [](QtMsgType type, const QMessageLogContext&, const QString& message) {
            if (type == QtCriticalMsg || type == QtFatalMsg) {
                std::fprintf(stderr, "%s\n", qPrintable(message));
            }
        });
    app_ = std::make_unique<QGuiApplication>(argc_, argv_.data());
    qInstallMessageHandler(previous);
}

HeadlessGui::~HeadlessGui() = default;

}  // namespace halvane::map::view
