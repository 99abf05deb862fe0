/// @file
/// The binary encoding of `serialize_buffer`: compact, and tied to the byte order of the host.
///
///     tova::serialization::serialize_binary_buf buffer;
///     buffer.append_uint16(0x0102);
///     buffer.append_string("ab");
///     // buffer.as_str() holds the bytes 02 01, 02 00 00 00 61 62
///
/// Threads: as for every `serialize_buffer`, one thread at a time, even for reading.
#pragma once

#include <tova/abi.hpp>
#include <tova/serialization/serialize_buffer.hpp>

#include <cstddef>
#include <string>

namespace TOVA_2_18 {
namespace serialization {

/// Raw bytes in the order of the host, one value after another.
///
/// An integer or floating-point value takes the bytes of its type, least significant byte first; a
/// string or nested buffer is its length as `uint32`, followed by its bytes. There are no
/// separators, no types and no mark of the byte order. docs/serialization.md shows the bytes.
///
/// Constructors, copies and `assign` are described in `serialize_buffer`. Reads never raise for
/// invalid content: past the end they return 0, an empty string or null.
class TOVA_API serialize_binary_buf : public serialize_buffer {
public:
    serialize_binary_buf();  ///< An empty buffer.

    /// A buffer with that encoded content, read from its start. Of another buffer it takes the
    /// bytes as they are, whatever its class, and also `count` and `allocated`. Raises only what an
    /// allocation raises.
    serialize_binary_buf(const std::string& text);
    serialize_binary_buf(const serialize_buffer& other);

    /// A copy with the content, the read position, `count` and `allocated` of `other`.
    serialize_binary_buf(const serialize_binary_buf& other);
    ~serialize_binary_buf() TOVA_NOTHROW override;

    /// Copies content and read position, and returns this buffer. `count` and `allocated` stay.
    serialize_binary_buf& operator=(const serialize_binary_buf& other);

    serialize_buffer& assign(const serialize_buffer& other) override;
    serialize_buffer& assign(const std::string& text) override;
    serialize_buffer& assign(const char* text, int length) override;

    const std::string& as_str() const override;

    /// Appends the bytes of the value, the least significant one first.
    void append_int8(const signed char& value) override;
    void append_int16(const short& value) override;
    void append_int32(const int& value) override;
    void append_int64(const long& value) override;
    void append_uint8(const unsigned char& value) override;
    void append_uint16(const unsigned short& value) override;
    void append_uint32(const unsigned int& value) override;
    void append_uint64(const unsigned long& value) override;

    /// Appends the 4 or 8 bytes of the IEEE 754 value; `precision` is ignored.
    void append_float(const float& value, const unsigned int& precision) override;
    void append_double(const double& value, const unsigned int& precision) override;

    /// Appends the length as `uint32` and the bytes or the content. The length field keeps the low
    /// 32 bits of the size; all bytes are appended in any case.
    void append_string(const std::string& bytes) override;
    void append_buffer(const serialize_buffer& other) override;

    /// The next value. Returns 0 at the end. If fewer bytes are left than the type takes, the
    /// missing ones count as 0, and the read position still goes past the end.
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

    /// The next string, cut off where the content ends; empty at the end.
    std::string read_string() const override;

    /// The next nested buffer, cut off where the content ends.
    ///
    /// Contract: null at the end, and null if nothing follows the length field. So an empty nested
    /// buffer reads as null if it is the last item, and as an empty buffer anywhere else.
    serialize_buffer* read_buffer() const override;

    bool at_end() const override;
    void reset_read() const override;

    serialize_buffer* create() const override;
    serialize_buffer* clone() const override;

private:
    std::string m_text;
    mutable std::size_t m_read_position;  // may be past the end
};

}  // namespace serialization
}  // namespace TOVA_2_18
