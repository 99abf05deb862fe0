/// @file
/// Appends the tokens of a document to the list of an `xml_token_stream` without a call of a
/// delegate for each of them.
///
///     token_list list(tokens, parser, tag_closed);
///     const xml_parser::parse_error result =
///         list.can_append() ? list.append(begin, end) : parser.parse(begin, end);
///
/// Both ways append the same tokens and leave the same state. A view of fields of the stream, which
/// belongs to one thread.
#pragma once

#include <tova/parser/xml_parser.hpp>
#include <tova/parser/xml_token_stream.hpp>

#include <list>

namespace TOVA_2_18 {
namespace parser {
namespace detail {

class token_list {
public:
    token_list(std::list<xml_token_stream::token>& tokens, xml_parser& parser, bool& tag_closed)
        : m_tokens(tokens), m_parser(parser), m_tag_closed(tag_closed) {}

    /// Whether the parser knows nothing of an earlier document.
    bool can_append() const {
        return m_parser.m_open_elements.empty() && m_parser.m_attributes.empty();
    }

    /// Returns what `xml_parser::parse` returns.
    xml_parser::parse_error append(const char* begin, const char* end);

private:
    std::list<xml_token_stream::token>& m_tokens;
    xml_parser& m_parser;
    bool& m_tag_closed;
};

}  // namespace detail
}  // namespace parser
}  // namespace TOVA_2_18
