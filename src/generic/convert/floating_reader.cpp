// A number is read in three stages:
//
//   scan       the characters that the stream's extraction collects, into a `decimal`: up to 19
//              significant digits as an integer, and a power of ten
//   nearest    the closest binary value, by one product of 64 and 128 bits
//   exactly    where the product can't tell: `strtod` on the digits without a point
//
// A stream collects digits, one point and one exponent, and hands what it has collected to
// `strtod`. The number is valid only if all of that is a number: "1.5abc" is 1.5, while "1e" and
// "1e+x" fail as a whole. There is no hexadecimal form, and neither "inf" nor "nan" has a first
// digit.
//
// `nearest` is never wrong, because it knows the error of its product. A table entry is too large
// (below 10^0) or too small (above the exact ones) by less than one unit of its last bit, so the
// product is off by less than the 64-bit factor, at the end of 192 bits. Only a product so close to
// the middle between two results that this error matters is left to the exact way. The middle
// itself is reached by numbers below 10^0 that a power of five divides, which is tested, and by
// exact products.
//
// With more than 19 digits the number lies between the integer of the first 19 and the next one. If
// both have the same nearest value, so has the number.
#include "generic/convert/floating_reader.hpp"

#include "generic/convert/decimal_digits.hpp"
#include "generic/convert/decimal_powers.hpp"
#include "generic/convert/number_locale.hpp"

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <type_traits>

