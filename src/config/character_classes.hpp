/// @file
/// The character classes and the lower-casing that the tokenizer and the trees apply to every byte.
///
/// Letters, digits and lower case follow the C library in the process's current locale. They are
/// read directly from the library's tables, as its own C macros do, because a function call per
/// byte would dominate the time of a lookup. The tables are indexed by a signed `char`; they reach
/// from -128 to 255. Any thread may call these functions; a thread that changes the locale in the
/// meantime changes the results.
#pragma once

#include <ctype.h>

namespace TOVA_2_18 {
namespace config {
namespace detail {

inline bool is_separator(char character) {
    return character == '.' || character == '/' || character == '\\';
}
inline bool is_space(char character) {
    return character == ' ';
}
inline bool is_letter(char character) {
    return ((*__ctype_b_loc())[static_cast<int>(character)] & _ISalpha) != 0;
}
inline bool is_digit(char character) {
    return ((*__ctype_b_loc())[static_cast<int>(character)] & _ISdigit) != 0;
}

// Lower case for many bytes: it gets the locale's table only once.
class lower_caser {
public:
    lower_caser() : m_table(*__ctype_tolower_loc()) {}
    char operator()(char character) const {
        return static_cast<char>(m_table[static_cast<int>(character)]);
    }

private:
    const __int32_t* m_table;
};

}  // namespace detail
}  // namespace config
}  // namespace TOVA_2_18
