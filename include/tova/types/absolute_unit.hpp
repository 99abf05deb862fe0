/// @file
/// Physical lengths in eight units.
///
///     const tova::types::basic_absolute_impl<tova::types::absolute_unit::inch> inches(2.0);
///     const tova::types::basic_absolute_impl<tova::types::absolute_unit::millimetre> mm(inches);
///     mm.value();  // 50.8
///
/// Lengths are plain values: reading one object from several threads is safe.
#pragma once

#include <tova/abi.hpp>

namespace TOVA_2_18 {
namespace types {

// Lengths are values and are not deleted through a base, so their destructors are not virtual and
// have no slot.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wnon-virtual-dtor"

/// A physical length, stored as a `double` in md: 100000 md are one inch.
///
/// The class of an object decides in which unit `value`, `as_int32` and `as_double` express the
/// length. A plain value: copies share nothing. Never fails.
class TOVA_API absolute_unit {
public:
    /// The units, with the number of them in an inch.
    enum unit_types : int {
        md = 1,          ///< 100000
        dot_300 = 2,     ///< 300
        millimetre = 3,  ///< 25.4
        centimetre = 4,  ///< 2.54
        inch = 5,        ///< 1
        point = 6,       ///< 72
        pica = 7,        ///< 6
        pixel_96 = 8     ///< 96
    };

    absolute_unit();  ///< A length of 0 md.
    absolute_unit(const absolute_unit& source);
    absolute_unit(int value);  ///< A length in md.

    /// A length in md.
    ///
    /// Contract: the fraction is dropped, as if an `int` were passed: `absolute_unit(1.75)` holds
    /// 1 md. `value` keeps fractions. A value that doesn't fit into 32 bits, NaN included, becomes
    /// the least `int`.
    absolute_unit(double value);

    /// Copies the length; the object keeps its unit.
    absolute_unit& operator=(const absolute_unit& source);

    /// Calls the virtual operation of the same name with the prefix `do_` and returns its result.
    unit_types type() const;
    int as_int32() const;
    double as_double() const;

    /// The length in md, truncated toward zero. A length that doesn't fit into 32 bits becomes the
    /// least `int`.
    int as_md() const;

    /// The length in the unit of `type()`. 0 for a type that is no unit.
    double value() const;

    /// Sets the length in the unit of `type()`, fraction included, and returns the value given.
    /// Sets 0 for a type that is no unit.
    double value(double length);

    /// The unit, and the length in that unit as a whole number and as a `double`.
    virtual unit_types do_type() const = 0;
    virtual int do_as_int32() const = 0;
    virtual double do_as_double() const = 0;

private:
    double m_value;
};

/// A length in the unit number `N`, one of `absolute_unit::unit_types`.
template <int N>
class TOVA_API basic_absolute_impl : public absolute_unit {
public:
    basic_absolute_impl();                             ///< A length of 0.
    basic_absolute_impl(double length);                ///< A length in the unit of this class.
    basic_absolute_impl(const absolute_unit& source);  ///< The same length in this unit.

    unit_types do_type() const override;  ///< The unit `N`.

    /// The length in the unit, rounded to a whole number; a half rounds up.
    int do_as_int32() const override;

    /// The length in the unit, rounded to two decimal places; a half rounds up.
    double do_as_double() const override;
};

extern template class basic_absolute_impl<1>;
extern template class basic_absolute_impl<2>;
extern template class basic_absolute_impl<3>;
extern template class basic_absolute_impl<4>;
extern template class basic_absolute_impl<5>;
extern template class basic_absolute_impl<6>;
extern template class basic_absolute_impl<7>;
extern template class basic_absolute_impl<8>;

#pragma GCC diagnostic pop

}  // namespace types
}  // namespace TOVA_2_18
