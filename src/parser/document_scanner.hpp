/// @file
/// The byte level of `xml_parser`: whitespace, names, values and references.
///
/// A scanner knows nothing about tags or elements. It works on the caller's cursor and line counter
/// and moves the cursor over the bytes that it consumes:
///
///     document_scanner scanner(cursor, end, line);
///     scanner.take_name(name);         // the cursor is on the last byte of the name
///     scanner.step(1);
///     scanner.skip_whitespace();
///     if (scanner.byte() != '=')
///         scanner.fail(parse_error::missing_equals, name);
///
/// Invalid input raises `xml_parser::parse_error` with the current line counter. A scanner belongs
/// to one thread at a time.
#pragma once

#include <tova/parser/xml_parser.hpp>
#include <tova/strings/ustring.hpp>
#include <tova/types/radix.hpp>

#include <cstddef>

namespace TOVA_2_18 {
namespace parser {
namespace detail {

class document_scanner {
public:
    using iterator = xml_parser::iterator;
    using parse_error = xml_parser::parse_error;

    document_scanner(iterator& cursor, const iterator& end, unsigned int& line)
        : m_cursor(cursor), m_end(end), m_line(line) {}

    bool at_end() const { return m_cursor == m_end; }
    std::ptrdiff_t remaining() const { return m_end - m_cursor; }

    /// The byte that is `offset` bytes after the cursor; past the end of the document it is NUL.
    char byte(std::ptrdiff_t offset = 0) const {
        return remaining() > offset ? m_cursor[offset] : '\0';
    }

    /// Whether the bytes at the cursor begin with a string, which must not contain a NUL byte.
    bool begins_with(const char* literal) const { return begins_with(0, literal); }

    /// Moves over bytes that the caller has examined; there must be at least that many.
    void step(std::ptrdiff_t count) { m_cursor += count; }

    /// Skips whitespace and counts its line feeds.
    void skip_whitespace();

    /// Does the same and returns the whitespace.
    void take_whitespace(strings::ustring8& into);

    /// Moves to the "?>" of the declaration, to a '<' or '>' before it, or to the last byte.
    void skip_declaration();

    /// Takes a name and stops on its last byte. Raises kind 5 if no name begins here.
    void take_name(strings::ustring8& into);

    /// Takes a quoted value and stops on the closing quote, or at the end. Raises kinds 5, 6 and 7.
    void take_value(strings::ustring8& into);

    /// Takes a reference, stops on its ';' and returns its byte. Raises kinds 5 and 7.
    char take_reference();

    /// Raises an error of kind 5 for the byte at the cursor.
    [[noreturn]] void refuse_byte() const;

    [[noreturn]] void fail(parse_error::error_type kind,
                           const strings::ustring8& subject = strings::ustring8()) const;

private:
    bool begins_with(std::ptrdiff_t offset, const char* literal) const;
    void take_to(iterator place, strings::ustring8& into);
    char take_number(types::radix_t::base radix);

    iterator& m_cursor;
    const iterator& m_end;
    unsigned int& m_line;
};

}  // namespace detail
}  // namespace parser
}  // namespace TOVA_2_18
