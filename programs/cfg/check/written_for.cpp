#include "cfg/check/lint.hpp"
#include "cfg/check/rules.hpp"
#include "support/text_file.hpp"

#include <algorithm>
#include <map>
#include <utility>

// The results of both readers are compared key by key, not line by line: an entry that a later one
// replaces in both does not matter.

namespace tova_programs::cfg {

namespace {

// A value as the other reader reads it, and the key in its spelling.
struct other_value {
    const foreign_value* value;
    std::string spelling;
};

class comparison {
public:
    comparison(const document& file, ini_dialect dialect)
        : m_file(file), m_lines(file.bytes()), m_dialect(dialect), m_reader(name_of(dialect)) {}

    std::vector<finding> run() {
        const ini_reading read = read_ini(m_dialect, m_file.bytes());
        for (const ini_refusal& each : read.refusals)
            add_at_line(each.line, "",
                        m_reader +
                            (m_dialect == ini_dialect::inih ? " reports an error: "
                                                            : " refuses the file: ") +
                            each.reason);
        // After an error, inih keeps the entries that it could read; configparser keeps none.
        if (m_dialect == ini_dialect::configparser &&
            std::any_of(read.refusals.begin(), read.refusals.end(),
                        [](const ini_refusal& each) { return !each.is_duplicate; }))
            return std::move(m_found);
        for (const entry& each : m_file.entries())
            if (each.is_stored)
                m_here[each.key] = &each;
        for (const foreign_value& each : read.values)
            add_there(each);
        for (const auto& each : m_there)
            compare(each.first, *each.second.value);
        for (const auto& each : m_here)
            if (m_there.count(each.first) == 0)
                add(each.second->key_bytes, each.first, m_reader + " has no such key");
        return std::move(m_found);
    }

private:
    void add(span bytes, const std::string& subject, std::string text) {
        finding found(*rules().find("reads-differently"), m_file.path(), bytes.begin, bytes.size());
        found.subject = subject;
        found.text = std::move(text);
        place_finding(found, m_lines);
        m_found.push_back(std::move(found));
    }

    // Lines are counted as the other reader counts them: it may treat a carriage return as a line
    // end.
    void add_at_line(std::size_t number, const std::string& subject, std::string text) {
        const std::string& bytes = m_file.bytes();
        std::size_t begin = 0;
        std::size_t end = line_end(0);
        for (std::size_t line = 1; line < number && end < bytes.size(); ++line) {
            begin = end + (bytes.compare(end, 2, "\r\n") == 0 ? 2 : 1);
            end = line_end(begin);
        }
        add({begin, end}, subject, std::move(text));
    }

    std::size_t line_end(std::size_t begin) const {
        const char* const ends = m_dialect == ini_dialect::inih ? "\n" : "\r\n";
        const std::size_t end = m_file.bytes().find_first_of(ends, begin);
        return end == std::string::npos ? m_file.bytes().size() : end;
    }

    void add_there(const foreign_value& each) {
        std::string spelling = each.path.size() > 1 ? each.path[0] + '.' : "";
        spelling += m_dialect == ini_dialect::configparser ? configparser_key(each.path.back())
                                                           : each.path.back();
        other_value& known = m_there[path_of(spelling)];
        if (known.value != nullptr && known.spelling != spelling)
            add_at_line(each.line, path_of(spelling),
                        m_reader + " keeps " + quoted(known.spelling) + " and " + quoted(spelling) +
                            " apart");
        known = {&each, spelling};
    }

    void compare(const std::string& path, const foreign_value& there) {
        const auto here = m_here.find(path);
        const std::string& value = there.values[0];
        if (here == m_here.end())
            return add_at_line(there.line, path,
                               "only " + m_reader + " has this key, with the value " +
                                   quoted(value));
        const entry& own = *here->second;
        if (own.is_array || own.values[0].text != value)
            return add_at_line(there.line, path,
                               m_reader + " reads " + quoted(value) + ", not " +
                                   (own.is_array ? "an array" : quoted(own.values[0].text)));
        if (m_dialect == ini_dialect::configparser && value.find('%') != std::string::npos)
            add_at_line(there.line, path,
                        "\"%\" is special to a ConfigParser; a RawConfigParser takes it as it is");
    }

    const document& m_file;
    const line_index m_lines;
    const ini_dialect m_dialect;
    const std::string m_reader;
    std::map<std::string, const entry*> m_here;
    std::map<std::string, other_value> m_there;
    std::vector<finding> m_found;
};

}  // namespace

std::vector<finding> lint_written_for(const document& file, ini_dialect dialect) {
    return comparison(file, dialect).run();
}

}  // namespace tova_programs::cfg
