// The general format (`write_general`) needs the first `precision` digits of the value, rounded:
//
//     value * 10^k = an integer of that many digits and a fraction     one product of 64 x 128 bits
//     round by the fraction                                            `rounded_digits`
//     digits, without zeros at the end                                 `write_significant`
//     fixed or scientific notation, by the exponent of the digits
//
// The error of the product is known as in floating_reader.cpp. A fraction too close to one half is
// left to `snprintf`, as are more than 17 digits and the other rounding modes.
//
// Six digits, which streams and variants write, have a shorter way (`write_usual_six_digits`): the
// upper 64 bits of one product of 64 x 64 bits decide nearly always, and all characters stay in
// registers until they are stored.
//
// A number with a fixed number of decimals (`write_fixed`) is split into integer and fraction. The
// fraction times 10^decimals fits into 128 bits and is rounded exactly.
#include "generic/convert/floating_writer.hpp"

#include "generic/convert/decimal_powers.hpp"
#include "generic/convert/number_locale.hpp"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstring>

namespace TOVA_2_18 {
namespace generic {
namespace convert {
namespace detail {

namespace {

const int most_exact_digits = 17;  // with one more they still fit into 60 bits

// All digits after these are zeros, which the general format doesn't show.
const int most_digits = 767;

// What `printf` takes a negative precision for.
const int default_precision = 6;

// A double in parts: the value is mantissa * 2^exponent.
struct binary {
    bool negative;
    bool finite;
    unsigned long mantissa;
    int exponent;
};

binary parts_of(double value) {
    unsigned long bits;
    std::memcpy(&bits, &value, sizeof bits);
    const unsigned long fraction = bits & ((1UL << 52) - 1);
    const int biased = static_cast<int>(bits >> 52) & 0x7ff;
    binary parts;
    parts.negative = bits >> 63 != 0;
    parts.finite = biased != 0x7ff;
    parts.mantissa = biased == 0 ? fraction : fraction | 1UL << 52;
    parts.exponent = std::max(biased, 1) - 1075;
    return parts;
}

// The first digits of a value as an integer; the first of them stands for 10^exponent.
struct decimal_form {
    unsigned long digits;
    int exponent;
};

// Whether the product is above, in or below the middle of the interval that it is in.
enum class side { below, middle, above, unknown };

// `rest` is the part of the product's upper half below the last digit, and `half` is one half of
// that digit. The exact value of `rest` is less than 1 below it and less than 2 above it; for an
// exact product it is `rest` with the fraction `low`.
inline side compare_with_half(uint128 rest, uint128 half, unsigned long low, bool exact) {
    if (rest > half || (exact && rest == half && low != 0))
        return side::above;
    if (rest + 2 <= half || (exact && rest < half))
        return side::below;
    return exact ? side::middle : side::unknown;
}

// The nearest `precision` digits, 1 to 17, of a positive value. False if the product can't tell.
bool rounded_digits(const binary& value, int precision, decimal_form& result) {
    const int shift = __builtin_clzl(value.mantissa);
    const unsigned long factor = value.mantissa << shift;
    const int binary_exponent = value.exponent + 63 - shift;
    // The logarithm to base 10, rounded down, or one less.
    int exponent = (binary_exponent * 78913) >> 18;

    const int power = precision - 1 - exponent;
    const bool exact = power >= 0 && power <= last_exact_power;
    const wide_product product = multiply(factor, decimal_power_of(power));
    const int fraction_bits = 126 - binary_exponent - binary_exponent_of(power);
    unsigned long digits = static_cast<unsigned long>(product.high >> fraction_bits);
    const uint128 one = static_cast<uint128>(1) << fraction_bits;
    const uint128 rest = product.high & (one - 1);

    side place;
    if (digits < small_powers[precision]) {
        place = compare_with_half(rest, one / 2, product.low, exact);
    } else {
        // One digit too many. It is below 10, so it and the rest are compared with 5.
        const unsigned long last = digits % 10;
        digits /= 10;
        ++exponent;
        place = compare_with_half(last * one + rest, 5 * one, product.low, exact);
    }
    if (place == side::unknown)
        return false;
    if (place == side::above || (place == side::middle && (digits & 1) != 0))
        ++digits;
    if (digits == small_powers[precision]) {
        digits = small_powers[precision - 1];
        ++exponent;
    }
    result.digits = digits;
    result.exponent = exponent;
    return true;
}

// Room for 24 digits, since eight are stored at a time.
const std::size_t digits_size = 24;

// Writes a number with leading zeros up to `count` digits, at most 17.
void write_padded(char* text, unsigned long number, int count) {
    if (count <= 8) {
        store_eight(text, (digit_values(number) | ascii_zeros) >> (8 * (8 - count)));
        return;
    }
    const unsigned long last = number % hundred_million;
    number /= hundred_million;
    if (count <= 16) {
        store_eight(text, (digit_values(number) | ascii_zeros) >> (8 * (16 - count)));
    } else {
        text[0] = static_cast<char>('0' + number / hundred_million);
        store_eight(text + 1, digit_values(number % hundred_million) | ascii_zeros);
    }
    store_eight(text + count - 8, digit_values(last) | ascii_zeros);
}

// Writes all digits of a number that has `count` of them, at most 17. Returns how many there are
// without zeros at the end.
inline int write_significant(char* text, unsigned long number, int count) {
    if (count <= 8) {
        const unsigned long values = digit_values(number) >> (8 * (8 - count));
        store_eight(text, values | ascii_zeros);
        return 8 - __builtin_clzl(values) / 8;
    }
    write_padded(text, number, count);
    while (text[count - 1] == '0')
        --count;
    return count;
}

// "e", a sign and at least two digits.
char* write_exponent(char* out, int exponent) {
    *out++ = 'e';
    *out++ = exponent < 0 ? '-' : '+';
    int magnitude = exponent < 0 ? -exponent : exponent;
    if (magnitude >= 100) {
        *out++ = static_cast<char>('0' + magnitude / 100);
        magnitude %= 100;
    }
    *out++ = static_cast<char>('0' + magnitude / 10);
    *out++ = static_cast<char>('0' + magnitude % 10);
    return out;
}

// The notation of "%g" for digits without a sign. Zeros at the end are not shown.
char* write_digits(char* out, const decimal_form& number, int precision) {
    char digits[digits_size];
    const int count = write_significant(digits, number.digits, precision);
    const int exponent = number.exponent;
    if (exponent < -4 || exponent >= precision) {
        *out++ = digits[0];
        if (count > 1) {
            *out++ = '.';
            std::memcpy(out, digits + 1, 16);
            out += count - 1;
        }
        return write_exponent(out, exponent);
    }
    if (exponent < 0) {
        std::memcpy(out, "0.000", 5);
        out += 1 - exponent;
        std::memcpy(out, digits, 17);
        return out + count;
    }
    const int before_point = exponent + 1;
    std::memcpy(out, digits, 17);
    if (count <= before_point)
        return out + before_point;
    out[before_point] = '.';
    std::memcpy(out + before_point + 1, digits + before_point,
                static_cast<std::size_t>(count - before_point));
    return out + count + 1;
}

// The two digits of 0 to 99 as the lowest bytes of a word.
inline unsigned long load_pair(unsigned long number) {
    unsigned short pair;
    std::memcpy(&pair, digit_pairs + 2 * number, sizeof pair);
    return pair;
}

// Stores what `write_exponent` writes, in one word, and returns the end.
inline char* store_exponent(char* out, int exponent) {
    const unsigned magnitude = static_cast<unsigned>(exponent < 0 ? -exponent : exponent);
    const unsigned hundreds = magnitude / 100;
    const unsigned long sign = exponent < 0 ? '-' : '+';
    const unsigned long lower = load_pair(magnitude - 100 * hundreds);
    const unsigned long tail = hundreds != 0 ? lower << 8 | ('0' + hundreds) : lower;
    store_eight(out, 'e' | sign << 8 | tail << 16);
    return out + (hundreds != 0 ? 5 : 4);
}

// The nearest six digits, as `rounded_digits` finds them. False if the value isn't a normal one, or
// if the product can't tell.
inline bool usual_six_digits(unsigned long bits, decimal_form& result) {
    const int biased = static_cast<int>(bits >> 52) & 0x7ff;
    if (static_cast<unsigned>(biased) - 1 >= 0x7fe)
        return false;
    const unsigned long factor = bits << 11 | 1UL << 63;
    const int binary_exponent = biased - 1023;
    int exponent = (binary_exponent * 78913) >> 18;
    const int power = 5 - exponent;
    // Without the lower half of the power, this upper half is less than 2 too small, or less than 1
    // too large.
    const unsigned long product = static_cast<unsigned long>(
        static_cast<uint128>(factor) * decimal_power_of(power).high >> 64);
    const int fraction_bits = 62 - binary_exponent - binary_exponent_of(power);
    unsigned long digits = product >> fraction_bits;
    const unsigned long one = 1UL << fraction_bits;
    unsigned long rest = product & (one - 1);
    unsigned long half = one / 2;
    if (digits >= 1000000) {
        rest += digits % 10 * one;
        half = 5 * one;
        digits /= 10;
        ++exponent;
    }
    if (rest <= half && rest + 2 > half)
        return false;
    digits += rest > half ? 1 : 0;
    if (digits == 1000000) {
        digits = 100000;
        ++exponent;
    }
    result.digits = digits;
    result.exponent = exponent;
    return true;
}

// The notation of "%g" for six digits, and the end. At most 15 characters are stored.
inline char* store_six_digits(char* out, const decimal_form& number) {
    // Each pair is ready after a shorter chain of multiplications than `digit_values` has.
    const unsigned long hundreds = number.digits / 100;
    const unsigned long ten_thousands = hundreds / 100;
    const unsigned long characters = load_pair(ten_thousands) |
                                     load_pair(hundreds - 100 * ten_thousands) << 16 |
                                     load_pair(number.digits - 100 * hundreds) << 32;
    const unsigned long values = characters ^ (ascii_zeros >> 16);
    const int count = 8 - __builtin_clzl(values) / 8;  // without zeros at the end
    const int exponent = number.exponent;
    if (exponent >= 0 && exponent < 6) {
        const int before_point = exponent + 1;
        store_eight(out, characters);
        if (count <= before_point)
            return out + before_point;
        out[before_point] = '.';
        store_eight(out + before_point + 1, characters >> (8 * before_point));
        return out + count + 1;
    }
    if (exponent < 0 && exponent >= -4) {
        std::memcpy(out, "0.000000", 8);
        store_eight(out + 1 - exponent, characters);
        return out + 1 - exponent + count;
    }
    out[0] = static_cast<char>(characters);
    out[1] = '.';
    store_eight(out + 2, characters >> 8);
    return store_exponent(out + (count > 1 ? count + 1 : 1), exponent);
}

std::size_t write_word(char* text, bool negative, const char* word) {
    char* out = text;
    if (negative)
        *out++ = '-';
    std::memcpy(out, word, 3);
    return static_cast<std::size_t>(out + 3 - text);
}

// Makes the decimal point of the C locale, which may have several bytes, a ".". It is all that is
// between the digits before and after it.
std::size_t with_c_point(char* text, std::size_t size) {
    const auto is_digit = [](char unit) { return unit >= '0' && unit <= '9'; };
    char* const end = text + size;
    char* const point = std::find_if_not(std::find_if(text, end, is_digit), end, is_digit);
    if (point == end || *point == 'e' || *point == '.')
        return size;
    *point = '.';
    char* const fraction = std::find_if(point, end, is_digit);
    return static_cast<std::size_t>(std::copy(fraction, end, point + 1) - text);
}

}  // namespace

std::size_t write_usual_six_digits(char* text, double value) {
    unsigned long bits;
    std::memcpy(&bits, &value, sizeof bits);
    decimal_form number;
    if (!rounds_to_nearest() || !usual_six_digits(bits, number))
        return 0;
    *text = '-';
    char* const out = text + (bits >> 63);
    return static_cast<std::size_t>(store_six_digits(out, number) - text);
}

std::size_t write_general(char* text, double value, int precision) {
    if (precision < 0)
        precision = default_precision;
    if (precision == 6) {
        const std::size_t size = write_usual_six_digits(text, value);
        if (size != 0)
            return size;
    }
    const binary parts = parts_of(value);
    if (!parts.finite)
        return write_word(text, parts.negative, std::isnan(value) ? "nan" : "inf");
    if (parts.mantissa == 0) {
        std::memcpy(text, "-0", 2);
        text[0] = parts.negative ? '-' : '0';
        return parts.negative ? 2 : 1;
    }

    const int digits = std::max(precision, 1);
    decimal_form number;
    if (digits <= most_exact_digits && rounds_to_nearest() &&
        rounded_digits(parts, digits, number)) {
        char* out = text;
        *out = '-';
        out += parts.negative;
        return static_cast<std::size_t>(write_digits(out, number, digits) - text);
    }
    const int size =
        std::snprintf(text, max_general_size, "%.*g", std::min(digits, most_digits), value);
    return with_c_point(text, static_cast<std::size_t>(size));
}

std::size_t write_six_digits(char* text, long double value) {
    const int size = std::snprintf(text, max_six_digits_size, "%.6Lg", value);
    return std::isfinite(value) ? with_c_point(text, static_cast<std::size_t>(size))
                                : static_cast<std::size_t>(size);
}

// fraction * scale / 2^shift as an integer, rounded half to even. `Product` must hold twice the
// product: 64 bits are enough for a fraction below 2^53 and a scale of 1000. With a scale of 1,
// which leaves no digits, the last digit of the integer decides a tie.
template <typename Product>
inline unsigned long rounded_fraction(unsigned long fraction, unsigned long scale, int shift,
                                      unsigned long integer) {
    const Product scaled = static_cast<Product>(fraction) * scale;
    const Product one = static_cast<Product>(1) << shift;
    const Product rest = scaled & (one - 1);
    const unsigned long digits = static_cast<unsigned long>(scaled >> shift);
    const unsigned long last = scale == 1 ? integer : digits;
    return digits + (2 * rest > one || (2 * rest == one && (last & 1) != 0) ? 1 : 0);
}

// Two decimals of a value from 1/1024 to 2^52: the whole number of hundredths has 60 bits at most.
inline std::size_t write_hundredths(char* text, const binary& value) {
    const int shift = -value.exponent;
    const unsigned long scaled = value.mantissa * 100;
    const unsigned long one = 1UL << shift;
    const unsigned long rest = scaled & (one - 1);
    const unsigned long whole = scaled >> shift;
    const unsigned long hundredths =
        whole + (rest > one / 2 || (rest == one / 2 && (whole & 1) != 0) ? 1 : 0);
    const unsigned long integer = hundredths / 100;

    char* out = text;
    *out = '-';
    out += value.negative;
    out = write_digits_of(out, integer);
    *out = '.';
    out = store_pair(out + 1, static_cast<unsigned>(hundredths - 100 * integer));
    return static_cast<std::size_t>(out - text);
}

std::size_t write_fixed(char* text, double value, int decimals) {
    const binary parts = parts_of(value);
    if (decimals == 2 && parts.exponent < 0 && parts.exponent > -63 && rounds_to_nearest())
        return write_hundredths(text, parts);
    // A negative number of decimals is large as an unsigned one.
    if (static_cast<unsigned>(decimals) > most_exact_digits || parts.exponent > 10 ||
        !rounds_to_nearest())
        return 0;

    // The value is the integer, and fraction / 2^shift.
    unsigned long integer = 0;
    unsigned long fraction = 0;
    int shift = 0;
    if (parts.exponent >= 0) {
        integer = parts.mantissa << parts.exponent;
    } else {
        // The mantissa has 53 bits, and 10^17 has 57: from here on every value rounds to 0.
        shift = std::min(-parts.exponent, 120);
        integer = shift < 64 ? parts.mantissa >> shift : 0;
        fraction = shift < 64 ? parts.mantissa & ((1UL << shift) - 1) : parts.mantissa;
    }

    const unsigned long scale = small_powers[decimals];
    unsigned long digits = shift <= 53 && decimals <= 3
                               ? rounded_fraction<unsigned long>(fraction, scale, shift, integer)
                               : rounded_fraction<uint128>(fraction, scale, shift, integer);
    if (digits == scale) {
        digits = 0;
        ++integer;
    }

    char* out = text;
    *out = '-';
    out += parts.negative;
    out += write_decimal(out, integer);
    if (decimals != 0) {
        *out++ = '.';
        write_padded(out, digits, decimals);
        out += decimals;
    }
    return static_cast<std::size_t>(out - text);
}

}  // namespace detail
}  // namespace convert
}  // namespace generic
}  // namespace TOVA_2_18
