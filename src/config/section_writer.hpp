/// @file
/// Writes a tree as the text of a configuration file. docs/configuration.md says what a save loses.
#pragma once

#include <tova/config/config_tree.hpp>
#include <tova/strings/ustring.hpp>

namespace TOVA_2_18 {
namespace config {
namespace detail {

// Returns the sections, with their entries, of a recursive listing of a whole tree. Only one thread
// at a time may use the tree that was listed.
strings::ustring8 write_sections(const config_node_list& nodes);

}  // namespace detail
}  // namespace config
}  // namespace TOVA_2_18
