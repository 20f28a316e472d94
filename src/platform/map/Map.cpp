#include "platform/map/Map.h"

#include "platform/runtime/Failure.h"

namespace halvane::map {

void Map::AddLayer(LayerPtr layer) {
    runtime::Deref(layer);
    layers_.insert(layers_.begin(), std::move(layer));
    Changed();
}

std::int32_t Map::LayerCount() const { return static_cast<std::int32_t>(layers_.size()); }

LayerPtr Map::Layer(std::int32_t index) const {
    if (index < 0 || static_cast<std::size_t>(index) >= layers_.size()) {
        throw runtime::RuntimeFailure(runtime::kSubscriptOutOfRange);
    }
    return layers_[static_cast<std::size_t>(index)];
}

int Map::Subscribe(Listener listener) {
    const int subscription = nextSubscription_++;
    listeners_.emplace(subscription, std::move(listener));
    return subscription;
}

void Map::Unsubscribe(int subscription) { listeners_.erase(subscription); }

void Map::Changed() {
    // A copy, so that a listener may unsubscribe (itself or another) while
    // the others are told.
    const auto listeners = listeners_;
    for (const auto& [subscription, listener] : listeners) {
        if (listeners_.contains(subscription)) listener();
    }
}

}  // namespace halvane::map
