#include "support/command_line.hpp"

#include "support/completion.hpp"
#include "support/exit_code.hpp"
#include "support/manual.hpp"
#include "support/suggestion.hpp"
#include "support/text_file.hpp"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <iostream>
#include <map>
#include <utility>

namespace tova_programs {

namespace {

const std::map<std::string, color_mode> color_modes = {
    {"auto", color_mode::automatic}, {"always", color_mode::always}, {"never", color_mode::never}};

bool begins_as_option(const std::string& word) {
    return word.size() > 1 && word[0] == '-';
}

std::string in_quotes(const std::string& word) {
    return '"' + word + '"';
}

std::vector<std::string> option_names(const CLI::App& app) {
    std::vector<std::string> result;
    for (const CLI::Option* const option : app.get_options())
        for (const std::string& name : option->get_lnames())
            result.push_back("--" + name);
    return result;
}

}  // namespace

command_line::command_line(const std::string& name, const std::string& summary,
                           const std::string& version)
    : m_name(name), m_summary(summary), m_version(version),
      m_app(std::make_unique<CLI::App>(name + " " + summary + ".", name)) {
    m_app->set_help_flag("-h,--help", "print this help and exit");
    m_app->set_version_flag("--version", name + " " + version, "print the version and exit");
    m_app->fallthrough();
    m_app
        ->add_option_function<std::string>(
            "--color", [this](const std::string& mode) { m_colors = color_modes.at(mode); },
            "when to use colors: auto (on a terminal, unless NO_COLOR is set), always or never")
        ->check(CLI::IsMember({"auto", "always", "never"}))
        ->type_name("WHEN");
    m_app->add_flag("--man", "print the man page of this program")->group("For packages");
    m_app->add_option("--completion", "print the completions for a shell")
        ->check(CLI::IsMember({"bash", "zsh", "fish"}))
        ->type_name("SHELL")
        ->group("For packages");
}

command_line::~command_line() = default;

CLI::App& command_line::add_command(const std::string& name, const std::string& summary,
                                    std::function<int()> run) {
    CLI::App* const command = m_app->add_subcommand(name, summary);
    m_commands.emplace_back(command, std::move(run));
    return *command;
}

void command_line::add_section(const std::string& title, const std::string& text) {
    m_sections.push_back({title, text});
}

// The parser first reports what is missing. A word that it does not know is more often the reason,
// so it is named instead.
std::string command_line::reason_of(const CLI::ParseError& error) const {
    const std::vector<std::string> unknown = m_app->remaining(true);
    const auto command = m_app->get_subcommands();
    if (command.empty() && !unknown.empty() && !begins_as_option(unknown[0])) {
        std::vector<std::string> names;
        for (const auto& each : m_commands)
            names.push_back(each.first->get_name());
        return "unknown command " + in_quotes(unknown[0]) + did_you_mean(unknown[0], names);
    }
    const auto option = std::find_if(unknown.begin(), unknown.end(), begins_as_option);
    if (option != unknown.end()) {
        std::vector<std::string> known = option_names(*m_app);
        for (const CLI::App* const each : command)
            for (const std::string& name : option_names(*each))
                known.push_back(name);
        const std::string name = option->substr(0, option->find('='));
        return "unknown option " + in_quotes(name) + did_you_mean(name, known);
    }
    return unknown.empty() ? error.what() : "unexpected argument " + in_quotes(unknown[0]);
}

int command_line::run(int argc, const char* const* argv) {
    try {
        m_app->parse(argc, argv);
        if (m_app->count("--man") != 0) {
            write_manual(std::cout, *m_app, m_name, m_summary, m_version, m_sections);
            return exit_clean;
        }
        if (m_app->count("--completion") != 0) {
            write_completion(std::cout, *m_app, m_name,
                             m_app->get_option("--completion")->as<std::string>());
            return exit_clean;
        }
        for (const auto& command : m_commands) {
            if (!command.first->parsed())
                continue;
            const int code = command.second();
            std::cout.flush();
            if (!std::cout)
                throw file_error("standard output: cannot be written");
            return code;
        }
        std::cerr << m_app->help();
        return exit_usage;
    } catch (const CLI::Success& answer) {
        return m_app->exit(answer);
    } catch (const CLI::ParseError& error) {
        std::cerr << m_name << ": " << reason_of(error) << "\nRun " << m_name;
        for (const CLI::App* const each : m_app->get_subcommands())
            std::cerr << ' ' << each->get_name();
        std::cerr << " --help for the options.\n";
    } catch (const file_error& error) {
        std::cerr << m_name << ": " << error.what() << '\n';
    }
    return exit_usage;
}

CLI::Option* value_name(CLI::Option* option, const std::string& name) {
    return option->type_name(name);
}

CLI::Option* known_words(CLI::Option* option, const std::vector<std::string>& words,
                         const std::string& kind) {
    CLI::Validator check = CLI::IsMember(words);  // its description is the list of the words
    check.operation([words, kind](const std::string& word) -> std::string {
        if (std::find(words.begin(), words.end(), word) != words.end())
            return "";
        return "no " + kind + " is named " + word + did_you_mean(word, words);
    });
    return option->check(check);
}

}  // namespace tova_programs
