#pragma once

#include <sstream>

#include <tova/abi.hpp>
#include <tova/strings/ustring.hpp>

namespace TOVA_2_18 {
namespace generic {
namespace convert {

/// @name Integer to text
///
/// Writes `value` in the given radix into `buffer`, lower-case digits and a terminating zero.
/// `ltoa` and `lltoa` write a negative value as `-` and its magnitude, in every radix; there is no
/// prefix. The buffer has no size here: it needs room for 66 units of a `long` in radix 2, and 34
/// of an `int`. The radix is not checked: from 2 to 36 is the caller's duty. Never fails, never
/// allocates and looks at no locale.
/// @{
TOVA_API void ltoa(int value, char* buffer, unsigned int radix);
TOVA_API void ltoa(int value, unsigned short* buffer, unsigned int radix);
TOVA_API void ltoa(int value, wchar_t* buffer, unsigned int radix);
TOVA_API void ultoa(unsigned int value, char* buffer, unsigned int radix);
TOVA_API void ultoa(unsigned int value, unsigned short* buffer, unsigned int radix);
TOVA_API void ultoa(unsigned int value, wchar_t* buffer, unsigned int radix);
TOVA_API void lltoa(long value, char* buffer, unsigned int radix);
TOVA_API void lltoa(long value, unsigned short* buffer, unsigned int radix);
TOVA_API void lltoa(long value, wchar_t* buffer, unsigned int radix);
TOVA_API void ulltoa(unsigned long value, char* buffer, unsigned int radix);
TOVA_API void ulltoa(unsigned long value, unsigned short* buffer, unsigned int radix);
TOVA_API void ulltoa(unsigned long value, wchar_t* buffer, unsigned int radix);
/// @}

/// What `stream << value` writes to a fresh string stream of the global C++ locale. Raises only
/// what the insertion and allocations raise.
template <typename T>
strings::ustring8 to_str(const T& value) {
    std::stringstream stream;
    stream << value;
    return strings::ustring8(stream.str());
}

extern template TOVA_API strings::ustring8 to_str<char>(const char& value);

/// The value in decimal digits, without a stream and so without a locale.
TOVA_API strings::ustring8 to_str(unsigned int value);

}  // namespace convert
}  // namespace generic
}  // namespace TOVA_2_18
