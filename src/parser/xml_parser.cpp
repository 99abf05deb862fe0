#include <tova/parser/xml_parser.hpp>

#include <algorithm>
#include <cctype>
#include <cstddef>
#include <cstring>

#include <tova/generic/convert/str_to_x.hpp>

#include "strings/ascii.hpp"

namespace TOVA_2_18 {
namespace parser {

namespace {

using strings::ustring8;
using strings::detail::is_ascii_digit;
using strings::detail::is_ascii_letter;
using strings::detail::is_white_space;
using iterator = xml_parser::iterator;
using parse_error = xml_parser::parse_error;

// Contract: names follow the C library's classes, so in a locale with an 8-bit character set its
// letters may stand in names. ASCII letters and digits are answered without the call.
bool begins_name(char byte) {
    return is_ascii_letter(byte) || std::isalpha(byte) != 0;
}

bool continues_name(char byte) {
    return is_ascii_letter(byte) || is_ascii_digit(byte) || byte == '_' || std::isalnum(byte) != 0;
}

bool begins_with(iterator cursor, iterator end, const char* text) {
    for (; *text != '\0'; ++text, ++cursor) {
        if (cursor == end || *cursor != *text)
            return false;
    }
    return true;
}

// The place of the next three bytes `closing`, which end in '>', or `end`.
iterator find_closing(iterator begin, iterator end, const char (&closing)[4]) {
    for (iterator from = begin; end - from > 0;) {
        const void* found = std::memchr(&*from, closing[2], static_cast<std::size_t>(end - from));
        if (found == nullptr)
            break;
        const iterator place = from + (static_cast<const char*>(found) - &*from);
        if (place - begin >= 2 && place[-2] == closing[0] && place[-1] == closing[1])
            return place - 2;
        from = place + 1;
    }
    return end;
}

const struct {
    const char* text;  // behind the '&'
    char result;
} entities[] = {
    {"amp;", '&'}, {"apos;", '\''}, {"gt;", '>'}, {"lt;", '<'}, {"nbsp;", ' '}, {"quot;", '"'},
};

const auto detected_radix = static_cast<types::radix_t::base>(0);
const auto hexadecimal = static_cast<types::radix_t::base>(16);

// The pieces of the grammar below the level of tags, over a cursor and a line counter that belong
// to the caller. Throws `parse_error`.
class reader {
public:
    reader(iterator& cursor, iterator const& end, unsigned int& line)
        : m_cursor(cursor), m_end(end), m_line(line) {}

    bool at_end() const { return m_cursor == m_end; }

    // The byte that lies `offset` bytes behind the cursor; behind the end of the text all is NUL.
    char byte(std::ptrdiff_t offset = 0) const {
        return m_end - m_cursor > offset ? m_cursor[offset] : '\0';
    }

    void skip_whitespace() {
        for (; m_cursor != m_end && is_white_space(*m_cursor); ++m_cursor) {
            if (*m_cursor == '\n')
                ++m_line;
        }
    }

    void take_whitespace(ustring8& into) {
        const iterator begin = m_cursor;
        skip_whitespace();
        into.assign(begin, m_cursor);
    }

    void take_name(ustring8& into) {
        if (at_end() || !begins_name(*m_cursor))
            refuse_byte();
        const iterator begin = m_cursor;
        while (++m_cursor != m_end && continues_name(*m_cursor)) {
        }
        into.assign(begin, m_cursor);
        --m_cursor;
    }

    void take_value(ustring8& into) {
        const char quote = byte();
        if (quote != '"' && quote != '\'')
            fail(parse_error::missing_quote);
        into.clear();
        iterator piece = ++m_cursor;  // what is not in `into` yet
        for (; m_cursor != m_end && *m_cursor != quote; ++m_cursor) {
            if (*m_cursor == '<')
                refuse_byte();
            if (*m_cursor == '&') {
                into.append(piece, m_cursor);
                into.push_back(take_reference());
                piece = m_cursor + 1;
            }
        }
        into.append(piece, m_cursor);
    }

    // Contract: line feeds do not count here, and a single whitespace byte is text like any other,
    // at the end of the text as well. Only a second one behind it ends the piece.
    void take_character_data(ustring8& into) {
        into.clear();
        iterator piece = m_cursor;
        for (; m_cursor != m_end && *m_cursor != '<'; ++m_cursor) {
            if (*m_cursor == '&') {
                into.append(piece, m_cursor);
                into.push_back(take_reference());
                piece = m_cursor + 1;
            } else if (is_white_space(*m_cursor) && is_white_space(byte(1))) {
                break;
            }
        }
        into.append(piece, m_cursor);
    }

