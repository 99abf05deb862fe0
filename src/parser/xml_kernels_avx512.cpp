#include "parser/xml_kernels.hpp"

#if defined(__x86_64__)

#include <immintrin.h>

// An attribute instead of an option, as for AVX2.
#define TOVA_AVX512 __attribute__((target("avx512f,avx512bw")))

namespace TOVA_2_18 {
namespace parser {
namespace kernels {

namespace {

TOVA_AVX512 inline std::uint64_t equal(__m512i bytes, char wanted) {
    return _mm512_cmpeq_epi8_mask(bytes, _mm512_set1_epi8(wanted));
}

TOVA_AVX512 inline std::uint64_t within(__m512i bytes, char first, char count) {
    return _mm512_cmplt_epu8_mask(_mm512_sub_epi8(bytes, _mm512_set1_epi8(first)),
                                  _mm512_set1_epi8(count));
}

// As for AVX2: each byte is compared with the whitespace byte that has its lower four bits.
TOVA_AVX512 inline std::uint64_t is_white_space(__m512i bytes) {
    // The 16 bytes of that table, four times, here as four words from the last to the first.
    const __m512i table = _mm512_set4_epi32(0x01010D01, 0x010A0901, 0x01010101, 0x01010220);
    return _mm512_cmpeq_epi8_mask(_mm512_shuffle_epi8(table, bytes), bytes);
}

}  // namespace

TOVA_AVX512 void classify_avx512(const char* block, block_masks& masks) {
    const __m512i bytes = _mm512_loadu_si512(block);
    masks.name = within(_mm512_or_si512(bytes, _mm512_set1_epi8(0x20)), 'a', 26) |
                 within(bytes, '0', 10) | equal(bytes, '_');
    masks.white_space = is_white_space(bytes);
    masks.line_feed = equal(bytes, '\n');
    masks.markup = equal(bytes, '<') | equal(bytes, '&');
    masks.double_quote = equal(bytes, '"');
    masks.single_quote = equal(bytes, '\'');
    masks.high = _mm512_movepi8_mask(bytes);
}

}  // namespace kernels
}  // namespace parser
}  // namespace TOVA_2_18

#endif
