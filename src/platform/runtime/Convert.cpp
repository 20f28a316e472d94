#include "platform/runtime/Convert.h"

#include <cctype>
#include <charconv>
#include <cmath>
#include <cstdio>
#include <cstdlib>

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
    if (digits.empty() || !(std::isdigit(static_cast<unsigned char>(digits.front())) ||
                            digits.front() == '.')) {
        throw RuntimeFailure(kTypeMismatch);
    }
    double value = 0;
    const auto [end, error] =
        std::from_chars(digits.data(), digits.data() + digits.size(), value);
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
    char buffer[32];
    std::snprintf(buffer, sizeof buffer, "%.14e", std::fabs(value));
    std::string mantissa;
    const char* p = buffer;
    for (; *p != 'e'; ++p) {
        if (*p != '.') mantissa += *p;
    }
    const int exponent = std::atoi(p + 1);
    while (mantissa.size() > 1 && mantissa.back() == '0') mantissa.pop_back();

    std::string text = value < 0 ? "-" : "";
    if (exponent < -4 || exponent >= 15) {
        text += mantissa.substr(0, 1);
        if (mantissa.size() > 1) text += "." + mantissa.substr(1);
        char exp[16];
        std::snprintf(exp, sizeof exp, "E%c%02d", exponent < 0 ? '-' : '+', std::abs(exponent));
        return text + exp;
    }
    if (exponent < 0) return text + "0." + std::string(-exponent - 1, '0') + mantissa;
    const auto integerDigits = static_cast<std::size_t>(exponent) + 1;
    if (mantissa.size() <= integerDigits) {
        return text + mantissa + std::string(integerDigits - mantissa.size(), '0');
    }
    return text + mantissa.substr(0, integerDigits) + "." + mantissa.substr(integerDigits);
}

}  // namespace halvane::runtime
