/// @file
/// The loops of the Unicode conversions: raw units in, raw units out, no string and no allocation.
///
///     unsigned short units[4];
///     kernels::utf8_to_utf16(bytes, 4, units);  // the number of units written
///
/// A kernel accepts any input of any length, valid or not, and reads nothing past its last unit.
/// The portable loops in unicode_kernels.cpp are the reference that every other form is compared
/// with, byte for byte. Kernels share nothing; any number of threads may run them.
#pragma once

#include <cstddef>

namespace TOVA_2_18 {
namespace strings {
namespace kernels {

const std::size_t invalid = static_cast<std::size_t>(-1);

// The number of bytes that are not continuations: the number of characters of a valid string, and
// an upper limit for any other.
std::size_t count_characters(const unsigned char* from, std::size_t size);

// The number of units written to `to`, which has room for `size`; `invalid` for a byte that doesn't
// begin a sequence.
std::size_t utf8_to_utf16(const unsigned char* from, std::size_t size, unsigned short* to);

// The number of bytes written to `to`, which has room for 4 * `size`; `invalid` for an unpaired
// surrogate.
std::size_t utf16_to_utf8(const unsigned short* from, std::size_t size, char* to);

// The results of the other four are appended to a string, so they convert a block at a time: the
// characters that begin in the first `block_size` of the `size` units at `from`. There is at least
// one unit.

const std::size_t block_size = 256;

struct progress {
    std::size_t read;     // units of the source; 0 if a unit is invalid
    std::size_t written;  // units of the result
};

// At most one unit for each byte, and up to 7 more than a block; an invalid byte becomes "?".
progress utf8_to_utf32(const unsigned char* from, std::size_t size, wchar_t* to);

// At most one unit for each unit; an unpaired surrogate is invalid.
progress utf16_to_utf32(const unsigned short* from, std::size_t size, wchar_t* to);

// At most four bytes for each unit; a surrogate is invalid, a value from 0x110000 up is dropped.
progress utf32_to_utf8(const wchar_t* from, std::size_t size, char* to);

// At most two units for each unit; a surrogate and a value from 0x110000 up are invalid.
progress utf32_to_utf16(const wchar_t* from, std::size_t size, unsigned short* to);

}  // namespace kernels
}  // namespace strings
}  // namespace TOVA_2_18
