#include "xmc/check/check.hpp"

#include "support/exit_code.hpp"
#include "support/line_diff.hpp"
#include "support/progress.hpp"
#include "support/suggestion.hpp"
#include "support/text_file.hpp"
#include "xmc/check/include_graph.hpp"
#include "xmc/check/lint.hpp"
#include "xmc/check/message_index.hpp"
#include "xmc/model/files.hpp"
#include "xmc/output.hpp"
#include "xmc/rules.hpp"
#include "xmc/scanner/verdict.hpp"
#include "xmc/version.hpp"

#include <nlohmann/json.hpp>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <map>
#include <set>
#include <sstream>
#include <utility>

// A check has two parts. Each file is read once: its own findings are kept, its messages go into
// the index, and its includes into the graph; files that it includes join the end of the list.
// Afterwards the index and the graph find what no file shows by itself.

namespace tova_programs::xmc {

namespace {

using json = nlohmann::ordered_json;

bool is_link(const std::string& path) {
    struct stat status;
    return ::lstat(path.c_str(), &status) == 0 && S_ISLNK(status.st_mode);
}

bool is_file(const std::string& path) {
    struct stat status;
    return ::stat(path.c_str(), &status) == 0 && S_ISREG(status.st_mode);
}

class checker {
public:
    checker(const check_options& options, check_source& source)
        : m_options(options), m_source(source), m_report("tova-xmc", version, rules()) {}

    report run() {
        std::vector<std::string> failures;
        std::vector<std::string> files = m_source.files(m_options.paths, failures);
        for (std::string& reason : failures)
            m_report.add_failure(std::move(reason));
        for (const std::string& path : m_options.paths)
            m_graph.add_root(path);
        std::set<std::string> known;
        for (const std::string& file : files)
            known.insert(canonical_path(file));
        {
            progress shown(STDERR_FILENO, "checking", files.size());
            for (std::size_t i = 0; i < files.size(); ++i) {
                const std::string file = files[i];  // the list grows
                check_file(file, files, known);
                shown.step();
            }
        }
        look_for_reference();
        const auto read = [this](const std::string& path) { return m_source.bytes(path); };
        for (finding& found : m_index.findings(m_options.reference, read))
            add(std::move(found));
        for (finding& found : m_graph.findings())
            add(std::move(found));
        m_report.sort();
        return std::move(m_report);
    }

private:
    // Without the reference, no arguments are compared, which would look like agreement.
    void look_for_reference() {
        if (!m_report.failures().empty() || m_index.has_locale(m_options.reference))
            return;
        if (m_options.requires_reference)
            throw file_error("no catalog has the locale " + m_options.reference);
        if (m_index.has_languages() &&
            is_reported(m_options, finding(*rules().find("argument-mismatch"), "", 0, 0)))
            m_report.add_remark("arguments are not compared, because no catalog has the locale " +
                                m_options.reference + "; --reference names another one");
    }

    void add(finding found) {
        if (is_reported(m_options, found))
            m_report.add(std::move(found));
    }

    void check_file(const std::string& path, std::vector<std::string>& files,
                    std::set<std::string>& known) {
        if (is_link(path)) {
            finding found(*rules().find("file-link"), path, 0, 0);
            found.text = "a symbolic link is not read";
            add(std::move(found));
            return;
        }
        std::shared_ptr<const checked_document> checked;
        try {
            checked = m_source.document(path);
        } catch (const file_error& error) {
            m_report.add_failure(error.what());
            return;
        }
        const document& file = checked->file;
        bool has_error = false;
        for (const finding& found : checked->findings) {
            has_error = has_error || found.level == severity::error;
            add(found);
        }
        m_index.add(file);
        std::vector<include_graph::edge> edges;
        const line_index lines(file.bytes());
        for (const include& each : file.includes()) {
            if (each.file.empty())
                continue;
            include_graph::edge edge;
            edge.target = included_path(path, each.file);
            edge.name = each.file;
            edge.bytes = each.bytes;
            edge.place = finding(*rules().find("include-missing"), path, each.bytes.begin,
                                 each.bytes.size());
            place_finding(edge.place, lines);
            edge.is_readable = m_source.has_file(edge.target);
            if (edge.is_readable && known.insert(canonical_path(edge.target)).second)
                files.push_back(edge.target);
            edges.push_back(std::move(edge));
        }
        m_graph.add_file(path, std::move(edges), has_error);
    }

