// The AVX-512 form, with VBMI. It maps case by any table:
//
//   a table that changes only the letters of ASCII   one comparison finds the letters among 64
//   bytes any other                                        the 256 entries are packed into four
//   vectors,
//                                                    in which a permutation looks up 64 bytes
//
// Each call compares the table's entries, because a table in the same memory may have changed.
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

TOVA_AVX512_INLINE void store(char* to, std::size_t left, __m512i bytes) {
    if (left >= 64)
        _mm512_storeu_si512(to, bytes);
    else
        _mm512_mask_storeu_epi8(to, lowest(left), bytes);
}

// The bytes below 0x80 have the entries from 0 on, and the others have the entries below 0. ASCII
// strings need only the first half.
TOVA_AVX512 void map_by_table(const char* from, std::size_t size, char* to, const int* table) {
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
        store(to + i, left, mapped);
    }
}

// The first 128 entries of a table that maps the letters of ASCII from `first` on.
struct ascii_table {
    alignas(64) int entries[128];

    constexpr ascii_table(int first, int change) : entries() {
        for (int i = 0; i < 128; ++i)
            entries[i] = i + (i >= first && i < first + 26 ? change : 0);
    }
};

constexpr ascii_table lower_table('A', 'a' - 'A');
constexpr ascii_table upper_table('a', 'A' - 'a');

TOVA_AVX512_INLINE __m512i differences(const int* table, const ascii_table& expected, int from) {
    const __m512i first = _mm512_xor_si512(_mm512_loadu_si512(table + from),
                                           _mm512_load_si512(expected.entries + from));
    const __m512i second = _mm512_xor_si512(_mm512_loadu_si512(table + from + 16),
                                            _mm512_load_si512(expected.entries + from + 16));
    return _mm512_or_si512(first, second);
}

TOVA_AVX512_INLINE bool maps_ascii_as(const int* table, const ascii_table& expected) {
    const __m512i all = _mm512_or_si512(
        _mm512_or_si512(differences(table, expected, 0), differences(table, expected, 32)),
        _mm512_or_si512(differences(table, expected, 64), differences(table, expected, 96)));
    return _mm512_test_epi32_mask(all, all) == 0;
}

// Whether no byte from 0x80 on is changed.
TOVA_AVX512 bool keeps_upper_half(const int* table) {
    bool keeps = true;
    for (int byte = -128; byte < 0; byte += 16) {
        const __m128i entries = _mm512_cvtepi32_epi8(_mm512_loadu_si512(table + byte));
        const __m128i bytes =
            _mm_add_epi8(_mm_set1_epi8(static_cast<char>(byte)),
                         _mm_setr_epi8(0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15));
        keeps = keeps && _mm_cmpneq_epi8_mask(entries, bytes) == 0;
    }
    return keeps;
}

struct letters {
    __m512i first;
    __m512i change;
};

TOVA_AVX512_INLINE __m512i mapped(__m512i bytes, const letters& by) {
    const __mmask64 found =
        _mm512_cmplt_epu8_mask(_mm512_sub_epi8(bytes, by.first), _mm512_set1_epi8(26));
    return _mm512_mask_add_epi8(bytes, found, bytes, by.change);
}

// Maps ASCII up to the first block with another byte, or all bytes. Returns the position. To map a
// letter twice changes nothing, so blocks may overlap.
TOVA_AVX512_INLINE std::size_t map_letters(const char* from, std::size_t size, char* to,
                                           const letters& by, bool is_any_byte_kept) {
    std::size_t i = 0;
    while (size - i >= 256) {
        const __m512i a = _mm512_loadu_si512(from + i);
        const __m512i b = _mm512_loadu_si512(from + i + 64);
        const __m512i c = _mm512_loadu_si512(from + i + 128);
        const __m512i d = _mm512_loadu_si512(from + i + 192);
        if (!is_any_byte_kept &&
            _mm512_movepi8_mask(_mm512_or_si512(_mm512_or_si512(a, b), _mm512_or_si512(c, d))) != 0)
            return i;
        _mm512_storeu_si512(to + i, mapped(a, by));
        _mm512_storeu_si512(to + i + 64, mapped(b, by));
        _mm512_storeu_si512(to + i + 128, mapped(c, by));
        _mm512_storeu_si512(to + i + 192, mapped(d, by));
        // A store that crosses cache lines takes twice the time.
        i = i == 0 ? 256 - reinterpret_cast<std::uintptr_t>(to) % 64 : i + 256;
    }
    for (; i < size; i += 64) {
        const std::size_t left = size - i;
        const __m512i bytes = load(from + i, left);
        if (!is_any_byte_kept && _mm512_movepi8_mask(bytes) != 0)
            return i;
        store(to + i, left, mapped(bytes, by));
    }
    return size;
}

TOVA_AVX512 void map(const char* from, std::size_t size, char* to, const int* table) {
    const bool to_lower = table[int{'A'}] == 'a';
    if (!maps_ascii_as(table, to_lower ? lower_table : upper_table))
        return map_by_table(from, size, to, table);
    const letters by = {_mm512_set1_epi8(to_lower ? 'A' : 'a'),
                        _mm512_set1_epi8(to_lower ? 'a' - 'A' : 'A' - 'a')};
    const std::size_t i = map_letters(from, size, to, by, false);
    if (i == size)
        return;
    if (keeps_upper_half(table))
        map_letters(from + i, size - i, to + i, by, true);
    else
        map_by_table(from + i, size - i, to + i, table);
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
