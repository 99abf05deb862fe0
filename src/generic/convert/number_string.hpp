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

/// Returns the string of `size` characters. At least 16 characters must be readable, whatever the
/// size is.
strings::ustring8 string_of(const char* text, std::size_t size);

}  // namespace detail
}  // namespace convert
}  // namespace generic
}  // namespace TOVA_2_18
