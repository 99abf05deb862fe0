/// @file
/// One pass over one document for `xml_parser`: which construct begins at the cursor, which event
/// it reports, and how it changes the state.
///
/// The pass is a template over its context, which holds the state and receives the events. So the
/// same grammar serves the delegates of `xml_parser` and token lists, without a call for each
/// event:
///
///     document_walk<list_of_tokens> walk(context, begin, end);
///     walk.run();  // raises `xml_parser::parse_error`
///
/// The state between two constructs. All of it except the last two is in the context:
///
///     in_tag            after `<name` or `</name`, until the `>`
///     open elements     names, the innermost on top
///     attribute names   those since the last start tag
///     line              line feeds in the whitespace consumed so far
///     m_root_seen       an element has begun in this run
///     m_space           the last whitespace; the text of comments and sections begins with it
///
/// Each round of the main loop consumes whitespace, which is reported outside of tags, and then one
/// construct, chosen by the byte at the cursor:
///
///     byte     outside of a tag                               inside a tag
///     -----    --------------------------------------------   ----------------------------------
///     '<'      in tag; `</` end tag, `<!--` comment,          error 5
///              `<![CDATA[` section, otherwise start tag
///     '>'      error 5                                        not in tag
///     '/'      text                                           `/>` ends the innermost element,
///                                                             not in tag; otherwise error 5
///     other    text                                           attribute
///     (end)    success, or error 1 if an element is open      the same
///
/// A start tag pushes its name; an end tag and `/>` pop one. A comment or section is consumed as a
/// whole, so it leaves the tag that its `<` opened.
///
/// A handler may parse with the same parser, or move the caller's cursor. So the walk passes its
/// position to the context before each event, and reads the position and the state back afterwards.
///
/// A walk belongs to one thread.
#pragma once

#include <tova/parser/xml_parser.hpp>
#include <tova/strings/ustring.hpp>

#include "parser/byte_blocks.hpp"
#include "parser/document_scanner.hpp"
#include "parser/equal_bytes.hpp"
#include "parser/piece.hpp"
#include "strings/ascii.hpp"

#include <cctype>
#include <cstddef>
#include <cstdint>
#include <cstring>

// The loop over constructs is one function, so that the cursor stays in a register.
#define TOVA_INLINE __attribute__((always_inline)) inline

namespace TOVA_2_18 {
namespace parser {
namespace detail {

/// The context has the operations below. Events receive the position of the cursor and return where
/// to continue. A text with references, or with whitespace before it, is not a part of the
/// document; it is in a string of the walk during the event.
///
///     bool& in_tag();
///     unsigned int& line();
///     bool has_open_element();
///     piece innermost();                          // there is one
///     void open(piece name);
///     void close();                               // there is one
///     void forget_attributes();
///     bool add_attribute(piece name);             // false if there is one of that name
///     void move_to(const char* cursor);           // where the run ends, also with an error
///     const char* end();                          // of the document, after an event
///     const char* take_usual(const char* cursor); // whole constructs that it handles itself
///     const char* element_start(piece name, const char* cursor);
///     const char* element_end(piece name, const char* cursor);
///     const char* empty_element_end(const char* cursor);  // of the innermost element
///     const char* space(piece text, const char* cursor);
///     void compose(ustring8& into, piece before, char byte);  // appends both
///
/// and these with a piece or a string:
///
///     const char* attribute(piece name, ... value, const char* cursor);
///     const char* character(... text, const char* cursor);
///     const char* comment(... text, const char* cursor);
template <typename Context>
class document_walk {
public:
    using iterator = xml_parser::iterator;
    using parse_error = xml_parser::parse_error;

    document_walk(Context& context, iterator begin, iterator end)
        : m_context(context), m_begin(begin.base()), m_end(end.base()), m_blocks(m_begin, m_end),
          m_space(m_begin, m_begin), m_root_seen(false) {}

