/// @file
/// Declared options on top of the library's configuration, with types, help, and errors that name
/// the source.
///
///     int main(int argc, char** argv) {
///         tova::extras::options options("serve", "1.2.0", "Serves a folder.");
///         options.add("server.port", 8080, "port to listen on")
///             .short_name('p').environment("SERVE_PORT").range(1, 65535);
///         options.settings_file("serve.cfg");
///         const auto loaded = options.load(argc, argv);
///         if (loaded.ends_program)
///             return loaded.report();  // help, version or errors
///         listen(options.get<int>("server.port"));
///     }
///
/// The first source that has a key wins, as in `config_manager`: the command line, then the file,
/// then the environment, then the default. An undeclared key or a value of the wrong type is an
/// error: "serve.cfg: server.port: "80x" is not a whole number".
///
/// Threads may call `get` on options that nobody changes; everything else belongs to one thread.
#pragma once

#include <tova/abi.hpp>
#include <tova/config/base_config_item.hpp>
#include <tova/config/config_dispatch.hpp>
#include <tova/config/config_manager.hpp>
#include <tova/config/file_item.hpp>
#include <tova/extras/_private/option_values.hpp>
#include <tova/extras/_private/settings_text.hpp>
#include <tova/extras/_private/whole_file.hpp>
#include <tova/generic/varg_list.hpp>
#include <tova/strings/ustring.hpp>
#include <tova/types/variant.hpp>

#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <cstring>
#include <functional>
#include <iostream>
#include <iterator>
#include <limits>
#include <map>
#include <memory>
#include <sstream>
#include <stdexcept>
#include <string>
#include <typeinfo>
#include <utility>
#include <vector>

namespace TOVA_2_18 {
namespace extras {

namespace _private {

// The declaration of an option, and its values in the sources.
struct option_record {
    // The sources, from the strongest to the weakest.
    enum source_type { program, command_line, file, environment, otherwise, source_count };

    struct source_value {
        bool is_set = false;
        std::vector<std::string> texts;
    };

    std::string key;
    std::string long_name;  // as shown in the help; the key also works
    char short_name = 0;
    std::string help;
    std::string value_name;
    std::string variable;  // the environment variable
    std::string limits;    // for the help: "from 1 to 65535"
    const std::type_info* type = nullptr;
    bool is_flag = false;
    bool is_list = false;
    bool is_required = false;
    bool is_special = false;  // --help, --version and --cfg_file, which no file may set
    bool is_refused = false;  // a source has an invalid value
    bool is_changed = false;  // by `set`, since the last save
    // Each returns an empty string, or the error in the text of one element.
    std::vector<std::function<std::string(const std::string&)>> checks;
    std::function<std::string(const std::string&)> canonical;  // "yes" for "ON", "80" for "0x50"
    source_value values[source_count];

    source_type winner() const {
        int source = program;
        while (source < otherwise && !values[source].is_set)
            ++source;
        return static_cast<source_type>(source);
    }
    std::string problem(const std::vector<std::string>& texts) const {
        for (const std::string& text : texts)
            for (const auto& check : checks) {
                const std::string found = check(text);
                if (!found.empty())
                    return found;
            }
        return std::string();
    }
};

// A source for a `config_manager` with the values that an options object found.
class option_source : public config::base_config_item {
public:
    explicit option_source(const strings::ustring8& name) { id = name; }
    option_source* clone() const override {
        option_source* const copy = new option_source(*this);
        copy->allocated = true;
        return copy;
    }
    void store(const std::string& key, const std::vector<std::string>& texts, bool is_list) {
        if (!is_list) {
            set(key, types::variant(strings::ustring8(texts.at(0))), 0);
            return;
        }
        generic::varg_list list;
        for (const std::string& text : texts)
            list.push_back(generic::argument(types::variant(strings::ustring8(text))));
        set_array(key, list, generic::varg_list());
    }
};

// Sets up a manager with sources that are already loaded.
class option_dispatch : public config::config_dispatch {
public:
    explicit option_dispatch(const config::config_item_list& items) : m_items(items) {}
    bool setup(config::config_item_list& items) const override {
        items = m_items;
        return true;
    }
    bool load(config::config_item_list&) const override { return true; }
    bool unload(config::config_item_list&) const override { return true; }
    bool save(config::config_item_list&) const override { return true; }
    option_dispatch* clone() const override { return new option_dispatch(*this); }

private:
    config::config_item_list m_items;
};

// Wraps a paragraph to the columns from `indent` to `width`. The first line begins at `column`.
inline std::string wrapped_text(const std::string& text, std::size_t column, std::size_t indent,
                                std::size_t width) {
    std::string result;
    std::istringstream words(text);
    bool is_first = true;
    for (std::string word; words >> word; is_first = false) {
        if (!is_first && column + 1 + word.size() > width) {
            result += '\n' + std::string(indent, ' ');
            column = indent;
        } else if (!is_first) {
            result += ' ';
            ++column;
        }
        result += word;
        column += word.size();
    }
    return result;
}

}  // namespace _private

/// The result of `options::load`.
struct option_result {
    bool ends_program;                ///< True after an error, `--help` or `--version`.
    int exit_code;                    ///< 0, or 2 after an error.
    std::string output;               ///< The help or the version; otherwise empty.
    std::vector<std::string> errors;  ///< Each with its source and the option or key.

