/// @file
/// A search by key in the maps of messages and catalogs.
///
///     const auto found = find_key(messages, key);  // what messages.find(key) returns
///
/// `std::map::find` compares keys through calls, and its branch at each node is mispredicted half
/// of the time. Here the first bytes of a key form a number with the same order as the bytes, and
/// the descent needs no branch. The functions have no state; any number of threads may search one
/// map.
#pragma once

#include <tova/strings/ustring.hpp>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <map>

namespace TOVA_2_18 {
namespace i18n {
namespace detail {

const std::size_t front_size = 16;  // bytes

// Masks for the first bytes of a front, indexed by the number of bytes.
struct front_bits {
    std::uint64_t high;
    std::uint64_t low;
};

class front_bits_table {
public:
    constexpr front_bits_table() : m_bits() {
        for (std::size_t count = 1; count <= front_size; ++count) {
            const std::size_t in_high = count < 8 ? count : 8;
            const std::size_t in_low = count - in_high;
            m_bits[count].high = ~std::uint64_t{0} << (64 - 8 * in_high);
            m_bits[count].low = in_low == 0 ? 0 : ~std::uint64_t{0} << (64 - 8 * in_low);
        }
    }
    const front_bits& operator[](std::size_t count) const { return m_bits[count]; }

private:
    front_bits m_bits[front_size + 1];
};

constexpr front_bits_table all_front_bits;

// The first bytes of a key as a big-endian number, in which NUL bytes follow the end of the key.
struct key_front {
    // A string stores up to this many bytes in the object itself, and longer contents elsewhere.
    explicit key_front(const strings::ustring8& key) {
        std::uint64_t words[2];
        static_assert(sizeof words == front_size, "front");
        std::memcpy(words, key.data(), front_size);
        const front_bits& used = all_front_bits[key.size() < front_size ? key.size() : front_size];
        high = __builtin_bswap64(words[0]) & used.high;
        low = __builtin_bswap64(words[1]) & used.low;
    }

    std::uint64_t high;
    std::uint64_t low;
};

#ifdef __GLIBCXX__

// The tree of a map, which its iterators refer to. Both functions return null if there is no such
// key at a node or below it.
template <typename Value>
class key_tree {
public:
    using node_pointer = const std::_Rb_tree_node_base*;
    using const_iterator = typename std::map<strings::ustring8, Value>::const_iterator;

    static node_pointer find(node_pointer node, const strings::ustring8& key) {
        const key_front wanted(key);
        while (node != nullptr) {
            const key_front front(const_iterator(node)->first);
            const node_pointer left = node->_M_left;
            const node_pointer right = node->_M_right;
            if (front.high == wanted.high && front.low == wanted.low)
                return find_in_full(node, key);
            // Compares numbers of 128 bits without a branch.
            const bool is_low_below = front.low < wanted.low;
            const bool is_below =
                (front.high < wanted.high) | ((front.high == wanted.high) & is_low_below);
            node = is_below ? right : left;
        }
        return nullptr;
    }

private:
    // Most keys are found at the first node whose front is equal.
    __attribute__((noinline)) static node_pointer find_in_full(node_pointer node,
                                                               const strings::ustring8& key) {
        while (node != nullptr) {
            const strings::ustring8& present = const_iterator(node)->first;
            const std::size_t size = std::min(present.size(), key.size());
            int order = std::memcmp(present.data(), key.data(), size);
            if (order == 0 && present.size() == key.size())
                return node;
            if (order == 0)
                order = present.size() < key.size() ? -1 : 1;
            node = order < 0 ? node->_M_right : node->_M_left;
        }
        return nullptr;
    }
};

template <typename Value>
typename std::map<strings::ustring8, Value>::const_iterator
find_key(const std::map<strings::ustring8, Value>& map, const strings::ustring8& key) {
    const auto end = map.end();
    const auto* const found = key_tree<Value>::find(end._M_node->_M_parent, key);
    return found == nullptr ? end : typename key_tree<Value>::const_iterator(found);
}

#else

template <typename Value>
typename std::map<strings::ustring8, Value>::const_iterator
find_key(const std::map<strings::ustring8, Value>& map, const strings::ustring8& key) {
    return map.find(key);
}

#endif

}  // namespace detail
}  // namespace i18n
}  // namespace TOVA_2_18
