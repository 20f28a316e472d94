#include "platform/runtime/Text.h"

namespace halvane::runtime {

std::string Trim(std::string_view text) {
    const auto first = text.find_first_not_of(' ');
    if (first == std::string_view::npos) return {};
    const auto last = text.find_last_not_of(' ');
    return std::string(text.substr(first, last - first + 1));
}

PathSplit SplitAtLastSeparator(std::string_view path) {
    const auto pos = path.rfind(kPathSeparator);
    if (pos == std::string_view::npos) return {false, {}, std::string(path)};
    return {true, std::string(path.substr(0, pos)), std::string(path.substr(pos + 1))};
}

}  // namespace halvane::runtime
