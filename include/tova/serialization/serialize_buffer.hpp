#pragma once

#include <string>

#include <tova/abi.hpp>
#include <tova/generic/abilities.hpp>
#include <tova/memory/pointers.hpp>

namespace TOVA_2_18 {
namespace serialization {

/// A sequence of typed values in one string, written with `append_` and read back in the order of
/// writing with `read_`.
///
/// The content carries no types: the reader knows the sequence. `serialize_text_buf` and
/// `serialize_binary_buf` are the two encodings; a program may add its own. A buffer can hold
/// another one, of any class, as one nested value.
///
/// Reads are const and still move the read position, so a buffer belongs to one thread at a time,
/// even for reading. Buffers are counted: `memory::pointers::rc_pointer<serialize_buffer>` holds
/// them.
class TOVA_API serialize_buffer
    : public generic::abilities::create_ability,
      public generic::abilities::clone_ability,
      public generic::abilities::reference_count_pointer_ability<serialize_buffer> {
public:
    virtual ~serialize_buffer() TOVA_NOTHROW;

    /// Replaces the content, by that of another buffer or by encoded bytes (`length` counts bytes).
    /// Returns this buffer. The read position stays where it was: see `reset_read`.
    virtual serialize_buffer& assign(const serialize_buffer& other) = 0;
    virtual serialize_buffer& assign(const std::string& text) = 0;
    virtual serialize_buffer& assign(const char* text, int length) = 0;

    /// The encoded content.
    virtual const std::string& as_str() const = 0;

    /// Adds a value at the end of the content. The read position doesn't move.
    virtual void append_int8(const signed char& value) = 0;
    virtual void append_int16(const short& value) = 0;
    virtual void append_int32(const int& value) = 0;
    virtual void append_int64(const long& value) = 0;
    virtual void append_uint8(const unsigned char& value) = 0;
    virtual void append_uint16(const unsigned short& value) = 0;
    virtual void append_uint32(const unsigned int& value) = 0;
    virtual void append_uint64(const unsigned long& value) = 0;
    /// `precision` is the number of significant digits, for an encoding that writes digits.
    virtual void append_float(const float& value, const unsigned int& precision) = 0;
    virtual void append_double(const double& value, const unsigned int& precision) = 0;
    virtual void append_string(const std::string& bytes) = 0;
    /// The content of `other` as one value. Its class isn't noted.
    virtual void append_buffer(const serialize_buffer& other) = 0;

    /// Reads the next value and moves the read position behind it.
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
    /// A new buffer of this buffer's class over the nested bytes, whatever class wrote them. It
    /// lies on the heap with `allocated` set and belongs to the caller.
    virtual serialize_buffer* read_buffer() const = 0;

    /// Whether no value is left to read.
    virtual bool at_end() const = 0;

    /// The next read starts with the first value again.
    virtual void reset_read() const = 0;

    /// A new empty buffer, or a copy of this one, of the same class. It lies on the heap with
    /// `allocated` set and belongs to the caller.
    virtual serialize_buffer* create() const = 0;
    virtual serialize_buffer* clone() const = 0;
};

}  // namespace serialization

extern template class generic::abilities::reference_count_pointer_ability<
    serialization::serialize_buffer>;
extern template class memory::pointers::rc_pointer<serialization::serialize_buffer>;

}  // namespace TOVA_2_18
