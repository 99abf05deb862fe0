// The AVX2 form.
//
//   to and from UTF-8        32 bytes of the source at a time, where all of them are ASCII
//   UTF-16, UTF-32           the same, where none needs a pair
//   anything else            `loops::take_turns`: the plain loops of unicode_loops.hpp convert a
//                            stretch, and the vectors try again after it
//
// The same vector loops are the kernels for simple units, with a plain loop for the rest.
#include "strings/unicode_kernels.hpp"

#if defined(__x86_64__)

#include "strings/unicode_loops.hpp"

#include <immintrin.h>

#define TOVA_AVX2 __attribute__((target("avx2,bmi,bmi2,popcnt")))
#define TOVA_AVX2_INLINE TOVA_AVX2 __attribute__((always_inline)) inline

namespace TOVA_2_18 {
namespace strings {
namespace kernels {

namespace {

TOVA_AVX2_INLINE __m256i load(const void* from) {
    return _mm256_loadu_si256(static_cast<const __m256i*>(from));
}

TOVA_AVX2_INLINE void store(void* to, __m256i units) {
    _mm256_storeu_si256(static_cast<__m256i*>(to), units);
}

TOVA_AVX2_INLINE __m256i all_units(int value) {
    return _mm256_set1_epi16(static_cast<short>(value));
}

// The pack instructions work in each half of the vector; this puts their result in order.
TOVA_AVX2_INLINE __m256i in_order(__m256i packed) {
    return _mm256_permute4x64_epi64(packed, 0xD8);
}

TOVA_AVX2 progress widen_8_to_16(const unsigned char* from, std::size_t size, unsigned short* to,
                                 std::size_t, progress done) {
    for (; size - done.read >= 32; done.read += 32, done.written += 32) {
        const __m256i bytes = load(from + done.read);
        if (_mm256_movemask_epi8(bytes) != 0)
            break;
        unsigned short* const at = to + done.written;
        store(at, _mm256_cvtepu8_epi16(_mm256_castsi256_si128(bytes)));
        store(at + 16, _mm256_cvtepu8_epi16(_mm256_extracti128_si256(bytes, 1)));
    }
    return done;
}

TOVA_AVX2 progress widen_8_to_32(const unsigned char* from, std::size_t size, wchar_t* to,
                                 std::size_t, progress done) {
    for (; size - done.read >= 32; done.read += 32, done.written += 32) {
        const __m256i bytes = load(from + done.read);
        if (_mm256_movemask_epi8(bytes) != 0)
            break;
        wchar_t* const at = to + done.written;
        const __m128i low = _mm256_castsi256_si128(bytes);
        const __m128i high = _mm256_extracti128_si256(bytes, 1);
        store(at, _mm256_cvtepu8_epi32(low));
        store(at + 8, _mm256_cvtepu8_epi32(_mm_srli_si128(low, 8)));
        store(at + 16, _mm256_cvtepu8_epi32(high));
        store(at + 24, _mm256_cvtepu8_epi32(_mm_srli_si128(high, 8)));
    }
    return done;
}

TOVA_AVX2 progress narrow_16_to_8(const unsigned short* from, std::size_t size, char* to,
                                  std::size_t, progress done) {
    for (; size - done.read >= 32; done.read += 32, done.written += 32) {
        const __m256i first = load(from + done.read);
        const __m256i second = load(from + done.read + 16);
        if (!_mm256_testz_si256(_mm256_or_si256(first, second), all_units(0xFF80)))
            break;
        store(to + done.written, in_order(_mm256_packus_epi16(first, second)));
    }
    return done;
}

TOVA_AVX2 progress widen_16_to_32(const unsigned short* from, std::size_t size, wchar_t* to,
                                  std::size_t, progress done) {
    for (; size - done.read >= 16; done.read += 16, done.written += 16) {
        const __m256i units = load(from + done.read);
        const __m256i kind = _mm256_and_si256(units, all_units(0xF800));
        if (_mm256_movemask_epi8(_mm256_cmpeq_epi16(kind, all_units(0xD800))) != 0)
            break;
        wchar_t* const at = to + done.written;
        store(at, _mm256_cvtepu16_epi32(_mm256_castsi256_si128(units)));
        store(at + 8, _mm256_cvtepu16_epi32(_mm256_extracti128_si256(units, 1)));
    }
    return done;
}

TOVA_AVX2 progress narrow_32_to_8(const wchar_t* from, std::size_t size, char* to, std::size_t,
                                  progress done) {
    const __m256i order = _mm256_setr_epi32(0, 4, 1, 5, 2, 6, 3, 7);
    for (; size - done.read >= 32; done.read += 32, done.written += 32) {
        const wchar_t* const at = from + done.read;
        const __m256i a = load(at);
        const __m256i b = load(at + 8);
        const __m256i c = load(at + 16);
        const __m256i d = load(at + 24);
        const __m256i any = _mm256_or_si256(_mm256_or_si256(a, b), _mm256_or_si256(c, d));
        if (!_mm256_testz_si256(any, _mm256_set1_epi32(~0x7F)))
            break;
        const __m256i bytes =
            _mm256_packus_epi16(_mm256_packs_epi32(a, b), _mm256_packs_epi32(c, d));
        store(to + done.written, _mm256_permutevar8x32_epi32(bytes, order));
    }
    return done;
}

// Whether eight values are below 0xFFFF and not surrogates.
TOVA_AVX2_INLINE bool is_one_unit_each(__m256i points) {
    const __m256i kind = _mm256_and_si256(points, _mm256_set1_epi32(static_cast<int>(0xFFFFF800)));
    const __m256i surrogates = _mm256_cmpeq_epi32(kind, _mm256_set1_epi32(0xD800));
    const __m256i last = _mm256_cmpeq_epi32(points, _mm256_set1_epi32(0xFFFF));
    const __m256i wide = _mm256_srli_epi32(points, 16);
    const __m256i any = _mm256_or_si256(_mm256_or_si256(surrogates, last), wide);
    return _mm256_testz_si256(any, any) != 0;
}

TOVA_AVX2 progress narrow_32_to_16(const wchar_t* from, std::size_t size, unsigned short* to,
                                   std::size_t, progress done) {
    for (; size - done.read >= 16; done.read += 16, done.written += 16) {
        const __m256i first = load(from + done.read);
        const __m256i second = load(from + done.read + 8);
        if (!is_one_unit_each(first) || !is_one_unit_each(second))
            break;
        store(to + done.written, in_order(_mm256_packus_epi32(first, second)));
    }
    return done;
}

TOVA_AVX2_INLINE std::size_t count(__m256i masks) {
    return static_cast<std::size_t>(
        _mm_popcnt_u32(static_cast<unsigned int>(_mm256_movemask_epi8(masks))));
}

TOVA_AVX2 std::size_t measure_8_to_16(const unsigned char* from, std::size_t size) {
    const __m256i four = _mm256_set1_epi8(static_cast<char>(0xF0));
    std::size_t units = 0;
    std::size_t i = 0;
    for (; size - i >= 32; i += 32) {
        const __m256i bytes = load(from + i);
        units += count(_mm256_cmpgt_epi8(bytes, _mm256_set1_epi8(static_cast<char>(0xBF)))) +
                 count(_mm256_cmpeq_epi8(_mm256_max_epu8(bytes, four), bytes));
    }
    return units + loops::measure_8_to_16(from + i, size - i);
}

TOVA_AVX2 std::size_t measure_8_to_32(const unsigned char* from, std::size_t size) {
    std::size_t points = 0;
    std::size_t i = 0;
    for (; size - i >= 32; i += 32)
        points +=
            count(_mm256_cmpgt_epi8(load(from + i), _mm256_set1_epi8(static_cast<char>(0xBF))));
    return points + loops::measure_8_to_32(from + i, size - i);
}

TOVA_AVX2 std::size_t measure_16_to_8(const unsigned short* from, std::size_t size) {
    const __m256i zero = _mm256_setzero_si256();
    std::size_t bytes = 0;
    std::size_t i = 0;
    for (; size - i >= 16; i += 16) {
        const __m256i units = load(from + i);
        const __m256i kind = _mm256_and_si256(units, all_units(0xF800));
        // A mask counts each unit twice.
        const std::size_t saved =
            count(_mm256_cmpeq_epi16(_mm256_and_si256(units, all_units(0xFF80)), zero)) +
            count(_mm256_cmpeq_epi16(kind, zero)) +
            count(_mm256_cmpeq_epi16(kind, all_units(0xD800)));
        bytes += 48 - saved / 2;
    }
    return bytes + loops::measure_16_to_8(from + i, size - i);
}

TOVA_AVX2 std::size_t measure_16_to_32(const unsigned short* from, std::size_t size) {
    std::size_t points = 0;
    std::size_t i = 0;
    for (; size - i >= 16; i += 16) {
        const __m256i kind = _mm256_and_si256(load(from + i), all_units(0xFC00));
        points += 16 - count(_mm256_cmpeq_epi16(kind, all_units(0xDC00))) / 2;
    }
    return points + loops::measure_16_to_32(from + i, size - i);
}

// The values among eight that are above a limit, as signed ones.
TOVA_AVX2_INLINE std::size_t count_above(__m256i points, int limit) {
    return count(_mm256_cmpgt_epi32(points, _mm256_set1_epi32(limit))) / 4;
}

TOVA_AVX2 std::size_t measure_32_to_8(const wchar_t* from, std::size_t size) {
    std::size_t bytes = 0;
    std::size_t i = 0;
    for (; size - i >= 8; i += 8) {
        const __m256i points = load(from + i);
        bytes += 8 + count_above(points, 0x7F) + count_above(points, 0x7FF) +
                 count_above(points, 0xFFFF) - 4 * count_above(points, loops::unicode_end - 1);
    }
    return bytes + loops::measure_32_to_8(from + i, size - i);
}

TOVA_AVX2 std::size_t measure_32_to_16(const wchar_t* from, std::size_t size) {
    std::size_t units = 0;
    std::size_t i = 0;
    for (; size - i >= 8; i += 8)
        units += 8 + count_above(load(from + i), 0xFFFE);
    return units + loops::measure_32_to_16(from + i, size - i);
}

}  // namespace

const unicode_form unicode_avx2 = {
    {measure_8_to_16,
     loops::convert_by<unsigned char, unsigned short, widen_8_to_16, loops::utf8_to_utf16>,
     loops::simple_by<unsigned char, unsigned short, widen_8_to_16>},
    {measure_8_to_32,
     loops::convert_by<unsigned char, wchar_t, widen_8_to_32, loops::utf8_to_utf32>,
     loops::simple_by<unsigned char, wchar_t, widen_8_to_32>},
    {measure_16_to_8, loops::convert_by<unsigned short, char, narrow_16_to_8, loops::utf16_to_utf8>,
     loops::simple_by<unsigned short, char, narrow_16_to_8>},
    {measure_16_to_32,
     loops::convert_by<unsigned short, wchar_t, widen_16_to_32, loops::utf16_to_utf32>,
     loops::simple_by<unsigned short, wchar_t, widen_16_to_32>},
    {measure_32_to_8, loops::convert_by<wchar_t, char, narrow_32_to_8, loops::utf32_to_utf8>,
     loops::simple_by<wchar_t, char, narrow_32_to_8>},
    {measure_32_to_16,
     loops::convert_by<wchar_t, unsigned short, narrow_32_to_16, loops::utf32_to_utf16>,
     loops::simple_by<wchar_t, unsigned short, narrow_32_to_16>},
};

}  // namespace kernels
}  // namespace strings
}  // namespace TOVA_2_18

#endif
