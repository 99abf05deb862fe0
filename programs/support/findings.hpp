/// @file
/// What a check finds, and the forms in which it is reported.
///
/// A program has one table of rules. A finding refers to its rule and to a place in a file:
///
///     const rule rules[] = {{"reserved-type", severity::warning, "a type that shows nothing",
///     "..."}}; finding found(rules[0], "app.xmc", 120, 4); found.text = "type \"date\" is always
///     shown as ?invalid?"; report all("tova-xmc", rules); all.add(found); all.write(std::cout,
///     report_format::text, style());
///
/// As text a finding is one line, which editors and CI systems recognize:
///
///     app.xmc:4:17: warning: greeting: type "date" is always shown as ?invalid? [reserved-type]
///
/// A report belongs to one thread.
#pragma once

#include "support/terminal.hpp"

#include <cstddef>
#include <ostream>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace tova_programs {

/// In order of weight. A note alone is no reason for an exit code other than 0.
enum class severity { note, warning, error };

const char* name_of(severity level);

/// Texts are constants. The summary is a phrase without a full stop; the explanation is a paragraph
/// or more: what happens, why, and what to write instead.
struct rule {
    const char* id;
    severity level;
    const char* summary;
    const char* explanation;
};

/// The rules of one program, a constant array.
class rule_list {
public:
    template <std::size_t Size>
    rule_list(const rule (&rules)[Size]) : m_begin(rules), m_end(rules + Size) {}

    const rule* begin() const { return m_begin; }
    const rule* end() const { return m_end; }

    /// Null if there is no rule of that name.
    const rule* find(std::string_view id) const;

    std::vector<std::string> ids() const;

private:
    const rule* m_begin;
    const rule* m_end;
};

/// Replaces bytes of the file in which the finding is.
struct edit {
    std::size_t offset;
    std::size_t length;
    std::string text;
};

/// Another place that explains a finding, such as the first of two messages of one key.
struct related_place {
    std::string file;
    std::size_t offset;
    std::size_t length;
    std::string text;
};

struct finding {
    finding() = default;
    finding(const rule& broken, std::string path, std::size_t from, std::size_t count)
        : broken_rule(&broken), file(std::move(path)), offset(from), length(count),
          level(broken.level) {}

    const rule* broken_rule = nullptr;
    std::string file;
    std::size_t offset = 0;  ///< of the first byte
    std::size_t length = 0;  ///< in bytes, may be 0
    std::size_t line = 0;    ///< from 1, 0 for the file as a whole
    std::size_t column = 0;  ///< in bytes, from 1
    std::size_t end_line = 0;
    std::size_t end_column = 0;
    severity level = severity::error;
    std::string subject;      ///< the message or key that it is about, may be empty
    std::string text;         ///< one line, without a full stop
    std::vector<edit> edits;  ///< a fix that is certain, or empty
    std::vector<related_place> related;
};

enum class report_format { text, json, sarif, github };

class report {
public:
    report(std::string program, std::string version, rule_list rules);

    const rule_list& rules() const { return m_rules; }

    void add(finding found);
    const std::vector<finding>& findings() const { return m_findings; }

    /// Why a file could not be checked. The text form does not show it: the caller does.
    void add_failure(std::string reason) { m_failures.push_back(std::move(reason)); }
    const std::vector<std::string>& failures() const { return m_failures; }

    /// What the reader should know about the whole check, for the caller to show.
    void add_remark(std::string text) { m_remarks.push_back(std::move(text)); }
    const std::vector<std::string>& remarks() const { return m_remarks; }

    /// Orders by file, place and rule, and drops repetitions.
    void sort();

    std::size_t count(severity level) const;

    /// Whether a finding is of that severity or a higher one.
    bool has(severity at_least) const;

    /// The text form ends with a line of counts, if there is anything to count.
    void write(std::ostream& out, report_format format, const style& colors) const;

private:
    void write_text(std::ostream& out, const style& colors) const;
    void write_github(std::ostream& out) const;
    void write_json(std::ostream& out) const;
    void write_sarif(std::ostream& out) const;

    std::string m_program;
    std::string m_version;
    rule_list m_rules;
    std::vector<finding> m_findings;
    std::vector<std::string> m_failures;
    std::vector<std::string> m_remarks;
};

class line_index;

/// Sets the line and column of a finding from its offset in the bytes of its file.
void place_finding(finding& found, const line_index& lines);

/// Applies the fixes of findings to the bytes of their file. A fix that overlaps one before it is
/// left out; repeat the check for it. Returns the number of fixes applied.
std::size_t apply_fixes(std::string& bytes, std::vector<const finding*> fixes);

/// What `--explain` prints.
void explain(std::ostream& out, const rule& about, const style& colors);

}  // namespace tova_programs
