#include "cfg/commands/show.hpp"

#include "support/exit_code.hpp"
#include "support/suggestion.hpp"
#include "support/table.hpp"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <utility>

// show, get and explain: three views of one lookup. `sources` loads the library's own items and
// looks a key up; this file only writes the result as text or JSON:
//
//     show      a row for each path that any source has, with the value that a program finds
//     get       the value alone
//     explain   each source that was searched, in order, and why the last one decides
//
// Helpers come first: the parts of a row, the JSON of a lookup, the text of a step.

namespace tova_programs::cfg {

namespace {

using nlohmann::ordered_json;

void write_json(std::ostream& out, const ordered_json& value) {
    out << value.dump(2, ' ', false, ordered_json::error_handler_t::replace) << '\n';
}

// A value in one line of a terminal: control characters as \n, \t or \xHH.
std::string visible(const std::string& text) {
    static const char digits[] = "0123456789abcdef";
    std::string result;
    for (const char c : text) {
        const unsigned char byte = static_cast<unsigned char>(c);
        if (c == '\n')
            result += "\\n";
        else if (c == '\t')
            result += "\\t";
        else if (byte < 32 || byte == 127)
            result += std::string("\\x") + digits[byte / 16] + digits[byte % 16];
        else
            result += c;
    }
    return result;
}

std::string joined(const std::vector<std::string>& parts, const char* between) {
    std::string result;
    for (std::size_t i = 0; i < parts.size(); ++i)
        result += (i == 0 ? "" : between) + visible(parts[i]);
    return result;
}

// In the notation of the configuration guide: an empty string is "", an array [a, b].
std::string shown_value(const lookup& found) {
    if (found.is_inner_node)
        return "true";
    if (found.is_array)
        return '[' + joined(found.values, ", ") + ']';
    return found.values[0].empty() ? "\"\"" : visible(found.values[0]);
}

std::string shown_value(const placed_value& value) {
    if (value.is_array)
        return '[' + visible(value.text) + ']';
    return value.text.empty() ? "\"\"" : visible(value.text);
}

std::vector<std::string> flags_of(const lookup& found) {
    std::vector<std::string> result;
    if (found.is_array)
        result.push_back("array");
    if (found.is_inner_node)
        result.push_back("section");
    if (!found.steps.empty() && found.steps.back().result == lookup_step::cycle)
        result.push_back("alias cycle");
    return result;
}

// The keys after the first one of a chain of aliases.
std::string alias_targets(const lookup& found) {
    std::vector<std::string> keys(found.chain.begin() + 1, found.chain.end());
    if (found.key != found.chain.back())
        keys.push_back(found.key);
    return joined(keys, ", then of ");
}

std::string place_of(const lookup& found, const sources& all) {
    return found.is_inner_node ? all.list()[found.source].name : to_string(found.where);
}

ordered_json json_of(const place& where) {
    ordered_json result;
    static const char* const kinds[] = {"argument", "file", "variable", "alias", "default"};
    result["kind"] = kinds[where.kind];
    if (where.kind == place::argument)
        result["argument"] = where.number;
    if (where.kind == place::variable)
        result["variable"] = where.name;
    if (where.kind == place::file) {
        result["file"] = where.name;
        result["line"] = where.line;
        result["column"] = where.column;
    }
    return result;
}

ordered_json json_of(const std::string& key, const lookup& found, const sources& all) {
    ordered_json result;
    result["key"] = key;
    result["found"] = found.is_found;
    if (!found.is_found)
        return result;
    if (found.is_inner_node)
        result["value"] = true;
    else if (found.is_array)
        result["value"] = found.values;
    else
        result["value"] = found.values[0];
    result["source"] = all.list()[found.source].name;
    if (!found.is_inner_node)
        result["place"] = json_of(found.where);
    result["flags"] = flags_of(found);
    result["word"] = found.flags;
    if (!found.chain.empty()) {
        result["aliases"] = found.chain;
        result["aliases"].push_back(found.key);
    }
    result["hides"] = ordered_json::array();
    for (const placed_value& each : found.shadowed) {
        ordered_json hidden = json_of(each.where);
        hidden["value"] = each.text;
        result["hides"].push_back(std::move(hidden));
    }
    return result;
}

std::string hidden_by(const lookup& found) {
    std::string result;
    for (const placed_value& each : found.shadowed)
        result +=
            (result.empty() ? "" : "; ") + shown_value(each) + " (" + to_string(each.where) + ')';
    return result;
}

void report_ignored(const sources& all, std::ostream& errors) {
    for (const std::string& each : all.ignored_arguments())
        errors << "tova-cfg: " << each << '\n';
}

bool is_below(const std::string& path, const std::string& below) {
    return below.empty() || path == below || path.compare(0, below.size() + 1, below + '.') == 0;
}

int report_missing(const sources& all, const std::string& key, std::ostream& errors) {
    std::vector<std::string> known = all.paths();
    for (const std::string& each : all.declared().paths())
        known.push_back(each);
    errors << "tova-cfg: no source has \"" << key << '"' << did_you_mean(path_of(key), known)
           << '\n';
    return exit_findings;
}

// A variable whose key has "_" where the wanted key has dots. Shells cannot set a variable with a
// dot in its name, so this is often the one that was meant.
const place* similar_variable(const sources& all, const std::string& path) {
    const auto with_dots = [](std::string text) {
        std::replace(text.begin(), text.end(), '_', '.');
        return text;
    };
    for (const source& each : all.list())
        for (const auto& known : each.places)
            if (known.second.back().where.kind == place::variable && known.first != path &&
                with_dots(known.first) == with_dots(path))
                return &known.second.back().where;
    return nullptr;
}

std::string step_text(const lookup_step& step, const sources& all, const style& colors) {
    const source& asked = all.list()[step.source];
    const std::string name = asked.name + ": ";
    const auto value = [&step] { return step.text.empty() ? "\"\"" : visible(step.text); };
    switch (step.result) {
    case lookup_step::absent:
        return colors.dim(name + "nothing");
    case lookup_step::inner_node:
        return name + "no value, but longer keys, which make it true";
    case lookup_step::array:
        return name + "an array at " + to_string(step.where);
    case lookup_step::alias:
        return name + "an alias of " + value();
    case lookup_step::cycle:
        return name + "an alias of " + value() +
               ", which was looked up before: the cycle ends here";
    default:
        return name + value() +
               (step.where.kind == place::fallback ? "" : " at " + to_string(step.where));
    }
}

// A sentence that says why the last step decides.
std::string reason_for(const lookup& found, const sources& all) {
    const lookup_step& last = found.steps.back();
    if (last.result == lookup_step::cycle)
        return "Aliases that form a cycle end with the value of the last one, not with a default.";
    if (last.result == lookup_step::inner_node)
        return "A source that has a longer key also has this one, and hides it in later sources.";
    if (last.result == lookup_step::array)
        return "The first source that has the key decides. A whole array comes from one source.";
    return last.source + 1 == all.list().size() ? "No source before it has the key."
                                                : "The first source that has the key decides.";
}

}  // namespace

int run_show(const show_options& options, std::ostream& out, std::ostream& errors,
             const style& colors) {
    const sources all(options.sources);
    report_ignored(all, errors);
    table list({"KEY", "VALUE", "SOURCE", "FLAGS", "HIDES"});
    ordered_json settings = ordered_json::array();
    const std::string below = options.below.empty() ? "" : path_of(options.below);
    for (const std::string& path : all.paths()) {
        if (!is_below(path, below))
            continue;
        const lookup found = all.find(key_with_path(path));
        if (options.as_json) {
            settings.push_back(json_of(path, found, all));
            continue;
        }
        std::vector<std::string> flags = flags_of(found);
        if (!found.chain.empty())
            flags.push_back("alias of " + alias_targets(found));
        if (!found.is_found)
            list.add({visible(path), colors.dim("not set"), "", joined(flags, ", "), ""});
        else
            list.add({visible(path), colors.bold(shown_value(found)), place_of(found, all),
                      joined(flags, ", "), colors.dim(hidden_by(found))});
    }
    if (options.as_json)
        write_json(out, settings);
    else
        list.write(out, colors);
    return exit_clean;
}

int run_get(const get_options& options, std::ostream& out, std::ostream& errors) {
    const sources all(options.sources);
    report_ignored(all, errors);
    const lookup found = all.find(options.key);
    if (options.as_json) {
        write_json(out, json_of(path_of(options.key), found, all));
        return found.is_found ? exit_clean : exit_findings;
    }
    if (!found.is_found && options.has_otherwise) {
        out << options.otherwise << '\n';
        return exit_clean;
    }
    if (!found.is_found)
        return report_missing(all, options.key, errors);
    if (found.is_inner_node)
        out << "true\n";
    else
        for (const std::string& value : found.values)
            out << value << '\n';
    return exit_clean;
}

int run_explain(const explain_options& options, std::ostream& out, std::ostream& errors,
                const style& colors) {
    const sources all(options.sources);
    report_ignored(all, errors);
    const lookup found = all.find(options.key);
    const place* const similar = similar_variable(all, path_of(options.key));
    if (options.as_json) {
        ordered_json result = json_of(path_of(options.key), found, all);
        if (similar != nullptr)
            result["similarVariable"] = similar->name;
        result["steps"] = ordered_json::array();
        static const char* const results[] = {"absent", "section", "array",
                                              "alias",  "value",   "cycle"};
        for (const lookup_step& step : found.steps) {
            ordered_json one;
            one["source"] = all.list()[step.source].name;
            one["key"] = step.key;
            one["result"] = results[step.result];
            if (step.result == lookup_step::value || step.result == lookup_step::alias)
                one["value"] = step.text;
            result["steps"].push_back(std::move(one));
        }
        write_json(out, result);
        return found.is_found ? exit_clean : exit_findings;
    }
    std::string key;
    for (const lookup_step& step : found.steps) {
        if (step.key != key)
            out << colors.bold(visible(step.key)) << '\n';
        key = step.key;
        out << "  " << step_text(step, all, colors) << '\n';
    }
    if (const declared_key* const declared =
            all.declared().find(path_of(found.is_found ? found.key : options.key)))
        out << "declared: " << type_of(*declared)
            << (declared->help.empty() ? "" : ", " + declared->help) << '\n';
    if (similar != nullptr)
        out << "note: the variable " << similar->name << " is the key " << path_of(similar->name)
            << ", not " << path_of(options.key) << '\n';
    if (!found.is_found)
        return report_missing(all, options.key, errors);
    out << "=> " << colors.bold(shown_value(found)) << ", from " << place_of(found, all) << ". "
        << reason_for(found, all) << '\n';
    for (const placed_value& each : found.shadowed)
        out << "hidden: " << shown_value(each) << " at " << to_string(each.where) << '\n';
    return exit_clean;
}

}  // namespace tova_programs::cfg
