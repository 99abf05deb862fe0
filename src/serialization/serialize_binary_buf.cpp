// Values are appended as their bytes in host order, and decoded at the read position. The only
// check in a read is `at_end`: the position may go past the end, and everything read from there on
// is 0, empty or null. If the end of the content cuts a value off, the missing bytes are 0; memory
// outside the content is never read.
#include <tova/serialization/serialize_binary_buf.hpp>

#include "serialization/append_bytes.hpp"
#include "serialization/contents.hpp"

#include <algorithm>
#include <cstring>

namespace TOVA_2_18 {
namespace serialization {

namespace {

const std::size_t length_size = 4;  // bytes of the length field of a string

// Contract: there is no check that all bytes of the type are present. Those past the end of the
// content count as 0, and the read position goes past the end.
template <typename Value>
Value decode(const std::string& text, std::size_t position) {
    Value value;
    if (text.size() >= sizeof value && position <= text.size() - sizeof value) {
        std::memcpy(&value, text.data() + position, sizeof value);
        return value;
    }
    char bytes[sizeof value] = {};
    const std::size_t left = text.size() - std::min(position, text.size());
    std::memcpy(bytes, text.data() + (text.size() - left), left);
    std::memcpy(&value, bytes, sizeof value);
    return value;
}

// Contract: the only check is the virtual `at_end`, so a derived class decides where the end is.
template <typename Value>
Value read_fixed(const serialize_buffer& buffer, const std::string& text, std::size_t& position) {
    if (buffer.at_end())
        return 0;
    const Value value = decode<Value>(text, position);
    position += sizeof(Value);
    return value;
}

// Reads the bytes of a string or nested buffer. Returns false at the end, and also if nothing
// follows the length field; the length is not used then.
bool read_bytes(const serialize_buffer& buffer, const std::string& text, std::size_t& position,
                std::string& bytes) {
    if (buffer.at_end())
        return false;
    const std::size_t length = decode<unsigned int>(text, position);
    position += length_size;
    if (buffer.at_end())
        return false;
    bytes = text.substr(position, length);
    // Contract: the position moves by the length field, not by the number of bytes present.
    position += length;
    return true;
}

// The bytes in host order, as the functions of binary.hpp have them, without a string of their own.
// They are copied first: the value may be part of the content.
template <typename Value>
void append_fixed(std::string& text, const Value& value) {
    static_assert(sizeof value == 2 || sizeof value == 4 || sizeof value == 8, "");
    char bytes[sizeof value];
    std::memcpy(bytes, &value, sizeof value);
    if (sizeof value == 2)
        detail::append_two(text, bytes);
    else if (sizeof value == 4)
        detail::append_four(text, bytes);
    else
        detail::append_eight(text, bytes);
}

void append_bytes(std::string& text, const std::string& bytes) {
    // The bytes may be the content itself, to which the length field is appended first.
    const std::size_t length = bytes.size();
    // Contract: the field keeps the low 32 bits of the size.
    append_fixed(text, static_cast<unsigned int>(length));
    text.append(bytes, 0, length);
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

void serialize_binary_buf::append_int8(const signed char& value) {
    m_text.push_back(static_cast<char>(value));
}

void serialize_binary_buf::append_int16(const short& value) {
    append_fixed(m_text, value);
}

void serialize_binary_buf::append_int32(const int& value) {
    append_fixed(m_text, value);
}

void serialize_binary_buf::append_int64(const long& value) {
    append_fixed(m_text, value);
}

void serialize_binary_buf::append_uint8(const unsigned char& value) {
    m_text.push_back(static_cast<char>(value));
}

void serialize_binary_buf::append_uint16(const unsigned short& value) {
    append_fixed(m_text, value);
}

void serialize_binary_buf::append_uint32(const unsigned int& value) {
    append_fixed(m_text, value);
}

void serialize_binary_buf::append_uint64(const unsigned long& value) {
    append_fixed(m_text, value);
}

void serialize_binary_buf::append_float(const float& value, const unsigned int&) {
    append_fixed(m_text, value);
}

void serialize_binary_buf::append_double(const double& value, const unsigned int&) {
    append_fixed(m_text, value);
}

void serialize_binary_buf::append_string(const std::string& bytes) {
    append_bytes(m_text, bytes);
}

void serialize_binary_buf::append_buffer(const serialize_buffer& other) {
    append_bytes(m_text, other.as_str());
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
    std::string bytes;
    read_bytes(*this, m_text, m_read_position, bytes);
    return bytes;
}

serialize_buffer* serialize_binary_buf::read_buffer() const {
    std::string bytes;
    if (!read_bytes(*this, m_text, m_read_position, bytes))
        return nullptr;
    return detail::marked(new serialize_binary_buf(bytes));
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
