/// @file
/// The command line of a program: one description, from which come parsing, `--help`, the man page
/// and the completions of three shells.
///
///     command_line tool("tova-xmc", "checks message catalogs", "2.18.0");
///     CLI::App& check = tool.add_command("check", "find errors", [&] { return run_check(options);
///     }); check.add_option("PATH", options.paths, "files and folders"); return tool.run(argc,
///     argv);
///
/// Every program has `--help`, `--version`, `--color WHEN`, and for packages `--man` and
/// `--completion SHELL`. A source that describes options includes <CLI/CLI.hpp>; no other one needs
/// to.
#pragma once

#include "support/terminal.hpp"

#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace CLI {
class App;
class Option;
class ParseError;
}  // namespace CLI

namespace tova_programs {

/// A section of the man page after the generated ones. Paragraphs are separated by an empty line; a
/// line that begins with two spaces is printed as it is.
struct manual_section {
    std::string title;
    std::string text;
};

class command_line {
public:
    /// The summary is a phrase that continues the name: `tova-xmc - checks message catalogs`.
    command_line(const std::string& name, const std::string& summary, const std::string& version);
    ~command_line();
    command_line(const command_line&) = delete;
    command_line& operator=(const command_line&) = delete;

    CLI::App& app() { return *m_app; }
    color_mode colors() const { return m_colors; }

    /// Adds a command. `run` returns the exit code.
    CLI::App& add_command(const std::string& name, const std::string& summary,
                          std::function<int()> run);

    void add_section(const std::string& title, const std::string& text);

    /// Parses, and runs the command that was given. A wrong command line and a `file_error` are
    /// reported on standard error and return `exit_usage`.
    int run(int argc, const char* const* argv);

private:
    std::string reason_of(const CLI::ParseError& error) const;

    std::string m_name;
    std::string m_summary;
    std::string m_version;
    color_mode m_colors = color_mode::automatic;
    std::unique_ptr<CLI::App> m_app;
    std::vector<manual_section> m_sections;
    std::vector<std::pair<CLI::App*, std::function<int()>>> m_commands;
};

/// Sets what an option's value is called, and how a shell completes it: "FILE" and "DIR" complete
/// paths. Returns the option.
CLI::Option* value_name(CLI::Option* option, const std::string& name);

/// Lets an option have only these words, which shells complete. The error for another one says "no
/// KIND is named WORD" and suggests the closest, because the list may be long. Returns the option.
CLI::Option* known_words(CLI::Option* option, const std::vector<std::string>& words,
                         const std::string& kind);

}  // namespace tova_programs
