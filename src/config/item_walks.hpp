#pragma once

#include <tova/config/base_config_item.hpp>

namespace TOVA_2_18 {
namespace config {
namespace detail {

// What the dispatchers of the library do with each source, in list order.

inline void load_each(config_item_list& items) {
    for (memory::pointers::rc_pointer<base_config_item>& item : items)
        item->load(items);
}

inline void unload_each(config_item_list& items) {
    for (memory::pointers::rc_pointer<base_config_item>& item : items)
        item->unload();
}

inline void save_each(config_item_list& items) {
    for (memory::pointers::rc_pointer<base_config_item>& item : items)
        item->save(items);
}

// Gives the list a source that lies on the heap and bears its mark.
inline void append(config_item_list& items, base_config_item* item) {
    items.push_back(memory::pointers::rc_pointer<base_config_item>(item));
}

}  // namespace detail
}  // namespace config
}  // namespace TOVA_2_18
