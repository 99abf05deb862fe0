// The appending functions of the binary buffer. They are in a separate file, which fills strings in
// place and has no function with a throw(). `std::string::append` would have to handle any length
// and bytes of the string itself, and it copies through a call.
#include <tova/serialization/serialize_binary_buf.hpp>

#include "strings/unfilled.hpp"

#include <cstddef>
#include <cstring>

namespace TOVA_2_18 {
namespace serialization {

namespace {

// The string grows. This is a separate function, so that the others save no registers for it.
template <typename Value>
__attribute__((noinline)) void append_to_larger(std::string& text, Value value) {
    strings::detail::append_unfilled(text, sizeof value, [value](char* to) {
        std::memcpy(to, &value, sizeof value);
        return sizeof value;
    });
}

// Appends the bytes in host order, like the functions of binary.hpp, but without a separate string.
// They are copied first, because the value may be part of the content.
template <typename Value>
inline void append_fixed(std::string& text, const Value& value) {
    const Value copy = value;
    const std::size_t size = text.size() + sizeof copy;
    const std::size_t room = text.capacity();
    if (size > room) {
        append_to_larger(text, copy);
        return;
    }
    strings::detail::append_within(text, sizeof copy, [copy](char* to) {
        std::memcpy(to, &copy, sizeof copy);
        return sizeof copy;
    });
}

// Many bytes, or a string that grows. The bytes may be the content itself, which moves then.
__attribute__((noinline)) void append_any_bytes(std::string& text, const std::string& bytes) {
    const std::size_t size = text.size();
    const std::size_t length = bytes.size();
    const char* const source = &bytes == &text ? nullptr : bytes.data();
    const unsigned int field = static_cast<unsigned int>(length);
    strings::detail::append_unfilled(text, sizeof field + length, [=](char* to) {
        std::memcpy(to, &field, sizeof field);
        std::memcpy(to + sizeof field, source == nullptr ? to - size : source, length);
        return sizeof field + length;
    });
}

// Contract: the field keeps the low 32 bits of the size.
inline void append_bytes(std::string& text, const std::string& bytes) {
    const std::size_t length = bytes.size();
    const unsigned int field = static_cast<unsigned int>(length);
    const std::size_t size = text.size() + sizeof field + length;
    if (length > strings::detail::few_bytes || size > text.capacity()) {
        append_any_bytes(text, bytes);
        return;
    }
    const char* const source = bytes.data();
    // Inlined, so that what it captures stays in registers.
    strings::detail::append_within(
        text, sizeof field + length, [=](char* to) __attribute__((always_inline)) {
            std::memcpy(to, &field, sizeof field);
            strings::detail::copy_few_bytes(to + sizeof field, source, length);
            return sizeof field + length;
        });
}

}  // namespace

void serialize_binary_buf::append_int8(const signed char& value) {
    append_fixed(m_text, value);
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
    append_fixed(m_text, value);
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

}  // namespace serialization
}  // namespace TOVA_2_18
