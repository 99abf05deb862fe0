// Values are appended as their bytes in host order, and decoded at the read position. The only
// check in a read is `at_end`: the position may go past the end, and everything read from there on
// is 0, empty or null. If the end of the content cuts a value off, the missing bytes are 0; memory
// outside the content is never read. The functions that append are in serialize_binary_append.cpp.
#include <tova/serialization/serialize_binary_buf.hpp>

#include "serialization/contents.hpp"
#include "serialization/new_string.hpp"

#include <algorithm>
#include <cstring>

namespace TOVA_2_18 {
namespace serialization {

namespace {

// A value that the end of the content cuts off. Apart, as it needs a buffer.
template <typename Value>
__attribute__((noinline)) Value decode_rest(const std::string& text, std::size_t position) {
    Value value;
    char bytes[sizeof value] = {};
    const std::size_t left = text.size() - std::min(position, text.size());
    std::memcpy(bytes, text.data() + (text.size() - left), left);
    std::memcpy(&value, bytes, sizeof value);
    return value;
}

// Contract: there is no check that all bytes of the type are present. Those past the end of the
// content count as 0, and the read position goes past the end.
template <typename Value>
inline Value decode(const std::string& text, std::size_t& position) {
    const std::size_t start = position;
    position = start + sizeof(Value);
    if (text.size() < sizeof(Value) || start > text.size() - sizeof(Value))
        return decode_rest<Value>(text, start);
    Value value;
    std::memcpy(&value, text.data() + start, sizeof value);
    return value;
}

// Contract: the only check is the virtual `at_end`, so a derived class decides where the end is.
template <typename Value>
inline Value read_fixed(const serialize_buffer& buffer, const std::string& text,
                        std::size_t& position) {
    return buffer.at_end() ? Value(0) : decode<Value>(text, position);
}

// The bytes of a string or nested buffer, a part of the content; null at the end, and also if
// nothing follows the length field; its value is then ignored.
struct byte_range {
    const char* begin;
    std::size_t size;
};

inline byte_range read_range(const serialize_buffer& buffer, const std::string& text,
                             std::size_t& position) {
    if (buffer.at_end())
        return {nullptr, 0};
    const std::size_t length = decode<unsigned int>(text, position);
    if (buffer.at_end())
        return {nullptr, 0};
    if (position > text.size())
        static_cast<void>(text.substr(position));  // raises: a derived class found no end
    const byte_range bytes = {text.data() + position, std::min(length, text.size() - position)};
    // Contract: the position moves by the length field, not by the number of bytes present.
    position += length;
    return bytes;
}

}  // namespace

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

signed char serialize_binary_buf::read_int8() const {
    return read_fixed<signed char>(*this, m_text, m_read_position);
}

short serialize_binary_buf::read_int16() const {
    return read_fixed<short>(*this, m_text, m_read_position);
}

int serialize_binary_buf::read_int32() const {
    return read_fixed<int>(*this, m_text, m_read_position);
}

long serialize_binary_buf::read_int64() const {
    return read_fixed<long>(*this, m_text, m_read_position);
}

unsigned char serialize_binary_buf::read_uint8() const {
    return read_fixed<unsigned char>(*this, m_text, m_read_position);
}

unsigned short serialize_binary_buf::read_uint16() const {
    return read_fixed<unsigned short>(*this, m_text, m_read_position);
}

unsigned int serialize_binary_buf::read_uint32() const {
    return read_fixed<unsigned int>(*this, m_text, m_read_position);
}

unsigned long serialize_binary_buf::read_uint64() const {
    return read_fixed<unsigned long>(*this, m_text, m_read_position);
}

float serialize_binary_buf::read_float() const {
    return read_fixed<float>(*this, m_text, m_read_position);
}

double serialize_binary_buf::read_double() const {
    return read_fixed<double>(*this, m_text, m_read_position);
}

std::string serialize_binary_buf::read_string() const {
    const byte_range bytes = read_range(*this, m_text, m_read_position);
    return detail::new_string(bytes.begin, bytes.size);
}

serialize_buffer* serialize_binary_buf::read_buffer() const {
    const byte_range bytes = read_range(*this, m_text, m_read_position);
    if (bytes.begin == nullptr)
        return nullptr;
    return detail::marked(new serialize_binary_buf(std::string(bytes.begin, bytes.size)));
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
