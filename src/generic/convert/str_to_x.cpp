// Strings to numbers. The integer parsers are written here; the floating ones are in
// floating_reader.cpp, and a standard stream reads for locales other than the classic one.
//
// Most integers are an optional minus sign, a digit that doesn't start a prefix, and more digits.
// `read_short_decimal` reads up to four digits in a word, and `parse_decimal` the others, eight
// characters at a time, with the same result as the stages below. An integer that begins in any
// other way goes through the stages, in one pass:
//
//   whitespace -> sign -> radix check -> prefix, if the radix is 0 -> first digit -> digits -> sign
//
// A `number_cursor` walks over the units. Each step that moves it returns whether units are left,
// and a parser returns 0 if a step returns false before the first digit. After the first digit
// there is a number, and whatever ends it is ignored.
//
// Invariants: the position is below the length whenever a unit is read. The one exception is a
// length of 0 in the unsigned parser, where the position starts at the length and the first unit is
// still read. The magnitude read so far never exceeds the limit, so no multiplication wraps.
//
// The signed and the unsigned parser are two functions on purpose. They share the stages up to the
// first digit and the loop over the digits, and differ in everything around them:
//
//                          strtointx                      strtouintx
//   length of 0            measured up to the terminator  used as given
//   radix compared         signed                         unsigned
//   limit of a negative    one more than the greatest     the greatest value; the sign is rejected
//                          value                          after the number was read
//
// Exceptions carry their names, the source path and the line numbers below.
#include <tova/generic/convert/str_to_x.hpp>

#include <tova/exceptions/exceptions.hpp>
#include <tova/strings/length.hpp>

#include "generic/convert/decimal_digits.hpp"
#include "generic/convert/floating_reader.hpp"
#include "generic/convert/number_locale.hpp"
#include "generic/convert/streamed.hpp"
#include "generic/convert/truth_words.hpp"
#include "strings/ctype.hpp"

#include <algorithm>
#include <limits>
#include <sstream>
#include <string>
#include <type_traits>

namespace TOVA_2_18 {
namespace generic {
namespace convert {

namespace {

using types::radix_t;

const char source_path[] = "generic/convert/str_to_x";  // path below src/, no extension
const char signed_parser[] = "strtointx";
const char unsigned_parser[] = "strtouintx";

// No line is published for these exceptions. The numbers are our own choice and stay the same when
// the code moves, so a number in a bug report identifies the same throw in every release.
const unsigned signed_radix_line = 88;
const unsigned signed_range_line = 131;
const unsigned unsigned_radix_line = 178;
const unsigned unsigned_range_line = 219;
const unsigned unsigned_sign_line = 233;

[[noreturn]] void raise_radix(unsigned line, const char* function) {
    throw exceptions::invalid_argument_value(
        "invalid radix value, values of 0, 2-36 are the only valid values", line, source_path,
        function);
}

// Raised for a number outside the range of the result.
[[noreturn]] void raise_range(bool negative, unsigned line, const char* function) {
    if (negative)
        throw exceptions::underflow_error("Number value is to small", line, source_path, function);
    throw exceptions::overflow_error("Number value is to large", line, source_path, function);
}

// Most strings begin with a digit, which isn't whitespace in any locale, so digits skip the table
// lookup.
template <typename Unit>
inline bool is_whitespace(Unit unit) {
    return !(unit >= '0' && unit <= '9') && strings::detail::is_space(unit);
}

// The value of a digit, or -1 for any other unit. The whole unit is compared as a signed number, so
// neither a byte from 0x80 up nor a wide unit whose low byte is a digit is mistaken for a digit. A
// negative radix has no digits.
inline long digit_value(long unit, long radix) {
    if (unit >= '0' && unit < '0' + std::min(radix, 10L))
        return unit - '0';
    if (unit >= 'A' && unit < 'A' + radix - 10)
        return unit - 'A' + 10;
    if (unit >= 'a' && unit < 'a' + radix - 10)
        return unit - 'a' + 10;
    return -1;
}

// A walk over the string that is being parsed, with the stages that both parsers share.
template <typename Unit>
struct number_cursor {
    const Unit* text;
    unsigned long length;
    unsigned long position;

