#include "support/table.hpp"

#include <algorithm>
#include <cstddef>
#include <utility>

namespace tova_programs {

namespace {

// The width without the escape sequences of colors.
std::size_t shown_width(const std::string& cell) {
    std::string plain;
    for (std::size_t i = 0; i < cell.size(); ++i) {
        if (cell[i] == '\x1b')
            i = std::min(cell.find('m', i), cell.size() - 1);
        else
            plain += cell[i];
    }
    return display_width(plain);
}

}  // namespace

table::table(std::vector<std::string> headers, std::vector<align> alignments)
    : m_headers(std::move(headers)), m_alignments(std::move(alignments)) {
    m_alignments.resize(m_headers.size(), align::left);
}

void table::add(std::vector<std::string> cells) {
    cells.resize(m_headers.size());
    m_rows.push_back(std::move(cells));
}

void table::write(std::ostream& out, const style& colors) const {
    std::vector<std::size_t> widths;
    for (const std::string& header : m_headers)
        widths.push_back(shown_width(header));
    for (const auto& row : m_rows)
        for (std::size_t i = 0; i < row.size(); ++i)
            widths[i] = std::max(widths[i], shown_width(row[i]));

    const auto write_row = [&](const std::vector<std::string>& row, bool is_header) {
        std::string line;
        for (std::size_t i = 0; i < row.size(); ++i) {
            const std::string padding(widths[i] - shown_width(row[i]), ' ');
            const std::string cell = is_header ? colors.bold(row[i]) : row[i];
            line += i == 0 ? "" : "  ";
            line += m_alignments[i] == align::right ? padding + cell : cell + padding;
        }
        line.erase(line.find_last_not_of(' ') + 1);
        out << line << '\n';
    };
    write_row(m_headers, true);
    for (const auto& row : m_rows)
        write_row(row, false);
}

void table::write_csv(std::ostream& out) const {
    const auto write_row = [&out](const std::vector<std::string>& row) {
        for (std::size_t i = 0; i < row.size(); ++i)
            out << (i == 0 ? "" : ",") << csv_field(row[i]);
        out << "\r\n";
    };
    write_row(m_headers);
    for (const auto& row : m_rows)
        write_row(row);
}

std::string csv_field(std::string_view text) {
    if (text.find_first_of(",\"\r\n") == text.npos)
        return std::string(text);
    std::string quoted = "\"";
    for (const char c : text) {
        if (c == '"')
            quoted += '"';
        quoted += c;
    }
    return quoted + '"';
}

}  // namespace tova_programs
