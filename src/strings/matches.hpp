/// @file
/// Finds the non-overlapping matches of one string in another, one by one.
///
///     detail::matches<char> all(text, size, ", ", 2);
///     for (std::size_t at = all.next(); at != detail::not_found; at = all.next())
///         ...
///
/// A kernel searches for short strings of bytes: it compares the first and the last byte at many
/// positions at once. A `searcher` searches for all others. Both take linear time. Everything
/// before the end of the last match may be overwritten between two calls. An object belongs to one
/// thread.
#pragma once

#include "strings/byte_kernels.hpp"
#include "strings/search.hpp"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>

namespace TOVA_2_18 {
namespace strings {
namespace detail {

template <typename Unit>
class matches {
public:
    // `wanted_size` is at least 1.
    matches(const Unit* text, std::size_t size, const Unit* wanted, std::size_t wanted_size)
        : m_text(text), m_size(size), m_wanted_size(wanted_size), m_search(wanted, wanted_size) {}

    // The offset of the next match, or `not_found`.
    std::size_t next() {
        const std::size_t match = m_search.find(m_text, m_size, m_from);
        m_from = match == not_found ? m_size : match + m_wanted_size;
        return match;
    }

private:
    const Unit* m_text;
    std::size_t m_size;
    std::size_t m_wanted_size;
    searcher<Unit> m_search;
    std::size_t m_from = 0;  // no match begins before
};

template <>
class matches<char> {
public:
    matches(const char* text, std::size_t size, const char* wanted, std::size_t wanted_size)
        : m_text(text), m_size(size), m_wanted(wanted), m_wanted_size(wanted_size),
          m_places(size < wanted_size ? 0 : size - wanted_size + 1), m_search(wanted, wanted_size) {
    }

    std::size_t next() {
        if (m_wanted_size > longest_in_kernel)
            return next_of_long();
        for (;;) {
            while (m_mask != 0) {
                const std::size_t at =
                    m_word_begin + static_cast<std::size_t>(__builtin_ctzll(m_mask));
                m_mask &= m_mask - 1;
                if (at >= m_from && has_middle(at)) {
                    m_from = at + m_wanted_size;
                    return at;
                }
            }
            if (!advance())
                return not_found;
        }
    }

private:
    // Each candidate costs a comparison, so long strings are left to the searcher, which limits its
    // wasted comparisons.
    static const std::size_t longest_in_kernel = 32;
    static const std::size_t words = 16;
    static const std::size_t block = 64 * words;

    std::size_t next_of_long() {
        const std::size_t match = m_search.find(m_text, m_size, m_from);
        m_from = match == not_found ? m_size : match + m_wanted_size;
        return match;
    }

    bool has_middle(std::size_t at) const {
        return m_wanted_size <= 2 ||
               std::memcmp(m_text + at + 1, m_wanted + 1, m_wanted_size - 2) == 0;
    }

    // Moves to the next 64 positions with a candidate. Returns false at the end.
    bool advance() {
        do {
            if (m_next_word == m_block_end && !read_block())
                return false;
            m_word_begin = m_next_word;
            m_mask = m_masks[(m_word_begin - m_block_begin) / 64];
            m_next_word += 64;
        } while (m_mask == 0);
        return true;
    }

    // Blocks begin at the next occurrence of the first byte, because searching for it takes less
    // time than the kernel while there is none.
    bool read_block() {
        if (m_next_word >= m_places)
            return false;
        const std::size_t skipped =
            find_unit(m_text + m_next_word, m_places - m_next_word, m_wanted[0]);
        if (skipped == not_found) {
            m_next_word = m_block_end = m_places;
            return false;
        }
        m_block_begin = m_next_word + skipped;
        const std::size_t left = m_places - m_block_begin;
        const std::size_t size = left < block ? left : block;
        kernels::bytes().find(m_text + m_block_begin, size, m_wanted[0],
                              m_wanted[m_wanted_size - 1], m_wanted_size - 1, m_masks);
        m_next_word = m_block_begin;
        m_block_end = m_block_begin + (size + 63) / 64 * 64;
        return true;
    }

    const char* m_text;
    std::size_t m_size;
    const char* m_wanted;
    std::size_t m_wanted_size;
    std::size_t m_places;  // a match can begin only below this
    searcher<char> m_search;
    std::size_t m_from = 0;
    std::size_t m_word_begin = 0;
    std::size_t m_next_word = 0;
    std::size_t m_block_begin = 0;
    std::size_t m_block_end = 0;
    std::uint64_t m_mask = 0;  // the candidates left from `m_word_begin` on
    std::uint64_t m_masks[words];
};

// Copies units to a lower address, or to other memory. Up to `spare` bytes past the last one may be
// read and, at the target, overwritten. With enough of them, a short copy needs no call.
template <typename Unit>
inline void copy_ahead(Unit* to, const Unit* from, std::size_t count, std::size_t spare) {
    const std::size_t step = 32;
    const std::size_t size = count * sizeof(Unit);
    if (spare < step || size > 4 * step) {
        std::memmove(to, from, size);
        return;
    }
    char* target = reinterpret_cast<char*>(to);
    const char* source = reinterpret_cast<const char*>(from);
    for (std::size_t i = 0; i < size; i += step) {
        char piece[step];
        std::memcpy(piece, source + i, step);
        std::memcpy(target + i, piece, step);
    }
}

}  // namespace detail
}  // namespace strings
}  // namespace TOVA_2_18
