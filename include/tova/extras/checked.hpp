/// @file
/// Conversions and parsers that return a value or an error with its position.
///
///     const auto wide = tova::extras::try_utf8_to_utf16(input);
///     if (!wide)
///         std::cerr << wide.error() << " at byte " << wide.position() << '\n';
///     const auto port = tova::extras::try_parse<unsigned short>("70000");   // out_of_range
///
/// The plain functions of the library report invalid input within the result ("-1", "?", 0); these
/// never do. UTF-8 is checked strictly: no overlong form, no surrogate, nothing above U+10FFFF. No
/// function here raises for its input; all raise what an allocation raises. Threads may share the
/// arguments.
#pragma once

#include <tova/abi.hpp>
#include <tova/exceptions/exceptions.hpp>
#include <tova/generic/convert/str_to_x.hpp>
#include <tova/strings/code_page.hpp>
#include <tova/strings/unicode.hpp>
#include <tova/strings/ustring.hpp>
#include <tova/types/radix.hpp>

#include <limits>
#include <locale>
#include <sstream>
#include <stdexcept>
#include <string>
#include <type_traits>
#include <utility>

namespace TOVA_2_18 {
namespace extras {

/// Why a checked operation has no value.
enum class check_error {
    none,            ///< There is a value.
    empty,           ///< The input holds nothing to read.
    invalid,         ///< A unit or byte that is not allowed there.
    incomplete,      ///< The input ends within a character or number.
    out_of_range,    ///< The number does not fit the type.
    not_convertible  ///< The code page lacks a character.
};

/// The error in words, for messages: "invalid input".
inline const char* name(check_error error) {
    switch (error) {
    case check_error::none:
        return "no error";
    case check_error::empty:
        return "empty input";
    case check_error::invalid:
        return "invalid input";
    case check_error::incomplete:
        return "incomplete input";
    case check_error::out_of_range:
        return "out of range";
    case check_error::not_convertible:
        return "not convertible";
    }
    return "unknown";
}

/// A value, or an error and where it is.
template <typename Value>
class checked {
public:
    /// A value, without an error.
    checked(Value value) : m_value(std::move(value)) {}

    /// An error, and the index of the unit or byte that caused it.
    checked(check_error error, unsigned long position) : m_error(error), m_position(position) {}

    /// Whether there is a value. Never fails.
    bool has_value() const { return m_error == check_error::none; }
    explicit operator bool() const { return has_value(); }

    /// The value, or a default-constructed one after an error.
    const Value& value() const { return m_value; }
    const Value& operator*() const { return m_value; }

    /// The value, or `otherwise` after an error.
    Value value_or(Value otherwise) const { return has_value() ? m_value : otherwise; }

    /// The value. Raises `std::invalid_argument` with error and position if there is none.
    const Value& value_or_raise() const {
        if (!has_value())
            throw std::invalid_argument(std::string(name(m_error)) + " at position " +
                                        std::to_string(m_position));
        return m_value;
    }

    /// The error as a number, `check_error::none` if there is a value, and in words. Never fails.
    check_error code() const { return m_error; }
    const char* error() const { return name(m_error); }

