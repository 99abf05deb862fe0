#include "support/manual.hpp"

#include <CLI/CLI.hpp>

#include <sstream>

namespace tova_programs {

namespace {

// Text in roff: backslashes and minus signs are escaped, and so is a period or an apostrophe that
// begins a line.
std::string escaped(const std::string& text) {
    std::string result;
    bool begins_line = true;
    for (const char c : text) {
        if (begins_line && (c == '.' || c == '\''))
            result += "\\&";
        begins_line = c == '\n';
        if (c == '\\')
            result += "\\e";
        else if (c == '-')
            result += "\\-";
        else
            result += c;
    }
    return result;
}

// Paragraphs, and lines that are indented by two spaces as they are.
void write_text(std::ostream& out, const std::string& text) {
    std::istringstream lines(text);
    std::string line;
    bool is_literal = false;
    while (std::getline(lines, line)) {
        const bool is_indented = line.compare(0, 2, "  ") == 0;
        if (is_indented != is_literal)
            out << (is_indented ? ".PP\n.RS 4\n.nf\n" : ".fi\n.RE\n");
        is_literal = is_indented;
        if (line.empty())
            out << ".PP\n";
        else
            out << escaped(is_indented ? line.substr(2) : line) << '\n';
    }
    if (is_literal)
        out << ".fi\n.RE\n";
}

std::string value_of(const CLI::Option& option) {
    return option.get_items_expected_max() == 0 ? "" : option.get_type_name();
}

// \fB\-\-option\fR \fIVALUE\fR
std::string spelled(const CLI::Option& option) {
    std::string result;
    for (const std::string& name : option.get_snames())
        result += (result.empty() ? "" : ", ") + ("\\fB\\-" + escaped(name) + "\\fR");
    for (const std::string& name : option.get_lnames())
        result += (result.empty() ? "" : ", ") + ("\\fB\\-\\-" + escaped(name) + "\\fR");
    if (result.empty())
        return "\\fI" + escaped(option.get_name(true)) + "\\fR";
    // A list of words may be broken after each comma.
    std::string value;
    for (const char c : escaped(value_of(option)))
        value += c == ',' ? ",\\:" : std::string(1, c);
    return value.empty() ? result : result + " \\fI" + value + "\\fR";
}

void write_options(std::ostream& out, const CLI::App& app) {
    for (const CLI::Option* const option : app.get_options()) {
        if (option->get_group().empty())
            continue;
        out << ".TP\n" << spelled(*option) << '\n' << escaped(option->get_description()) << '\n';
    }
}

std::string usage_of(const CLI::App& command) {
    std::string result = "\\fB" + escaped(command.get_name()) + "\\fR";
    if (!command
             .get_options([](const CLI::Option* option) {
                 return !option->get_positional() && option->get_lnames().front() != "help";
             })
             .empty())
        result += " [\\fIOPTIONS\\fR]";
    for (const CLI::Option* const option :
         command.get_options([](const CLI::Option* each) { return each->get_positional(); })) {
        const std::string name = "\\fI" + escaped(option->get_name(true)) + "\\fR" +
                                 (option->get_items_expected_max() > 1 ? "..." : "");
        result += option->get_required() ? " " + name : " [" + name + "]";
    }
    return result;
}

}  // namespace

void write_manual(std::ostream& out, const CLI::App& app, const std::string& name,
                  const std::string& summary, const std::string& version,
                  const std::vector<manual_section>& sections) {
    std::string upper = name;
    for (char& c : upper)
        c = static_cast<char>(c >= 'a' && c <= 'z' ? c - 'a' + 'A' : c);
    out << ".TH " << escaped(upper) << " 1 \"\" \"" << escaped(name + " " + version)
        << "\" \"User Commands\"\n.SH NAME\n"
        << escaped(name) << " \\- " << escaped(summary) << "\n.SH SYNOPSIS\n\\fB" << escaped(name)
        << "\\fR [\\fIOPTIONS\\fR] \\fICOMMAND\\fR ...\n.SH OPTIONS\n";
    write_options(out, app);
    out << ".SH COMMANDS\n";
    for (const CLI::App* const command :
         app.get_subcommands([](const CLI::App* each) { return !each->get_group().empty(); })) {
        out << ".SS " << usage_of(*command) << '\n' << escaped(command->get_description()) << ".\n";
        write_options(out, *command);
        if (!command->get_footer().empty()) {
            out << ".PP\n";
            write_text(out, command->get_footer());
        }
    }
    out << ".SH EXIT STATUS\n.TP\n0\nThe work is done, and nothing was found.\n.TP\n1\nSomething "
           "was "
           "found, or a comparison showed a difference.\n.TP\n2\nThe command line is wrong, or a "
           "file "
           "cannot be read or written.\n.SH ENVIRONMENT\n.TP\n\\fBNO_COLOR\\fR\nIf it is not "
           "empty, "
           "output is not colored unless \\fB\\-\\-color always\\fR is given.\n";
    for (const manual_section& section : sections) {
        out << ".SH " << escaped(section.title) << '\n';
        write_text(out, section.text);
    }
}

}  // namespace tova_programs
