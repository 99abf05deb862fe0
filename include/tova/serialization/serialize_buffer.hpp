/// @file
/// The interface of the two sequential encodings: values in, one string out, and back.
///
///     tova::serialization::serialize_text_buf buffer;
///     buffer.append_int32(5);
///     buffer.append_string("ab");
///
///     const tova::serialization::serialize_text_buf received(buffer.as_str());
///     const int number = received.read_int32();          // in the order of writing
///     const std::string name = received.read_string();
///
/// docs/serialization.md shows the bytes of both encodings.
///
/// Threads: reads are const and still move the read position. A buffer belongs to one thread at a
/// time, even for reading.
#pragma once

#include <tova/abi.hpp>
#include <tova/generic/abilities.hpp>
#include <tova/memory/pointers.hpp>

#include <string>

namespace TOVA_2_18 {
namespace serialization {

/// A sequence of typed values in one string, written with `append_` and read back in the order of
/// writing with `read_`.
///
/// The content carries no types: the reader has to know the sequence. `serialize_text_buf` and
/// `serialize_binary_buf` are the two encodings, and a program may add its own. A buffer of any
/// class can be appended to another one as a single nested value.
///
/// Buffers are counted: `memory::pointers::rc_pointer<serialize_buffer>` holds them. `create`,
/// `clone` and `read_buffer` return a new buffer on the heap with `allocated` set, which the caller
/// owns.
///
/// In both encodings of the library:
/// - Constructors read the content from its start, whatever buffer it is taken from; only a copy
///   from the same class keeps the read position. Bytes are never converted between encodings.
/// - Contract: a buffer constructed from another buffer takes over its `count` and `allocated`,
///   unlike a copy of any other counted class. So a clone of a buffer that is held starts with the
///   count of its source. Assignment leaves both fields alone.
/// - `operator=` copies content and read position. `assign` replaces the content and leaves the
///   read position where it was. It raises `std::logic_error` for a null pointer with a length
///   other than 0, and `std::length_error` for a negative length.
/// - `as_str` returns the buffer's own string, which is valid until the content changes.
class TOVA_API serialize_buffer
    : public generic::abilities::create_ability,
      public generic::abilities::clone_ability,
      public generic::abilities::reference_count_pointer_ability<serialize_buffer> {
public:
    ~serialize_buffer() TOVA_NOTHROW override;

    /// Replaces the content with that of another buffer, or with encoded bytes (`length` counts
    /// bytes). Returns this buffer, which stays as it is if it is assigned to itself. The read
    /// position stays where it was; `reset_read` moves it to the start.
    virtual serialize_buffer& assign(const serialize_buffer& other) = 0;
    virtual serialize_buffer& assign(const std::string& text) = 0;
    virtual serialize_buffer& assign(const char* text, int length) = 0;

    /// The encoded content.
    virtual const std::string& as_str() const = 0;

    /// Appends a value to the content. The read position doesn't move.
    virtual void append_int8(const signed char& value) = 0;
    virtual void append_int16(const short& value) = 0;
    virtual void append_int32(const int& value) = 0;
    virtual void append_int64(const long& value) = 0;
    virtual void append_uint8(const unsigned char& value) = 0;
    virtual void append_uint16(const unsigned short& value) = 0;
    virtual void append_uint32(const unsigned int& value) = 0;
    virtual void append_uint64(const unsigned long& value) = 0;

    /// Appends a floating-point value. `precision` is the number of significant digits, for
    /// encodings that write digits.
    virtual void append_float(const float& value, const unsigned int& precision) = 0;
    virtual void append_double(const double& value, const unsigned int& precision) = 0;

    /// Appends a string, which may hold any bytes and may be empty.
    virtual void append_string(const std::string& bytes) = 0;

    /// Appends the content of `other` as one value. Its class is not recorded.
    virtual void append_buffer(const serialize_buffer& other) = 0;

    /// Reads the next value and moves the read position past it.
    virtual signed char read_int8() const = 0;
    virtual short read_int16() const = 0;
    virtual int read_int32() const = 0;
    virtual long read_int64() const = 0;
    virtual unsigned char read_uint8() const = 0;
    virtual unsigned short read_uint16() const = 0;
    virtual unsigned int read_uint32() const = 0;
    virtual unsigned long read_uint64() const = 0;
    virtual float read_float() const = 0;
    virtual double read_double() const = 0;
    virtual std::string read_string() const = 0;

    /// Reads a nested buffer. Returns a new buffer of this buffer's class with the nested bytes,
    /// whatever class wrote them.
    virtual serialize_buffer* read_buffer() const = 0;

    /// Whether nothing is left to read.
    virtual bool at_end() const = 0;

    /// Moves the read position to the first value.
    virtual void reset_read() const = 0;

    /// A new empty buffer of the same class on the heap with its heap mark set, owned by the
    /// caller.
    virtual serialize_buffer* create() const = 0;

    /// A copy of this buffer on the heap with its heap mark set, owned by the caller.
    virtual serialize_buffer* clone() const = 0;
};

}  // namespace serialization

extern template class generic::abilities::reference_count_pointer_ability<
    serialization::serialize_buffer>;
extern template class memory::pointers::rc_pointer<serialization::serialize_buffer>;

}  // namespace TOVA_2_18
