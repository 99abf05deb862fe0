/// The character-level XML parser: one text in memory, six kinds of events.
#pragma once

#include <set>
#include <stack>

#include <tova/abi.hpp>
#include <tova/functor/delegate.hpp>
#include <tova/strings/ustring.hpp>

namespace TOVA_2_18 {
namespace parser {

/// Walks a complete XML text and reports what it finds through delegates.
///
/// The text is UTF-8 and is read in one pass; it begins with an XML declaration. The first fault
/// ends the run and is given as a `parse_error`. Nothing is built, and nothing of the text is kept
/// but the names of the elements that are open and of the attributes since the last start tag.
///
/// A parser belongs to one thread at a time, and the delegates are called on the thread that
/// parses. They must not replace the delegate that is being called.
class TOVA_API xml_parser {
public:
    using iterator = strings::ustring8::const_iterator;

    /// How a run ended: the result of `parse`, and what the grammar functions throw.
    struct TOVA_API parse_error {
        /// The numbers are part of the interface, as other families map them on their own kinds.
        enum error_type {
            no_error = 0,              ///< The text was read to its end.
            unexpected_end = 1,        ///< The text ends within an element, comment or section.
            mismatched_end = 2,        ///< An end tag that fits no open element.
            no_root = 3,               ///< Nothing stands behind the XML declaration.
            no_header = 4,             ///< The text does not begin with an XML declaration.
            unexpected_character = 5,  ///< A byte that may not stand where it stands.
            missing_quote = 6,         ///< An attribute value that is not quoted or never closed.
            unknown_entity = 7,        ///< A reference to an entity that is not one of the six.
            missing_equals = 8,        ///< An attribute name without `=` behind it.
            attribute_redefined = 9,   ///< An attribute that the element already has.
            data_after_root = 10       ///< A second root element.
        };

        parse_error(error_type kind, unsigned int line_counter, strings::ustring8 const& subject);
        parse_error(parse_error const& other);
        parse_error& operator=(parse_error const& other) = default;
        ~parse_error() TOVA_NOTHROW;

        error_type type;
        /// The line counter at the fault, from 0; always 0 for kind 0 and where the text ends with
        /// an element open.
        unsigned int line;
        /// The offending byte (a NUL byte at the end of the text) or name, often empty.
        strings::ustring8 text;
    };

    /// A parser with six empty delegates.
    xml_parser();
    xml_parser(xml_parser const&) = delete;
    xml_parser& operator=(xml_parser const&) = delete;
    ~xml_parser() TOVA_NOTHROW;

    /// Parses a text, and gives kind 0 or the first fault.
    ///
    /// The line counter starts at 0. It counts the line feeds of whitespace that stands between or
    /// within tags and of what `on_space` hears of, not those of the declaration, of pieces of
    /// character data, comments, CDATA sections and attribute values.
    ///
    /// Contract: what a run that failed left open stays open for the next run, which then closes
    /// it, may hold several roots, and gives kind 1 if anything is open at its end. The attributes
    /// since the last start tag stay known as well.
    ///
    /// A delegate may call `parse` on the same parser. The inner run shares the line counter, the
    /// open elements, the attributes and whether a tag is open with the outer one, which goes on
    /// from whatever the inner run left.
    ///
    /// Errors in the document never leave as exceptions. Exceptions of delegates pass through.
    parse_error parse(strings::ustring8 const& text);
    parse_error parse(strings::ustring8::const_iterator begin,
                      strings::ustring8::const_iterator end);

    /// The grammar's top, under both forms of `parse`. The cursor stays where the run ended.
    parse_error do_parse(iterator& cursor, iterator& end);

    /// Takes the run of whitespace at the cursor, which may be empty, and counts its line feeds.
    strings::ustring8 parse_whitespace(iterator& cursor, iterator& end);

    /// Whether the byte is a space, tab, carriage return or line feed. There must be a byte.
    bool is_white_space(iterator const& cursor) const;

    /// Takes a name: one byte of `isalpha`, then bytes of `isalnum` and `_`. The cursor is left on
    /// the name's last byte. Throws kind 5 where no name begins.
    strings::ustring8 parse_name(iterator& cursor, iterator& end);

    /// Takes an entity or a character reference and leaves the cursor on its `;`. The result is one
    /// byte, also for numbers above 127; numbers above 255 give the byte 0xFF. Throws kinds 5
    /// and 7.
    strings::ustring8 parse_character(iterator& cursor, iterator& end);

    /// Takes a quoted value and leaves the cursor on the closing quote, or at the end of a text
    /// that ends before it. Throws kinds 5, 6 and 7.
    strings::ustring8 parse_attrib_value(iterator& cursor, iterator& end);

    /// Called with the name of an element that begins; its attributes follow.
    functor::delegate_t<void(strings::ustring8 const&)> on_element_start;
    /// Called with the name of an element that ends, also for `<name/>`.
    functor::delegate_t<void(strings::ustring8 const&)> on_element_end;
    /// Called with an attribute's name and its value.
    functor::delegate_t<void(strings::ustring8 const&, strings::ustring8 const&)> on_attribute;
    /// Called with a piece of character data, or with a whole CDATA section.
    functor::delegate_t<void(strings::ustring8 const&)> on_character;
    /// Called with the whitespace behind a tag, comment or section, and with each run of two
    /// whitespace bytes or more within character data.
    functor::delegate_t<void(strings::ustring8 const&)> on_space;
    /// Called with a comment's text, which begins with the whitespace in front of the comment.
    functor::delegate_t<void(strings::ustring8 const&)> on_comment;

private:
    class __attribute__((visibility("hidden"))) run;  // one pass over one text

    std::stack<strings::ustring8> m_open_elements;
    std::set<strings::ustring8> m_attributes;  // names since the last start tag
    unsigned int m_line;
    bool m_in_tag;
};

}  // namespace parser
}  // namespace TOVA_2_18
