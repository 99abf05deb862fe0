// The reading functions of the binary buffer: values are decoded at the read position. The only
// check is `at_end`: the position may go past the end, and everything read from there on is 0,
// empty or null. If the end of the content cuts a value off, the missing bytes are 0; memory
// outside the content is never read.
//
// They are in a separate file, which fills strings in place and has no function with a throw().
#include <tova/serialization/serialize_binary_buf.hpp>

#include "serialization/contents.hpp"
#include "serialization/fill_string.hpp"

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <string>
#include <typeinfo>

namespace TOVA_2_18 {
namespace serialization {

namespace {

// Contract: the only check is the virtual `at_end`, so a derived class decides where the end is. An
// object of exactly this class has the `at_end` of this class, so the fast paths below compare the
// position themselves. Another copy of the type information only means that they are not taken.
inline bool is_binary_buf(const serialize_binary_buf& buffer) {
    return &typeid(buffer) == &typeid(serialize_binary_buf);
}

// Contract: there is no check that all bytes of the type are present. Those past the end of the
// content count as 0, and the read position goes past the end.
template <typename Value>
Value decode(const std::string& text, std::size_t& position) {
    const std::size_t start = std::min(position, text.size());
    Value value;
    char bytes[sizeof value] = {};
    std::memcpy(bytes, text.data() + start, std::min(sizeof value, text.size() - start));
    std::memcpy(&value, bytes, sizeof value);
    position += sizeof value;
    return value;
}

template <typename Value>
__attribute__((noinline)) Value read_any_fixed(const serialize_binary_buf& buffer,
                                               const std::string& text, std::size_t& position) {
    return buffer.at_end() ? Value(0) : decode<Value>(text, position);
}

template <typename Value>
inline bool is_whole(const std::string& text, std::size_t position) {
    return text.size() >= sizeof(Value) && position <= text.size() - sizeof(Value);
}

// The usual case needs no call and no stack.
template <typename Value>
inline Value read_fixed(const serialize_binary_buf& buffer, const std::string& text,
                        std::size_t& position) {
    if (!is_binary_buf(buffer) || !is_whole<Value>(text, position))
        return read_any_fixed<Value>(buffer, text, position);
    Value value;
    std::memcpy(&value, text.data() + position, sizeof value);
    position += sizeof value;
    return value;
}

// The bytes of a string or nested buffer, a part of the content; null at the end, and also if
// nothing follows the length field; its value is then ignored.
struct byte_range {
    const char* begin;
    std::size_t size;
};

[[noreturn]] __attribute__((noinline)) void raise_position(const std::string& text,
                                                           std::size_t position) {
    static_cast<void>(text.substr(position));
    __builtin_unreachable();
}

__attribute__((noinline)) byte_range
read_any_range(const serialize_binary_buf& buffer, const std::string& text, std::size_t& position) {
    if (buffer.at_end())
        return {nullptr, 0};
    const std::size_t length = decode<unsigned int>(text, position);
    if (buffer.at_end())
        return {nullptr, 0};
    if (position > text.size())
        raise_position(text, position);  // a derived class found no end
    const byte_range bytes = {text.data() + position, std::min(length, text.size() - position)};
    // Contract: the position moves by the length field, not by the number of bytes present.
    position += length;
    return bytes;
}

inline byte_range read_range(const serialize_binary_buf& buffer, const std::string& text,
                             std::size_t& position) {
    if (is_binary_buf(buffer) && is_whole<unsigned int>(text, position)) {
        unsigned int length;
        std::memcpy(&length, text.data() + position, sizeof length);
        const std::size_t start = position + sizeof length;
        if (start != text.size() && length <= text.size() - start) {
            position = start + length;
            return {text.data() + start, length};
        }
    }
    return read_any_range(buffer, text, position);
}

}  // namespace

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
    if (bytes.begin == nullptr)
        return std::string();
    return detail::part_of(bytes.begin, bytes.size, m_text.data() + m_text.size());
}

serialize_buffer* serialize_binary_buf::read_buffer() const {
    const byte_range bytes = read_range(*this, m_text, m_read_position);
    if (bytes.begin == nullptr)
        return nullptr;
    return detail::marked(new serialize_binary_buf(std::string(bytes.begin, bytes.size)));
}

}  // namespace serialization
}  // namespace TOVA_2_18
