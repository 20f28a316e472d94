#pragma once
// The map: an ordered list of layers, and listeners a view registers to draw
// again when the list changes.

#include <cstdint>
#include <functional>
#include <map>
#include <vector>

#include "platform/map/Fwd.h"
#include "platform/map/Layers.h"

namespace halvane::map {

class IMap {
public:
    using Listener = std::function<void()>;

    virtual ~IMap() = default;

    // Puts the layer on top, as index 0, as a layer list shows the last added
    // first and draws it over the others. A null layer fails with 91.
    virtual void AddLayer(LayerPtr layer) = 0;
    virtual std::int32_t LayerCount() const = 0;
    // Index 0 is the top layer; outside 0..LayerCount-1 fails with 9.
    virtual LayerPtr Layer(std::int32_t index) const = 0;

    // `listener` runs after every change of the layer list until Unsubscribe
    // is called with the number returned here.
    virtual int Subscribe(Listener listener) = 0;
    virtual void Unsubscribe(int subscription) = 0;
};

class Map : public IMap {
public:
    void AddLayer(LayerPtr layer) override;
    std::int32_t LayerCount() const override;
    LayerPtr Layer(std::int32_t index) const override;
    int Subscribe(Listener listener) override;
    void Unsubscribe(int subscription) override;

private:
    void Changed();

    std::vector<LayerPtr> layers_;  // top first
    std::map<int, Listener> listeners_;
    int nextSubscription_ = 1;
};

}  // namespace halvane::map
