#include "i18n/append_number.hpp"

#include <tova/generic/convert/x_to_str.hpp>

#include "generic/convert/decimal_digits.hpp"
#include "generic/convert/floating_writer.hpp"
#include "generic/convert/number_locale.hpp"

#include <algorithm>
#include <cstdio>
#include <cstring>

namespace TOVA_2_18 {
namespace i18n {
namespace detail {

namespace {

// --- Floating-point numbers --------------------------------------------------------------------
//
// A number is printed into a fixed buffer without padding; the spaces of the field are appended
// directly to the result, so the buffer limits only the number itself. A longer number loses
// decimals or is shown in scientific notation (`print_fixed`).

const int buffer_size = 64;
const int longest_number = buffer_size - 1;

// More decimals than this never fit the buffer, so they are not computed.
const int most_decimals = buffer_size;

// The exact value of a double has at most this many significant digits, so all decimals beyond it
// are zeros. A smaller limit would round at a digit that is still visible after a cut to the field.
const int most_exact_decimals = 767;

// This many decimals leave room for a sign, a digit, the point and a three-digit exponent.
const int most_scientific_decimals = longest_number - 8;

// What `printf` uses for a negative precision.
const int default_decimals = 6;

struct printed_number {
    char text[buffer_size];
    int length;        // characters in `text`
    long full_length;  // characters of the number with all its decimals
};

enum class notation { fixed, scientific };

// Prints every floating-point number. Returns the length that the number needs, which may exceed
// the buffer. The decimal point follows the C library's current locale; if it is ".", numbers of
// usual size don't need `snprintf`.
int print(printed_number& number, notation form, double value, int decimals) {
    if (form == notation::fixed && generic::convert::detail::has_c_decimal_point()) {
        static_assert(sizeof number.text >= generic::convert::detail::max_fixed_size, "room");
        number.length = static_cast<int>(generic::convert::detail::write_fixed(
            number.text, value, decimals < 0 ? default_decimals : decimals));
        if (number.length != 0)
            return number.length;
    }
    const int needed = std::snprintf(number.text, sizeof number.text,
                                     form == notation::fixed ? "%.*f" : "%.*e", decimals, value);
    number.length = std::min(needed, longest_number);
    return needed;
}

void print_scientific(printed_number& number, double value, int precision) {
    number.full_length =
        print(number, notation::scientific, value, std::min(precision, most_exact_decimals));
}

// A number that is too long for the buffer loses decimals. If its integer part alone is too long,
// it is shown in scientific notation: cutting digits before the point would show another number.
void print_fixed(printed_number& number, double value, int precision) {
    const int decimals = std::min(precision, most_decimals);
    const int needed = print(number, notation::fixed, value, decimals);
    number.full_length = static_cast<long>(needed) + (precision - decimals);
    if (needed <= longest_number)
        return;

    const int printed_decimals = decimals < 0 ? default_decimals : decimals;
    const int remaining_decimals = printed_decimals - (needed - longest_number);
    if (remaining_decimals >= 0)
        print(number, notation::fixed, value, remaining_decimals);  // rounding may add a digit
    else
        print(number, notation::scientific, value,
              std::min(printed_decimals, most_scientific_decimals));
}

// Contract: a three-digit exponent loses its hundreds, so every exponent has two digits: 1.50e+123
// is shown as 1.50e+23. Results without an exponent ("inf", "nan") are unchanged.
void drop_hundreds_of_exponent(printed_number& number) {
    char* const end = number.text + number.length;
    char* const exponent = std::find(number.text, end, 'e');
    if (end - exponent <= 4)  // "e", a sign and two digits
        return;
    std::copy(exponent + 3, end, exponent + 2);
    --number.length;
}

void append(text_buffer& text, const printed_number& number) {
    text.append(number.text, static_cast<std::size_t>(number.length));
}

}  // namespace

std::size_t write_digits(char (&buffer)[digit_buffer_size], long value, int radix) {
    if (radix == 10)
        return generic::convert::detail::write_decimal(buffer, value);
    generic::convert::lltoa(value, buffer, static_cast<unsigned int>(radix));
    return std::strlen(buffer);
}

void append_decimal(text_buffer& text, int value) {
    char digits[generic::convert::detail::max_decimal_size];
    text.append(digits, generic::convert::detail::write_decimal(digits, value));
}

void append_decimal(text_buffer& text, long value) {
    using generic::convert::detail::max_decimal_size;
    using generic::convert::detail::write_decimal;
    if (text.has_room(max_decimal_size))
        return text.written(write_decimal(text.end(), value));
    char digits[max_decimal_size];
    text.append(digits, write_decimal(digits, value));
}

void append_decimal(text_buffer& text, unsigned long value) {
    char digits[generic::convert::detail::max_decimal_size];
    text.append(digits, generic::convert::detail::write_decimal(digits, value));
}

void append_spaces(text_buffer& text, long count) {
    if (count > 0)
        text.append(static_cast<std::size_t>(count), ' ');
}

void append_double(text_buffer& text, double value, int precision, int field) {
    using generic::convert::detail::has_c_decimal_point;
    using generic::convert::detail::max_fixed_size;
    using generic::convert::detail::write_fixed;
    // Without a field, a number of typical size is written directly into the result.
    if (field == 0 && precision >= 0 && precision <= most_decimals) {
        if (text.has_room(max_fixed_size) && has_c_decimal_point()) {
            const std::size_t size = write_fixed(text.end(), value, precision);
            if (size != 0)
                return text.written(size);
        }
    }
    const long width = field;  // so that its negation doesn't overflow
    printed_number number;
    print_fixed(number, value, precision);

    if (width <= 0) {
        append(text, number);
        append_spaces(text, -width - number.length);
        return;
    }
    if (number.full_length > width) {
        print_scientific(number, value, precision);
        drop_hundreds_of_exponent(number);
        number.length = static_cast<int>(std::min<long>(number.length, width));
    }
    append_spaces(text, width - number.length);
    append(text, number);
}

}  // namespace detail
}  // namespace i18n
}  // namespace TOVA_2_18