    /// Whether the program can continue. Never fails.
    explicit operator bool() const { return !ends_program; }

    /// Writes the output, or the errors, one per line, and returns the exit code.
    int report(std::ostream& out = std::cout, std::ostream& error_out = std::cerr) const {
        out << output;
        for (const std::string& error : errors)
            error_out << error << '\n';
        return exit_code;
    }
};

/// The result of `options::save`.
struct option_status {
    std::string message;  ///< Why the file was not replaced; empty for success.

    /// Whether the file was saved. Never fails.
    explicit operator bool() const { return message.empty(); }
};

class options;

/// Refines a declared option. `options::add` returns it; `Value` is the type of the option.
template <typename Value>
class option {
public:
    typedef typename _private::option_type<Value>::element element;  ///< The type of one value.

    /// A name of one letter: `-p 80`, `-p80`. If two options have the same letter, the last one
    /// wins.
    option& short_name(char letter) {
        m_record->short_name = letter;
        return *this;
    }
    /// The name after `--`, by default the key. The key always works as well.
    option& long_name(const std::string& words) {
        m_record->long_name = _private::lower_case(words);
        return *this;
    }
    /// The environment variable that sets the option. Its value is used unchanged. An empty
    /// variable counts as unset. The elements of a list are separated by commas.
    option& environment(const std::string& variable) {
        m_record->variable = variable;
        return *this;
    }
    /// The name of the value in the help: `--port=PORT`.
    option& value_name(const std::string& shown) {
        m_record->value_name = shown;
        return *this;
    }
    /// The smallest and the largest value.
    option& range(const element& least, const element& greatest) {
        typedef _private::option_value<element> text;
        const std::string limits = "from " + text::write(least) + " to " + text::write(greatest);
        m_record->limits = limits;
        m_record->checks.push_back([least, greatest, limits](const std::string& given) {
            element value{};
            text::read(given, value);
            return value < least || greatest < value ? given + " is not " + limits : std::string();
        });
        return *this;
    }
    /// The allowed values, as text.
    option& choices(const std::vector<std::string>& allowed) {
        std::string all;
        for (const std::string& one : allowed)
            all += (all.empty() ? "" : ", ") + one;
        m_record->limits = "one of " + all;
        m_record->checks.push_back([allowed, all](const std::string& given) {
            return std::find(allowed.begin(), allowed.end(), given) != allowed.end()
                       ? std::string()
                       : _private::quoted(given) + " is not one of " + all;
        });
        return *this;
    }
    /// Makes the option mandatory: a source must set it, and the default does not count.
    option& required() {
        m_record->is_required = true;
        return *this;
    }

private:
    friend class options;
    explicit option(_private::option_record& record) : m_record(&record) {}

