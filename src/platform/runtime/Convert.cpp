#include "platform/runtime/Convert.h"

#include <cctype>
#include <charconv>
#include <cmath>

#include "platform/runtime/Failure.h"
#include "platform/runtime/Text.h"

namespace halvane::runtime {

std::int16_t CInt(double value) {
    // nearbyint rounds in the default mode, which is half to even.
    const double rounded = std::nearbyint(value);
    if (!(rounded >= -32768.0 && rounded <= 32767.0)) throw RuntimeFailure(kOverflow);
    return static_cast<std::int16_t>(rounded);
}

std::int16_t CInt(std::string_view text) { return CInt(CDbl(text)); }

double CDbl(std::string_view text) {
    const std::string trimmed = Trim(text);
    std::string_view digits = trimmed;
    bool negative = false;
    if (!digits.empty() && (digits.front() == '+' || digits.front() == '-')) {
        negative = digits.front() == '-';
        digits.remove_prefix(1);
    }
    // from_chars would also take "inf", "nan" and a second sign; the runtime takes none.
    if (digits.empty() ||
        !(std::isdigit(static_cast<unsigned char>(digits.front())) || digits.front() == '.')) {
        throw RuntimeFailure(kTypeMismatch);
    }
    double value = 0;
    const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), value);
    if (error == std::errc::result_out_of_range) throw RuntimeFailure(kOverflow);
    if (error != std::errc() || end != digits.data() + digits.size()) {
        throw RuntimeFailure(kTypeMismatch);
    }
    return negative ? -value : value;
}

std::string CStr(double value) {
    if (std::isnan(value)) return "NaN";
    if (std::isinf(value)) return value < 0 ? "-Infinity" : "Infinity";
    if (value == 0) return "0";

    // Rounding to 15 significant digits first, so that the exponent is the
    // one of the rounded value (9.99999999999999949E14 shows as 1E+15).
    // to_chars, unlike printf, ignores the locale that a GUI sets up.
    char buffer[32];
    const auto end = std::to_chars(buffer, buffer + sizeof buffer, std::fabs(value),
                                   std::chars_format::scientific, 14)
                         .ptr;
    const std::string_view scientific(buffer, static_cast<std::size_t>(end - buffer));
    const auto e = scientific.find('e');
    std::string mantissa;
    for (char c : scientific.substr(0, e)) {
        if (c != '.') mantissa += c;
    }
    int exponent = 0;
    const std::string_view exponentText = scientific.substr(e + 1);
    // from_chars takes no "+" sign.
    const std::size_t skip = exponentText.front() == '+' ? 1 : 0;
    std::from_chars(exponentText.data() + skip, exponentText.data() + exponentText.size(),
                    exponent);
    while (mantissa.size() > 1 && mantissa.back() == '0') mantissa.pop_back();

    std::string text = value < 0 ? "-" : "";
    if (exponent < -4 || exponent >= 15) {
        text += mantissa.substr(0, 1);
        if (mantissa.size() > 1) text += "." + mantissa.substr(1);
        const std::string digits = std::to_string(std::abs(exponent));
        return text + (exponent < 0 ? "E-" : "E+") + (digits.size() < 2 ? "0" : "") + digits;
    }
    if (exponent < 0) return text + "0." + std::string(-exponent - 1, '0') + mantissa;
    const auto integerDigits = static_cast<std::size_t>(exponent) + 1;
    if (mantissa.size() <= integerDigits) {
        return text + mantissa + std::string(integerDigits - mantissa.size(), '0');
    }
    return text + mantissa.substr(0, integerDigits) + "." + mantissa.substr(integerDigits);
}

}  // namespace halvane::runtime
