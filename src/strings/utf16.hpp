/// @file
/// Surrogates: how two 16-bit units make one code point.
///
///     unsigned int point = detail::combine(0xD83D, 0xDE00);  // 0x1F600
///
/// A pair is a high surrogate followed by a low one. Every other unit is a code point of its own,
/// and a surrogate without its partner is invalid. Pure functions; any number of threads may call
/// them.
#pragma once

#include <cstddef>

namespace TOVA_2_18 {
namespace strings {
namespace detail {

inline bool is_high_surrogate(unsigned int unit) {
    return unit >= 0xD800 && unit <= 0xDBFF;
}

inline bool is_low_surrogate(unsigned int unit) {
    return unit >= 0xDC00 && unit <= 0xDFFF;
}

inline bool is_surrogate(int value) {
    return value >= 0xD800 && value <= 0xDFFF;
}

// The code point of a pair; 0x35FDC00 is (0xD800 << 10) + 0xDC00 - 0x10000.
inline unsigned int combine(unsigned int high, unsigned int low) {
    return (high << 10) + low - 0x35FDC00;
}

// Reads the code point that begins at `units`, of which `left` remain and at least one, into
// `point`. Returns the number of units that it takes, or 0 for a surrogate without its partner.
inline std::size_t read_units(const unsigned short* units, std::size_t left, unsigned int& point) {
    point = units[0];
    if (!is_surrogate(static_cast<int>(point)))
        return 1;
    if (is_low_surrogate(point) || left < 2 || !is_low_surrogate(units[1]))
        return 0;
    point = combine(point, units[1]);
    return 2;
}

}  // namespace detail
}  // namespace strings
}  // namespace TOVA_2_18