    _private::option_record* m_record;
};

/// The options of a program.
///
/// Keys are those of the library's configuration: names with dots between them, such as
/// "server.port". In a file, this is the entry `port` in the section `[server]`.
///
/// The command line accepts `--server.port=80`, `--server.port 80`, `-p 80`, `-p80` and, as the
/// library does, `-server.port=80` and `-server.port:80`. `-ab` is `-a -b` if `a` is a flag, a
/// `bool` that is false by default; `--no-name` turns one off. A value in a separate argument may
/// begin with `/`, but with `-` only if it is a number. If an option is given twice, the last value
/// counts, but a list gets all values. `arguments` returns every other argument, and everything
/// after `--`.
///
/// An invalid declaration, a `get` with another type and an undeclared key are programming errors
/// and raise `std::logic_error`.
class options {
public:
    /// The program's name, its version and one sentence for the help. Declares `--help`, `-h` and
    /// `--version`.
    explicit options(const std::string& program, const std::string& version = std::string(),
                     const std::string& summary = std::string())
        : m_program(program), m_version(version), m_summary(summary) {
        declare("help", false, "show this help and exit", true).short_name('h');
        if (!version.empty())
            declare("version", false, "show the version and exit", true);
    }
    options(const options&) = delete;
    options& operator=(const options&) = delete;

    /// @name Declaration
    /// @{

    /// Declares an option. `Value` is `bool`, an integer or floating-point type, `std::string`, or
    /// a `std::vector` of one of them. The key consists of lower-case letters, digits, `_` and `-`,
    /// with dots between names that begin with a letter. No key may be another key with a dot and
    /// more names.
    template <typename Value>
    option<Value> add(const std::string& key, const Value& otherwise, const std::string& help) {
        return declare(key, otherwise, help, false);
    }
    /// The same for a `std::string`.
    option<std::string> add(const std::string& key, const char* otherwise,
                            const std::string& help) {
        return declare(key, std::string(otherwise), help, false);
    }
    /// Declares a flag: a `bool` that is false by default.
    option<bool> flag(const std::string& key, const std::string& help) {
        return declare(key, false, help, false);
    }

    /// Reads the settings file `path` if it exists. Also declares the library's key `cfg_file`,
    /// which names another file; that file must exist.
    option<std::string> settings_file(const std::string& path) {
        m_has_file = true;
        return declare("cfg_file", path, "settings file", true).value_name("FILE");
    }
    /// Accepts any key in the section `name` of the file, for other readers of the file.
    void foreign_section(const std::string& name) { m_foreign.push_back(name + '.'); }

    /// Allows arguments that are not options, and names them in the help: "FILE...". Without this
    /// call they are errors.
    void takes_arguments(const std::string& shown, std::size_t least = 0,
                         std::size_t most = std::numeric_limits<std::size_t>::max()) {
        m_arguments_shown = shown;
        m_least_arguments = least;
        m_most_arguments = most;
    }
    /// @}

    /// Reads all sources. It also checks values that a stronger source overrides. The arrays are
    /// read only during the call; `environment` may be null.
    ///
    /// After an error the options have the values that could be read. A second call starts over.
    option_result load(int count, const char* const* words,
                       const char* const* environment = ::environ) {
        forget();
        option_result result = {false, 0, std::string(), std::vector<std::string>()};
        m_errors = &result.errors;
        read_command_line(count, words);
        if (is_given("help"))
            result = {true, 0, help(), std::vector<std::string>()};
        else if (!m_version.empty() && is_given("version"))
            result = {true, 0, m_program + ' ' + m_version + '\n', std::vector<std::string>()};
        else
            read_other_sources(environment);
        m_errors = nullptr;
        if (!result.errors.empty()) {
            result.ends_program = true;
            result.exit_code = 2;
        }
        fill_manager();
        return result;
    }

    /// The help text of `--help`, in lines of at most 80 bytes unless a word is longer.
    std::string help() const {
        std::string text = "usage: " + m_program + " [OPTIONS]" +
                           (m_arguments_shown.empty() ? "" : ' ' + m_arguments_shown) + '\n';
        if (!m_summary.empty())
            text += '\n' + _private::wrapped_text(m_summary, 0, 0, 80) + '\n';
        text += "\nOptions:\n";
        const std::size_t column = 30;
        for (const auto& record : m_records) {
            std::string line = left_column(*record);
            line += line.size() + 2 > column ? '\n' + std::string(column, ' ')
                                             : std::string(column - line.size(), ' ');
            text += line + _private::wrapped_text(right_column(*record), column, column, 80) + '\n';
        }
        if (m_has_file)
            text += "\nThe command line wins over the settings file, and the file over the "
                    "environment.\n";
        return text;
    }

    /// @name Values
    /// @{