namespace TOVA_2_18 {
namespace generic {
namespace convert {
namespace detail {

namespace {

// --- The characters ----------------------------------------------------------------------------

const long most_digits = 19;  // every number of 19 digits fits into 64 bits

// An exponent of more digits stays here. No string is long enough to bring it back into range.
const long huge_exponent = 100000000000000000;

struct decimal {
    bool negative;
    unsigned long digits;  // the first significant digits, at most 19
    long exponent;         // the value is `digits` times 10 to this power
    bool cut;              // there are more significant digits
    const char* first;     // the first significant digit
    const char* end;       // the end of the digits, which may have a point among them
    long exponent_of_all;  // the power of ten for all digits from `first` to `end`
};

inline bool is_digit(char unit) {
    return static_cast<unsigned char>(unit - '0') < 10;
}

// What the classic locale takes for whitespace.
inline bool is_blank(char unit) {
    return unit == ' ' || (unit >= '\t' && unit <= '\r');
}

// Steps over digits and appends them to the number, which wraps if there are too many.
inline const char* take_digits(const char* at, const char* end, unsigned long& number) {
    while (end - at >= 8) {
        const unsigned long word = load_eight(at);
        if (count_digits(word) != 8)
            break;
        number = number * hundred_million + eight_digits(word ^ ascii_zeros);
        at += 8;
    }
    for (; is_digit(*at); ++at)
        number = number * 10 + static_cast<unsigned long>(*at - '0');
    return at;
}

// The digits of an exponent, after its sign. Returns false if there are none.
bool take_exponent(const char* at, long& exponent) {
    const bool negative = *at == '-';
    if (negative || *at == '+')
        ++at;
    if (!is_digit(*at))
        return false;
    long value = 0;
    for (; is_digit(*at); ++at)
        if (value < huge_exponent)
            value = value * 10 + (*at - '0');
    exponent += negative ? -value : value;
    return true;
}

// The first 19 digits, which the point may divide.
unsigned long first_digits(const char* at) {
    unsigned long number = 0;
    for (long count = 0; count != most_digits; ++at) {
        if (*at == '.')
            continue;
        number = number * 10 + static_cast<unsigned long>(*at - '0');
        ++count;
    }
    return number;
}

// Collects what the stream would. False if that is no number.
bool scan(const char* at, const char* end, decimal& number) {
    while (is_blank(*at))
        ++at;
    number.negative = *at == '-';
    if (number.negative || *at == '+')
        ++at;

    const char* const begin = at;
    while (*at == '0')
        ++at;
    number.first = at;
    number.digits = 0;
    at = take_digits(at, end, number.digits);
    long significant = at - number.first;
    long exponent = 0;
    bool has_digits = at != begin;
    if (*at == '.') {
        const char* const fraction = ++at;
        if (significant == 0) {
            while (*at == '0')
                ++at;
            number.first = at;
        }
        const char* const counted = at;
        at = take_digits(at, end, number.digits);
        significant += at - counted;
        exponent = fraction - at;
        has_digits = has_digits || at != fraction;
    }
    number.end = at;
    if (!has_digits)
        return false;
    if ((*at == 'e' || *at == 'E') && !take_exponent(at + 1, exponent))
        return false;

    number.exponent_of_all = exponent;
    number.exponent = exponent;
    number.cut = significant > most_digits;
    if (number.cut) {
        number.digits = first_digits(number.first);
        number.exponent += significant - most_digits;
    }
    return true;
}

// --- The nearest binary value ------------------------------------------------------------------

// Powers of five below 2^64: a number below 10^0 can be exact in binary only for these.
const unsigned long powers_of_five[] = {1,
                                        5,
                                        25,
                                        125,
                                        625,
                                        3125,
                                        15625,
                                        78125,
                                        390625,
                                        1953125,
                                        9765625,
                                        48828125,
                                        244140625,
                                        1220703125,
                                        6103515625,
                                        30517578125,
                                        152587890625,
                                        762939453125,
                                        3814697265625,
                                        19073486328125,
                                        95367431640625,
                                        476837158203125,
                                        2384185791015625,
                                        11920928955078125,
                                        59604644775390625,
                                        298023223876953125,
                                        1490116119384765625,
                                        7450580596923828125};
const long last_power_of_five = 27;

inline bool is_exact_quotient(unsigned long digits, long exponent) {
    return exponent >= -last_power_of_five && digits % powers_of_five[-exponent] == 0;
}

// Bits of the format, and its infinity as bits.
template <typename Floating>
struct format {
    static const int mantissa_bits = std::numeric_limits<Floating>::digits;  // the first included
    static const int least_exponent = std::numeric_limits<Floating>::min_exponent - 1;
    static const int bias = std::numeric_limits<Floating>::max_exponent - 1;
    static const unsigned long infinity = static_cast<unsigned long>(2 * bias + 1)
                                          << (mantissa_bits - 1);
};
template <typename Floating>
const int format<Floating>::mantissa_bits;
template <typename Floating>
const int format<Floating>::least_exponent;
template <typename Floating>
const int format<Floating>::bias;
template <typename Floating>
const unsigned long format<Floating>::infinity;

// Sets the bits of the value nearest to digits * 10^exponent, infinity included. False if the
// product is too close to the middle between two values. It is long because its steps share all of
// their numbers.
template <typename Floating>
bool nearest(unsigned long digits, long exponent, unsigned long& bits) {
    typedef format<Floating> target;
    // Below the first power every number of 19 digits is less than half of the least double; above
    // 10^308 every number is too large.
    if (digits == 0 || exponent < first_power) {
        bits = 0;
        return true;
    }
    if (exponent > 308) {
        bits = target::infinity;
        return true;
    }

    const int shift = __builtin_clzl(digits);
    const unsigned long factor = digits << shift;
    const wide_product product = multiply(factor, decimal_power_of(exponent));
    // The product has 190 or 191 bits after the first.
    const int top = static_cast<int>(product.high >> 127);
    const int binary_exponent = 63 + top + binary_exponent_of(exponent) - shift;
    int kept = target::mantissa_bits;
    if (binary_exponent < target::least_exponent)
        kept -= target::least_exponent - binary_exponent;  // subnormal
    if (kept < 0) {
        bits = 0;
        return true;
    }

    // The kept bits and one more, which says on which side of the middle the value is; then the
    // rest of the upper 128 bits. At most 53 bits are kept, so all of them are in the upper 64.
    const unsigned long upper = static_cast<unsigned long>(product.high >> 64);
    const unsigned long lower = static_cast<unsigned long>(product.high);
    const int dropped = 63 + top - kept - 1;
    const unsigned long rounded = upper >> dropped;
    const unsigned long all_ones = (1UL << dropped) - 1;
    const unsigned long rest = upper & all_ones;
    bool up = (rounded & 1) != 0;
    if (exponent > last_exact_power) {
        // The exact product is less than `factor` above this one, and never in the middle.
        if (rest == all_ones && lower == ~0UL && product.low + factor < product.low)
            return false;
    } else if (up && rest == 0 && lower == 0) {
        bool tie = product.low == 0;
        if (exponent < 0 && product.low <= factor) {
            // The exact product is less than `factor` below this one.
            tie = is_exact_quotient(digits, exponent);
            if (!tie)
                return false;
        }
        up = !tie || (rounded & 2) != 0;
    }
    const unsigned long mantissa = (rounded >> 1) + (up ? 1 : 0);

    // The first bit of the mantissa, and a carry into a further one, add to the exponent.
    bits = mantissa;
    if (kept == target::mantissa_bits)
        bits += static_cast<unsigned long>(binary_exponent + target::bias - 1)
                << (target::mantissa_bits - 1);
    bits = std::min(bits, target::infinity);
    return true;
}

void set_bits(unsigned long bits, double& value) {
    std::memcpy(&value, &bits, sizeof value);
}

void set_bits(unsigned long bits, float& value) {
    const unsigned int narrow = static_cast<unsigned int>(bits);
    std::memcpy(&value, &narrow, sizeof value);
}

template <typename Floating>
bool find_nearest(const decimal& number, Floating& value) {
    unsigned long bits;
    if (!nearest<Floating>(number.digits, number.exponent, bits))
        return false;
    if (number.cut) {
        unsigned long next_bits;
        if (!nearest<Floating>(number.digits + 1, number.exponent, next_bits) || next_bits != bits)
            return false;
    }
    set_bits(bits, value);
    if (number.negative)
        value = -value;
    return true;
}

// 64 bits of a mantissa are more than the product has to offer.
bool find_nearest(const decimal&, long double&) {
    return false;
}

// --- The exact way -----------------------------------------------------------------------------

void convert(const char* text, float& value) {
    value = std::strtof(text, nullptr);
}
void convert(const char* text, double& value) {
    value = std::strtod(text, nullptr);
}
void convert(const char* text, long double& value) {
    value = std::strtold(text, nullptr);
}

// The middle between two values of the format has at most this many significant digits, so the
// digits after them matter only by not being all zeros.
template <typename Floating>
struct enough_digits;
template <>
struct enough_digits<float> : std::integral_constant<long, 120> {};
template <>
struct enough_digits<double> : std::integral_constant<long, 780> {};
template <>
struct enough_digits<long double> : std::integral_constant<long, 11600> {};

// Exponents beyond this are 0 or too large in every format, whatever the digits are.
const long far_exponent = 50000;
const std::size_t max_exponent_size = 1 + max_decimal_size;

// Leaves the rounding to the C library, which knows all digits. They are handed over as an integer
// with an exponent, since the decimal point is that of the C locale.
template <typename Floating>
void convert_exactly(const decimal& number, Floating& value) {
    char text[1 + enough_digits<Floating>::value + 1 + max_exponent_size];
    char* out = text;
    if (number.negative)  // a directed rounding depends on the sign
        *out++ = '-';
    char* const digits = out;
    long exponent = number.exponent_of_all;
    bool more = false;
    for (const char* at = number.first; at != number.end; ++at) {
        if (*at == '.')
            continue;
        if (out - digits < enough_digits<Floating>::value) {
            *out++ = *at;
            continue;
        }
        more = more || *at != '0';
        ++exponent;
    }
    if (out == digits)
        *out++ = '0';
    if (more) {
        *out++ = '1';
        --exponent;
    }
    exponent = std::max(-far_exponent, std::min(exponent, far_exponent));
    *out++ = 'e';
    out += write_decimal(out, exponent);
    *out = '\0';

    const int caller_errno = errno;
    convert(text, value);
    errno = caller_errno;
}

template <typename Floating>
bool read(const char* text, std::size_t length, Floating& value) {
    decimal number;
    if (!scan(text, text + length, number))
        return false;
    if (!rounds_to_nearest() || !find_nearest(number, value))
        convert_exactly(number, value);
    return std::abs(value) <= std::numeric_limits<Floating>::max();
}

}  // namespace

bool read_floating(const char* text, std::size_t length, float& value) {
    return read(text, length, value);
}

bool read_floating(const char* text, std::size_t length, double& value) {
    return read(text, length, value);
}

bool read_floating(const char* text, std::size_t length, long double& value) {
    return read(text, length, value);
}

}  // namespace detail
}  // namespace convert
}  // namespace generic
}  // namespace TOVA_2_18
