#pragma once

// Read ahead of every file of the module: what C++20 has, and the library that emscripten 3.1.6
// brings has not yet.

#include <bit>
#include <charconv>
#include <compare>
#include <cstddef>
#include <memory>
#include <string>
#include <type_traits>

namespace std {

#ifndef __cpp_lib_bit_cast
template <class To, class From>
constexpr To bit_cast(const From& from) noexcept {
    static_assert(sizeof(To) == sizeof(From));
    return __builtin_bit_cast(To, from);
}
#endif

#ifndef __cpp_lib_smart_ptr_for_overwrite
template <class Array>
requires is_unbounded_array_v<Array> unique_ptr<Array> make_unique_for_overwrite(size_t count) {
    return unique_ptr<Array>(new remove_extent_t<Array>[count]);
}
#endif

#if _LIBCPP_VERSION < 14000
template <class Unit>
strong_ordering operator<=>(const basic_string<Unit>& a, const basic_string<Unit>& b) {
    return a.compare(b) <=> 0;
}

/// As the standard has it, but that words for what is no number are not taken.
from_chars_result from_chars(const char* first, const char* last, double& value);

/// The same, for finite numbers and with room for 25 bytes.
to_chars_result to_chars(char* first, char* last, double value);

// The module writes no numbers by this. It lets sources compile, and is nowhere defined, so that a
// module which calls it does not link.
to_chars_result to_chars(char* first, char* last, double value, chars_format format);
#endif

}  // namespace std
