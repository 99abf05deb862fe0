#include "cfg/commands/declare.hpp"

#include "cfg/check/lint.hpp"
#include "cfg/model/edit.hpp"
#include "cfg/model/schema.hpp"
#include "support/exit_code.hpp"
#include "support/text_file.hpp"

#include <nlohmann/json.hpp>

#include <set>

namespace tova_programs::cfg {

namespace {

using nlohmann::ordered_json;

std::string joined(const std::vector<std::string>& values) {
    std::string result;
    for (const std::string& each : values)
        result += (result.empty() ? "" : ", ") + each;
    return result;
}

// In a Markdown table, a "|" would begin a cell.
std::string cell(const std::string& text) {
    std::string result;
    for (const char c : text)
        result += c == '|' ? "\\|" : c == '\n' ? " " : std::string(1, c);
    return result;
}

std::string limits_of(const declared_key& each) {
    std::string result = type_of(each);
    if (!each.minimum.empty())
        result += ", from " + each.minimum;
    if (!each.maximum.empty())
        result += (each.minimum.empty() ? ", up to " : " to ") + each.maximum;
    return result + (each.is_required ? ", required" : "");
}

void write_markdown(std::ostream& out, const schema& declared) {
    out << "| Key | Value | Default | Meaning |\n|---|---|---|---|\n";
    for (const declared_key& each : declared.keys()) {
        out << "| `" << cell(each.key) << "` | ";
        if (!each.alias.empty())
            out << "another name of `" << cell(each.alias) << "` | | ";
        else
            out << cell(limits_of(each)) << " | " << cell(joined(each.default_values)) << " | ";
        out << cell(each.help) << " |\n";
    }
}

void write_json(std::ostream& out, const schema& declared) {
    ordered_json all = ordered_json::array();
    for (const declared_key& each : declared.keys()) {
        ordered_json one;
        one["key"] = each.key;
        if (!each.alias.empty())
            one["alias"] = each.alias;
        one["type"] = each.type;
        one["array"] = each.is_array;
        one["required"] = each.is_required;
        if (each.has_default && each.is_array)
            one["default"] = each.default_values;
        else if (each.has_default && !each.default_values.empty())
            one["default"] = each.default_values[0];
        if (!each.choices.empty())
            one["values"] = each.choices;
        if (!each.minimum.empty())
            one["min"] = each.minimum;
        if (!each.maximum.empty())
            one["max"] = each.maximum;
        if (!each.help.empty())
            one["help"] = each.help;
        all.push_back(std::move(one));
    }
    out << all.dump(2, ' ', false, ordered_json::error_handler_t::replace) << '\n';
}

// A settings file with every key. Keys without a default are comments. A double quote in a
// comment would open a string, so it is written as a single one.
void write_sample(std::ostream& out, const schema& declared) {
    std::string section;
    bool is_first = true;
    for (const bool is_top : {true, false})
        for (const declared_key& each : declared.keys()) {
            const std::size_t dot = each.key.rfind('.');
            if (!each.alias.empty() || (dot == std::string::npos) != is_top)
                continue;
            const std::string parent = is_top ? "" : each.key.substr(0, dot);
            if (parent != section)
                out << (is_first ? "" : "\n") << '[' << parent << "]\n";
            section = parent;
            is_first = false;
            std::string comment = (each.help.empty() ? "" : each.help + ": ") + limits_of(each);
            for (char& c : comment)
                c = c == '"' ? '\'' : c == '\n' ? ' ' : c;
            out << "# " << comment << '\n';
            std::string values;
            for (const std::string& value : each.default_values)
                values += (values.empty() ? "" : ", ") + written_value(value);
            out << (values.empty() ? "# " : "") << each.key.substr(is_top ? 0 : dot + 1)
                << (each.is_array ? "[] =" : " =") << (values.empty() ? "" : " ") << values << '\n';
        }
}

// Keys with characters other than letters, digits and signs that are not special in the shell are
// left out.
bool is_shell_word(const std::string& text) {
    return !text.empty() && text.find_first_not_of("abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTU"
                                                   "VWXYZ0123456789._-+/") == std::string::npos;
}

void write_bash(std::ostream& out, const schema& declared, const std::string& program) {
    std::string keys;
    std::string cases;
    for (const declared_key& each : declared.keys()) {
        if (!is_shell_word(each.key))
            continue;
        keys += " -" + each.key + '=';
        std::string words;
        for (const std::string& choice : each.choices)
            if (is_shell_word(choice))
                words += ' ' + choice;
        if (each.type == "bool")
            words = " yes no";
        if (!words.empty())
            cases += "    -" + each.key + ") COMPREPLY=($(compgen -W '" + words.substr(1) +
                     "' -- \"$word\")) ;;\n";
        else if (each.type == "path")
            cases += "    -" + each.key + ") COMPREPLY=($(compgen -f -- \"$word\")) ;;\n";
    }
    std::string name = program;
    for (char& c : name)
        if (!is_shell_word(std::string(1, c)) || c == '-' || c == '.' || c == '+' || c == '/')
            c = '_';
    // bash splits words at "=": the key may be one or two words before the value.
    out << "_" << name << "() {\n  local word=${COMP_WORDS[COMP_CWORD]} key=\n"
        << "  if [[ $word == = ]]; then key=${COMP_WORDS[COMP_CWORD-1]} word=\n"
        << "  elif [[ ${COMP_WORDS[COMP_CWORD-1]} == = ]]; then key=${COMP_WORDS[COMP_CWORD-2]}\n"
        << "  fi\n  case $key in\n"
        << cases << "    '') COMPREPLY=($(compgen -W '" << (keys.empty() ? "" : keys.substr(1))
        << "' -- \"$word\")); compopt -o nospace ;;\n  esac\n}\ncomplete -F _" << name << ' '
        << program << '\n';
}

// The narrowest type that fits all values.
std::string guessed_type(const std::vector<std::string>& values) {
    for (const char* type : {"int", "double", "bool"}) {
        declared_key tried;
        tried.type = type;
        bool fits = true;
        for (const std::string& value : values)
            fits = fits && problem_of(tried, value).empty();
        if (fits)
            return type;
    }
    return values[0][0] == '/' ? "path" : "string";
}

void write_guessed(std::ostream& out, const std::string& path) {
    const document file(path, read_file(path));
    std::set<std::string> known;
    for (const entry& each : file.entries()) {
        if (!each.is_stored || !known.insert(each.key).second)
            continue;
        std::vector<std::string> values;
        for (const value_piece& piece : each.values)
            values.push_back(piece.text.empty() ? " " : piece.text);
        const std::string header =
            with_value(document("", ""), each.key + ".type",
                       {guessed_type(values) + (each.is_array ? "[]" : "")}, false);
        out << (known.size() == 1 ? "" : "\n") << header;
    }
}

// Every other command works with such a schema, and `check` reports it.
void require_no_cycle(const schema& declared, const std::string& path) {
    std::string reasons;
    for (const finding& each : lint_schema(declared, path))
        reasons += (reasons.empty() ? "" : "\n") + path + ':' + std::to_string(each.line) + ':' +
                   std::to_string(each.column) + ": the aliases form a cycle: " + each.text;
    if (!reasons.empty())
        throw file_error(reasons);
}

}  // namespace

int run_schema(const schema_options& options, std::ostream& out) {
    if (options.is_settings) {
        write_guessed(out, options.file);
        return exit_clean;
    }
    const schema declared(options.file);
    require_no_cycle(declared, options.file);
    if (options.format == "json")
        write_json(out, declared);
    else if (options.format == "cfg")
        write_sample(out, declared);
    else if (options.format == "bash")
        write_bash(out, declared, options.program);
    else
        write_markdown(out, declared);
    return exit_clean;
}

}  // namespace tova_programs::cfg
