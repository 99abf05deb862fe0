/// @file
/// The length of a string in units.
///
///     tova::strings::string_length("caf\xC3\xA9")  // 5: units, not characters
///
/// Pure functions; any number of threads may call them.
#pragma once

#include <tova/abi.hpp>
#include <tova/strings/ustring.hpp>

namespace TOVA_2_18 {
namespace strings {

/// @name Length up to the terminator
///
/// The number of units before the terminator, not of characters. The pointer must not be null.
/// @{
TOVA_API unsigned long string_length(const char* text);
TOVA_API unsigned long string_length(const unsigned short* text);
TOVA_API unsigned long string_length(const wchar_t* text);
/// @}

/// @name Length of a string object
///
/// The size in units, in constant time. Never fails.
/// @{
TOVA_API unsigned long string_length(const ustring8& text);
TOVA_API unsigned long string_length(const ustring16& text);
TOVA_API unsigned long string_length(const ustring32& text);
/// @}

}  // namespace strings
}  // namespace TOVA_2_18
