/// @file
/// The difference between two texts, line by line.
#pragma once

#include "support/terminal.hpp"

#include <cstddef>
#include <ostream>
#include <string>
#include <string_view>

namespace tova_programs {

/// Writes the difference in the unified format. Returns whether there is one. Lines end in a line
/// feed; a last line without one is marked as usual.
bool write_line_diff(std::ostream& out, std::string_view before, std::string_view after,
                     const std::string& name_before, const std::string& name_after,
                     const style& colors, std::size_t context = 3);

}  // namespace tova_programs
