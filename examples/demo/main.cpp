// The first screen of ./run demo: a backup report in six languages, the settings behind it with
// their sources, and a log that is read while another process writes it.
//
//     tova_example_demo [--color=auto|always|never] [-KEY=VALUE ...]
//
// Run it in a directory that it may write to: the log is a file there, and is removed at the end.

#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <iostream>
#include <string>
#include <vector>

#include <tova/tova.hpp>

using tova::config::config_manager;
using tova::config::std_config_dispatch;
using tova::generic::varg_list;
using tova::i18n::message_catalogs;
using tova::parser::xml_stream_parser;
using tova::strings::ustring8;
using tova::types::variant;

namespace {

const char help[] =
    "usage: tova_example_demo [--color=auto|always|never] [-KEY=VALUE ...]\n"
    "\n"
    "Prints a report in six languages, settings with their sources, and a log that\n"
    "grows. -KEY=VALUE sets a setting, for example -backup.keep=30.\n"
    "\n"
    "Exit status: 0 on success, 1 if a catalog cannot be loaded or the log cannot be\n"
    "written, 2 for a wrong --color.\n";

// ---------------------------------------------------------------------------------------- terminal

enum class style { title, label, good, warning, error };

// Colors go to terminals only, and never where NO_COLOR asks for none.
class painter {
public:
    explicit painter(bool is_colored) : m_is_colored(is_colored) {}

    std::string operator()(style chosen, const std::string& text) const {
        static const char* const codes[] = {"1;36", "2", "32", "33", "31"};
        if (!m_is_colored)
            return text;
        return std::string("\033[") + codes[static_cast<int>(chosen)] + "m" + text + "\033[0m";
    }

private:
    bool m_is_colored;
};

bool wants_color(const std::string& choice) {
    if (choice != "auto")
        return choice == "always";
    const char* const no_color = std::getenv("NO_COLOR");
    return isatty(STDOUT_FILENO) != 0 && (no_color == nullptr || *no_color == '\0');
}

// The columns that a terminal needs for a string: East Asian characters take two.
std::size_t columns(const ustring8& text) {
    std::size_t result = 0;
    for (const wchar_t code : tova::strings::utf8_to_utf32(text))
        result += code >= 0x2E80 && code < 0xFFE8 ? 2 : 1;
    return result;
}

std::string padded(const ustring8& text, std::size_t width) {
    const std::size_t used = columns(text);
    return text + std::string(used < width ? width - used : 0, ' ');
}

// ------------------------------------------------------------------------------------------ report

// What the report is about. Messages take the arguments that they name and ignore the others.
varg_list facts(config_manager& settings) {
    namespace types = tova::types;
    const types::basic_absolute_impl<types::absolute_unit::centimetre> label(21.0);
    varg_list result;
    result.push_back("host", "atlas");
    result.push_back("user", settings.get_value("mail.to", "you").as_string());
    result.push_back("files", 1234567);
    result.push_back("bytes", 48318382080ul);
    result.push_back("hours", 1);
    result.push_back("minutes", 25);
    result.push_back("day", 3);
    result.push_back("year", 2026);
    result.push_back("centimetres", label.value());
    result.push_back("inches",
                     types::basic_absolute_impl<types::absolute_unit::inch>(label).value());
    return result;
}

// One language: its catalog, and the separators that it puts into numbers.
class language {
public:
    language(const message_catalogs& catalogs, const varg_list& facts)
        : m_catalogs(catalogs), m_arguments(facts) {
        m_arguments.push_back("month", text("month.3"));
        // A number is rendered plainly, gets the separators, and goes into messages as a string.
        for (const char* const key : {"files", "size", "centimetres", "inches"}) {
            m_arguments.erase(key);
            m_arguments.push_back(key, with_separators(render(ustring8("plain.") + key, facts)));
        }
    }

    ustring8 text(const ustring8& key) const { return render(key, m_arguments); }

private:
    ustring8 render(const ustring8& key, const varg_list& arguments) const {
        return m_catalogs.message("backup", key).as_string(arguments);
    }

    ustring8 with_separators(ustring8 number) const {
        tova::strings::replace_all(number, ".", text("decimal"));
        tova::strings::replace_all(number, " ", text("group"));
        return number;
    }