    /// Returns kind 0 or, with an element open, kind 1. Raises other errors.
    parse_error run() {
        const char* cursor = take_header();
        for (;;) {
            cursor = m_context.take_usual(cursor);
            if (m_context.in_tag()) {
                // Whitespace inside a tag is not reported.
                cursor = end_of_white_space(cursor);
                if (cursor == m_end)
                    break;
                cursor = take_within_tag(cursor);
                continue;
            }
            if (cursor == m_end)
                break;
            // Most markup has no whitespace before it.
            m_space.size = 0;
            if (*cursor != '<') {
                const char* const end = end_of_white_space(cursor);
                if (end != cursor) {
                    m_space = piece(cursor, end);
                    cursor = after(m_context.space(m_space, end));
                    if (cursor == m_end)
                        break;
                    // The handler may have entered a tag by parsing.
                    if (m_context.in_tag()) {
                        cursor = take_within_tag(cursor);
                        continue;
                    }
                }
                if (*cursor != '<') {
                    cursor = take_text(cursor);
                    continue;
                }
            }
            cursor = take_markup(cursor);
        }
        m_context.move_to(cursor);
        // Contract: the end of the document reports line 0, whether an element is open or not.
        return parse_error(m_context.has_open_element() ? parse_error::unexpected_end
                                                        : parse_error::no_error,
                           0, strings::ustring8());
    }

private:
    // The stream parser also skips whitespace before the declaration, and requires 50 bytes in
    // total.
    const char* take_header() {
        iterator cursor(m_begin);
        const iterator end(m_end);
        document_scanner scanner(cursor, end, m_context.line());
        // Three bytes of any kind may precede the declaration, usually a byte order mark.
        if (scanner.byte(3) == '<')
            scanner.step(3);
        if (!scanner.begins_with("<?xml"))
            fail(parse_error::no_header, cursor.base());
        scanner.step(5);
        scanner.skip_declaration();
        if (scanner.remaining() > 1 && scanner.byte() != '?')
            fail(parse_error::no_header, cursor.base());
        if (scanner.remaining() <= 2)
            fail(parse_error::no_root, cursor.base());
        scanner.step(2);
        scanner.skip_whitespace();
        if (scanner.at_end())
            fail(parse_error::no_root, cursor.base());
        return cursor.base();
    }

    TOVA_INLINE const char* take_within_tag(const char* cursor) {
        switch (*cursor) {
        case '<':
            refuse_byte(cursor);
        case '>':
            m_context.in_tag() = false;
            return cursor + 1;
        case '/':
            return take_empty_element_end(cursor);
        default:
            return take_attribute(cursor);
        }
    }

    TOVA_INLINE const char* take_text(const char* cursor) {
        if (*cursor == '>')
            refuse_byte(cursor);
        const char* end = m_blocks.end_of_text(cursor);
        if (end == m_end || *end != '&')
            return after(m_context.character(piece(cursor, end), end));
        m_composed.clear();
        while (end != m_end && *end == '&') {
            take_reference(cursor, end);
            end = m_blocks.end_of_text(cursor);
        }
        m_composed.append(cursor, end);
        return after(m_context.character(m_composed, end));
    }

    TOVA_INLINE const char* take_markup(const char* cursor) {
        m_context.in_tag() = true;
        const char kind = byte(cursor, 1);
        if (kind == '/')
            return take_end_tag(cursor);
        if (kind == '!') {
            if (begins_with(cursor, "<!--"))
                return take_comment(cursor + 4);
            if (begins_with(cursor, "<![CDATA["))
                return take_character_section(cursor + 9);
        }
        return take_start_tag(cursor);
    }

    TOVA_INLINE const char* take_start_tag(const char* cursor) {
        // Contract: a second root is rejected before its name is examined.
        if (!m_context.has_open_element() && m_root_seen)
            fail(parse_error::data_after_root, cursor);
        const char* const end = end_of_name(cursor + 1);
        const piece name(cursor + 1, end);
        m_context.open(name);
        m_context.forget_attributes();
        cursor = after(m_context.element_start(name, end - 1));
        m_root_seen = true;
        return end_of_tag(cursor + 1);
    }

    // Most names are followed by the '>' of their tag, which needs no round of its own.
    TOVA_INLINE const char* end_of_tag(const char* cursor) {
        if (byte(cursor) != '>' || !m_context.in_tag())
            return cursor;
        m_context.in_tag() = false;
        return cursor + 1;
    }

    // Contract: the element is closed before the end of the document is noticed. An end tag with no
    // element open counts as one that matches. The attribute names stay as the last start tag left
    // them, and since the tag is open until its '>', an end tag may have attributes.
    TOVA_INLINE const char* take_end_tag(const char* cursor) {
        const char* const end = end_of_name(cursor + 2);
        const piece name(cursor + 2, end);
        if (m_context.has_open_element()) {
            const piece open = m_context.innermost();
            if (open.size != name.size || !have_equal_bytes(open.data, name.data, name.size))
                fail(parse_error::mismatched_end, end - 1, name.string());
            m_context.close();
        }
        if (end == m_end)
            fail(parse_error::unexpected_end, end - 1);
        return end_of_tag(after(m_context.element_end(name, end - 1)) + 1);
    }

