#pragma once
// Number <-> text conversions with the classic runtime's rules, independent of
// the user's locale: "." is always the decimal separator.

#include <cstdint>
#include <string>
#include <string_view>

namespace halvane::runtime {

// A boolean of the session: 16 bits, True is -1.
class VbBool {
public:
    constexpr VbBool(bool value = false) : value_(value ? -1 : 0) {}
    constexpr operator bool() const { return value_ != 0; }
    constexpr std::int16_t Value() const { return value_; }

private:
    std::int16_t value_;
};

// To a 16-bit integer, rounding half to even; fails with 6 "Overflow" outside
// -32768..32767.
std::int16_t CInt(double value);
// The same from text; fails with 13 "Type mismatch" if the text is no number.
std::int16_t CInt(std::string_view text);

// Text to double; blanks around the number are allowed, anything else that is
// not a decimal number fails with 13 "Type mismatch".
double CDbl(std::string_view text);

// General format: at most 15 significant digits, no trailing zeros, and the
// scientific form (1E-05, 1.23456789012346E+15) below 1E-04 or from 1E+15 on.
std::string CStr(double value);

}  // namespace halvane::runtime
