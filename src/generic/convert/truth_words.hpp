/// @file
/// The words that mean true, for strings of every width.
///
///     detail::is_truth_word(u"Yes", 3)  // true
///
/// Letters are compared with the C library's `tolower` in the current locale. Nothing is written,
/// so any number of threads may call this.
#pragma once

#include "strings/ctype.hpp"

#include <cstddef>

namespace TOVA_2_18 {
namespace generic {
namespace convert {
namespace detail {

// The word must be lower-case ASCII. A unit beyond the C library's table never matches, even if its
// low byte is a letter of the word.
template <typename Unit>
bool equals_in_lower_case(const Unit* text, std::size_t length, const char* word) {
    std::size_t i = 0;
    for (; i != length && word[i] != '\0'; ++i)
        if (strings::detail::lower(text[i]) != static_cast<Unit>(word[i]))
            return false;
    return i == length && word[i] == '\0';
}

// Contract: there are words only for true. "no" and "off" are false because they parse as 0.
template <typename Unit>
bool is_truth_word(const Unit* text, std::size_t length) {
    return equals_in_lower_case(text, length, "yes") || equals_in_lower_case(text, length, "on") ||
           equals_in_lower_case(text, length, "true");
}

}  // namespace detail
}  // namespace convert
}  // namespace generic
}  // namespace TOVA_2_18
