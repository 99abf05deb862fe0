#include "parser/xml_kernels.hpp"

#if defined(__x86_64__)

#include <emmintrin.h>

namespace TOVA_2_18 {
namespace parser {
namespace kernels {

namespace {

__m128i equal(__m128i bytes, char wanted) {
    return _mm_cmpeq_epi8(bytes, _mm_set1_epi8(wanted));
}

// Selects the `count` bytes from `first` on. There is no unsigned comparison, but an unsigned
// minimum.
__m128i within(__m128i bytes, char first, char count) {
    const __m128i distance = _mm_sub_epi8(bytes, _mm_set1_epi8(first));
    return _mm_cmpeq_epi8(_mm_min_epu8(distance, _mm_set1_epi8(static_cast<char>(count - 1))),
                          distance);
}

std::uint64_t bits(__m128i bytes) {
    return static_cast<std::uint16_t>(_mm_movemask_epi8(bytes));
}

}  // namespace

void classify_sse2(const char* block, block_masks& masks) {
    masks = block_masks();
    for (std::size_t i = 0; i < block_size; i += 16) {
        const __m128i bytes = _mm_loadu_si128(reinterpret_cast<const __m128i*>(block + i));
        // The bit that distinguishes lower case from upper case is set in both.
        const __m128i letters = within(_mm_or_si128(bytes, _mm_set1_epi8(0x20)), 'a', 26);
        const __m128i digits = within(bytes, '0', 10);
        const __m128i line_feeds = equal(bytes, '\n');
        const __m128i spaces_and_tabs = _mm_or_si128(equal(bytes, ' '), equal(bytes, '\t'));
        masks.name |= bits(_mm_or_si128(_mm_or_si128(letters, digits), equal(bytes, '_'))) << i;
        masks.white_space |=
            bits(_mm_or_si128(_mm_or_si128(spaces_and_tabs, line_feeds), equal(bytes, '\r'))) << i;
        masks.line_feed |= bits(line_feeds) << i;
        masks.markup |= bits(_mm_or_si128(equal(bytes, '<'), equal(bytes, '&'))) << i;
        masks.double_quote |= bits(equal(bytes, '"')) << i;
        masks.single_quote |= bits(equal(bytes, '\'')) << i;
        masks.high |= bits(bytes) << i;
    }
}

}  // namespace kernels
}  // namespace parser
}  // namespace TOVA_2_18

#endif
