/// @file
/// Writes a tree as the text of a configuration file. docs/configuration.md says what is lost.
#pragma once

#include <tova/config/config_tree.hpp>
#include <tova/strings/ustring.hpp>

namespace TOVA_2_18 {
namespace config {
namespace detail {

// Returns the sections of a recursive listing of a whole tree, with their entries. One thread at a
// time per tree that the list came from.
strings::ustring8 write_sections(const config_node_list& nodes);

}  // namespace detail
}  // namespace config
}  // namespace TOVA_2_18
