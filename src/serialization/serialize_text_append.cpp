// The appending functions of the text buffer. An item is written straight into the content if that
// has room for the longest one, and by way of an array on the stack otherwise.
//
// They are in a separate file, which fills strings in place and has no function with a throw().
#include <tova/serialization/serialize_text_buf.hpp>

#include "generic/convert/decimal_digits.hpp"
#include "generic/convert/floating_writer.hpp"
#include "generic/convert/number_locale.hpp"
#include "generic/convert/streamed.hpp"
#include "serialization/text_items.hpp"
#include "strings/unfilled.hpp"

#include <cstddef>
#include <sstream>
#include <string>

namespace TOVA_2_18 {
namespace serialization {

namespace {

using generic::convert::detail::max_decimal_size;
using generic::convert::detail::write_decimal;

inline bool has_room(const std::string& text, std::size_t count) {
    return text.capacity() - text.size() >= count;
}

// Appends the characters of a number and the separator, for which the array has room.
void append_item(std::string& text, char* item, std::size_t length) {
    item[length] = detail::item_separator;
    text.append(item, length + 1);
}

// The content has no room for every number. Apart, as it needs an array.
template <typename Integer>
__attribute__((noinline)) void append_integer_to_full(std::string& text, Integer value) {
    char digits[max_decimal_size + 1];
    append_item(text, digits, write_decimal(digits, value));
}

template <typename Integer>
inline void append_integer(std::string& text, Integer value) {
    const std::size_t room = max_decimal_size + 1;
    if (!has_room(text, room)) {
        append_integer_to_full(text, value);
        return;
    }
    strings::detail::append_within(text, room, [value](char* to) {
        const std::size_t length = write_decimal(to, value);
        to[length] = detail::item_separator;
        return length + 1;
    });
}

// Contract: a default stream, so the global C++ locale determines decimal point and grouping. Only
// a locale other than the classic one needs the stream itself. The C library cuts the precision to
// an `int`, and takes a negative one for 6.
template <typename Floating>
__attribute__((noinline)) void append_any_floating(std::string& text, Floating value,
                                                   unsigned int precision) {
    if (!generic::convert::detail::is_global_classic()) {
        text += generic::convert::detail::streamed<std::stringstream>(value, precision);
        text.push_back(detail::item_separator);
        return;
    }
    char item[generic::convert::detail::max_general_size + 1];
    append_item(text, item,
                generic::convert::detail::write_general(item, value, static_cast<int>(precision)));
}

// Most values have the usual six digits.
template <typename Floating>
inline void append_floating(std::string& text, Floating value, unsigned int precision) {
    const std::size_t room = 17;
    if (precision == 6 && has_room(text, room) && generic::convert::detail::is_global_classic()) {
        const std::size_t size = text.size();
        strings::detail::append_within(text, room, [value](char* to) {
            const std::size_t length = generic::convert::detail::write_usual_six_digits(to, value);
            to[length] = detail::item_separator;
            return length == 0 ? 0 : length + 1;
        });
        if (text.size() != size)
            return;
    }
    append_any_floating(text, value, precision);
}

// Any number of bytes. They may be the content itself, to which the length field is appended first.
__attribute__((noinline)) void append_any_bytes(std::string& text, const std::string& bytes) {
    const std::size_t length = bytes.size();
    append_integer(text, length);
    text.append(bytes, 0, length);
    text.push_back(detail::item_separator);
}

inline void append_bytes(std::string& text, const std::string& bytes) {
    const std::size_t length = bytes.size();
    const std::size_t few_bytes = strings::detail::few_bytes;
    const std::size_t room = 4 + few_bytes;  // with two digits and two separators
    if (length > few_bytes || !has_room(text, room)) {
        append_any_bytes(text, bytes);
        return;
    }
    const char* const source = bytes.data();
    // Inlined, so that what it captures stays in registers.
    strings::detail::append_within(
        text, room, [ source, length ](char* to) __attribute__((always_inline)) {
            char* const end =
                generic::convert::detail::write_below_10000(to, static_cast<unsigned int>(length));
            *end = detail::item_separator;
            strings::detail::copy_few_bytes(end + 1, source, length);
            end[length + 1] = detail::item_separator;
            return static_cast<std::size_t>(end - to) + length + 2;
        });
}

}  // namespace

// All integers of up to 32 bits are widened: their digits are the same.
void serialize_text_buf::append_int8(const signed char& value) {
    append_integer<int>(m_text, value);
}

void serialize_text_buf::append_int16(const short& value) {
    append_integer<int>(m_text, value);
}

void serialize_text_buf::append_int32(const int& value) {
    append_integer(m_text, value);
}

void serialize_text_buf::append_int64(const long& value) {
    append_integer(m_text, value);
}

void serialize_text_buf::append_uint8(const unsigned char& value) {
    append_integer<unsigned int>(m_text, value);
}

void serialize_text_buf::append_uint16(const unsigned short& value) {
    append_integer<unsigned int>(m_text, value);
}

void serialize_text_buf::append_uint32(const unsigned int& value) {
    append_integer(m_text, value);
}

void serialize_text_buf::append_uint64(const unsigned long& value) {
    append_integer(m_text, value);
}

void serialize_text_buf::append_float(const float& value, const unsigned int& precision) {
    append_floating(m_text, value, precision);
}

void serialize_text_buf::append_double(const double& value, const unsigned int& precision) {
    append_floating(m_text, value, precision);
}

void serialize_text_buf::append_string(const std::string& bytes) {
    append_bytes(m_text, bytes);
}

void serialize_text_buf::append_buffer(const serialize_buffer& other) {
    append_bytes(m_text, other.as_str());
}

}  // namespace serialization
}  // namespace TOVA_2_18
