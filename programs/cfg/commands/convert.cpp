#include "cfg/commands/convert.hpp"

#include "cfg/model/edit.hpp"
#include "cfg/model/ini_format.hpp"
#include "cfg/model/other_formats.hpp"
#include "support/exit_code.hpp"
#include "support/text_file.hpp"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <filesystem>
#include <string_view>
#include <system_error>
#include <utility>
#include <vector>

namespace tova_programs::cfg {

namespace {

using nlohmann::ordered_json;

const std::string_view separators = "./\\";

// Something that is not in the settings file as it was in the other one.
struct difference {
    std::string key;
    std::string reason;
    bool is_stored;  // under other names
};

// A key with its names in quotes where they would otherwise look like several, or like none.
std::string shown_key(const std::vector<std::string>& names) {
    std::string result;
    for (const std::string& name : names) {
        const bool is_plain = !name.empty() && name.find_first_of(separators) == std::string::npos;
        result += (result.empty() ? "" : ".") + (is_plain ? name : '"' + name + '"');
    }
    return result;
}

std::string joined(const std::vector<std::string>& names) {
    std::string result;
    for (const std::string& name : names)
        result += (&name == &names.front() ? "" : ".") + name;
    return result;
}

// Whether a part of the name is empty, where separators end the parts.
bool has_empty_part(const std::string& name) {
    const auto is_separator = [](char c) { return separators.find(c) != separators.npos; };
    return name.empty() || is_separator(name.front()) || is_separator(name.back()) ||
           std::adjacent_find(name.begin(), name.end(), [&](char a, char b) {
               return is_separator(a) && is_separator(b);
           }) != name.end();
}

// Collects the entries of a settings file. A key that is the same as an earlier one, because names
// are split at dots and letter case does not count, replaces it.
class converter {
public:
    void add(const foreign_value& value) {
        const std::string shown = shown_key(value.path);
        if (!value.problem.empty())
            return lose(shown, "a settings file cannot hold " + value.problem);
        for (const std::string& text : value.values)
            if (text.empty())
                return lose(shown, "a settings file cannot hold an empty value");
        for (const std::string& name : value.path)
            if (has_empty_part(name))
                return lose(shown, name.empty()
                                       ? "a settings file cannot hold an empty name"
                                       : "a settings file cannot hold the name \"" + name + '"');
        const std::string key = joined(value.path);
        try {
            // The entry is added to an empty file. That also checks that it reads back.
            const document empty("", "");
            const std::string text = with_value(empty, key, value.values, value.is_array);
            const std::size_t line = text[0] == '[' ? text.find('\n') + 1 : 0;
            replace_earlier(path_of(key), shown);
            m_entries.push_back({path_of(key), shown, text.substr(0, line), text.substr(line)});
        } catch (const edit_error& error) {
            const std::string reason = error.what();
            const bool is_about_file = reason.compare(0, 16, "the change would") == 0;
            return lose(shown, is_about_file ? "a settings file cannot hold this key" : reason);
        }
        for (const std::string& name : value.path)
            if (name.find_first_of(separators) != std::string::npos)
                return m_differences.push_back({shown, split_name(name), true});
    }

    // The top level comes first: after a header, only an empty header leads back to it. Sections
    // come in the order of their first entry.
    std::string text() const {
        std::vector<std::string> headers;
        for (const bool is_top : {true, false})
            for (const entry_text& each : m_entries)
                if (each.header.empty() == is_top &&
                    std::find(headers.begin(), headers.end(), each.header) == headers.end())
                    headers.push_back(each.header);
        std::string result;
        for (const std::string& header : headers) {
            result += (result.empty() ? "" : "\n") + header;
            for (const entry_text& each : m_entries)
                if (each.header == header)
                    result += each.line;
        }
        return result;
    }

    // At most one for each key.
    const std::vector<difference>& differences() const { return m_differences; }

private:
    struct entry_text {
        std::string path;
        std::string shown;
        std::string header;
        std::string line;
    };

    static std::string split_name(const std::string& name) {
        const bool has_dots_only = name.find_first_of("/\\") == std::string::npos;
        return '"' + name + "\" is split at the " + (has_dots_only ? "dots" : "slashes");
    }

    void lose(const std::string& key, const std::string& reason) {
        m_differences.push_back({key, reason, false});
    }

    void replace_earlier(const std::string& path, const std::string& shown) {
        const auto earlier =
            std::find_if(m_entries.begin(), m_entries.end(),
                         [&path](const entry_text& each) { return each.path == path; });
        if (earlier == m_entries.end())
            return;
        const std::string known = earlier->shown;
        m_entries.erase(earlier);
        m_differences.erase(std::remove_if(m_differences.begin(), m_differences.end(),
                                           [&known](const difference& each) {
                                               return each.is_stored && each.key == known;
                                           }),
                            m_differences.end());
        lose(known, (known == shown ? "the key appears again" : "the same key as " + shown) +
                        std::string("; the later value is used"));
    }

    std::vector<entry_text> m_entries;
    std::vector<difference> m_differences;
};

std::vector<foreign_value> read_as(const std::string& format, const std::string& path) {
    std::string bytes = read_file(path);
    if (format == "json")
        return read_json(path, bytes);
    if (format == "toml")
        return read_toml(path, bytes);
    if (bytes.compare(0, 3, "\xEF\xBB\xBF") == 0)
        bytes.erase(0, 3);
    ini_reading read =
        read_ini(format == "inih" ? ini_dialect::inih : ini_dialect::configparser, bytes);
    for (const ini_refusal& each : read.refusals)
        if (!each.is_duplicate)
            throw file_error(path + ':' + std::to_string(each.line) + ": " + each.reason);
    return std::move(read.values);
}

std::string format_of(const convert_options& options) {
    if (!options.format.empty())
        return options.format;
    const std::string extension = std::filesystem::path(options.file).extension().native();
    if (extension == ".json" || extension == ".toml")
        return extension.substr(1);
    for (const char* const each : {"", ".ini", ".cfg", ".cnf", ".conf", ".inf"})
        if (extension == each)
            return "ini";
    throw file_error(options.file + ": unknown extension " + extension + "; use --from");
}

void require_new(const convert_options& options) {
    std::error_code error;
    if (!options.replaces && !options.output.empty() &&
        std::filesystem::is_regular_file(options.output, error))
        throw file_error(options.output + " exists; --force replaces it");
}

ordered_json json_of(const std::vector<difference>& all, bool is_stored) {
    ordered_json result = ordered_json::array();
    for (const difference& each : all)
        if (each.is_stored == is_stored)
            result.push_back({{"key", each.key}, {"reason", each.reason}});
    return result;
}

}  // namespace

int run_convert(const convert_options& options, std::ostream& out, std::ostream& errors) {
    const std::string format = format_of(options);
    require_new(options);
    converter result;
    for (const foreign_value& each : read_as(format, options.file))
        result.add(each);
    const std::vector<difference>& differences = result.differences();
    const int code = differences.empty() ? exit_clean : exit_findings;
    if (!options.output.empty())
        write_file(options.output, result.text());
    if (options.as_json) {
        ordered_json all;
        if (options.output.empty())
            all["settings"] = result.text();
        else
            all["file"] = options.output;
        all["lost"] = json_of(differences, false);
        all["renamed"] = json_of(differences, true);
        out << all.dump(2, ' ', false, ordered_json::error_handler_t::replace) << '\n';
        return code;
    }
    if (options.output.empty())
        out << result.text();
    out.flush();
    for (const difference& each : differences)
        errors << options.file << ": " << each.key << ": " << each.reason << '\n';
    return code;
}

}  // namespace tova_programs::cfg
