/// @file
/// A search for one string in another that takes linear time, whatever the strings contain.
///
///     detail::searcher<char> search("ab", 2);
///     search.find("xxab", 4, 0);  // 2
///     search.find("xxab", 4, 3);  // detail::not_found
///
/// The plain search looks for the first unit and compares there. It is the fastest on ordinary
/// strings, but "aaa...b" in "aaa...a" costs it the product of both sizes. So a searcher counts its
/// wasted comparisons. If there are too many for the distance that it moved, it continues with the
/// two-way algorithm, which compares each unit at most twice and needs no table.
///
/// A searcher refers to the units that it searches for and belongs to one thread.
#pragma once

#include <cstddef>
#include <cstring>
#include <cwchar>
#if defined(__SSE2__)
#include <emmintrin.h>
#endif

namespace TOVA_2_18 {
namespace strings {
namespace detail {

const std::size_t not_found = static_cast<std::size_t>(-1);

// The offset of the first `unit` among `size` units, or `not_found`.
template <typename Unit>
inline std::size_t find_unit(const Unit* text, std::size_t size, const Unit& unit) {
    for (std::size_t i = 0; i < size; ++i)
        if (text[i] == unit)
            return i;
    return not_found;
}

inline std::size_t find_unit(const char* text, std::size_t size, const char& unit) {
    const void* const found = std::memchr(text, unit, size);
    return found ? static_cast<std::size_t>(static_cast<const char*>(found) - text) : not_found;
}

inline std::size_t find_unit(const wchar_t* text, std::size_t size, const wchar_t& unit) {
    const wchar_t* const found = std::wmemchr(text, unit, size);
    return found ? static_cast<std::size_t>(found - text) : not_found;
}

#if defined(__SSE2__)
inline std::size_t find_unit(const unsigned short* text, std::size_t size,
                             const unsigned short& unit) {
    const __m128i wanted = _mm_set1_epi16(static_cast<short>(unit));
    std::size_t i = 0;
    for (; size - i >= 8; i += 8) {
        const __m128i units = _mm_loadu_si128(reinterpret_cast<const __m128i*>(text + i));
        const int found = _mm_movemask_epi8(_mm_cmpeq_epi16(units, wanted));
        if (found != 0)
            return i +
                   static_cast<std::size_t>(__builtin_ctz(static_cast<unsigned int>(found))) / 2;
    }
    for (; i < size; ++i)
        if (text[i] == unit)
            return i;
    return not_found;
}
#endif

template <typename Unit>
class searcher {
public:
    // `size` is at least 1.
    searcher(const Unit* wanted, std::size_t size) : m_wanted(wanted), m_size(size) {}

    // The offset of the first match that begins at `from` or later, or `not_found`. `from` is at
    // most `size`.
    std::size_t find(const Unit* text, std::size_t size, std::size_t from) {
        if (size - from < m_size)
            return not_found;
        std::size_t found = from;
        if (!m_two_way && find_plainly(text, size, found))
            return found;
        return find_by_two_ways(text, size, found);
    }

private:
    // The number of comparisons that a search may waste: a fixed number, plus a number for each
    // unit that it moves.
    static const std::size_t free_units = 256;
    static const std::size_t units_per_step = 4;

    // Returns true with the result in `at`, or false with the offset where the other search goes
    // on.
    bool find_plainly(const Unit* text, std::size_t size, std::size_t& at) {
        const std::size_t stop = size - m_size + 1;  // past the last offset of a match
        while (at < stop) {
            const std::size_t skipped = find_unit(text + at, stop - at, m_wanted[0]);
            if (skipped == not_found)
                break;
            at += skipped;
            const std::size_t equal = common_prefix(text + at);
            if (equal == m_size)
                return true;
            ++at;
            m_moved += skipped + 1;
            m_in_vain += equal;
            if (m_in_vain > free_units + units_per_step * m_moved) {
                prepare_two_way();
                return false;
            }
        }
        at = not_found;
        return true;
    }

    std::size_t common_prefix(const Unit* text) const {
        std::size_t equal = 1;
        while (equal < m_size && text[equal] == m_wanted[equal])
            ++equal;
        return equal;
    }

    // The start of the greatest suffix, in the order of the units or in the reverse order, and the
    // period of that suffix.
    std::size_t greatest_suffix(bool reverse, std::size_t& period) const {
        std::size_t suffix = 0;
        std::size_t candidate = 1;
        std::size_t k = 0;
        period = 1;
        while (candidate + k < m_size) {
            const Unit& a = m_wanted[suffix + k];
            const Unit& b = m_wanted[candidate + k];
            if (a == b) {
                if (++k == period) {
                    candidate += period;
                    k = 0;
                }
            } else if (reverse ? a < b : b < a) {
                candidate += k + 1;
                k = 0;
                period = candidate - suffix;
            } else {
                suffix = candidate++;
                k = 0;
                period = 1;
            }
        }
        return suffix;
    }

    // Splits the wanted string in two so that a mismatch in the right part, read forward, moves the
    // search past what was read. The left part is read only after the right part has matched.
    void prepare_two_way() {
        std::size_t period;
        std::size_t reverse_period;
        const std::size_t cut = greatest_suffix(false, period);
        const std::size_t reverse_cut = greatest_suffix(true, reverse_period);
        // The period is no longer than the right part.
        m_cut = cut > reverse_cut ? cut : reverse_cut;
        m_period = cut > reverse_cut ? period : reverse_period;
        m_periodic = true;
        for (std::size_t i = 0; i < m_cut && m_periodic; ++i)
            m_periodic = m_wanted[i] == m_wanted[m_period + i];
        if (!m_periodic)
            m_period = (m_cut > m_size - m_cut ? m_cut : m_size - m_cut) + 1;
        m_two_way = true;
    }

    std::size_t find_by_two_ways(const Unit* text, std::size_t size, std::size_t at) const {
        std::size_t known = 0;  // units at the front that are known to match
        while (size - at >= m_size) {
            std::size_t k = known > m_cut ? known : m_cut;
            while (k < m_size && m_wanted[k] == text[at + k])
                ++k;
            if (k < m_size) {
                at += k - m_cut + 1;
                known = 0;
                continue;
            }
            k = m_cut;
            while (k > known && m_wanted[k - 1] == text[at + k - 1])
                --k;
            if (k <= known)
                return at;
            at += m_period;
            known = m_periodic ? m_size - m_period : 0;
        }
        return not_found;
    }

    const Unit* m_wanted;
    std::size_t m_size;
    std::size_t m_moved = 0;
    std::size_t m_in_vain = 0;
    bool m_two_way = false;
    bool m_periodic = false;
    std::size_t m_cut = 0;
    std::size_t m_period = 0;
};

}  // namespace detail
}  // namespace strings
}  // namespace TOVA_2_18
