/// @file
/// The man page of a program, from the description of its command line.
#pragma once

#include "support/command_line.hpp"

#include <ostream>
#include <string>
#include <vector>

namespace tova_programs {

/// Writes a page of section 1 for man(7).
void write_manual(std::ostream& out, const CLI::App& app, const std::string& name,
                  const std::string& summary, const std::string& version,
                  const std::vector<manual_section>& sections);

}  // namespace tova_programs
