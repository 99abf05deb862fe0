// The scanner of the stream parser.
//
// This file has three layers, from the bottom up:
//
//     byte loops      end_of_..., find...: they return positions and change nothing else
//     constructs      take_..., skip_...: they move the cursor, count lines and build strings
//     search          find_start_tag, for `recover`
//
// State: cursor, committed position, end of data, line counter and committed line counter, all of
// them fields of the parser object. A construct that reaches the end of the data returns an empty
// string or false and leaves the cursor there; `recover` continues from the cursor, while parsing
// resumes at the committed position. A construct that finds invalid input throws an `error_type`
// with the cursor on the invalid byte.
//
// `xml_parser` has a scanner of its own, document_scanner.cpp, for a document that is complete in
// memory. The two look alike but share no code, because they differ in nearly every limit; a line
// above each loop says what the other scanner does instead. Rules that are truly common, byte
// classes and numbers, are in lower layers (strings/ascii.hpp, generic/convert).
#include "parser/stream_scanner.hpp"

#include <tova/generic/convert/str_to_x.hpp>
#include <tova/types/radix.hpp>

#include "parser/entity.hpp"
#include "parser/equal_bytes.hpp"
#include "parser/usual_element.hpp"
#include "strings/ascii.hpp"

#include <unistd.h>

#include <algorithm>
#include <cctype>
#include <cerrno>
#include <cstring>