    /// The value of an option. `Value` is the type of its declaration.
    template <typename Value>
    Value get(const std::string& key) const {
        const _private::option_record& record = typed<Value>(key);
        return _private::option_type<Value>::read(record.values[record.winner()].texts);
    }
    /// Where the value comes from: "command line", the path of the file, "environment variable
    /// NAME", "default", or "program" after `set`.
    std::string source(const std::string& key) const {
        const _private::option_record& record = known(key);
        switch (record.winner()) {
        case _private::option_record::program:
            return "program";
        case _private::option_record::command_line:
            return "command line";
        case _private::option_record::file:
            return m_path;
        case _private::option_record::environment:
            return "environment variable " + record.variable;
        case _private::option_record::otherwise:
        case _private::option_record::source_count:
            break;
        }
        return "default";
    }
    /// The arguments that are not options, in order.
    const std::vector<std::string>& arguments() const { return m_arguments; }

    /// All values under their keys, for code that expects a `config_manager`. Its sources are
    /// "program", "command line", "standard file", "enviroment" and "default". Values are strings.
    /// Every `load` replaces the sources.
    config::config_manager& manager() { return m_manager; }

    /// Sets the value of an option. It wins over all sources, and `save` stores it. Raises
    /// `std::invalid_argument` for a value that is out of its range or not among its choices.
    template <typename Value>
    void set(const std::string& key, const Value& value) {
        _private::option_record& record = typed<Value>(key);
        const std::vector<std::string> texts = _private::option_type<Value>::write(value);
        const std::string problem = record.problem(texts);
        if (!problem.empty())
            throw std::invalid_argument(key + ": " + problem);
        _private::option_record::source_value& own =
            record.values[_private::option_record::program];
        own.is_set = true;
        own.texts = texts;
        record.is_changed = true;
        fill_manager();
    }
    void set(const std::string& key, const char* value) { set(key, std::string(value)); }

    /// Stores the values that were `set` in the settings file and keeps everything else in it:
    /// comments, order, other keys. The file is created, or replaced atomically, as data files are.
    ///
    /// The file stays unchanged, and the message says why, if it could not be loaded or had an
    /// error, if it was changed since then, if it cannot hold a value (an empty one or one with a
    /// double quote), or if the new file would not read back with the values that were set.
    option_status save() {
        if (!m_has_file || m_path.empty())
            return {"there is no settings file"};
        if (m_file_state == file_state::failed)
            return {m_path + ": not saved, because loading it reported errors"};
        std::string now;
        const _private::file_status read = _private::read_whole(m_path, now);
        const bool is_missing = !read && read.number == ENOENT;
        if (!read && !is_missing)
            return {m_path + ": not saved, " + read.message};
        if (is_missing != (m_file_state == file_state::missing) || now != m_file_text)
            return {m_path + ": not saved, because it was changed since it was loaded"};

        _private::settings_text text(m_file_text);
        for (const auto& record : m_records) {
            const std::string problem = record->is_changed ? write(*record, text) : std::string();
            if (!problem.empty())
                return {m_path + ": " + record->key + ": not saved, " + problem};
        }
        if (text.str() == m_file_text)
            return finish_save();
        const _private::file_status stored = _private::store_atomically(
            m_path, text.str(), [this](const std::string& path) { return reads_back(path); });
        if (!stored)
            return {m_path + ": not saved, " + stored.message};
        m_file_text = text.str();
        m_file_state = file_state::loaded;
        m_file = loaded_file(m_path);
        return finish_save();
    }
    /// @}

private:
    typedef _private::option_record record_type;
    enum class file_state { failed, missing, loaded };

    // --- Declarations ------------------------------------------------------------------------

    template <typename Value>
    option<Value> declare(const std::string& key, const Value& otherwise, const std::string& help,
                          bool is_special) {
        typedef _private::option_type<Value> type;
        typedef typename type::element element;
        check_key(key);
        std::unique_ptr<record_type> record(new record_type);
        record->key = record->long_name = key;
        record->help = help;
        record->type = &typeid(Value);
        record->is_list = type::is_list;
        record->values[record_type::otherwise].texts = type::write(otherwise);
        record->values[record_type::otherwise].is_set = true;
        record->is_flag =
            record->values[record_type::otherwise].texts == std::vector<std::string>(1, "no") &&
            typeid(Value) == typeid(bool);
        record->is_special = is_special;
        record->value_name = _private::option_value<element>::kind();
        record->checks.push_back([](const std::string& text) {
            element value{};
            return _private::option_value<element>::read(text, value);
        });
        record->canonical = [](const std::string& text) {
            element value{};
            _private::option_value<element>::read(text, value);
            return _private::option_value<element>::write(value);
        };
        m_records.push_back(std::move(record));
        return option<Value>(*m_records.back());
    }

