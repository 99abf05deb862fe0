// What counts as a UTF-8 sequence in this library: its structure, and nothing else.
#pragma once

#include <cstddef>

namespace TOVA_2_18 {
namespace strings {
namespace detail {

inline bool is_continuation(unsigned int byte) {
    return (byte & 0xC0) == 0x80;
}

// Bytes of the sequence that a first byte announces, or 0 for a byte that begins none.
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

// Bytes of the sequence that begins at `text`, of which `left` bytes remain, or 0 if there is no
// complete one.
//
// Contract: overlong forms, encoded surrogates and values above U+10FFFF pass. Texts are walked by
// this rule everywhere, so what one function steps over the others step over as well.
inline std::size_t sequence_length(const unsigned char* text, std::size_t left) {
    if (left == 0)
        return 0;
    const std::size_t length = announced_length(text[0]);
    if (length > left)
        return 0;
    for (std::size_t i = 1; i < length; ++i)
        if (!is_continuation(text[i]))
            return 0;
    return length;
}

// The code point of the complete sequence of `length` bytes at `text`.
inline unsigned int decode_sequence(const unsigned char* text, std::size_t length) {
    switch (length) {
    case 1:
        return text[0];
    case 2:
        return ((text[0] & 0x1Fu) << 6) + (text[1] & 0x3Fu);
    case 3:
        return ((text[0] & 0x0Fu) << 12) + ((text[1] & 0x3Fu) << 6) + (text[2] & 0x3Fu);
    default:
        return ((text[0] & 0x07u) << 18) + ((text[1] & 0x3Fu) << 12) + ((text[2] & 0x3Fu) << 6) +
               (text[3] & 0x3Fu);
    }
}

}  // namespace detail
}  // namespace strings
}  // namespace TOVA_2_18
