#include "parser/xml_kernels.hpp"

#if defined(__x86_64__)

#include <immintrin.h>

// The target is an attribute of the functions, not an option for the file, because inline functions
// that other files share must not be compiled for AVX2.
#define TOVA_AVX2 __attribute__((target("avx2")))

namespace TOVA_2_18 {
namespace parser {
namespace kernels {

namespace {

TOVA_AVX2 inline __m256i equal(__m256i bytes, char wanted) {
    return _mm256_cmpeq_epi8(bytes, _mm256_set1_epi8(wanted));
}

TOVA_AVX2 inline __m256i within(__m256i bytes, char first, char count) {
    const __m256i distance = _mm256_sub_epi8(bytes, _mm256_set1_epi8(first));
    return _mm256_cmpeq_epi8(
        _mm256_min_epu8(distance, _mm256_set1_epi8(static_cast<char>(count - 1))), distance);
}

// Each byte is compared with the whitespace byte that has its lower four bits. If there is none,
// the table has a byte with other lower bits. A byte from 0x80 on is compared with 0.
TOVA_AVX2 inline __m256i is_white_space(__m256i bytes) {
    const __m256i table =
        _mm256_setr_epi8(' ', 2, 1, 1, 1, 1, 1, 1, 1, '\t', '\n', 1, 1, '\r', 1, 1, ' ', 2, 1, 1, 1,
                         1, 1, 1, 1, '\t', '\n', 1, 1, '\r', 1, 1);
    return _mm256_cmpeq_epi8(_mm256_shuffle_epi8(table, bytes), bytes);
}

TOVA_AVX2 inline std::uint64_t bits(__m256i bytes) {
    return static_cast<std::uint32_t>(_mm256_movemask_epi8(bytes));
}

}  // namespace

TOVA_AVX2 void classify_avx2(const char* block, block_masks& masks) {
    masks = block_masks();
    for (std::size_t i = 0; i < block_size; i += 32) {
        const __m256i bytes = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(block + i));
        const __m256i letters = within(_mm256_or_si256(bytes, _mm256_set1_epi8(0x20)), 'a', 26);
        const __m256i digits = within(bytes, '0', 10);
        masks.name |= bits(_mm256_or_si256(_mm256_or_si256(letters, digits), equal(bytes, '_')))
                      << i;
        masks.white_space |= bits(is_white_space(bytes)) << i;
        masks.line_feed |= bits(equal(bytes, '\n')) << i;
        masks.markup |= bits(_mm256_or_si256(equal(bytes, '<'), equal(bytes, '&'))) << i;
        masks.double_quote |= bits(equal(bytes, '"')) << i;
        masks.single_quote |= bits(equal(bytes, '\'')) << i;
        masks.high |= bits(bytes) << i;
    }
}

}  // namespace kernels
}  // namespace parser
}  // namespace TOVA_2_18

#endif
