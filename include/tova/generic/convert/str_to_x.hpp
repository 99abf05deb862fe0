/// @file
/// Strings to numbers. Invalid digits are never an error: a parser returns what it has read so far,
/// or 0.
///
///     using namespace tova::generic::convert;
///     str_to_int("42 files", 8, tova::types::radix_t::decimal, false);  // 42
///     str_to_int("0x2A", 4, tova::types::radix_t::detect, false);       // 42
///     str_to_double("1.5abc", std::locale::classic());                  // 1.5
///
/// Nothing is kept between calls, and any number of threads may call these functions. The results
/// depend on the locale: the integer parsers and `is_space` use the C library's `isspace`,
/// `str_to_bool` its `tolower` as well, and the floating parsers the global C++ locale.
#pragma once

#include <tova/abi.hpp>
#include <tova/strings/ustring.hpp>
#include <tova/types/radix.hpp>

#include <locale>

namespace TOVA_2_18 {
namespace generic {
namespace convert {

/// Whether the number parsers skip this unit as whitespace.
///
/// All three forms ask the narrow `isspace` of the C library with the value of the unit, a `char`
/// with its sign. A unit outside -128 to 255 is no whitespace. Never fails.
TOVA_API bool is_space(char unit);
TOVA_API bool is_space(unsigned short unit);
TOVA_API bool is_space(wchar_t unit);

/// @name String to signed integer
///
/// Reads whitespace, one optional sign and digits from the `length` units at `text`, and ignores
/// what follows. A `length` of 0 means up to the terminator. Radix 0 detects the radix: `0x` and
/// `0X` mean 16, `0b` and `0B` mean 2, any other leading `0` means 8, everything else 10; a
/// backslash counts like that `0`. In any other radix a prefix has no meaning. The letters `a` to
/// `z`, in either case, are the digits from 10 on. Returns 0 if there is no digit.
///
/// For a number outside the result type, returns the nearest limit of the type if `throw_on_range`
/// is false. If it is true, raises `exceptions::overflow_error` "Number value is to large" above
/// the range and `exceptions::underflow_error` "Number value is to small" below it.
///
/// Raises `exceptions::invalid_argument_value` for a radix of 1 or above 36, for the empty string
/// as well. Only a string that ends within its whitespace or right after its sign is 0 in any
/// radix. A negative radix has no digits. The source lines in these exceptions are not published.
/// @{
TOVA_API long str_to_long(const char* text, unsigned long length, types::radix_t::base radix,
                          bool throw_on_range);
TOVA_API long str_to_long(const unsigned short* text, unsigned long length,
                          types::radix_t::base radix, bool throw_on_range);
TOVA_API long str_to_long(const wchar_t* text, unsigned long length, types::radix_t::base radix,
                          bool throw_on_range);
TOVA_API int str_to_int(const char* text, unsigned long length, types::radix_t::base radix,
                        bool throw_on_range);
TOVA_API int str_to_int(const unsigned short* text, unsigned long length,
                        types::radix_t::base radix, bool throw_on_range);
TOVA_API int str_to_int(const wchar_t* text, unsigned long length, types::radix_t::base radix,
                        bool throw_on_range);
TOVA_API short str_to_short(const char* text, unsigned long length, types::radix_t::base radix,
                            bool throw_on_range);
TOVA_API short str_to_short(const unsigned short* text, unsigned long length,
                            types::radix_t::base radix, bool throw_on_range);
TOVA_API short str_to_short(const wchar_t* text, unsigned long length, types::radix_t::base radix,
                            bool throw_on_range);
TOVA_API int str_to_signed(const char* text, unsigned long length, types::radix_t::base radix,
                           bool throw_on_range);
TOVA_API int str_to_signed(const unsigned short* text, unsigned long length,
                           types::radix_t::base radix, bool throw_on_range);
TOVA_API int str_to_signed(const wchar_t* text, unsigned long length, types::radix_t::base radix,
                           bool throw_on_range);
TOVA_API signed char str_to_int8(const char* text, unsigned long length, types::radix_t::base radix,
                                 bool throw_on_range);
TOVA_API signed char str_to_int8(const unsigned short* text, unsigned long length,
                                 types::radix_t::base radix, bool throw_on_range);
TOVA_API signed char str_to_int8(const wchar_t* text, unsigned long length,
                                 types::radix_t::base radix, bool throw_on_range);
TOVA_API short str_to_int16(const char* text, unsigned long length, types::radix_t::base radix,
                            bool throw_on_range);
TOVA_API short str_to_int16(const unsigned short* text, unsigned long length,
                            types::radix_t::base radix, bool throw_on_range);
TOVA_API short str_to_int16(const wchar_t* text, unsigned long length, types::radix_t::base radix,
                            bool throw_on_range);
TOVA_API int str_to_int32(const char* text, unsigned long length, types::radix_t::base radix,
                          bool throw_on_range);
TOVA_API int str_to_int32(const unsigned short* text, unsigned long length,
                          types::radix_t::base radix, bool throw_on_range);
TOVA_API int str_to_int32(const wchar_t* text, unsigned long length, types::radix_t::base radix,
                          bool throw_on_range);
TOVA_API long str_to_int64(const char* text, unsigned long length, types::radix_t::base radix,
                           bool throw_on_range);
TOVA_API long str_to_int64(const unsigned short* text, unsigned long length,
                           types::radix_t::base radix, bool throw_on_range);
TOVA_API long str_to_int64(const wchar_t* text, unsigned long length, types::radix_t::base radix,
                           bool throw_on_range);
/// @}

/// @name String to unsigned integer
///
/// Reads a number as the signed parsers do, except for three points. A `length` of 0 is not
/// measured: only the first unit is read, so a digit returns its value and anything else returns 0.
/// A negative number returns 0 if `throw_on_range` is false and raises
/// `exceptions::underflow_error` if it is true, however large it is; "-0" is 0. A negative radix
/// raises the same exception as one above 36.
/// @{
TOVA_API unsigned int str_to_unsigned(const char* text, unsigned long length,
                                      types::radix_t::base radix, bool throw_on_range);
TOVA_API unsigned int str_to_unsigned(const unsigned short* text, unsigned long length,
                                      types::radix_t::base radix, bool throw_on_range);
TOVA_API unsigned int str_to_unsigned(const wchar_t* text, unsigned long length,
                                      types::radix_t::base radix, bool throw_on_range);
TOVA_API unsigned char str_to_uint8(const char* text, unsigned long length,
                                    types::radix_t::base radix, bool throw_on_range);
TOVA_API unsigned char str_to_uint8(const unsigned short* text, unsigned long length,
                                    types::radix_t::base radix, bool throw_on_range);
TOVA_API unsigned char str_to_uint8(const wchar_t* text, unsigned long length,
                                    types::radix_t::base radix, bool throw_on_range);
TOVA_API unsigned short str_to_uint16(const char* text, unsigned long length,
                                      types::radix_t::base radix, bool throw_on_range);
TOVA_API unsigned short str_to_uint16(const unsigned short* text, unsigned long length,
                                      types::radix_t::base radix, bool throw_on_range);
TOVA_API unsigned short str_to_uint16(const wchar_t* text, unsigned long length,
                                      types::radix_t::base radix, bool throw_on_range);
TOVA_API unsigned int str_to_uint32(const char* text, unsigned long length,
                                    types::radix_t::base radix, bool throw_on_range);
TOVA_API unsigned int str_to_uint32(const unsigned short* text, unsigned long length,
                                    types::radix_t::base radix, bool throw_on_range);
TOVA_API unsigned int str_to_uint32(const wchar_t* text, unsigned long length,
                                    types::radix_t::base radix, bool throw_on_range);
TOVA_API unsigned long str_to_uint64(const char* text, unsigned long length,
                                     types::radix_t::base radix, bool throw_on_range);
TOVA_API unsigned long str_to_uint64(const unsigned short* text, unsigned long length,
                                     types::radix_t::base radix, bool throw_on_range);
TOVA_API unsigned long str_to_uint64(const wchar_t* text, unsigned long length,
                                     types::radix_t::base radix, bool throw_on_range);
/// @}

/// True for "yes", "on" and "true" in any letter case, and for a number other than 0 as
/// `str_to_long` reads it with radix 0. Everything else is false. Raises only what an allocation
/// raises.
TOVA_API bool str_to_bool(const strings::ustring16& text);

/// @name String to floating point
///
/// The value that `operator>>` of a standard string stream extracts: leading whitespace is skipped,
/// what follows the number is ignored, decimal point and grouping are those of `locale`, or of the
/// global C++ locale if none is given. Returns 0.0 for everything that the stream refuses, a number
/// out of range included. Raises only what an allocation raises.
/// @{
TOVA_API float str_to_float(const strings::ustring8& text);
TOVA_API float str_to_float(const strings::ustring8& text, const std::locale& locale);
TOVA_API double str_to_double(const strings::ustring8& text);
TOVA_API double str_to_double(const strings::ustring8& text, const std::locale& locale);
TOVA_API long double str_to_long_double(const strings::ustring8& text);
TOVA_API long double str_to_long_double(const strings::ustring8& text, const std::locale& locale);
/// @}

}  // namespace convert
}  // namespace generic
}  // namespace TOVA_2_18
