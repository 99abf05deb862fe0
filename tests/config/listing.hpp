// What a tree or a source holds, as lines that a test can compare.
#pragma once

#include <string>
#include <vector>

#include <tova/config/base_config_item.hpp>
#include <tova/config/config_tree.hpp>

namespace config_support {

using TOVA_2_18::config::base_config_item;
using TOVA_2_18::config::config_node;
using TOVA_2_18::config::config_node_list;
using TOVA_2_18::config::config_tree;
using TOVA_2_18::strings::ustring8;
using TOVA_2_18::types::nil;
using TOVA_2_18::types::variant;

// "word value", as "3 nil" or "1 'text'". A value that is no `ustring8` shows its type behind it.
inline std::string show(const config_node& node) {
    const std::string word = std::to_string(node.first) + " ";
    const variant& value = node.second;
    if (value == nil)
        return word + "nil";
    if (value.type() == typeid(bool))
        return word + (value.as_bool() ? "true" : "false");
    const std::string text = word + "'" + value.as_string() + "'";
    if (value.type() == typeid(ustring8))
        return text;
    if (value.type() == typeid(std::string))
        return text + " string";
    if (value.type() == typeid(unsigned int))
        return text + " unsigned";
    if (value.type() == typeid(int))
        return text + " int";
    return text + " " + value.type().name();
}

inline std::vector<std::string> show(const config_node_list& nodes) {
    std::vector<std::string> lines;
    for (const auto& node : nodes)
        lines.push_back(node.first + ": " + show(node.second));
    return lines;
}

// All nodes, parents in front of their children.
inline std::vector<std::string> content(config_tree& tree) {
    config_node_list nodes;
    tree.get_value_pair_array("", nodes, true, "");
    return show(nodes);
}

inline std::vector<std::string> content(base_config_item& item) {
    config_node_list nodes;
    item.get_value_pair_array("", nodes, true);
    return show(nodes);
}

typedef std::vector<std::string> lines;

// A source with nothing of its own, open for tests.
class plain_item : public base_config_item {
public:
    plain_item() {}
    explicit plain_item(const ustring8& name) { id = name; }
    plain_item* clone() const override {
        plain_item* const copy = new plain_item(*this);
        copy->allocated = true;
        return copy;
    }
    config_tree& inner_tree() { return tree; }
};

}  // namespace config_support
