#include "support/command_line.hpp"
#include "xmc/check/check.hpp"
#include "xmc/commands/coverage.hpp"
#include "xmc/commands/edit.hpp"
#include "xmc/commands/exchange.hpp"
#include "xmc/commands/import.hpp"
#include "xmc/commands/keys.hpp"
#include "xmc/commands/render.hpp"
#include "xmc/commands/schema.hpp"
#include "xmc/lsp/lsp.hpp"
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
        add_coverage();
        add_show();
        add_render();
        add_preview();
        add_fmt();
        add_diff();
        add_merge();
        add_pseudo();
        add_export();
        add_import();
        add_keys();
        add_scan();
        add_schema();
        add_lsp();
        m_line.add_section("SEE ALSO", "The guide for translators is part of the documentation of "
                                       "the library: docs/translators.md.");
    }

    int run(int argc, const char* const* argv) { return m_line.run(argc, argv); }

private:
    style out_style() const { return style(use_colors(m_line.colors(), STDOUT_FILENO)); }

    static void add_paths(CLI::App& command, std::vector<std::string>& paths) {
        command.add_option("PATH", paths, "catalog files, or folders with .xmc and .xml files");
    }
    static void require_paths(CLI::App& command, std::vector<std::string>& paths) {
        command.add_option("PATH", paths, "catalog files, or folders with .xmc and .xml files")
            ->required();
    }
    // Where the paths follow other words of the command line, they are an option.
    static void add_path_option(CLI::App& command, std::vector<std::string>& paths) {
        value_name(command.add_option("-p,--path", paths, "a catalog file or folder (.)"), "PATH")
            ->allow_extra_args(false);
        paths = {"."};
    }
    static void add_json(CLI::App& command, bool& as_json) {
        command.add_flag("--json", as_json, "write JSON");
    }
    static void add_output(CLI::App& command, std::string& output) {
        value_name(command.add_option("-o,--output", output, "the file to write (standard output)"),
                   "FILE");
    }

    static void add_choice_of_rules(CLI::App& command, check_options& options) {
        known_words(command.add_option("--only", options.only, "report these rules only"),
                    rules().ids(), "rule")
            ->delimiter(',')
            ->allow_extra_args(false)
            ->type_name("RULES");
        known_words(command.add_option("--ignore", options.ignored, "do not report these rules"),
                    rules().ids(), "rule")
            ->delimiter(',')
            ->allow_extra_args(false)
            ->type_name("RULES");
    }

    void add_check();
    void add_coverage();
    void add_show();
    void add_render();
    void add_preview();
    void add_fmt();
    void add_diff();
    void add_merge();
    void add_pseudo();
    void add_export();
    void add_import();
    void add_keys();
    void add_scan();
    void add_schema();
    void add_lsp();

    command_line m_line;
    check_command m_check;
    coverage_options m_coverage;
    show_options m_show;
    render_options m_render;
    preview_options m_preview;
    fmt_options m_fmt;
    diff_options m_diff;
    merge_options m_merge;
    pseudo_options m_pseudo;
    export_options m_export;
    import_options m_import;
    keys_options m_keys;
    scan_options m_scan;
    schema_options m_schema;
    check_options m_lsp;
};

