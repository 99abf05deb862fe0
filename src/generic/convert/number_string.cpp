// This is a separate file because it fills strings in place. None of its functions has a throw().
#include "generic/convert/number_string.hpp"

#include "generic/convert/decimal_digits.hpp"
#include "generic/convert/floating_writer.hpp"
#include "strings/unfilled.hpp"

#include <cmath>

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

// Apart, so that the usual numbers need no large buffer.
__attribute__((noinline)) void assign_six_digits(strings::ustring8& text, double value) {
    char characters[max_general_size];
    text.assign(characters, write_general(characters, value, 6));
}

}  // namespace

strings::ustring8 decimal_string(long number) {
    const long limit = static_cast<long>(in_place_limit);
    return new_string(number, number < limit && number > -limit);
}

strings::ustring8 decimal_string(unsigned long number) {
    return new_string(number, number < in_place_limit);
}

strings::ustring8 six_digits_string(double value) {
    strings::ustring8 made;
    strings::detail::append_unfilled(
        made, in_place_size, [value](char* to) { return write_usual_six_digits(to, value); });
    if (made.empty())
        assign_six_digits(made, value);
    return made;
}

strings::ustring8 two_decimals_string(double value) {
    strings::ustring8 made;
    if (!(std::abs(value) < 1e8))
        return made;
    strings::detail::append_unfilled(made, in_place_size,
                                     [value](char* to) { return write_fixed(to, value, 2); });
    return made;
}

}  // namespace detail
}  // namespace convert
}  // namespace generic
}  // namespace TOVA_2_18
