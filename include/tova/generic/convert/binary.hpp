/// Numbers to and from the bytes of a string: 2, 4 or 8 bytes, floating point as its IEEE 754 bit
/// pattern. In `generic::convert` itself the least significant byte comes first, in its namespaces
/// `little_endian` and `big_endian` the most significant one.
///
/// A writer returns a string of exactly the type's size. A reader of `const char*` reads the
/// type's size and tests nothing; a reader of `const std::string&` answers 0 for a string shorter
/// than its limit, which is the type's size unless told otherwise, and ignores bytes behind it.
/// Apart from the writers' allocations nothing fails.
#pragma once

#include <string>

#include <tova/abi.hpp>

namespace TOVA_2_18 {
namespace generic {
namespace convert {

/// @name Least significant byte first
/// @{
TOVA_API std::string int16_to_bin_str(const short& value);
TOVA_API std::string int32_to_bin_str(const int& value);
TOVA_API std::string int64_to_bin_str(const long& value);
TOVA_API std::string uint16_to_bin_str(const unsigned short& value);
TOVA_API std::string uint32_to_bin_str(const unsigned int& value);
TOVA_API std::string uint64_to_bin_str(const unsigned long& value);
TOVA_API std::string float_to_bin_str(const float& value);
TOVA_API std::string double_to_bin_str(const double& value);

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
/// The limit of this form is 8 bytes: the four bytes of a `float` alone give 0.0.
TOVA_API float bin_str_to_float(const std::string& bytes);
TOVA_API double bin_str_to_double(const char* bytes);
/// The limit of this form is 4 bytes; bytes that are missing up to the eighth read as 0.
TOVA_API double bin_str_to_double(const std::string& bytes);
/// @}

/// The most significant byte comes first, whatever the name suggests; the same as in `big_endian`.
/// There is no `bin_str_to_int16(const char*)`.
namespace little_endian {

TOVA_API std::string int16_to_bin_str(const short& value);
TOVA_API std::string int32_to_bin_str(const int& value);
TOVA_API std::string int64_to_bin_str(const long& value);
TOVA_API std::string uint16_to_bin_str(const unsigned short& value);
TOVA_API std::string uint32_to_bin_str(const unsigned int& value);
TOVA_API std::string uint64_to_bin_str(const unsigned long& value);
TOVA_API std::string float_to_bin_str(const float& value);
TOVA_API std::string double_to_bin_str(const double& value);

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

}  // namespace little_endian

/// The most significant byte comes first. There is no `bin_str_to_float` at all, and no
/// `const std::string&` form of `bin_str_to_uint16` and `bin_str_to_double`.
namespace big_endian {

TOVA_API std::string int16_to_bin_str(const short& value);
TOVA_API std::string int32_to_bin_str(const int& value);
TOVA_API std::string int64_to_bin_str(const long& value);
TOVA_API std::string uint16_to_bin_str(const unsigned short& value);
TOVA_API std::string uint32_to_bin_str(const unsigned int& value);
TOVA_API std::string uint64_to_bin_str(const unsigned long& value);
TOVA_API std::string float_to_bin_str(const float& value);
TOVA_API std::string double_to_bin_str(const double& value);

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

}  // namespace big_endian

}  // namespace convert
}  // namespace generic
}  // namespace TOVA_2_18
