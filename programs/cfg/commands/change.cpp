#include "cfg/commands/change.hpp"

#include "cfg/check/lint.hpp"
#include "cfg/model/edit.hpp"
#include "cfg/model/save.hpp"
#include "cfg/model/schema.hpp"
#include "support/exit_code.hpp"
#include "support/line_diff.hpp"
#include "support/suggestion.hpp"
#include "support/text_file.hpp"

#include <nlohmann/json.hpp>

#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <utility>

namespace tova_programs::cfg {

namespace {

using nlohmann::ordered_json;

// A key that could not be changed, and why.
struct problem {
    std::string key;
    std::string reason;
};

// The result of a change, to be stored and reported.
struct changed_file {
    std::string path;
    std::string before;
    std::string after;
    std::vector<problem> problems;
};

// The change itself is right even in a file with errors, but the program may not read what the
// author of the file meant.
void report_errors(const changed_file& file, std::ostream& errors) {
    std::size_t count = 0;
    for (const finding& each : lint(document(file.path, file.after), schema()))
        count += each.broken_rule->level == severity::error ? 1 : 0;
    if (count != 0)
        errors << "tova-cfg: " << file.path << " has " << count
               << (count == 1 ? " error" : " errors") << "; run tova-cfg check " << file.path
               << '\n';
}

// Stores the file, or with --dry-run only shows the change. Returns the exit code.
int finish(const changed_file& file, bool is_dry_run, bool as_json, std::ostream& out,
           std::ostream& errors, const style& colors) {
    if (!is_dry_run && file.before != file.after)
        write_file(file.path, file.after);
    if (as_json) {
        ordered_json all;
        all["file"] = file.path;
        all["changed"] = file.before != file.after;
        if (is_dry_run)
            all["text"] = file.after;
        all["problems"] = ordered_json::array();
        for (const problem& each : file.problems)
            all["problems"].push_back({{"key", each.key}, {"reason", each.reason}});
        out << all.dump(2, ' ', false, ordered_json::error_handler_t::replace) << '\n';
    } else {
        for (const problem& each : file.problems)
            errors << "tova-cfg: " << each.key << ": " << each.reason << '\n';
        if (is_dry_run)
            write_line_diff(out, file.before, file.after, file.path, file.path, colors);
    }
    if (file.before != file.after)
        report_errors(file, errors);
    return file.problems.empty() ? exit_clean : exit_findings;
}

// Why the schema does not allow the values, or the empty string.
std::string refusal(const set_options& options) {
    if (options.schema_path.empty())
        return "";
    const schema declared(options.schema_path);
    const declared_key* const known = declared.find(path_of(options.key));
    if (known == nullptr)
        return "the schema has no \"" + options.key + '"' +
               did_you_mean(path_of(options.key), declared.paths());
    for (const std::string& value : options.values)
        if (!problem_of(*known, value).empty())
            return problem_of(*known, value);
    return "";
}

bool has_array(const document& file, const std::string& key) {
    bool result = false;
    for (const entry& each : file.entries())
        if (each.key == path_of(key) && each.is_stored)
            result = each.is_array;
    return result;
}

std::string joined(const std::vector<std::string>& keys) {
    std::string result;
    for (const std::string& each : keys)
        result += (result.empty() ? "" : ", ") + each;
    return result;
}

// The settings of a file by path, with an array as one string.
std::map<std::string, std::string> settings_of(const document& file) {
    const node_map nodes = nodes_of(file);
    std::map<std::string, std::string> result;
    for (const auto& node : nodes)
        result[node.first] = node.second.first == 3 ? "[]" : node.second.second;
    return result;
}

struct changes {
    std::vector<std::string> lost;
    std::vector<std::string> added;
    std::vector<std::pair<std::string, std::pair<std::string, std::string>>> changed;
};

changes changes_of(const document& before, const document& after) {
    changes result;
    const auto old_settings = settings_of(before);
    const auto new_settings = settings_of(after);
    for (const auto& each : old_settings) {
        const auto found = new_settings.find(each.first);
        if (found == new_settings.end())
            result.lost.push_back(each.first);
        else if (found->second != each.second)
            result.changed.push_back({each.first, {each.second, found->second}});
    }
    for (const auto& each : new_settings)
        if (old_settings.count(each.first) == 0)
            result.added.push_back(each.first);
    return result;
}

}  // namespace

int run_set(const set_options& options, std::ostream& out, std::ostream& errors,
            const style& colors) {
    const bool is_new = ::access(options.file.c_str(), F_OK) != 0 && errno == ENOENT;
    if (is_new && !options.creates)
        throw file_error(options.file + ": No such file or directory; --create creates the file");
    const document file(options.file, is_new ? "" : read_file(options.file));
    changed_file result = {options.file, file.bytes(), file.bytes(), {}};
    const std::string refused = refusal(options);
    if (!refused.empty())
        result.problems.push_back({options.key, refused});
    try {
        const bool is_array =
            options.is_array || options.values.size() > 1 || has_array(file, options.key);
        if (refused.empty())
            result.after = with_value(file, options.key, options.values, is_array);
    } catch (const edit_error& error) {
        result.problems.push_back({options.key, error.what()});
    }
    return finish(result, options.is_dry_run, options.as_json, out, errors, colors);
}

int run_unset(const unset_options& options, std::ostream& out, std::ostream& errors,
              const style& colors) {
    const std::string before = read_file(options.file);
    changed_file result = {options.file, before, before, {}};
    for (const std::string& key : options.keys) {
        const document file(options.file, result.after);
        std::vector<std::string> known;
        for (const entry& each : file.entries())
            known.push_back(each.key);
        if (std::find(known.begin(), known.end(), path_of(key)) == known.end()) {
            const std::vector<std::string> longer = longer_keys(file, path_of(key));
            result.problems.push_back(
                {key, longer.empty()
                          ? options.file + " has no such key" + did_you_mean(path_of(key), known)
                          : "this key has no value, but longer keys: " + joined(longer)});
            continue;
        }
        try {
            result.after = without(file, key);
        } catch (const edit_error& error) {
            result.problems.push_back({key, error.what()});
        }
    }
    return finish(result, options.is_dry_run, options.as_json, out, errors, colors);
}

int run_roundtrip(const roundtrip_options& options, std::ostream& out, const style& colors) {
    const document before(options.file, read_file(options.file));
    const saved_file result = saved(before.bytes());
    if (result.is_too_large) {
        if (options.as_json)
            out << ordered_json{{"file", options.file}, {"bytesAfter", result.size}}.dump(2)
                << '\n';
        else
            out << options.file << ": a save would write " << result.size << " bytes\n";
        return exit_findings;
    }
    const document after(options.file, result.text);
    const changes found = changes_of(before, after);
    const std::size_t comments = before.comments().size();
    const bool is_clean =
        found.lost.empty() && found.added.empty() && found.changed.empty() && comments == 0;
    if (options.as_json) {
        ordered_json all;
        all["file"] = options.file;
        all["bytesBefore"] = before.bytes().size();
        all["bytesAfter"] = result.size;
        all["commentsLost"] = comments;
        all["lost"] = found.lost;
        all["added"] = found.added;
        all["changed"] = ordered_json::array();
        for (const auto& each : found.changed)
            all["changed"].push_back({{"key", each.first},
                                      {"before", each.second.first},
                                      {"after", each.second.second}});
        out << all.dump(2, ' ', false, ordered_json::error_handler_t::replace) << '\n';
        return is_clean ? exit_clean : exit_findings;
    }
    write_line_diff(out, before.bytes(), result.text, options.file, options.file + " (saved)",
                    colors);
    for (const std::string& key : found.lost)
        out << colors.red("lost: ") << key << '\n';
    for (const std::string& key : found.added)
        out << colors.yellow("added: ") << key << '\n';
    for (const auto& each : found.changed)
        out << colors.yellow("changed: ") << each.first << " from " << each.second.first << " to "
            << each.second.second << '\n';
    if (comments != 0)
        out << colors.yellow("comments lost: ") << comments << '\n';
    return is_clean ? exit_clean : exit_findings;
}

}  // namespace tova_programs::cfg
