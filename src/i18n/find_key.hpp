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
class front_masks_table {
public:
    constexpr front_masks_table() : high(), low() {
        for (std::size_t count = 1; count <= front_size; ++count) {
            const std::size_t in_high = count < 8 ? count : 8;
            const std::size_t in_low = count - in_high;
            high[count] = ~std::uint64_t{0} << (64 - 8 * in_high);
            low[count] = in_low == 0 ? 0 : ~std::uint64_t{0} << (64 - 8 * in_low);
        }
    }

    // Two arrays, whose elements have addresses that the processor computes in a load.
    std::uint64_t high[front_size + 1];
    std::uint64_t low[front_size + 1];
};

constexpr front_masks_table front_masks;

// The first bytes of a key as a big-endian number, in which NUL bytes follow the end of the key.
struct key_front {
    // A string stores up to this many bytes in the object itself, and longer contents elsewhere.
    explicit key_front(const strings::ustring8& key) {
        std::uint64_t words[2];
        static_assert(sizeof words == front_size, "front");
        std::memcpy(words, key.data(), front_size);
        const std::size_t used = key.size() < front_size ? key.size() : front_size;
        high = __builtin_bswap64(words[0]) & front_masks.high[used];
        low = __builtin_bswap64(words[1]) & front_masks.low[used];
    }

    __extension__ typedef unsigned __int128 uint128;
    uint128 number() const { return static_cast<uint128>(high) << 64 | low; }

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
            // The children arrive in the cache while this node is compared.
            prefetch(left);
            prefetch(right);
            if (front.high == wanted.high && front.low == wanted.low)
                return find_in_full(node, key);
            node = choose(front.number() < wanted.number(), left, right);
        }
        return nullptr;
    }

private:
    // Requests the middle of a node's key; a node may be null.
    static void prefetch(node_pointer node) {
        const std::uintptr_t place = reinterpret_cast<std::uintptr_t>(node) +
                                     sizeof(std::_Rb_tree_node_base) +
                                     sizeof(strings::ustring8) / 2;
        __builtin_prefetch(pointer_to(place));
    }

    static const void* pointer_to(std::uintptr_t place) {
        const void* pointer;
        std::memcpy(&pointer, &place, sizeof pointer);
        return pointer;
    }

    // Compilers make a branch of a condition here, which is mispredicted half of the time.
    static node_pointer choose(bool second, node_pointer left, node_pointer right) {
        const std::uintptr_t first = reinterpret_cast<std::uintptr_t>(left);
        const std::uintptr_t difference = first ^ reinterpret_cast<std::uintptr_t>(right);
        const std::uintptr_t mask = std::uintptr_t{0} - std::uintptr_t{second};
        return static_cast<node_pointer>(pointer_to(first ^ (difference & mask)));
    }

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
