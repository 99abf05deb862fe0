/// @file
/// Catalogs as XMC text in the canonical layout, which the loader reads back as the same values.
///
///     writer out;
///     out.begin_catalog("app", "en");
///     out.message("hello", "", {text_piece("Hello "), argument_piece("who")});
///     out.end_catalog();
///     write_file("app.xmc", out.text());
#pragma once

#include "xmc/model/document.hpp"

#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace tova_programs::xmc {

/// A piece of a message that is to be written.
struct piece {
    bool is_argument = false;
    std::string text;  ///< the text, or the argument's name
    std::vector<std::pair<std::string, std::string>> attributes;  ///< of an argument, in order
};

/// The pieces of a message as they were read. Options that the loader drops are left out.
std::vector<piece> pieces_of(const document& file, const message& of);

std::string escaped_attribute(std::string_view value);

/// The content of a `msg` element.
std::string content_of(const std::vector<piece>& pieces);

class writer {
public:
    writer();

    void begin_catalog(std::string_view name, std::string_view locale);
    void message(std::string_view name, std::string_view meta, const std::vector<piece>& pieces);
    void end_catalog();

    /// A line of its own at the current level, such as a comment or an include.
    void line(std::string_view text);

    bool is_empty() const { return m_is_empty; }

    /// The whole file.
    std::string text() const;

private:
    std::string m_text;
    bool m_in_catalog = false;
    bool m_is_empty = true;
};

/// A file in the canonical layout: one message to a line, comments kept, and the content of a
/// message with comments or sections in it as it was. Raises `file_error` for a file that the
/// loader refuses.
std::string formatted(const document& file);

/// Whether two files have the same catalogs with the same messages in the same order.
bool have_equal_values(const document& a, const document& b);

}  // namespace tova_programs::xmc
