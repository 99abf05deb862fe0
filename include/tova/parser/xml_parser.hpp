/// @file
/// `xml_parser`: one XML document in memory, reported as six kinds of events.
///
///     struct printer {
///         void start(const tova::strings::ustring8& name) { std::cout << name << '\n'; }
///     };
///
///     printer target;
///     tova::parser::xml_parser parser;
///     parser.on_element_start = tova::functor::member_function_t<
///         printer, void(const tova::strings::ustring8&)>(&target, &printer::start);
///     const auto result = parser.parse("<?xml version='1.0'?><a><b/></a>");  // prints a and b
///     if (result.type != tova::parser::xml_parser::parse_error::no_error)
///         std::cerr << "line " << result.line << '\n';
///
/// For a list of tokens instead of calls use `xml_token_stream`; for a file that still grows use
/// `xml_stream_parser`.
///
/// This is a parser for the library's own catalog files and for documents written like them. It
/// refuses much of what is ordinary XML elsewhere, and reads 6 % of 9,718 XML files collected from
/// real systems. What it refuses, and with which kind:
///
/// - a document without an XML declaration, or with anything but a byte order mark before it (4);
/// - a `<!DOCTYPE ...>`, and every processing instruction after the declaration (5);
/// - names with `-`, `.` or `:`, among them every name with a namespace prefix (5 for an element,
///   8 for an attribute), and names that begin with `_` (5);
/// - `xmlns` and `xmlns:a` in one tag, since the name of both is `xmlns` (9);
/// - letters outside of the locale's character set in names, so UTF-8 ones in general (5);
/// - entities other than `&amp;`, `&apos;`, `&gt;`, `&lt;`, `&nbsp;` and `&quot;` (7).
///
/// It accepts some documents that are not well-formed: with end tags while no element is open, with
/// attributes in end tags, with text outside of the root element, or with bytes that are not UTF-8.
///
/// Two threads may use two parsers at the same time. One parser, with the handlers bound to it,
/// belongs to one thread at a time.
#pragma once

#include <tova/abi.hpp>
#include <tova/functor/delegate.hpp>
#include <tova/strings/ustring.hpp>

#include <set>
#include <stack>

namespace TOVA_2_18 {
namespace parser {

namespace detail {
class token_list;
}

/// Walks a complete XML document and reports what it finds through delegates.
///
/// The document is UTF-8 and is read in one pass, which the first error ends. Nothing is built, and
/// nothing of the document is kept but the names of the elements that are open and of the
/// attributes since the last start tag.
///
/// A delegate is called on the thread that parses. It must not replace the delegate that is being
/// called.
class TOVA_API xml_parser {
public:
    /// A position in a document, in bytes.
    using iterator = strings::ustring8::const_iterator;

    /// How a run ended: the result of `parse`, and what the grammar functions raise. A plain value:
    /// copies share nothing.
    struct TOVA_API parse_error {
        /// The kinds of errors. The numbers are part of the interface, as other families map them
        /// to their own kinds.
        enum error_type {
            no_error = 0,              ///< The document was read to its end.
            unexpected_end = 1,        ///< The document ends within an element, comment or section.
            mismatched_end = 2,        ///< An end tag that matches no open element.
            no_root = 3,               ///< Nothing follows the XML declaration.
            no_header = 4,             ///< The document does not begin with an XML declaration.
            unexpected_character = 5,  ///< A byte that is not allowed where it appears.
            missing_quote = 6,         ///< An attribute value that is not quoted or never closed.
            unknown_entity = 7,        ///< A reference to an entity that is not one of the six.
            missing_equals = 8,        ///< An attribute name without `=` after it.
            attribute_redefined = 9,   ///< An attribute that the element already has.
            data_after_root = 10       ///< A second root element.
        };

        /// Sets the three fields. Raises only what an allocation raises.
        parse_error(error_type kind, unsigned int line_counter, const strings::ustring8& subject);

        parse_error(const parse_error& other);
        parse_error& operator=(const parse_error& other) = default;
        ~parse_error() TOVA_NOTHROW;

