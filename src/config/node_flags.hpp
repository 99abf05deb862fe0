/// @file
/// The bits of a node's flags word and the three questions that are asked of them.
///
/// `config_node` in <tova/config/config_tree.hpp> documents the bits for users; every source file
/// takes their names from here. Constants and pure functions: any number of threads may use them.
#pragma once

#include <tova/config/config_tree.hpp>

namespace TOVA_2_18 {
namespace config {
namespace detail {

// `config_tree::set_node` adds `value_bit` to every word that it stores.
const unsigned int no_flags = 0;
const unsigned int value_bit = 1;
const unsigned int array_bit = 2;
const unsigned int alias_bit = 4;

// Whether the node exists only as a step on a longer path and never received a value.
inline bool is_step(const config_node& node) {
    return node.first == no_flags;
}

// Whether the node was stored as an array head, whatever other bits it has. The tree itself lists
// elements by `array_bit` alone, and a save writes a node as an array only if exactly these two
// bits are set.
inline bool is_array(const config_node& node) {
    return (node.first & (value_bit | array_bit)) == (value_bit | array_bit);
}

// Whether the value of the node is another key, with which the lookup continues.
inline bool is_alias(const config_node& node) {
    return (node.first & alias_bit) != 0;
}

}  // namespace detail
}  // namespace config
}  // namespace TOVA_2_18
