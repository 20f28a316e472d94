#include "apps/desktop/MapView.h"

#include <QMouseEvent>
#include <QPainter>
#include <QWheelEvent>
#include <algorithm>
#include <cmath>

#include "platform/map/view/Rendering.h"
#include "platform/runtime/Failure.h"

namespace halvane::desktop {
namespace {

const QColor kPaper(Qt::white);
constexpr double kMargin = 1.05;
constexpr double kWheelStep = 1.25;  // per notch

}  // namespace

MapView::MapView(map::MapPtr map, QWidget* parent) : QWidget(parent), map_(std::move(map)) {
    setMouseTracking(true);
    setMinimumSize(200, 150);
    setCursor(Qt::OpenHandCursor);
}

void MapView::ZoomTo(const raster::Envelope& extent) {
    const double width = std::max(extent.XMax - extent.XMin, 0.0);
    const double height = std::max(extent.YMax - extent.YMin, 0.0);
    centre_ = {(extent.XMin + extent.XMax) / 2, (extent.YMin + extent.YMax) / 2};
    const double fit = std::max(width / std::max(this->width(), 1), height / std::max(this->height(), 1));
    unitsPerPixel_ = fit > 0 ? fit * kMargin : 1.0;
    Redraw();
}

void MapView::ZoomToFullExtent() {
    if (const auto full = map::view::FullExtent(*map_)) ZoomTo(*full);
}

void MapView::Zoom(double factor) { ZoomAbout(QPointF(width() / 2.0, height() / 2.0), factor); }

void MapView::ZoomAbout(const QPointF& pixel, double factor) {
    if (unitsPerPixel_ <= 0 || factor <= 0) return;
    // The map position under `pixel` stays under it.
    const raster::Pnt fixed = ToMap(pixel);
    unitsPerPixel_ /= factor;
    centre_.X = fixed.X - (pixel.x() - width() / 2.0) * unitsPerPixel_;
    centre_.Y = fixed.Y + (pixel.y() - height() / 2.0) * unitsPerPixel_;
    Redraw();
}

std::optional<raster::Envelope> MapView::Extent() const {
    if (unitsPerPixel_ <= 0) return std::nullopt;
    const raster::Pnt topLeft = ToMap(QPointF(0, 0));
    const raster::Pnt bottomRight = ToMap(QPointF(width(), height()));
    return raster::Envelope{topLeft.X, bottomRight.Y, bottomRight.X, topLeft.Y};
}

raster::Pnt MapView::ToMap(const QPointF& pixel) const {
    return {centre_.X + (pixel.x() - width() / 2.0) * unitsPerPixel_,
            centre_.Y - (pixel.y() - height() / 2.0) * unitsPerPixel_};
}

QPointF MapView::ToPixel(const raster::Pnt& point) const {
    return {width() / 2.0 + (point.X - centre_.X) / unitsPerPixel_,
            height() / 2.0 - (point.Y - centre_.Y) / unitsPerPixel_};
}

void MapView::Redraw() {
    stale_ = true;
    update();
}

void MapView::paintEvent(QPaintEvent*) {
    if (stale_ || picture_.size() != size()) {
        picture_ = QImage(size(), QImage::Format_ARGB32_Premultiplied);
        picture_.fill(kPaper);
        stale_ = false;
        if (const auto extent = Extent()) {
            QPainter painter(&picture_);
            try {
                map::view::DrawMap(painter, *map_, *extent, size());
            } catch (const runtime::Failure& failure) {
                // A grid that cannot be read must not take the window down.
                emit DrawingFailed(QString::fromStdString(failure.description));
            }
        }
    }
    QPainter painter(this);
    painter.fillRect(rect(), kPaper);
    painter.drawImage(dragOffset_, picture_);
}

void MapView::mousePressEvent(QMouseEvent* event) {
    if (event->button() != Qt::LeftButton) return;
    dragFrom_ = event->pos();
    setCursor(Qt::ClosedHandCursor);
}

void MapView::mouseMoveEvent(QMouseEvent* event) {
    if (dragFrom_) {
        dragOffset_ = event->pos() - *dragFrom_;
        update();
    }
    if (unitsPerPixel_ > 0) {
        const raster::Pnt at = ToMap(event->pos());
        emit CursorMoved(at.X, at.Y);
    }
}

void MapView::mouseReleaseEvent(QMouseEvent* event) {
    if (event->button() != Qt::LeftButton || !dragFrom_) return;
    const QPoint moved = event->pos() - *dragFrom_;
    dragFrom_.reset();
    dragOffset_ = {};
    setCursor(Qt::OpenHandCursor);
    centre_.X -= moved.x() * unitsPerPixel_;
    centre_.Y += moved.y() * unitsPerPixel_;
    Redraw();
}

void MapView::wheelEvent(QWheelEvent* event) {
    const double notches = event->angleDelta().y() / 120.0;
    if (notches != 0) ZoomAbout(event->position(), std::pow(kWheelStep, notches));
}

void MapView::leaveEvent(QEvent*) { emit CursorLeft(); }

void MapView::resizeEvent(QResizeEvent*) { Redraw(); }

}  // namespace halvane::desktop
