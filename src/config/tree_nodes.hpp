/// @file
/// Access to the nodes of a `config_tree` for the sources in this folder.
///
/// A source that stores many entries under one node looks that node up once and then stores below
/// it, so loading stays linear in the size of the text even if a section has very many segments.
/// config_tree.cpp implements these functions. Only one thread at a time may use a tree.
#pragma once

#include <tova/config/config_tree.hpp>
#include <tova/generic/varg_list.hpp>
#include <tova/strings/ustring.hpp>

namespace TOVA_2_18 {
namespace config {
namespace detail {

// Exposes the two private fields of a node to this folder. Every node is itself a `config_tree`.
struct tree_fields {
    typedef config_tree::children_type children_type;

    static children_type& children(config_tree& tree) { return tree.m_children; }
    static const children_type& children(const config_tree& tree) { return tree.m_children; }
    static config_node& node(config_tree& tree) { return tree.m_node; }
    static const config_node& node(const config_tree& tree) { return tree.m_node; }
};

// Returns the node that `key` names below `tree`, or null.
const config_tree* find_node(const config_tree& tree, const strings::ustring8& key);

// Returns the node that `key` names below `tree`. Missing nodes are added as steps: their flags
// word is 0 and their value is `true`.
config_tree& make_node(config_tree& tree, const strings::ustring8& key);

// Replaces the value and the flags word of a node. The new word is `flags` with bit 0 added.
void set_value(config_tree& node, const types::variant& value, unsigned int flags);

// Stores any number of values. A new node is a copy of a model that already has the value, because
// the default constructor would allocate the value `true` only to replace it.
class value_store {
public:
    // Does what `config_tree::set_node` does.
    void set_node(config_tree& tree, const strings::ustring8& key, const types::variant& value,
                  unsigned int flags);

    // Stores the values as the children "0", "1", "2" and so on of `parent`. `flags` follows the
    // rule of `base_config_item::set_array`.
    void set_elements(config_tree& parent, const generic::varg_list& values,
                      const generic::varg_list& flags);

private:
    void set_child(config_tree& parent, strings::ustring8&& name, const types::variant& value,
                   unsigned int flags);

    config_tree m_model;
};

}  // namespace detail
}  // namespace config
}  // namespace TOVA_2_18
