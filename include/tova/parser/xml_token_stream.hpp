/// @file
/// `xml_token_stream`: the events of an XML document as one flat list of tokens.
///
///     tova::parser::xml_token_stream stream;
///     if (stream.parse("<?xml?><a x='1'>text</a>").type != 0)
///         return;
///     for (const auto& token : stream)
///         if (token.type() == tova::parser::xml_token_stream::token::character)
///             std::cout << token.value();  // text
///
/// The tokens are those of `xml_parser`, which also says what kind of XML is refused.
///
/// Two threads may use two streams at the same time. One stream belongs to one thread at a time.
#pragma once

#include <tova/abi.hpp>
#include <tova/functor/member_function.hpp>
#include <tova/parser/xml_parser.hpp>
#include <tova/strings/ustring.hpp>

#include <list>

namespace TOVA_2_18 {
namespace parser {

/// Reads XML documents and keeps their events as tokens, for a consumer that walks them afterwards.
///
/// Nothing is filtered: comments and whitespace are in the list. The attributes of an element
/// follow its `element_start`, and the stream itself adds a `start_tag_end` after them, before the
/// next event. Contract: a comment is no such event, so one directly after a start tag precedes
/// that tag's `start_tag_end`.
///
/// The whole document is in memory as tokens.
class TOVA_API xml_token_stream {
public:
    /// One event, or one half of an attribute: a type and a string. A plain value: copies share
    /// nothing.
    class TOVA_API token {
    public:
        /// What a token is. The comments say what its `value` is.
        enum token_type {
            element_start = 0,    ///< The name of the element.
            element_end = 1,      ///< The name of the element.
            attribute_name = 2,   ///< The name of the attribute; its value is the next token.
            attribute_value = 3,  ///< The value, with its references resolved.
            start_tag_end = 4,    ///< An empty string: the attributes are complete.
            comment = 5,          ///< The text of the comment.
            space = 6,            ///< A run of whitespace.
            character = 7         ///< A piece of character data or a CDATA section.
        };

        /// A token of that type with a copy of the string. Raises only what an allocation raises.
        token(token_type type, const strings::ustring8& value);

        token(const token&) = default;
        token& operator=(const token&) = default;
        ~token() TOVA_NOTHROW;

        /// The type. Never fails.
        token_type type() const;

        /// The string, valid as long as the token. Never fails.
        const strings::ustring8& value() const;

    private:
        token_type m_type;
        strings::ustring8 m_value;
    };

    /// An empty stream, whose parser reports to the handlers below.
    xml_token_stream();
    xml_token_stream(const xml_token_stream&) = delete;
    xml_token_stream& operator=(const xml_token_stream&) = delete;
    ~xml_token_stream() TOVA_NOTHROW;

    /// Appends the tokens of a document and returns kind 0 or the first error, as
    /// `xml_parser::parse` does.
    ///
    /// Contract: the list is not cleared first, and the tokens before an error stay in it. A start
    /// tag that an earlier document left open no longer gets a `start_tag_end`.
    xml_parser::parse_error parse(const strings::ustring8& text);
    xml_parser::parse_error parse(const strings::ustring8::const_iterator& begin,
                                  const strings::ustring8::const_iterator& end);

    /// The tokens in document order, including those of earlier documents. Iterators stay valid
    /// while tokens are appended. Never fails.
    std::list<token>::iterator begin();
    std::list<token>::iterator end();
    std::list<token>::const_iterator begin() const;
    std::list<token>::const_iterator end() const;

    /// The number of tokens.
    unsigned long size() const;

    /// @name Handlers
    ///
    /// The stream's parser calls these; each appends its token or tokens. They are public because
    /// the parser reaches them through delegates; a program that calls one adds tokens of its own.
    /// Raises only what an allocation raises.
    /// @{
    void on_element_start(const strings::ustring8& name);
    void on_element_end(const strings::ustring8& name);
    void on_attribute(const strings::ustring8& name, const strings::ustring8& value);
    void on_space(const strings::ustring8& text);
    void on_character(const strings::ustring8& text);
    void on_comment(const strings::ustring8& text);
    /// @}

private:
    bool m_tag_closed;  // whether no start_tag_end is due
    std::list<token> m_tokens;
    xml_parser m_parser;
};

}  // namespace parser

// The two bindings of the stream's handlers, instantiated in the library.
namespace functor {
extern template class member_function_t<parser::xml_token_stream, void(const strings::ustring8&)>;
extern template class member_function_t<parser::xml_token_stream,
                                        void(const strings::ustring8&, const strings::ustring8&)>;
}  // namespace functor
}  // namespace TOVA_2_18
