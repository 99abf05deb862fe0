#include <tova/parser/xml_parser.hpp>

#include "parser/document_scanner.hpp"
#include "strings/ascii.hpp"

#include <cstddef>

// One pass over one document, in three layers:
//
//   xml_parser         what is exported: the delegates, and the state that outlives a run
//   xml_parser::run    one call of `parse`: which construct begins at the cursor, what it reports,
//                      and how it changes the state
//   document_scanner   the bytes: where whitespace, a name, a value or a piece of text ends
//
// State between two constructs:
//
//   m_in_tag           after `<name` or `</name`, until the `>`
//   m_open_elements    names of the open elements, the innermost on top
//   m_attributes       names of the attributes since the last start tag
//   m_line             line feeds in the whitespace taken so far
//   m_root_seen        an element has begun in this run
//   m_buffer           the last whitespace or text; comments and sections append to it
//
// Each turn of the main loop takes whitespace, which `on_space` receives outside of tags, and then
// one construct by the byte at the cursor:
//
//   byte     outside of a tag                               inside a tag
//   -----    --------------------------------------------   -------------------------------------
//   '<'      in tag; `</` end tag, `<!--` comment,          error 5
//            `<![CDATA[` section, otherwise start tag
//   '>'      error 5                                        not in tag
//   '/'      text                                           `/>` ends the innermost element, not
//                                                           in tag; otherwise error 5
//   other    text                                           attribute
//   (end)    success, or error 1 if an element is open      the same
//
// A start tag pushes its name, an end tag and `/>` pop one. A comment or section is complete at
// once, so it leaves the tag that its `<` opened. Errors are thrown as `parse_error` and become the
// result in `do_parse`.
//
// A handler may parse with the same parser. A run must therefore not keep references to the
// parser's state across a call to a handler: names are copied before it, and stacks are tested
// again after it.

namespace TOVA_2_18 {
namespace parser {

using strings::ustring8;
using iterator = xml_parser::iterator;
using parse_error = xml_parser::parse_error;
using detail::document_scanner;

class xml_parser::run {
public:
    run(xml_parser& parser, iterator& cursor, const iterator& end)
        : m_parser(parser), m_scanner(cursor, end, parser.m_line), m_root_seen(false),
          m_calling(false) {}

    // Whether an exception comes from a handler, not from the grammar.
    bool calling() const { return m_calling; }

    parse_error parse() {
        take_header();
        for (;;) {
            take_space();
            if (m_scanner.at_end())
                break;
            if (m_parser.m_in_tag)
                take_within_tag();
            else if (m_scanner.byte() == '<')
                take_markup();
            else
                take_text();
        }
        // Contract: the end of the document reports line 0, whether or not an element is open.
        return m_parser.m_open_elements.empty()
                   ? parse_error(parse_error::no_error, 0, ustring8())
                   : parse_error(parse_error::unexpected_end, 0, ustring8());
    }

private:
    // The stream parser also skips whitespace before the declaration, and requires 50 bytes in all.
    void take_header() {
        // Three bytes of any kind may precede the declaration, usually a byte order mark.
        if (m_scanner.byte(3) == '<')
            m_scanner.step(3);
        if (!m_scanner.begins_with("<?xml"))
            m_scanner.fail(parse_error::no_header);
        m_scanner.step(5);
        m_scanner.skip_declaration();
        if (m_scanner.remaining() > 1 && m_scanner.byte() != '?')
            m_scanner.fail(parse_error::no_header);
        if (m_scanner.remaining() <= 2)
            m_scanner.fail(parse_error::no_root);
        m_scanner.step(2);
        m_scanner.skip_whitespace();
        if (m_scanner.at_end())
            m_scanner.fail(parse_error::no_root);
    }

    // Whitespace within a tag is not reported.
    void take_space() {
        if (m_parser.m_in_tag) {
            m_scanner.skip_whitespace();
            return;
        }
        m_scanner.take_whitespace(m_buffer);
        if (!m_buffer.empty())
            call(m_parser.on_space, m_buffer);
    }

    void take_within_tag() {
        switch (m_scanner.byte()) {
        case '<':
            m_scanner.refuse_byte();
        case '>':
            m_parser.m_in_tag = false;
            break;
        case '/':
            take_empty_element_end();
            break;
        default:
            take_attribute();
        }
        m_scanner.step(1);
    }

