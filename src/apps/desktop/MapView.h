#pragma once
// The map view: draws the focus map, pans when dragged, zooms with the wheel
// (about the cursor) and on command, and tells where the cursor is in map
// units. The picture is drawn once per extent and reused while dragging, so
// panning costs no reads until the drag ends.

#include <QImage>
#include <QWidget>
#include <optional>

#include "platform/map/Map.h"
#include "platform/raster/Storage.h"

namespace halvane::desktop {

class MapView : public QWidget {
    Q_OBJECT

public:
    explicit MapView(map::MapPtr map, QWidget* parent = nullptr);

    // Shows `extent` whole, centred, with a small margin; cells stay square.
    void ZoomTo(const raster::Envelope& extent);
    void ZoomToFullExtent();
    // Factor > 1 zooms in, about the middle of the view.
    void Zoom(double factor);
    // The map extent the view shows; nothing before the first zoom.
    std::optional<raster::Envelope> Extent() const;
    // The map position under a pixel of the view.
    raster::Pnt ToMap(const QPointF& pixel) const;
    QPointF ToPixel(const raster::Pnt& point) const;
    // Draws afresh at the next paint: the layers or their rendering changed.
    void Redraw();

signals:
    void CursorMoved(double x, double y);
    void CursorLeft();
    // Drawing failed; the text says why.
    void DrawingFailed(const QString& description);

protected:
    void paintEvent(QPaintEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;
    void leaveEvent(QEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;

private:
    void ZoomAbout(const QPointF& pixel, double factor);

    map::MapPtr map_;
    raster::Pnt centre_;
    double unitsPerPixel_ = 0.0;  // 0 until something is shown
    QImage picture_;
    bool stale_ = true;
    std::optional<QPoint> dragFrom_;
    QPoint dragOffset_;
};

}  // namespace halvane::desktop
