#include "platform/map/Renderers.h"

#include "platform/runtime/Failure.h"

namespace halvane::map {
namespace {

using runtime::RuntimeFailure;

template <class Items>
auto& At(Items& items, std::int32_t index) {
    if (index < 0 || static_cast<std::size_t>(index) >= items.size()) {
        throw RuntimeFailure(runtime::kSubscriptOutOfRange);
    }
    return items[static_cast<std::size_t>(index)];
}

std::size_t CountOf(std::int32_t count) {
    if (count < 0) throw RuntimeFailure(runtime::kInvalidProcedureCall);
    return static_cast<std::size_t>(count);
}

}  // namespace

// The classes are read as they stand whenever the layer is drawn, so there is
// nothing to recompute; what must hold is that there is a raster to draw.
void RasterUniqueValueRenderer::Update() { runtime::Deref(raster_); }

std::int32_t RasterUniqueValueRenderer::HeadingCount() const {
    return static_cast<std::int32_t>(groups_.size());
}

void RasterUniqueValueRenderer::HeadingCount(std::int32_t count) { groups_.resize(CountOf(count)); }

const std::string& RasterUniqueValueRenderer::Heading(std::int32_t heading) const {
    return GroupAt(heading).heading;
}

void RasterUniqueValueRenderer::Heading(std::int32_t heading, std::string text) {
    GroupAt(heading).heading = std::move(text);
}

std::int32_t RasterUniqueValueRenderer::ClassCount(std::int32_t heading) const {
    return static_cast<std::int32_t>(GroupAt(heading).classes.size());
}

void RasterUniqueValueRenderer::ClassCount(std::int32_t heading, std::int32_t count) {
    GroupAt(heading).classes.resize(CountOf(count));
}

void RasterUniqueValueRenderer::AddValue(std::int32_t heading, std::int32_t classIndex,
                                         std::int32_t value) {
    ClassAt(heading, classIndex).values.push_back(value);
}

std::int32_t RasterUniqueValueRenderer::ValueCount(std::int32_t heading,
                                                   std::int32_t classIndex) const {
    return static_cast<std::int32_t>(ClassAt(heading, classIndex).values.size());
}

std::int32_t RasterUniqueValueRenderer::Value(std::int32_t heading, std::int32_t classIndex,
                                              std::int32_t index) const {
    return At(ClassAt(heading, classIndex).values, index);
}

const std::string& RasterUniqueValueRenderer::Label(std::int32_t heading,
                                                    std::int32_t classIndex) const {
    return ClassAt(heading, classIndex).label;
}

void RasterUniqueValueRenderer::Label(std::int32_t heading, std::int32_t classIndex,
                                      std::string label) {
    ClassAt(heading, classIndex).label = std::move(label);
}

const SymbolPtr& RasterUniqueValueRenderer::Symbol(std::int32_t heading,
                                                   std::int32_t classIndex) const {
    return ClassAt(heading, classIndex).symbol;
}

void RasterUniqueValueRenderer::Symbol(std::int32_t heading, std::int32_t classIndex,
                                       SymbolPtr symbol) {
    ClassAt(heading, classIndex).symbol = std::move(symbol);
}

const RasterUniqueValueRenderer::Group& RasterUniqueValueRenderer::GroupAt(
    std::int32_t heading) const {
    return At(groups_, heading);
}

RasterUniqueValueRenderer::Group& RasterUniqueValueRenderer::GroupAt(std::int32_t heading) {
    return At(groups_, heading);
}

const RasterUniqueValueRenderer::Class& RasterUniqueValueRenderer::ClassAt(
    std::int32_t heading, std::int32_t classIndex) const {
    return At(GroupAt(heading).classes, classIndex);
}

RasterUniqueValueRenderer::Class& RasterUniqueValueRenderer::ClassAt(std::int32_t heading,
                                                                     std::int32_t classIndex) {
    return At(GroupAt(heading).classes, classIndex);
}

}  // namespace halvane::map
