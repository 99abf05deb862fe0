/// @file
/// Converts numbers to new strings.
///
///     decimal_string(-42L)  // "-42"
///
/// The characters are written directly into the result. A copy from a buffer would have to wait for
/// all of the short stores to it. The functions have no state: any number of threads may call them.
#pragma once

#include <tova/strings/ustring.hpp>

#include <cstddef>

namespace TOVA_2_18 {
namespace generic {
namespace convert {
namespace detail {

/// Raise `std::bad_alloc`.
strings::ustring8 decimal_string(long number);
strings::ustring8 decimal_string(unsigned long number);

/// The value as "%.6g" writes it, with a "." for the point.
strings::ustring8 six_digits_string(double value);

/// The value as "%.2f" writes it with a "." for the point, or an empty string for a magnitude of
/// 10^8 or more, and in another rounding mode than to nearest.
strings::ustring8 two_decimals_string(double value);

}  // namespace detail
}  // namespace convert
}  // namespace generic
}  // namespace TOVA_2_18