    const check_options& m_options;
    check_source& m_source;
    report m_report;
    message_index m_index;
    include_graph m_graph;
};

finding finding_of(const document& file, const problem& each, const line_index& lines) {
    finding found(*rules().find(each.rule), file.path(), each.bytes.begin, each.bytes.size());
    found.text = each.text;
    if (each.message != problem::no_message)
        found.subject = file.messages()[each.message].name;
    for (const auto& replacement : each.fix)
        found.edits.push_back(
            {replacement.first.begin, replacement.first.size(), replacement.second});
    place_finding(found, lines);
    return found;
}

// Applies the certain fixes to each file, or shows what would change. Without any, a dry run that
// finds something says so.
void fix_files(const report& found, const check_command& command, std::ostream& out,
               std::ostream& errors, const style& colors) {
    std::map<std::string, std::vector<const finding*>> by_file;
    for (const finding& each : found.findings())
        if (!each.edits.empty())
            by_file[each.file].push_back(&each);
    if (by_file.empty() && !found.findings().empty() && command.is_dry_run)
        errors << "tova-xmc: nothing can be fixed automatically\n";
    const bool shows_json = command.is_dry_run && command.format == report_format::json;
    json changes = json::array();
    for (const auto& file : by_file) {
        const std::string before = read_file(file.first);
        std::string after = before;
        const std::size_t count = apply_fixes(after, file.second);
        if (shows_json) {
            std::ostringstream difference;
            write_line_diff(difference, before, after, file.first, file.first, style());
            changes.push_back({{"file", file.first}, {"fixes", count}, {"diff", difference.str()}});
        } else if (command.is_dry_run) {
            write_line_diff(out, before, after, file.first, file.first, colors);
        } else {
            write_file(file.first, after);
            errors << file.first << ": " << count << (count == 1 ? " fix\n" : " fixes\n");
        }
    }
    if (shows_json)
        write_json(out, changes);
}

bool fails(const report& found, const std::string& level) {
    if (level == "never")
        return false;
    return found.has(level == "error"     ? severity::error
                     : level == "warning" ? severity::warning
                                          : severity::note);
}

json as_json(const rule& each) {
    return {{"rule", each.id},
            {"severity", name_of(each.level)},
            {"summary", each.summary},
            {"explanation", each.explanation}};
}

void list_rules(bool writes_json, std::ostream& out) {
    json list = json::array();
    for (const rule& each : rules())
        if (writes_json)
            list.push_back(as_json(each));
        else
            out << each.id << " (" << name_of(each.level) << "): " << each.summary << '\n';
    if (writes_json)
        write_json(out, list);
}

int explain_rule(const std::string& id, bool writes_json, std::ostream& out, std::ostream& errors,
                 const style& colors) {
    const rule_list all = rules();
    const rule* const found = all.find(id);
    if (found == nullptr) {
        errors << "tova-xmc: no rule is named " << id << did_you_mean(id, all.ids())
               << "; check --list-rules lists all\n";
        return exit_usage;
    }
    if (writes_json)
        write_json(out, as_json(*found));
    else
        explain(out, *found, colors);
    return exit_clean;
}

std::vector<finding> findings_of(const document& file) {
    const line_index lines(file.bytes());
    std::vector<finding> result;
    bool has_error = false;
    for (const problem& each : lint(file)) {
        result.push_back(finding_of(file, each, lines));
        has_error = has_error || result.back().level == severity::error;
    }
    if (has_error)
        return result;
    // The rules are meant to cover all that the loader refuses. If one is missing, the loader's own
    // message is better than none.
    const verdict all = verdict_of(file.tokens(), [](auto, auto) { return true; });
    if (all.kind != load_kind::no_error) {
        finding found(*rules().find("unknown-element"), file.path(), all.bytes.begin,
                      all.bytes.size());
        found.text = "the loader refuses the file here: \"" + all.subject + '"';
        place_finding(found, lines);
        result.push_back(std::move(found));
    }
    return result;
}

}  // namespace

bool is_reported(const check_options& options, const finding& found) {
    const auto names = [&found](const std::vector<std::string>& list) {
        return std::find(list.begin(), list.end(), found.broken_rule->id) != list.end();
    };
    return !names(options.ignored) && (options.only.empty() || names(options.only));
}

checked_document::checked_document(std::string path, std::string bytes)
    : file(std::move(path), std::move(bytes)), findings(findings_of(file)) {}

std::vector<std::string> check_source::files(const std::vector<std::string>& paths,
                                             std::vector<std::string>& failures) {
    return catalog_files(paths, failures);
}

bool check_source::has_file(const std::string& path) {
    return is_file(path) && !is_link(path);
}

std::string check_source::bytes(const std::string& path) {
    return read_file(path);
}

std::shared_ptr<const checked_document> check_source::document(const std::string& path) {
    return std::make_shared<const checked_document>(path, read_file(path));
}

report check(const check_options& options, check_source& source) {
    return checker(options, source).run();
}

report check(const check_options& options) {
    check_source disk;
    return check(options, disk);
}

int run_check(const check_command& command, std::ostream& out, std::ostream& errors,
              const style& colors) {
    const bool as_json = command.format == report_format::json;
    if (command.lists_rules) {
        list_rules(as_json, out);
        return exit_clean;
    }
    if (!command.explained.empty())
        return explain_rule(command.explained, as_json, out, errors, colors);
    if (command.check.paths.empty()) {
        errors << "tova-xmc: check needs a file or a folder\n";
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
    out.flush();
    for (const std::vector<std::string>* const list : {&found.remarks(), &found.failures()})
        for (const std::string& each : *list)
            errors << "tova-xmc: " << each << '\n';
    return !found.failures().empty()       ? exit_usage
           : fails(found, command.fail_on) ? exit_findings
                                           : exit_clean;
}

}  // namespace tova_programs::xmc
