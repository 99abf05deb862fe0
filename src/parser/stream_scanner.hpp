/// @file
/// The byte level of `xml_stream_parser`: whitespace, names, references, values, text and comments
/// in the part of the file that is in the buffer.
///
/// The scanner knows nothing about nodes, tags or files. It works on a cursor, a committed
/// position, an end and a line counter that belong to the parser object, and moves the cursor over
/// the bytes that it takes:
///
///     scanner.advance(2);                        // over "</"
///     const ustring8 name = scanner.take_name();
///     if (name.empty())                          // the data ends here, or there is no name
///         return wait();
///
/// The data may end at any byte, because the file is still growing. A construct is therefore final
/// only after `commit`; `return_to_commit` goes back to start it again. Invalid input throws
/// `xml_stream_parser::error_type` with the cursor on the invalid byte.
///
/// Positions are offsets into the buffer. Both the cursor and the committed position are at most
/// one past the end: the declaration may end in a byte that has yet to arrive. The cursor is at or
/// after the committed position, except that a missing name leaves it one byte before.
///
/// A scanner is a view: it owns nothing and lives for one call. It belongs to one thread at a time.
#pragma once

#include <tova/parser/xml_stream_parser.hpp>
#include <tova/strings/ustring.hpp>

#include "parser/byte_blocks.hpp"
#include "parser/piece.hpp"
#include "parser/usual_element.hpp"
#include "strings/ascii.hpp"

#include <cstddef>
#include <list>

namespace TOVA_2_18 {
namespace parser {
namespace detail {

class stream_scanner {
public:
    /// A view of fields of the parser. `first` and `last` limit the part of the buffer that may
    /// hold data; the other positions are in it, or one past the end of the data.
    stream_scanner(strings::ustring8& buffer, std::size_t& first, std::size_t& last,
                   std::size_t& cursor, std::size_t& committed, std::size_t& end,
                   unsigned int& line, unsigned int& committed_line)
        : m_buffer(buffer), m_first(first), m_last(last), m_cursor(cursor), m_committed(committed),
          m_end(end), m_line(line), m_committed_line(committed_line),
          m_blocks(buffer.data(), buffer.data() + end) {}

    /// @name The cursor
    /// @{
    bool at_end() const { return m_cursor >= m_end; }
    std::size_t remaining() const { return at_end() ? 0 : m_end - m_cursor; }
    /// The byte `offset` bytes after the cursor, which must exist.
    char byte(std::size_t offset = 0) const { return m_buffer.data()[m_cursor + offset]; }
    bool begins_with(const char* literal) const;
    void advance(std::size_t count) { m_cursor += count; }
    void step_back() { --m_cursor; }
    unsigned int line() const { return m_line; }
    /// @}

    /// @name The committed position and its line
    /// @{
    void commit() {
        m_committed = m_cursor;
        m_committed_line = m_line;
    }
    void return_to_commit() {
        m_cursor = m_committed;
        m_line = m_committed_line;
    }
    /// @}

    /// @name Adding data
    /// @{
    /// If `needed` bytes do not fit after the end of the data: drops the data before the committed
    /// position, and moves the cursor there.
    void make_room(std::size_t needed);
    /// Reads up to `count` bytes from the position of a file and appends them to the data, as far
    /// as there is room. Returns their number.
    std::size_t fill(int file, unsigned long position, std::size_t count);
    /// @}

    /// @name Constructs
    /// Each function starts at the cursor and says where it leaves the cursor.
    /// @{
    bool is_at_whitespace() const;
    /// Skips whitespace and counts its line feeds.
    void skip_whitespace() {
        if (at_end() || !strings::detail::is_white_space(byte()))
            return;
        // Attributes usually have one space between them.
        if (byte() == ' ' && m_cursor + 1 < m_end && !strings::detail::is_white_space(byte(1)))
            ++m_cursor;
        else
            m_cursor = end_of_whitespace(m_cursor, m_line);
    }

