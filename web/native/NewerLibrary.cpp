#include "web/native/NewerLibrary.h"

#include <algorithm>
#include <cmath>
#include <cstdint>

// The host rounds right, and what the compiler's library has for it would be a tenth of the module.
extern "C" {
/// What the text, a decimal number, stands for.
__attribute__((import_module("env"), import_name("number_of_text"))) double NumberOfText(
    const char* text, std::uint32_t size);
/// Writes the shortest text, at most 24 bytes, of a number that is not negative; returns its
/// length.
__attribute__((import_module("env"), import_name("text_of_number"))) std::uint32_t TextOfNumber(
    double number, char* text);
}

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
    const string_view text(first, static_cast<size_t>(end - first));
    const double number = NumberOfText(first, static_cast<uint32_t>(text.size()));
    const string_view mantissa = text.substr(0, text.find_first_of("eE"));
    const bool isNothing = mantissa.find_first_of("123456789") == string_view::npos;
    if (isinf(number) || (number == 0 && !isNothing)) return {end, errc::result_out_of_range};
    value = number;
    return {end, errc()};
}

std::to_chars_result std::to_chars(char* first, char* last, double value) {
    constexpr std::ptrdiff_t longest = 25;
    if (last - first < longest) return {last, errc::value_too_large};
    if (signbit(value)) *first++ = '-';
    return {first + TextOfNumber(abs(value), first), errc()};
}
