// The words that mean yes, for every width of text.
#pragma once

#include <cctype>
#include <cstddef>

namespace TOVA_2_18 {
namespace generic {
namespace convert {
namespace detail {

// The C library's tolower, asked only for the values that its table holds: a `char` with its sign,
// other units from 0 to 255. The units above stay as they are, as no letter of ours is among them.
template <typename Unit>
inline long to_lower_unit(Unit unit) {
    const long value = static_cast<long>(unit);
    return value >= -128 && value <= 255 ? ::tolower(static_cast<int>(value)) : value;
}

template <typename Unit>
bool equals_in_lower_case(const Unit* text, std::size_t length, const char* word) {
    std::size_t i = 0;
    for (; i != length && word[i] != '\0'; ++i)
        if (to_lower_unit(text[i]) != word[i])
            return false;
    return i == length && word[i] == '\0';
}

// Contract: there are words for yes only. "no" and "off" are false because they parse as 0.
template <typename Unit>
bool is_truth_word(const Unit* text, std::size_t length) {
    return equals_in_lower_case(text, length, "yes") || equals_in_lower_case(text, length, "on") ||
           equals_in_lower_case(text, length, "true");
}

}  // namespace detail
}  // namespace convert
}  // namespace generic
}  // namespace TOVA_2_18