    TOVA_INLINE const char* take_empty_element_end(const char* cursor) {
        ++cursor;
        if (byte(cursor) != '>')
            refuse_byte(cursor);
        if (!m_context.has_open_element())
            fail(parse_error::mismatched_end, cursor);
        cursor = after(m_context.empty_element_end(cursor));
        m_context.in_tag() = false;
        // The handler may have closed the element itself, by parsing its end tag.
        if (m_context.has_open_element())
            m_context.close();
        m_context.forget_attributes();
        return cursor + 1;
    }

    __attribute__((noinline)) const char* take_comment(const char* begin) {
        const char* const end = end_of_section(begin, "-->");
        const char* const last = end + 2;
        return after(m_space.size == 0 ? m_context.comment(piece(begin, end), last)
                                       : m_context.comment(with_space(begin, end), last)) +
               1;
    }

    __attribute__((noinline)) const char* take_character_section(const char* begin) {
        const char* const end = end_of_section(begin, "]]>");
        const char* const last = end + 2;
        return after(m_space.size == 0 ? m_context.character(piece(begin, end), last)
                                       : m_context.character(with_space(begin, end), last)) +
               1;
    }

    __attribute__((noinline)) const char* end_of_section(const char* begin,
                                                         const char (&closing)[4]) {
        const char* const end = find_closing(begin, closing);
        if (end == nullptr)
            fail(parse_error::unexpected_end, begin);
        m_context.in_tag() = false;
        return end;
    }

    // Contract: the whitespace before a comment or CDATA section begins its text, although it was
    // reported as well.
    const strings::ustring8& with_space(const char* begin, const char* end) {
        m_composed.assign(m_space.data, m_space.size);
        m_composed.append(begin, end);
        return m_composed;
    }

    // The stream parser allows no whitespace before the '='.
    TOVA_INLINE const char* take_attribute(const char* cursor) {
        const char* const end = end_of_name(cursor);
        const piece name(cursor, end);
        if (!m_context.add_attribute(name))
            fail(parse_error::attribute_redefined, end - 1, name.string());
        cursor = end_of_white_space(end);
        if (byte(cursor) != '=')
            fail(parse_error::missing_equals, cursor, name.string());
        cursor = end_of_white_space(cursor + 1);
        const char quote = byte(cursor);
        if (quote != '"' && quote != '\'')
            fail(parse_error::missing_quote, cursor);
        ++cursor;
        const char* last = m_blocks.end_of_value(cursor, quote);
        if (last == m_end || *last == quote) {
            cursor = after(m_context.attribute(name, piece(cursor, last), last));
        } else {
            last = compose_value(cursor, last, quote);
            cursor = after(m_context.attribute(name, m_composed, last));
        }
        // Contract: a value that is cut off by the end of the document is first reported as an
        // event and then as an error.
        if (cursor == m_end)
            fail(parse_error::missing_quote, cursor, name.string());
        return cursor + 1;
    }

    // Reads a value with references. Returns the closing quote, or the end of the document.
    __attribute__((noinline)) const char* compose_value(const char* begin, const char* end,
                                                        char quote) {
        m_composed.clear();
        while (end != m_end && *end != quote) {
            if (*end == '<')
                refuse_byte(end);
            take_reference(begin, end);
            end = m_blocks.end_of_value(begin, quote);
        }
        m_composed.append(begin, end);
        return end;
    }

    // Appends the bytes before a reference and the byte that it means, and moves the beginning past
    // it.
    TOVA_INLINE void take_reference(const char*& begin, const char* reference) {
        const piece before(begin, reference);
        char meant = usual_reference(reference);
        if (meant == '\0')
            meant = read_reference(reference);
        m_context.compose(m_composed, before, meant);
        begin = reference + 1;
    }

    // The byte that an entity means, with the cursor moved to its ';'. NUL for another reference,
    // and close to the end of the document.
    TOVA_INLINE char usual_reference(const char*& cursor) const {
        std::uint64_t bytes;
        if (m_end - cursor < static_cast<std::ptrdiff_t>(sizeof bytes))
            return '\0';
        std::memcpy(&bytes, cursor, sizeof bytes);
        const auto is = [bytes](const char(&entity)[9], unsigned int size) {
            std::uint64_t wanted;
            std::memcpy(&wanted, entity, sizeof wanted);
            return ((bytes ^ wanted) << (64 - 8 * size)) == 0;
        };
        if (is("&amp;   ", 5))
            return cursor += 4, '&';
        if (is("&lt;    ", 4))
            return cursor += 3, '<';
        if (is("&gt;    ", 4))
            return cursor += 3, '>';
        if (is("&quot;  ", 6))
            return cursor += 5, '"';
        return '\0';
    }

