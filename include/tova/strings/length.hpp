/// The length of a text in units.
#pragma once

#include <tova/abi.hpp>
#include <tova/strings/ustring.hpp>

namespace TOVA_2_18 {
namespace strings {

/// The number of units in front of the terminator; not of characters. The pointer must not be null.
TOVA_API unsigned long string_length(const char* text);
TOVA_API unsigned long string_length(const unsigned short* text);
TOVA_API unsigned long string_length(const wchar_t* text);

/// The size in units, in constant time.
TOVA_API unsigned long string_length(const ustring8& text);
TOVA_API unsigned long string_length(const ustring16& text);
TOVA_API unsigned long string_length(const ustring32& text);

}  // namespace strings
}  // namespace TOVA_2_18