    void take_text() {
        if (m_scanner.byte() == '>')
            m_scanner.refuse_byte();
        m_scanner.take_text(m_buffer);
        call(m_parser.on_character, m_buffer);
    }

    void take_markup() {
        m_parser.m_in_tag = true;
        const char kind = m_scanner.byte(1);
        if (kind == '/')
            take_end_tag();
        else if (kind == '!' && m_scanner.begins_with("<!--"))
            take_section(4, "-->", m_parser.on_comment);
        else if (kind == '!' && m_scanner.begins_with("<![CDATA["))
            take_section(9, "]]>", m_parser.on_character);
        else
            take_start_tag();
        m_scanner.step(1);
    }

    void take_start_tag() {
        // Contract: a second root is rejected before its name is examined.
        if (m_parser.m_open_elements.empty() && m_root_seen)
            m_scanner.fail(parse_error::data_after_root);
        m_scanner.step(1);
        m_scanner.take_name(m_name);
        m_parser.m_open_elements.push(m_name);
        m_parser.m_attributes.clear();
        call(m_parser.on_element_start, m_name);
        m_root_seen = true;
    }

    // Contract: the element is closed before the end of the document is noticed. An end tag with no
    // open element counts as matching. The attribute set is still that of the last start tag, and
    // since the tag is open until its '>', an end tag may have attributes.
    void take_end_tag() {
        m_scanner.step(2);
        m_scanner.take_name(m_name);
        auto& open_elements = m_parser.m_open_elements;
        if (!open_elements.empty()) {
            if (open_elements.top() != m_name)
                m_scanner.fail(parse_error::mismatched_end, m_name);
            open_elements.pop();
        }
        if (m_scanner.remaining() == 1)
            m_scanner.fail(parse_error::unexpected_end);
        call(m_parser.on_element_end, m_name);
    }

    void take_empty_element_end() {
        m_scanner.step(1);
        if (m_scanner.byte() != '>')
            m_scanner.refuse_byte();
        auto& open_elements = m_parser.m_open_elements;
        if (open_elements.empty())
            m_scanner.fail(parse_error::mismatched_end);
        // The handler may close the element itself, by parsing its end tag with this parser. So it
        // gets a copy of the name, and there may be nothing left to pop.
        m_name = open_elements.top();
        call(m_parser.on_element_end, m_name);
        m_parser.m_in_tag = false;
        if (!open_elements.empty())
            open_elements.pop();
        m_parser.m_attributes.clear();
    }

    // Contract: the whitespace before a comment or CDATA section is still in the buffer and becomes
    // the start of its text, although `on_space` has received it as well.
    void take_section(std::ptrdiff_t opening, const char (&closing)[4],
                      functor::delegate_t<void(const ustring8&)>& delegate) {
        m_scanner.step(opening);
        m_scanner.take_until(closing, m_buffer);
        m_parser.m_in_tag = false;
        call(delegate, m_buffer);
    }

    // The stream parser allows no whitespace before the '='.
    void take_attribute() {
        m_scanner.take_name(m_name);
        if (!m_parser.m_attributes.insert(m_name).second)
            m_scanner.fail(parse_error::attribute_redefined, m_name);
        m_scanner.step(1);
        m_scanner.skip_whitespace();
        if (m_scanner.byte() != '=')
            m_scanner.fail(parse_error::missing_equals, m_name);
        m_scanner.step(1);
        m_scanner.skip_whitespace();
        m_scanner.take_value(m_value);
        // Contract: a value cut off by the end of the document is reported before the error.
        call(m_parser.on_attribute, m_name, m_value);
        if (m_scanner.at_end())
            m_scanner.fail(parse_error::missing_quote, m_name);
    }

    // The flag stays set if the handler raises, and `do_parse` lets that exception pass.
    template <typename Delegate, typename... Strings>
    void call(Delegate& delegate, const Strings&... strings) {
        m_calling = true;
        delegate.invoke(strings...);
        m_calling = false;
    }

    xml_parser& m_parser;
    document_scanner m_scanner;
    ustring8 m_buffer;
    ustring8 m_name;
    ustring8 m_value;
    bool m_root_seen;
    bool m_calling;
};

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

parse_error xml_parser::do_parse(iterator& cursor, iterator& end) {
    m_line = 0;
    m_in_tag = false;
    run current(*this, cursor, end);
    try {
        return current.parse();
    } catch (const parse_error& error) {
        // A handler may throw its own `parse_error`, which is not the result of this run.
        if (current.calling())
            throw;
        return error;
    }
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
