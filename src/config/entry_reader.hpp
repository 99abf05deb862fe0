/// @file
/// Reads the text of a configuration file into a tree. docs/configuration.md describes the syntax.
#pragma once

#include <tova/config/config_tree.hpp>
#include <tova/strings/ustring.hpp>

namespace TOVA_2_18 {
namespace config {
namespace detail {

// Stores every entry of `text` in `tree`, replacing values that are already there. Any text is
// valid. Only one thread at a time may use a tree.
void read_entries(const strings::ustring8& text, config_tree& tree);

}  // namespace detail
}  // namespace config
}  // namespace TOVA_2_18