    long unit() const { return static_cast<long>(text[position]); }

    // Steps over one unit. With a length of 0 the position moves past the length, and no units are
    // left.
    bool advance() { return ++position < length; }

    // Steps over whitespace and one sign.
    //
    // Contract: the first unit is read before the length is tested, so even a length of 0 has one
    // unit.
    bool skip_to_number(bool& negative) {
        while (is_whitespace(text[position]))
            if (!advance())
                return false;
        negative = unit() == '-';
        return !(negative || unit() == '+') || advance();
    }

    // Steps over a prefix and sets `radix` accordingly.
    //
    // Contract: a backslash starts a prefix just as `0` does, so "\x41" and "\101" are read like
    // character escapes. The `0` of an octal number is a prefix as well, so "08" has no digits.
    bool detect_radix(long& radix) {
        if (unit() != '0' && unit() != '\\') {
            radix = 10;
            return true;
        }
        if (!advance())
            return false;
        const long letter = unit() & ~0x20L;
        radix = letter == 'X' ? 16 : letter == 'B' ? 2 : 8;
        return radix == 8 || advance();
    }

    // Moves to the first digit, past a prefix if the radix is 0.
    bool find_first_digit(long& radix, long& digit) {
        if (radix == radix_t::detect && !detect_radix(radix))
            return false;
        digit = digit_value(unit(), radix);
        return digit >= 0;
    }
};

// Reads digits, starting with `digit`, the one at the position. Returns whether their value is at
// most `limit`. The test comes before each multiplication, so the value never wraps.
template <typename Magnitude, typename Unit, typename Radix>
inline bool read_digits_of(number_cursor<Unit> from, long digit, Radix radix, Magnitude limit,
                           Magnitude& value) {
    const Magnitude base = static_cast<Magnitude>(radix);
    const Magnitude cutoff = limit / base;
    const long cutlim = static_cast<long>(limit % base);
    value = 0;
    do {
        if (value >= cutoff && (value != cutoff || digit > cutlim))
            return false;
        value = value * base + static_cast<Magnitude>(digit);
        if (!from.advance())
            break;
        digit = digit_value(from.unit(), radix);
    } while (digit >= 0);
    return true;
}

// The common radices are constants, which avoids dividing the limits at run time.
template <typename Magnitude, typename Unit>
bool read_digits(const number_cursor<Unit>& from, long digit, long radix, Magnitude limit,
                 Magnitude& value) {
    if (radix == 10)
        return read_digits_of(from, digit, std::integral_constant<long, 10>(), limit, value);
    if (radix == 16)
        return read_digits_of(from, digit, std::integral_constant<long, 16>(), limit, value);
    return read_digits_of(from, digit, radix, limit, value);
}

// Magnitudes are computed in the narrower of these two types that can hold them.
template <typename Result>
using magnitude_of = typename std::conditional<sizeof(Result) <= sizeof(unsigned int), unsigned int,
                                               unsigned long>::type;

// The bounds and the result of a signed parser.
template <typename Result>
struct signed_rules {
    using result = Result;
    using magnitude = magnitude_of<Result>;

    // The magnitude of the smallest value is one more than the largest value, hence unsigned.
    static magnitude limit(bool negative) {
        return static_cast<magnitude>(std::numeric_limits<Result>::max()) +
               static_cast<magnitude>(negative);
    }

    static Result number(bool negative, magnitude value, bool) {
        return static_cast<Result>(negative ? 0 - value : value);
    }

    // For a magnitude above the limit.
    __attribute__((noinline)) static Result saturated(bool negative, bool throw_on_range) {
        if (throw_on_range)
            raise_range(negative, signed_range_line, signed_parser);
        return negative ? std::numeric_limits<Result>::min() : std::numeric_limits<Result>::max();
    }
};

// Contract: a minus sign is rejected only after the number has been read, and "-0" is accepted.
template <typename Result>
struct unsigned_rules {
    using result = Result;
    using magnitude = magnitude_of<Result>;

