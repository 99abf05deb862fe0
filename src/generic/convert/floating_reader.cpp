// A number is read in three stages:
//
//   scan       the characters that the stream's extraction collects, into a `decimal`: up to 19
//              significant digits as an integer, and a power of ten
//   nearest    the closest binary value, by one product of 64 and 128 bits
//   exactly    where the product can't tell: `strtod` on the digits without a point
//
// Nearly all numbers have a way of their own before that (`read_usual`): an optional minus, up to
// 19 digits, and a product that can tell. It keeps everything in registers, and leaves any string
// or number that it isn't made for to the stages. If both the digits and the power of ten are exact
// as binary values, one division or multiplication by the processor replaces the product.
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

// Steps over digits and appends them to the number, which wraps if there are too many. All digits
// of a word are taken at once: a loop over them would mispredict its end. Where there are eight,
// the next place is known before they are counted. `load` returns the next characters.
template <typename Load>
__attribute__((always_inline)) inline const char* take_digits(const char* at, unsigned long& number,
                                                              const Load& load) {
    for (;; at += 8) {
        const unsigned long word = load(at);
        const int count = count_digits(word);
        if (count != 8) {
            number = number * small_powers[count] + leading_digits(word, count);
            return at + count;
        }
        number = number * hundred_million + eight_digits(word ^ ascii_zeros);
    }
}

const char* take_digits(const char* at, const char* end, unsigned long& number) {
    return take_digits(at, number, [end](const char* from) {
        return load_up_to_eight(from, static_cast<unsigned long>(end - from));
    });
}

// What `load_up_to_eight` loads from a place after at least eight other characters of the string.
// The last few are the upper bytes of the last eight, which takes no branch on their number.
inline unsigned long load_later(const char* at, const char* end) {
    const unsigned long left = static_cast<unsigned long>(end - at);
    return left >= 8 ? load_eight(at) : load_eight(end - 8) >> (8 * (7 - left)) >> 8;
}

__attribute__((always_inline)) inline const char* take_later_digits(const char* at, const char* end,
                                                                    unsigned long& number) {
    return take_digits(at, number, [end](const char* from) { return load_later(from, end); });
}

