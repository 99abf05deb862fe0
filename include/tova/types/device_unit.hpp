/// @file
/// A length in whole units of a device: pixels of a screen, dots of a printer.
///
///     const tova::types::device_unit width(640);
///     const auto margin =
///         tova::generic::convert::to_device_unit(1.0, tova::types::absolute_unit::inch, 96);
///     margin.as_int32();  // 96
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

/// A whole number of device units, such as the pixels of a screen or the dots of a printer.
///
/// The physical size of a unit depends on the device; `generic::convert` has the conversions, which
/// take its resolution. A plain value: copies share nothing. Never fails.
class TOVA_API device_unit {
public:
    /// The units that a length can have: one of them.
    enum unit_types : int {
        device = 1  ///< A unit of the device.
    };

    device_unit();  ///< A length of 0 units.
    device_unit(const device_unit& source);
    device_unit(const int& value);  ///< That many units.

    /// That many units, truncated toward zero. A value that doesn't fit into 32 bits, NaN included,
    /// becomes the least `int`.
    device_unit(const double& value);
    device_unit(const float& value);

    /// That many units. Of 64 bits the low 32 count.
    device_unit(const signed char& value);
    device_unit(const short& value);
    device_unit(const long& value);
    device_unit(const unsigned char& value);
    device_unit(const unsigned short& value);
    device_unit(const unsigned long& value);

    /// Sets the number of units and returns the object.
    device_unit& assign(int value);
    device_unit& operator=(int value);
    device_unit& assign(const device_unit& source);
    device_unit& operator=(const device_unit& source);

    /// Compares the stored numbers, without asking the virtual operations.
    bool equal(const device_unit& other) const;
    bool operator==(const device_unit& other) const;
    bool operator!=(const device_unit& other) const;

    /// Calls the virtual operation of the same name with the prefix `do_` and returns its result.
    unit_types type() const;
    int as_int32() const;
    float as_float() const;
    double as_double() const;

    /// The unit, and the number of units in three types. `float` rounds beyond 24 bits.
    virtual unit_types do_type() const;
    virtual int do_as_int32() const;
    virtual float do_as_float() const;
    virtual double do_as_double() const;

private:
    int m_value;
};

#pragma GCC diagnostic pop

}  // namespace types
}  // namespace TOVA_2_18
