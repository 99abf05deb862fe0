// This is a separate file because it fills strings in place. None of its functions has a throw().
#include "generic/convert/number_string.hpp"

#include "generic/convert/decimal_digits.hpp"
#include "strings/unfilled.hpp"

namespace TOVA_2_18 {
namespace generic {
namespace convert {
namespace detail {

namespace {

// Numbers below this have up to 14 digits. With a sign they fit into the string object itself.
const unsigned long in_place_limit = 100000000000000;
const std::size_t in_place_size = 15;

// Each function has a single result variable and a single `return`; otherwise the result would be
// copied.
template <typename Number>
inline strings::ustring8 new_string(Number number, bool is_in_place) {
    strings::ustring8 made;
    if (is_in_place) {
        strings::detail::append_unfilled(made, in_place_size,
                                         [number](char* to) { return write_decimal(to, number); });
    } else {
        char digits[max_decimal_size];
        made.assign(digits, write_decimal(digits, number));
    }
    return made;
}

}  // namespace

strings::ustring8 decimal_string(long number) {
    const long limit = static_cast<long>(in_place_limit);
    return new_string(number, number < limit && number > -limit);
}

strings::ustring8 decimal_string(unsigned long number) {
    return new_string(number, number < in_place_limit);
}

strings::ustring8 string_of(const char* text, std::size_t size) {
    strings::ustring8 made;
    if (strings::detail::fits_in_place<strings::ustring8>(size))
        strings::detail::fill_in_place(made, text, size);
    else
        made.assign(text, size);
    return made;
}

}  // namespace detail
}  // namespace convert
}  // namespace generic
}  // namespace TOVA_2_18
