#include "cfg/check/check.hpp"

#include "cfg/check/lint.hpp"
#include "cfg/check/rules.hpp"
#include "cfg/version.hpp"
#include "support/exit_code.hpp"
#include "support/line_diff.hpp"
#include "support/progress.hpp"
#include "support/suggestion.hpp"
#include "support/text_file.hpp"

#include <nlohmann/json.hpp>

#include <unistd.h>

#include <algorithm>
#include <map>
#include <set>
#include <utility>

namespace tova_programs::cfg {

namespace {

using nlohmann::ordered_json;

bool names(const std::vector<std::string>& list, const finding& found) {
    return std::find(list.begin(), list.end(), found.broken_rule->id) != list.end();
}

// Applies the certain fixes to each file, or shows what would change. The other formats list the
// fixes with the findings.
void fix_files(const report& found, const check_command& command, std::ostream& out,
               std::ostream& errors, const style& colors) {
    std::map<std::string, std::vector<const finding*>> by_file;
    for (const finding& each : found.findings())
        if (!each.edits.empty())
            by_file[each.file].push_back(&each);
    if (by_file.empty() && !found.findings().empty() && command.is_dry_run)
        errors << "tova-cfg: nothing can be fixed automatically\n";
    for (const auto& file : by_file) {
        const std::string before = read_file(file.first);
        std::string after = before;
        const std::size_t count = apply_fixes(after, file.second);
        if (command.is_dry_run) {
            if (command.format == report_format::text)
                write_line_diff(out, before, after, file.first, file.first, colors);
            continue;
        }
        write_file(file.first, after);
        errors << file.first << ": " << count << (count == 1 ? " fix\n" : " fixes\n");
    }
}

bool fails(const report& found, const std::string& level) {
    if (level == "never")
        return false;
    return found.has(level == "error"     ? severity::error
                     : level == "warning" ? severity::warning
                                          : severity::note);
}

ordered_json json_of(const rule& one) {
    return {{"id", one.id},
            {"severity", name_of(one.level)},
            {"summary", one.summary},
            {"explanation", one.explanation}};
}

int explain_rule(const check_command& command, std::ostream& out, std::ostream& errors,
                 const style& colors) {
    const rule_list all = rules();
    const rule* const found = all.find(command.explained);
    if (found == nullptr) {
        errors << "tova-cfg: no rule is named " << command.explained
               << did_you_mean(command.explained, all.ids()) << "; check --list-rules lists all\n";
        return exit_usage;
    }
    if (command.format == report_format::json)
        out << json_of(*found).dump(2) << '\n';
    else
        explain(out, *found, colors);
    return exit_clean;
}

void list_rules(const check_command& command, std::ostream& out) {
    if (command.format != report_format::json) {
        for (const rule& each : rules())
            out << each.id << " (" << name_of(each.level) << "): " << each.summary << '\n';
        return;
    }
    ordered_json all = ordered_json::array();
    for (const rule& each : rules())
        all.push_back(json_of(each));
    out << all.dump(2) << '\n';
}

}  // namespace

report check(const check_options& options) {
    report result("tova-cfg", version, rules());
    const auto add = [&](std::vector<finding> found) {
        for (finding& each : found)
            if (!names(options.ignored, each) &&
                (options.only.empty() || names(options.only, each)))
                result.add(std::move(each));
    };
    schema declared;
    if (!options.schema_path.empty()) {
        declared = schema(options.schema_path);
        add(lint_schema(declared, options.schema_path));
    }
    std::set<std::string> keys;
    progress shown(STDERR_FILENO, "checking", options.files.size());
    std::vector<std::string> read;
    for (const std::string& path : options.files) {
        try {
            const document file(path, read_file(path));
            read.push_back(path);
            for (const entry& each : file.entries())
                if (each.is_stored)
                    keys.insert(each.key);
            add(lint(file, declared));
            add(lint_save(file));
            if (!options.written_for.empty())
                add(lint_written_for(file, options.written_for == "inih"
                                               ? ini_dialect::inih
                                               : ini_dialect::configparser));
        } catch (const file_error& error) {
            result.add_failure(error.what());
        }
        shown.step();
    }
    // A required key may be in a file that could not be read.
    if (!read.empty() && result.failures().empty())
        add(lint_required(read, keys, declared));
    result.sort();
    return result;
}

int run_check(const check_command& command, std::ostream& out, std::ostream& errors,
              const style& colors) {
    if (command.lists_rules) {
        list_rules(command, out);
        return exit_clean;
    }
    if (!command.explained.empty())
        return explain_rule(command, out, errors, colors);
    if (command.check.files.empty()) {
        errors << "tova-cfg: check needs a file\n";
        return exit_usage;
    }
    report found = check(command.check);
    if (command.fixes) {
        fix_files(found, command, out, errors, colors);
        if (!command.is_dry_run)
            found = check(command.check);
    }
    if (!command.fixes || !command.is_dry_run || command.format != report_format::text)
        found.write(out, command.format, colors);
    out.flush();
    for (const std::string& each : found.failures())
        errors << "tova-cfg: " << each << '\n';
    return !found.failures().empty()       ? exit_usage
           : fails(found, command.fail_on) ? exit_findings
                                           : exit_clean;
}

}  // namespace tova_programs::cfg
