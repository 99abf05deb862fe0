#include "cfg/check/check.hpp"

#include "cfg/check/lint.hpp"
#include "cfg/check/rules.hpp"
#include "cfg/version.hpp"
#include "support/exit_code.hpp"
#include "support/line_diff.hpp"
#include "support/text_file.hpp"

#include <algorithm>
#include <map>
#include <set>
#include <utility>

namespace tova_programs::cfg {

namespace {

bool names(const std::vector<std::string>& list, const finding& found) {
    return std::find(list.begin(), list.end(), found.broken_rule->id) != list.end();
}

// Applies the certain fixes to each file, or shows what would change.
void fix_files(const report& found, const check_command& command, std::ostream& out,
               std::ostream& errors, const style& colors) {
    std::map<std::string, std::vector<const finding*>> by_file;
    for (const finding& each : found.findings())
        if (!each.edits.empty())
            by_file[each.file].push_back(&each);
    for (const auto& file : by_file) {
        const std::string before = read_file(file.first);
        std::string after = before;
        const std::size_t count = apply_fixes(after, file.second);
        if (command.is_dry_run) {
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

int explain_rule(const std::string& id, std::ostream& out, std::ostream& errors,
                 const style& colors) {
    const rule_list all = rules();
    const rule* const found = all.find(id);
    if (found == nullptr) {
        errors << "tova-cfg: there is no rule \"" << id << "\"; check --list-rules shows them\n";
        return exit_usage;
    }
    explain(out, *found, colors);
    return exit_clean;
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
    for (const std::string& path : options.files) {
        const document file(path, read_file(path));
        for (const entry& each : file.entries())
            if (each.is_stored)
                keys.insert(each.key);
        add(lint(file, declared));
        add(lint_save(file));
        if (!options.written_for.empty())
            add(lint_written_for(file, options.written_for == "inih" ? ini_dialect::inih
                                                                     : ini_dialect::configparser));
    }
    if (!options.files.empty())
        add(lint_required(options.files, keys, declared));
    result.sort();
    return result;
}

int run_check(const check_command& command, std::ostream& out, std::ostream& errors,
              const style& colors) {
    if (command.lists_rules) {
        for (const rule& each : rules())
            out << each.id << " (" << name_of(each.level) << "): " << each.summary << '\n';
        return exit_clean;
    }
    if (!command.explained.empty())
        return explain_rule(command.explained, out, errors, colors);
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
    if (!command.fixes || !command.is_dry_run)
        found.write(out, command.format, colors);
    return fails(found, command.fail_on) ? exit_findings : exit_clean;
}

}  // namespace tova_programs::cfg
