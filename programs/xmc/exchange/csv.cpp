#include "xmc/exchange/csv.hpp"

#include "support/table.hpp"
#include "support/text_file.hpp"

#include <algorithm>
#include <map>
#include <set>
#include <sstream>
#include <utility>

namespace tova_programs::xmc {

namespace {

const char brace_format[] = "python-brace-format";
const char missing[] = "missing";

std::string lines_of(const std::vector<std::string>& list) {
    std::string result;
    for (const std::string& each : list)
        result += (result.empty() ? "" : "\n") + each;
    return result;
}

struct row {
    std::size_t line;
    std::vector<std::string> fields;
};

// The rows of a table. A line feed ends one, with or without CR, unless it is in quotes.
std::vector<row> rows_of(const std::string& bytes, const std::string& path) {
    std::vector<row> result;
    std::size_t line = 1;
    std::size_t at = bytes.compare(0, 3, "\xEF\xBB\xBF") == 0 ? 3 : 0;
    while (at < bytes.size()) {
        result.push_back({line, {}});
        for (bool is_last = false; !is_last;) {
            std::string field;
            if (at < bytes.size() && bytes[at] == '"') {
                const std::size_t begin_line = line;
                for (++at;; ++at) {
                    if (at >= bytes.size())
                        throw file_error(path + ':' + std::to_string(begin_line) +
                                         ": a quote is not closed");
                    if (bytes[at] == '"' && bytes.compare(at, 2, "\"\"") == 0)
                        ++at;
                    else if (bytes[at] == '"')
                        break;
                    line += bytes[at] == '\n';
                    field += bytes[at];
                }
                ++at;
            }
            for (; at < bytes.size() && bytes[at] != ',' && bytes[at] != '\n'; ++at)
                if (bytes[at] != '\r')
                    field += bytes[at];
            is_last = at >= bytes.size() || bytes[at] == '\n';
            ++at;
            result.back().fields.push_back(std::move(field));
        }
        ++line;
        if (result.back().fields == std::vector<std::string>{""})
            result.pop_back();
    }
    return result;
}

class reader {
public:
    reader(const std::string& bytes, const std::string& path, const csv_defaults& defaults)
        : m_path(path), m_defaults(defaults), m_rows(rows_of(bytes, path)) {
        if (m_rows.empty())
            throw file_error(path + ": the table is empty");
        for (std::size_t i = 0; i < m_rows[0].fields.size(); ++i)
            m_columns.insert({m_rows[0].fields[i], i});
        for (const char* const name : {"key", "target"})
            if (m_columns.find(name) == m_columns.end())
                throw file_error(path + ": the table has no column \"" + name + '"');
    }

    imported run() {
        imported result;
        result.all.locale = m_defaults.locale;
        result.all.reference = m_defaults.reference;
        for (std::size_t i = 1; i < m_rows.size(); ++i)
            read(m_rows[i], result);
        if (result.all.locale.empty())
            throw file_error(m_path + ": names no locale; say it with --lang");
        return result;
    }

private:
    bool has(const char* column) const { return m_columns.find(column) != m_columns.end(); }

    std::string field(const row& from, const char* column) const {
        const auto found = m_columns.find(column);
        return found == m_columns.end() || found->second >= from.fields.size()
                   ? ""
                   : from.fields[found->second];
    }

    exchanged_text text_of(const row& from, const char* column, bool is_target,
                           std::string& problem) const {
        const std::string format = field(from, "format");
        const std::string value = field(from, column);
        if (format.compare(0, sizeof brace_format - 1, brace_format) != 0) {
            exchanged_text result;
            result.exists = true;
            add_text(result.pieces, value);
            return result;
        }
        definitions codes;
        for (const char* const list : {"arguments", "target arguments"}) {
            std::istringstream lines(field(from, list));
            for (std::string line; std::getline(lines, line);)
                codes.add(line);
            if (!is_target)
                break;
        }
        return codes.read(value, problem);
    }

    void read(const row& from, imported& result) {
        exchanged_message one;
        one.key = from_portable(field(from, "key"));
        one.catalog = has("catalog") ? from_portable(field(from, "catalog")) : m_defaults.catalog;
        if (!m_known.insert({one.catalog, one.key}).second) {
            result.problems.push_back({from.line, one.key, appears_again});
            return;
        }
        const std::string locale = from_portable(field(from, "locale"));
        if (result.all.locale.empty())
            result.all.locale = locale;
        else if (m_defaults.locale.empty() && !locale.empty() && locale != result.all.locale)
            result.problems.push_back({from.line, one.key, "locale \"" + locale + "\" is another"});
        if (has("reference") && !field(from, "reference").empty())
            result.all.reference = from_portable(field(from, "reference"));
        const std::string format = field(from, "format");
        const auto text = [&](const char* column, bool is_target) {
            std::string problem;
            exchanged_text read = text_of(from, column, is_target, problem);
            if (!problem.empty())
                result.problems.push_back({from.line, one.key, problem});
            return read;
        };
        const bool is_missing =
            format.size() >= sizeof missing - 1 &&
            format.compare(format.size() - (sizeof missing - 1), sizeof missing - 1, missing) == 0;
        if (has("source") && !is_missing)
            one.source = text("source", false);
        one.source.meta = from_portable(field(from, "note"));
        if (field(from, "target").empty())
            ++result.untranslated;
        else
            one.target = text("target", true);
        one.target.meta = from_portable(field(from, "target note"));
        result.all.messages.push_back(std::move(one));
    }

    const std::string& m_path;
    const csv_defaults& m_defaults;
    std::vector<row> m_rows;
    std::map<std::string, std::size_t> m_columns;
    std::set<std::pair<std::string, std::string>> m_known;
};

}  // namespace

std::string csv_text(const exchange& all) {
    table list({"catalog", "key", "locale", "reference", "note", "source", "target", "target note",
                "format", "arguments", "target arguments"});
    for (const exchanged_message& each : all.messages) {
        const placeholders codes({&each.source}, {&each.target});
        std::string format = codes.any() ? brace_format : "";
        if (!each.source.exists)
            format += (format.empty() ? "" : " ") + std::string(missing);
        list.add({portable(each.catalog), portable(each.key), portable(all.locale),
                  portable(all.reference), portable(each.source.meta),
                  codes.source_text(each.source), codes.target_text(each.target),
                  portable(each.target.meta), format, lines_of(codes.source_definitions()),
                  lines_of(codes.target_definitions())});
    }
    std::ostringstream out;
    list.write_csv(out);
    return out.str();
}

imported read_csv(const std::string& bytes, const std::string& path, const csv_defaults& defaults) {
    return reader(bytes, path, defaults).run();
}

}  // namespace tova_programs::xmc
