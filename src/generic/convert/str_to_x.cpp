#include <tova/generic/convert/str_to_x.hpp>

#include <algorithm>
#include <limits>
#include <sstream>
#include <string>
#include <type_traits>

#include <tova/exceptions/exceptions.hpp>
#include <tova/strings/length.hpp>

#include "generic/convert/truth_words.hpp"
#include "strings/ctype.hpp"

namespace TOVA_2_18 {
namespace generic {
namespace convert {

namespace {

using types::radix_t;

const char source_path[] = "generic/convert/str_to_x";
const char signed_parser[] = "strtointx";
const char unsigned_parser[] = "strtouintx";
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

[[noreturn]] void raise_too_large(unsigned line, const char* function) {
    throw exceptions::overflow_error("Number value is to large", line, source_path, function);
}

[[noreturn]] void raise_too_small(unsigned line, const char* function) {
    throw exceptions::underflow_error("Number value is to small", line, source_path, function);
}

// Most strings begin with a digit, which is whitespace in no locale: the table isn't asked for it.
template <typename Unit>
inline bool is_whitespace(Unit unit) {
    return !(unit >= '0' && unit <= '9') && strings::detail::is_space(unit);
}

// The value of a digit, or -1 for a unit that is none. Units count as the signed numbers that they
// are, whole, so that no byte from 0x80 up and no wide unit is mistaken for a digit. A negative
// radix has no digits.
inline long digit_value(long unit, long radix) {
    if (unit >= '0' && unit < '0' + std::min(radix, 10L))
        return unit - '0';
    if (unit >= 'A' && unit < 'A' + radix - 10)
        return unit - 'A' + 10;
    if (unit >= 'a' && unit < 'a' + radix - 10)
        return unit - 'a' + 10;
    return -1;
}

// A walk over the text that is being parsed. The two parsers share these steps; what they do at
// the limits stays with each of them.
template <typename Unit>
struct number_text {
    const Unit* text;
    unsigned long length;
    unsigned long position;

    long unit() const { return static_cast<long>(text[position]); }

    // Whether text is left behind the step. The position may pass a length of 0.
    bool advance() { return ++position < length; }

    // Contract: the first unit is read before the length is looked at, so that a text without
    // length still has it.
    bool skip_blanks() {
        while (is_space(text[position]))
            if (!advance())
                return false;
        return true;
    }

    // Puts the radix that the text tells into `radix` and steps over the prefix.
    //
    // Contract: a backslash opens a prefix as `0` does, so that "\x41" and "\101" read as
    // character escapes. The `0` of an octal text is a prefix as well, so "08" holds no digit.
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
};

// Reads digits from the position on up to `limit`, the largest magnitude. Answers whether all of
// them fit; the first unit has to be a digit. The test stands before each multiplication, so that
// the value never wraps.
template <typename Magnitude, typename Unit, typename Radix>
inline bool read_digits_of(number_text<Unit> from, long digit, Radix radix, Magnitude limit,
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

// The common radices as constants, for which no division is needed.
template <typename Magnitude, typename Unit>
bool read_digits(const number_text<Unit>& from, long digit, long radix, Magnitude limit,
                 Magnitude& value) {
    if (radix == 10)
        return read_digits_of(from, digit, std::integral_constant<long, 10>(), limit, value);
    if (radix == 16)
        return read_digits_of(from, digit, std::integral_constant<long, 16>(), limit, value);
    return read_digits_of(from, digit, radix, limit, value);
}

// Magnitudes are computed in the narrower of these types that holds them.
template <typename Result>
using magnitude_of = typename std::conditional<sizeof(Result) <= sizeof(unsigned int), unsigned int,
                                               unsigned long>::type;

template <typename Result, typename Unit>
Result strtointx(const Unit* text, unsigned long length, radix_t::base base, bool throw_on_range) {
    using magnitude = magnitude_of<Result>;
    number_text<Unit> from = {text, length != 0 ? length : strings::string_length(text), 0};

    if (!from.skip_blanks())
        return 0;
    const long sign = from.unit();
    if ((sign == '-' || sign == '+') && !from.advance())
        return 0;

    // Contract: the radix is looked at behind blanks and sign, so a text of nothing else is 0 with
    // any radix. It is compared as a signed number here: a negative radix passes and has no digits.
    long radix = static_cast<long>(base);
    if (radix == 1 || radix > 36)
        raise_radix(signed_radix_line, signed_parser);
    if (radix == 0 && !from.detect_radix(radix))
        return 0;

    const long digit = digit_value(from.unit(), radix);
    if (digit < 0)
        return 0;

    // The magnitude of the least value is one more than the greatest value, hence unsigned.
    const bool negative = sign == '-';
    const magnitude limit = static_cast<magnitude>(std::numeric_limits<Result>::max()) +
                            static_cast<magnitude>(negative);
    magnitude value;
    if (read_digits(from, digit, radix, limit, value))
        return static_cast<Result>(negative ? 0 - value : value);

    if (throw_on_range) {
        if (negative)
            raise_too_small(signed_range_line, signed_parser);
        raise_too_large(signed_range_line, signed_parser);
    }
    return negative ? std::numeric_limits<Result>::min() : std::numeric_limits<Result>::max();
}

// Contract: a length of 0 is not measured here, unlike in the signed parser. The length is tested
// behind each unit, so one digit is still read, while a blank, a sign or a prefix ends the text.
template <typename Result, typename Unit>
Result strtouintx(const Unit* text, unsigned long length, radix_t::base base, bool throw_on_range) {
    using magnitude = magnitude_of<Result>;
    number_text<Unit> from = {text, length, 0};

    if (!from.skip_blanks())
        return 0;
    const long sign = from.unit();
    if ((sign == '-' || sign == '+') && !from.advance())
        return 0;

    // Contract: compared as an unsigned number, so a negative radix is invalid.
    long radix = static_cast<long>(base);
    if (radix == 1 || static_cast<unsigned long>(radix) > 36)
        raise_radix(unsigned_radix_line, unsigned_parser);
    if (radix == 0 && !from.detect_radix(radix))
        return 0;

    const long digit = digit_value(from.unit(), radix);
    if (digit < 0)
        return 0;

    const bool negative = sign == '-';
    magnitude value;
    if (!read_digits(from, digit, radix, magnitude{std::numeric_limits<Result>::max()}, value)) {
        if (throw_on_range) {
            if (negative)
                raise_too_small(unsigned_range_line, unsigned_parser);
            raise_too_large(unsigned_range_line, unsigned_parser);
        }
        value = std::numeric_limits<Result>::max();
    }

    // Contract: the sign is refused only here, behind the number, and "-0" is not refused.
    if (!negative || value == 0)
        return static_cast<Result>(value);
    if (throw_on_range)
        raise_too_small(unsigned_sign_line, unsigned_parser);
    return 0;
}

// Contract: exactly what operator>> takes and gives. Out-of-range numbers are refused by the stream
// and so give 0.0, unlike the integer parsers, which saturate.
template <typename Result>
Result extract(std::stringstream& stream) {
    Result value;
    stream >> value;
    return stream.fail() ? Result(0) : value;
}

template <typename Result>
Result extract(const strings::ustring8& text) {
    std::stringstream stream(text);
    return extract<Result>(stream);
}

template <typename Result>
Result extract(const strings::ustring8& text, const std::locale& locale) {
    std::stringstream stream(text);
    stream.imbue(locale);
    return extract<Result>(stream);
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
