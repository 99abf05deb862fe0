// A `serialize_buffer` as a user might write one: each item is its bytes in hexadecimal and a
// comma.
#pragma once

#include <tova/serialization/serialize_buffer.hpp>

#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

namespace test_support {

class hex_buffer : public tova::serialization::serialize_buffer {
public:
    typedef tova::serialization::serialize_buffer base;

    base& assign(const base& other) override { return assign(other.as_str()); }
    base& assign(const std::string& text) override {
        m_text = text;
        return *this;
    }
    base& assign(const char* text, int length) override {
        return assign(std::string(text, static_cast<std::size_t>(length)));
    }
    const std::string& as_str() const override { return m_text; }

    void append_int8(const signed char& value) override { append_plain(value); }
    void append_int16(const short& value) override { append_plain(value); }
    void append_int32(const int& value) override { append_plain(value); }
    void append_int64(const long& value) override { append_plain(value); }
    void append_uint8(const unsigned char& value) override { append_plain(value); }
    void append_uint16(const unsigned short& value) override { append_plain(value); }
    void append_uint32(const unsigned int& value) override { append_plain(value); }
    void append_uint64(const unsigned long& value) override { append_plain(value); }
    void append_float(const float& value, const unsigned int&) override { append_plain(value); }
    void append_double(const double& value, const unsigned int&) override { append_plain(value); }
    void append_string(const std::string& bytes) override {
        append_bytes(bytes.data(), bytes.size());
    }
    void append_buffer(const base& other) override { append_string(other.as_str()); }

    signed char read_int8() const override { return read_plain<signed char>(); }
    short read_int16() const override { return read_plain<short>(); }
    int read_int32() const override { return read_plain<int>(); }
    long read_int64() const override { return read_plain<long>(); }
    unsigned char read_uint8() const override { return read_plain<unsigned char>(); }
    unsigned short read_uint16() const override { return read_plain<unsigned short>(); }
    unsigned int read_uint32() const override { return read_plain<unsigned int>(); }
    unsigned long read_uint64() const override { return read_plain<unsigned long>(); }
    float read_float() const override { return read_plain<float>(); }
    double read_double() const override { return read_plain<double>(); }
    std::string read_string() const override {
        std::string bytes;
        for (; m_position < m_text.size() && m_text[m_position] != ','; m_position += 2)
            bytes +=
                static_cast<char>(std::strtol(m_text.substr(m_position, 2).c_str(), nullptr, 16));
        ++m_position;
        return bytes;
    }
    base* read_buffer() const override {
        hex_buffer* const made = new hex_buffer;
        made->allocated = true;
        made->m_text = read_string();
        return made;
    }
    bool at_end() const override { return m_position >= m_text.size(); }
    void reset_read() const override { m_position = 0; }
    base* create() const override {
        hex_buffer* const made = new hex_buffer;
        made->allocated = true;
        return made;
    }
    base* clone() const override {
        hex_buffer* const made = new hex_buffer(*this);
        made->allocated = true;
        return made;
    }

private:
    void append_bytes(const char* bytes, std::size_t size) {
        for (std::size_t i = 0; i < size; ++i) {
            char digits[3];
            std::snprintf(digits, sizeof digits, "%02x", static_cast<unsigned char>(bytes[i]));
            m_text += digits;
        }
        m_text += ',';
    }
    template <typename Value>
    void append_plain(const Value& value) {
        char bytes[sizeof(Value)];
        std::memcpy(bytes, &value, sizeof value);
        append_bytes(bytes, sizeof value);
    }
    template <typename Value>
    Value read_plain() const {
        const std::string bytes = read_string();
        Value value = 0;
        if (bytes.size() == sizeof value)
            std::memcpy(&value, bytes.data(), sizeof value);
        return value;
    }

    std::string m_text;
    mutable std::size_t m_position = 0;
};

}  // namespace test_support