    const message_catalogs& m_catalogs;
    varg_list m_arguments;
};

bool print_report(config_manager& settings, const painter& paint) {
    const char* const locales[] = {"en_US", "de_DE", "fr_FR", "sv_SE", "pt_BR", "ja_JP"};
    const std::pair<const char*, std::size_t> parts[] = {
        {"language", 12}, {"files", 20}, {"size", 10},
        {"duration", 18}, {"date", 22},  {"length", 0},
    };
    std::string table;
    std::string sentences;
    for (const char* const locale : locales) {
        message_catalogs catalogs;
        auto result = catalogs.load(TOVA_EXAMPLE_FOLDER "/catalogs", ustring8(locale));
        if (result.type != message_catalogs::no_error) {
            std::cerr << result << '\n';
            return false;
        }
        const language one(catalogs, facts(settings));
        table += "  ";
        for (const auto& part : parts) {
            const std::string cell = padded(one.text(part.first), part.second);
            table += &part == parts ? paint(style::label, cell) : cell;
        }
        table += '\n';
        sentences += "  " + paint(style::label, padded(one.text("language"), 12)) +
                     one.text("summary") + '\n';
    }
    std::cout << paint(style::title, "One program, six languages: messages from catalogs") << "\n\n"
              << sentences << '\n'
              << table << '\n';
    return true;
}

// ---------------------------------------------------------------------------------------- settings

// The sources are asked in this order; the first that knows a key wins.
std::string source_of(config_manager& settings, const ustring8& key) {
    for (const char* const id : {"command line", "standard file", "enviroment"})
        if (settings.get_config_item(id)->get_value(key) != nullptr)
            return id == std::string("standard file") ? "demo.cfg"
                   : id == std::string("enviroment")  ? "environment"
                                                      : id;
    return "default";
}

void print_settings(config_manager& settings, const painter& paint) {
    std::cout << paint(style::title, "Settings: the first source that knows a key wins") << "\n\n";
    const std::pair<const char*, const char*> defaults[] = {{"backup.folder", "/var/backups"},
                                                            {"backup.keep", "7"},
                                                            {"backup.level", "fast"},
                                                            {"home", "/"},
                                                            {"mail.to", "you"},
                                                            {"mail.server", "localhost"}};
    for (const auto& setting : defaults) {
        const ustring8 value = settings.get_value(setting.first, setting.second).as_string();
        std::cout << "  " << padded(setting.first, 16) << padded(value, 16)
                  << paint(style::label, source_of(settings, setting.first)) << '\n';
    }
    std::cout << '\n';
}

// --------------------------------------------------------------------------------------------- log

const char log_path[] = "backup.log.xml";

// The writer stops in the middle of elements, as writers do.
void write_log(int file) {
    for (const char* const piece :
         {"<?xml version='1.0'?>\n<log host='atlas'>\n <entry level='info'>backup star",
          "ted</entry>\n <entry level='info'>1234567 files read</entry>\n <entry le",
          "vel='warning'>2 files changed while they were read</entry>\n",
          " <entry level='info'>verified &amp; complete</entry>\n</log>\n"}) {
        if (write(file, piece, std::strlen(piece)) < 0)
            _exit(1);
        usleep(120000);
    }
    _exit(0);
}

void print_entry(const xml_stream_parser::node& entry, const painter& paint) {
    std::string level;
    for (const auto& attribute : entry.attributes)
        if (attribute.first == "level")
            level = attribute.second;
    const style chosen = level == "warning" ? style::warning : style::good;
    std::cout << "  " << paint(chosen, padded(level, 10)) << entry.text << std::endl;
}

bool follow_log(const painter& paint) {
    std::cout << paint(style::title, "A log, read while another process writes it") << "\n\n"
              << std::flush;
    FILE* const file = std::fopen(log_path, "w");
    if (file == nullptr) {
        std::cerr << "cannot write " << log_path << '\n';
        return false;
    }
    const pid_t writer = fork();
    if (writer == 0)
        write_log(fileno(file));
    std::fclose(file);

    xml_stream_parser parser(ustring8(log_path), 1);
    bool is_finished = false;
    while (!is_finished && parser.parse() < xml_stream_parser::mismatched_end_tag) {
        while (!parser.node_queue_empty()) {
            const xml_stream_parser::node node = parser.node_queue_pop();
            is_finished = is_finished || node.type == xml_stream_parser::end_of_document;
            if (node.name == "entry")
                print_entry(node, paint);
        }
        usleep(10000);
    }
    if (writer > 0)
        waitpid(writer, nullptr, 0);
    tova::system::io::remove_file(log_path);
    if (!is_finished)
        std::cout << "  " << paint(style::error, "the log has an error") << '\n';
    return is_finished;
}

}  // namespace

int main(int count, char** words, char** variables) {
    std::string color = "auto";
    std::vector<const char*> arguments(words, words + 1);
    for (int i = 1; i < count; ++i) {
        const std::string word = words[i];
        if (word == "--help") {
            std::cout << help;
            return 0;
        }
        if (word.compare(0, 8, "--color=") == 0)
            color = word.substr(8);
        else
            arguments.push_back(words[i]);
    }
    if (color != "auto" && color != "always" && color != "never") {
        std::cerr << help;
        return 2;
    }

    config_manager settings;
    settings.init(std_config_dispatch(static_cast<int>(arguments.size()), arguments.data(),
                                      variables, TOVA_EXAMPLE_FOLDER "/demo.cfg", ""));
    settings.load();
    const painter paint(wants_color(color));
    if (!print_report(settings, paint))
        return 1;
    print_settings(settings, paint);
    return follow_log(paint) ? 0 : 1;
}