    void check_key(const std::string& key) const {
        const char letters[] = "abcdefghijklmnopqrstuvwxyz";
        const char others[] = "abcdefghijklmnopqrstuvwxyz0123456789_-.";
        bool is_valid = !key.empty() && key.find_first_not_of(others) == std::string::npos &&
                        key.back() != '.' && key.back() != '-';
        for (std::size_t at = 0; is_valid && at != std::string::npos;
             at = key.find('.', at) == std::string::npos ? std::string::npos
                                                         : key.find('.', at) + 1)
            is_valid = std::string(letters).find(key[at]) != std::string::npos;
        if (!is_valid)
            throw std::invalid_argument("not a key for an option: " + key);
        for (const auto& other : m_records) {
            const std::string& shorter = key.size() < other->key.size() ? key : other->key;
            const std::string& longer = key.size() < other->key.size() ? other->key : key;
            if (key == other->key || longer.compare(0, shorter.size() + 1, shorter + '.') == 0)
                throw std::invalid_argument("the key of an option continues another one: " +
                                            longer);
        }
    }

    record_type* find(const std::string& name) const {
        std::string key = _private::lower_case(name);
        std::replace(key.begin(), key.end(), '/', '.');
        std::replace(key.begin(), key.end(), '\\', '.');
        for (const auto& record : m_records)
            if (record->key == key || record->long_name == key)
                return record.get();
        return nullptr;
    }
    record_type* find_letter(char letter) const {
        for (std::size_t i = m_records.size(); i-- > 0;)
            if (m_records[i]->short_name == letter)
                return m_records[i].get();
        return nullptr;
    }
    record_type& known(const std::string& key) const {
        for (const auto& record : m_records)
            if (record->key == key)
                return *record;
        throw std::logic_error("no option is declared with the key " + key);
    }
    template <typename Value>
    record_type& typed(const std::string& key) const {
        record_type& record = known(key);
        // Compare names: some compilers compare addresses, and for some types each module has its
        // own.
        if (std::strcmp(record.type->name(), typeid(Value).name()) != 0)
            throw std::logic_error("the option is declared with another type: " + key);
        return record;
    }

    // --- Help --------------------------------------------------------------------------------

    static std::string left_column(const record_type& record) {
        std::string text = "  ";
        text += record.short_name != 0 ? std::string("-") + record.short_name + ", " : "    ";
        text += "--" + record.long_name;
        if (!record.is_flag)
            text += '=' + record.value_name + (record.is_list ? "..." : "");
        return text;
    }
    static std::string right_column(const record_type& record) {
        std::string otherwise;
        for (const std::string& value : record.values[record_type::otherwise].texts)
            otherwise += (otherwise.empty() ? "" : ", ") + value;
        std::vector<std::string> notes;
        if (record.is_required)
            notes.push_back("required");
        else if (!otherwise.empty() && !record.is_flag)
            notes.push_back("default: " + otherwise);
        if (!record.limits.empty())
            notes.push_back(record.limits);
        if (!record.variable.empty())
            notes.push_back("environment: " + record.variable);
        std::string text;
        for (const std::string& note : notes)
            text += (text.empty() ? " (" : "; ") + note;
        return record.help + text + (text.empty() ? "" : ")");
    }

    // --- Sources -----------------------------------------------------------------------------

    void forget() {
        for (const auto& record : m_records) {
            for (int source = 0; source < record_type::otherwise; ++source)
                record->values[source] = record_type::source_value();
            record->is_changed = record->is_refused = false;
        }
        m_arguments.clear();
        m_file_text.clear();
        m_path.clear();
        m_file_state = file_state::failed;
        m_file.reset();
    }

    bool is_given(const std::string& key) const {
        const record_type::source_value& value = known(key).values[record_type::command_line];
        return value.is_set && value.texts.back() == "yes";
    }