    static magnitude limit(bool) { return std::numeric_limits<Result>::max(); }

    static Result number(bool negative, magnitude value, bool throw_on_range) {
        if (!negative || value == 0)
            return static_cast<Result>(value);
        return rejected(throw_on_range);
    }

    __attribute__((noinline)) static Result saturated(bool negative, bool throw_on_range) {
        if (throw_on_range)
            raise_range(negative, unsigned_range_line, unsigned_parser);
        return negative ? Result(0) : std::numeric_limits<Result>::max();
    }

private:
    __attribute__((noinline)) static Result rejected(bool throw_on_range) {
        if (throw_on_range)
            raise_range(true, unsigned_sign_line, unsigned_parser);
        return 0;
    }
};

template <typename Rules>
inline typename Rules::result result_of(bool negative, typename Rules::magnitude value, bool fits,
                                        bool throw_on_range) {
    return fits ? Rules::number(negative, value, throw_on_range)
                : Rules::saturated(negative, throw_on_range);
}

// The result of a number of up to four digits.
template <typename Rules>
inline typename Rules::result short_result(bool negative, unsigned number, bool throw_on_range) {
    using magnitude = typename Rules::magnitude;
    return result_of<Rules>(negative, static_cast<magnitude>(number),
                            number <= Rules::limit(negative), throw_on_range);
}

// The number of minus signs at the beginning, 0 or 1. Compilers don't see the comparison and make
// no branch of it, because signs are hard to predict.
inline unsigned long minus_signs(const char* text) {
    unsigned long count = *text == '-' ? 1 : 0;
    __asm__("" : "+r"(count));
    return count;
}

// Whether the number, without a minus sign, is decimal and begins like nearly every string: with a
// digit that does not start a prefix.
inline bool begins_decimal(const char* text, unsigned long length, long radix) {
    if (length == 0)
        return false;
    const unsigned first_digit = static_cast<unsigned>(static_cast<unsigned char>(*text)) - '0';
    if (__builtin_expect(radix == radix_t::decimal, 1))
        return first_digit <= 9;
    return radix == radix_t::detect && first_digit - 1 <= 8;
}

// Reads a number of more than eight digits, without its sign.
template <typename Rules>
__attribute__((noinline)) typename Rules::result
parse_long_decimal(const char* text, unsigned long length, bool negative, bool throw_on_range) {
    const unsigned long limit = Rules::limit(negative);
    const unsigned long second = detail::load_up_to_eight(text + 8, length - 8);
    const int more = detail::count_digits(second);
    unsigned long number = detail::leading_digits(detail::load_eight(text), 8);
    number = number * detail::small_powers[more] + detail::leading_digits(second, more);
    bool fits = number <= limit;
    for (unsigned long i = 16; more == 8 && fits && i < length; ++i) {
        const long digit = digit_value(static_cast<long>(text[i]), 10);
        if (digit < 0)
            break;
        const unsigned long added = static_cast<unsigned long>(digit);
        fits = number < limit / 10 || (number == limit / 10 && added <= limit % 10);
        number = number * 10 + added;
    }
    using magnitude = typename Rules::magnitude;
    return result_of<Rules>(negative, static_cast<magnitude>(number), fits, throw_on_range);
}

// Reads a number that begins with a digit. All calls are the last step, so a number of up to eight
// digits needs no stack.
template <typename Rules>
inline typename Rules::result parse_decimal(const char* text, unsigned long length, bool negative,
                                            bool throw_on_range) {
    const unsigned long first = detail::load_up_to_eight(text, length);
    const int count = detail::count_digits(first);
    if (count == 8 && length != 8)
        return parse_long_decimal<Rules>(text, length, negative, throw_on_range);
    const unsigned long number =
        detail::eight_digits((first ^ detail::ascii_zeros) << (64 - 8 * count));
    using magnitude = typename Rules::magnitude;
    return result_of<Rules>(negative, static_cast<magnitude>(number),
                            number <= Rules::limit(negative), throw_on_range);
}

// Reads a decimal number of one to four digits and returns true, or returns false for any other
// string.
inline bool read_short_decimal(const char* text, unsigned long length, radix_t::base base,
                               unsigned& number) {
    if (__builtin_expect(base != radix_t::decimal, 0) || length - 1 >= 4)
        return false;
    if (length == 1) {
        number = static_cast<unsigned>(static_cast<unsigned char>(*text)) - '0';
        return number <= 9;
    }
    // The first two and the last two characters, which overlap unless there are four. The digits
    // end at the last byte of the word, and the bytes before them are zeros.
    const unsigned unused = static_cast<unsigned>(32 - 8 * length);
    const unsigned word = detail::load_two(text) << unused | detail::load_two(text + length - 2)
                                                                 << 16;
    const unsigned values = word ^ (0x30303030u << unused);
    const unsigned pairs = values * 10 + (values >> 8);
    number = (pairs & 0x00ff00ff) * 0x00640001 >> 16;
    return (((values + 0x76767676) | values) & 0x80808080) == 0;
}

// All stages of the signed parser.
template <typename Result, typename Unit>
__attribute__((noinline)) Result parse_signed(const Unit* text, unsigned long length, long radix,
                                              bool throw_on_range) {
    using rules = signed_rules<Result>;
    number_cursor<Unit> from = {text, length, 0};
    bool negative;
    if (!from.skip_to_number(negative))
        return 0;

    // Contract: the radix is checked after whitespace and sign, so a string that contains nothing
    // else is 0 in any radix. It is compared as a signed number here: a negative radix passes and
    // has no digits.
    if (radix == 1 || radix > radix_t::highest)
        raise_radix(signed_radix_line, signed_parser);

    long digit;
    if (!from.find_first_digit(radix, digit))
        return 0;
    typename rules::magnitude value;
    const bool fits = read_digits(from, digit, radix, rules::limit(negative), value);
    return result_of<rules>(negative, value, fits, throw_on_range);
}

// All stages of the unsigned parser.
template <typename Result, typename Unit>
__attribute__((noinline)) Result parse_unsigned(const Unit* text, unsigned long length, long radix,
                                                bool throw_on_range) {
    using rules = unsigned_rules<Result>;
    number_cursor<Unit> from = {text, length, 0};
    bool negative;
    if (!from.skip_to_number(negative))
        return 0;

    // Contract: compared as an unsigned number, so a negative radix is invalid.
    if (radix == 1 || static_cast<unsigned long>(radix) > radix_t::highest)
        raise_radix(unsigned_radix_line, unsigned_parser);

    long digit;
    if (!from.find_first_digit(radix, digit))
        return 0;
    typename rules::magnitude value;
    const bool fits = read_digits(from, digit, radix, rules::limit(negative), value);
    return result_of<rules>(negative, value, fits, throw_on_range);
}

template <typename Result, typename Unit>
Result strtointx(const Unit* text, unsigned long length, radix_t::base base, bool throw_on_range) {
    return parse_signed<Result>(text, length != 0 ? length : strings::string_length(text),
                                static_cast<long>(base), throw_on_range);
}

template <typename Result>
Result strtointx(const char* text, unsigned long length, radix_t::base base, bool throw_on_range);

// Apart, so that a string of known length is read without a call that returns.
template <typename Result>
__attribute__((noinline)) Result measure_and_parse(const char* text, radix_t::base base,
                                                   bool throw_on_range) {
    const unsigned long length = strings::string_length(text);
    return length != 0
               ? strtointx<Result>(text, length, base, throw_on_range)
               : parse_signed<Result>(text, length, static_cast<long>(base), throw_on_range);
}

// Only bytes are read several at a time.
template <typename Result>
__attribute__((noinline)) Result parse_longer(const char* text, unsigned long length,
                                              radix_t::base base, bool throw_on_range) {
    const unsigned long signs = minus_signs(text);
    const long radix = static_cast<long>(base);
    if (begins_decimal(text + signs, length - signs, radix))
        return parse_decimal<signed_rules<Result>>(text + signs, length - signs, signs != 0,
                                                   throw_on_range);
    return parse_signed<Result>(text, length, radix, throw_on_range);
}

template <typename Result>
inline Result strtointx(const char* text, unsigned long length, radix_t::base base,
                        bool throw_on_range) {
    if (length == 0)
        return measure_and_parse<Result>(text, base, throw_on_range);
    const unsigned long signs = minus_signs(text);
    unsigned number;
    if (read_short_decimal(text + signs, length - signs, base, number))
        return short_result<signed_rules<Result>>(signs != 0, number, throw_on_range);
    return parse_longer<Result>(text, length, base, throw_on_range);
}

// Contract: a length of 0 is not measured here, unlike in the signed parser. The length is tested
// after each unit, so one digit is still read, while whitespace, a sign or a prefix yields 0.
template <typename Result, typename Unit>
Result strtouintx(const Unit* text, unsigned long length, radix_t::base base, bool throw_on_range) {
    return parse_unsigned<Result>(text, length, static_cast<long>(base), throw_on_range);
}

template <typename Result>
__attribute__((noinline)) Result parse_longer_unsigned(const char* text, unsigned long length,
                                                       radix_t::base base, bool throw_on_range) {
    const unsigned long signs = minus_signs(text);
    const long radix = static_cast<long>(base);
    if (begins_decimal(text + signs, length - signs, radix))
        return parse_decimal<unsigned_rules<Result>>(text + signs, length - signs, signs != 0,
                                                     throw_on_range);
    return parse_unsigned<Result>(text, length, radix, throw_on_range);
}

template <typename Result>
inline Result strtouintx(const char* text, unsigned long length, radix_t::base base,
                         bool throw_on_range) {
    if (length == 0)
        return parse_unsigned<Result>(text, length, static_cast<long>(base), throw_on_range);
    const unsigned long signs = minus_signs(text);
    unsigned number;
    if (read_short_decimal(text + signs, length - signs, base, number))
        return short_result<unsigned_rules<Result>>(signs != 0, number, throw_on_range);
    return parse_longer_unsigned<Result>(text, length, base, throw_on_range);
}

// Contract: accepts exactly what operator>> accepts. The stream rejects a number out of range, so
// the result is 0.0; the integer parsers saturate instead.
//
// Only a locale of the caller's own needs a stream. It hands on a failed allocation, which it would
// otherwise take for a string without a number.
template <typename Result>
Result extract_by_stream(const strings::ustring8& text, const std::locale& locale) {
    Result value = 0;
    std::stringstream stream(text);
    stream.imbue(locale);
    detail::raise_failed_allocation(stream, [&] { stream >> value; });
    return stream.fail() ? Result(0) : value;
}

template <typename Result>
inline Result extract_as_in_c(const strings::ustring8& text) {
    Result value;
    return detail::read_floating(text.data(), text.size(), value) ? value : Result(0);
}

template <typename Result>
inline Result extract(const strings::ustring8& text, const std::locale& locale) {
    return detail::is_classic(locale) ? extract_as_in_c<Result>(text)
                                      : extract_by_stream<Result>(text, locale);
}

template <typename Result>
inline Result extract(const strings::ustring8& text) {
    return detail::is_global_classic() ? extract_as_in_c<Result>(text)
                                       : extract_by_stream<Result>(text, std::locale());
}

}  // namespace

bool is_space(char unit) {
    return is_whitespace(unit);
}

bool is_space(unsigned short unit) {
    return is_whitespace(unit);
}

bool is_space(wchar_t unit) {
    return is_whitespace(unit);
}

// --- Signed integers ---

long str_to_long(const char* text, unsigned long length, radix_t::base radix, bool throw_on_range) {
    return strtointx<long>(text, length, radix, throw_on_range);
}

long str_to_long(const unsigned short* text, unsigned long length, radix_t::base radix,
                 bool throw_on_range) {
    return strtointx<long>(text, length, radix, throw_on_range);
}

long str_to_long(const wchar_t* text, unsigned long length, radix_t::base radix,
                 bool throw_on_range) {
    return strtointx<long>(text, length, radix, throw_on_range);
}

int str_to_int(const char* text, unsigned long length, radix_t::base radix, bool throw_on_range) {
    return strtointx<int>(text, length, radix, throw_on_range);
}

int str_to_int(const unsigned short* text, unsigned long length, radix_t::base radix,
               bool throw_on_range) {
    return strtointx<int>(text, length, radix, throw_on_range);
}

int str_to_int(const wchar_t* text, unsigned long length, radix_t::base radix,
               bool throw_on_range) {
    return strtointx<int>(text, length, radix, throw_on_range);
}

short str_to_short(const char* text, unsigned long length, radix_t::base radix,
                   bool throw_on_range) {
    return strtointx<short>(text, length, radix, throw_on_range);
}

short str_to_short(const unsigned short* text, unsigned long length, radix_t::base radix,
                   bool throw_on_range) {
    return strtointx<short>(text, length, radix, throw_on_range);
}

short str_to_short(const wchar_t* text, unsigned long length, radix_t::base radix,
                   bool throw_on_range) {
    return strtointx<short>(text, length, radix, throw_on_range);
}

int str_to_signed(const char* text, unsigned long length, radix_t::base radix,
                  bool throw_on_range) {
    return strtointx<int>(text, length, radix, throw_on_range);
}

int str_to_signed(const unsigned short* text, unsigned long length, radix_t::base radix,
                  bool throw_on_range) {
    return strtointx<int>(text, length, radix, throw_on_range);
}

int str_to_signed(const wchar_t* text, unsigned long length, radix_t::base radix,
                  bool throw_on_range) {
    return strtointx<int>(text, length, radix, throw_on_range);
}

signed char str_to_int8(const char* text, unsigned long length, radix_t::base radix,
                        bool throw_on_range) {
    return strtointx<signed char>(text, length, radix, throw_on_range);
}

signed char str_to_int8(const unsigned short* text, unsigned long length, radix_t::base radix,
                        bool throw_on_range) {
    return strtointx<signed char>(text, length, radix, throw_on_range);
}

signed char str_to_int8(const wchar_t* text, unsigned long length, radix_t::base radix,
                        bool throw_on_range) {
    return strtointx<signed char>(text, length, radix, throw_on_range);
}

short str_to_int16(const char* text, unsigned long length, radix_t::base radix,
                   bool throw_on_range) {
    return strtointx<short>(text, length, radix, throw_on_range);
}

short str_to_int16(const unsigned short* text, unsigned long length, radix_t::base radix,
                   bool throw_on_range) {
    return strtointx<short>(text, length, radix, throw_on_range);
}

short str_to_int16(const wchar_t* text, unsigned long length, radix_t::base radix,
                   bool throw_on_range) {
    return strtointx<short>(text, length, radix, throw_on_range);
}

int str_to_int32(const char* text, unsigned long length, radix_t::base radix, bool throw_on_range) {
    return strtointx<int>(text, length, radix, throw_on_range);
}

int str_to_int32(const unsigned short* text, unsigned long length, radix_t::base radix,
                 bool throw_on_range) {
    return strtointx<int>(text, length, radix, throw_on_range);
}

int str_to_int32(const wchar_t* text, unsigned long length, radix_t::base radix,
                 bool throw_on_range) {
    return strtointx<int>(text, length, radix, throw_on_range);
}

long str_to_int64(const char* text, unsigned long length, radix_t::base radix,
                  bool throw_on_range) {
    return strtointx<long>(text, length, radix, throw_on_range);
}

long str_to_int64(const unsigned short* text, unsigned long length, radix_t::base radix,
                  bool throw_on_range) {
    return strtointx<long>(text, length, radix, throw_on_range);
}

long str_to_int64(const wchar_t* text, unsigned long length, radix_t::base radix,
                  bool throw_on_range) {
    return strtointx<long>(text, length, radix, throw_on_range);
}

// --- Unsigned integers ---

unsigned int str_to_unsigned(const char* text, unsigned long length, radix_t::base radix,
                             bool throw_on_range) {
    return strtouintx<unsigned int>(text, length, radix, throw_on_range);
}

unsigned int str_to_unsigned(const unsigned short* text, unsigned long length, radix_t::base radix,
                             bool throw_on_range) {
    return strtouintx<unsigned int>(text, length, radix, throw_on_range);
}

unsigned int str_to_unsigned(const wchar_t* text, unsigned long length, radix_t::base radix,
                             bool throw_on_range) {
    return strtouintx<unsigned int>(text, length, radix, throw_on_range);
}

unsigned char str_to_uint8(const char* text, unsigned long length, radix_t::base radix,
                           bool throw_on_range) {
    return strtouintx<unsigned char>(text, length, radix, throw_on_range);
}

unsigned char str_to_uint8(const unsigned short* text, unsigned long length, radix_t::base radix,
                           bool throw_on_range) {
    return strtouintx<unsigned char>(text, length, radix, throw_on_range);
}

unsigned char str_to_uint8(const wchar_t* text, unsigned long length, radix_t::base radix,
                           bool throw_on_range) {
    return strtouintx<unsigned char>(text, length, radix, throw_on_range);
}

unsigned short str_to_uint16(const char* text, unsigned long length, radix_t::base radix,
                             bool throw_on_range) {
    return strtouintx<unsigned short>(text, length, radix, throw_on_range);
}

unsigned short str_to_uint16(const unsigned short* text, unsigned long length, radix_t::base radix,
                             bool throw_on_range) {
    return strtouintx<unsigned short>(text, length, radix, throw_on_range);
}

unsigned short str_to_uint16(const wchar_t* text, unsigned long length, radix_t::base radix,
                             bool throw_on_range) {
    return strtouintx<unsigned short>(text, length, radix, throw_on_range);
}

unsigned int str_to_uint32(const char* text, unsigned long length, radix_t::base radix,
                           bool throw_on_range) {
    return strtouintx<unsigned int>(text, length, radix, throw_on_range);
}

unsigned int str_to_uint32(const unsigned short* text, unsigned long length, radix_t::base radix,
                           bool throw_on_range) {
    return strtouintx<unsigned int>(text, length, radix, throw_on_range);
}

unsigned int str_to_uint32(const wchar_t* text, unsigned long length, radix_t::base radix,
                           bool throw_on_range) {
    return strtouintx<unsigned int>(text, length, radix, throw_on_range);
}

unsigned long str_to_uint64(const char* text, unsigned long length, radix_t::base radix,
                            bool throw_on_range) {
    return strtouintx<unsigned long>(text, length, radix, throw_on_range);
}

unsigned long str_to_uint64(const unsigned short* text, unsigned long length, radix_t::base radix,
                            bool throw_on_range) {
    return strtouintx<unsigned long>(text, length, radix, throw_on_range);
}

unsigned long str_to_uint64(const wchar_t* text, unsigned long length, radix_t::base radix,
                            bool throw_on_range) {
    return strtouintx<unsigned long>(text, length, radix, throw_on_range);
}

// --- Booleans and floating point ---

bool str_to_bool(const strings::ustring16& text) {
    return detail::is_truth_word(text.data(), text.size()) ||
           str_to_long(text.c_str(), text.size(), radix_t::detect, false) != 0;
}

float str_to_float(const strings::ustring8& text) {
    return extract<float>(text);
}

float str_to_float(const strings::ustring8& text, const std::locale& locale) {
    return extract<float>(text, locale);
}

double str_to_double(const strings::ustring8& text) {
    return extract<double>(text);
}

double str_to_double(const strings::ustring8& text, const std::locale& locale) {
    return extract<double>(text, locale);
}

long double str_to_long_double(const strings::ustring8& text) {
    return extract<long double>(text);
}

long double str_to_long_double(const strings::ustring8& text, const std::locale& locale) {
    return extract<long double>(text, locale);
}

}  // namespace convert
}  // namespace generic
}  // namespace TOVA_2_18
