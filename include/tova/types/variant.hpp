#pragma once

#include <iosfwd>
#include <string>
#include <typeinfo>

#include <tova/abi.hpp>
#include <tova/memory/pointers.hpp>
#include <tova/strings/ustring.hpp>
#include <tova/types/nil.hpp>
#include <tova/types/variant_type.hpp>

namespace TOVA_2_18 {
namespace types {

/// A value of one of eighteen types, or nil, that converts to each of the others.
///
/// A handle of one pointer. Copies share one body that never changes, so a copy costs an increment
/// and no value is copied. The count is a plain integer: handles that share a body belong to one
/// thread at a time. A moment without a body never exists; a nil handle has a nil body of its own.
///
/// Conversions never fail: numbers narrow as casts do, texts parse with saturation
/// (`generic/convert/str_to_x.hpp`), numbers print in decimal. There is no comparison of two
/// variants; the type is told by `type()`, as a `std::type_info`.
///
/// Constructors and assignment of nil raise what an allocation raises. An exception inside of a
/// conversion (out of memory) ends the process through `std::unexpected`.
class TOVA_API variant {
public:
    /// Nil. `nil_t&` is not const: the tag object is `types::nil`.
    variant();
    variant(nil_t& nil_tag);

    /// A number.
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

    /// A copy of a text. Pointers take a text up to its terminator and make the same bodies as
    /// `ustring8`, `ustring16` and `ustring32`; a null pointer raises `std::logic_error`.
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

    /// Lets go of the body and shares that of `other`; a handle assigned to itself keeps its own.
    variant& assign(const variant& other);
    variant& operator=(const variant& other);

    /// Becomes nil, with a nil body of its own. Other handles of the old body keep it.
    variant& operator=(const nil_t& nil_tag);

    /// Whether the value is nil.
    bool equal(const nil_t& nil_tag) const TOVA_NOTHROW;
    bool operator==(const nil_t& nil_tag) const TOVA_NOTHROW;
    bool operator!=(const nil_t& nil_tag) const TOVA_NOTHROW;

    /// The type of the value: one of the eighteen, `typeid(nil_t)` for nil.
    const std::type_info& type() const;

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

    /// The value by way of the signed conversion of the same width, its bits read as unsigned. So a
    /// text saturates at the signed limit here; `as_uint16`, `as_uint32` and `as_uint64` use the
    /// whole unsigned range.
    int as_signed() const;
    unsigned int as_unsigned() const;
    unsigned int as_uint() const;
    unsigned long as_ulong() const;
    unsigned short as_ushort() const;

    /// The value as text; empty for nil. `as_string`, `as_utf8` and `as_ustring` are UTF-8.
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

/// Inserts the value as its body prints it: nil as 0, `signed char` and `unsigned char` as one
/// character, UTF-8, UTF-16 and UTF-32 texts up to their first NUL, a `std::string` whole, and for
/// a `std::wstring` a mark with the type's run-time name and the value's address.
TOVA_API std::ostream& operator<<(std::ostream& stream, const variant& value);

}  // namespace types
}  // namespace TOVA_2_18