    void fail(const std::string& place, const std::string& what) {
        m_errors->push_back(place + ": " + what);
    }
    void refuse(record_type& record, const std::string& place, const std::string& what) {
        record.is_refused = true;
        fail(place, what);
    }

    // Stores the value that a source has for an option if it is valid; otherwise reports an error.
    void store(record_type& record, record_type::source_type source, const std::string& place,
               const std::vector<std::string>& texts) {
        const std::string problem = record.problem(texts);
        if (!problem.empty()) {
            refuse(record, place, problem);
            return;
        }
        record_type::source_value& value = record.values[source];
        if (!record.is_list || !value.is_set || source != record_type::command_line)
            value.texts.clear();
        std::transform(texts.begin(), texts.end(), std::back_inserter(value.texts),
                       record.canonical);
        value.is_set = true;
    }

    void read_command_line(int count, const char* const* words) {
        for (int i = 1; i < count && words[i] != nullptr; ++i) {
            const std::string word = words[i];
            if (word == "--") {
                while (++i < count && words[i] != nullptr)
                    m_arguments.push_back(words[i]);
                return;
            }
            if (!looks_like_option(word))
                m_arguments.push_back(word);
            else if (word[1] == '-')
                read_long(word, 2, "=", count, words, i);
            else
                read_short(word, count, words, i);
        }
    }

    // "-" is a name for the standard input, and "-5" is a number unless 5 is an option.
    bool looks_like_option(const std::string& word) const {
        if (word.size() < 2 || word[0] != '-')
            return false;
        return try_parse<double>(word).code() != check_error::none ||
               find_letter(word[1]) != nullptr;
    }

    void read_long(const std::string& word, std::size_t begin, const char* separators, int count,
                   const char* const* words, int& i) {
        const std::size_t separator = word.find_first_of(separators, begin);
        const std::string name = word.substr(begin, separator - begin);
        record_type* record = find(name);
        bool is_off = false;
        if (record == nullptr && name.compare(0, 3, "no-") == 0) {
            record = find(name.substr(3));
            is_off = record != nullptr && *record->type == typeid(bool) &&
                     separator == std::string::npos && !record->is_special;
            if (!is_off)
                record = nullptr;
        }
        if (record == nullptr) {
            unknown_option(name);
            return;
        }
        const std::string place = "command line: --" + name;
        if (is_off)
            store(*record, record_type::command_line, place, {"no"});
        else if (separator != std::string::npos)
            store(*record, record_type::command_line, place, {word.substr(separator + 1)});
        else
            read_value(*record, place, count, words, i);
    }

    // "-p80", "-p=80", "-p 80", "-abc", or a whole key after one minus sign as in the library.
    void read_short(const std::string& word, int count, const char* const* words, int& i) {
        const std::string name = word.substr(1, word.find_first_of("=:", 1) - 1);
        if (name.size() > 1 && find(name) != nullptr) {
            read_long(word, 1, "=:", count, words, i);
            return;
        }
        for (std::size_t at = 1; at < word.size(); ++at) {
            record_type* const record = find_letter(word[at]);
            if (record == nullptr) {
                if (at == 1 && name.size() > 1)
                    unknown_option(name);
                else
                    fail("command line", "unknown option -" + word.substr(at, 1));
                return;
            }
            const std::string place = std::string("command line: -") + word[at];
            const bool has_rest = at + 1 < word.size();
            if (*record->type == typeid(bool) && !(has_rest && word[at + 1] == '=')) {
                store(*record, record_type::command_line, place, {"yes"});
                continue;
            }
            if (has_rest)
                store(*record, record_type::command_line, place,
                      {word.substr(word[at + 1] == '=' ? at + 2 : at + 1)});
            else
                read_value(*record, place, count, words, i);
            return;
        }
    }

    void read_value(record_type& record, const std::string& place, int count,
                    const char* const* words, int& i) {
        if (*record.type == typeid(bool)) {
            store(record, record_type::command_line, place, {"yes"});
            return;
        }
        const char* const next = i + 1 < count ? words[i + 1] : nullptr;
        if (next == nullptr || std::string(next) == "--" || looks_like_option(next)) {
            refuse(record, place,
                   next == nullptr ? "the value is missing"
                                   : "the value is missing; one that begins with a minus sign "
                                     "follows after =");
            return;
        }
        ++i;
        store(record, record_type::command_line, place, {next});
    }

