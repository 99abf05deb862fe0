#include <tova/parser/xml_parser.hpp>

#include "parser/document_scanner.hpp"
#include "strings/ascii.hpp"

// The exported operations of the character-level parser, in three layers:
//
//   xml_parser         what is exported: the delegates, and the state that outlives a run
//   document_walk      one call of `parse`: which construct begins at the cursor, what it reports
//                      and how it changes the state; xml_parser_run.cpp forwards the events
//   byte_blocks        the bytes: where whitespace, a name, a value or a piece of text ends
//
// The operations for single constructs work on `document_scanner`, which reads byte by byte and
// raises the errors of both.

namespace TOVA_2_18 {
namespace parser {

using strings::ustring8;
using iterator = xml_parser::iterator;
using parse_error = xml_parser::parse_error;
using detail::document_scanner;

xml_parser::parse_error::parse_error(error_type kind, unsigned int line_counter,
                                     const ustring8& subject)
    : type(kind), line(line_counter), text(subject) {}

xml_parser::parse_error::parse_error(const parse_error& other)
    : type(other.type), line(other.line), text(other.text) {}

xml_parser::parse_error::~parse_error() TOVA_NOTHROW {}

xml_parser::xml_parser() : m_line(0), m_in_tag(false) {}

xml_parser::~xml_parser() TOVA_NOTHROW {}

parse_error xml_parser::parse(const ustring8& text) {
    return parse(text.begin(), text.end());
}

parse_error xml_parser::parse(ustring8::const_iterator begin, ustring8::const_iterator end) {
    return do_parse(begin, end);
}

ustring8 xml_parser::parse_whitespace(iterator& cursor, iterator& end) {
    ustring8 whitespace;
    document_scanner(cursor, end, m_line).take_whitespace(whitespace);
    return whitespace;
}

bool xml_parser::is_white_space(const iterator& cursor) const {
    return strings::detail::is_white_space(*cursor);
}

ustring8 xml_parser::parse_name(iterator& cursor, iterator& end) {
    ustring8 name;
    document_scanner(cursor, end, m_line).take_name(name);
    return name;
}

ustring8 xml_parser::parse_character(iterator& cursor, iterator& end) {
    return ustring8(1, document_scanner(cursor, end, m_line).take_reference());
}

ustring8 xml_parser::parse_attrib_value(iterator& cursor, iterator& end) {
    ustring8 value;
    document_scanner(cursor, end, m_line).take_value(value);
    return value;
}

}  // namespace parser
}  // namespace TOVA_2_18
