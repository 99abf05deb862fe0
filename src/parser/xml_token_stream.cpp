#include <tova/parser/xml_token_stream.hpp>

namespace TOVA_2_18 {
namespace functor {

template class member_function_t<parser::xml_token_stream, void(strings::ustring8 const&)>;
template class member_function_t<parser::xml_token_stream,
                                 void(strings::ustring8 const&, strings::ustring8 const&)>;

}  // namespace functor

namespace parser {

namespace {

using strings::ustring8;
using token = xml_token_stream::token;
using text_handler = functor::member_function_t<xml_token_stream, void(ustring8 const&)>;
using attribute_handler =
    functor::member_function_t<xml_token_stream, void(ustring8 const&, ustring8 const&)>;

// The parser does not report that a start tag is over, so the first event behind the attributes
// brings the token along.
void flush_start_tag(std::list<token>& tokens, bool tag_closed) {
    if (!tag_closed)
        tokens.emplace_back(token::start_tag_end, ustring8());
}

}  // namespace

xml_token_stream::token::token(token_type type, ustring8 const& value)
    : m_type(type), m_value(value) {}

xml_token_stream::token::~token() TOVA_NOTHROW {}

token::token_type xml_token_stream::token::type() const {
    return m_type;
}

ustring8 const& xml_token_stream::token::value() const {
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

xml_parser::parse_error xml_token_stream::parse(ustring8 const& text) {
    return parse(text.begin(), text.end());
}

xml_parser::parse_error xml_token_stream::parse(ustring8::const_iterator const& begin,
                                                ustring8::const_iterator const& end) {
    // Contract: what an earlier text left due is not made up for, so its last start tag stays
    // without a start_tag_end.
    m_tag_closed = true;
    return m_parser.parse(begin, end);
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

void xml_token_stream::on_element_start(ustring8 const& name) {
    flush_start_tag(m_tokens, m_tag_closed);
    m_tokens.emplace_back(token::element_start, name);
    m_tag_closed = false;
}

void xml_token_stream::on_element_end(ustring8 const& name) {
    flush_start_tag(m_tokens, m_tag_closed);
    m_tokens.emplace_back(token::element_end, name);
    m_tag_closed = true;
}

// Contract: neither attributes nor comments flush, and neither settles whether a start_tag_end is
// due. A comment right behind a start tag therefore precedes that tag's start_tag_end.
void xml_token_stream::on_attribute(ustring8 const& name, ustring8 const& value) {
    m_tokens.emplace_back(token::attribute_name, name);
    m_tokens.emplace_back(token::attribute_value, value);
}

void xml_token_stream::on_comment(ustring8 const& text) {
    m_tokens.emplace_back(token::comment, text);
}

void xml_token_stream::on_space(ustring8 const& text) {
    flush_start_tag(m_tokens, m_tag_closed);
    m_tokens.emplace_back(token::space, text);
    m_tag_closed = true;
}

void xml_token_stream::on_character(ustring8 const& text) {
    flush_start_tag(m_tokens, m_tag_closed);
    m_tokens.emplace_back(token::character, text);
    m_tag_closed = true;
}

}  // namespace parser
}  // namespace TOVA_2_18
