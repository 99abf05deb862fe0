#include <tova/config/config_manager.hpp>

#include "config/node_flags.hpp"

#include <ostream>
#include <set>

namespace TOVA_2_18 {

using strings::ustring8;

namespace config {

namespace {

// The result of a lookup in the first source that has the key. Both pointers are null if no source
// has it.
struct found_node {
    base_config_item* item;
    const config_node* node;
};

found_node first_with(const config_item_list& items, const ustring8& key) {
    for (const memory::pointers::rc_pointer<base_config_item>& item : items)
        if (const config_node* const node = item->get_value(key))
            return {item.get(), node};
    return {nullptr, nullptr};
}

// The value of a node. The first element of an array comes from the same source, and its own flags
// are ignored.
types::variant value_of(const found_node& found, const ustring8& key) {
    if (!detail::is_array(*found.node))
        return found.node->second;
    const config_node* const first = found.item->get_value(key + ".0");
    return first == nullptr ? types::variant() : first->second;
}

// Each round looks up the target of an alias in all sources, starting at the first. Any other
// result ends the lookup.
types::variant follow_aliases(const config_item_list& items, found_node found, ustring8 key,
                              const types::variant& default_value) {
    std::set<ustring8> visited;
    while (!detail::is_array(*found.node) && detail::is_alias(*found.node)) {
        // Contract: a cycle ends with the value of its last alias, not with the default. Keys are
        // compared as written, so a key that differs in letter case takes another round.
        visited.insert(key);
        key = found.node->second.as_string();
        if (visited.count(key) != 0)
            return found.node->second;
        found = first_with(items, key);
        if (found.node == nullptr)
            return default_value;
    }
    return value_of(found, key);
}

}  // namespace

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

types::variant config_manager::get_value(const ustring8& key, types::variant default_value) {
    const found_node found = first_with(m_items, key);
    if (found.node == nullptr)
        return default_value;
    if (detail::is_alias(*found.node))
        return follow_aliases(m_items, found, key, default_value);
    return value_of(found, key);
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
