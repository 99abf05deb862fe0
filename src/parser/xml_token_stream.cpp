#include <tova/parser/xml_token_stream.hpp>

#include "parser/token_list.hpp"

namespace TOVA_2_18 {
namespace functor {

template class member_function_t<parser::xml_token_stream, void(const strings::ustring8&)>;
template class member_function_t<parser::xml_token_stream,
                                 void(const strings::ustring8&, const strings::ustring8&)>;

}  // namespace functor

namespace parser {

namespace {

using strings::ustring8;
using token = xml_token_stream::token;
using text_handler = functor::member_function_t<xml_token_stream, void(const ustring8&)>;
using attribute_handler =
    functor::member_function_t<xml_token_stream, void(const ustring8&, const ustring8&)>;

// The parser does not report the end of a start tag, so the first event after the attributes adds
// the token.
void flush_start_tag(std::list<token>& tokens, bool tag_closed) {
    if (!tag_closed)
        tokens.emplace_back(token::start_tag_end, ustring8());
}

}  // namespace

xml_token_stream::token::token(token_type type, const ustring8& value)
    : m_type(type), m_value(value) {}

xml_token_stream::token::~token() TOVA_NOTHROW {}

token::token_type xml_token_stream::token::type() const {
    return m_type;
}

const ustring8& xml_token_stream::token::value() const {
    return m_value;
}

xml_token_stream::xml_token_stream() : m_tag_closed(true) {
    m_parser.on_attribute = attribute_handler(this, &xml_token_stream::on_attribute);
    m_parser.on_element_start = text_handler(this, &xml_token_stream::on_element_start);
    m_parser.on_character = text_handler(this, &xml_token_stream::on_character);
    m_parser.on_comment = text_handler(this, &xml_token_stream::on_comment);
    m_parser.on_element_end = text_handler(this, &xml_token_stream::on_element_end);
    m_parser.on_space = text_handler(this, &xml_token_stream::on_space);
}

xml_token_stream::~xml_token_stream() TOVA_NOTHROW {}

xml_parser::parse_error xml_token_stream::parse(const ustring8& text) {
    return parse(text.begin(), text.end());
}

xml_parser::parse_error xml_token_stream::parse(const ustring8::const_iterator& begin,
                                                const ustring8::const_iterator& end) {
    // Contract: a start_tag_end still pending from an earlier document is not added.
    m_tag_closed = true;
    detail::token_list list(m_tokens, m_parser, m_tag_closed);
    // Contract: what an earlier document left open stays open. The handlers go on from there.
    return list.can_append() ? list.append(begin.base(), end.base()) : m_parser.parse(begin, end);
}

std::list<token>::iterator xml_token_stream::begin() {
    return m_tokens.begin();
}

std::list<token>::iterator xml_token_stream::end() {
    return m_tokens.end();
}

std::list<token>::const_iterator xml_token_stream::begin() const {
    return m_tokens.begin();
}

std::list<token>::const_iterator xml_token_stream::end() const {
    return m_tokens.end();
}

unsigned long xml_token_stream::size() const {
    return m_tokens.size();
}

void xml_token_stream::on_element_start(const ustring8& name) {
    flush_start_tag(m_tokens, m_tag_closed);
    m_tokens.emplace_back(token::element_start, name);
    m_tag_closed = false;
}

void xml_token_stream::on_element_end(const ustring8& name) {
    flush_start_tag(m_tokens, m_tag_closed);
    m_tokens.emplace_back(token::element_end, name);
    m_tag_closed = true;
}

// Contract: attributes and comments neither add a start_tag_end nor change whether one is pending.
// A comment directly after a start tag therefore precedes that tag's start_tag_end.
void xml_token_stream::on_attribute(const ustring8& name, const ustring8& value) {
    m_tokens.emplace_back(token::attribute_name, name);
    m_tokens.emplace_back(token::attribute_value, value);
}

void xml_token_stream::on_comment(const ustring8& text) {
    m_tokens.emplace_back(token::comment, text);
}

void xml_token_stream::on_space(const ustring8& text) {
    flush_start_tag(m_tokens, m_tag_closed);
    m_tokens.emplace_back(token::space, text);
    m_tag_closed = true;
}

void xml_token_stream::on_character(const ustring8& text) {
    flush_start_tag(m_tokens, m_tag_closed);
    m_tokens.emplace_back(token::character, text);
    m_tag_closed = true;
}

}  // namespace parser
}  // namespace TOVA_2_18
