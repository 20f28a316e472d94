#include "platform/runtime/Text.h"

#include <cstdio>

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

std::string JsonString(std::string_view text) {
    std::string out = "\"";
    for (const char c : text) {
        switch (c) {
            case '"': out += "\\\""; break;
            case '\\': out += "\\\\"; break;
            case '\n': out += "\\n"; break;
            case '\r': out += "\\r"; break;
            case '\t': out += "\\t"; break;
            default:
                if (static_cast<unsigned char>(c) < 0x20) {
                    char escaped[8];
                    std::snprintf(escaped, sizeof escaped, "\\u%04x", c);
                    out += escaped;
                } else {
                    out += c;
                }
        }
    }
    return out + "\"";
}

}  // namespace halvane::runtime
