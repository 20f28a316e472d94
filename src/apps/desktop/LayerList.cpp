#include "apps/desktop/LayerList.h"

#include <QMenu>
#include <QPainter>
#include <QPixmap>

#include "platform/map/view/Rendering.h"
#include "platform/runtime/Failure.h"

namespace halvane::desktop {
namespace {

QIcon Swatch(const QColor& color) {
    QPixmap swatch(18, 12);
    swatch.fill(color);
    QPainter painter(&swatch);
    painter.setPen(QColor(0x50, 0x50, 0x50));
    painter.drawRect(swatch.rect().adjusted(0, 0, -1, -1));
    return QIcon(swatch);
}

QString Text(const std::string& text) { return QString::fromStdString(text); }

}  // namespace

LayerList::LayerList(map::MapPtr map, QWidget* parent) : QTreeWidget(parent), map_(std::move(map)) {
    setHeaderHidden(true);
    setIconSize(QSize(18, 12));
    setContextMenuPolicy(Qt::CustomContextMenu);
    connect(this, &QTreeWidget::itemChanged, this, [this](QTreeWidgetItem* item, int) {
        if (item->parent()) return;
        if (const map::LayerPtr layer = LayerOf(item)) {
            layer->Visible(item->checkState(0) == Qt::Checked);
            emit VisibilityChanged();
        }
    });
    connect(this, &QWidget::customContextMenuRequested, this, [this](const QPoint& at) {
        const map::LayerPtr layer = LayerOf(itemAt(at));
        if (!layer) return;
        QMenu menu;
        menu.addAction(QStringLiteral("Zoom To Layer"), this,
                       [this, layer] { emit ZoomToLayerRequested(layer); });
        menu.exec(viewport()->mapToGlobal(at));
    });
}

void LayerList::Rebuild() {
    const QSignalBlocker quiet(this);
    clear();
    listed_.clear();
    for (std::int32_t i = 0; i < map_->LayerCount(); ++i) {
        const map::LayerPtr layer = map_->Layer(i);
        listed_.push_back(layer);
        auto* entry = new QTreeWidgetItem(this, {Text(layer->Name())});
        entry->setFlags(entry->flags() | Qt::ItemIsUserCheckable);
        entry->setCheckState(0, layer->Visible() ? Qt::Checked : Qt::Unchecked);
        const auto* raster = dynamic_cast<const map::RasterLayer*>(layer.get());
        if (!raster) continue;
        map::view::Legend legend;
        try {
            legend = map::view::LegendOf(*raster);
        } catch (const runtime::Failure& failure) {
            new QTreeWidgetItem(entry, {Text(failure.description)});
            continue;
        }
        for (const map::view::LegendGroup& group : legend.groups) {
            if (!group.heading.empty()) new QTreeWidgetItem(entry, {Text(group.heading)});
            for (const map::view::LegendClass& swatch : group.classes) {
                auto* line = new QTreeWidgetItem(entry, {Text(swatch.label)});
                line->setIcon(0, Swatch(swatch.color));
            }
        }
        entry->setExpanded(true);
    }
}

map::LayerPtr LayerList::CurrentLayer() const {
    if (const map::LayerPtr selected = LayerOf(currentItem())) return selected;
    return listed_.empty() ? nullptr : listed_.front();
}

map::LayerPtr LayerList::LayerOf(const QTreeWidgetItem* item) const {
    while (item && item->parent()) item = item->parent();
    if (!item) return nullptr;
    const int index = indexOfTopLevelItem(const_cast<QTreeWidgetItem*>(item));
    return index >= 0 && static_cast<std::size_t>(index) < listed_.size() ? listed_[index] : nullptr;
}

}  // namespace halvane::desktop
