/// @file
/// Numbers to and from the bytes of a string: 2, 4 or 8 bytes, floating-point values as their IEEE
/// 754 bit pattern.
///
/// The functions of `generic::convert` itself put the least significant byte first, those of
/// `little_endian` and of `big_endian` both put the most significant byte first.
///
///     std::string record = tova::generic::convert::int32_to_bin_str(7);  // 07 00 00 00
///     int number = tova::generic::convert::bin_str_to_int32(record);     // 7
///
/// A writer returns a string of exactly the type's size. A reader of `const char*` reads the type's
/// size and checks nothing. A reader of `const std::string&` returns 0 for a string shorter than
/// its limit, which is the type's size unless its comment says otherwise, and ignores the bytes
/// after that size. The allocations of the writers may raise; nothing else fails.
///
/// These are pure functions; any number of threads may call them.
#pragma once

#include <tova/abi.hpp>

#include <string>

namespace TOVA_2_18 {
namespace generic {
namespace convert {

/// @name Least significant byte first: writing
///
/// Returns the 2, 4 or 8 bytes of `value`, the least significant one first. Raises only what an
/// allocation raises.
/// @{
TOVA_API std::string int16_to_bin_str(const short& value);
TOVA_API std::string int32_to_bin_str(const int& value);
TOVA_API std::string int64_to_bin_str(const long& value);
TOVA_API std::string uint16_to_bin_str(const unsigned short& value);
TOVA_API std::string uint32_to_bin_str(const unsigned int& value);
TOVA_API std::string uint64_to_bin_str(const unsigned long& value);
TOVA_API std::string float_to_bin_str(const float& value);
TOVA_API std::string double_to_bin_str(const double& value);
/// @}

/// @name Least significant byte first: reading
///
/// Returns the number whose bytes are at the front of `bytes`, the least significant one first.
/// A form that takes a pointer reads as many bytes as the type has and checks nothing. A form that
/// takes a string returns 0 if the string is shorter than its limit, which is the size of the type
/// unless the form says otherwise, and ignores the bytes after it. Never fails.
/// @{
TOVA_API short bin_str_to_int16(const char* bytes);
TOVA_API short bin_str_to_int16(const std::string& bytes);
TOVA_API int bin_str_to_int32(const char* bytes);
TOVA_API int bin_str_to_int32(const std::string& bytes);
TOVA_API long bin_str_to_int64(const char* bytes);
TOVA_API long bin_str_to_int64(const std::string& bytes);
TOVA_API unsigned short bin_str_to_uint16(const char* bytes);
TOVA_API unsigned short bin_str_to_uint16(const std::string& bytes);
TOVA_API unsigned int bin_str_to_uint32(const char* bytes);
TOVA_API unsigned int bin_str_to_uint32(const std::string& bytes);
TOVA_API unsigned long bin_str_to_uint64(const char* bytes);
TOVA_API unsigned long bin_str_to_uint64(const std::string& bytes);
TOVA_API float bin_str_to_float(const char* bytes);
/// The limit of this form is 8 bytes: the four bytes of a `float` alone read as 0.0.
TOVA_API float bin_str_to_float(const std::string& bytes);
TOVA_API double bin_str_to_double(const char* bytes);
/// The limit of this form is 4 bytes. Missing bytes up to the eighth read as 0.
TOVA_API double bin_str_to_double(const std::string& bytes);
/// @}

/// The most significant byte comes first, whatever the name suggests, exactly as in `big_endian`.
///
/// There is no `bin_str_to_int16(const char*)`. A call with a `const char*` converts it to a
/// `std::string`, which ends at the first NUL byte; pass a string with its length.
namespace little_endian {

/// @name Most significant byte first: writing
///
/// Returns the 2, 4 or 8 bytes of `value`, the most significant one first. Raises only what an
/// allocation raises.
/// @{
TOVA_API std::string int16_to_bin_str(const short& value);
TOVA_API std::string int32_to_bin_str(const int& value);
TOVA_API std::string int64_to_bin_str(const long& value);
TOVA_API std::string uint16_to_bin_str(const unsigned short& value);
TOVA_API std::string uint32_to_bin_str(const unsigned int& value);
TOVA_API std::string uint64_to_bin_str(const unsigned long& value);
TOVA_API std::string float_to_bin_str(const float& value);
TOVA_API std::string double_to_bin_str(const double& value);
/// @}

/// @name Most significant byte first: reading
///
/// Returns the number whose bytes are at the front of `bytes`, the most significant one first.
/// A form that takes a pointer reads as many bytes as the type has and checks nothing. A form that
/// takes a string returns 0 if the string is shorter than the type, and ignores the bytes after it.
/// Never fails.
/// @{
TOVA_API short bin_str_to_int16(const std::string& bytes);
TOVA_API int bin_str_to_int32(const char* bytes);
TOVA_API int bin_str_to_int32(const std::string& bytes);
TOVA_API long bin_str_to_int64(const char* bytes);
TOVA_API long bin_str_to_int64(const std::string& bytes);
TOVA_API unsigned short bin_str_to_uint16(const char* bytes);
TOVA_API unsigned short bin_str_to_uint16(const std::string& bytes);
TOVA_API unsigned int bin_str_to_uint32(const char* bytes);
TOVA_API unsigned int bin_str_to_uint32(const std::string& bytes);
TOVA_API unsigned long bin_str_to_uint64(const char* bytes);
TOVA_API unsigned long bin_str_to_uint64(const std::string& bytes);
TOVA_API float bin_str_to_float(const char* bytes);
TOVA_API float bin_str_to_float(const std::string& bytes);
TOVA_API double bin_str_to_double(const char* bytes);
TOVA_API double bin_str_to_double(const std::string& bytes);
/// @}

}  // namespace little_endian

/// The most significant byte comes first. There is no `bin_str_to_float` at all, and no
/// `const std::string&` form of `bin_str_to_uint16` and `bin_str_to_double`.
namespace big_endian {

/// @name Most significant byte first: writing
///
/// Returns the 2, 4 or 8 bytes of `value`, the most significant one first. Raises only what an
/// allocation raises.
/// @{
TOVA_API std::string int16_to_bin_str(const short& value);
TOVA_API std::string int32_to_bin_str(const int& value);
TOVA_API std::string int64_to_bin_str(const long& value);
TOVA_API std::string uint16_to_bin_str(const unsigned short& value);
TOVA_API std::string uint32_to_bin_str(const unsigned int& value);
TOVA_API std::string uint64_to_bin_str(const unsigned long& value);
TOVA_API std::string float_to_bin_str(const float& value);
TOVA_API std::string double_to_bin_str(const double& value);
/// @}

/// @name Most significant byte first: reading
///
/// Returns the number whose bytes are at the front of `bytes`, the most significant one first.
/// A form that takes a pointer reads as many bytes as the type has and checks nothing. A form that
/// takes a string returns 0 if the string is shorter than the type, and ignores the bytes after it.
/// Never fails.
/// @{
TOVA_API short bin_str_to_int16(const char* bytes);
TOVA_API short bin_str_to_int16(const std::string& bytes);
TOVA_API int bin_str_to_int32(const char* bytes);
TOVA_API int bin_str_to_int32(const std::string& bytes);
TOVA_API long bin_str_to_int64(const char* bytes);
TOVA_API long bin_str_to_int64(const std::string& bytes);
TOVA_API unsigned short bin_str_to_uint16(const char* bytes);
TOVA_API unsigned int bin_str_to_uint32(const char* bytes);
TOVA_API unsigned int bin_str_to_uint32(const std::string& bytes);
TOVA_API unsigned long bin_str_to_uint64(const char* bytes);
TOVA_API unsigned long bin_str_to_uint64(const std::string& bytes);
TOVA_API double bin_str_to_double(const char* bytes);
/// @}

}  // namespace big_endian

}  // namespace convert
}  // namespace generic
}  // namespace TOVA_2_18
