// The SSE2 form, for every 64-bit x86 processor. It maps case only by tables that change nothing
// but the letters of ASCII.
#include "strings/byte_kernels.hpp"

#if defined(__x86_64__)

#include "strings/byte_loops.hpp"

#include <emmintrin.h>

namespace TOVA_2_18 {
namespace strings {
namespace kernels {

namespace {

inline __m128i load(const char* from) {
    return _mm_loadu_si128(reinterpret_cast<const __m128i*>(from));
}

// Adds `change` to the bytes from `first` to `first` + 25, which are all above 0.
void map_letters(const char* from, std::size_t size, char* to, char first, int change) {
    const __m128i below = _mm_set1_epi8(static_cast<char>(first - 1));
    const __m128i above = _mm_set1_epi8(static_cast<char>(first + 26));
    const __m128i changes = _mm_set1_epi8(static_cast<char>(change));
    for (std::size_t i = 0; i < size; i += 16) {
        const __m128i bytes = load(from + i);
        const __m128i letters =
            _mm_and_si128(_mm_cmpgt_epi8(bytes, below), _mm_cmpgt_epi8(above, bytes));
        _mm_storeu_si128(reinterpret_cast<__m128i*>(to + i),
                         _mm_add_epi8(bytes, _mm_and_si128(letters, changes)));
    }
}

// With any other table, it looks up each byte.
void map(const char* from, std::size_t size, char* to, const int* table) {
    std::size_t done = 0;
    if (size >= loops::worth_comparing) {
        const std::size_t whole = size - size % 16;
        if (loops::maps_letters(table, 'A', 'a' - 'A')) {
            map_letters(from, whole, to, 'A', 'a' - 'A');
            done = whole;
        } else if (loops::maps_letters(table, 'a', 'A' - 'a')) {
            map_letters(from, whole, to, 'a', 'A' - 'a');
            done = whole;
        }
    }
    loops::map(from + done, size - done, to + done, table);
}

void find(const char* text, std::size_t size, char first, char last, std::size_t distance,
          std::uint64_t* masks) {
    const __m128i firsts = _mm_set1_epi8(first);
    const __m128i lasts = _mm_set1_epi8(last);
    std::size_t i = 0;
    for (; size - i >= 64; i += 64) {
        std::uint64_t mask = 0;
        for (std::size_t part = 0; part < 64; part += 16) {
            const __m128i both =
                _mm_and_si128(_mm_cmpeq_epi8(load(text + i + part), firsts),
                              _mm_cmpeq_epi8(load(text + i + part + distance), lasts));
            mask |= std::uint64_t(static_cast<unsigned int>(_mm_movemask_epi8(both))) << part;
        }
        masks[i / 64] = mask;
    }
    loops::find(text + i, size - i, first, last, distance, masks + i / 64);
}

}  // namespace

const byte_form bytes_sse2 = {map, find};

}  // namespace kernels
}  // namespace strings
}  // namespace TOVA_2_18

#endif
