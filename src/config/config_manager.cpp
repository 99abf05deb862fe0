#include <tova/config/config_manager.hpp>

#include <ostream>
#include <set>

namespace TOVA_2_18 {

using strings::ustring8;

namespace config {

namespace {

const unsigned int array_bits = 3;
const unsigned int alias_bit = 4;

bool is_array_head(const config_node& node) {
    return (node.first & array_bits) == array_bits;
}

}  // namespace

config_manager::config_manager() : items(), dispatch(nullptr) {}

config_manager::~config_manager() TOVA_NOTHROW {
    delete dispatch;
}

bool config_manager::init(const config_dispatch& dispatcher) {
    delete dispatch;
    dispatch = nullptr;
    items.clear();
    dispatch = dispatcher.clone();
    return dispatch->setup(items);
}

bool config_manager::load() {
    if (dispatch == nullptr)
        return false;
    dispatch->load(items);
    return true;
}

bool config_manager::unload() {
    if (dispatch == nullptr)
        return false;
    dispatch->unload(items);
    return true;
}

bool config_manager::save() {
    if (dispatch == nullptr)
        return false;
    dispatch->save(items);
    return true;
}

types::variant config_manager::get_value(const ustring8& key, types::variant default_value) {
    const ustring8* current = &key;
    std::set<ustring8> visited;
    ustring8 target;
    for (config_item_list::const_iterator item = items.begin(); item != items.end();) {
        const config_node* const node = (*item)->get_value(*current);
        if (node == nullptr) {
            ++item;
            continue;
        }
        if (is_array_head(*node)) {
            const config_node* const first = (*item)->get_value(*current + ".0");
            return first == nullptr ? types::variant() : first->second;
        }
        if ((node->first & alias_bit) == 0)
            return node->second;

        // Contract: a circle ends with the value of the last alias in it, not with the default. The
        // keys are compared as they stand, so one written in other letters goes round once more.
        visited.insert(*current);
        target = node->second.as_string();
        if (visited.count(target) != 0)
            return node->second;
        current = &target;
        item = items.begin();
    }
    return default_value;
}

bool config_manager::value_exist(const ustring8& key) {
    return get_value(key, types::variant()) != types::nil;
}

bool config_manager::is_array(const ustring8& key) {
    for (const memory::pointers::rc_pointer<base_config_item>& item : items) {
        const config_node* const node = item->get_value(key);
        if (node != nullptr && is_array_head(*node))
            return true;
    }
    return false;
}

void config_manager::get_array(const ustring8& key, std::vector<types::variant>& out) {
    for (const memory::pointers::rc_pointer<base_config_item>& item : items) {
        const config_node* const node = item->get_value(key);
        if (node == nullptr || !is_array_head(*node))
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
    for (const memory::pointers::rc_pointer<base_config_item>& item : items) {
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
    for (const memory::pointers::rc_pointer<base_config_item>& item : items)
        if (item->get_id() == id)
            return item;
    return memory::pointers::rc_pointer<base_config_item>();
}

std::ostream& config_manager::dump(std::ostream& out) {
    out << "config_manager:\n";
    for (const memory::pointers::rc_pointer<base_config_item>& item : items) {
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
