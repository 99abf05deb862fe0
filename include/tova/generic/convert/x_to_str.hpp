/// @file
/// Numbers to strings.
///
///     char buffer[66];  // room for every `long` in every radix
///     tova::generic::convert::lltoa(-255, buffer, 16);          // "-ff"
///     tova::strings::ustring8 count = tova::generic::convert::to_str(42u);  // "42"
///
/// Nothing is kept between calls. Any number of threads may call these functions, each with a
/// buffer of its own.
#pragma once

#include <tova/abi.hpp>
#include <tova/strings/ustring.hpp>

#include <new>
#include <sstream>

namespace TOVA_2_18 {
namespace generic {
namespace convert {

/// @name Integer to string
///
/// Writes `value` in the given radix into `buffer`, in lower-case digits, and a terminating zero.
/// `ltoa` and `lltoa` write a negative value as `-` and its magnitude, in every radix; there is no
/// prefix.
///
/// The size of the buffer is not known here: a `long` in radix 2 needs 66 units, an `int` 34. The
/// radix is not checked; the caller keeps it from 2 to 36. A radix of 0 divides by zero, which ends
/// the process, and a radix of 1 never ends for any value but 0. Never allocates, and depends on no
/// locale.
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

/// Returns what `stream << value` writes to a new string stream with the global C++ locale. Raises
/// what the insertion and the allocations raise.
template <typename T>
strings::ustring8 to_str(const T& value) {
    // A stream swallows exceptions and sets its bad bit; with this mask it throws them again. A
    // failed allocation is handed on, since the string would lack characters.
    std::stringstream stream;
    stream.exceptions(std::ios_base::badbit);
    try {
        stream << value;
    } catch (const std::bad_alloc&) {
        throw;
    } catch (...) {
        if (!stream.bad())
            throw;
    }
    return strings::ustring8(stream.str());
}

/// For a `char` that is a string of one character in every locale, made without the stream.
template <>
TOVA_API strings::ustring8 to_str<char>(const char& value);

/// Returns the value in decimal digits, without a stream and so without a locale.
TOVA_API strings::ustring8 to_str(unsigned int value);

}  // namespace convert
}  // namespace generic
}  // namespace TOVA_2_18
