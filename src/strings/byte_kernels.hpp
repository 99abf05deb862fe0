/// @file
/// The loops over single bytes: case mapping by a table, and the search for a short string.
///
///     kernels::bytes().map(from, size, to, table);  // to[i] = table[from[i]]
///
/// Each instruction set has its own form, in a separate file; the others are compared with the
/// portable loops. A kernel accepts any bytes and any size and accesses nothing past them. Kernels
/// share nothing; any number of threads may run them.
#pragma once

#include "detail/cpu_features.hpp"

#include <cstddef>
#include <cstdint>

namespace TOVA_2_18 {
namespace strings {
namespace kernels {

struct byte_form {
    // Maps each byte to the low bits of its entry. The index is the byte as a signed number. `to`
    // may be `from`.
    void (*map)(const char* from, std::size_t size, char* to, const int* table);

    // Sets bit i % 64 of masks[i / 64] for each i below `size` with text[i] == first and text[i +
    // distance] == last, and clears all other bits of these masks. Reads `distance` bytes past
    // `size`.
    void (*find)(const char* text, std::size_t size, char first, char last, std::size_t distance,
                 std::uint64_t* masks);
};

extern const byte_form bytes_portable;
#if defined(__x86_64__)
extern const byte_form bytes_sse2;
extern const byte_form bytes_avx2;
extern const byte_form bytes_avx512;
#endif

// The forms by their level.
#if defined(__x86_64__)
constexpr const byte_form* byte_forms[] = {&bytes_portable, &bytes_sse2, &bytes_avx2,
                                           &bytes_avx512};
#else
constexpr const byte_form* byte_forms[] = {&bytes_portable};
#endif

// The form for a level.
inline const byte_form& bytes(TOVA_2_18::detail::cpu_form level) {
    return *byte_forms[static_cast<int>(level)];
}

// The form for the processor that runs the program.
inline const byte_form& bytes() {
    return bytes(TOVA_2_18::detail::cpu_level());
}

}  // namespace kernels
}  // namespace strings
}  // namespace TOVA_2_18
