/// @file
/// Reading the items of the text encoding, one step at a time.
///
/// `serialize_text_buf` reads one item per call. The parser of the labeled buffer reads groups that
/// are nested in the content of others, and works on them in place, as runs of bytes.
///
/// The functions have no state; the caller owns the content and the position.
#pragma once

#include <tova/generic/convert/str_to_x.hpp>

#include "generic/convert/decimal_digits.hpp"
#include "serialization/new_string.hpp"

#include <algorithm>
#include <cstddef>
#include <limits>
#include <string>

namespace TOVA_2_18 {
namespace serialization {
namespace detail {

// The last byte of each item.
const char item_separator = 0x01;

// A part of the content, without a copy of its bytes.
struct byte_run {
    const char* begin;
    std::size_t length;

    std::string as_string() const { return new_string(begin, length); }
};

// Returns the field up to the next separator and moves the position past that separator, or to npos
// if there is none. At npos the field is empty, which parses as 0. Raises `std::out_of_range` if
// the position is past the end; the position is already npos then.
byte_run next_field(const byte_run& content, std::size_t& position);

// Raises `std::out_of_range` with the published message.
[[noreturn]] void raise_position(std::size_t position, std::size_t size);

// Returns as many bytes as the length field says, or as many as the content has, and moves the
// position past them and their separator.
//
// Contract: the separator is skipped by addition, without examining it, and the sum wraps. From
// npos (the length field had no separator) a length of 0 leads to position 0, which is why reading
// a string at the end starts over. Raises `std::out_of_range` if the length isn't 0 and the
// position is past the end; the position has already moved then.
inline byte_run next_bytes(const byte_run& content, std::size_t& position, int length) {
    const std::size_t start = position;
    const auto wanted = static_cast<std::size_t>(length);
    position = start + wanted + 1;
    if (length == 0)
        return byte_run{content.begin, 0};
    if (start > content.length)
        raise_position(start, content.length);
    return byte_run{content.begin + start, std::min(wanted, content.length - start)};
}

// Both of the above: reads a string item.
byte_run next_string(const byte_run& content, std::size_t& position);

// A field as a number, with the prefixes that the parser detects. An empty field is 0 and is never
// passed to the parser: the signed ones take a length of 0 to mean "up to the terminator", and a
// field has none.
template <typename Number>
Number as_integer(const byte_run& field,
                  Number (*parse)(const char*, unsigned long, types::radix_t::base, bool)) {
    if (field.length == 0)
        return 0;
    return parse(field.begin, field.length, types::radix_t::detect, false);
}

// Reads a number as nearly all are written: an optional minus sign and up to 16 digits that begin
// with no 0. Its separator is found where the digits end. Returns false and moves nothing for any
// other field, also for values that the type can't hold and for fields near the end of the content.
template <typename Number>
inline bool take_short_integer(const byte_run& content, std::size_t& position, Number& value) {
    namespace digits_of = generic::convert::detail;
    typedef std::numeric_limits<Number> limits;
    const std::size_t most_bytes = 18;  // with the sign and the separator
    const std::size_t start = position;
    if (content.length < most_bytes || start > content.length - most_bytes)
        return false;
    const char* digits = content.begin + start;
    const unsigned long sign = limits::is_signed && *digits == '-' ? 1 : 0;
    digits += sign;
    const unsigned long first = digits_of::load_eight(digits);
    const int count = digits_of::count_digits(first);
    const char* end = digits + count;
    // A single 0 is no prefix.
    if (count == 0 || (*digits == '0' && count != 1))
        return false;
    unsigned long number = digits_of::leading_digits(first, count);
    if (count == 8) {
        const unsigned long second = digits_of::load_eight(end);
        const int more = digits_of::count_digits(second);
        number = number * digits_of::small_powers[more] + digits_of::leading_digits(second, more);
        end += more;
    }
    const unsigned long limit = static_cast<unsigned long>(limits::max()) + sign;
    if (*end != item_separator || number > limit)
        return false;
    value = static_cast<Number>((number ^ (0 - sign)) + sign);
    position = static_cast<std::size_t>(end + 1 - content.begin);
    return true;
}

// npos is past the end of any content.
inline bool at_end(const byte_run& content, std::size_t position) {
    return position >= content.length;
}

}  // namespace detail
}  // namespace serialization
}  // namespace TOVA_2_18
