#include "web/native/NewerLibrary.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>

namespace {

const char* PassDigits(const char* at, const char* last) {
    return std::find_if(at, last, [](char unit) { return unit < '0' || unit > '9'; });
}

/// Where the number that begins at `first` ends; `first` where none does.
const char* EndOfNumber(const char* first, const char* last) {
    const char* at = first != last && *first == '-' ? first + 1 : first;
    const char* end = PassDigits(at, last);
    std::ptrdiff_t digits = end - at;
    if (end != last && *end == '.') {
        const char* const fraction = end + 1;
        end = PassDigits(fraction, last);
        digits += end - fraction;
    }
    if (digits == 0) return first;
    if (end == last || (*end != 'e' && *end != 'E')) return end;
    at = end + 1;
    if (at != last && (*at == '+' || *at == '-')) ++at;
    const char* const exponentEnd = PassDigits(at, last);
    return exponentEnd == at ? end : exponentEnd;
}

}  // namespace

std::from_chars_result std::from_chars(const char* first, const char* last, double& value) {
    const char* const end = EndOfNumber(first, last);
    if (end == first) return {first, errc::invalid_argument};
    const string text(first, end);
    const double number = strtod(text.c_str(), nullptr);  // musl rounds right, in any locale
    const string_view mantissa = string_view(text).substr(0, text.find_first_of("eE"));
    const bool isNothing = mantissa.find_first_of("123456789") == string_view::npos;
    if (isinf(number) || (number == 0 && !isNothing)) return {end, errc::result_out_of_range};
    value = number;
    return {end, errc()};
}
