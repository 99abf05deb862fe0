/// A length in the pixels of a device.
#pragma once

#include <tova/abi.hpp>

namespace TOVA_2_18 {
namespace types {

// The classes of lengths are values and are not deleted through a base: their destructors are not
// virtual and take no slot.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wnon-virtual-dtor"

/// A whole number of device units, such as the pixels of a screen or the dots of a printer.
///
/// A plain value; how long a unit is depends on the device (`generic::convert::to_device_unit`).
/// Never fails.
class TOVA_API device_unit {
public:
    enum unit_types : int { device = 1 };

    device_unit();  ///< No length.
    device_unit(const device_unit& source);
    device_unit(const int& value);

    /// Cut toward zero. What doesn't fit into 32 bits, NaN too, gives the least `int`.
    device_unit(const double& value);
    device_unit(const float& value);

    device_unit(const signed char& value);
    device_unit(const short& value);
    device_unit(const long& value);  ///< The low 32 bits.
    device_unit(const unsigned char& value);
    device_unit(const unsigned short& value);
    device_unit(const unsigned long& value);  ///< The low 32 bits.

    device_unit& assign(int value);
    device_unit& operator=(int value);
    device_unit& assign(const device_unit& source);
    device_unit& operator=(const device_unit& source);

    bool equal(const device_unit& other) const;
    bool operator==(const device_unit& other) const;
    bool operator!=(const device_unit& other) const;

    unit_types type() const;
    int as_int32() const;
    float as_float() const;
    double as_double() const;

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