    void unknown_option(const std::string& name) {
        std::vector<std::string> names;
        for (const auto& record : m_records) {
            names.push_back(record->long_name);
            names.push_back(record->key);
        }
        const std::string nearest = _private::nearest_name(_private::lower_case(name), names);
        fail("command line", "unknown option --" + name +
                                 (nearest.empty() ? "" : "; did you mean --" + nearest + "?"));
    }

    void read_other_sources(const char* const* environment) {
        if (m_arguments.size() > m_most_arguments || m_arguments.size() < m_least_arguments) {
            if (m_arguments.size() > m_most_arguments)
                fail("command line", "unexpected argument " + m_arguments[m_most_arguments]);
            else
                fail("command line", "an argument is missing: " + m_arguments_shown);
        }
        // The file comes last because a variable may name it.
        read_environment(environment);
        if (m_has_file)
            read_file();
        for (const auto& record : m_records)
            if (record->is_required && !record->is_refused &&
                record->winner() == record_type::otherwise)
                m_errors->push_back("--" + record->long_name + " is required");
    }

    void read_environment(const char* const* environment) {
        for (const auto& record : m_records) {
            const std::string start = record->variable + '=';
            if (start.size() == 1)
                continue;
            for (const char* const* line = environment; line != nullptr && *line != nullptr;
                 ++line) {
                const std::string text = *line;
                if (text.size() == start.size() || text.compare(0, start.size(), start) != 0)
                    continue;
                std::vector<std::string> values(1, text.substr(start.size()));
                if (record->is_list)
                    values = pieces(values[0]);
                store(*record, record_type::environment, "environment variable " + record->variable,
                      values);
                break;
            }
        }
    }

    static std::vector<std::string> pieces(const std::string& text) {
        std::vector<std::string> found;
        std::size_t begin = 0;
        for (std::size_t comma = 0; comma != std::string::npos; begin = comma + 1) {
            comma = text.find(',', begin);
            found.push_back(text.substr(begin, comma - begin));
        }
        return found;
    }

    void read_file() {
        m_path = get<std::string>("cfg_file");
        if (m_path.empty())
            return;
        const _private::file_status read = _private::read_whole(m_path, m_file_text);
        if (!read && read.number == ENOENT && source("cfg_file") == "default") {
            m_file_state = file_state::missing;
            return;
        }
        if (!read) {
            fail(m_path, read.message);
            return;
        }
        const std::size_t errors = m_errors->size();
        m_file = loaded_file(m_path);
        config::config_node_list nodes;
        m_file->get_value_pair_array("", nodes, true);
        for (const auto& node : nodes)
            if ((node.second.first & 1) != 0 && !is_element(node.first) && !is_foreign(node.first))
                read_entry(node.first);
        m_file_state = m_errors->size() == errors ? file_state::loaded : file_state::failed;
    }

    // The library reads no links, so pass it the path that the link leads to.
    static std::unique_ptr<config::file_item> loaded_file(const std::string& path) {
        std::unique_ptr<config::file_item> item(
            new config::file_item(strings::ustring8(_private::link_target(path))));
        item->load_file();
        return item;
    }

    bool is_element(const std::string& name) const {
        const std::size_t dot = name.rfind('.');
        const config::config_node* const parent =
            dot == std::string::npos ? nullptr : m_file->get_value(name.substr(0, dot));
        return parent != nullptr && (parent->first & 2) != 0;
    }
    bool is_foreign(const std::string& name) const {
        return std::any_of(m_foreign.begin(), m_foreign.end(), [&name](const std::string& prefix) {
            return name.compare(0, prefix.size(), prefix) == 0;
        });
    }

    static std::vector<std::string> file_values(config::file_item& item, const std::string& key) {
        const config::config_node* const node = item.get_value(key);
        std::vector<std::string> texts;
        if (node != nullptr && (node->first & 2) != 0) {
            config::config_node_list elements;
            item.get_array(key, elements);
            for (const auto& element : elements)
                texts.push_back(element.second.second.as_string());
        } else if (node != nullptr && (node->first & 1) != 0) {
            texts.push_back(node->second.as_string());
        }
        return texts;
    }

