#include "parser/byte_blocks.hpp"

#include <cstring>

namespace TOVA_2_18 {
namespace parser {
namespace detail {

// A block begins at the requested byte, so that it reaches as far as possible. Close to the end of
// the range, the last 64 bytes are the block instead. A range shorter than a block is padded with
// NUL, which has no class, so a run of any class ends there.
std::size_t byte_blocks::load(const char* byte) {
    const auto size = static_cast<std::size_t>(m_end - m_begin);
    if (size < kernels::block_size) {
        char filled[kernels::block_size] = {};
        std::memcpy(filled, m_begin, size);
        m_block = m_begin;
        m_classify(filled, m_masks);
    } else {
        const auto left = static_cast<std::size_t>(m_end - byte);
        m_block = left < kernels::block_size ? m_end - kernels::block_size : byte;
        m_classify(m_block, m_masks);
    }
    return static_cast<std::size_t>(byte - m_block);
}

const char* byte_blocks::end_of_white_space(const char* from, unsigned int& line_feeds) {
    while (from != m_end) {
        std::size_t offset = offset_of(from);
        if (offset >= kernels::block_size)
            offset = load(from);
        const std::uint64_t others = ~m_masks.white_space >> offset;
        std::uint64_t lines = m_masks.line_feed >> offset;
        if (others != 0)
            lines &= (others & -others) - 1;  // those before the first other byte
        for (; lines != 0; lines &= lines - 1)
            ++line_feeds;
        if (others != 0)
            return from + first(others);
        from = after_block();
    }
    return from;
}

}  // namespace detail
}  // namespace parser
}  // namespace TOVA_2_18
