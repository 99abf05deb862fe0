#include "cfg/check/check.hpp"
#include "cfg/check/rules.hpp"
#include "cfg/commands/change.hpp"
#include "cfg/commands/convert.hpp"
#include "cfg/commands/declare.hpp"
#include "cfg/commands/show.hpp"
#include "cfg/commands/watch.hpp"
#include "cfg/version.hpp"
#include "support/command_line.hpp"

#include <CLI/CLI.hpp>

#include <unistd.h>

#include <algorithm>
#include <iostream>
#include <map>
#include <string>
#include <vector>

// The whole command line of tova-cfg, one function for each command. Each fills the options of its
// command; the commands themselves are in the folders beside this file.
//
// In show, get and explain, the arguments after "--" are the command line of the program whose
// settings are read; CLI11 never sees them. In the others "--" ends the options as usual, so that
// set can store a value that begins with "-".

namespace tova_programs::cfg {

namespace {

class tool {
public:
    explicit tool(const std::vector<std::string>& arguments)
        : m_line("tova-cfg", "shows, checks and changes settings", version),
          m_arguments(arguments) {
        add_show();
        add_get();
        add_explain();
        add_set();
        add_unset();
        add_check();
        add_roundtrip();
        add_convert();
        add_watch();
        add_schema_command();
        m_line.add_section(
            "SOURCES",
            "A program reads its settings from its command line, a file and its environment; the "
            "first of them that has a key decides. show, get and explain take the program's "
            "arguments after --:\n\n  tova-cfg show app.cfg -- -port 80\n\nGive several FILEs in "
            "order of priority: the first file that has a key wins. With --env, the name of a "
            "variable is its key: SMTP_HOST is smtp_host, and only a variable named smtp.host "
            "(env smtp.host=... COMMAND) is smtp.host.");
        m_line.add_section("SEE ALSO", "The guide for operators is part of the documentation of "
                                       "the library: docs/operators.md.");
    }

    int run(int argc, const char* const* argv) { return m_line.run(argc, argv); }

private:
    style out_style() const { return style(use_colors(m_line.colors(), STDOUT_FILENO)); }

    void add_sources(CLI::App& command, source_options& from) {
        command.add_option("FILE", from.files, "settings files");
        command.add_flag("-e,--env", from.uses_environment,
                         "also read environment variables; SMTP_HOST is the key smtp_host");
        value_name(command.add_option("--program", from.program,
                                      "the name of the program, its argument 0"),
                   "NAME");
        value_name(command.add_option("--alias", from.aliases, "an alias that the program defines")
                       ->allow_extra_args(false),
                   "KEY=TARGET");
        add_schema(command, from.schema_path);
        from.arguments = m_arguments;
    }
    static void add_schema(CLI::App& command, std::string& path) {
        value_name(
            command.add_option("-s,--schema", path, "the schema: the keys that the program knows"),
            "FILE");
    }
    static void add_json(CLI::App& command, bool& as_json) {
        command.add_flag("--json", as_json, "write JSON");
    }

    void add_show();
    void add_get();
    void add_explain();
    void add_set();
    void add_unset();
    void add_check();
    void add_roundtrip();
    void add_convert();
    void add_watch();
    void add_schema_command();

