#pragma once

#include <cstddef>
#include <string>

#include <tova/abi.hpp>
#include <tova/serialization/serialize_buffer.hpp>

namespace TOVA_2_18 {
namespace serialization {

/// The compact encoding: raw bytes in the order of the host, one value behind the other.
///
/// An integer or floating value takes the bytes of its type, least significant first on our
/// little-endian hosts; a string or nested buffer is its length as `uint32` and then its bytes.
/// There are no separators, no types and no mark of the byte order. docs/serialization.md shows
/// the bytes.
///
/// Reads never raise for bad content: behind the end they answer 0, empty or null.
class TOVA_API serialize_binary_buf : public serialize_buffer {
public:
    /// Empty.
    serialize_binary_buf();

    /// Encoded content, read from its start.
    serialize_binary_buf(const std::string& text);

    /// The content of any buffer, read from its start, or a copy with the read position. The bytes
    /// are taken as they are: those of a text buffer are not converted.
    ///
    /// Contract: both take over `count` and `allocated` of the other buffer, unlike the copies of
    /// other counted classes. A copy of a buffer that is held starts with that count.
    serialize_binary_buf(const serialize_buffer& other);
    serialize_binary_buf(const serialize_binary_buf& other);

    virtual ~serialize_binary_buf() TOVA_NOTHROW;

    /// Takes over content and read position; `count` and `allocated` stay.
    serialize_binary_buf& operator=(const serialize_binary_buf& other);

    /// Replaces the content and leaves the read position alone; `reset_read` starts over. A buffer
    /// assigned to itself stays as it is. Raises `std::logic_error` for a null pointer with a
    /// length other than 0, and `std::length_error` for a negative length.
    serialize_buffer& assign(const serialize_buffer& other) override;
    serialize_buffer& assign(const std::string& text) override;
    serialize_buffer& assign(const char* text, int length) override;

    /// The buffer's own string: valid until the content changes.
    const std::string& as_str() const override;

    void append_int8(const signed char& value) override;
    void append_int16(const short& value) override;
    void append_int32(const int& value) override;
    void append_int64(const long& value) override;
    void append_uint8(const unsigned char& value) override;
    void append_uint16(const unsigned short& value) override;
    void append_uint32(const unsigned int& value) override;
    void append_uint64(const unsigned long& value) override;
    /// The IEEE 754 bits; `precision` is ignored.
    void append_float(const float& value, const unsigned int& precision) override;
    void append_double(const double& value, const unsigned int& precision) override;
    /// The length field keeps the low 32 bits of the size; all bytes are written in any case.
    void append_string(const std::string& bytes) override;
    void append_buffer(const serialize_buffer& other) override;

    /// The next value. Answers 0 behind the end. If fewer bytes are left than the type takes, the
    /// missing ones count as 0 and the read position goes past the end all the same.
    signed char read_int8() const override;
    short read_int16() const override;
    int read_int32() const override;
    long read_int64() const override;
    unsigned char read_uint8() const override;
    unsigned short read_uint16() const override;
    unsigned int read_uint32() const override;
    unsigned long read_uint64() const override;
    float read_float() const override;
    double read_double() const override;

    /// The next string, cut where the content ends; empty at the end.
    std::string read_string() const override;

    /// The next nested buffer, cut where the content ends.
    ///
    /// Contract: null at the end and when the length field is the last thing in the content. So an
    /// empty nested buffer reads as null if it stands last and as an empty buffer further ahead.
    serialize_buffer* read_buffer() const override;

    bool at_end() const override;
    void reset_read() const override;

    serialize_buffer* create() const override;
    serialize_buffer* clone() const override;

private:
    std::string m_text;
    mutable std::size_t m_read_position;  // may lie behind the end
};

}  // namespace serialization
}  // namespace TOVA_2_18