// The sign and the digits of an exponent. Returns false if there are no digits.
__attribute__((always_inline)) inline bool take_exponent(const char* begin, const char* at,
                                                         const char* end, long& exponent) {
    const bool negative = *at == '-';
    at += negative || *at == '+' ? 1 : 0;
    const unsigned long word = at - begin >= 8
                                   ? load_later(at, end)
                                   : load_up_to_eight(at, static_cast<unsigned long>(end - at));
    const int count = count_digits(word);
    if (count == 0)
        return false;
    long value = static_cast<long>(leading_digits(word, count));
    if (count == 8)
        for (at += 8; is_digit(*at); ++at)
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
    if ((*at == 'e' || *at == 'E') && !take_exponent(begin, at + 1, end, exponent))
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

// What `scan` collects from a usual number.
struct usual_number {
    bool negative;
    unsigned long digits;
    long exponent;
};

// False for any other string, valid or not. The digits may begin with zeros. Inlined, so that the
// number stays in registers.
__attribute__((always_inline)) inline bool scan_usual(const char* text, const char* end,
                                                      usual_number& number) {
    number.negative = *text == '-';
    const char* const begin = text + (number.negative ? 1 : 0);
    const char* at = begin;
    const unsigned long word = load_up_to_eight(at, static_cast<unsigned long>(end - at));
    const int before_point = count_digits(word);
    long count;
    if (before_point == 8) {
        number.digits = eight_digits(word ^ ascii_zeros);
        at = take_later_digits(at + 8, end, number.digits);
        count = at - begin;
        number.exponent = 0;
        if (*at == '.') {
            const char* const fraction = at + 1;
            at = take_later_digits(fraction, end, number.digits);
            number.exponent = fraction - at;
            count -= number.exponent;
        }
    } else {
        // If there is a point, it is in the word, and the digits after it are moved to those
        // before.
        const int shift = 8 * before_point;
        const unsigned long rest = word >> shift;
        const bool has_point = (rest & 0xff) == '.';
        unsigned long digits = word;
        count = before_point;
        if (has_point) {
            digits = (word ^ (rest << shift)) | (rest >> 8 << shift);
            count = count_digits(digits);
            ++at;
        }
        number.digits = leading_digits(digits, static_cast<int>(count));
        at += count;
        if (has_point && count == 7) {
            at = take_later_digits(begin + 8, end, number.digits);
            count = at - begin - 1;
        }
        number.exponent = before_point - count;
    }
    return static_cast<unsigned long>(count - 1) < most_digits &&
           ((*at != 'e' && *at != 'E') || take_exponent(begin, at + 1, end, number.exponent));
}

// --- One division or multiplication ------------------------------------------------------------

// The powers of ten that the format has exactly.
template <typename Floating>
struct exact_powers;
template <>
struct exact_powers<double> {
    static const long last = 22;
    static const double value[last + 1];
};
template <>
struct exact_powers<float> {
    static const long last = 10;
    static const float value[last + 1];
};
const double exact_powers<double>::value[] = {1e0,  1e1,  1e2,  1e3,  1e4,  1e5,  1e6,  1e7,
                                              1e8,  1e9,  1e10, 1e11, 1e12, 1e13, 1e14, 1e15,
                                              1e16, 1e17, 1e18, 1e19, 1e20, 1e21, 1e22};
const float exact_powers<float>::value[] = {1e0f, 1e1f, 1e2f, 1e3f, 1e4f, 1e5f,
                                            1e6f, 1e7f, 1e8f, 1e9f, 1e10f};

// Whether the power of ten is exact in the format, and the digits as an integer of `bits` bits.
template <typename Floating>
inline bool is_exact(const usual_number& number, int bits) {
    const unsigned long last = exact_powers<Floating>::last;
    return number.digits >> bits == 0 &&
           static_cast<unsigned long>(number.exponent) + last <= 2 * last;
}

// The sign is a factor, since a branch would mispredict random ones; it is kept for zero.
template <typename Floating>
inline Floating quotient(const usual_number& number) {
    static const Floating signs[] = {1, -1};
    const Floating digits =
        static_cast<Floating>(static_cast<long>(number.digits)) * signs[number.negative];
    return number.exponent < 0 ? digits / exact_powers<Floating>::value[-number.exponent]
                               : digits * exact_powers<Floating>::value[number.exponent];
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

// The same for nearly all normal values. The product of the upper halves is less than 2 below the
// exact one, or less than 1 above. Where that can't change the rounded bits, it is enough.
template <typename Floating>
inline bool nearest_usual(const usual_number& number, unsigned long& bits) {
    typedef format<Floating> target;
    if (number.digits == 0 ||
        static_cast<unsigned long>(number.exponent - first_power) > 308 - first_power)
        return false;
    const int shift = __builtin_clzl(number.digits);
    const unsigned long product = static_cast<unsigned long>(
        static_cast<uint128>(number.digits << shift) * decimal_power_of(number.exponent).high >>
        64);
    const int top = static_cast<int>(product >> 63);
    const int dropped = 62 + top - target::mantissa_bits;
    const unsigned long all_ones = (1UL << dropped) - 1;
    if ((product & all_ones) - 1 > all_ones - 3)
        return false;
    const unsigned long mantissa = ((product >> dropped) + 1) >> 1;
    const long binary_exponent = 63 + top + binary_exponent_of(number.exponent) - shift;
    if (binary_exponent < target::least_exponent)
        return false;  // subnormal
    bits = mantissa + (static_cast<unsigned long>(binary_exponent + target::bias - 1)
                       << (target::mantissa_bits - 1));
    return bits < target::infinity;
}

// The sign is a bit, too: arithmetic may be set to flush subnormal numbers.
inline void set_bits(unsigned long bits, bool negative, double& value) {
    bits |= static_cast<unsigned long>(negative) << 63;
    std::memcpy(&value, &bits, sizeof value);
}

inline void set_bits(unsigned long bits, bool negative, float& value) {
    const unsigned int narrow =
        static_cast<unsigned int>(bits) | static_cast<unsigned int>(negative) << 31;
    std::memcpy(&value, &narrow, sizeof value);
}

template <typename Floating>
bool find_nearest(const decimal& number, Floating& value) {
    unsigned long bits;
    if (!nearest<Floating>(number.digits, number.exponent, bits))
        return false;
    unsigned long next_bits;
    if (number.cut &&
        (!nearest<Floating>(number.digits + 1, number.exponent, next_bits) || next_bits != bits))
        return false;
    set_bits(bits, number.negative, value);
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

// All three stages.
template <typename Floating>
__attribute__((noinline)) bool read_any(const char* text, const char* end, Floating& value) {
    decimal number;
    if (!scan(text, end, number))
        return false;
    if (!rounds_to_nearest() || !find_nearest(number, value))
        convert_exactly(number, value);
    return std::abs(value) <= std::numeric_limits<Floating>::max();
}

template <typename Floating>
__attribute__((always_inline)) inline bool read_usual(const char* text, const char* end,
                                                      Floating& value) {
    usual_number number;
    if (!scan_usual(text, end, number) || !rounds_to_nearest())
        return false;
    // Of the numbers with all digits that a double can have, about half are exact. A branch on that
    // would be mispredicted, so they are left to the product, which can tell for nearly all.
    const int exact_bits = std::numeric_limits<Floating>::digits;
    if (!is_exact<Floating>(number, exact_bits - 4)) {
        unsigned long bits;
        if (nearest_usual<Floating>(number, bits)) {
            set_bits(bits, number.negative, value);
            return true;
        }
        if (!is_exact<Floating>(number, exact_bits))
            return false;
    }
    if (!computes_to_nearest())
        return false;
    value = quotient<Floating>(number);
    return true;
}

}  // namespace

bool read_floating(const char* text, std::size_t length, float& value) {
    return read_usual(text, text + length, value) || read_any(text, text + length, value);
}

bool read_floating(const char* text, std::size_t length, double& value) {
    return read_usual(text, text + length, value) || read_any(text, text + length, value);
}

bool read_floating(const char* text, std::size_t length, long double& value) {
    // 27 digits and powers up to 10^27 would be exact in its format, but programs may have set the
    // processor to round its results to fewer bits.
    return read_any(text, text + length, value);
}

}  // namespace detail
}  // namespace convert
}  // namespace generic
}  // namespace TOVA_2_18
