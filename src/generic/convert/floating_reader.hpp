/// @file
/// Strings to floating-point values, exactly as a stream of the classic locale reads them.
///
///     double value;
///     read_floating(" 1.5abc", 7, value);  // true, 1.5
///     read_floating("1e", 2, value);       // false: the stream would fail
///
/// Nothing is allocated. Any number of threads may read at once.
#pragma once

#include <cstddef>

namespace TOVA_2_18 {
namespace generic {
namespace convert {
namespace detail {

/// Reads the number at the beginning of the string, after whitespace. False where the extraction
/// from a stream sets its fail bit: no number, an exponent without digits, or a number that is too
/// large. The rounding mode of the C library is respected.
///
/// The character after the string is read and ends the number: it is a terminator or a separator,
/// no character of a number.
bool read_floating(const char* text, std::size_t length, float& value);
bool read_floating(const char* text, std::size_t length, double& value);
bool read_floating(const char* text, std::size_t length, long double& value);

}  // namespace detail
}  // namespace convert
}  // namespace generic
}  // namespace TOVA_2_18
