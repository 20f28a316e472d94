#pragma once
// Text helpers of the classic runtime that the system's procedures lean on.

#include <string>
#include <string_view>

namespace halvane::runtime {

// Blanks (spaces only, as the classic runtime trims) removed at both ends.
std::string Trim(std::string_view text);

// The path separator of this platform; where the system splits at "\" we split here.
inline constexpr char kPathSeparator = '/';

// A path split at its last separator: the text before it and the text after
// it. Without a separator, `found` is false, `before` empty and `after` the
// whole text.
struct PathSplit {
    bool found = false;
    std::string before;
    std::string after;
};
PathSplit SplitAtLastSeparator(std::string_view path);

// The text as a JSON string, quotes included.
std::string JsonString(std::string_view text);

}  // namespace halvane::runtime
