#pragma once

#include <string>

#include <tova/abi.hpp>
#include <tova/strings/ustring.hpp>
#include <tova/types/nil.hpp>
#include <tova/types/variant_type.hpp>

namespace TOVA_2_18 {
namespace types {

/// The body that holds a value of type `T`, for the eighteen types listed below the class and no
/// others.
///
/// Integers convert as a cast does; floating values truncate toward zero, by way of 32 bits for
/// results up to 32 bits and by way of 64 bits for `as_long`, `as_int64` and `as_uint32`; texts
/// parse with the saturating parsers of `generic::convert`, radix 0. Numbers print in decimal:
/// integers and nil never through a stream, `bool` and floating values through a string stream of
/// the global C++ locale. A nil body says 0, false and "0".
template <typename T>
class TOVA_API variant_value_t : public variant_type {
public:
    /// The heap mark is left to whoever makes the body with `new`.
    explicit variant_value_t(T initial_value);

    virtual ~variant_value_t() TOVA_NOTHROW;

    virtual bool convertible() const TOVA_NOTHROW;
    virtual const std::type_info& type() const TOVA_NOTHROW;
    virtual variant_type* clone() TOVA_NOTHROW;
    virtual std::ostream& ostream(std::ostream& stream) const TOVA_NOTHROW;

    virtual int as_int() const TOVA_NOTHROW;
    virtual short as_short() const TOVA_NOTHROW;
    virtual long as_long() const TOVA_NOTHROW;
    virtual signed char as_int8() const TOVA_NOTHROW;
    virtual short as_int16() const TOVA_NOTHROW;
    virtual int as_int32() const TOVA_NOTHROW;
    virtual long as_int64() const TOVA_NOTHROW;
    virtual unsigned char as_uint8() const TOVA_NOTHROW;
    virtual unsigned short as_uint16() const TOVA_NOTHROW;
    virtual unsigned int as_uint32() const TOVA_NOTHROW;
    virtual unsigned long as_uint64() const TOVA_NOTHROW;
    virtual bool as_bool() const TOVA_NOTHROW;

    virtual strings::ustring8 as_string() const TOVA_NOTHROW;
    virtual std::wstring as_wstring() const TOVA_NOTHROW;
    virtual std::string as_ustring() const TOVA_NOTHROW;
    virtual strings::ustring8 as_utf8() const TOVA_NOTHROW;
    virtual strings::ustring16 as_utf16() const TOVA_NOTHROW;
    virtual strings::ustring32 as_utf32() const TOVA_NOTHROW;

    virtual float as_float() const TOVA_NOTHROW;
    virtual double as_double() const TOVA_NOTHROW;
    virtual long double as_long_double() const TOVA_NOTHROW;

    const T value;
};

extern template class variant_value_t<nil_t>;
extern template class variant_value_t<signed char>;
extern template class variant_value_t<short>;
extern template class variant_value_t<int>;
extern template class variant_value_t<long>;
extern template class variant_value_t<unsigned char>;
extern template class variant_value_t<unsigned short>;
extern template class variant_value_t<unsigned int>;
extern template class variant_value_t<unsigned long>;
extern template class variant_value_t<bool>;
extern template class variant_value_t<float>;
extern template class variant_value_t<double>;
extern template class variant_value_t<long double>;
extern template class variant_value_t<strings::ustring8>;
extern template class variant_value_t<strings::ustring16>;
extern template class variant_value_t<strings::ustring32>;
extern template class variant_value_t<std::string>;
extern template class variant_value_t<std::wstring>;

}  // namespace types
}  // namespace TOVA_2_18
