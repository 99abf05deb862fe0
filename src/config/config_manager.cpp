#include <tova/config/config_manager.hpp>

#include "config/node_flags.hpp"

#include <ostream>
#include <set>

namespace TOVA_2_18 {

using strings::ustring8;

namespace config {

config_manager::config_manager() : m_items(), m_dispatch(nullptr) {}

config_manager::~config_manager() TOVA_NOTHROW {
    delete m_dispatch;
}

bool config_manager::init(const config_dispatch& dispatcher) {
    // Null until the clone exists: if `clone` raises, the destructor must not delete again.
    delete m_dispatch;
    m_dispatch = nullptr;
    m_items.clear();
    m_dispatch = dispatcher.clone();
    return m_dispatch->setup(m_items);
}

bool config_manager::load() {
    if (m_dispatch == nullptr)
        return false;
    m_dispatch->load(m_items);
    return true;
}

bool config_manager::unload() {
    if (m_dispatch == nullptr)
        return false;
    m_dispatch->unload(m_items);
    return true;
}

bool config_manager::save() {
    if (m_dispatch == nullptr)
        return false;
    m_dispatch->save(m_items);
    return true;
}

// Each round looks up the current key in all sources, in order. An alias starts another round with
// its target, again at the first source; anything else that is found ends the lookup.
types::variant config_manager::get_value(const ustring8& key, types::variant default_value) {
    const ustring8* current = &key;
    std::set<ustring8> visited;
    ustring8 target;
    // `current` is the caller's key at first and `target` after that, so a plain lookup copies no
    // key.
    for (config_item_list::const_iterator item = m_items.begin(); item != m_items.end();) {
        const config_node* const node = (*item)->get_value(*current);
        if (node == nullptr) {
            ++item;
            continue;
        }
        if (detail::is_array(*node)) {
            // The element comes from the same source, and its own flags are ignored.
            const config_node* const first = (*item)->get_value(*current + ".0");
            return first == nullptr ? types::variant() : first->second;
        }
        if (!detail::is_alias(*node))
            return node->second;

        // Contract: a cycle ends with the value of its last alias, not with the default. Keys are
        // compared as written, so a key that differs in letter case takes another round.
        visited.insert(*current);
        target = node->second.as_string();
        if (visited.count(target) != 0)
            return node->second;
        current = &target;
        item = m_items.begin();
    }
    return default_value;
}

bool config_manager::value_exist(const ustring8& key) {
    return get_value(key, types::variant()) != types::nil;
}

bool config_manager::is_array(const ustring8& key) {
    for (const memory::pointers::rc_pointer<base_config_item>& item : m_items) {
        const config_node* const node = item->get_value(key);
        if (node != nullptr && detail::is_array(*node))
            return true;
    }
    return false;
}

void config_manager::get_array(const ustring8& key, std::vector<types::variant>& out) {
    for (const memory::pointers::rc_pointer<base_config_item>& item : m_items) {
        const config_node* const node = item->get_value(key);
        if (node == nullptr || !detail::is_array(*node))
            continue;
        config_node_list elements;
        item->get_array(key, elements);
        for (const config_node_list::value_type& element : elements)
            out.push_back(element.second.second);
        return;
    }
}

void config_manager::get_key_value_array(const ustring8& key,
                                         std::vector<std::pair<ustring8, types::variant>>& out,
                                         bool recursive) {
    for (const memory::pointers::rc_pointer<base_config_item>& item : m_items) {
        if (item->get_value(key) == nullptr)
            continue;
        config_node_list nodes;
        item->get_value_pair_array(key, nodes, recursive);
        for (const config_node_list::value_type& node : nodes)
            out.emplace_back(node.first, node.second.second);
        return;
    }
}

memory::pointers::rc_pointer<base_config_item> config_manager::get_config_item(const ustring8& id) {
    for (const memory::pointers::rc_pointer<base_config_item>& item : m_items)
        if (item->get_id() == id)
            return item;
    return memory::pointers::rc_pointer<base_config_item>();
}

std::ostream& config_manager::dump(std::ostream& out) {
    out << "config_manager:\n";
    for (const memory::pointers::rc_pointer<base_config_item>& item : m_items) {
        out << "\nconfig_item:\n";
        item->dump(out);
    }
    return out << "\nno more config_items!\n\nending output\n";
}

std::ostream& operator<<(std::ostream& out, config_manager& manager) {
    return manager.dump(out);
}

}  // namespace config
}  // namespace TOVA_2_18
