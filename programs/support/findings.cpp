#include "support/findings.hpp"

#include "support/text_file.hpp"

#include <algorithm>
#include <tuple>
#include <utility>

namespace tova_programs {

namespace {

std::string location(const finding& found) {
    std::string result = found.file;
    if (found.line != 0)
        result += ':' + std::to_string(found.line) + ':' + std::to_string(found.column);
    return result;
}

std::string subject_and_text(const finding& found) {
    return found.subject.empty() ? found.text : found.subject + ": " + found.text;
}

// A finding is one line, even if its subject has several.
std::string in_one_line(const std::string& text) {
    std::string result;
    for (const char c : text)
        result += c == '\n' ? std::string("\\n") : std::string(1, c);
    return result;
}

std::string colored(severity level, const style& colors) {
    const std::string name = name_of(level);
    switch (level) {
    case severity::error:
        return colors.red(name);
    case severity::warning:
        return colors.yellow(name);
    default:
        return colors.cyan(name);
    }
}

// The escapes of workflow commands; properties also escape ':' and ','.
std::string github_escaped(std::string_view text, bool is_property) {
    std::string result;
    for (const char c : text) {
        switch (c) {
        case '%':
            result += "%25";
            break;
        case '\r':
            result += "%0D";
            break;
        case '\n':
            result += "%0A";
            break;
        case ':':
            result += is_property ? "%3A" : ":";
            break;
        case ',':
            result += is_property ? "%2C" : ",";
            break;
        default:
            result += c;
        }
    }
    return result;
}

std::string counted(std::size_t count, const char* what) {
    return std::to_string(count) + ' ' + what + (count == 1 ? "" : "s");
}

auto order_of(const finding& found) {
    return std::tie(found.file, found.offset, found.length, found.subject);
}

}  // namespace

const char* name_of(severity level) {
    return level == severity::error ? "error" : level == severity::warning ? "warning" : "note";
}

const rule* rule_list::find(std::string_view id) const {
    const rule* const found =
        std::find_if(m_begin, m_end, [id](const rule& one) { return one.id == id; });
    return found == m_end ? nullptr : found;
}

std::vector<std::string> rule_list::ids() const {
    std::vector<std::string> result;
    for (const rule& one : *this)
        result.push_back(one.id);
    return result;
}

report::report(std::string program, std::string version, rule_list rules)
    : m_program(std::move(program)), m_version(std::move(version)), m_rules(rules) {}

void report::add(finding found) {
    m_findings.push_back(std::move(found));
}

void report::sort() {
    std::stable_sort(m_findings.begin(), m_findings.end(),
                     [](const finding& a, const finding& b) { return order_of(a) < order_of(b); });
    const auto is_same = [](const finding& a, const finding& b) {
        return a.broken_rule == b.broken_rule && order_of(a) == order_of(b) && a.text == b.text;
    };
    m_findings.erase(std::unique(m_findings.begin(), m_findings.end(), is_same), m_findings.end());
}

std::size_t report::count(severity level) const {
    return static_cast<std::size_t>(
        std::count_if(m_findings.begin(), m_findings.end(),
                      [level](const finding& found) { return found.level == level; }));
}

bool report::has(severity at_least) const {
    return std::any_of(m_findings.begin(), m_findings.end(),
                       [at_least](const finding& found) { return found.level >= at_least; });
}

void report::write(std::ostream& out, report_format format, const style& colors) const {
    switch (format) {
    case report_format::text:
        return write_text(out, colors);
    case report_format::json:
        return write_json(out);
    case report_format::sarif:
        return write_sarif(out);
    case report_format::github:
        return write_github(out);
    }
}

void report::write_text(std::ostream& out, const style& colors) const {
    for (const finding& found : m_findings)
        out << colors.bold(location(found) + ':') << ' ' << colored(found.level, colors) << ": "
            << in_one_line(subject_and_text(found)) << ' '
            << colors.dim('[' + std::string(found.broken_rule->id) + ']') << '\n';
    std::string counts;
    for (const severity level : {severity::error, severity::warning, severity::note})
        if (count(level) != 0)
            counts += (counts.empty() ? "" : ", ") + counted(count(level), name_of(level));
    if (!counts.empty())
        out << counts << '\n';
}

void report::write_github(std::ostream& out) const {
    for (const finding& found : m_findings) {
        const char* const command = found.level == severity::note ? "notice" : name_of(found.level);
        out << "::" << command << " file=" << github_escaped(found.file, true);
        if (found.line != 0)
            out << ",line=" << found.line << ",col=" << found.column;
        if (found.end_line != 0)
            out << ",endLine=" << found.end_line << ",endColumn=" << found.end_column;
        out << ",title=" << github_escaped(found.broken_rule->id, true)
            << "::" << github_escaped(subject_and_text(found), false) << '\n';
    }
}

void place_finding(finding& found, const line_index& lines) {
    const text_place begin = lines.at(found.offset);
    const text_place end = lines.at(found.offset + found.length);
    found.line = begin.line;
    found.column = begin.column;
    found.end_line = end.line;
    found.end_column = end.column;
}

std::size_t apply_fixes(std::string& bytes, std::vector<const finding*> fixes) {
    std::vector<const edit*> edits;
    std::size_t applied = 0;
    const auto overlaps = [&edits](const edit& fresh) {
        return std::any_of(edits.begin(), edits.end(), [&fresh](const edit* known) {
            return fresh.offset < known->offset + known->length + (known->length == 0 ? 1 : 0) &&
                   known->offset < fresh.offset + fresh.length + (fresh.length == 0 ? 1 : 0);
        });
    };
    for (const finding* const found : fixes) {
        if (found->edits.empty() || std::any_of(found->edits.begin(), found->edits.end(), overlaps))
            continue;
        for (const edit& one : found->edits)
            edits.push_back(&one);
        ++applied;
    }
    // From the end, so that the offsets of the others stay right.
    std::sort(edits.begin(), edits.end(),
              [](const edit* a, const edit* b) { return a->offset > b->offset; });
    for (const edit* const one : edits)
        bytes.replace(one->offset, one->length, one->text);
    return applied;
}

void explain(std::ostream& out, const rule& about, const style& colors) {
    out << colors.bold(about.id) << " (" << name_of(about.level) << "): " << about.summary << "\n\n"
        << about.explanation << '\n';
}

}  // namespace tova_programs
