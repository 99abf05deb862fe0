/// @file
/// Conversions between lengths on a device and physical lengths.
///
///     using namespace tova::types;
///     device_unit width = tova::generic::convert::to_device_unit(25.4, absolute_unit::millimetre,
///     96); width.as_int32();  // 96: one inch
///
/// `dpi` is the resolution of the device in device units per inch. Nothing here raises an
/// exception. These are pure functions; any number of threads may call them.
#pragma once

#include <tova/abi.hpp>
#include <tova/types/absolute_unit.hpp>
#include <tova/types/device_unit.hpp>

namespace TOVA_2_18 {
namespace generic {
namespace convert {

/// Returns the device length. A `double` is truncated toward zero. The type is ignored.
TOVA_API types::device_unit to_device_unit(const types::device_unit& length);
TOVA_API types::device_unit to_device_unit(double length, types::device_unit::unit_types type);
TOVA_API types::device_unit to_device_unit(int length, types::device_unit::unit_types type);

/// A physical length in device units, truncated toward zero: `as_md() * dpi / 100000`.
///
/// Contract: the product wraps at 32 bits. At 96 dpi that is between 223 and 224 inches; longer
/// lengths are converted in pieces.
TOVA_API types::device_unit to_device_unit(const types::absolute_unit& length, int dpi);

/// A length in the unit `type` in device units, converted in the same way. A number that is no unit
/// counts as md.
TOVA_API types::device_unit to_device_unit(double length, types::absolute_unit::unit_types type,
                                           int dpi);
TOVA_API types::device_unit to_device_unit(int length, types::absolute_unit::unit_types type,
                                           int dpi);

/// The physical length in md.
TOVA_API types::basic_absolute_impl<1> to_md(const types::absolute_unit& length);

/// A length in the unit `type`, converted to md. A number that is no unit counts as md.
TOVA_API types::basic_absolute_impl<1> to_md(const int& length,
                                             types::absolute_unit::unit_types type);
TOVA_API types::basic_absolute_impl<1> to_md(const double& length,
                                             types::absolute_unit::unit_types type);

/// The physical length of a whole number of device units.
///
/// Contract: computed as `(length / dpi) * 100000` in 32-bit integers, so only whole inches remain:
/// 150 units at 96 dpi are 100000 md. A resolution of 0 divides by zero, which ends the process.
TOVA_API types::basic_absolute_impl<1> to_md(const types::device_unit& length, int dpi);
TOVA_API types::basic_absolute_impl<1> to_md(const int& length, types::device_unit::unit_types type,
                                             int dpi);

/// The physical length of a fractional number of device units, which keeps the fraction of an inch:
/// 150.0 units at 96 dpi are 156250 md. A resolution of 0 returns infinity or NaN.
TOVA_API types::basic_absolute_impl<1> to_md(const double& length,
                                             types::device_unit::unit_types type, int dpi);

}  // namespace convert
}  // namespace generic
}  // namespace TOVA_2_18