    void read_entry(const std::string& key) {
        std::vector<std::string> keys;
        for (const auto& record : m_records) {
            if (record->is_special)
                continue;
            keys.push_back(record->key);
            if (record->key != key)
                continue;
            const std::string place = m_path + ": " + key;
            if (!record->is_list && (m_file->get_value(key)->first & 2) != 0)
                refuse(*record, place, "takes one value, not a list");
            else
                store(*record, record_type::file, place, file_values(*m_file, key));
            return;
        }
        const std::string nearest = _private::nearest_name(key, keys);
        fail(m_path,
             "unknown key " + key + (nearest.empty() ? "" : "; did you mean " + nearest + "?"));
    }

    // --- The manager -------------------------------------------------------------------------

    void fill_manager() {
        const std::pair<record_type::source_type, const char*> sources[] = {
            {record_type::program, "program"},
            {record_type::command_line, "command line"},
            {record_type::file, "standard file"},
            {record_type::environment, "enviroment"},
            {record_type::otherwise, "default"}};
        config::config_item_list items;
        for (const auto& source : sources) {
            if (source.first == record_type::file && m_file) {
                items.push_back(m_file->clone());
                continue;
            }
            _private::option_source item(source.second);
            for (const auto& record : m_records)
                if (record->values[source.first].is_set)
                    item.store(record->key, record->values[source.first].texts, record->is_list);
            items.push_back(item.clone());
        }
        m_manager.init(_private::option_dispatch(items));
    }

    // --- Saving ------------------------------------------------------------------------------

    // Changes the entry of an option. If the default is empty, an empty value removes the entry.
    std::string write(const record_type& record, _private::settings_text& text) const {
        std::vector<std::string> values = record.values[record_type::program].texts;
        const std::vector<std::string>& otherwise = record.values[record_type::otherwise].texts;
        if (values == std::vector<std::string>(1, std::string()) && otherwise == values)
            values.clear();
        if (values.empty() && record.is_list && !otherwise.empty())
            return "a settings file cannot hold an empty list";
        return text.set(record.key, values, record.is_list);
    }

    // Loads the new file as the program will. Changed keys must have their new values, and all
    // other keys the values of the old file.
    std::string reads_back(const std::string& path) const {
        const std::unique_ptr<config::file_item> after = loaded_file(path);
        std::map<std::string, std::string> before_values = plain_values(m_file.get());
        std::map<std::string, std::string> after_values = plain_values(after.get());
        for (const auto& record : m_records) {
            if (!record->is_changed)
                continue;
            const std::vector<std::string> read = file_values(*after, record->key);
            const std::vector<std::string>& wanted = record->values[record_type::program].texts;
            const bool is_left_out = read.empty() && (wanted.empty() || wanted[0].empty());
            if (!is_left_out && read != wanted)
                return "because " + record->key + " would not read back";
            erase_below(before_values, record->key);
            erase_below(after_values, record->key);
        }
        return before_values == after_values ? std::string()
                                             : "because other keys would not read back";
    }

    static std::map<std::string, std::string> plain_values(config::file_item* item) {
        std::map<std::string, std::string> values;
        config::config_node_list nodes;
        if (item != nullptr)
            item->get_value_pair_array("", nodes, true);
        for (const auto& node : nodes)
            if ((node.second.first & 1) != 0)
                values[node.first] = node.second.second.as_string();
        return values;
    }
    static void erase_below(std::map<std::string, std::string>& values, const std::string& key) {
        values.erase(key);
        const auto first = values.lower_bound(key + '.');
        values.erase(first, values.lower_bound(key + '/'));
    }

    option_status finish_save() {
        for (const auto& record : m_records)
            record->is_changed = false;
        return {std::string()};
    }

    std::string m_program;
    std::string m_version;
    std::string m_summary;
    std::vector<std::unique_ptr<record_type>> m_records;
    std::vector<std::string> m_foreign;
    bool m_has_file = false;
    std::string m_arguments_shown;
    std::size_t m_least_arguments = 0;
    std::size_t m_most_arguments = 0;

    std::vector<std::string> m_arguments;
    std::vector<std::string>* m_errors = nullptr;  // of the running `load`
    std::string m_path;
    std::string m_file_text;
    file_state m_file_state = file_state::failed;
    std::unique_ptr<config::file_item> m_file;  // as loaded; null without a file
    config::config_manager m_manager;
};

}  // namespace extras
}  // namespace TOVA_2_18
