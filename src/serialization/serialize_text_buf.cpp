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
// The functions that append are in serialize_text_append.cpp, and those that read are in
// serialize_text_read.cpp.
#include <tova/serialization/serialize_text_buf.hpp>

#include "serialization/contents.hpp"

namespace TOVA_2_18 {
namespace serialization {

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

bool serialize_text_buf::at_end() const {
    return m_read_position >= m_text.size();  // npos is past the end of any content
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
