#include "support/completion.hpp"

#include <CLI/CLI.hpp>

#include <string>
#include <vector>

// The three scripts have the same structure: the first word that is no option is the command, and
// the words offered are the options of the program and of that command. An option with a list of
// words offers them as its value.

namespace tova_programs {

namespace {

struct option_words {
    std::vector<std::string> names;  // with their dashes
    std::string description;
    bool has_value;
    std::vector<std::string> values;  // empty: any
};

// The words of a `CLI::IsMember` check, whose description is "{a,b,c}".
std::vector<std::string> values_of(const CLI::Option& option) {
    const std::string type = option.get_type_name();
    const auto open = type.rfind('{');
    const auto close = type.rfind('}');
    if (open == std::string::npos || close == std::string::npos || close < open)
        return {};
    return CLI::detail::split(type.substr(open + 1, close - open - 1), ',');
}

std::vector<option_words> options_of(const CLI::App& app) {
    std::vector<option_words> result;
    for (const CLI::Option* const option : app.get_options()) {
        option_words words;
        for (const std::string& name : option->get_snames())
            words.names.push_back("-" + name);
        for (const std::string& name : option->get_lnames())
            words.names.push_back("--" + name);
        if (words.names.empty())
            continue;
        words.description = option->get_description();
        words.has_value = option->get_items_expected_max() != 0;
        words.values = values_of(*option);
        result.push_back(words);
    }
    return result;
}

std::vector<const CLI::App*> commands_of(const CLI::App& app) {
    return app.get_subcommands([](const CLI::App* each) { return !each->get_group().empty(); });
}

std::string joined(const std::vector<std::string>& words) {
    std::string result;
    for (const std::string& word : words)
        result += (result.empty() ? "" : " ") + word;
    return result;
}

std::string names_of(const CLI::App& app) {
    std::string result;
    for (const option_words& option : options_of(app))
        result += (result.empty() ? "" : " ") + joined(option.names);
    return result;
}

// Without quotes and characters that a shell would interpret within single quotes.
std::string plain(const std::string& text) {
    std::string result;
    for (const char c : text)
        if (c != '\'' && c != '[' && c != ']' && c != ':' && c != '\\')
            result += c;
    return result;
}

std::string function_name(const std::string& name) {
    std::string result = "_" + name;
    for (char& c : result)
        if (c == '-')
            c = '_';
    return result;
}

void write_bash_values(std::ostream& out, const CLI::App& app) {
    for (const option_words& option : options_of(app)) {
        if (option.values.empty())
            continue;
        std::string pattern;
        for (const std::string& word : option.names)
            pattern += (pattern.empty() ? "" : "|") + word;
        out << "        " << pattern << ") COMPREPLY=($(compgen -W '" << joined(option.values)
            << "' -- \"$word\")); return ;;\n";
    }
}

void write_bash(std::ostream& out, const CLI::App& app, const std::string& name) {
    const std::string function = function_name(name);
    std::string commands;
    for (const CLI::App* const command : commands_of(app))
        commands += (commands.empty() ? "" : " ") + command->get_name();
    out << "# bash completion for " << name << "\n"
        << function << "() {\n"
        << "    local word=${COMP_WORDS[COMP_CWORD]} before=${COMP_WORDS[COMP_CWORD-1]}\n"
        << "    local command= options='" << names_of(app) << "' i\n"
        << "    for ((i = 1; i < COMP_CWORD; ++i)); do\n"
        << "        case \" " << commands << " \" in *\" ${COMP_WORDS[i]} \"*) "
        << "command=${COMP_WORDS[i]}; break ;; esac\n"
        << "    done\n"
        << "    case $before in\n";
    write_bash_values(out, app);
    for (const CLI::App* const command : commands_of(app))
        write_bash_values(out, *command);
    out << "    esac\n"
        << "    case $command in\n"
        << "        '') COMPREPLY=($(compgen -W \"" << commands
        << " $options\" -- \"$word\")); return ;;\n";
    for (const CLI::App* const command : commands_of(app))
        out << "        " << command->get_name() << ") options+=' " << names_of(*command)
            << "' ;;\n";
    out << "    esac\n"
        << "    if [[ $word == -* ]]; then\n"
        << "        COMPREPLY=($(compgen -W \"$options\" -- \"$word\"))\n"
        << "    else\n"
        << "        COMPREPLY=($(compgen -f -- \"$word\"))\n"
        << "    fi\n"
        << "}\n"
        << "complete -o filenames -F " << function << ' ' << name << '\n';
}

void write_zsh_options(std::ostream& out, const CLI::App& app, const std::string& indent) {
    for (const option_words& option : options_of(app)) {
        for (const std::string& word : option.names) {
            out << " \\\n" << indent << '\'' << word << '[' << plain(option.description) << ']';
            if (!option.values.empty())
                out << ":value:(" << joined(option.values) << ')';
            else if (option.has_value)
                out << ":value:_files";
            out << '\'';
        }
    }
}

void write_zsh(std::ostream& out, const CLI::App& app, const std::string& name) {
    const std::string function = function_name(name);
    out << "#compdef " << name << "\n"
        << function << "() {\n"
        << "    local -a commands=(";
    for (const CLI::App* const command : commands_of(app))
        out << "\n        '" << command->get_name() << ':' << plain(command->get_description())
            << '\'';
    out << ")\n    local state line\n    _arguments -C";
    write_zsh_options(out, app, "        ");
    out << " \\\n        '1: :->command' '*:: :->arguments'\n"
        << "    case $state in\n"
        << "    command) _describe command commands ;;\n"
        << "    arguments)\n"
        << "        case $line[1] in\n";
    for (const CLI::App* const command : commands_of(app)) {
        out << "        " << command->get_name() << ") _arguments";
        write_zsh_options(out, *command, "            ");
        out << " '*:file:_files' ;;\n";
    }
    out << "        esac ;;\n"
        << "    esac\n"
        << "}\n"
        << function << " \"$@\"\n";
}

void write_fish_options(std::ostream& out, const CLI::App& app, const std::string& begin) {
    for (const option_words& option : options_of(app)) {
        out << begin;
        for (const std::string& word : option.names)
            out << (word[1] == '-' ? " -l " + word.substr(2) : " -s " + word.substr(1));
        if (!option.values.empty())
            out << " -x -a '" << joined(option.values) << '\'';
        else if (option.has_value)
            out << " -r";
        out << " -d '" << plain(option.description) << "'\n";
    }
}

void write_fish(std::ostream& out, const CLI::App& app, const std::string& name) {
    out << "# fish completion for " << name << '\n';
    write_fish_options(out, app, "complete -c " + name);
    for (const CLI::App* const command : commands_of(app)) {
        out << "complete -c " << name << " -n __fish_use_subcommand -f -a " << command->get_name()
            << " -d '" << plain(command->get_description()) << "'\n";
        write_fish_options(out, *command,
                           "complete -c " + name + " -n '__fish_seen_subcommand_from " +
                               command->get_name() + "'");
    }
}

}  // namespace

void write_completion(std::ostream& out, const CLI::App& app, const std::string& name,
                      const std::string& shell) {
    if (shell == "bash")
        write_bash(out, app, name);
    else if (shell == "zsh")
        write_zsh(out, app, name);
    else
        write_fish(out, app, name);
}

}  // namespace tova_programs
