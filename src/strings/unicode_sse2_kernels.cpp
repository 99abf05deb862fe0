// The SSE2 form, for every 64-bit x86 processor.
//
//   to and from UTF-8        16 bytes of the source at a time, where all of them are ASCII
//   UTF-16, UTF-32           the same, where none needs a pair
//   anything else            `loops::take_turns`: the plain loops of unicode_loops.hpp convert a
//                            stretch, and the vectors try again after it
//
// The same vector loops are the kernels for simple units, with a plain loop for the rest.
#include "strings/unicode_kernels.hpp"

#if defined(__x86_64__)

#include "strings/unicode_loops.hpp"

#include <emmintrin.h>

namespace TOVA_2_18 {
namespace strings {
namespace kernels {

namespace {

inline __m128i load(const void* from) {
    return _mm_loadu_si128(static_cast<const __m128i*>(from));
}

inline void store(void* to, __m128i units) {
    _mm_storeu_si128(static_cast<__m128i*>(to), units);
}

inline bool is_zero(__m128i units) {
    return _mm_movemask_epi8(_mm_cmpeq_epi8(units, _mm_setzero_si128())) == 0xFFFF;
}

inline __m128i all_units(int value) {
    return _mm_set1_epi16(static_cast<short>(value));
}

progress widen_8_to_16(const unsigned char* from, std::size_t size, unsigned short* to, std::size_t,
                       progress done) {
    for (; size - done.read >= 16; done.read += 16, done.written += 16) {
        const __m128i bytes = load(from + done.read);
        if (_mm_movemask_epi8(bytes) != 0)
            break;
        store(to + done.written, _mm_unpacklo_epi8(bytes, _mm_setzero_si128()));
        store(to + done.written + 8, _mm_unpackhi_epi8(bytes, _mm_setzero_si128()));
    }
    return done;
}

progress widen_8_to_32(const unsigned char* from, std::size_t size, wchar_t* to, std::size_t,
                       progress done) {
    const __m128i zero = _mm_setzero_si128();
    for (; size - done.read >= 16; done.read += 16, done.written += 16) {
        const __m128i bytes = load(from + done.read);
        if (_mm_movemask_epi8(bytes) != 0)
            break;
        const __m128i low = _mm_unpacklo_epi8(bytes, zero);
        const __m128i high = _mm_unpackhi_epi8(bytes, zero);
        wchar_t* const at = to + done.written;
        store(at, _mm_unpacklo_epi16(low, zero));
        store(at + 4, _mm_unpackhi_epi16(low, zero));
        store(at + 8, _mm_unpacklo_epi16(high, zero));
        store(at + 12, _mm_unpackhi_epi16(high, zero));
    }
    return done;
}

progress narrow_16_to_8(const unsigned short* from, std::size_t size, char* to, std::size_t,
                        progress done) {
    for (; size - done.read >= 16; done.read += 16, done.written += 16) {
        const __m128i first = load(from + done.read);
        const __m128i second = load(from + done.read + 8);
        if (!is_zero(_mm_and_si128(_mm_or_si128(first, second), all_units(0xFF80))))
            break;
        store(to + done.written, _mm_packus_epi16(first, second));
    }
    return done;
}

progress widen_16_to_32(const unsigned short* from, std::size_t size, wchar_t* to, std::size_t,
                        progress done) {
    for (; size - done.read >= 8; done.read += 8, done.written += 8) {
        const __m128i units = load(from + done.read);
        const __m128i kind = _mm_and_si128(units, all_units(0xF800));
        if (_mm_movemask_epi8(_mm_cmpeq_epi16(kind, all_units(0xD800))) != 0)
            break;
        store(to + done.written, _mm_unpacklo_epi16(units, _mm_setzero_si128()));
        store(to + done.written + 4, _mm_unpackhi_epi16(units, _mm_setzero_si128()));
    }
    return done;
}

progress narrow_32_to_8(const wchar_t* from, std::size_t size, char* to, std::size_t,
                        progress done) {
    for (; size - done.read >= 16; done.read += 16, done.written += 16) {
        const wchar_t* const at = from + done.read;
        const __m128i a = load(at);
        const __m128i b = load(at + 4);
        const __m128i c = load(at + 8);
        const __m128i d = load(at + 12);
        const __m128i any = _mm_or_si128(_mm_or_si128(a, b), _mm_or_si128(c, d));
        if (!is_zero(_mm_and_si128(any, _mm_set1_epi32(~0x7F))))
            break;
        store(to + done.written, _mm_packus_epi16(_mm_packs_epi32(a, b), _mm_packs_epi32(c, d)));
    }
    return done;
}

// Whether four values are below 0xFFFF and not surrogates.
inline bool is_one_unit_each(__m128i points) {
    const __m128i kind = _mm_and_si128(points, _mm_set1_epi32(static_cast<int>(0xFFFFF800)));
    const __m128i surrogates = _mm_cmpeq_epi32(kind, _mm_set1_epi32(0xD800));
    const __m128i last = _mm_cmpeq_epi32(points, _mm_set1_epi32(0xFFFF));
    const __m128i wide = _mm_srli_epi32(points, 16);
    return is_zero(_mm_or_si128(_mm_or_si128(surrogates, last), wide));
}

progress narrow_32_to_16(const wchar_t* from, std::size_t size, unsigned short* to, std::size_t,
                         progress done) {
    for (; size - done.read >= 8; done.read += 8, done.written += 8) {
        __m128i first = load(from + done.read);
        __m128i second = load(from + done.read + 4);
        if (!is_one_unit_each(first) || !is_one_unit_each(second))
            break;
        // The signed pack preserves a unit whose sign was extended.
        first = _mm_srai_epi32(_mm_slli_epi32(first, 16), 16);
        second = _mm_srai_epi32(_mm_slli_epi32(second, 16), 16);
        store(to + done.written, _mm_packs_epi32(first, second));
    }
    return done;
}

// A mask of 0 or -1 for each byte, summed up.
inline std::size_t sum_of_bytes(__m128i masks) {
    const __m128i ones = _mm_sub_epi8(_mm_setzero_si128(), masks);
    const __m128i sums = _mm_sad_epu8(ones, _mm_setzero_si128());
    return static_cast<std::size_t>(_mm_cvtsi128_si64(sums) +
                                    _mm_cvtsi128_si64(_mm_unpackhi_epi64(sums, sums)));
}

std::size_t measure_8_to_16(const unsigned char* from, std::size_t size) {
    std::size_t units = 0;
    std::size_t i = 0;
    for (; size - i >= 16; i += 16) {
        const __m128i bytes = load(from + i);
        const __m128i leads = _mm_cmpgt_epi8(bytes, _mm_set1_epi8(static_cast<char>(0xBF)));
        const __m128i four = _mm_set1_epi8(static_cast<char>(0xF0));
        const __m128i pairs = _mm_cmpeq_epi8(_mm_max_epu8(bytes, four), bytes);
        units += sum_of_bytes(leads) + sum_of_bytes(pairs);
    }
    return units + loops::measure_8_to_16(from + i, size - i);
}

std::size_t measure_8_to_32(const unsigned char* from, std::size_t size) {
    std::size_t points = 0;
    std::size_t i = 0;
    for (; size - i >= 16; i += 16)
        points +=
            sum_of_bytes(_mm_cmpgt_epi8(load(from + i), _mm_set1_epi8(static_cast<char>(0xBF))));
    return points + loops::measure_8_to_32(from + i, size - i);
}

std::size_t measure_16_to_8(const unsigned short* from, std::size_t size) {
    std::size_t bytes = 0;
    std::size_t i = 0;
    for (; size - i >= 8; i += 8) {
        const __m128i units = load(from + i);
        const __m128i zero = _mm_setzero_si128();
        // Each is 0 or -1 for a unit, and the sum of all bytes is twice their number.
        const __m128i one = _mm_cmpeq_epi16(_mm_and_si128(units, all_units(0xFF80)), zero);
        const __m128i two = _mm_cmpeq_epi16(_mm_and_si128(units, all_units(0xF800)), zero);
        const __m128i surrogates =
            _mm_cmpeq_epi16(_mm_and_si128(units, all_units(0xF800)), all_units(0xD800));
        const std::size_t saved = sum_of_bytes(one) + sum_of_bytes(two) + sum_of_bytes(surrogates);
        bytes += 24 - saved / 2;
    }
    return bytes + loops::measure_16_to_8(from + i, size - i);
}

std::size_t measure_16_to_32(const unsigned short* from, std::size_t size) {
    std::size_t points = 0;
    std::size_t i = 0;
    for (; size - i >= 8; i += 8) {
        const __m128i kind = _mm_and_si128(load(from + i), all_units(0xFC00));
        points += 8 - sum_of_bytes(_mm_cmpeq_epi16(kind, all_units(0xDC00))) / 2;
    }
    return points + loops::measure_16_to_32(from + i, size - i);
}

std::size_t measure_32_to_8(const wchar_t* from, std::size_t size) {
    std::size_t bytes = 0;
    std::size_t i = 0;
    for (; size - i >= 4; i += 4) {
        const __m128i points = load(from + i);
        const auto at_least = [&](int value) {
            return sum_of_bytes(_mm_cmpgt_epi32(points, _mm_set1_epi32(value - 1))) / 4;
        };
        bytes += 4 + at_least(0x80) + at_least(0x800) + at_least(0x10000) -
                 4 * at_least(loops::unicode_end);
    }
    return bytes + loops::measure_32_to_8(from + i, size - i);
}

std::size_t measure_32_to_16(const wchar_t* from, std::size_t size) {
    std::size_t units = 0;
    std::size_t i = 0;
    for (; size - i >= 4; i += 4)
        units += 4 + sum_of_bytes(_mm_cmpgt_epi32(load(from + i), _mm_set1_epi32(0xFFFE))) / 4;
    return units + loops::measure_32_to_16(from + i, size - i);
}

}  // namespace

const unicode_form unicode_sse2 = {
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
