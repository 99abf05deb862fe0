/// Removing a byte order mark.
#pragma once

#include <tova/abi.hpp>
#include <tova/strings/ustring.hpp>

namespace TOVA_2_18 {
namespace strings {

/// The text without the byte order mark that it begins with: the bytes EF BB BF, or the one unit
/// 0xFEFF. Only one mark is removed; a text without one, or with the mark of the other byte order
/// (0xFFFE), comes back as it is. Never fails.
TOVA_API ustring8 remove_BOM(const ustring8& text);
TOVA_API ustring16 remove_BOM(const ustring16& text);
TOVA_API ustring32 remove_BOM(const ustring32& text);

}  // namespace strings
}  // namespace TOVA_2_18
