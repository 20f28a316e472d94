#include "platform/map/Symbols.h"

#include "platform/runtime/Failure.h"

namespace halvane::map {
namespace {

// splitmix64: small, fast and defined to the bit, so every platform draws the
// same numbers.
std::uint64_t Next(std::uint64_t& state) {
    std::uint64_t z = (state += 0x9E3779B97F4A7C15ULL);
    z = (z ^ (z >> 30)) * 0xBF58476D1CE4E5B9ULL;
    z = (z ^ (z >> 27)) * 0x94D049BB133111EBULL;
    return z ^ (z >> 31);
}

// A whole number in low..high. The modulo's bias is far below what an eye
// could see in a colour.
int Between(std::uint64_t& state, int low, int high) {
    return low + static_cast<int>(Next(state) % static_cast<std::uint64_t>(high - low + 1));
}

// Hue in tenths of a degree (0..3599); saturation and value 0..255. Integer
// division only, so the bytes never depend on floating-point rounding.
Color FromHsv(int hue, int saturation, int value) {
    constexpr int kSector = 600;
    const int sector = hue / kSector;
    const int f = hue % kSector;
    const int p = value * (255 - saturation) / 255;
    const int q = value * (255 * kSector - saturation * f) / (255 * kSector);
    const int t = value * (255 * kSector - saturation * (kSector - f)) / (255 * kSector);
    auto rgb = [](int r, int g, int b) {
        return Color{static_cast<std::uint8_t>(r), static_cast<std::uint8_t>(g),
                     static_cast<std::uint8_t>(b)};
    };
    switch (sector) {
        case 0:
            return rgb(value, t, p);
        case 1:
            return rgb(q, value, p);
        case 2:
            return rgb(p, value, t);
        case 3:
            return rgb(p, q, value);
        case 4:
            return rgb(t, p, value);
        default:
            return rgb(value, p, q);
    }
}

// Successive classes step round the hue circle by the golden angle (137.5
// degrees), so neighbours in a legend never come out as two shades of one
// colour; the seed picks where the circle starts. Saturation and value stay in
// a middle band: no greys, no near-black, nothing glaring.
constexpr int kGoldenAngle = 1375;  // tenths of a degree
constexpr int kMinSaturation = 115, kMaxSaturation = 205;
constexpr int kMinValue = 180, kMaxValue = 242;

}  // namespace

void RandomColorRamp::Size(std::int32_t size) {
    if (size < 0) throw runtime::RuntimeFailure(runtime::kInvalidProcedureCall);
    size_ = size;
}

void RandomColorRamp::CreateRamp(bool& ok) {
    auto state = static_cast<std::uint64_t>(static_cast<std::int64_t>(seed_));
    const int start = Between(state, 0, 3599);
    colors_.clear();
    colors_.reserve(static_cast<std::size_t>(size_));
    for (std::int32_t i = 0; i < size_; ++i) {
        const int hue =
            static_cast<int>((start + static_cast<std::int64_t>(i) * kGoldenAngle) % 3600);
        const int saturation = Between(state, kMinSaturation, kMaxSaturation);
        const int value = Between(state, kMinValue, kMaxValue);
        colors_.push_back(FromHsv(hue, saturation, value));
    }
    ok = true;
}

Color RandomColorRamp::Color(std::int32_t index) const {
    if (index < 0 || static_cast<std::size_t>(index) >= colors_.size()) {
        throw runtime::RuntimeFailure(runtime::kSubscriptOutOfRange);
    }
    return colors_[static_cast<std::size_t>(index)];
}

}  // namespace halvane::map
