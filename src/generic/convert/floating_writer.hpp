/// @file
/// Floating-point values to characters, exactly as `printf` writes them with a "." for the point.
///
///     char text[max_general_size];
///     const std::size_t size = write_general(text, 1234567.0, 6);  // "1.23457e+06"
///
/// Nothing is allocated, and nothing ends with a terminator. Any number of threads may write at
/// once.
#pragma once

#include "generic/convert/decimal_digits.hpp"

#include <cstddef>

namespace TOVA_2_18 {
namespace generic {
namespace convert {
namespace detail {

/// Room for a sign, all 767 digits that a double can have, a point, an exponent or leading zeros,
/// and what is stored at once past the end.
const std::size_t max_general_size = 800;

/// Writes the value as "%.*g" does and returns the length. This is what a stream of the classic
/// locale inserts. A negative precision is 6.
std::size_t write_general(char* text, double value, int precision);

/// Writes nearly every value as "%.6g" does. Returns 0 for the others: 0, subnormal numbers,
/// infinities, NaN, values too close to the middle between two results, and any value in another
/// rounding mode than to nearest. The number has up to 13 characters, and up to 16 are stored.
std::size_t write_usual_six_digits(char* text, double value);

/// Writes the value as "%.6Lg" does.
const std::size_t max_six_digits_size = 40;
std::size_t write_six_digits(char* text, long double value);

/// Room for a sign, 20 digits, a point and 17 decimals, and what is stored at once past the end.
const std::size_t max_fixed_size = 64;

/// Writes the value as "%.*f" does and returns the length, or 0 if the value or the number of
/// decimals is out of range: 0 to 17 decimals, magnitudes below 2^63. With 2 decimals, a magnitude
/// below 10^8 needs room for 15 characters only.
std::size_t write_fixed(char* text, double value, int decimals);

}  // namespace detail
}  // namespace convert
}  // namespace generic
}  // namespace TOVA_2_18
