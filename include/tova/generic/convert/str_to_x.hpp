/// Text to number. Bad digits are never an error: a parser gives what it has read, or 0.
///
/// The parsers keep no state. The integer parsers ask the C library's `isspace`, the floating ones
/// and `str_to_bool` the global locale or the C library's `tolower`; nothing else decides.
#pragma once

#include <locale>

#include <tova/abi.hpp>
#include <tova/strings/ustring.hpp>
#include <tova/types/radix.hpp>

namespace TOVA_2_18 {
namespace generic {
namespace convert {

/// Whether the number parsers skip this unit as a blank.
///
/// All three forms ask the narrow `isspace` of the C library with the unit's value, `char` with
/// its sign. Units outside -128 to 255 lie beyond that function's range and are no blanks.
TOVA_API bool is_space(char unit);
TOVA_API bool is_space(unsigned short unit);
TOVA_API bool is_space(wchar_t unit);

/// @name Text to signed integer
///
/// Reads blanks, one optional sign and digits from `length` units of `text`, and ignores what
/// follows. A `length` of 0 stands for a text up to its terminator. With radix 0 the text tells the
/// radix: `0x` and `0X` mean 16, `0b` and `0B` mean 2, any other leading `0` means 8 (a backslash
/// counts like that `0`), all else 10; with any other radix such a prefix is just text. Letters
/// stand for digits from 10 in both cases. No digit gives 0.
///
/// A number outside the result type gives the type's nearest limit if `throw_on_range` is false;
/// if it is true, raises `exceptions::overflow_error` above the range and
/// `exceptions::underflow_error` below it. Raises `exceptions::invalid_argument_value` for a radix
/// of 1 or above 36, unless the text holds nothing but blanks or ends behind its sign.
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

/// @name Text to unsigned integer
///
/// As the signed parsers, but for these points. A `length` of 0 is not measured: the first unit
/// alone is looked at, so that a digit gives its value and all else gives 0. A negative number
/// gives 0 if `throw_on_range` is false and raises `exceptions::underflow_error` if it is true,
/// however large it is; "-0" is 0. A negative radix is invalid, too.
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

/// Whether the text says yes: "yes", "on" or "true" in any letter case, or a number other than 0
/// as `str_to_long` reads it with radix 0. Raises only what an allocation raises.
TOVA_API bool str_to_bool(const strings::ustring16& text);

/// @name Text to floating point
///
/// The value that `operator>>` of a standard string stream extracts: leading blanks are skipped,
/// trailing text is ignored, the decimal point and the grouping are those of `locale`, or of the
/// global C++ locale without one. Answers 0.0 for everything the stream refuses, numbers out of
/// range included.
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