    // Moves the cursor to the ';'.
    __attribute__((noinline)) char read_reference(const char*& cursor) {
        static const struct {
            char text[7];
            unsigned char size;
            char result;
        } entities[] = {{"&lt;", 4, '<'},   {"&gt;", 4, '>'},    {"&amp;", 5, '&'},
                        {"&quot;", 6, '"'}, {"&apos;", 6, '\''}, {"&nbsp;", 6, ' '}};
        for (const auto& entity : entities) {
            if (m_end - cursor >= entity.size &&
                have_equal_bytes(cursor, entity.text, entity.size)) {
                cursor += entity.size - 1;
                return entity.result;
            }
        }
        // Numbers, and references that are invalid.
        iterator at(cursor);
        const iterator end(m_end);
        try {
            const char result = document_scanner(at, end, m_context.line()).take_reference();
            cursor = at.base();
            return result;
        } catch (...) {
            m_context.move_to(at.base());
            throw;
        }
    }

    TOVA_INLINE const char* end_of_white_space(const char* cursor) {
        if (cursor == m_end || !strings::detail::is_white_space(*cursor))
            return cursor;
        if (*cursor == ' ' && m_end - cursor > 1 && !strings::detail::is_white_space(cursor[1]))
            return cursor + 1;
        return m_blocks.end_of_white_space(cursor, m_context.line());
    }

    // Contract: names follow the C library's classes, so in a locale with an 8-bit character set
    // its letters may occur in names. ASCII letters and digits need no call, and neither do the
    // bytes that usually end a name.
    TOVA_INLINE const char* end_of_name(const char* begin) {
        if (begin == m_end ||
            !(strings::detail::is_ascii_letter(*begin) || std::isalpha(*begin) != 0))
            refuse_byte(begin);
        for (const char* end = begin;;) {
            end = m_blocks.end_of_name(end + 1);
            if (end == m_end)
                return end;
            switch (*end) {
            case '>':
            case '=':
            case ' ':
            case '/':
            case '\n':
                return end;
            default:
                if (std::isalnum(*end) == 0)
                    return end;
            }
        }
    }

    // A '>' is rare in the content of a section, so the search looks for that. Returns the first
    // byte of the closing string, or null. The stream parser looks for the first "--" of a comment
    // and rejects it unless '>' follows; it does not support CDATA sections.
    const char* find_closing(const char* begin, const char (&closing)[4]) const {
        for (const char* from = begin; from != m_end;) {
            const auto* const last = static_cast<const char*>(
                std::memchr(from, closing[2], static_cast<std::size_t>(m_end - from)));
            if (last == nullptr)
                break;
            if (last - begin >= 2 && last[-2] == closing[0] && last[-1] == closing[1])
                return last - 2;
            from = last + 1;
        }
        return nullptr;
    }

    // The byte that is `offset` bytes after the cursor; past the end of the document it is NUL.
    char byte(const char* cursor, std::ptrdiff_t offset = 0) const {
        return m_end - cursor > offset ? cursor[offset] : '\0';
    }

    template <std::size_t Size>
    bool begins_with(const char* cursor, const char (&literal)[Size]) const {
        return m_end - cursor >= static_cast<std::ptrdiff_t>(Size - 1) &&
               std::memcmp(cursor, literal, Size - 1) == 0;
    }

    // Where to continue after an event, whose handler may also have moved the caller's end.
    TOVA_INLINE const char* after(const char* cursor) {
        if (m_context.end() != m_end) {
            m_end = m_context.end();
            m_blocks.set_range(m_begin, m_end);
        }
        return cursor;
    }

    [[noreturn]] __attribute__((noinline, cold)) void refuse_byte(const char* cursor) {
        fail(parse_error::unexpected_character, cursor, strings::ustring8(1, byte(cursor)));
    }

    [[noreturn]] __attribute__((noinline, cold)) void
    fail(parse_error::error_type kind, const char* cursor,
         const strings::ustring8& subject = strings::ustring8()) {
        m_context.move_to(cursor);
        throw parse_error(kind, m_context.line(), subject);
    }

    Context& m_context;
    const char* const m_begin;
    const char* m_end;
    byte_blocks m_blocks;
    strings::ustring8 m_composed;
    piece m_space;
    bool m_root_seen;
};

}  // namespace detail
}  // namespace parser
}  // namespace TOVA_2_18

#undef TOVA_INLINE
