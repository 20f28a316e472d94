#pragma once
// The layer list: one entry per layer of the map, top layer first, with a box
// that shows or hides it and its legend underneath (a classified layer's
// headings, then a swatch and label per class).

#include <QTreeWidget>
#include <vector>

#include "platform/map/Map.h"

namespace halvane::desktop {

class LayerList : public QTreeWidget {
    Q_OBJECT

public:
    explicit LayerList(map::MapPtr map, QWidget* parent = nullptr);

    // Lists the map's layers as they now stand.
    void Rebuild();
    // The layer whose entry (or legend line) is selected, else the top one;
    // null on an empty map.
    map::LayerPtr CurrentLayer() const;

signals:
    void VisibilityChanged();
    void ZoomToLayerRequested(const map::LayerPtr& layer);

private:
    map::LayerPtr LayerOf(const QTreeWidgetItem* item) const;

    map::MapPtr map_;
    std::vector<map::LayerPtr> listed_;  // in the order of the top-level entries
};

}  // namespace halvane::desktop
