/// @file
/// The tokenizer of all sources. It copies nothing: a token is a range of the source string.
///
///     token_scanner scanner(line);
///     for (scanned_token token = scanner.next(); token.type != config_token::T_END;
///          token = scanner.next())
///         token.append_to(key, line);
///
/// `base_config_item::get_token` is the published form, which copies each token's text. A scanner
/// belongs to one thread; the string may be shared as long as nobody changes it.
#pragma once

#include <tova/config/config_token.hpp>
#include <tova/strings/ustring.hpp>

namespace TOVA_2_18 {
namespace config {
namespace detail {

// A token, and where its text is in the source string. The text is always a part of the source: for
// a quoted string it excludes the quotes, for "\r\n" it is the line feed.
struct scanned_token {
    config_token::tok_types type;    // as callers of `get_token` receive it
    config_token::tok_types stored;  // as `get_token` stores it; differs for "*/" alone
    strings::ustring8::size_type text_begin;
    strings::ustring8::size_type text_size;

    void append_to(strings::ustring8& target, const strings::ustring8& source) const {
        target.append(source, text_begin, text_size);
    }

    bool is_comment_start() const {
        return type == config_token::T_POUND || type == config_token::T_FSFS;
    }
    // Dropped from values unless quoted.
    bool is_space() const {
        return type == config_token::T_SPACE || type == config_token::T_TABCHAR;
    }
    // Dropped from keys and section names unless quoted.
    bool is_space_or_line_end() const { return is_space() || type == config_token::T_NEWLINE; }
};

// The place in which a run of plain bytes is read. A plain byte is simply appended there, whatever
// token it belongs to, and it cannot change the meaning of the byte after the run.
enum class run_place : unsigned char { key = 1, value = 2, element = 4 };

// Reads the tokens of a string in order. The string must outlive the scanner.
class token_scanner {
public:
    explicit token_scanner(const strings::ustring8& source, unsigned int position = 0)
        : m_source(source), m_position(position) {}

    // Index of the first byte of the next token.
    unsigned int position() const { return m_position; }

    // Reads the next token. At or past the end this is `T_END`, and the position does not move.
    scanned_token next();

    // Appends the plain bytes from the position on and returns whether there were any. The result
    // is the same as reading and appending their tokens one by one.
    bool append_run(strings::ustring8& target, run_place place);

    // Moves to the next line end, or to the end of the source.
    //
    // Contract: the skipped text is tokenized like any other, so a double quote in a comment starts
    // a string, and a line end inside that string doesn't count.
    void skip_to_line_end();

private:
    const strings::ustring8& m_source;
    unsigned int m_position;
};

}  // namespace detail
}  // namespace config
}  // namespace TOVA_2_18