        /// The kind of the error; `no_error` for a run that succeeded.
        error_type type;
        /// The line counter at the error, from 0; always 0 for kind 0 and where the document ends
        /// with an element open.
        unsigned int line;
        /// The offending byte (a NUL byte at the end of the document) or name, often empty.
        strings::ustring8 text;
    };

    /// A parser with six empty delegates.
    xml_parser();
    xml_parser(const xml_parser&) = delete;
    xml_parser& operator=(const xml_parser&) = delete;
    ~xml_parser() TOVA_NOTHROW;

    /// Parses a document and returns kind 0 or the first error.
    ///
    /// The line counter starts at 0. It counts the line feeds in whitespace between and within tags
    /// and in what `on_space` receives, but not those in the declaration, in pieces of character
    /// data, comments, CDATA sections and attribute values.
    ///
    /// Contract: what a failed run left open stays open for the next run, which then closes it, may
    /// hold several roots, and returns kind 1 if anything is open at its end. The attributes since
    /// the last start tag stay known as well.
    ///
    /// A delegate may call `parse` on the same parser. The inner run shares the line counter, the
    /// open elements, the attributes and whether a tag is open with the outer one, which goes on
    /// from whatever the inner run left.
    ///
    /// Errors in the document never leave as exceptions. Exceptions of delegates pass through.
    parse_error parse(const strings::ustring8& text);
    parse_error parse(strings::ustring8::const_iterator begin,
                      strings::ustring8::const_iterator end);

    /// The top of the grammar, below both forms of `parse`. The cursor stays where the run ended.
    parse_error do_parse(iterator& cursor, iterator& end);

    /// Takes the run of whitespace at the cursor, which may be empty, and counts its line feeds.
    strings::ustring8 parse_whitespace(iterator& cursor, iterator& end);

    /// Whether the byte is a space, tab, carriage return or line feed. There must be a byte.
    bool is_white_space(const iterator& cursor) const;

    /// Takes a name: one byte of `isalpha`, then bytes of `isalnum` and `_`. The cursor is left on
    /// the last byte of the name. Raises a `parse_error` of kind 5 where no name begins.
    strings::ustring8 parse_name(iterator& cursor, iterator& end);

    /// Takes an entity or a character reference and leaves the cursor on its `;`. The result is one
    /// byte, also for numbers above 127; numbers above 255 give the byte 0xFF. Raises a
    /// `parse_error` of kind 5 or 7.
    strings::ustring8 parse_character(iterator& cursor, iterator& end);

    /// Takes a quoted value and leaves the cursor on the closing quote, or at the end of a document
    /// that ends before it. Raises a `parse_error` of kind 5, 6 or 7.
    strings::ustring8 parse_attrib_value(iterator& cursor, iterator& end);

    /// Called with the name of an element that begins; its attributes follow.
    functor::delegate_t<void(const strings::ustring8&)> on_element_start;
    /// Called with the name of an element that ends, also for `<name/>`.
    functor::delegate_t<void(const strings::ustring8&)> on_element_end;
    /// Called with an attribute's name and its value.
    functor::delegate_t<void(const strings::ustring8&, const strings::ustring8&)> on_attribute;
    /// Called with a piece of character data, or with a whole CDATA section.
    functor::delegate_t<void(const strings::ustring8&)> on_character;
    /// Called with the whitespace after a tag, comment or section, and with each run of two or more
    /// whitespace bytes within character data.
    functor::delegate_t<void(const strings::ustring8&)> on_space;
    /// Called with the text of a comment, which begins with the whitespace before the comment.
    functor::delegate_t<void(const strings::ustring8&)> on_comment;

private:
    friend class detail::token_list;                  // leaves the state of a document
    class __attribute__((visibility("hidden"))) run;  // one pass over one document

    std::stack<strings::ustring8> m_open_elements;
    std::set<strings::ustring8> m_attributes;  // names since the last start tag
    unsigned int m_line;
    bool m_in_tag;
};

}  // namespace parser
}  // namespace TOVA_2_18
