/// The events of an XML text as one flat list of tokens.
#pragma once

#include <list>

#include <tova/abi.hpp>
#include <tova/functor/member_function.hpp>
#include <tova/parser/xml_parser.hpp>
#include <tova/strings/ustring.hpp>

namespace TOVA_2_18 {
namespace parser {

/// Reads XML texts and keeps their events as tokens, for a consumer that walks them afterwards.
///
/// Nothing is filtered: comments and whitespace stand in the list. The attributes of an element
/// stand between its `element_start` and the `start_tag_end` that the stream makes in front of the
/// next event. Contract: comments are no such event, so one directly behind a start tag stands in
/// front of that tag's `start_tag_end`.
///
/// The whole text stands in memory as tokens. A stream belongs to one thread at a time.
class TOVA_API xml_token_stream {
public:
    class TOVA_API token {
    public:
        enum token_type {
            element_start = 0,    ///< The element's name.
            element_end = 1,      ///< The element's name.
            attribute_name = 2,   ///< The attribute's name; its value is the next token.
            attribute_value = 3,  ///< The value, references resolved.
            start_tag_end = 4,    ///< No text: the attributes are over.
            comment = 5,          ///< The comment's text.
            space = 6,            ///< A run of whitespace.
            character = 7         ///< A piece of character data or a CDATA section.
        };

        token(token_type type, strings::ustring8 const& value);
        token(token const&) = default;
        token& operator=(token const&) = default;
        ~token() TOVA_NOTHROW;

        token_type type() const;
        strings::ustring8 const& value() const;

    private:
        token_type m_type;
        strings::ustring8 m_value;
    };

    /// An empty stream, whose parser reports to the handlers below.
    xml_token_stream();
    xml_token_stream(xml_token_stream const&) = delete;
    xml_token_stream& operator=(xml_token_stream const&) = delete;
    ~xml_token_stream() TOVA_NOTHROW;

    /// Appends the tokens of a text and gives kind 0 or the first fault, as `xml_parser::parse`.
    ///
    /// Contract: the list is not cleared first, and the tokens in front of a fault stay in it. A
    /// start tag that an earlier text left open gets no `start_tag_end` any more.
    xml_parser::parse_error parse(strings::ustring8 const& text);
    xml_parser::parse_error parse(strings::ustring8::const_iterator const& begin,
                                  strings::ustring8::const_iterator const& end);

    std::list<token>::iterator begin();
    std::list<token>::iterator end();
    std::list<token>::const_iterator begin() const;
    std::list<token>::const_iterator end() const;

    /// The number of tokens.
    unsigned long size() const;

    /// The handlers that the stream's parser calls; each appends its token or tokens.
    void on_element_start(strings::ustring8 const& name);
    void on_element_end(strings::ustring8 const& name);
    void on_attribute(strings::ustring8 const& name, strings::ustring8 const& value);
    void on_space(strings::ustring8 const& text);
    void on_character(strings::ustring8 const& text);
    void on_comment(strings::ustring8 const& text);

private:
    bool m_tag_closed;  // whether no start_tag_end is due
    std::list<token> m_tokens;
    xml_parser m_parser;
};

}  // namespace parser

// The two bindings of the stream's handlers, made by the library.
namespace functor {
extern template class member_function_t<parser::xml_token_stream, void(strings::ustring8 const&)>;
extern template class member_function_t<parser::xml_token_stream,
                                        void(strings::ustring8 const&, strings::ustring8 const&)>;
}  // namespace functor
}  // namespace TOVA_2_18
