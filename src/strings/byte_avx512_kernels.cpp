// The AVX-512 form, with VBMI. It maps case by any table: the 256 entries are packed into four
// vectors, in which a permutation looks up 64 bytes at once.
#include "strings/byte_kernels.hpp"

#if defined(__x86_64__)

#include "strings/byte_loops.hpp"

#include <immintrin.h>

// The headers of g++ 12 begin some intrinsics with a value that they never read.
#if !defined(__clang__)
#pragma GCC diagnostic ignored "-Wmaybe-uninitialized"
#pragma GCC diagnostic ignored "-Wuninitialized"
#endif

#define TOVA_AVX512                                                                                \
    __attribute__((target("avx512f,avx512bw,avx512dq,avx512vl,avx512vbmi,bmi,bmi2")))
#define TOVA_AVX512_INLINE TOVA_AVX512 __attribute__((always_inline)) inline

namespace TOVA_2_18 {
namespace strings {
namespace kernels {

namespace {

TOVA_AVX512_INLINE __mmask64 lowest(std::size_t bits) {
    return _bzhi_u64(~std::uint64_t(0), static_cast<unsigned int>(bits));
}

TOVA_AVX512_INLINE __m512i load(const char* from, std::size_t left) {
    return left >= 64 ? _mm512_loadu_si512(from) : _mm512_maskz_loadu_epi8(lowest(left), from);
}

// The low bits of 64 entries.
TOVA_AVX512_INLINE __m512i pack(const int* entries) {
    const __m512i bytes = _mm512_castsi128_si512(_mm512_cvtepi32_epi8(_mm512_loadu_si512(entries)));
    const __m512i two =
        _mm512_inserti32x4(bytes, _mm512_cvtepi32_epi8(_mm512_loadu_si512(entries + 16)), 1);
    const __m512i three =
        _mm512_inserti32x4(two, _mm512_cvtepi32_epi8(_mm512_loadu_si512(entries + 32)), 2);
    return _mm512_inserti32x4(three, _mm512_cvtepi32_epi8(_mm512_loadu_si512(entries + 48)), 3);
}

// The bytes below 0x80 have the entries from 0 on, and the others have the entries below 0. ASCII
// strings need only the first half.
TOVA_AVX512 void map(const char* from, std::size_t size, char* to, const int* table) {
    const __m512i first = pack(table);
    const __m512i second = pack(table + 64);
    __m512i third = first;
    __m512i fourth = first;
    bool has_upper_half = false;
    for (std::size_t i = 0; i < size; i += 64) {
        const std::size_t left = size - i;
        const __m512i bytes = load(from + i, left);
        const __mmask64 high = _mm512_movepi8_mask(bytes);
        __m512i mapped = _mm512_permutex2var_epi8(first, bytes, second);
        if (high != 0) {
            if (!has_upper_half) {
                third = pack(table - 128);
                fourth = pack(table - 64);
                has_upper_half = true;
            }
            mapped =
                _mm512_mask_mov_epi8(mapped, high, _mm512_permutex2var_epi8(third, bytes, fourth));
        }
        if (left >= 64)
            _mm512_storeu_si512(to + i, mapped);
        else
            _mm512_mask_storeu_epi8(to + i, lowest(left), mapped);
    }
}

TOVA_AVX512 void find(const char* text, std::size_t size, char first, char last,
                      std::size_t distance, std::uint64_t* masks) {
    const __m512i firsts = _mm512_set1_epi8(first);
    const __m512i lasts = _mm512_set1_epi8(last);
    std::size_t i = 0;
    for (; size - i >= 64; i += 64) {
        const __mmask64 found = _mm512_cmpeq_epi8_mask(_mm512_loadu_si512(text + i), firsts);
        masks[i / 64] =
            _mm512_mask_cmpeq_epi8_mask(found, _mm512_loadu_si512(text + i + distance), lasts);
    }
    if (i < size) {
        const std::size_t left = size - i;
        const __mmask64 found =
            _mm512_mask_cmpeq_epi8_mask(lowest(left), load(text + i, left), firsts);
        masks[i / 64] = _mm512_mask_cmpeq_epi8_mask(found, load(text + i + distance, left), lasts);
    }
}

}  // namespace

const byte_form bytes_avx512 = {map, find};

}  // namespace kernels
}  // namespace strings
}  // namespace TOVA_2_18

#endif
