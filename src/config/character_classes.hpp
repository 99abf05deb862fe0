#pragma once

#include <ctype.h>

namespace TOVA_2_18 {
namespace config {
namespace detail {

// The character classes and the lowering that tokenizer and trees ask for each byte. `isalpha` and
// its fellows are read from the C library's tables of the current locale, as its own macros do in
// C: a call for each byte would take most of the time of a lookup. The tables are indexed by a
// `char` with its sign, they reach from -128 to 255.

inline bool is_separator(char character) {
    return character == '.' || character == '/' || character == '\\';
}
inline bool is_blank(char character) {
    return character == ' ';
}
inline bool is_letter(char character) {
    return ((*__ctype_b_loc())[static_cast<int>(character)] & _ISalpha) != 0;
}
inline bool is_digit(char character) {
    return ((*__ctype_b_loc())[static_cast<int>(character)] & _ISdigit) != 0;
}
inline char lower(char character) {
    return static_cast<char>((*__ctype_tolower_loc())[static_cast<int>(character)]);
}

}  // namespace detail
}  // namespace config
}  // namespace TOVA_2_18
