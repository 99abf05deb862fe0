/// @file
/// The loops that convert one character at a time. The portable form consists of them, and the
/// other forms use them at the end of a string and for everything that their vectors don't handle.
///
///     kernels::loops::utf8_to_utf16(bytes, size, 64, units);  // the characters that begin in 64
///
/// A loop converts the characters that begin in the first `stop` of `size` units. It stops early at
/// the first invalid one, so that `read < stop`. Pure functions; any number of threads may run
/// them.
#pragma once

#include "strings/ascii_run.hpp"
#include "strings/unicode_kernels.hpp"
#include "strings/utf16.hpp"
#include "strings/utf8.hpp"

#include <algorithm>

namespace TOVA_2_18 {
namespace strings {
namespace kernels {
namespace loops {

const int unicode_end = 0x110000;  // the first value above Unicode

// Writes the two units of a complete four-byte sequence.
//
// Contract: the value isn't checked, so the unsigned terms wrap before they are truncated to 16
// bits. An overlong F0 80 80 80 becomes D7C0 DC00, and F4 90 80 80, above Unicode, becomes DC00
// DC00.
inline void write_pair(const unsigned char* sequence, unsigned short* to) {
    const unsigned int b = sequence[0];
    const unsigned int c1 = sequence[1];
    const unsigned int c2 = sequence[2];
    const unsigned int c3 = sequence[3];
    to[0] = static_cast<unsigned short>(((((b & 7) * 4) + ((c1 & 0x3F) >> 4) - 1) << 6) +
                                        ((c1 & 0x0F) << 2) + ((c2 & 0x3F) >> 4) + 0xD800);
    to[1] = static_cast<unsigned short>(((c2 & 0x0F) << 6) + (c3 & 0x3F) + 0xDC00);
}

inline progress utf8_to_utf16(const unsigned char* from, std::size_t size, std::size_t stop,
                              unsigned short* to) {
    std::size_t k = 0;
    std::size_t i = 0;
    while (i < stop) {
        const unsigned int b = from[i];
        if (b < 0x80) {
            if (stop - i >= 8 && detail::all_ascii(from + i)) {
                detail::widen(from + i, to + k);
                i += 8;
                k += 8;
            } else {
                to[k++] = static_cast<unsigned short>(b);
                ++i;
            }
            continue;
        }
        unsigned int point;
        const std::size_t taken = detail::read_sequence(from + i, size - i, point);
        if (taken == 0)
            break;
        // The units come from the bytes, not from `point`, see `write_pair`.
        if (taken == 4) {
            write_pair(from + i, to + k);
            k += 2;
        } else {
            to[k++] = static_cast<unsigned short>(point);
        }
        i += taken;
    }
    return {i, k};
}

inline progress utf8_to_utf32(const unsigned char* from, std::size_t size, std::size_t stop,
                              wchar_t* to) {
    std::size_t k = 0;
    std::size_t i = 0;
    while (i < stop) {
        if (from[i] < 0x80 && stop - i >= 8 && detail::all_ascii(from + i)) {
            detail::widen(from + i, to + k);
            i += 8;
            k += 8;
            continue;
        }
        unsigned int point;
        const std::size_t taken = detail::read_sequence(from + i, size - i, point);
        if (taken == 0)
            break;
        to[k++] = static_cast<wchar_t>(point);
        i += taken;
    }
    return {i, k};
}

inline progress utf16_to_utf8(const unsigned short* from, std::size_t size, std::size_t stop,
                              char* to) {
    std::size_t k = 0;
    std::size_t i = 0;
    while (i < stop) {
        unsigned int point = from[i];
        if (point < 0x80) {
            if (stop - i >= 4 && detail::all_ascii(from + i)) {
                detail::narrow(from + i, to + k);
                i += 4;
                k += 4;
            } else {
                to[k++] = static_cast<char>(point);
                ++i;
            }
            continue;
        }
        const std::size_t taken = detail::read_units(from + i, size - i, point);
        if (taken == 0)
            break;
        k += detail::write_sequence(point, to + k);
        i += taken;
    }
    return {i, k};
}

inline progress utf16_to_utf32(const unsigned short* from, std::size_t size, std::size_t stop,
                               wchar_t* to) {
    std::size_t k = 0;
    std::size_t i = 0;
    while (i < stop) {
        unsigned int point;
        const std::size_t taken = detail::read_units(from + i, size - i, point);
        if (taken == 0)
            break;
        to[k++] = static_cast<wchar_t>(point);
        i += taken;
    }
    return {i, k};
}

inline progress utf32_to_utf8(const wchar_t* from, std::size_t, std::size_t stop, char* to) {
    std::size_t k = 0;
    std::size_t i = 0;
    for (; i < stop; ++i) {
        const int c = from[i];
        if (detail::is_surrogate(c))
            break;
        // Contract: a negative value is below 0x80 and becomes its low byte; a value above Unicode
        // is dropped silently, although a surrogate makes the whole string invalid.
        if (c < 0x80)
            to[k++] = static_cast<char>(c);
        else if (c < unicode_end)
            k += detail::write_sequence(static_cast<unsigned int>(c), to + k);
    }
    return {i, k};
}

inline progress utf32_to_utf16(const wchar_t* from, std::size_t, std::size_t stop,
                               unsigned short* to) {
    std::size_t k = 0;
    std::size_t i = 0;
    for (; i < stop; ++i) {
        const int c = from[i];
        if (detail::is_surrogate(c) || c >= unicode_end)
            break;
        // Contract: pairs begin at U+FFFF, and 0x10000 is not subtracted, so these pairs are not
        // those of `utf8_to_utf16`: U+10000 is D840 DC00 here and D800 DC00 there.
        if (c < 0xFFFF) {
            to[k++] = static_cast<unsigned short>(c);
        } else {
            to[k++] = static_cast<unsigned short>((c >> 10) + 0xD800);
            to[k++] = static_cast<unsigned short>((c & 0x3FF) + 0xDC00);
        }
    }
    return {i, k};
}

inline std::size_t measure_8_to_16(const unsigned char* from, std::size_t size) {
    std::size_t units = 0;
    for (std::size_t i = 0; i < size; ++i)
        units += (detail::is_continuation(from[i]) ? 0u : 1u) + (from[i] >= 0xF0 ? 1u : 0u);
    return units;
}

inline std::size_t measure_8_to_32(const unsigned char* from, std::size_t size) {
    std::size_t count = 0;
    std::size_t i = 0;
    for (; size - i >= 8; i += 8)
        count += detail::count_leads(from + i);
    for (; i < size; ++i)
        count += detail::is_continuation(from[i]) ? 0 : 1;
    return count;
}

inline std::size_t measure_16_to_8(const unsigned short* from, std::size_t size) {
    std::size_t bytes = size;
    for (std::size_t i = 0; i < size; ++i)
        bytes += (from[i] >= 0x80 ? 1u : 0u) + (from[i] >= 0x800 ? 1u : 0u) -
                 (detail::is_surrogate(from[i]) ? 1u : 0u);  // a pair becomes four
    return bytes;
}

inline std::size_t measure_16_to_32(const unsigned short* from, std::size_t size) {
    std::size_t points = size;
    for (std::size_t i = 0; i < size; ++i)
        points -= detail::is_low_surrogate(from[i]) ? 1 : 0;
    return points;
}

inline std::size_t measure_32_to_8(const wchar_t* from, std::size_t size) {
    std::size_t bytes = 0;
    for (std::size_t i = 0; i < size; ++i)
        if (from[i] < unicode_end)
            bytes += 1u + (from[i] >= 0x80 ? 1u : 0u) + (from[i] >= 0x800 ? 1u : 0u) +
                     (from[i] >= 0x10000 ? 1u : 0u);
    return bytes;
}

inline std::size_t measure_32_to_16(const wchar_t* from, std::size_t size) {
    std::size_t units = size;
    for (std::size_t i = 0; i < size; ++i)
        units += from[i] >= 0xFFFF ? 1 : 0;
    return units;
}

// Whether a unit becomes one unit, see `convert_simple`.
inline bool is_simple(unsigned short unit, wchar_t) {
    return !detail::is_surrogate(unit);
}

inline bool is_simple(wchar_t point, char) {
    return static_cast<unsigned int>(point) < 0x80;
}

inline bool is_simple(wchar_t point, unsigned short) {
    return static_cast<unsigned int>(point) < 0xFFFF && !detail::is_surrogate(point);
}

template <typename Source, typename Target>
inline std::size_t simple(const Source* from, std::size_t size, Target* to) {
    std::size_t i = 0;
    for (; i < size && is_simple(from[i], Target()); ++i)
        to[i] = static_cast<Target>(from[i]);
    return i;
}

// The number of units that a vector form leaves to a loop before it tries again.
const std::size_t stretch = 64;

// Alternates from `done` on: `loop` converts a stretch, and `vectors` continues as far as it can.
template <typename Source, typename Target>
inline progress
take_turns(progress (*vectors)(const Source*, std::size_t, Target*, std::size_t, progress done),
           progress (*loop)(const Source*, std::size_t, std::size_t, Target*), const Source* from,
           std::size_t size, Target* to, std::size_t room, progress done) {
    for (;;) {
        const std::size_t left = size - done.read;
        const std::size_t stop = std::min(left, stretch);
        const progress some = loop(from + done.read, left, stop, to + done.written);
        done.read += some.read;
        done.written += some.written;
        if (some.read < stop || done.read >= size)
            return done;
        done = vectors(from, size, to, room, done);
        if (done.read == size)
            return done;
    }
}

// A whole conversion from both. Vectors alone convert nearly every string, so the turns are apart.
template <typename Source, typename Target,
          progress (*Vectors)(const Source*, std::size_t, Target*, std::size_t, progress),
          progress (*Loop)(const Source*, std::size_t, std::size_t, Target*)>
inline progress convert_by(const Source* from, std::size_t size, Target* to, std::size_t room) {
    const progress done = Vectors(from, size, to, room, {0, 0});
    if (done.read == size)
        return done;
    return take_turns(Vectors, Loop, from, size, to, room, done);
}

// Converts ASCII one word at a time.
template <typename Target>
inline std::size_t simple(const unsigned char* from, std::size_t size, Target* to) {
    std::size_t i = 0;
    for (; size - i >= 8 && detail::all_ascii(from + i); i += 8)
        detail::widen(from + i, to + i);
    for (; i < size && from[i] < 0x80; ++i)
        to[i] = from[i];
    return i;
}

inline std::size_t simple(const unsigned short* from, std::size_t size, char* to) {
    std::size_t i = 0;
    for (; size - i >= 4 && detail::all_ascii(from + i); i += 4)
        detail::narrow(from + i, to + i);
    for (; i < size && from[i] < 0x80; ++i)
        to[i] = static_cast<char>(from[i]);
    return i;
}

// The same, made from a vector loop that stops before the first unit that is not simple.
template <typename Source, typename Target,
          progress (*Vectors)(const Source*, std::size_t, Target*, std::size_t, progress)>
inline std::size_t simple_by(const Source* from, std::size_t size, Target* to) {
    const std::size_t done = Vectors(from, size, to, size, {0, 0}).read;
    return done + simple(from + done, size - done, to + done);
}

}  // namespace loops
}  // namespace kernels
}  // namespace strings
}  // namespace TOVA_2_18
