#include "parser/flat_tokens.hpp"

#include "parser/attribute_names.hpp"
#include "parser/document_walk.hpp"

#include <algorithm>
#include <cstring>
#include <set>
#include <utility>

namespace TOVA_2_18 {
namespace parser {
namespace detail {

using strings::ustring8;
using kind = xml_token_stream::token;
using parse_error = xml_parser::parse_error;

namespace {

const std::size_t chunk_size = 16384;  // bytes

// A document has about one token for so many bytes, so that the array grows a few times at most.
const std::size_t usual_token_size = 12;

}  // namespace

// The state of a parser that has read nothing else, and handlers that make the tokens of
// `xml_token_stream`.
class flat_tokens::context {
public:
    context(flat_tokens& tokens, const char* end)
        : m_tokens(tokens), m_end(end), m_attributes(m_attribute_names), m_line(0), m_in_tag(false),
          m_tag_closed(true) {}

    bool& in_tag() { return m_in_tag; }
    unsigned int& line() { return m_line; }
    bool has_open_element() const { return !m_open_elements.empty(); }
    piece innermost() const { return m_open_elements.back(); }
    void open(piece name) { m_open_elements.push_back(name); }
    void close() { m_open_elements.pop_back(); }
    void forget_attributes() { m_attributes.clear(); }
    bool add_attribute(piece name) {
        return m_attributes.insert(name.data, name.size,
                                   static_cast<std::size_t>(m_end - name.data));
    }
    void move_to(const char*) {}
    const char* end() const { return m_end; }

    const char* element_start(piece name, const char* cursor) {
        end_start_tag();
        add(kind::element_start, name);
        m_tag_closed = false;
        return cursor;
    }
    const char* element_end(piece name, const char* cursor) {
        return add_content(kind::element_end, name, cursor);
    }
    const char* empty_element_end(const char* cursor) {
        return add_content(kind::element_end, innermost(), cursor);
    }
    template <typename Text>
    const char* attribute(piece name, const Text& value, const char* cursor) {
        add(kind::attribute_name, name);
        add(kind::attribute_value, kept(value));
        return cursor;
    }
    template <typename Text>
    const char* character(const Text& text, const char* cursor) {
        return add_content(kind::character, kept(text), cursor);
    }
    const char* space(piece text, const char* cursor) {
        return add_content(kind::space, text, cursor);
    }
    // Contract: a comment leaves a start_tag_end that is due to the next event.
    template <typename Text>
    const char* comment(const Text& text, const char* cursor) {
        add(kind::comment, kept(text));
        return cursor;
    }

private:
    void add(token_type type, piece value) { m_tokens.m_tokens.emplace_back(type, value); }

    const char* add_content(token_type type, piece value, const char* cursor) {
        end_start_tag();
        add(type, value);
        m_tag_closed = true;
        return cursor;
    }

    void end_start_tag() {
        if (!m_tag_closed)
            add(kind::start_tag_end, piece());
    }

    piece kept(piece value) const { return value; }
    piece kept(const ustring8& value) { return m_tokens.keep(value); }

    flat_tokens& m_tokens;
    const char* const m_end;
    std::vector<piece> m_open_elements;
    std::set<ustring8> m_attribute_names;
    attribute_names m_attributes;
    unsigned int m_line;
    bool m_in_tag;
    bool m_tag_closed;
};

parse_error flat_tokens::parse(const ustring8& document) {
    m_tokens.reserve(document.size() / usual_token_size);
    context state(*this, document.data() + document.size());
    try {
        return document_walk<context>(state, document.begin(), document.end()).run();
    } catch (const parse_error& error) {
        return error;
    }
}

// Chunks never move, so pieces of them stay valid.
piece flat_tokens::keep(const ustring8& value) {
    if (value.size() > m_room_size) {
        const std::size_t size = std::max(value.size(), chunk_size);
        std::unique_ptr<char[]> chunk(new char[size]);
        m_chunks.push_back(std::move(chunk));
        m_room = m_chunks.back().get();
        m_room_size = size;
    }
    std::memcpy(m_room, value.data(), value.size());
    const piece kept(m_room, value.size());
    m_room += value.size();
    m_room_size -= value.size();
    return kept;
}

}  // namespace detail
}  // namespace parser
}  // namespace TOVA_2_18
