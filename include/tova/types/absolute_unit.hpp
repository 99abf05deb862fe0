/// Physical lengths in eight units.
#pragma once

#include <tova/abi.hpp>

namespace TOVA_2_18 {
namespace types {

// The classes of lengths are values and are not deleted through a base: their destructors are not
// virtual and take no slot.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wnon-virtual-dtor"

/// A physical length. It is held in md, of which 100000 make an inch, as a `double`; the class of
/// an object gives the unit in which the length is told. Plain values. Never fails.
class TOVA_API absolute_unit {
public:
    /// The units, with how many of them make an inch.
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

    absolute_unit();  ///< No length.
    absolute_unit(const absolute_unit& source);
    absolute_unit(int value);  ///< In md.

    /// In md, and only whole ones: `absolute_unit(1.75)` holds 1. `value` keeps fractions. What
    /// doesn't fit into 32 bits, NaN too, gives the least `int`.
    absolute_unit(double value);

    /// Takes over the length; the unit stays that of the object.
    absolute_unit& operator=(const absolute_unit& source);

    unit_types type() const;
    int as_int32() const;
    double as_double() const;

    /// The length in md, cut toward zero. What doesn't fit into 32 bits gives the least `int`.
    int as_md() const;

    /// The length in the unit of `type()`. 0 for a type that is no unit.
    double value() const;

    /// Sets the length in the unit of `type()`, with its fraction, and returns the value given.
    /// Sets 0 for a type that is no unit.
    double value(double length);

    virtual unit_types do_type() const = 0;
    virtual int do_as_int32() const = 0;
    virtual double do_as_double() const = 0;

private:
    double m_value;
};

/// A length in the unit with the number `N`, one of `absolute_unit::unit_types`.
template <int N>
class TOVA_API basic_absolute_impl : public absolute_unit {
public:
    basic_absolute_impl();
    basic_absolute_impl(double length);                ///< In the unit of this class.
    basic_absolute_impl(const absolute_unit& source);  ///< The same length, told in this unit.

    virtual unit_types do_type() const;

    /// The length in the unit, rounded to a whole number; a half goes upward.
    virtual int do_as_int32() const;

    /// The length in the unit, rounded to two decimal places; a half goes upward.
    virtual double do_as_double() const;
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
