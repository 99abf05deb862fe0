// The AVX2 form. It maps case only by tables that change nothing but the letters of ASCII.
#include "strings/byte_kernels.hpp"

#if defined(__x86_64__)

#include "strings/byte_loops.hpp"

#include <immintrin.h>

#define TOVA_AVX2 __attribute__((target("avx2")))

namespace TOVA_2_18 {
namespace strings {
namespace kernels {

namespace {

TOVA_AVX2 inline __m256i load(const char* from) {
    return _mm256_loadu_si256(reinterpret_cast<const __m256i*>(from));
}

// Adds `change` to the bytes from `first` to `first` + 25, which are all above 0.
TOVA_AVX2 void map_letters(const char* from, std::size_t size, char* to, char first, int change) {
    const __m256i below = _mm256_set1_epi8(static_cast<char>(first - 1));
    const __m256i above = _mm256_set1_epi8(static_cast<char>(first + 26));
    const __m256i changes = _mm256_set1_epi8(static_cast<char>(change));
    for (std::size_t i = 0; i < size; i += 32) {
        const __m256i bytes = load(from + i);
        const __m256i letters =
            _mm256_and_si256(_mm256_cmpgt_epi8(bytes, below), _mm256_cmpgt_epi8(above, bytes));
        _mm256_storeu_si256(reinterpret_cast<__m256i*>(to + i),
                            _mm256_add_epi8(bytes, _mm256_and_si256(letters, changes)));
    }
}

// With any other table, it looks up each byte.
void map(const char* from, std::size_t size, char* to, const int* table) {
    std::size_t done = 0;
    if (size >= loops::worth_comparing) {
        const std::size_t whole = size - size % 32;
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

TOVA_AVX2 void find(const char* text, std::size_t size, char first, char last, std::size_t distance,
                    std::uint64_t* masks) {
    const __m256i firsts = _mm256_set1_epi8(first);
    const __m256i lasts = _mm256_set1_epi8(last);
    std::size_t i = 0;
    for (; size - i >= 64; i += 64) {
        std::uint64_t mask = 0;
        for (std::size_t part = 0; part < 64; part += 32) {
            const __m256i both =
                _mm256_and_si256(_mm256_cmpeq_epi8(load(text + i + part), firsts),
                                 _mm256_cmpeq_epi8(load(text + i + part + distance), lasts));
            mask |= std::uint64_t(static_cast<unsigned int>(_mm256_movemask_epi8(both))) << part;
        }
        masks[i / 64] = mask;
    }
    loops::find(text + i, size - i, first, last, distance, masks + i / 64);
}

}  // namespace

const byte_form bytes_avx2 = {map, find};

}  // namespace kernels
}  // namespace strings
}  // namespace TOVA_2_18

#endif