void tool::add_check() {
    CLI::App& command = m_line.add_command(
        "check", "find errors, and mistakes that programs accept silently",
        [this] { return run_check(m_check, std::cout, std::cerr, out_style()); });
    add_paths(command, m_check.check.paths);
    value_name(command.add_option("--reference", m_check.check.reference,
                                  "the locale whose arguments the others must have (en)"),
               "LANG")
        ->each([this](const std::string&) { m_check.check.requires_reference = true; });
    command
        .add_option("--fail-on", m_check.fail_on,
                    "the least severity that makes the exit code 1 (warning)")
        ->check(CLI::IsMember({"error", "warning", "note", "never"}));
    add_choice_of_rules(command, m_check.check);
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

void tool::add_coverage() {
    CLI::App& command = m_line.add_command("coverage", "show how complete each locale is", [this] {
        return run_coverage(m_coverage, std::cout, std::cerr, out_style());
    });
    require_paths(command, m_coverage.paths);
    value_name(command.add_option("--reference", m_coverage.reference,
                                  "the locale whose messages count as all (en)"),
               "LANG")
        ->each([this](const std::string&) { m_coverage.requires_reference = true; });
    command
        .add_option("--format", m_coverage.format,
                    "table, csv, json, or html: one page that needs no other file")
        ->check(CLI::IsMember({"table", "csv", "json", "html"}));
    command.add_flag_callback(
        "--json", [this] { m_coverage.format = "json"; }, "the same as --format json");
    value_name(command
                   .add_option("--min", m_coverage.minimums,
                               "fail if a locale has less of its own: de=95 or de=95%")
                   ->allow_extra_args(false),
               "LANG=PERCENT");
    value_name(command.add_option("--untranslated", m_coverage.untranslated_in,
                                  "list the messages that a locale does not have itself"),
               "LANG");
    add_output(command, m_coverage.output);
}

void tool::add_show() {
    CLI::App& command =
        m_line.add_command("show", "show a message in every locale, and where it is",
                           [this] { return run_show(m_show, std::cout, std::cerr, out_style()); });
    command
        .add_option("KEY", m_show.key,
                    "the message, as KEY or CATALOG/KEY, with escapes like \\n as keys lists it")
        ->required();
    add_path_option(command, m_show.paths);
    value_name(command.add_option("-l,--lang", m_show.locale,
                                  "say which one a program with this locale shows"),
               "LANG");
    add_json(command, m_show.as_json);
}

void tool::add_render() {
    CLI::App& command =
        m_line.add_command("render", "render a message with values, as a program does",
                           [this] { return run_render(m_render, std::cout, std::cerr); });
    command
        .add_option("KEY", m_render.key,
                    "the message, as KEY or CATALOG/KEY, with escapes like \\n as keys lists it")
        ->required();
    command.add_option("VALUE", m_render.values,
                       "NAME=VALUE, or NAME:TYPE=VALUE with string, int, double or bool");
    add_path_option(command, m_render.paths);
    value_name(command.add_option("-l,--lang", m_render.locale, "the locale of the program (en)"),
               "LANG");
    add_json(command, m_render.as_json);
}

void tool::add_preview() {
    CLI::App& command =
        m_line.add_command("preview", "write a page with every message, for reviewers",
                           [this] { return run_preview(m_preview, std::cout); });
    require_paths(command, m_preview.paths);
    value_name(
        command.add_option("-l,--lang", m_preview.locales, "these locales only")->delimiter(','),
        "LANGS");
    add_output(command, m_preview.output);
    command.add_flag("--json", m_preview.as_json, "write the texts as JSON");
}

void tool::add_fmt() {
    CLI::App& command = m_line.add_command("fmt", "rewrite catalogs in the canonical layout",
                                           [this] { return run_fmt(m_fmt, std::cout, std::cerr); });
    require_paths(command, m_fmt.paths);
    command.add_flag("--check", m_fmt.checks, "only name the files that would change");
    command.add_flag("--stdout", m_fmt.shows, "write to standard output");
    add_json(command, m_fmt.as_json);
}

void tool::add_diff() {
    CLI::App& command =
        m_line.add_command("diff", "compare the messages of two files or folders",
                           [this] { return run_diff(m_diff, std::cout, out_style()); });
    command.add_option("BEFORE", m_diff.before, "a catalog file or folder")->required();
    command.add_option("AFTER", m_diff.after, "a catalog file or folder")->required();
    add_json(command, m_diff.as_json);
}

void tool::add_merge() {
    CLI::App& command = m_line.add_command("merge", "join catalogs into one file", [this] {
        return run_merge(m_merge, std::cout, std::cerr);
    });
    require_paths(command, m_merge.paths);
    add_output(command, m_merge.output);
    add_json(command, m_merge.as_json);
    command
        .add_option("--prefer", m_merge.prefer,
                    "which of two different messages is kept; without it they are an error")
        ->check(CLI::IsMember({"first", "last"}));
}

void tool::add_pseudo() {
    CLI::App& command =
        m_line.add_command("pseudo", "translate into accented and longer English, for tests",
                           [this] { return run_pseudo(m_pseudo, std::cout); });
    require_paths(command, m_pseudo.paths);
    value_name(command.add_option("--from", m_pseudo.from, "the locale to start from (en)"),
               "LANG");
    value_name(command.add_option("--to", m_pseudo.to, "the locale of the result (en_XA)"), "LANG");
    add_output(command, m_pseudo.output);
    add_json(command, m_pseudo.as_json);
}

void tool::add_export() {
    CLI::App& command =
        m_line.add_command("export", "write a locale for translators: PO, XLIFF or CSV",
                           [this] { return run_export(m_export, std::cout, std::cerr); });
    require_paths(command, m_export.paths);
    value_name(command.add_option("-l,--lang", m_export.locale,
                                  "the locale to translate into (none: a template)"),
               "LANG");
    value_name(
        command.add_option("--reference", m_export.reference, "the locale to translate from (en)"),
        "LANG")
        ->each([this](const std::string&) { m_export.requires_reference = true; });
    command.add_option("--format", m_export.format, "po, xliff (1.2), xliff2 (2.0) or csv (po)")
        ->check(CLI::IsMember({"po", "xliff", "xliff2", "csv"}));
    command.add_option("--catalog", m_export.catalogs, "these catalogs only")
        ->delimiter(',')
        ->type_name("NAMES");
    add_output(command, m_export.output);
    command.add_flag("--json", m_export.as_json,
                     "write the counts as JSON, and the result within it if there is no --output");
}

void tool::add_import() {
    CLI::App& command = m_line.add_command(
        "import", "make a catalog from what translators return, or from another program's PO",
        [this] { return run_import(m_import, std::cout, std::cerr); });
    command
        .add_option("PATH", m_import.paths,
                    "a .po, .pot, .xlf, .xliff, .xliff2 or .csv file, or several, "
                    "or folders of them: de.po, de/app.po, de/LC_MESSAGES/app.po or app/de.po")
        ->required();
    value_name(command.add_option("-l,--lang", m_import.locale, "the locale (as the file says)"),
               "LANG");
    value_name(command.add_option("--reference", m_import.reference,
                                  "the locale of the sources, where the file does not say (en)"),
               "LANG");
    value_name(
        command.add_option("--catalog", m_import.catalog,
                           "the catalog, where the file does not say (the one that its folders "
                           "name, or messages)"),
        "NAME");
    command.add_flag("--with-source", m_import.with_sources, "add the messages of the reference");
    command.add_flag("--c-format", m_import.is_c_format,
                     "make arguments of %s and %d in PO entries without any format flag, too");
    value_name(command.add_option("-o,--output", m_import.output,
                                  "the .xmc file to write (standard output), or the folder to "
                                  "write to; several files need a folder"),
               "FILE");
    command.add_flag(
        "--json", m_import.as_json,
        "write the findings as JSON, and the result within it if there is no --output");
}

void tool::add_keys() {
    CLI::App& command = m_line.add_command("keys", "list the keys of all messages",
                                           [this] { return run_keys(m_keys, std::cout); });
    require_paths(command, m_keys.paths);
    command.add_flag("--header", m_keys.as_header, "as constants in a C++ header");
    value_name(command.add_option("--namespace", m_keys.name_space,
                                  "the namespace of the header (messages)"),
               "NAME");
    add_json(command, m_keys.as_json);
}

void tool::add_scan() {
    CLI::App& command =
        m_line.add_command("scan", "find keys that sources use but catalogs lack, and the reverse",
                           [this] { return run_scan(m_scan, std::cout); });
    command.add_option("SOURCE", m_scan.sources, "C++ files, or folders of them")->required();
    add_path_option(command, m_scan.paths);
    value_name(command
                   .add_option("--function", m_scan.functions,
                               "functions that take a catalog and a key, or a key (message, "
                               "has_message)")
                   ->delimiter(','),
               "NAMES");
    add_json(command, m_scan.as_json);
}

void tool::add_schema() {
    CLI::App& command =
        m_line.add_command("schema", "write the grammar of catalogs, for editors and validators",
                           [this] { return run_schema(m_schema, std::cout, std::cerr); });
    command
        .add_option("--form", m_schema.form,
                    "RELAX NG of what a catalog should be (strict) or of what the loader accepts "
                    "(loader), the strict form in the compact syntax (compact) or as XSD (xsd), or "
                    "files with which editors find these: an XML catalog (catalog), rules for "
                    "Emacs (emacs), settings for VS Code (vscode)")
        ->check(
            CLI::IsMember({"strict", "loader", "compact", "xsd", "catalog", "emacs", "vscode"}));
    add_output(command, m_schema.output);
    value_name(command.add_option("-d,--directory", m_schema.folder,
                                  "write all forms into this folder, as files"),
               "DIR")
        ->excludes("--form")
        ->excludes("--output");
    add_json(command, m_schema.as_json);
}

void tool::add_lsp() {
    CLI::App& command = m_line.add_command(
        "lsp", "serve editors over standard input and output, by the language server protocol",
        [this] { return run_lsp(m_lsp, STDIN_FILENO, STDOUT_FILENO); });
    command.add_option("PATH", m_lsp.paths,
                       "catalog files or folders, below each folder of the editor (all of it)");
    value_name(command.add_option("--reference", m_lsp.reference,
                                  "the locale whose arguments the others must have (en)"),
               "LANG");
    add_choice_of_rules(command, m_lsp);
    command.add_flag("--stdio", "does nothing; some editors add it");
}

}  // namespace

}  // namespace tova_programs::xmc

int main(int argc, char** argv) {
    return tova_programs::xmc::tool().run(argc, argv);
}
