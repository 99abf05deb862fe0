/// @file
/// The map type of a `config_tree`'s children. It is exported as part of the class's layout and not
/// meant for users. One thread at a time per map.
#pragma once

#include <tova/memory/pointers.hpp>

#include <map>

namespace TOVA_2_18 {
namespace config {
namespace _private {

template <typename Key, typename Pointer>
class deep_copy_map;

/// A map of counted objects whose assignment copies the objects through their `clone()`.
///
/// Everything else is as in the standard map; its copy constructor shares the objects.
template <typename Key, typename Value>
class deep_copy_map<Key, memory::pointers::rc_pointer<Value>>
    : public std::map<Key, memory::pointers::rc_pointer<Value>> {
public:
    typedef memory::pointers::rc_pointer<Value> pointer_type;
    typedef std::map<Key, pointer_type> base_type;

    deep_copy_map() : base_type() {}
    deep_copy_map(const deep_copy_map& source) : base_type(source) {}

    /// Empties the map and then adds a copy of each object of `source`; null stays null.
    ///
    /// Contract: assignment to itself leaves the map empty, because it is emptied first.
    deep_copy_map& operator=(const deep_copy_map& source) {
        this->clear();
        for (typename base_type::const_iterator entry = source.begin(); entry != source.end();
             ++entry) {
            const pointer_type copy(entry->second ? entry->second->clone() : nullptr);
            this->insert(this->end(), typename base_type::value_type(entry->first, copy));
        }
        return *this;
    }
};

}  // namespace _private
}  // namespace config
}  // namespace TOVA_2_18
