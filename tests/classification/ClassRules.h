#pragma once
// What a dictionary rule makes of a cell, computed from the rule's wording
// alone, for checking the classification against.

#include <array>
#include <cmath>
#include <string>

#include "classification/clsClassificationRec.h"
#include "support/GridFiles.h"

namespace halvane::classification {

// The value a rule's class grid takes at a cell of the four inputs, straight
// from the rule's wording: a bound alone takes its value in, two bounds
// together leave both out. The conditions nest in the order of the inputs, so
// a NoData input counts only where its condition is reached.
inline double ClassValue(const clsClassificationRec& r, const std::array<double, 4>& v) {
    const std::pair<const std::string*, const std::string*> bounds[] = {
        {&r.SSB_LowerBounds, &r.SSB_UpperBounds},
        {&r.LSB_LowerBounds, &r.LSB_UpperBounds},
        {&r.Slope_LowerBounds, &r.Slope_UpperBounds},
        {&r.Depth_LowerBounds, &r.Depth_UpperBounds}};
    for (std::size_t i = 0; i < 4; ++i) {
        const std::string& lo = *bounds[i].first;
        const std::string& hi = *bounds[i].second;
        if (lo.empty() && hi.empty()) continue;
        if (std::isnan(v[i])) return testing::kNoData;
        const bool holds = !lo.empty() && !hi.empty() ? v[i] > std::stod(lo) && v[i] < std::stod(hi)
                           : !lo.empty()              ? v[i] >= std::stod(lo)
                                                      : v[i] <= std::stod(hi);
        if (!holds) return 0;
    }
    return r.Class;
}

}  // namespace halvane::classification
