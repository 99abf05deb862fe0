/// @file
/// One value of any of eighteen types, which converts to all the others.
///
///     tova::types::variant value("0x10");
///     value.as_int();     // 16
///     value.as_bool();    // true
///     value = tova::types::variant(2.5);
///     value.as_string();  // "2.5"
///
/// Copies share one body through a count that is not atomic. Handles that share a body belong to
/// one thread at a time; make a new variant from the value to hand it to another thread.
#pragma once

#include <tova/abi.hpp>
#include <tova/memory/pointers.hpp>
#include <tova/strings/ustring.hpp>
#include <tova/types/nil.hpp>
#include <tova/types/variant_type.hpp>

#include <iosfwd>
#include <string>
#include <typeinfo>

namespace TOVA_2_18 {
namespace types {

/// A value of one of eighteen types, nil among them, that converts to each of the others.
///
/// A variant is a handle of one pointer. Copies share one body, which never changes, so a copy
/// costs an increment and the value is not copied. Every handle has a body at all times; a new nil
/// handle gets one of its own.
///
/// Conversions never fail: numbers narrow as casts do, strings are parsed with saturation
/// (`generic/convert/str_to_x.hpp`), numbers become decimal strings. But a `ustring16` that begins
/// with 0xFFFE exhausts the stack, as in `utf16_to_utf8`. Two variants cannot be compared.
///
/// Constructors and the assignment of nil raise what an allocation raises. An exception inside a
/// conversion (out of memory, for example) ends the process through `std::unexpected`.
class TOVA_API variant {
public:
    /// Nil. The reference is not const: pass the object `types::nil`.
    variant();
    variant(nil_t& nil_tag);

    /// A number, which keeps its type.
    variant(const signed char& value);
    variant(const short& value);
    variant(const int& value);
    variant(const long& value);
    variant(const unsigned char& value);
    variant(const unsigned short& value);
    variant(const unsigned int& value);
    variant(const unsigned long& value);
    variant(bool value);
    variant(const float& value);
    variant(const double& value);
    variant(const long double& value);

    /// A copy of a string. Pointers refer to a string up to its terminator and make the same bodies
    /// as `ustring8`, `ustring16` and `ustring32`. A null pointer raises `std::logic_error`.
    variant(const char* text);
    variant(const unsigned short* text);
    variant(const wchar_t* text);
    variant(const strings::ustring8& text);
    variant(const strings::ustring16& text);
    variant(const strings::ustring32& text);
    variant(const std::string& text);
    variant(const std::wstring& text);

    /// Shares the body of `other`.
    variant(const variant& other);

    ~variant() TOVA_NOTHROW;

    /// Releases the body and shares that of `other`. A handle that is assigned to itself keeps its
    /// body.
    variant& assign(const variant& other);
    variant& operator=(const variant& other);

    /// Becomes nil, with a new nil body. Other handles of the old body keep it.
    variant& operator=(const nil_t& nil_tag);

    /// Whether the value is nil.
    bool equal(const nil_t& nil_tag) const TOVA_NOTHROW;
    bool operator==(const nil_t& nil_tag) const TOVA_NOTHROW;
    bool operator!=(const nil_t& nil_tag) const TOVA_NOTHROW;

    /// The type of the value: one of the eighteen, `typeid(nil_t)` for nil.
    const std::type_info& type() const;

    /// @name The value as a number
    ///
    /// The value as a number; nil is 0. Never fails.
    ///
    /// Integers are cast without a range check. Floating-point values are truncated toward zero to
    /// 32 bits, of which narrower results keep the low bits; `as_long`, `as_int64`, `as_uint32` and
    /// `as_uint64` go through 64 bits. A value that doesn't fit, NaN included, becomes the least
    /// `int` or `long` on the way. Strings are parsed, and saturate at the limits of the result.
    ///
    /// `as_bool` is true for a number other than 0, for NaN, and for the strings "yes", "on" and
    /// "true" in any letter case; for any other string it is that of `as_long`.
    /// @{
    bool as_bool() const;
    float as_float() const;
    double as_double() const;
    long double as_long_double() const;
    short as_short() const;
    int as_int() const;
    long as_long() const;
    signed char as_int8() const;
    short as_int16() const;
    int as_int32() const;
    long as_int64() const;
    unsigned char as_uint8() const;
    unsigned short as_uint16() const;
    unsigned int as_uint32() const;
    unsigned long as_uint64() const;
    /// @}

    /// The value as an integer: the signed conversion of the same width, with its bits read as the
    /// type of the result. Never fails.
    ///
    /// Contract: strings therefore saturate at the signed limit: "4294967295" is 2147483647 through
    /// `as_uint`. `as_uint16`, `as_uint32` and `as_uint64` use the whole unsigned range.
    int as_signed() const;
    unsigned int as_unsigned() const;
    unsigned int as_uint() const;
    unsigned long as_ulong() const;
    unsigned short as_ushort() const;

    /// The value as a string; empty for nil. `as_string`, `as_utf8` and `as_ustring` are UTF-8.
    strings::ustring8 as_string() const;
    std::wstring as_wstring() const;
    std::string as_ustring() const;
    strings::ustring8 as_utf8() const;
    strings::ustring16 as_utf16() const;
    strings::ustring32 as_utf32() const;

private:
    friend TOVA_API std::ostream& operator<<(std::ostream& stream, const variant& value);

    memory::pointers::rc_pointer<variant_type> m_body;
};

/// Inserts the value and returns the stream.
///
/// Contract: the output differs from `as_string` for some types. Nil prints as 0, `signed char` and
/// `unsigned char` as one character. A `ustring8`, `ustring16` or `ustring32` prints up to its
/// first NUL, a `std::string` whole. A `std::wstring` prints as a mark with the type's run-time
/// name and the address of the value.
TOVA_API std::ostream& operator<<(std::ostream& stream, const variant& value);

}  // namespace types
}  // namespace TOVA_2_18