    command_line m_line;
    std::vector<std::string> m_arguments;
    show_options m_show;
    get_options m_get;
    explain_options m_explain;
    set_options m_set;
    unset_options m_unset;
    check_command m_check;
    roundtrip_options m_roundtrip;
    convert_options m_convert;
    watch_options m_watch;
    schema_options m_schema;
};

void tool::add_show() {
    CLI::App& command =
        m_line.add_command("show", "show every setting, where it is set and what it hides",
                           [this] { return run_show(m_show, std::cout, std::cerr, out_style()); });
    add_sources(command, m_show.sources);
    value_name(command.add_option("--below", m_show.below, "only this key and the keys below it"),
               "KEY");
    add_json(command, m_show.as_json);
}

void tool::add_get() {
    CLI::App& command = m_line.add_command("get", "print a value",
                                           [this] { return run_get(m_get, std::cout, std::cerr); });
    command.add_option("KEY", m_get.key, "the setting")->required();
    add_sources(command, m_get.sources);
    value_name(command
                   .add_option_function<std::string>(
                       "--default",
                       [this](const std::string& value) {
                           m_get.otherwise = value;
                           m_get.has_otherwise = true;
                       },
                       "what to print if no source has the key")
                   ->allow_extra_args(false),
               "VALUE");
    add_json(command, m_get.as_json);
}

void tool::add_explain() {
    CLI::App& command =
        m_line.add_command("explain", "show the lookup of a key step by step", [this] {
            return run_explain(m_explain, std::cout, std::cerr, out_style());
        });
    command.add_option("KEY", m_explain.key, "the setting")->required();
    add_sources(command, m_explain.sources);
    add_json(command, m_explain.as_json);
}

void tool::add_set() {
    CLI::App& command =
        m_line.add_command("set", "set a value in a file and keep its comments, order and layout",
                           [this] { return run_set(m_set, std::cout, std::cerr, out_style()); });
    command.add_option("FILE", m_set.file, "a settings file")->required();
    command.add_option("KEY", m_set.key, "the setting")->required();
    command
        .add_option("VALUE", m_set.values,
                    "the value; several values make an array; write -- before values that begin "
                    "with -")
        ->required();
    command.add_flag("--array", m_set.is_array, "store an array, even of one value");
    command.add_flag("--create", m_set.creates, "create the file if it does not exist");
    command.add_flag("--dry-run", m_set.is_dry_run, "only show the change");
    add_schema(command, m_set.schema_path);
    add_json(command, m_set.as_json);
}

void tool::add_unset() {
    CLI::App& command = m_line.add_command("unset", "remove settings from a file", [this] {
        return run_unset(m_unset, std::cout, std::cerr, out_style());
    });
    command.add_option("FILE", m_unset.file, "a settings file")->required();
    command.add_option("KEY", m_unset.keys, "the settings")->required();
    command.add_flag("--dry-run", m_unset.is_dry_run, "only show the change");
    add_json(command, m_unset.as_json);
}

void tool::add_check() {
    CLI::App& command =
        m_line.add_command("check", "find likely mistakes in settings files", [this] {
            return run_check(m_check, std::cout, std::cerr, out_style());
        });
    command.add_option("FILE", m_check.check.files, "settings files");
    add_schema(command, m_check.check.schema_path);
    command
        .add_option(
            "--written-for", m_check.check.written_for,
            "also report what this reader, for which the files were written, reads differently")
        ->check(CLI::IsMember({"configparser", "inih"}));
    command
        .add_option("--fail-on", m_check.fail_on,
                    "the least severity that makes the exit code 1 (default: warning)")
        ->check(CLI::IsMember({"error", "warning", "note", "never"}));
    known_words(command.add_option("--only", m_check.check.only, "report these rules only"),
                rules().ids(), "rule")
        ->delimiter(',')
        ->allow_extra_args(false)
        ->type_name("RULES");
    known_words(command.add_option("--ignore", m_check.check.ignored, "do not report these rules"),
                rules().ids(), "rule")
        ->delimiter(',')
        ->allow_extra_args(false)
        ->type_name("RULES");
    command.add_flag("--fix", m_check.fixes, "change the files where the fix is certain");
    command.add_flag("--dry-run", m_check.is_dry_run, "with --fix: only show the changes");
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

void tool::add_roundtrip() {
    CLI::App& command =
        m_line.add_command("roundtrip", "show what a program would change in a file by saving it",
                           [this] { return run_roundtrip(m_roundtrip, std::cout, out_style()); });
    command.add_option("FILE", m_roundtrip.file, "a settings file")->required();
    add_json(command, m_roundtrip.as_json);
}

void tool::add_convert() {
    CLI::App& command =
        m_line.add_command("convert", "make a settings file from INI, TOML or JSON",
                           [this] { return run_convert(m_convert, std::cout, std::cerr); });
    command.add_option("FILE", m_convert.file, "the file to read")->required();
    command
        .add_option(
            "--from", m_convert.format,
            "its format: ini or configparser (as Python's configparser reads it), inih (as the "
            "C library inih does), toml or json (by the extension)")
        ->check(CLI::IsMember({"ini", "configparser", "inih", "toml", "json"}));
    value_name(
        command.add_option("-o,--output", m_convert.output, "the file to write (standard output)"),
        "FILE");
    command.add_flag("--force", m_convert.replaces, "replace the file that --output names");
    add_json(command, m_convert.as_json);
}

void tool::add_watch() {
    CLI::App& command =
        m_line.add_command("watch", "print each setting that changes in a file", [this] {
            return run_watch(m_watch, std::cout, std::cerr, out_style());
        });
    command.add_option("FILE", m_watch.file, "a settings file")->required();
    value_name(command.add_option("--count", m_watch.count, "exit after N changes"), "N");
    command.add_flag("--json", m_watch.as_json, "write one JSON object per line");
}

void tool::add_schema_command() {
    CLI::App& command = m_line.add_command(
        "schema", "write documentation, a sample file or completions from a schema",
        [this] { return run_schema(m_schema, std::cout); });
    command.add_option("FILE", m_schema.file, "a schema")->required();
    command
        .add_option("--format", m_schema.format,
                    "markdown (a table), json, cfg (a settings file with every key) or bash "
                    "(completion of a program's options)")
        ->check(CLI::IsMember({"markdown", "json", "cfg", "bash"}));
    command.add_flag_callback(
        "--json", [this] { m_schema.format = "json"; }, "the same as --format json");
    value_name(command.add_option("--program", m_schema.program, "the program to complete"),
               "NAME");
    command.add_flag("--guess", m_schema.is_settings,
                     "FILE is a settings file: write a schema that fits it");
}

// Whether the command is one that reads the settings of a program with its arguments.
bool takes_program_arguments(const std::vector<std::string>& words) {
    for (std::size_t i = 1; i < words.size(); ++i)
        if (words[i] == "--color")
            ++i;
        else if (words[i].compare(0, 1, "-") != 0)
            return words[i] == "show" || words[i] == "get" || words[i] == "explain";
    return false;
}

}  // namespace

}  // namespace tova_programs::cfg

int main(int argc, char** argv) {
    const std::vector<std::string> words(argv, argv + argc);
    int own = argc;
    if (tova_programs::cfg::takes_program_arguments(words))
        own = static_cast<int>(std::find(words.begin(), words.end(), "--") - words.begin());
    const std::vector<std::string> arguments(argv + (own < argc ? own + 1 : argc), argv + argc);
    return tova_programs::cfg::tool(arguments).run(own, argv);
}
