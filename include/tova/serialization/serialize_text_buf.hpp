#pragma once

#include <cstddef>
#include <string>

#include <tova/abi.hpp>
#include <tova/serialization/serialize_buffer.hpp>

namespace TOVA_2_18 {
namespace serialization {

/// The encoding as text: items that are each closed by the byte 0x01.
///
/// A number is its decimal digits, a string its length in bytes as a number item and then the bytes
/// and a closing 0x01; a nested buffer is its content as a string. So strings may hold any byte.
/// Integers never depend on a locale, floating values are written and read by standard streams
/// under the global C++ locale. docs/serialization.md shows the bytes.
///
/// Bad content never raises by itself: an integer out of the range of its type saturates, and what
/// is no number reads as 0, as does every number behind the end.
class TOVA_API serialize_text_buf : public serialize_buffer {
public:
    /// Empty.
    serialize_text_buf();

    /// Encoded content, read from its start.
    serialize_text_buf(const std::string& text);

    /// The content of any buffer, read from its start, or a copy with the read position.
    ///
    /// Contract: both take over `count` and `allocated` of the other buffer, unlike the copies of
    /// other counted classes. A copy of a buffer that is held starts with that count.
    serialize_text_buf(const serialize_buffer& other);
    serialize_text_buf(const serialize_text_buf& other);

    virtual ~serialize_text_buf() TOVA_NOTHROW;

    /// Takes over content and read position; `count` and `allocated` stay.
    serialize_text_buf& operator=(const serialize_text_buf& other);

    /// Replaces the content and leaves the read position alone, so that a position behind the new
    /// end makes the next read raise `std::out_of_range`; `reset_read` starts over. A buffer
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
    void append_float(const float& value, const unsigned int& precision) override;
    void append_double(const double& value, const unsigned int& precision) override;
    void append_string(const std::string& bytes) override;
    void append_buffer(const serialize_buffer& other) override;

    /// The next item as a number: digits in decimal, or with a prefix as `str_to_int` takes it with
    /// radix 0. Answers 0 for what is no number and behind the last item. Raises
    /// `std::out_of_range` if the read position is behind the end of the content.
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

    /// The next string or nested buffer: its length item, then as many bytes as the content has of
    /// that length.
    ///
    /// Contract: called when the last item has been read, both answer empty and begin again with
    /// the first item. A reader that wants to stop asks `at_end` before each call. A length item
    /// that isn't closed, or a read position behind the end, raises `std::out_of_range`; a negative
    /// length moves backwards and gives the rest of the content. `read_buffer` is never null.
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
