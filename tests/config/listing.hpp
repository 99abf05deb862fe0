// The nodes of a tree or a source as lines that a test can compare.
#pragma once

#include <tova/config/base_config_item.hpp>
#include <tova/config/config_tree.hpp>

#include <string>
#include <vector>

namespace config_support {

using tova::config::base_config_item;
using tova::config::config_node;
using tova::config::config_node_list;
using tova::config::config_tree;
using tova::strings::ustring8;
using tova::types::nil;
using tova::types::variant;

// The flags word and the value, such as "3 nil" or "1 'text'". The type of the value follows unless
// it is nil, `bool` or `ustring8`.
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

// All nodes, parents before their children.
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

// The smallest possible source. It exposes its tree to tests.
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
