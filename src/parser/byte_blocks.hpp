/// @file
/// Finds where whitespace, names, values and pieces of text end, in bytes that are in memory, 64 at
/// a time.
///
/// The masks of the block around the last position are kept. Most runs in a document are short, so
/// most searches cost a shift and a count of zeros:
///
///     byte_blocks blocks(begin, end);
///     const char* const end_of_key = blocks.end_of_name(key);
///
/// Positions are pointers from `begin` to `end`, and every function returns `end` for a run that
/// goes up to it. Nothing outside of the range is read. An object belongs to one thread.
#pragma once

#include "parser/xml_kernels.hpp"
#include "strings/ascii.hpp"

#include <cstddef>
#include <cstdint>

namespace TOVA_2_18 {
namespace parser {
namespace detail {

class byte_blocks {
public:
    byte_blocks(const char* begin, const char* end)
        : m_classify(kernels::classify()), m_begin(begin), m_end(end), m_block(no_block()) {}

    /// Switches to another range and forgets the classified block.
    void set_range(const char* begin, const char* end) {
        m_begin = begin;
        m_end = end;
        m_block = no_block();
    }

    /// Adds the number of skipped line feeds to the counter.
    const char* end_of_white_space(const char* from, unsigned int& line_feeds);

    /// The first byte that is not an ASCII letter, digit or '_'.
    const char* end_of_name(const char* from) {
        return find(from, [](const masks& block) { return ~block.name; });
    }

    /// The same, but all bytes from 0x80 on belong to names.
    const char* end_of_wide_name(const char* from) {
        return find(from, [](const masks& block) { return ~(block.name | block.high); });
    }

    /// The first '<' or '&', or the quote.
    const char* end_of_value(const char* from, char quote) {
        if (quote == '"')
            return find(from, [](const masks& block) { return block.markup | block.double_quote; });
        return find(from, [](const masks& block) { return block.markup | block.single_quote; });
    }

    /// The first '<' or '&'.
    const char* end_of_content(const char* from) {
        return find(from, [](const masks& block) { return block.markup; });
    }

    /// The first '<' or '&', or the first of two whitespace bytes.
    const char* end_of_text(const char* from) {
        const std::uint64_t last = std::uint64_t{1} << (kernels::block_size - 1);
        for (;;) {
            from = find(from, [](const masks& block) {
                return block.markup | (block.white_space & (block.white_space >> 1 | last));
            });
            if (from == m_end || from - m_block != kernels::block_size - 1 ||
                !strings::detail::is_white_space(*from))
                return from;
            // The byte after the block isn't known yet.
            if (from + 1 != m_end && strings::detail::is_white_space(from[1]))
                return from;
            ++from;
        }
    }

private:
    using masks = kernels::block_masks;

    static unsigned int first(std::uint64_t mask) {
        return static_cast<unsigned int>(__builtin_ctzll(mask));
    }

    // No byte of the range is in this block. It is never read, and pointer arithmetic must not
    // leave the range.
    const char* no_block() const {
        // NOLINTNEXTLINE(performance-no-int-to-ptr)
        return reinterpret_cast<const char*>(reinterpret_cast<std::uintptr_t>(m_end) +
                                             kernels::block_size);
    }

    std::size_t offset_of(const char* byte) const {
        return reinterpret_cast<std::uintptr_t>(byte) - reinterpret_cast<std::uintptr_t>(m_block);
    }

    const char* after_block() const {
        return m_end - m_block <= static_cast<std::ptrdiff_t>(kernels::block_size)
                   ? m_end
                   : m_block + kernels::block_size;
    }

    // Most runs end in the block in which they begin.
    template <typename Select>
    const char* find(const char* from, Select select) {
        const std::size_t offset = offset_of(from);
        if (offset < kernels::block_size) {
            const std::uint64_t found = select(m_masks) >> offset;
            if (found != 0)
                return from + first(found);
            from = after_block();
        }
        return find_from_next(from, select);
    }

    // The byte is not in the block.
    template <typename Select>
    __attribute__((noinline)) const char* find_from_next(const char* from, Select select) {
        while (from != m_end) {
            const std::size_t offset = load(from);
            const std::uint64_t found = select(m_masks) >> offset;
            if (found != 0)
                return from + first(found);
            from = after_block();
        }
        return from;
    }

    // Moves the block so that it contains the byte, which is not the end, and returns its index in
    // the block.
    std::size_t load(const char* byte);

    kernels::classify_function m_classify;
    const char* m_begin;
    const char* m_end;
    const char* m_block;  // 64 bytes from here on
    masks m_masks;        // of the block
};

}  // namespace detail
}  // namespace parser
}  // namespace TOVA_2_18
