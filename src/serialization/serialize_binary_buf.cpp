// The content is the concatenation of the values. serialize_binary_append.cpp appends them, and
// serialize_binary_read.cpp reads them.
#include <tova/serialization/serialize_binary_buf.hpp>

#include "serialization/contents.hpp"

namespace TOVA_2_18 {
namespace serialization {

serialize_binary_buf::serialize_binary_buf() : m_text(), m_read_position(0) {}

serialize_binary_buf::serialize_binary_buf(const std::string& text)
    : m_text(text), m_read_position(0) {}

serialize_binary_buf::serialize_binary_buf(const serialize_buffer& other)
    : serialize_buffer(other), m_text(other.as_str()), m_read_position(0) {
    detail::take_over_state(*this, other);
}

serialize_binary_buf::serialize_binary_buf(const serialize_binary_buf& other)
    : serialize_buffer(other), m_text(other.m_text), m_read_position(other.m_read_position) {
    detail::take_over_state(*this, other);
}

serialize_binary_buf::~serialize_binary_buf() TOVA_NOTHROW {}

serialize_binary_buf& serialize_binary_buf::operator=(const serialize_binary_buf& other) {
    m_text = other.m_text;
    m_read_position = other.m_read_position;
    return *this;
}

// Contract: `assign` leaves the read position alone.
serialize_buffer& serialize_binary_buf::assign(const serialize_buffer& other) {
    if (&other != this)
        m_text = other.as_str();
    return *this;
}

serialize_buffer& serialize_binary_buf::assign(const std::string& text) {
    m_text = text;
    return *this;
}

serialize_buffer& serialize_binary_buf::assign(const char* text, int length) {
    detail::replace(m_text, text, length);
    return *this;
}

const std::string& serialize_binary_buf::as_str() const {
    return m_text;
}

bool serialize_binary_buf::at_end() const {
    return m_read_position >= m_text.size();
}

void serialize_binary_buf::reset_read() const {
    m_read_position = 0;
}

serialize_buffer* serialize_binary_buf::create() const {
    return detail::marked(new serialize_binary_buf());
}

serialize_buffer* serialize_binary_buf::clone() const {
    return detail::marked(new serialize_binary_buf(*this));
}

}  // namespace serialization
}  // namespace TOVA_2_18
