/// @file
/// Compares short ranges of bytes, such as names, without a call.
///
///     have_equal_bytes(open.data(), name, size)
///
/// A pure function; any number of threads may call it.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>

namespace TOVA_2_18 {
namespace parser {
namespace detail {

/// Whether two ranges of bytes are equal. Most names are too short for the call of a function to
/// pay off.
inline bool have_equal_bytes(const char* a, const char* b, std::size_t size) {
    if (size > 16)
        return std::memcmp(a, b, size) == 0;
    // Two words, which overlap unless there are twice as many bytes.
    if (size >= 8) {
        std::uint64_t words[4];
        std::memcpy(&words[0], a, 8);
        std::memcpy(&words[1], b, 8);
        std::memcpy(&words[2], a + size - 8, 8);
        std::memcpy(&words[3], b + size - 8, 8);
        return ((words[0] ^ words[1]) | (words[2] ^ words[3])) == 0;
    }
    if (size >= 4) {
        std::uint32_t words[4];
        std::memcpy(&words[0], a, 4);
        std::memcpy(&words[1], b, 4);
        std::memcpy(&words[2], a + size - 4, 4);
        std::memcpy(&words[3], b + size - 4, 4);
        return ((words[0] ^ words[1]) | (words[2] ^ words[3])) == 0;
    }
    for (std::size_t i = 0; i < size; ++i)
        if (a[i] != b[i])
            return false;
    return true;
}

}  // namespace detail
}  // namespace parser
}  // namespace TOVA_2_18