namespace TOVA_2_18 {
namespace parser {
namespace detail {

using strings::ustring8;
using strings::detail::is_ascii_digit;
using strings::detail::is_ascii_hexadecimal_digit;
using strings::detail::is_ascii_letter;
using strings::detail::is_white_space;
using types::radix_t;

namespace {

// With fewer bytes the scanner waits for more data: the length of the shortest entity plus one
// byte, and the length of the end of a comment plus one byte.
const std::size_t least_entity_size = 5;
const std::size_t least_comment_size = 4;

// With so many bytes every entity is complete, and so is what each of them waits for.
const std::size_t enough_entity_bytes = 12;

// Contract: every byte with the high bit set is a name byte, so UTF-8 passes undecoded, while '-',
// '.' and ':' are not. The C library decides only about the remaining ASCII bytes, which this is
// for. In `xml_parser` the locale alone decides about bytes with the high bit set.
bool is_other_name_byte(char byte) {
    return std::isalnum(byte) != 0;
}

// Most values and texts are a single piece, for which exactly enough memory is allocated.
void add(ustring8& to, const char* bytes, std::size_t size) {
    if (to.empty())
        to.assign(bytes, size);
    else
        to.append(bytes, size);
}

}  // namespace

// --- Byte loops ---------------------------------------------------------------------------------

// The same four bytes as in `xml_parser`, which also passes the whitespace to its caller.
std::size_t stream_scanner::end_of_whitespace(std::size_t begin, unsigned int& lines) {
    const char* const bytes = m_buffer.data();
    return static_cast<std::size_t>(m_blocks.end_of_white_space(bytes + begin, lines) - bytes);
}

// `xml_parser` has a stricter rule for the first byte of a name; here all bytes follow the same
// rule. The usual bytes other than letters, digits and underscores need no lookup.
std::size_t stream_scanner::end_of_name(std::size_t begin) {
    const char* const bytes = m_buffer.data();
    std::size_t position = begin;
    while (position < m_end) {
        position = static_cast<std::size_t>(m_blocks.end_of_wide_name(bytes + position) - bytes);
        if (position == m_end)
            break;
        switch (bytes[position]) {
        case '>':
        case '=':
        case ' ':
        case '/':
        case '\n':
            return position;
        default:
            if (!is_other_name_byte(bytes[position]))
                return position;
            ++position;
        }
    }
    return position;
}

// The same digits as in `xml_parser`, where a document that ends after them is an error.
std::size_t stream_scanner::end_of_digits(std::size_t begin, bool hexadecimal) const {
    const auto is_digit = hexadecimal ? is_ascii_hexadecimal_digit : is_ascii_digit;
    const char* const bytes = m_buffer.data();
    std::size_t position = begin;
    while (position < m_end && is_digit(bytes[position]))
        ++position;
    return position;
}

// Stops at the same three bytes as `xml_parser`: the quote, the '&' and the '<'.
std::size_t stream_scanner::end_of_plain_value(std::size_t begin, char quote) {
    const char* const bytes = m_buffer.data();
    return static_cast<std::size_t>(m_blocks.end_of_value(bytes + begin, quote) - bytes);
}

// Stops at '&' and '<'; `xml_parser` also stops at whitespace.
std::size_t stream_scanner::end_of_plain_text(std::size_t begin) {
    const char* const bytes = m_buffer.data();
    return static_cast<std::size_t>(m_blocks.end_of_content(bytes + begin) - bytes);
}

// The first byte that is a '?' or precedes a '>'. `xml_parser` requires both, side by side, and
// rejects a '<' or '>' before them.
std::size_t stream_scanner::end_of_declaration(std::size_t begin) const {
    const char* const bytes = m_buffer.data();
    std::size_t position = begin;
    while (position < m_end && bytes[position] != '?' &&
           (position + 1 == m_end || bytes[position + 1] != '>'))
        ++position;
    return position;
}

// The first '-' before `end` that is followed by another '-', which may be at `end`. `xml_parser`
// searches for the whole "-->", allows "--" before it, and counts no lines on the way.
std::size_t stream_scanner::find_two_dashes(std::size_t begin, std::size_t end,
                                            unsigned int& lines) const {
    const char* const bytes = m_buffer.data();
    std::size_t position = begin;
    for (; position < end && (bytes[position] != '-' || bytes[position + 1] != '-'); ++position)
        lines += bytes[position] == '\n';
    return position;
}

std::size_t stream_scanner::find(char wanted, std::size_t begin, std::size_t end) const {
    const char* const bytes = m_buffer.data();
    const void* const found = std::memchr(bytes + begin, wanted, end - begin);
    return found == nullptr ? end
                            : static_cast<std::size_t>(static_cast<const char*>(found) - bytes);
}

// --- The buffer ---------------------------------------------------------------------------------

bool stream_scanner::begins_with(const char* literal) const {
    const std::size_t size = std::strlen(literal);
    return remaining() >= size && std::memcmp(m_buffer.data() + m_cursor, literal, size) == 0;
}

// As long as the data fits, nothing is dropped. A construct that fills the whole room from its
// start cannot be completed and stays where it is.
//
// The room slides over a buffer of twice its size, so that a load of a few bytes seldom moves all
// others. A file that fits into the room needs no more than that.
void stream_scanner::make_room(std::size_t needed) {
    if (m_committed == m_first || needed <= m_last - m_end)
        return;
    const std::size_t room = m_last - m_first;
    if (m_buffer.size() == room)
        m_buffer.resize(2 * room);
    m_first = std::min(m_committed, m_end);
    m_last = m_first + room;
    m_cursor = m_committed;
    if (m_last <= m_buffer.size())
        return;
    std::memmove(&m_buffer[0], &m_buffer[m_first], m_end - m_first);
    for (std::size_t* const position : {&m_cursor, &m_committed, &m_end, &m_last, &m_first})
        *position -= m_first;
}

std::size_t stream_scanner::fill(int file, unsigned long position, std::size_t count) {
    const std::size_t wanted = std::min(m_last - m_end, count);
    std::size_t added = 0;
    while (added < wanted) {
        const ssize_t read = ::pread(file, &m_buffer[m_end + added], wanted - added,
                                     static_cast<off_t>(position + added));
        if (read == 0 || (read < 0 && errno != EINTR))
            break;
        if (read > 0)
            added += static_cast<std::size_t>(read);
    }
    m_end += added;
    m_blocks.set_range(m_buffer.data(), m_buffer.data() + m_end);
    return added;
}

// --- Whitespace and names -----------------------------------------------------------------------

bool stream_scanner::is_at_whitespace() const {
    return !at_end() && is_white_space(byte());
}

// Contract: the contents of the declaration are ignored. The first `?` or `>` ends it; after a `?`
// one more byte is skipped, whatever it is and even if it has yet to arrive. A `>` right after
// `<?xml` is not seen, because only the byte after the current one is compared with `>`.
void stream_scanner::skip_declaration() {
    m_cursor = end_of_declaration(m_cursor + std::strlen("<?xml"));
    if (!at_end())
        m_cursor += 2;
}

// Contract: the cursor always moves back one byte, since callers advance over the last byte that
// they took. If there is no name, the cursor is then one byte before the byte that is not a name
// byte, and whitespace there is skipped and its line feeds are counted a second time.
piece stream_scanner::take_name() {
    skip_whitespace();
    const std::size_t begin = m_cursor;
    m_cursor = end_of_name(begin);
    // A name that reaches the end of the data may be incomplete. In `xml_parser` it is complete.
    if (at_end())
        return piece();
    const piece name(m_buffer.data() + begin, m_cursor - begin);
    if (m_cursor != m_first)
        --m_cursor;
    if (name.empty())
        skip_whitespace();
    return name;
}

// No reference and no whitespace, so there is nothing to put together, to commit or to count.
bool stream_scanner::take_usual_attribute(piece& name, piece& value) {
    if (at_end())
        return false;
    const char* const begin = m_buffer.data() + m_cursor;
    const char* const end = m_buffer.data() + m_end;
    const char* const equals = m_blocks.end_of_wide_name(begin);
    if (equals == begin || end - equals < 2 || equals[0] != '=' ||
        (equals[1] != '"' && equals[1] != '\''))
        return false;
    const char* const last = m_blocks.end_of_value(equals + 2, equals[1]);
    if (last == end || *last != equals[1])
        return false;
    name = piece(begin, equals);
    value = piece(equals + 2, last);
    m_cursor = static_cast<std::size_t>(last - m_buffer.data());
    return true;
}

// --- Whole elements -----------------------------------------------------------------------------

// The steps of the state machine from a start tag to the end of the element, for the usual
// spellings. Whitespace is skipped between them, as the machine does.
bool stream_scanner::find_usual_element(usual_element& found) {
    const char* const end = m_buffer.data() + m_end;
    const char* at = m_buffer.data() + m_cursor + 1;
    found.name = piece(at, m_blocks.end_of_wide_name(at));
    found.attribute_count = 0;
    found.lines = 0;
    if (found.name.empty())
        return false;
    at = end_of_usual_attributes(at + found.name.size, found);
    if (end - at < 2)
        return false;
    if (*at == '/') {
        found.is_empty_tag = true;
        found.reference_count = 0;
        found.text = piece(at, at);
        found.last = at + 1;
        return at[1] == '>';
    }
    at = after_usual_space(at + 1, found.lines);
    if (at == end || *at == '>')
        return false;

    const char* const stop = end_of_usual_text(at, found);
    const std::size_t size = found.name.size;
    if (static_cast<std::size_t>(end - stop) < size + 3 || stop[1] != '/' ||
        stop[2 + size] != '>' || !have_equal_bytes(stop + 2, found.name.data, size))
        return false;
    found.is_empty_tag = false;
    found.text = piece(at, stop);
    found.last = stop + 2 + size;
    return true;
}

// The '>' or '/' after the attributes, or else the end of the data.
inline const char* stream_scanner::end_of_usual_attributes(const char* at, usual_element& found) {
    const char* const end = m_buffer.data() + m_end;
    for (;;) {
        at = after_usual_space(at, found.lines);
        if (at == end || *at == '>' || *at == '/')
            return at;
        const char* const equals = m_blocks.end_of_wide_name(at);
        if (equals == at || end - equals < 2 || equals[0] != '=' ||
            (equals[1] != '"' && equals[1] != '\''))
            return end;
        const char* const last = m_blocks.end_of_value(equals + 2, equals[1]);
        if (last == end || *last != equals[1] ||
            found.attribute_count == usual_element::most_attributes)
            return end;
        const auto size = static_cast<std::size_t>(equals - at);
        usual_element::attribute* const added = found.attributes + found.attribute_count;
        for (const usual_element::attribute* one = found.attributes; one != added; ++one) {
            if (static_cast<std::size_t>(one->equals - one->name) == size &&
                have_equal_bytes(one->name, at, size))
                return end;
        }
        *added = {at, equals, last};
        ++found.attribute_count;
        at = last + 1;
    }
}

// Attributes usually have one space between them.
inline const char* stream_scanner::after_usual_space(const char* at, unsigned int& lines) {
    const char* const end = m_buffer.data() + m_end;
    if (at == end || !is_white_space(*at))
        return at;
    if (*at == ' ' && end - at > 1 && !is_white_space(at[1]))
        return at + 1;
    return m_blocks.end_of_white_space(at, lines);
}

// The `<` after text with few references, all of them entities, or else the end of the data.
const char* stream_scanner::end_of_usual_text(const char* begin, usual_element& found) {
    const char* const end = m_buffer.data() + m_end;
    const char* stop = m_blocks.end_of_content(begin);
    found.reference_count = 0;
    while (stop != end && *stop == '&') {
        if (static_cast<std::size_t>(end - stop) < enough_entity_bytes ||
            found.reference_count == usual_element::most_references)
            return end;
        usual_element::reference& added = found.references[found.reference_count];
        added.begin = stop;
        added.size = size_of_entity(stop, added.byte);
        if (added.size == 0)
            return end;
        ++found.reference_count;
        stop = m_blocks.end_of_content(stop + added.size);
    }
    return stop;
}

// --- References ---------------------------------------------------------------------------------

// An entity with so much data after it that nothing has to wait.
bool stream_scanner::take_usual_entity(char& result) {
    if (remaining() < enough_entity_bytes)
        return false;
    const std::size_t size = size_of_entity(m_buffer.data() + m_cursor, result);
    if (size == 0)
        return false;
    m_cursor += size - 1;
    commit();
    return true;
}

// Contract: a reference commits where it ends. If the data ends later in the same text or value,
// parsing resumes at the `;`, and what precedes it is lost. `xml_parser` has all the data and never
// waits; if a byte is missing there, the reference is invalid.
ustring8 stream_scanner::take_reference() {
    if (at_end() || byte() != '&')
        throw xml_stream_parser::syntax_error;
    if (remaining() < least_entity_size)
        return ustring8();

    ++m_cursor;
    ustring8 result;
    switch (byte()) {
    case 'l':
        result = take_entity("lt;", '<', 0);
        break;
    case 'g':
        result = take_entity("gt;", '>', 0);
        break;
    case 'a':
        result = take_entity_in_a();
        break;
    case 'q':
        result = take_entity("quot;", '"', 6);
        break;
    case 'n':
        result = take_entity("nbsp;", ' ', 6);
        break;
    case '#':
        result = take_character_reference();
        break;
    default:
        throw xml_stream_parser::syntax_error;
    }
    if (!result.empty())
        commit();
    return result;
}

// Takes an entity whose letters, starting at the cursor, must be these, and stops on the last of
// them. With fewer than `needed` bytes left, more data is needed.
ustring8 stream_scanner::take_entity(const char* letters, char result, std::size_t needed) {
    if (remaining() < needed)
        return ustring8();
    for (; *letters != '\0'; ++letters, ++m_cursor) {
        if (at_end() || byte() != *letters)
            throw xml_stream_parser::syntax_error;
    }
    --m_cursor;
    return ustring8(1, result);
}

// `&amp;` or `&apos;`, with the `a` at the cursor. Contract: five bytes are needed to distinguish
// the two, and five more from the second letter on to reject a word that is neither.
ustring8 stream_scanner::take_entity_in_a() {
    if (remaining() < 5)
        return ustring8();
    ++m_cursor;
    if (begins_with("mp;"))
        return take_entity("mp;", '&', 0);
    if (begins_with("pos;"))
        return take_entity("pos;", '\'', 0);
    if (remaining() < 5)
        return ustring8();
    throw xml_stream_parser::syntax_error;
}

// `&#65;` or `&#x41;`, with the `#` at the cursor.
//
// Contract: a reference becomes one byte and not a UTF-8 sequence. Numbers above 255 become the
// byte 255, and a decimal number with a leading 0 is read as octal. Without digits the converter
// sees the `;` and finds no number, so `&#;` and `&#x;` become a NUL byte.
ustring8 stream_scanner::take_character_reference() {
    ++m_cursor;
    const bool is_hexadecimal = byte() == 'x';
    m_cursor += is_hexadecimal;
    const std::size_t begin = m_cursor;
    m_cursor = end_of_digits(begin, is_hexadecimal);
    if (at_end())
        return ustring8();
    if (byte() != ';')
        throw xml_stream_parser::syntax_error;
    const unsigned char value = generic::convert::str_to_uint8(
        m_buffer.data() + begin, m_cursor - begin,
        is_hexadecimal ? radix_t::hexadecimal : radix_t::detect, false);
    return ustring8(1, static_cast<char>(value));
}

// --- Values, text and comments ------------------------------------------------------------------

// If the end of the data cuts a value off, `xml_parser` still reports that piece before it fails.
bool stream_scanner::take_value(ustring8& value) {
    skip_whitespace();
    if (at_end())
        return false;
    const char quote = byte();
    if (quote != '\'' && quote != '"')
        throw xml_stream_parser::missing_quote;

    ++m_cursor;
    while (!at_end()) {
        const std::size_t begin = m_cursor;
        m_cursor = end_of_plain_value(begin, quote);
        add(value, m_buffer.data() + begin, m_cursor - begin);
        if (at_end())
            break;
        if (byte() == quote)
            return true;
        if (byte() == '<')
            throw xml_stream_parser::syntax_error;
        // Contract: a reference that needs more data drops the byte that it stopped on, and the
        // value continues after it. At the end of the data there is no such byte yet.
        char usual;
        if (take_usual_entity(usual))
            value += usual;
        else
            value += take_reference();
        if (!at_end())
            ++m_cursor;
    }
    return false;
}

// `xml_parser` also ends a piece of text at two whitespace bytes and reports each piece; here a run
// continues up to the next tag, and a reference is committed even if that tag has yet to arrive.
bool stream_scanner::take_text(ustring8& text) {
    bool has_room = false;
    while (!at_end()) {
        const std::size_t begin = m_cursor;
        m_cursor = end_of_plain_text(begin);
        if (at_end())
            break;
        if (byte() == '<') {
            add(text, m_buffer.data() + begin, m_cursor - begin);
            return true;
        }
        // The text is no longer than what is left up to the tag. Without a tag it is dropped.
        if (!has_room) {
            const std::size_t tag = find('<', m_cursor, m_end);
            text.reserve(tag == m_end ? 0 : tag - begin);
            has_room = true;
        }
        text.append(m_buffer.data() + begin, m_cursor - begin);
        char usual;
        if (take_usual_entity(usual)) {
            text += usual;
        } else {
            const ustring8 result = take_reference();
            if (result.empty())
                return false;
            text += result;
        }
        ++m_cursor;
    }
    return false;
}

// Contract: two dashes without a `>` after them are an error, and three bytes are held back until
// the next one arrives. `xml_parser` reports the comment; here it is skipped.
bool stream_scanner::skip_comment() {
    if (remaining() >= least_comment_size) {
        const std::size_t limit = m_end - (least_comment_size - 1);
        m_cursor = find_two_dashes(m_cursor, limit, m_line);
    }
    const bool is_complete = remaining() >= least_comment_size;
    if (is_complete) {
        if (byte(2) != '>')
            throw xml_stream_parser::syntax_error;
        m_cursor += std::strlen("-->");
    }
    commit();
    return is_complete;
}

// --- Search -------------------------------------------------------------------------------------

// `xml_parser` stops at the first error and has no such search.
//
// Contract: line feeds on the way are not counted. Tags are found in comments and values, too. A
// name cut off by the end of the data is skipped; so is a byte after whitespace that is not a name
// byte, even if it is a `<`.
bool stream_scanner::find_start_tag(const std::list<ustring8>& names) {
    const unsigned int line = m_line;
    bool is_found = false;
    while (!is_found && !at_end()) {
        m_cursor = find('<', m_cursor, m_end);
        if (at_end())
            break;
        m_committed = m_cursor;
        // What this `<` begins is known only when more data arrives.
        if (remaining() == 1)
            break;
        ++m_cursor;
        if (byte() == '/' || byte() == '!')
            continue;
        const ustring8 name = take_name().string();
        is_found = !name.empty() && std::find(names.begin(), names.end(), name) != names.end();
        if (!at_end())
            ++m_cursor;
    }
    m_line = line;
    if (is_found)
        m_cursor = m_committed;
    return is_found;
}

}  // namespace detail
}  // namespace parser
}  // namespace TOVA_2_18
