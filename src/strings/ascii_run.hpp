/// @file
/// Eight bytes at a time, for the runs of ASCII that most strings consist of.
///
///     if (left >= 8 && detail::all_ascii(bytes))
///         detail::widen(bytes, units);  // eight characters at once
///
/// The words are read in host order, least significant byte first. Pure functions; any number of
/// threads may call them.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>

namespace TOVA_2_18 {
namespace strings {
namespace detail {

inline std::uint64_t load_word(const void* text) {
    std::uint64_t word;
    std::memcpy(&word, text, sizeof word);
    return word;
}

inline bool all_ascii(const unsigned char* eight_units) {
    return (load_word(eight_units) & 0x8080808080808080u) == 0;
}

inline bool all_ascii(const unsigned short* four_units) {
    return (load_word(four_units) & 0xFF80FF80FF80FF80u) == 0;
}

// Selects the bytes among eight whose top two bits are not those of a continuation.
inline std::size_t count_leads(const unsigned char* eight_bytes) {
    const std::uint64_t word = load_word(eight_bytes);
    const std::uint64_t continuations = word >> 7 & ~word >> 6 & 0x0101010101010101u;
    return 8 - (continuations * 0x0101010101010101u >> 56);
}

// Four bytes, in the low half of `bytes`, widened to four 16-bit units.
inline std::uint64_t spread(std::uint64_t bytes) {
    bytes = (bytes | bytes << 16) & 0x0000FFFF0000FFFFu;
    return (bytes | bytes << 8) & 0x00FF00FF00FF00FFu;
}

// Eight units of ASCII to a wider unit.
inline void widen(const unsigned char* from, unsigned short* to) {
    const std::uint64_t bytes = load_word(from);
    const std::uint64_t units[2] = {spread(bytes & 0xFFFFFFFFu), spread(bytes >> 32)};
    std::memcpy(to, units, sizeof units);
}

inline void widen(const unsigned char* from, wchar_t* to) {
    for (int i = 0; i < 8; ++i)
        to[i] = from[i];
}

// Four units of ASCII to bytes.
inline void narrow(const unsigned short* from, char* to) {
    std::uint64_t units = load_word(from);
    units = (units | units >> 8) & 0x0000FFFF0000FFFFu;
    units |= units >> 16;
    std::memcpy(to, &units, 4);
}

}  // namespace detail
}  // namespace strings
}  // namespace TOVA_2_18
