/// @file
/// The two things both dispatchers do with a list of sources: append to it, and call every source
/// in order.
///
/// Nothing here keeps state; a list and its sources belong to one thread at a time.
#pragma once

#include <tova/config/base_config_item.hpp>

namespace TOVA_2_18 {
namespace config {
namespace detail {

// Appends a source, which must be on the heap with its heap mark set.
inline void append(config_item_list& items, base_config_item* item) {
    items.push_back(memory::pointers::rc_pointer<base_config_item>(item));
}

// Each source receives the whole list, since a file looks up its name in the sources before it.
inline void load_each(config_item_list& items) {
    for (const memory::pointers::rc_pointer<base_config_item>& item : items)
        item->load(items);
}

inline void unload_each(config_item_list& items) {
    for (const memory::pointers::rc_pointer<base_config_item>& item : items)
        item->unload();
}

inline void save_each(config_item_list& items) {
    for (const memory::pointers::rc_pointer<base_config_item>& item : items)
        item->save(items);
}

}  // namespace detail
}  // namespace config
}  // namespace TOVA_2_18
