/// @file
/// Removing a byte order mark.
///
///     tova::strings::remove_BOM("\xEF\xBB\xBF# notes")  // "# notes"
///
/// The marks are constants that are built when the library is loaded; any number of threads may
/// call these functions.
#pragma once

#include <tova/abi.hpp>
#include <tova/strings/ustring.hpp>

namespace TOVA_2_18 {
namespace strings {

/// @name Removing a byte order mark
///
/// Returns the string without the mark that it begins with: the bytes EF BB BF, or the one unit
/// 0xFEFF. Only one mark is removed. A string without a mark, or with the mark of the other byte
/// order (0xFFFE), is returned as it is. Never fails.
/// @{
TOVA_API ustring8 remove_BOM(const ustring8& text);
TOVA_API ustring16 remove_BOM(const ustring16& text);
TOVA_API ustring32 remove_BOM(const ustring32& text);
/// @}

}  // namespace strings
}  // namespace TOVA_2_18
