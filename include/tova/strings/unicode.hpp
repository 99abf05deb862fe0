/// Conversions between the three string widths, and the decoders under them.
///
/// Bad input raises nothing here. Five of the six conversions answer it with the text "-1" in the
/// target width, whatever was converted before; the sixth, `utf8_to_utf32`, puts "?" for each byte
/// that it cannot decode. "-1" cannot be told from a source that says "-1": a caller that cares
/// walks the text first with `gh2::get_utf8_length` and `gh2::validate_utf8`.
///
/// What counts as valid is the structure alone: lead byte and continuation bytes, pairing of
/// surrogates. Overlong forms, encoded surrogates and values above U+10FFFF pass wherever a
/// function does not say otherwise. An empty source gives an empty result.
///
/// All are pure functions; threads may share their arguments. Memory shortage raises
/// `std::bad_alloc` or `std::length_error`.
#pragma once

#include <tova/abi.hpp>
#include <tova/strings/ustring.hpp>

namespace TOVA_2_18 {
namespace strings {

/// UTF-16 to UTF-8. Answers "-1" for an unpaired surrogate.
///
/// Never give it a text that begins with the unit 0xFFFE, the byte order mark of the other byte
/// order: it then recurses until the stack is exhausted. Run `check_BOM_and_modify_swap` on text
/// of unknown order first.
TOVA_API ustring8 utf16_to_utf8(const ustring16& source);

/// UTF-32 to UTF-8. Answers "-1" for a surrogate value, but drops a value from 0x110000 up and goes
/// on. A negative unit gives its low byte.
TOVA_API ustring8 utf32_to_utf8(const ustring32& source);

/// UTF-32 to 16-bit units. Answers "-1" for a surrogate value or a value from 0x110000 up. The low
/// 16 bits of a negative unit go out as they are.
///
/// The pairs are not those of UTF-16: no 0x10000 is taken off before the value is split, and U+FFFF
/// already goes out as a pair. For UTF-16 go through `utf32_to_utf8` and `utf8_to_utf16`.
TOVA_API ustring16 utf32_to_utf16(const ustring32& source);

/// UTF-8 to UTF-16. Answers "-1" for a byte that begins no complete sequence.
TOVA_API ustring16 utf8_to_utf16(const ustring8& source);

/// UTF-16 to UTF-32. Answers "-1" for an unpaired surrogate. The warning at `utf16_to_utf8` about a
/// leading 0xFFFE holds here as well.
TOVA_API ustring32 utf16_to_utf32(const ustring16& source);

/// UTF-8 to UTF-32. Never fails: each byte that begins no complete sequence becomes "?".
TOVA_API ustring32 utf8_to_utf32(const ustring8& source);

/// The code point that begins at unit `index` of the `length` units at `text`; `advance` is set to
/// the number of units that it takes.
///
/// On failure (an index at or past the length, a broken or cut sequence, an unpaired surrogate) the
/// result is 63, the character "?", and `advance` is `(size_t)-1`. The 32-bit form returns the unit
/// unchecked, and fails for the index only.
TOVA_API unsigned int unichar(const char* text, unsigned long length, unsigned long index,
                              unsigned long& advance);
TOVA_API unsigned int unichar(const unsigned short* text, unsigned long length, unsigned long index,
                              unsigned long& advance);
TOVA_API unsigned int unichar(const wchar_t* text, unsigned long length, unsigned long index,
                              unsigned long& advance);

/// The offset in units of the character with the number `character`, counted from 0.
///
/// Answers `(size_t)-1` for a number at or above the size of the text in units, and for a bad
/// sequence on the way. A number above the last character but below that size is not refused: the
/// walk counts the terminator, and what lies behind it reads as 0. In the 16-bit form a stray low
/// surrogate fails the walk only as the first unit of the text; further on it counts as a
/// character.
TOVA_API unsigned long character_index(const ustring8& text, unsigned long character);
TOVA_API unsigned long character_index(const ustring16& text, unsigned long character);

/// Returns a copy of `source` in the same byte order: nothing is exchanged. To exchange bytes use
/// `modify_swap_string_bytes_order`.
TOVA_API ustring16 swap_string_bytes_order(const ustring16& source);

/// Exchanges the two bytes of each unit in place.
TOVA_API void modify_swap_string_bytes_order(ustring16& text);

/// Returns a copy of `source` in the same byte order, whatever mark it begins with. To bring a text
/// into host order use `check_BOM_and_modify_swap`.
TOVA_API ustring16 check_BOM_and_swap(const ustring16& source);

/// Exchanges the two bytes of each unit in place if the first unit is 0xFFFE. The mark stays at the
/// front, then as 0xFEFF.
TOVA_API void check_BOM_and_modify_swap(ustring16& text);

}  // namespace strings
}  // namespace TOVA_2_18
