// Writing appends items to one string; reading walks it with a position:
//
// - An item is a field and the separator 0x01. Numbers are built in a buffer on the stack; only
//   floating-point values in a locale other than the classic one need a stream. A string is a
//   length field and its bytes.
// - The read position is the index of the next field, or npos after a read that found no separator.
//   At npos every number reads as 0 and every string as empty, until `reset_read`.
// - Positions past the end come from wrong lengths and from `assign` with shorter content. The next
//   read raises, and leaves the position at npos.
//
// text_items.hpp has the steps of reading, shared with the parser of the labeled buffer.
#include <tova/serialization/serialize_text_buf.hpp>

#include <tova/generic/convert/str_to_x.hpp>

#include "generic/convert/decimal_digits.hpp"
#include "generic/convert/floating_reader.hpp"
#include "generic/convert/floating_writer.hpp"
#include "generic/convert/number_locale.hpp"
#include "generic/convert/streamed.hpp"
#include "serialization/contents.hpp"
#include "serialization/text_items.hpp"

#include <sstream>

namespace TOVA_2_18 {
namespace serialization {

namespace {

using generic::convert::detail::max_decimal_size;
using generic::convert::detail::write_decimal;

// Appends the characters of a number and the separator, for which the array has room.
void append_item(std::string& text, char* item, std::size_t length) {
    item[length] = detail::item_separator;
    text.append(item, length + 1);
}

template <typename Integer>
void append_integer(std::string& text, Integer value) {
    char digits[max_decimal_size + 1];
    append_item(text, digits, write_decimal(digits, value));
}

// Contract: a default stream, so the global C++ locale determines decimal point and grouping. Only
// a locale other than the classic one needs the stream itself. The C library cuts the precision to
// an `int`, and takes a negative one for 6.
template <typename Floating>
void append_floating(std::string& text, Floating value, unsigned int precision) {
    if (!generic::convert::detail::is_global_classic()) {
        text += generic::convert::detail::streamed<std::stringstream>(value, precision);
        text.push_back(detail::item_separator);
        return;
    }
    char item[generic::convert::detail::max_general_size + 1];
    append_item(text, item,
                generic::convert::detail::write_general(item, value, static_cast<int>(precision)));
}

void append_bytes(std::string& text, const std::string& bytes) {
    // The bytes may be the content itself, to which the length field is appended first.
    const std::size_t length = bytes.size();
    append_integer(text, length);
    text.append(bytes, 0, length);
    text.push_back(detail::item_separator);
}

detail::byte_run all_of(const std::string& text) {
    return detail::byte_run{text.data(), text.size()};
}

template <typename Number>
Number read_integer(const std::string& text, std::size_t& position,
                    Number (*parse)(const char*, unsigned long, types::radix_t::base, bool)) {
    return detail::as_integer(detail::next_field(all_of(text), position), parse);
}

template <typename Number>
Number read_floating(const std::string& text, std::size_t& position,
                     Number (*parse)(const strings::ustring8&)) {
    const detail::byte_run field = detail::next_field(all_of(text), position);
    if (field.length == 0)
        return 0;
    if (!generic::convert::detail::is_global_classic())
        return parse(strings::ustring8(field.begin, field.length));
    // The separator or the terminator of the content follows the field and ends the number.
    Number value;
    return generic::convert::detail::read_floating(field.begin, field.length, value) ? value : 0;
}

}  // namespace

serialize_text_buf::serialize_text_buf() : m_text(), m_read_position(0) {}

serialize_text_buf::serialize_text_buf(const std::string& text)
    : m_text(text), m_read_position(0) {}

serialize_text_buf::serialize_text_buf(const serialize_buffer& other)
    : serialize_buffer(other), m_text(other.as_str()), m_read_position(0) {
    detail::take_over_state(*this, other);
}

serialize_text_buf::serialize_text_buf(const serialize_text_buf& other)
    : serialize_buffer(other), m_text(other.m_text), m_read_position(other.m_read_position) {
    detail::take_over_state(*this, other);
}

serialize_text_buf::~serialize_text_buf() TOVA_NOTHROW {}

serialize_text_buf& serialize_text_buf::operator=(const serialize_text_buf& other) {
    m_text = other.m_text;
    m_read_position = other.m_read_position;
    return *this;
}

// Contract: `assign` leaves the read position alone, even if it is past the end of the new content.
serialize_buffer& serialize_text_buf::assign(const serialize_buffer& other) {
    if (&other != this)
        m_text = other.as_str();
    return *this;
}

serialize_buffer& serialize_text_buf::assign(const std::string& text) {
    m_text = text;
    return *this;
}

serialize_buffer& serialize_text_buf::assign(const char* text, int length) {
    detail::replace(m_text, text, length);
    return *this;
}

const std::string& serialize_text_buf::as_str() const {
    return m_text;
}

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

signed char serialize_text_buf::read_int8() const {
    return read_integer<signed char>(m_text, m_read_position, generic::convert::str_to_int8);
}

short serialize_text_buf::read_int16() const {
    return read_integer<short>(m_text, m_read_position, generic::convert::str_to_int16);
}

int serialize_text_buf::read_int32() const {
    return read_integer<int>(m_text, m_read_position, generic::convert::str_to_int32);
}

long serialize_text_buf::read_int64() const {
    return read_integer<long>(m_text, m_read_position, generic::convert::str_to_int64);
}

unsigned char serialize_text_buf::read_uint8() const {
    return read_integer<unsigned char>(m_text, m_read_position, generic::convert::str_to_uint8);
}

unsigned short serialize_text_buf::read_uint16() const {
    return read_integer<unsigned short>(m_text, m_read_position, generic::convert::str_to_uint16);
}

unsigned int serialize_text_buf::read_uint32() const {
    return read_integer<unsigned int>(m_text, m_read_position, generic::convert::str_to_uint32);
}

unsigned long serialize_text_buf::read_uint64() const {
    return read_integer<unsigned long>(m_text, m_read_position, generic::convert::str_to_uint64);
}

float serialize_text_buf::read_float() const {
    return read_floating<float>(m_text, m_read_position, generic::convert::str_to_float);
}

double serialize_text_buf::read_double() const {
    return read_floating<double>(m_text, m_read_position, generic::convert::str_to_double);
}

// Contract: the length comes from the virtual `read_int32`, so if a derived class reads numbers
// differently, it reads string lengths the same way. At the end of the content the length is 0 and
// the position is npos, and the addition in `next_bytes` wraps the position to 0.
std::string serialize_text_buf::read_string() const {
    if (m_read_position == std::string::npos)
        return std::string();
    const int length = read_int32();
    return detail::next_bytes(all_of(m_text), m_read_position, length).as_string();
}

serialize_buffer* serialize_text_buf::read_buffer() const {
    // Never null: an empty buffer means that nothing is left, just like an empty string.
    if (m_read_position == std::string::npos)
        return detail::marked(new serialize_text_buf());
    const int length = read_int32();
    const detail::byte_run bytes = detail::next_bytes(all_of(m_text), m_read_position, length);
    return detail::marked(new serialize_text_buf(bytes.as_string()));
}

bool serialize_text_buf::at_end() const {
    return detail::at_end(all_of(m_text), m_read_position);
}

void serialize_text_buf::reset_read() const {
    m_read_position = 0;
}

serialize_buffer* serialize_text_buf::create() const {
    return detail::marked(new serialize_text_buf());
}

serialize_buffer* serialize_text_buf::clone() const {
    return detail::marked(new serialize_text_buf(*this));
}

}  // namespace serialization
}  // namespace TOVA_2_18