    /// Skips the XML declaration, whose `<?xml` is at the cursor, up to the byte after its end or
    /// the end of the data.
    void skip_declaration();

    /// Skips whitespace and takes a name.
    ///
    /// Stops on the name's last byte. Returns an empty name at the end of the data, which may have
    /// cut the name, and also if there is no name; the cursor is then one byte before the byte that
    /// is not a name byte, or on it if that is the first byte of the data or whitespace precedes
    /// it. The name is valid until data is added.
    piece take_name();

    /// How many bytes of the buffer are at such a piece and after it.
    std::size_t readable_at(piece bytes) const {
        return m_buffer.size() - static_cast<std::size_t>(bytes.data - m_buffer.data());
    }

    /// Takes an attribute in its usual spelling, `name="value"` without references, and stops on
    /// the closing quote. Returns false and leaves the cursor for anything else, and if the data
    /// end first. Both are valid until data is added.
    bool take_usual_attribute(piece& name, piece& value);

    /// Finds the end of a whole element, whose `<` and another byte are at the cursor. Returns
    /// false for anything unusual, and if the data end first. Changes nothing; what is found is
    /// valid until data is added.
    bool find_usual_element(usual_element& found);
    /// Moves the cursor to the last byte of such an element, and counts its lines.
    void take(const usual_element& element) {
        m_cursor = static_cast<std::size_t>(element.last - m_buffer.data());
        m_line += element.lines;
    }
    /// Takes an entity or a character reference, stops on its `;`, commits there and returns its
    /// one byte. Returns an empty string if more data is needed. Throws `syntax_error`.
    strings::ustring8 take_reference();

    /// Skips whitespace, takes a quoted value and stops on the closing quote. Returns false if the
    /// data end first. Throws `missing_quote` and `syntax_error`.
    bool take_value(strings::ustring8& value);

    /// Takes text and stops on the `<` that ends it. Returns false if more data is needed. Throws
    /// `syntax_error`.
    bool take_text(strings::ustring8& text);

    /// Skips the rest of a comment, stops after its `>` and commits there. Returns false if the
    /// data end first, with the cursor committed before the last three bytes. Throws
    /// `syntax_error`.
    bool skip_comment();

    /// Searches for the start tag of one of the names, without counting lines. Returns true with
    /// cursor and committed position on its `<`. Returns false with the cursor at the end of the
    /// data, or on the `<` that is the last byte of the data.
    bool find_start_tag(const std::list<strings::ustring8>& names);
    /// @}

private:
    // The loops over single bytes. They examine no byte from `end` on and change nothing but their
    // results. The parser has no other such loops, so a vector form would only have to replace
    // these.
    std::size_t end_of_whitespace(std::size_t begin, unsigned int& lines);
    std::size_t end_of_name(std::size_t begin);
    std::size_t end_of_digits(std::size_t begin, bool hexadecimal) const;
    std::size_t end_of_plain_value(std::size_t begin, char quote);
    std::size_t end_of_plain_text(std::size_t begin);
    std::size_t end_of_declaration(std::size_t begin) const;
    std::size_t find_two_dashes(std::size_t begin, std::size_t end, unsigned int& lines) const;
    std::size_t find(char wanted, std::size_t begin, std::size_t end) const;

    const char* end_of_usual_attributes(const char* at, usual_element& found);
    const char* after_usual_space(const char* at, unsigned int& lines);
    const char* end_of_usual_text(const char* begin, usual_element& found);
    bool take_usual_entity(char& result);
    strings::ustring8 take_entity(const char* letters, char result, std::size_t needed);
    strings::ustring8 take_entity_in_a();
    strings::ustring8 take_character_reference();

    strings::ustring8& m_buffer;
    std::size_t& m_first;
    std::size_t& m_last;
    std::size_t& m_cursor;
    std::size_t& m_committed;
    std::size_t& m_end;
    unsigned int& m_line;
    unsigned int& m_committed_line;
    byte_blocks m_blocks;  // of the data
};

}  // namespace detail
}  // namespace parser
}  // namespace TOVA_2_18
