#include "support/command_line.hpp"
#include "xmc/check/check.hpp"
#include "xmc/rules.hpp"
#include "xmc/version.hpp"

#include <CLI/CLI.hpp>
#include <unistd.h>

#include <iostream>
#include <map>
#include <string>

// The whole command line of tova-xmc, one function for each command. Each fills the options of its
// command, and the command itself is in a folder of its own.

namespace tova_programs::xmc {

namespace {

class tool {
public:
    tool() : m_line("tova-xmc", "checks, shows and converts message catalogs", version) {
        add_check();
        m_line.add_section("SEE ALSO", "The guide for translators is part of the documentation of "
                                       "the library: docs/translators.md.");
    }

    int run(int argc, const char* const* argv) { return m_line.run(argc, argv); }

private:
    style out_style() const { return style(use_colors(m_line.colors(), STDOUT_FILENO)); }

    static void add_paths(CLI::App& command, std::vector<std::string>& paths) {
        command.add_option("PATH", paths, "catalog files, or folders with .xmc and .xml files");
    }

    void add_check();

    command_line m_line;
    check_command m_check;
};

void tool::add_check() {
    CLI::App& command = m_line.add_command(
        "check", "find what the loader refuses, and what it takes silently and gets wrong",
        [this] { return run_check(m_check, std::cout, std::cerr, out_style()); });
    add_paths(command, m_check.check.paths);
    value_name(command.add_option("--reference", m_check.check.reference,
                                  "the locale whose arguments the others must have (en)"),
               "LANG");
    command
        .add_option("--fail-on", m_check.fail_on,
                    "the least severity that makes the exit code 1 (warning)")
        ->check(CLI::IsMember({"error", "warning", "note", "never"}));
    command.add_option("--only", m_check.check.only, "report these rules only")
        ->delimiter(',')
        ->check(CLI::IsMember(rules().ids()))
        ->type_name("RULES");
    command.add_option("--ignore", m_check.check.ignored, "do not report these rules")
        ->delimiter(',')
        ->check(CLI::IsMember(rules().ids()))
        ->type_name("RULES");
    command.add_flag("--fix", m_check.fixes, "change the files where the fix is certain");
    command.add_flag("--dry-run", m_check.is_dry_run, "with --fix: show the changes only");
    const std::map<std::string, report_format> formats = {{"text", report_format::text},
                                                          {"json", report_format::json},
                                                          {"sarif", report_format::sarif},
                                                          {"github", report_format::github}};
    command
        .add_option_function<std::string>(
            "--format",
            [this, formats](const std::string& name) { m_check.format = formats.at(name); },
            "how findings are written: one line each (text), as JSON or SARIF, or as workflow "
            "commands (github)")
        ->check(CLI::IsMember({"text", "json", "sarif", "github"}));
    command.add_flag_callback(
        "--json", [this] { m_check.format = report_format::json; }, "the same as --format json");
    command.add_flag_callback(
        "--sarif", [this] { m_check.format = report_format::sarif; }, "the same as --format sarif");
    command.add_option("--explain", m_check.explained, "explain a rule")->type_name("RULE");
    command.add_flag("--list-rules", m_check.lists_rules, "list all rules");
}

}  // namespace

}  // namespace tova_programs::xmc

int main(int argc, char** argv) {
    return tova_programs::xmc::tool().run(argc, argv);
}