    /// The index of the offending unit or byte; 0 if there is a value.
    unsigned long position() const { return m_position; }

private:
    Value m_value{};
    check_error m_error = check_error::none;
    unsigned long m_position = 0;
};

namespace _private {

struct place {
    check_error error;
    unsigned long position;
};

// The first byte that strict UTF-8 does not allow. The ranges of the second byte exclude overlong
// forms (E0, F0), surrogates (ED) and what lies above U+10FFFF (F4).
inline place check_utf8(const std::string& text) {
    const auto byte = [&text](std::size_t i) { return static_cast<unsigned char>(text[i]); };
    for (std::size_t i = 0; i < text.size();) {
        const unsigned lead = byte(i);
        if (lead < 0x80) {
            ++i;
            continue;
        }
        const std::size_t length = lead >= 0xC2 && lead < 0xE0   ? 2
                                   : lead >= 0xE0 && lead < 0xF0 ? 3
                                   : lead >= 0xF0 && lead < 0xF5 ? 4
                                                                 : 0;
        if (length == 0)
            return {check_error::invalid, i};
        unsigned low = lead == 0xE0 ? 0xA0 : lead == 0xF0 ? 0x90 : 0x80;
        unsigned high = lead == 0xED ? 0x9F : lead == 0xF4 ? 0x8F : 0xBF;
        for (std::size_t k = 1; k < length; ++k) {
            if (i + k >= text.size())
                return {check_error::incomplete, i};
            if (byte(i + k) < low || byte(i + k) > high)
                return {check_error::invalid, i};
            low = 0x80;
            high = 0xBF;
        }
        i += length;
    }
    return {check_error::none, 0};
}

inline place check_utf16(const strings::ustring16& text) {
    for (std::size_t i = 0; i < text.size(); ++i) {
        const unsigned unit = text[i];
        if (unit >= 0xDC00 && unit < 0xE000)
            return {check_error::invalid, i};
        if (unit >= 0xD800 && unit < 0xDC00) {
            if (i + 1 == text.size())
                return {check_error::incomplete, i};
            if (text[i + 1] < 0xDC00 || text[i + 1] >= 0xE000)
                return {check_error::invalid, i};
            ++i;
        }
    }
    return {check_error::none, 0};
}

inline place check_utf32(const strings::ustring32& text) {
    for (std::size_t i = 0; i < text.size(); ++i) {
        const unsigned code = static_cast<unsigned>(text[i]);
        if (code > 0x10FFFF || (code >= 0xD800 && code < 0xE000))
            return {check_error::invalid, i};
    }
    return {check_error::none, 0};
}

// UTF-16 that begins with the mark of the other byte order sends the plain conversion into a
// recursion without end. Here the unit is the noncharacter that it says it is.
inline strings::ustring32 decode_utf16(const strings::ustring16& text) {
    strings::ustring32 result;
    result.reserve(text.size());
    for (std::size_t i = 0; i < text.size(); ++i) {
        unsigned code = text[i];
        if (code >= 0xD800 && code < 0xDC00)
            code = 0x10000 + ((code - 0xD800) << 10) + (text[++i] - 0xDC00u);
        result.push_back(static_cast<wchar_t>(code));
    }
    return result;
}

}  // namespace _private

/// @name Checks
///
/// The first offending unit of a text, as the error of a value that is the text itself.
/// @{
inline checked<strings::ustring8> check_utf8(const strings::ustring8& text) {
    const _private::place found = _private::check_utf8(text);
    return found.error == check_error::none
               ? checked<strings::ustring8>(text)
               : checked<strings::ustring8>(found.error, found.position);
}
/// @}

/// @name Conversions
///
/// Between the three encodings. The input is checked first, strictly. UTF-16 that begins with
/// 0xFFFE is no special case here, and `try_utf32_to_utf16` makes true UTF-16, unlike the plain
/// function.
/// @{
inline checked<strings::ustring16> try_utf8_to_utf16(const strings::ustring8& text) {
    const _private::place found = _private::check_utf8(text);
    if (found.error != check_error::none)
        return {found.error, found.position};
    return strings::utf8_to_utf16(text);
}
inline checked<strings::ustring32> try_utf8_to_utf32(const strings::ustring8& text) {
    const _private::place found = _private::check_utf8(text);
    if (found.error != check_error::none)
        return {found.error, found.position};
    return strings::utf8_to_utf32(text);
}
inline checked<strings::ustring8> try_utf16_to_utf8(const strings::ustring16& text) {
    const _private::place found = _private::check_utf16(text);
    if (found.error != check_error::none)
        return {found.error, found.position};
    return strings::utf32_to_utf8(_private::decode_utf16(text));
}
inline checked<strings::ustring32> try_utf16_to_utf32(const strings::ustring16& text) {
    const _private::place found = _private::check_utf16(text);
    if (found.error != check_error::none)
        return {found.error, found.position};
    return _private::decode_utf16(text);
}
inline checked<strings::ustring8> try_utf32_to_utf8(const strings::ustring32& text) {
    const _private::place found = _private::check_utf32(text);
    if (found.error != check_error::none)
        return {found.error, found.position};
    return strings::utf32_to_utf8(text);
}
inline checked<strings::ustring16> try_utf32_to_utf16(const strings::ustring32& text) {
    const _private::place found = _private::check_utf32(text);
    if (found.error != check_error::none)
        return {found.error, found.position};
    return strings::utf8_to_utf16(strings::utf32_to_utf8(text));
}
/// @}

/// @name Numbers
///
/// The whole text must be a number: an optional sign and digits of the radix (2 to 36, 10 by
/// default), without whitespace, prefix or separator. "-0" is 0 for unsigned types, too.
/// @{
template <typename Integer>
typename std::enable_if<std::is_integral<Integer>::value && !std::is_same<Integer, bool>::value,
                        checked<Integer>>::type
try_parse(const std::string& text, unsigned radix = 10) {
    std::size_t at = 0;
    const bool is_negative = !text.empty() && text[0] == '-';
    if (!text.empty() && (text[0] == '-' || text[0] == '+'))
        ++at;
    if (at == text.size())
        return {text.empty() ? check_error::empty : check_error::incomplete, at};

    // The size of the number is collected as unsigned; its limit depends on the sign.
    const unsigned long limit =
        is_negative ? (std::is_signed<Integer>::value
                           ? static_cast<unsigned long>(std::numeric_limits<Integer>::max()) + 1
                           : 0)
                    : static_cast<unsigned long>(std::numeric_limits<Integer>::max());
    unsigned long size = 0;
    bool is_too_large = false;
    for (; at < text.size(); ++at) {
        const char c = text[at];
        const unsigned digit = c >= '0' && c <= '9'   ? static_cast<unsigned>(c - '0')
                               : c >= 'a' && c <= 'z' ? static_cast<unsigned>(c - 'a') + 10
                               : c >= 'A' && c <= 'Z' ? static_cast<unsigned>(c - 'A') + 10
                                                      : 99;
        if (digit >= radix)
            return {check_error::invalid, at};
        is_too_large = is_too_large || digit > limit || size > (limit - digit) / radix;
        size = size * radix + digit;
    }
    if (is_too_large)
        return {check_error::out_of_range, 0};
    return static_cast<Integer>(is_negative ? 0 - size : size);
}

/// A decimal number such as "-1.5e3" with a point, whatever the locale is. "inf" and "nan" are
/// invalid. A number too large is out of range; one too small for the type is 0 or the nearest.
template <typename Floating>
typename std::enable_if<std::is_floating_point<Floating>::value, checked<Floating>>::type
try_parse(const std::string& text) {
    if (text.empty())
        return {check_error::empty, 0};
    std::size_t at = 0;
    const auto is_digit = [&] { return at < text.size() && text[at] >= '0' && text[at] <= '9'; };
    const auto skip_digits = [&] {
        const std::size_t begin = at;
        while (is_digit())
            ++at;
        return at - begin;
    };
    const auto stop = [&] {
        return checked<Floating>(at == text.size() ? check_error::incomplete : check_error::invalid,
                                 at);
    };
    if (text[at] == '-' || text[at] == '+')
        ++at;
    std::size_t digits = skip_digits();
    if (at < text.size() && text[at] == '.') {
        ++at;
        digits += skip_digits();
    }
    if (digits == 0)
        return stop();
    if (at < text.size() && (text[at] == 'e' || text[at] == 'E')) {
        ++at;
        if (at < text.size() && (text[at] == '-' || text[at] == '+'))
            ++at;
        if (skip_digits() == 0)
            return stop();
    }
    if (at != text.size())
        return {check_error::invalid, at};

    std::istringstream stream(text);
    stream.imbue(std::locale::classic());
    Floating value = 0;
    stream >> value;
    if (value == std::numeric_limits<Floating>::max() ||
        value == -std::numeric_limits<Floating>::max()) {
        if (stream.fail())
            return {check_error::out_of_range, 0};
    }
    return value;
}
/// @}

/// A number with enough digits to restore it exactly: "0.1", "0.30000000000000004". A `float` needs
/// at most 9 digits, a `double` 17 and a `long double` 21. The decimal separator is a point in
/// every locale. Infinities and NaNs become "inf", "-inf" and "nan", as in streams; `try_parse`
/// rejects these.
template <typename Floating>
typename std::enable_if<std::is_floating_point<Floating>::value, strings::ustring8>::type
exact(Floating value) {
    std::string text;
    for (int digits = std::numeric_limits<Floating>::digits10;
         digits <= std::numeric_limits<Floating>::max_digits10; ++digits) {
        std::ostringstream stream;
        stream.imbue(std::locale::classic());
        stream.precision(digits);
        stream << value;
        text = stream.str();
        const checked<Floating> back = try_parse<Floating>(text);
        if (back && !(back.value() < value) && !(value < back.value()))
            break;
    }
    return text;
}

/// @name Code pages
///
/// A conversion succeeds if converting back gives the input again; otherwise the error is
/// `not_convertible` at the first difference. Raises as `code_page` does if the page is not known.
/// @{
inline checked<std::string> try_encode(const strings::code_page& page,
                                       const strings::ustring8& text) {
    const _private::place found = _private::check_utf8(text);
    if (found.error != check_error::none)
        return {found.error, found.position};
    const std::string bytes = page.encode(text);
    const strings::ustring8 back = page.as_utf8(bytes);
    if (back == text)
        return bytes;
    unsigned long at = 0;
    while (at < text.size() && at < back.size() && text[at] == back[at])
        ++at;
    while (at > 0 && at < text.size() && (static_cast<unsigned char>(text[at]) & 0xC0) == 0x80)
        --at;
    return {check_error::not_convertible, at};
}
inline checked<strings::ustring8> try_decode(const strings::code_page& page,
                                             const std::string& bytes) {
    const strings::ustring8 text = page.as_utf8(bytes);
    const std::string back = page.encode(text);
    if (back == bytes)
        return text;
    unsigned long at = 0;
    while (at < bytes.size() && at < back.size() && bytes[at] == back[at])
        ++at;
    return {check_error::not_convertible, at};
}
/// @}

}  // namespace extras
}  // namespace TOVA_2_18
