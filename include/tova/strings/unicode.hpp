/// @file
/// Conversions between the three widths, and the decoders under them.
///
///     using namespace tova::strings;
///     ustring16 units = utf8_to_utf16("caf\xC3\xA9");  // 0x63 0x61 0x66 0xE9
///     ustring8 bytes = utf16_to_utf8(units);          // and back
///
/// Nothing here raises an exception for invalid input. Five of the six conversions return "-1" in
/// the target width, whatever was converted before; the sixth, `utf8_to_utf32`, writes "?" for each
/// byte that it cannot decode. "-1" looks exactly like a source that says "-1": a caller that cares
/// walks the string first with `gh2::get_utf8_length` and `gh2::validate_utf8`.
///
/// Only the structure decides what is valid: lead and continuation bytes, pairs of surrogates.
/// Overlong forms, encoded surrogates and values above U+10FFFF pass unless a function says
/// otherwise. The result for an empty source is empty.
///
/// These are pure functions; threads may share their arguments. An allocation that fails raises
/// `std::bad_alloc` or `std::length_error`.
#pragma once

#include <tova/abi.hpp>
#include <tova/strings/ustring.hpp>

namespace TOVA_2_18 {
namespace strings {

/// Converts UTF-16 to UTF-8. Returns "-1" for an unpaired surrogate.
///
/// Never pass a string that begins with the unit 0xFFFE, the byte order mark of the other byte
/// order: the function then recurses until the stack is exhausted. Call
/// `check_BOM_and_modify_swap` on a string of unknown order first.
TOVA_API ustring8 utf16_to_utf8(const ustring16& source);

/// Converts UTF-32 to UTF-8. Returns "-1" for a surrogate value, but drops a value from 0x110000 up
/// and continues. For a negative unit it writes the low byte.
TOVA_API ustring8 utf32_to_utf8(const ustring32& source);

/// Converts UTF-32 to 16-bit units. Returns "-1" for a surrogate value or a value from 0x110000 up.
/// For a negative unit it writes the low 16 bits.
///
/// The pairs are not those of UTF-16: 0x10000 is not subtracted before the value is split, and
/// U+FFFF is already written as a pair. For UTF-16 go through `utf32_to_utf8` and `utf8_to_utf16`.
TOVA_API ustring16 utf32_to_utf16(const ustring32& source);

/// Converts UTF-8 to UTF-16. Returns "-1" for a byte that begins no complete sequence.
TOVA_API ustring16 utf8_to_utf16(const ustring8& source);

/// Converts UTF-16 to UTF-32. Returns "-1" for an unpaired surrogate. The warning at
/// `utf16_to_utf8` about a leading 0xFFFE applies here as well.
TOVA_API ustring32 utf16_to_utf32(const ustring16& source);

/// Converts UTF-8 to UTF-32. Never fails: each byte that begins no complete sequence becomes "?".
TOVA_API ustring32 utf8_to_utf32(const ustring8& source);

/// @name Decoding one character
///
/// Returns the code point that begins at unit `index` of the `length` units at `text`, and sets
/// `advance` to the number of units that it takes.
///
/// On failure (an index at or past the length, an invalid or incomplete sequence, an unpaired
/// surrogate) returns 63, the character "?", and sets `advance` to `(size_t)-1`. The 32-bit form
/// returns the unit unchecked, and fails for the index only.
/// @{
TOVA_API unsigned int unichar(const char* text, unsigned long length, unsigned long index,
                              unsigned long& advance);
TOVA_API unsigned int unichar(const unsigned short* text, unsigned long length, unsigned long index,
                              unsigned long& advance);
TOVA_API unsigned int unichar(const wchar_t* text, unsigned long length, unsigned long index,
                              unsigned long& advance);
/// @}

/// @name Offset of a character
///
/// Returns the offset in units of the character with the number `character`, counted from 0.
///
/// Returns `(size_t)-1` for a number at or above the size of the string in units, and for an
/// invalid sequence on the way. A number above the last character but below that size is accepted:
/// the walk counts the terminator and the zeros that it reads after it. In the 16-bit form a stray
/// low surrogate fails the walk only as the first unit of the string; further on it counts as a
/// character.
/// @{
TOVA_API unsigned long character_index(const ustring8& text, unsigned long character);
TOVA_API unsigned long character_index(const ustring16& text, unsigned long character);
/// @}

/// Returns a copy of `source` in the same byte order: nothing is swapped. To swap bytes use
/// `modify_swap_string_bytes_order`. Never fails.
TOVA_API ustring16 swap_string_bytes_order(const ustring16& source);

/// Swaps the two bytes of each unit in place. Never fails.
TOVA_API void modify_swap_string_bytes_order(ustring16& text);

/// Returns a copy of `source` in the same byte order, whatever mark it begins with. To bring a
/// string into host order use `check_BOM_and_modify_swap`. Never fails.
TOVA_API ustring16 check_BOM_and_swap(const ustring16& source);

/// Swaps the two bytes of each unit in place if the first unit is 0xFFFE. The mark stays at the
/// front, as 0xFEFF after the swap. Never fails.
TOVA_API void check_BOM_and_modify_swap(ustring16& text);

}  // namespace strings
}  // namespace TOVA_2_18
