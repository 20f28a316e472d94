#pragma once
// Colours, the fill symbol of a class, and the random colour ramp that gives
// unique-value classes their colours.

#include <cstdint>
#include <memory>
#include <vector>

namespace halvane::map {

struct Color {
    std::uint8_t red = 0;
    std::uint8_t green = 0;
    std::uint8_t blue = 0;

    bool operator==(const Color&) const = default;
};

class SimpleFillSymbol {
public:
    const map::Color& Color() const { return color_; }
    void Color(const map::Color& color) { color_ = color; }

private:
    map::Color color_;
};
using SymbolPtr = std::shared_ptr<SimpleFillSymbol>;

// Colours at random, but the same on every machine for the same seed: the
// generator and the colour conversion are integer arithmetic of our own, so
// no standard library's distribution decides them. Colour i depends only on
// the seed and i, so a larger ramp begins with the colours of a smaller one.
class RandomColorRamp {
public:
    std::int32_t Size() const { return size_; }
    // A negative size fails with 5.
    void Size(std::int32_t size);
    std::int32_t Seed() const { return seed_; }
    void Seed(std::int32_t seed) { seed_ = seed; }

    // Makes Size colours from Seed. `ok` tells whether the ramp was made; a
    // ramp of our own always can be, an empty one included.
    void CreateRamp(bool& ok);
    // Colour `index` of the last CreateRamp; outside it fails with 9.
    map::Color Color(std::int32_t index) const;

private:
    std::int32_t size_ = 0;
    std::int32_t seed_ = 0;
    std::vector<map::Color> colors_;
};

}  // namespace halvane::map
