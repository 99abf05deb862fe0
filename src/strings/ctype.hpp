/// @file
/// The C library's character classes and case mapping, for one unit of any width.
///
/// In C, `tolower`, `isspace` and their siblings are macros that look up a table. In C++ the
/// standard library disables these macros, and each lookup is a call through the PLT. The functions
/// below use the same tables:
///
///     detail::lower('A')                                // 'a'
///     detail::is_space(static_cast<unsigned short>(9))  // true
///
/// A table is indexed by a `char` with its sign and covers -128 to 255. A unit outside that range
/// belongs to no class and maps to itself, so no wide unit is mistaken for its low byte. The tables
/// are those of the calling thread's current locale; they are only read, so any number of threads
/// may call these functions.
#pragma once

#include <ctype.h>

namespace TOVA_2_18 {
namespace strings {
namespace detail {

template <typename Unit>
inline bool in_ctype_table(Unit unit) {
    const long value = static_cast<long>(unit);
    return value >= -128 && value <= 255;
}

template <typename Unit>
inline bool in_ctype_class(Unit unit, unsigned short mask) {
    return in_ctype_table(unit) && ((*__ctype_b_loc())[static_cast<int>(unit)] & mask) != 0;
}

template <typename Unit>
inline bool is_space(Unit unit) {
    return in_ctype_class(unit, _ISspace);
}

template <typename Unit>
inline bool is_alpha(Unit unit) {
    return in_ctype_class(unit, _ISalpha);
}

template <typename Unit>
inline bool is_digit(Unit unit) {
    return in_ctype_class(unit, _ISdigit);
}

template <typename Unit>
inline bool is_alnum(Unit unit) {
    return in_ctype_class(unit, _ISalnum);
}

// Contract: a table maps the values below 0 to those from 128 up, so the 32-bit units -128 to -2
// become 128 to 254. In the narrower widths only the low bits are kept, and there is no visible
// difference.
template <typename Unit>
inline Unit lower(Unit unit) {
    return in_ctype_table(unit)
               ? static_cast<Unit>((*__ctype_tolower_loc())[static_cast<int>(unit)])
               : unit;
}

template <typename Unit>
inline Unit upper(Unit unit) {
    return in_ctype_table(unit)
               ? static_cast<Unit>((*__ctype_toupper_loc())[static_cast<int>(unit)])
               : unit;
}

}  // namespace detail
}  // namespace strings
}  // namespace TOVA_2_18
