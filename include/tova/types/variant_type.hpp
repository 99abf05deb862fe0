/// @file
/// The interface of the body that a variant holds.
///
/// Programs use `variant`; this header is for code that is handed a body, or that calls one through
/// its slots. Bodies are immutable except for their count, which is not atomic: the handles of one
/// body belong to one thread at a time.
#pragma once

#include <tova/abi.hpp>
#include <tova/generic/abilities.hpp>
#include <tova/memory/pointers.hpp>
#include <tova/strings/ustring.hpp>

#include <iosfwd>
#include <string>
#include <typeinfo>

namespace TOVA_2_18 {
namespace types {

/// The body of a `variant`: one value with all its conversions.
///
/// Bodies live on the heap, are counted and shared by their handles, and never change after
/// construction.
///
/// All operations have an empty exception specification: an exception that tries to leave one, such
/// as `std::bad_alloc`, ends the process through `std::unexpected`.
class TOVA_API variant_type
    : public generic::abilities::reference_count_pointer_ability<variant_type>,
      public generic::abilities::clone_ability {
public:
    ~variant_type() TOVA_NOTHROW override;

    /// Whether the value converts to the other types. True for all bodies of the library.
    virtual bool convertible() const TOVA_NOTHROW = 0;

    /// The type of the value, which is its identity.
    virtual const std::type_info& type() const TOVA_NOTHROW = 0;

    /// A new body on the heap with a copy of the value, with its heap mark set and a count of 0.
    /// The caller hands it to a holder or deletes it.
    virtual variant_type* clone() TOVA_NOTHROW = 0;

    /// Inserts the value and returns the stream.
    virtual std::ostream& ostream(std::ostream& stream) const TOVA_NOTHROW = 0;

    /// The value as a number. `variant_value_t` describes what each stored type does.
    virtual int as_int() const TOVA_NOTHROW = 0;
    virtual short as_short() const TOVA_NOTHROW = 0;
    virtual long as_long() const TOVA_NOTHROW = 0;
    virtual signed char as_int8() const TOVA_NOTHROW = 0;
    virtual short as_int16() const TOVA_NOTHROW = 0;
    virtual int as_int32() const TOVA_NOTHROW = 0;
    virtual long as_int64() const TOVA_NOTHROW = 0;
    virtual unsigned char as_uint8() const TOVA_NOTHROW = 0;
    virtual unsigned short as_uint16() const TOVA_NOTHROW = 0;
    virtual unsigned int as_uint32() const TOVA_NOTHROW = 0;
    virtual unsigned long as_uint64() const TOVA_NOTHROW = 0;
    virtual bool as_bool() const TOVA_NOTHROW = 0;

    /// The value as a string. `as_string`, `as_ustring` and `as_utf8` return UTF-8.
    virtual strings::ustring8 as_string() const TOVA_NOTHROW = 0;
    virtual std::wstring as_wstring() const TOVA_NOTHROW = 0;
    virtual std::string as_ustring() const TOVA_NOTHROW = 0;
    virtual strings::ustring8 as_utf8() const TOVA_NOTHROW = 0;
    virtual strings::ustring16 as_utf16() const TOVA_NOTHROW = 0;
    virtual strings::ustring32 as_utf32() const TOVA_NOTHROW = 0;

    /// The value as a floating-point number.
    virtual float as_float() const TOVA_NOTHROW = 0;
    virtual double as_double() const TOVA_NOTHROW = 0;
    virtual long double as_long_double() const TOVA_NOTHROW = 0;
};

}  // namespace types

extern template class generic::abilities::reference_count_pointer_ability<types::variant_type>;
extern template class memory::pointers::rc_pointer<types::variant_type>;

}  // namespace TOVA_2_18
