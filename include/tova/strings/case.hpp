/// @file
/// Case mapping, unit by unit.
///
///     tova::strings::to_lower(tova::strings::ustring8("Content-Type"))  // "content-type"
///
/// The mapping is that of the C library's current locale. In the locale that a process starts with
/// only the letters A to Z and a to z change, with one exception in 32 bits: the units 0xFFFFFF80
/// to 0xFFFFFFFE become 0x80 to 0xFE, because the C library's table maps negative values that way.
/// Any number of threads may call these functions while no thread changes the locale.
#pragma once

#include <tova/abi.hpp>
#include <tova/strings/ustring.hpp>

namespace TOVA_2_18 {
namespace strings {

/// @name Mapping a whole string
///
/// Returns a copy in which each unit is mapped by the C library's `tolower` or `toupper`. A
/// character of several units is not looked at, so an accented letter in UTF-8 stays as it is.
/// Never fails.
/// @{
TOVA_API ustring8 to_lower(const ustring8& text);
TOVA_API ustring16 to_lower(const ustring16& text);
TOVA_API ustring32 to_lower(const ustring32& text);

TOVA_API ustring8 to_upper(const ustring8& text);
TOVA_API ustring16 to_upper(const ustring16& text);
TOVA_API ustring32 to_upper(const ustring32& text);
/// @}

/// @name Mapping a part of a string
///
/// Returns a copy in which the units from `first` up to but not including `last` are mapped as by
/// `to_lower`.
///
/// A `last` of `(size_t)-1` means the end of the string. Any other `last` is taken as it is: the
/// caller keeps it at or below the size. If `first` is at or past `last`, nothing changes. Never
/// fails.
/// @{
TOVA_API ustring8 lower_case(const ustring8& text, unsigned long first, unsigned long last);
TOVA_API ustring16 lower_case(const ustring16& text, unsigned long first, unsigned long last);
TOVA_API ustring32 lower_case(const ustring32& text, unsigned long first, unsigned long last);
/// @}

}  // namespace strings
}  // namespace TOVA_2_18
