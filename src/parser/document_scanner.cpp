#include "parser/document_scanner.hpp"

#include <tova/generic/convert/str_to_x.hpp>

#include "strings/ascii.hpp"

#include <cctype>
#include <cstring>

// Two layers. The functions `end_of_...` loop over bytes: each returns the first byte that ends a
// run. None of them raises, and the only thing they carry from byte to byte is the number of line
// feeds. The members of `document_scanner` combine runs into names and values, and raise the
// errors.
//
// `xml_stream_parser` has its own loops for the same constructs, since it waits for more data where
// this scanner reaches the end of the document. The comment of each loop below says what else
// differs there.

namespace TOVA_2_18 {
namespace parser {
namespace detail {

namespace {

using strings::ustring8;
using strings::detail::is_ascii_digit;
using strings::detail::is_ascii_hexadecimal_digit;
using strings::detail::is_ascii_letter;
using strings::detail::is_white_space;
using iterator = document_scanner::iterator;

// Contract: names follow the C library's character classes, so in a locale with an 8-bit character
// set that set's letters may occur in names. ASCII letters and digits need no call.
bool begins_name(char byte) {
    return is_ascii_letter(byte) || std::isalpha(byte) != 0;
}

bool continues_name(char byte) {
    return is_ascii_letter(byte) || is_ascii_digit(byte) || byte == '_' || std::isalnum(byte) != 0;
}

// The stream parser never reports whitespace: between constructs it commits after each byte of it.
iterator end_of_whitespace(iterator from, iterator end, unsigned int& line_feeds) {
    for (; from != end && is_white_space(*from); ++from) {
        if (*from == '\n')
            ++line_feeds;
    }
    return from;
}

// The stream parser ends the declaration at the first '?' or '>', whatever follows. Contract: the
// last byte of the document is not examined, since nothing could follow it.
iterator end_of_declaration(iterator from, iterator end) {
    for (; end - from > 1; ++from) {
        if (*from == '<' || *from == '>' || (*from == '?' && from[1] == '>'))
            break;
    }
    return from;
}

// `from` is the first byte of the name. The stream parser lets a name begin with any name byte,
// accepts all bytes from 0x80 up, and waits if the data ends within the name.
iterator end_of_name(iterator from, iterator end) {
    do {
        ++from;
    } while (from != end && continues_name(*from));
    return from;
}

// The stream parser stops at the same bytes, but waits if the data ends before the closing quote.
iterator end_of_plain_value(iterator from, iterator end, char quote) {
    while (from != end && *from != quote && *from != '<' && *from != '&')
        ++from;
    return from;
}

// The stream parser accepts the same digits, but waits if the data ends before the byte after them.
iterator end_of_digits(iterator from, iterator end, bool (*is_digit)(char)) {
    while (from != end && is_digit(*from))
        ++from;
    return from;
}

const struct {
    const char* text;  // the bytes after the '&'
    char result;
} entities[] = {
    {"amp;", '&'}, {"apos;", '\''}, {"gt;", '>'}, {"lt;", '<'}, {"nbsp;", ' '}, {"quot;", '"'},
};

}  // namespace

bool document_scanner::begins_with(std::ptrdiff_t offset, const char* literal) const {
    const auto size = static_cast<std::ptrdiff_t>(std::strlen(literal));
    return remaining() - offset >= size &&
           std::memcmp(&*m_cursor + offset, literal, static_cast<std::size_t>(size)) == 0;
}

void document_scanner::take_to(iterator place, ustring8& into) {
    into.append(m_cursor, place);
    m_cursor = place;
}

void document_scanner::skip_whitespace() {
    m_cursor = end_of_whitespace(m_cursor, m_end, m_line);
}

void document_scanner::take_whitespace(ustring8& into) {
    const iterator begin = m_cursor;
    skip_whitespace();
    into.assign(begin, m_cursor);
}

void document_scanner::skip_declaration() {
    m_cursor = end_of_declaration(m_cursor, m_end);
}

void document_scanner::take_name(ustring8& into) {
    if (at_end() || !begins_name(*m_cursor))
        refuse_byte();
    const iterator end = end_of_name(m_cursor, m_end);
    into.assign(m_cursor, end);
    m_cursor = end - 1;
}

void document_scanner::take_value(ustring8& into) {
    const char quote = byte();
    if (quote != '"' && quote != '\'')
        fail(parse_error::missing_quote);
    into.clear();
    for (++m_cursor;; ++m_cursor) {
        take_to(end_of_plain_value(m_cursor, m_end, quote), into);
        if (at_end() || *m_cursor == quote)
            return;
        if (*m_cursor == '<')
            refuse_byte();
        into.push_back(take_reference());
    }
}

// The stream parser waits for five bytes, counted from the '&', before it examines them, and every
// reference that is neither one of the six entities nor a number is the same error there.
char document_scanner::take_reference() {
    if (byte() != '&')
        refuse_byte();
    if (byte(1) == '#') {
        const bool is_hexadecimal = byte(2) == 'x';
        m_cursor += is_hexadecimal ? 3 : 2;
        return take_number(is_hexadecimal ? types::radix_t::hexadecimal : types::radix_t::detect);
    }
    for (const auto& entity : entities) {
        if (begins_with(1, entity.text)) {
            m_cursor += static_cast<std::ptrdiff_t>(std::strlen(entity.text));
            return entity.result;
        }
    }
    // Contract: a word that begins like an entity is an error at its first byte, the '&'. Any other
    // word is an unknown entity.
    if (byte(1) != '\0' && std::strchr("aglnq", byte(1)) != nullptr)
        refuse_byte();
    fail(parse_error::unknown_entity);
}

// Contract: the result is one byte. A number above 255 becomes 0xFF, a missing number becomes 0,
// and because the radix is detected, a decimal form that begins with 0 is read as octal.
char document_scanner::take_number(types::radix_t::base radix) {
    const iterator digits = m_cursor;
    m_cursor = end_of_digits(m_cursor, m_end,
                             radix == types::radix_t::hexadecimal ? is_ascii_hexadecimal_digit
                                                                  : is_ascii_digit);
    if (byte() != ';')
        refuse_byte();
    // Without digits the converter sees the ';' and finds no number.
    const auto length = static_cast<unsigned long>(m_cursor - digits);
    return static_cast<char>(generic::convert::str_to_uint8(&*digits, length, radix, false));
}

void document_scanner::refuse_byte() const {
    fail(parse_error::unexpected_character, ustring8(1, byte()));
}

void document_scanner::fail(parse_error::error_type kind, const ustring8& subject) const {
    throw parse_error(kind, m_line, subject);
}

}  // namespace detail
}  // namespace parser
}  // namespace TOVA_2_18
