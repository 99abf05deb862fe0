/// @file
/// Splitting a string into fields.
///
///     using tova::strings::split_string;
///     using tova::strings::ustring8;
///     for (const ustring8& field : split_string(ustring8("a,b,c"), ",", 0))
///         use(field);  // "a", "b", "c"
///
/// Pure functions; any number of threads may call them.
#pragma once

#include <tova/abi.hpp>
#include <tova/strings/ustring.hpp>

#include <string>
#include <vector>

namespace TOVA_2_18 {
namespace strings {

/// @name Splitting at a separator
///
/// Returns the fields of `text` between the separators, without these. The separator is one string
/// and not a set of units. There is no quoting and no escape.
///
/// A separator at the front starts with an empty field, and two in a row enclose an empty field,
/// but a separator at the end starts no empty last field: "," splits ",a,,b," into "", "a", "" and
/// "b". An empty string has no fields. With an empty separator the whole string is the only field,
/// even if it is empty.
///
/// A `limit` above 0 is the greatest number of splits: the last of up to `limit` + 1 fields is the
/// rest, if it is not empty. A `limit` of 0 or below means no limit. Raises only what an allocation
/// raises.
/// @{
TOVA_API std::vector<std::string> split_string(const std::string& text,
                                               const std::string& separator, int limit);
TOVA_API std::vector<std::wstring> split_string(const std::wstring& text,
                                                const std::wstring& separator, int limit);
TOVA_API std::vector<ustring8> split_string(const ustring8& text, const ustring8& separator,
                                            int limit);
TOVA_API std::vector<ustring16> split_string(const ustring16& text, const ustring16& separator,
                                             int limit);
TOVA_API std::vector<ustring32> split_string(const ustring32& text, const ustring32& separator,
                                             int limit);

/// Raises `std::logic_error` "basic_string::_M_construct null not valid" for a null `separator`.
TOVA_API std::vector<ustring8> split_string(const ustring8& text, const char* separator, int limit);
/// @}

}  // namespace strings
}  // namespace TOVA_2_18
