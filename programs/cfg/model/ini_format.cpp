#include "cfg/model/other_formats.hpp"

#include "support/text_file.hpp"

#include <algorithm>
#include <utility>

namespace tova_programs::cfg {

namespace {

std::string trimmed(const std::string& text) {
    const std::size_t begin = text.find_first_not_of(" \t\r\f\v");
    return begin == std::string::npos
               ? ""
               : text.substr(begin, text.find_last_not_of(" \t\r\f\v") + 1 - begin);
}

[[noreturn]] void refuse(const std::string& path, std::size_t line, const std::string& reason) {
    throw file_error(path + ':' + std::to_string(line) + ": " + reason);
}

class ini_reader {
public:
    ini_reader(const std::string& path, const std::string& bytes, bool has_inline_comments)
        : m_path(path), m_bytes(bytes), m_has_inline_comments(has_inline_comments) {}

    std::vector<foreign_value> read() {
        std::size_t at = m_bytes.compare(0, 3, "\xEF\xBB\xBF") == 0 ? 3 : 0;
        for (std::size_t number = 1; at < m_bytes.size(); ++number) {
            const std::size_t feed = std::min(m_bytes.find('\n', at), m_bytes.size());
            read_line(m_bytes.substr(at, feed - at), number);
            at = feed + 1;
        }
        // Empty lines after a value are not part of it.
        for (foreign_value& each : m_result) {
            std::string& value = each.values[0];
            value.resize(value.find_last_not_of('\n') + 1);
        }
        return std::move(m_result);
    }

private:
    void read_line(std::string line, std::size_t number) {
        const std::string text = trimmed(without_comment(line));
        if (text.empty()) {
            // configparser keeps an empty line within a value, inih does not.
            if (m_can_continue && !m_has_inline_comments && trimmed(line).empty())
                m_result.back().values[0] += '\n';
            return;
        }
        // For configparser a line continues a value if it is indented more than its key.
        const std::size_t indent = line.find_first_not_of(" \t");
        if (m_can_continue && indent > (m_has_inline_comments ? 0 : m_indent)) {
            m_result.back().values[0] += '\n' + text;
            return;
        }
        m_indent = indent;
        if (text[0] == '[') {
            const std::size_t end = text.find(']');
            if (end == std::string::npos)
                refuse(m_path, number, "a header without \"]\"");
            m_section = text.substr(1, end - 1);
            m_can_continue = false;
            return;
        }
        const std::size_t sign = text.find_first_of("=:");
        if (sign == std::string::npos)
            refuse(m_path, number, "a line without \"=\" or \":\"");
        foreign_value found;
        if (!m_section.empty())
            found.path.push_back(m_section);
        found.path.push_back(trimmed(text.substr(0, sign)));
        found.values.push_back(trimmed(text.substr(sign + 1)));
        m_result.push_back(std::move(found));
        m_can_continue = true;
    }

    // A comment is a line of its own, or for inih also what follows a space and a ";".
    std::string without_comment(const std::string& line) const {
        const std::string text = trimmed(line);
        if (!text.empty() && (text[0] == '#' || text[0] == ';'))
            return "";
        for (std::size_t i = 1; m_has_inline_comments && i < line.size(); ++i)
            if (line[i] == ';' && (line[i - 1] == ' ' || line[i - 1] == '\t'))
                return line.substr(0, i);
        return line;
    }

    const std::string& m_path;
    const std::string& m_bytes;
    bool m_has_inline_comments;
    std::string m_section;
    bool m_can_continue = false;  // after an entry
    std::size_t m_indent = 0;     // of that entry
    std::vector<foreign_value> m_result;
};

}  // namespace

std::vector<foreign_value> read_ini(const std::string& path, const std::string& bytes) {
    return ini_reader(path, bytes, false).read();
}

std::vector<foreign_value> read_inih(const std::string& path, const std::string& bytes) {
    return ini_reader(path, bytes, true).read();
}

}  // namespace tova_programs::cfg
