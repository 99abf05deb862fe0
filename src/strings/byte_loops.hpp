/// @file
/// The portable loops, which handle one byte at a time. The vector forms use them for the remaining
/// bytes.
///
///     kernels::loops::map(from, size, to, table);
///
/// Pure functions; any number of threads may run them.
#pragma once

#include <cstddef>
#include <cstdint>

namespace TOVA_2_18 {
namespace strings {
namespace kernels {
namespace loops {

inline void map(const char* from, std::size_t size, char* to, const int* table) {
    for (std::size_t i = 0; i < size; ++i)
        to[i] = static_cast<char>(table[static_cast<signed char>(from[i])]);
}

inline void find(const char* text, std::size_t size, char first, char last, std::size_t distance,
                 std::uint64_t* masks) {
    for (std::size_t i = 0; i < size; ++i) {
        if (i % 64 == 0)
            masks[i / 64] = 0;
        if (text[i] == first && text[i + distance] == last)
            masks[i / 64] |= std::uint64_t(1) << i % 64;
    }
}

// The effect of a table that maps only ASCII letters, such as that of the locale in which a process
// starts: it adds `change` to the bytes from `first` to `first` + 25.
inline bool maps_letters(const int* table, char first, int change) {
    unsigned int differences = 0;
    for (int byte = -128; byte < 128; ++byte) {
        const int expected = byte + (byte >= first && byte < first + 26 ? change : 0);
        differences |= static_cast<unsigned int>(table[byte] ^ expected) & 0xFF;
    }
    return differences == 0;
}

// The size from which checking the whole table pays off.
const std::size_t worth_comparing = 512;

}  // namespace loops
}  // namespace kernels
}  // namespace strings
}  // namespace TOVA_2_18
