#pragma once

#include <tova/config/config_tree.hpp>
#include <tova/generic/varg_list.hpp>
#include <tova/strings/ustring.hpp>

namespace TOVA_2_18 {
namespace config {
namespace detail {

// The inside of a tree, for the sources that store many entries below one node: they find that node
// once, so that the time stays linear in the text even for a section of very many segments.
struct config_tree_access {
    typedef config_tree::children_type children_type;

    static children_type& children(config_tree& tree) { return tree.children; }
    static const children_type& children(const config_tree& tree) { return tree.children; }
    static config_node& node(config_tree& tree) { return tree.node; }
    static const config_node& node(const config_tree& tree) { return tree.node; }

    // The tree below the key, or null.
    static config_tree* find(const config_tree& tree, const strings::ustring8& key);

    // The tree below the key. What is missing on the way is made as steps, with word 0.
    static config_tree& make(config_tree& tree, const strings::ustring8& key);

    // Gives a node a value, with the word `flags` and bit 0. What it held is replaced.
    static void set(config_tree& tree, const types::variant& value, unsigned int flags);

    // Stores the elements of an array as "0", "1" and so on below `parent`, under the rule for
    // `flags` that `base_config_item::set_array` tells.
    static void set_elements(config_tree& parent, const generic::varg_list& values,
                             const generic::varg_list& flags);
};

}  // namespace detail
}  // namespace config
}  // namespace TOVA_2_18
