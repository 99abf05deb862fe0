/// @file
/// Classifies the 64 bytes of a block into seven masks with one bit per byte, for both XML parsers.
///
/// A parser classifies a block once and then finds the end of each name, value and piece of text in
/// it by shifts and by counting zeros:
///
///     block_masks masks;
///     kernels::classify()(block, masks);
///     const std::uint64_t others = ~masks.name >> offset;  // bit 0 is the byte at `offset`
///
/// Bit 0 of a mask is the first byte of the block. The functions read only the 64 bytes, so any
/// number of threads may call them.
#pragma once

#include <cstddef>
#include <cstdint>

namespace TOVA_2_18 {
namespace parser {
namespace kernels {

const std::size_t block_size = 64;  // bytes

struct block_masks {
    std::uint64_t name;          // ASCII letters and digits and '_'
    std::uint64_t white_space;   // space, tab, carriage return and line feed
    std::uint64_t line_feed;     // only line feeds
    std::uint64_t markup;        // '<' and '&'
    std::uint64_t double_quote;  // '"'
    std::uint64_t single_quote;  // '\''
    std::uint64_t high;          // bytes from 0x80 on
};

using classify_function = void (*)(const char* block, block_masks& masks);

/// The form for this processor.
classify_function classify();

/// @name The forms
/// All compute the same masks; the portable form is the reference.
/// @{
void classify_portable(const char* block, block_masks& masks);
#if defined(__x86_64__)
void classify_sse2(const char* block, block_masks& masks);
void classify_avx2(const char* block, block_masks& masks);
void classify_avx512(const char* block, block_masks& masks);
#endif
/// @}

}  // namespace kernels
}  // namespace parser
}  // namespace TOVA_2_18
