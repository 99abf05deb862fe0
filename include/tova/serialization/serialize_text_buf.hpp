/// @file
/// The text encoding of `serialize_buffer`: readable, and the same on every host.
///
///     tova::serialization::serialize_text_buf buffer;
///     buffer.append_int32(5);
///     buffer.append_string("ab");
///     // buffer.as_str() is "5\0012\001ab\001"
///
/// Threads: as for every `serialize_buffer`, one thread at a time, even for reading.
#pragma once

#include <tova/abi.hpp>
#include <tova/serialization/serialize_buffer.hpp>

#include <cstddef>
#include <string>

namespace TOVA_2_18 {
namespace serialization {

/// A sequence of items, each of which ends with the byte 0x01.
///
/// A number is its decimal digits. A string is its length in bytes, as a number item, followed by
/// the bytes and a closing 0x01, so it may hold any byte. A nested buffer is its content as a
/// string. Integers don't depend on any locale; floating-point values are written and read by
/// standard streams under the global C++ locale. docs/serialization.md shows the bytes.
///
/// Constructors, copies and `assign` are described in `serialize_buffer`. Invalid content never
/// raises by itself: an integer out of the range of its type saturates, and a field that is not a
/// number reads as 0, as does every number after the last item.
class TOVA_API serialize_text_buf : public serialize_buffer {
public:
    serialize_text_buf();  ///< An empty buffer.

    /// A buffer with that encoded content, read from its start. Of another buffer it takes the
    /// bytes as they are, whatever its class, and also `count` and `allocated`. Raises only what an
    /// allocation raises.
    serialize_text_buf(const std::string& text);
    serialize_text_buf(const serialize_buffer& other);

    /// A copy with the content, the read position, `count` and `allocated` of `other`.
    serialize_text_buf(const serialize_text_buf& other);
    ~serialize_text_buf() TOVA_NOTHROW override;

    /// Copies content and read position, and returns this buffer. `count` and `allocated` stay.
    serialize_text_buf& operator=(const serialize_text_buf& other);

    /// A read position past the end of the new content makes the next read raise
    /// `std::out_of_range`.
    serialize_buffer& assign(const serialize_buffer& other) override;
    serialize_buffer& assign(const std::string& text) override;
    serialize_buffer& assign(const char* text, int length) override;

    const std::string& as_str() const override;

    /// Appends the decimal digits of the value and the byte 0x01.
    void append_int8(const signed char& value) override;
    void append_int16(const short& value) override;
    void append_int32(const int& value) override;
    void append_int64(const long& value) override;
    void append_uint8(const unsigned char& value) override;
    void append_uint16(const unsigned short& value) override;
    void append_uint32(const unsigned int& value) override;
    void append_uint64(const unsigned long& value) override;

    /// Appends the value with `precision` significant digits, as a stream writes it in the global
    /// C++ locale, and the byte 0x01.
    void append_float(const float& value, const unsigned int& precision) override;
    void append_double(const double& value, const unsigned int& precision) override;

    /// Appends the length in bytes as an item, the bytes or the content, and the byte 0x01.
    void append_string(const std::string& bytes) override;
    void append_buffer(const serialize_buffer& other) override;

    /// The next item as a number, parsed as `str_to_int32` does with radix 0: decimal digits, or
    /// digits with a prefix. Returns 0 for a field that is not a number and after the last item.
    /// Raises `std::out_of_range` if the read position is past the end of the content.
    signed char read_int8() const override;
    short read_int16() const override;
    int read_int32() const override;
    long read_int64() const override;
    unsigned char read_uint8() const override;
    unsigned short read_uint16() const override;
    unsigned int read_uint32() const override;
    unsigned long read_uint64() const override;

    /// The next item as a floating-point number, read as `str_to_float` and `str_to_double` do, in
    /// the global C++ locale. Returns 0 for a field that is not a number and after the last item.
    /// Raises `std::out_of_range` if the read position is past the end of the content.
    float read_float() const override;
    double read_double() const override;

    /// The next string or nested buffer: its length item, then that many bytes, or fewer if the
    /// content ends before. `read_buffer` never returns null.
    ///
    /// Contract: after the last item both return an empty result and start over, so that the next
    /// read returns the first item again. Test `at_end` before each call. A length item without its
    /// separator, or a read position past the end, raises `std::out_of_range`. A negative length
    /// moves the position backwards and returns the rest of the content.
    std::string read_string() const override;
    serialize_buffer* read_buffer() const override;

    bool at_end() const override;
    void reset_read() const override;

    serialize_buffer* create() const override;
    serialize_buffer* clone() const override;

private:
    std::string m_text;
    mutable std::size_t m_read_position;  // npos: the last read found no separator
};

}  // namespace serialization
}  // namespace TOVA_2_18