    char take_reference() {
        if (byte() != '&')
            refuse_byte();
        if (byte(1) == '#')
            return byte(2) == 'x' ? take_number(3, std::isxdigit, hexadecimal)
                                  : take_number(2, std::isdigit, detected_radix);

        for (const auto& entity : entities) {
            if (begins_with(m_cursor + 1, m_end, entity.text)) {
                m_cursor += static_cast<std::ptrdiff_t>(std::strlen(entity.text));
                return entity.result;
            }
        }
        // Contract: a word that begins like an entity is a fault of its first byte, the '&'; any
        // other is an unknown entity.
        if (byte(1) != '\0' && std::strchr("aglnq", byte(1)) != nullptr)
            refuse_byte();
        fail(parse_error::unknown_entity);
    }

    [[noreturn]] void refuse_byte() const {
        fail(parse_error::unexpected_character, ustring8(1, byte()));
    }

    [[noreturn]] void fail(parse_error::error_type type, ustring8 const& text = ustring8()) const {
        throw parse_error(type, m_line, text);
    }

private:
    // Contract: the result is one byte. Numbers above 255 give 0xFF, no digits at all give 0, and
    // the detected radix makes an octal number of a decimal form that begins with 0.
    char take_number(std::ptrdiff_t prefix, int (*is_digit)(int), types::radix_t::base radix) {
        m_cursor += prefix;
        const iterator begin = m_cursor;
        while (!at_end() && is_digit(*m_cursor) != 0)
            ++m_cursor;
        if (byte() != ';')
            refuse_byte();
        // With no digits the converter looks at the ';' and finds no number.
        const auto length = static_cast<unsigned long>(m_cursor - begin);
        return static_cast<char>(generic::convert::str_to_uint8(&*begin, length, radix, false));
    }

    iterator& m_cursor;
    iterator const& m_end;
    unsigned int& m_line;
};

}  // namespace

class xml_parser::run {
public:
    run(xml_parser& parser, iterator& cursor, iterator const& end)
        : m_parser(parser), m_cursor(cursor), m_end(end), m_reader(cursor, end, parser.m_line),
          m_root_seen(false), m_calling(false) {}

    // Whether an exception comes out of a delegate rather than out of the grammar.
    bool calling() const { return m_calling; }

    parse_error parse() {
        take_header();
        for (;;) {
            if (m_parser.m_in_tag)
                m_reader.skip_whitespace();
            else
                take_space();
            if (m_reader.at_end())
                break;
            if (act())
                ++m_cursor;
        }
        // Contract: the end of the text reports line 0, with an element open as well as without.
        return m_parser.m_open_elements.empty()
                   ? parse_error(parse_error::no_error, 0, ustring8())
                   : parse_error(parse_error::unexpected_end, 0, ustring8());
    }

private:
    void take_header() {
        // Three bytes of any kind may stand in front, in general a byte order mark.
        if (m_end - m_cursor >= 4 && m_cursor[3] == '<')
            m_cursor += 3;
        if (!begins_with(m_cursor, m_end, "<?xml"))
            m_reader.fail(parse_error::no_header);
        m_cursor += 5;
        // Contract: the last byte of the text is not looked at, as nothing could stand behind it.
        for (; m_end - m_cursor > 1; ++m_cursor) {
            if (*m_cursor == '?' && m_cursor[1] == '>')
                break;
            if (*m_cursor == '<' || *m_cursor == '>')
                m_reader.fail(parse_error::no_header);
        }
        if (m_end - m_cursor <= 2)
            m_reader.fail(parse_error::no_root);
        m_cursor += 2;
        m_reader.skip_whitespace();
        if (m_reader.at_end())
            m_reader.fail(parse_error::no_root);
    }

    void take_space() {
        m_reader.take_whitespace(m_buffer);
        if (!m_buffer.empty())
            call(m_parser.on_space, m_buffer);
    }

    // Acts on the byte at the cursor. Answers whether that byte, or the last one of what it began,
    // is still to be stepped over.
    bool act() {
        const char byte = *m_cursor;
        if (!m_parser.m_in_tag)
            return byte == '<' ? take_tag() : take_character_data();
        switch (byte) {
        case '<':
            m_reader.refuse_byte();
        case '>':
            m_parser.m_in_tag = false;
            break;
        case '/':
            take_empty_element_end();
            break;
        default:
            take_attribute();
        }
        return true;
    }

    bool take_character_data() {
        if (*m_cursor == '>')
            m_reader.refuse_byte();
        m_reader.take_character_data(m_buffer);
        call(m_parser.on_character, m_buffer);
        return false;
    }

    bool take_tag() {
        m_parser.m_in_tag = true;
        if (m_reader.byte(1) == '/')
            take_end_tag();
        else if (begins_with(m_cursor, m_end, "<!--"))
            take_section(4, "-->", m_parser.on_comment);
        else if (begins_with(m_cursor, m_end, "<![CDATA["))
            take_section(9, "]]>", m_parser.on_character);
        else
            take_start_tag();
        return true;
    }

