// The reading functions of the text buffer. text_items.hpp has the steps, shared with the parser of
// the labeled buffer.
//
// They are in a separate file, which fills strings in place and has no function with a throw().
#include <tova/serialization/serialize_text_buf.hpp>

#include <tova/generic/convert/str_to_x.hpp>

#include "generic/convert/floating_reader.hpp"
#include "generic/convert/number_locale.hpp"
#include "serialization/contents.hpp"
#include "serialization/fill_string.hpp"
#include "serialization/text_items.hpp"

#include <cstddef>
#include <string>
#include <typeinfo>

namespace TOVA_2_18 {
namespace serialization {

namespace {

detail::byte_run all_of(const std::string& text) {
    return detail::byte_run{text.data(), text.size()};
}

template <typename Number>
inline Number read_integer(const std::string& text, std::size_t& position,
                           Number (*parse)(const char*, unsigned long, types::radix_t::base,
                                           bool)) {
    Number value;
    if (detail::take_short_integer(all_of(text), position, value))
        return value;
    return detail::as_integer(detail::next_field(all_of(text), position), parse);
}

template <typename Number>
inline Number read_floating(const std::string& text, std::size_t& position,
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

// Contract: the length comes from the virtual `read_int32`, so if a derived class reads numbers
// differently, it reads string lengths the same way. The comparison saves the call: in an object of
// exactly this class, `read_int32` is the one below. Another copy of the type information only
// means that the call is made.
inline int read_length(const serialize_text_buf& buffer, const std::string& text,
                       std::size_t& position) {
    int length;
    if (&typeid(buffer) == &typeid(serialize_text_buf) &&
        detail::take_short_integer(all_of(text), position, length))
        return length;
    return buffer.read_int32();
}

}  // namespace

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

// Contract: at the end of the content the length is 0 and the position is npos, and the addition in
// `next_bytes` wraps the position to 0.
std::string serialize_text_buf::read_string() const {
    if (m_read_position == std::string::npos)
        return std::string();
    const int length = read_length(*this, m_text, m_read_position);
    const detail::byte_run bytes = detail::next_bytes(all_of(m_text), m_read_position, length);
    return detail::part_of(bytes.begin, bytes.length, m_text.data() + m_text.size());
}

serialize_buffer* serialize_text_buf::read_buffer() const {
    // Never null: an empty buffer means that nothing is left, just like an empty string.
    if (m_read_position == std::string::npos)
        return detail::marked(new serialize_text_buf());
    const int length = read_length(*this, m_text, m_read_position);
    const detail::byte_run bytes = detail::next_bytes(all_of(m_text), m_read_position, length);
    return detail::marked(new serialize_text_buf(bytes.as_string()));
}

}  // namespace serialization
}  // namespace TOVA_2_18
