/// @file
/// Whole files as bytes, and where in them a byte is.
///
///     const std::string bytes = read_file(path);
///     const line_index lines(bytes);
///     const text_place place = lines.at(offset);  // line and column, from 1
///
/// Reading and writing raise `file_error`.
#pragma once

#include <cstddef>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace tova_programs {

/// Its `what` names the file and the reason: `app.xmc: No such file or directory`.
class file_error : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

std::string read_file(const std::string& path);

/// Replaces a file in one step: a reader sees the old content or the new one. The permissions of an
/// existing file are kept, and a symbolic link stays one: its target is replaced. A device or a
/// pipe is written to.
void write_file(const std::string& path, std::string_view bytes);

/// Counted from 1; a column is a byte.
struct text_place {
    std::size_t line = 0;
    std::size_t column = 0;
};

/// The lines of a string, which must outlive the index. A line ends after its line feed.
class line_index {
public:
    explicit line_index(std::string_view text);

    /// The place of a byte, or of the end.
    text_place at(std::size_t offset) const;

    /// A line without its line end, CR included.
    std::string_view line(std::size_t number) const;

    std::size_t count() const { return m_begins.size(); }

private:
    std::string_view m_text;
    std::vector<std::size_t> m_begins;
};

}  // namespace tova_programs
