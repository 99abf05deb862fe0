/// Cutting a text into fields.
#pragma once

#include <string>
#include <vector>

#include <tova/abi.hpp>
#include <tova/strings/ustring.hpp>

namespace TOVA_2_18 {
namespace strings {

/// The fields of `text` between the separators, which are left out. The separator counts as a
/// whole, it is not a set of units; there is no quoting and no escape.
///
/// A separator at the front opens an empty first field and two in a row enclose an empty one, but a
/// separator at the end opens no empty last field: "," splits ",a,,b," into "", "a", "" and "b". An
/// empty text has no fields. An empty separator gives the whole text as the only field, also an
/// empty text.
///
/// A `limit` above 0 is the greatest number of splits, so that the last of up to `limit` + 1 fields
/// is the unsplit rest, if it is not empty. A `limit` of 0 or below means no limit.
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

/// A null `separator` raises `std::logic_error` "basic_string::_M_construct null not valid".
TOVA_API std::vector<ustring8> split_string(const ustring8& text, const char* separator, int limit);

}  // namespace strings
}  // namespace TOVA_2_18
