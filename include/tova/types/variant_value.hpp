/// @file
/// The eighteen types of body that a variant holds.
///
/// Programs use `variant`, which makes these bodies; this header lets other modules link against
/// them. What `variant_type.hpp` says about threads applies.
#pragma once

#include <tova/abi.hpp>
#include <tova/strings/ustring.hpp>
#include <tova/types/nil.hpp>
#include <tova/types/variant_type.hpp>

#include <string>

namespace TOVA_2_18 {
namespace types {

/// The body that holds a value of type `T`. The types are the eighteen listed below the class, and
/// no others.
///
/// As numbers, integers convert like a cast. Floating-point values are truncated toward zero:
/// through 64 bits for `as_long`, `as_int64`, `as_uint32` and `as_uint64`, through 32 bits for the
/// other results. Strings are parsed by the saturating parsers of `generic::convert` with radix 0.
///
/// As strings, integers are written in decimal without a stream, while `bool` and floating-point
/// values go through a string stream in the global C++ locale.
///
/// Contract: a nil body is 0, false and "0". The empty string of a nil variant is made by its
/// handle.
template <typename T>
class TOVA_API variant_value_t : public variant_type {
public:
    /// A body with that value and a count of 0. A caller that makes it with `new` sets the heap
    /// mark.
    explicit variant_value_t(T initial_value);

    ~variant_value_t() TOVA_NOTHROW override;

    bool convertible() const TOVA_NOTHROW override;
    const std::type_info& type() const TOVA_NOTHROW override;
    variant_type* clone() TOVA_NOTHROW override;
    std::ostream& ostream(std::ostream& stream) const TOVA_NOTHROW override;

    /// The value as a number, as the class comment describes.
    int as_int() const TOVA_NOTHROW override;
    short as_short() const TOVA_NOTHROW override;
    long as_long() const TOVA_NOTHROW override;
    signed char as_int8() const TOVA_NOTHROW override;
    short as_int16() const TOVA_NOTHROW override;
    int as_int32() const TOVA_NOTHROW override;
    long as_int64() const TOVA_NOTHROW override;
    unsigned char as_uint8() const TOVA_NOTHROW override;
    unsigned short as_uint16() const TOVA_NOTHROW override;
    unsigned int as_uint32() const TOVA_NOTHROW override;
    unsigned long as_uint64() const TOVA_NOTHROW override;
    bool as_bool() const TOVA_NOTHROW override;

    /// The value as a string, as the class comment describes.
    strings::ustring8 as_string() const TOVA_NOTHROW override;
    std::wstring as_wstring() const TOVA_NOTHROW override;
    std::string as_ustring() const TOVA_NOTHROW override;
    strings::ustring8 as_utf8() const TOVA_NOTHROW override;
    strings::ustring16 as_utf16() const TOVA_NOTHROW override;
    strings::ustring32 as_utf32() const TOVA_NOTHROW override;

    /// The value as a floating-point number. Strings are read by `str_to_float` and its siblings.
    float as_float() const TOVA_NOTHROW override;
    double as_double() const TOVA_NOTHROW override;
    long double as_long_double() const TOVA_NOTHROW override;

    /// The value, which never changes.
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
