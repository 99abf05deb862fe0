/// @file
/// What counts as a UTF-8 sequence in this library: its structure, and nothing else.
///
///     unsigned int point;
///     detail::read_sequence(bytes, left, point);  // 3 and 0x20AC for E2 82 AC
///
/// A sequence is a lead byte and as many continuation bytes as the lead byte requires. All
/// functions of the library that walk UTF-8 use this rule, so they agree on where each character
/// ends. Pure functions; any number of threads may call them.
#pragma once

#include <cstddef>

namespace TOVA_2_18 {
namespace strings {
namespace detail {

inline bool is_continuation(unsigned int byte) {
    return (byte & 0xC0) == 0x80;
}

// The length of the sequence that starts with this byte, or 0 for a byte that cannot start one.
inline std::size_t announced_length(unsigned int byte) {
    if (byte < 0x80)
        return 1;
    if ((byte & 0xE0) == 0xC0)
        return 2;
    if ((byte & 0xF0) == 0xE0)
        return 3;
    if ((byte & 0xF8) == 0xF0)
        return 4;
    return 0;
}

// Reads the sequence that begins at `text`, of which `left` bytes remain, into `point`. Returns its
// length, or 0 if there is no complete one; `point` is then unchanged.
//
// Contract: overlong forms, encoded surrogates and values above U+10FFFF pass. A stricter rule here
// would turn strings that programs have stored into "-1".
inline std::size_t read_sequence(const unsigned char* text, std::size_t left, unsigned int& point) {
    if (left == 0)
        return 0;
    const unsigned int b = text[0];
    if (b < 0x80) {
        point = b;
        return 1;
    }
    if ((b & 0xE0) == 0xC0) {
        if (left < 2 || !is_continuation(text[1]))
            return 0;
        point = ((b & 0x1F) << 6) + (text[1] & 0x3Fu);
        return 2;
    }
    if ((b & 0xF0) == 0xE0) {
        if (left < 3 || !is_continuation(text[1]) || !is_continuation(text[2]))
            return 0;
        point = ((b & 0x0F) << 12) + ((text[1] & 0x3Fu) << 6) + (text[2] & 0x3Fu);
        return 3;
    }
    if ((b & 0xF8) == 0xF0) {
        if (left < 4 || !is_continuation(text[1]) || !is_continuation(text[2]) ||
            !is_continuation(text[3]))
            return 0;
        point = ((b & 0x07) << 18) + ((text[1] & 0x3Fu) << 12) + ((text[2] & 0x3Fu) << 6) +
                (text[3] & 0x3Fu);
        return 4;
    }
    return 0;
}

// The length alone.
inline std::size_t sequence_length(const unsigned char* text, std::size_t left) {
    unsigned int point;
    return read_sequence(text, left, point);
}

// Writes the sequence of a value from 0x80 to 0x10FFFF and returns its length.
inline std::size_t write_sequence(unsigned int value, char* to) {
    if (value < 0x800) {
        to[0] = static_cast<char>((value >> 6) | 0xC0);
        to[1] = static_cast<char>((value & 0x3F) | 0x80);
        return 2;
    }
    if (value < 0x10000) {
        to[0] = static_cast<char>((value >> 12) | 0xE0);
        to[1] = static_cast<char>(((value >> 6) & 0x3F) | 0x80);
        to[2] = static_cast<char>((value & 0x3F) | 0x80);
        return 3;
    }
    to[0] = static_cast<char>((value >> 18) | 0xF0);
    to[1] = static_cast<char>(((value >> 12) & 0x3F) | 0x80);
    to[2] = static_cast<char>(((value >> 6) & 0x3F) | 0x80);
    to[3] = static_cast<char>((value & 0x3F) | 0x80);
    return 4;
}

}  // namespace detail
}  // namespace strings
}  // namespace TOVA_2_18
