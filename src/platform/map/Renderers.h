#pragma once
// How a raster layer is drawn. A layer without a renderer of its own is drawn
// with the default stretch; a unique-value renderer gives chosen values a
// class each, with a label and a fill symbol, grouped under headings.

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "platform/map/Symbols.h"
#include "platform/raster/Fwd.h"

namespace halvane::map {

class IRasterRenderer {
public:
    virtual ~IRasterRenderer() = default;

    virtual const raster::RasterPtr& Raster() const = 0;
    virtual void Raster(raster::RasterPtr raster) = 0;
    // Takes the renderer's settings as they now stand; fails with 91 when no
    // raster is set.
    virtual void Update() = 0;
};
using RasterRendererPtr = std::shared_ptr<IRasterRenderer>;

// Every heading, class and value index counts from 0; an index outside what
// the counts allow fails with 9, and a negative count with 5.
class RasterUniqueValueRenderer : public IRasterRenderer {
public:
    const raster::RasterPtr& Raster() const override { return raster_; }
    void Raster(raster::RasterPtr raster) override { raster_ = std::move(raster); }
    void Update() override;

    // The raster table's field that holds the values.
    const std::string& Field() const { return field_; }
    void Field(std::string field) { field_ = std::move(field); }

    // Changing a count keeps what the remaining headings or classes held; new
    // ones start empty.
    std::int32_t HeadingCount() const;
    void HeadingCount(std::int32_t count);
    const std::string& Heading(std::int32_t heading) const;
    void Heading(std::int32_t heading, std::string text);

    std::int32_t ClassCount(std::int32_t heading) const;
    void ClassCount(std::int32_t heading, std::int32_t count);

    // The raster values drawn as the class.
    void AddValue(std::int32_t heading, std::int32_t classIndex, std::int32_t value);
    std::int32_t ValueCount(std::int32_t heading, std::int32_t classIndex) const;
    std::int32_t Value(std::int32_t heading, std::int32_t classIndex, std::int32_t index) const;

    const std::string& Label(std::int32_t heading, std::int32_t classIndex) const;
    void Label(std::int32_t heading, std::int32_t classIndex, std::string label);

    // Null until one is set; the view then draws the class in a default fill.
    const SymbolPtr& Symbol(std::int32_t heading, std::int32_t classIndex) const;
    void Symbol(std::int32_t heading, std::int32_t classIndex, SymbolPtr symbol);

private:
    struct Class {
        std::vector<std::int32_t> values;
        std::string label;
        SymbolPtr symbol;
    };
    struct Group {
        std::string heading;
        std::vector<Class> classes;
    };

    const Group& GroupAt(std::int32_t heading) const;
    Group& GroupAt(std::int32_t heading);
    const Class& ClassAt(std::int32_t heading, std::int32_t classIndex) const;
    Class& ClassAt(std::int32_t heading, std::int32_t classIndex);

    raster::RasterPtr raster_;
    std::string field_;
    std::vector<Group> groups_;
};

}  // namespace halvane::map
