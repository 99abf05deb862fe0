/// @file
/// Lines and characters, as the language server protocol counts them, and bytes.
///
///     const line_map lines(text, encoding::utf16);
///     const std::size_t offset = lines.offset({2, 5});
///
/// Lines and characters are counted from 0. A line ends after LF, CRLF or a CR alone. A character
/// is a unit of UTF-16 or UTF-8, as client and server have agreed. A byte that is not valid UTF-8
/// counts as one unit in both.
///
/// A map is constant once it is made, so threads may share it.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace tova_programs::xmc::lsp {

enum class encoding { utf8, utf16 };

struct position {
    std::size_t line = 0;
    std::size_t character = 0;
};

/// The text must outlive its map.
class line_map {
public:
    line_map(std::string_view text, encoding units);

    /// The position of a byte. Within a character it is that of the character, and within a line
    /// end that of the line's end; an offset after the end is the end.
    position at(std::size_t offset) const;

    /// The byte at a position. A character after the line's end is the line's end, one within a
    /// character the character's begin, and a line after the last one the end of the text.
    std::size_t offset(position where) const;

private:
    std::size_t content_end(std::size_t line) const;

    std::string_view m_text;
    encoding m_units;
    std::vector<std::size_t> m_begins;
};

/// The bytes of the UTF-8 character at an offset, from 1 to 4; 1 for a byte that begins none.
std::size_t character_size(std::string_view text, std::size_t offset);

bool is_utf8(std::string_view text);

/// Replaces the text between two positions, whichever comes first.
void replace_range(std::string& text, encoding units, position begin, position end,
                   std::string_view fresh);

}  // namespace tova_programs::xmc::lsp
