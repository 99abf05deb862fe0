/// @file
/// A table as aligned text or as CSV.
///
///     table list({"key", "count"}, {align::left, align::right});
///     list.add({"hello", "3"});
///     list.write(std::cout, style());
///
/// A table belongs to one thread.
#pragma once

#include "support/terminal.hpp"

#include <ostream>
#include <string>
#include <string_view>
#include <vector>

namespace tova_programs {

enum class align { left, right };

class table {
public:
    /// Columns without an alignment are aligned to the left.
    explicit table(std::vector<std::string> headers, std::vector<align> alignments = {});

    /// Cells may hold colors, but no line feeds. Missing cells are empty.
    void add(std::vector<std::string> cells);

    bool empty() const { return m_rows.empty(); }

    /// Aligned by what a terminal shows, with two spaces between columns and none at line ends.
    void write(std::ostream& out, const style& colors) const;

    /// As RFC 4180 describes it: fields with commas, quotes or line ends are quoted, lines end in
    /// CRLF.
    void write_csv(std::ostream& out) const;

private:
    std::vector<std::string> m_headers;
    std::vector<align> m_alignments;
    std::vector<std::vector<std::string>> m_rows;
};

/// One field of a CSV line.
std::string csv_field(std::string_view text);

}  // namespace tova_programs