    void take_start_tag() {
        // Contract: a second root is refused before its name is looked at.
        if (m_parser.m_open_elements.empty() && m_root_seen)
            m_reader.fail(parse_error::data_after_root);
        ++m_cursor;
        m_reader.take_name(m_name);
        m_parser.m_open_elements.push(m_name);
        m_parser.m_attributes.clear();
        call(m_parser.on_element_start, m_name);
        m_root_seen = true;
    }

    // Contract: the element is closed before the end of the text is noticed. An end tag with no
    // element open counts as one that fits. The attribute set stays as the last start tag left it,
    // and since the tag is open until its '>', an end tag may have attributes.
    void take_end_tag() {
        m_cursor += 2;
        m_reader.take_name(m_name);
        auto& open_elements = m_parser.m_open_elements;
        if (!open_elements.empty()) {
            if (open_elements.top() != m_name)
                m_reader.fail(parse_error::mismatched_end, m_name);
            open_elements.pop();
        }
        if (m_end - m_cursor == 1)
            m_reader.fail(parse_error::unexpected_end);
        call(m_parser.on_element_end, m_name);
    }

    void take_empty_element_end() {
        ++m_cursor;
        if (m_reader.byte() != '>')
            m_reader.refuse_byte();
        auto& open_elements = m_parser.m_open_elements;
        if (open_elements.empty())
            m_reader.fail(parse_error::mismatched_end);
        // The handler may parse with this parser and close the element itself, so it gets a copy of
        // the name, and there may be nothing left to pop.
        m_name = open_elements.top();
        call(m_parser.on_element_end, m_name);
        m_parser.m_in_tag = false;
        if (!open_elements.empty())
            open_elements.pop();
        m_parser.m_attributes.clear();
    }

    // Contract: the whitespace in front of a comment or CDATA section is still in the buffer and
    // begins its text, though `on_space` has had it too.
    void take_section(std::ptrdiff_t opening, const char (&closing)[4],
                      functor::delegate_t<void(ustring8 const&)>& delegate) {
        m_cursor += opening;
        const iterator found = find_closing(m_cursor, m_end, closing);
        if (found == m_end)
            m_reader.fail(parse_error::unexpected_end);
        m_buffer.append(m_cursor, found);
        m_cursor = found + 2;
        m_parser.m_in_tag = false;
        call(delegate, m_buffer);
    }

    void take_attribute() {
        m_reader.take_name(m_name);
        if (!m_parser.m_attributes.insert(m_name).second)
            m_reader.fail(parse_error::attribute_redefined, m_name);
        ++m_cursor;
        m_reader.skip_whitespace();
        if (m_reader.byte() != '=')
            m_reader.fail(parse_error::missing_equals, m_name);
        ++m_cursor;
        m_reader.skip_whitespace();
        m_reader.take_value(m_value);
        // Contract: a value that the end of the text cuts off is reported before it is a fault.
        m_calling = true;
        m_parser.on_attribute.invoke(m_name, m_value);
        m_calling = false;
        if (m_reader.at_end())
            m_reader.fail(parse_error::missing_quote, m_name);
    }

    void call(functor::delegate_t<void(ustring8 const&)>& delegate, ustring8 const& text) {
        m_calling = true;
        delegate.invoke(text);
        m_calling = false;
    }

    xml_parser& m_parser;
    iterator& m_cursor;
    iterator const& m_end;
    reader m_reader;
    ustring8 m_buffer;
    ustring8 m_name;
    ustring8 m_value;
    bool m_root_seen;
    bool m_calling;
};

xml_parser::parse_error::parse_error(error_type kind, unsigned int line_counter,
                                     ustring8 const& subject)
    : type(kind), line(line_counter), text(subject) {}

xml_parser::parse_error::parse_error(parse_error const& other)
    : type(other.type), line(other.line), text(other.text) {}

xml_parser::parse_error::~parse_error() TOVA_NOTHROW {}

xml_parser::xml_parser() : m_line(0), m_in_tag(false) {}

xml_parser::~xml_parser() TOVA_NOTHROW {}

parse_error xml_parser::parse(ustring8 const& text) {
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
    } catch (parse_error const& fault) {
        if (current.calling())
            throw;
        return fault;
    }
}

ustring8 xml_parser::parse_whitespace(iterator& cursor, iterator& end) {
    ustring8 whitespace;
    reader(cursor, end, m_line).take_whitespace(whitespace);
    return whitespace;
}

bool xml_parser::is_white_space(iterator const& cursor) const {
    return strings::detail::is_white_space(*cursor);
}

ustring8 xml_parser::parse_name(iterator& cursor, iterator& end) {
    ustring8 name;
    reader(cursor, end, m_line).take_name(name);
    return name;
}

ustring8 xml_parser::parse_character(iterator& cursor, iterator& end) {
    return ustring8(1, reader(cursor, end, m_line).take_reference());
}

ustring8 xml_parser::parse_attrib_value(iterator& cursor, iterator& end) {
    ustring8 value;
    reader(cursor, end, m_line).take_value(value);
    return value;
}

}  // namespace parser
}  // namespace TOVA_2_18
