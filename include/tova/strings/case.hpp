/// Case mapping, unit by unit.
#pragma once

#include <tova/abi.hpp>
#include <tova/strings/ustring.hpp>

namespace TOVA_2_18 {
namespace strings {

/// A copy in which each unit has gone through the C library's `tolower` (`toupper`).
///
/// The table of the process's current locale answers: in the locale that a process starts with only
/// the letters A to Z and a to z change. Characters of several units are not looked at, so in UTF-8
/// an accented letter stays as it is. Never fails.
TOVA_API ustring8 to_lower(const ustring8& text);
TOVA_API ustring16 to_lower(const ustring16& text);
TOVA_API ustring32 to_lower(const ustring32& text);

TOVA_API ustring8 to_upper(const ustring8& text);
TOVA_API ustring16 to_upper(const ustring16& text);
TOVA_API ustring32 to_upper(const ustring32& text);

/// A copy in which the units from `first` up to but not including `last` are mapped as by
/// `to_lower`.
///
/// A `last` of `(size_t)-1` means the end of the text. Any other `last` is taken as it is: the
/// caller keeps it at or below the size. A `first` at or behind `last` changes nothing.
TOVA_API ustring8 lower_case(const ustring8& text, unsigned long first, unsigned long last);
TOVA_API ustring16 lower_case(const ustring16& text, unsigned long first, unsigned long last);
TOVA_API ustring32 lower_case(const ustring32& text, unsigned long first, unsigned long last);

}  // namespace strings
}  // namespace TOVA_2_18
