/// @file
/// Shell completions of a program, from the description of its command line.
#pragma once

#include <ostream>
#include <string>

namespace CLI {
class App;
}

namespace tova_programs {

/// Writes a script for "bash", "zsh" or "fish". It completes commands, options, the words of
/// options with a fixed list, and paths everywhere else.
void write_completion(std::ostream& out, const CLI::App& app, const std::string& name,
                      const std::string& shell);

}  // namespace tova_programs
