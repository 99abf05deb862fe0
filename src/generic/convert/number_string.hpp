/// @file
/// Numbers as new strings.
///
///     decimal_string(-42L)  // "-42"
///
/// The characters are written where they stay. A copy from a buffer would wait until all of the
/// short stores to it are done. Functions without state: any number of threads may call them.
#pragma once

#include <tova/strings/ustring.hpp>

#include <cstddef>

namespace TOVA_2_18 {
namespace generic {
namespace convert {
namespace detail {

/// Raise what an allocation raises.
strings::ustring8 decimal_string(long number);
strings::ustring8 decimal_string(unsigned long number);

/// The string of `size` characters, of which the first 16 can be read whatever the size is.
strings::ustring8 string_of(const char* text, std::size_t size);

}  // namespace detail
}  // namespace convert
}  // namespace generic
}  // namespace TOVA_2_18
