#include "parser/token_list.hpp"

#include "parser/flat_tokens.hpp"
#include "parser/string_fill.hpp"

#include <cstddef>
#include <cstdint>

// This file is compiled as C++23, where a string can be filled in place. It has no function of an
// empty exception specification, which would end the program in another way there.

namespace TOVA_2_18 {
namespace parser {
namespace detail {

using strings::ustring8;

namespace {

// Makes a token of the list from each flat one.
class list_sink : public flat_tokens::sink {
public:
    list_sink(std::list<xml_token_stream::token>& tokens, const char* begin, const char* end)
        : m_tokens(tokens), m_begin(begin), m_end(end) {}

    void take(const flat_tokens::token* begin, const flat_tokens::token* end) override {
        for (; begin != end; ++begin)
            add(begin->type(), begin->value());
    }

private:
    // A string has room for so many bytes, its terminator included, without an allocation.
    static const std::size_t small_size = 16;
    // An empty string that becomes so long gets the capacity of a copy. A shorter one gets more.
    static const std::size_t exact_size = 2 * (small_size - 1);

    void add(flat_tokens::token_type type, piece value) {
        if (value.empty()) {
            m_tokens.emplace_back(type, m_empty);
            return;
        }
        const std::size_t readable = readable_at(value);
        if (value.size < small_size && readable >= small_size) {
            m_tokens.emplace_back(type, m_empty);
            // The token is in the list, so it isn't constant.
            fill(const_cast<ustring8&>(m_tokens.back().value()), value.data, value.size, readable);
        } else if (value.size >= exact_size) {
            m_tokens.emplace_back(type, m_empty);
            fill(const_cast<ustring8&>(m_tokens.back().value()), value.data, value.size,
                 value.size);
        } else {
            fill(m_value, value.data, value.size, readable);
            m_tokens.emplace_back(type, m_value);
        }
    }

    // Values that aren't in the document are in memory of their own.
    std::size_t readable_at(piece value) const {
        const std::size_t offset = reinterpret_cast<std::uintptr_t>(value.data) -
                                   reinterpret_cast<std::uintptr_t>(m_begin);
        const auto size = static_cast<std::size_t>(m_end - m_begin);
        return offset < size ? size - offset : value.size;
    }

    std::list<xml_token_stream::token>& m_tokens;
    const char* const m_begin;
    const char* const m_end;
    const ustring8 m_empty;
    ustring8 m_value;
};

}  // namespace

xml_parser::parse_error token_list::append(const char* begin, const char* end) {
    flat_tokens tokens;
    list_sink sink(m_tokens, begin, end);
    flat_tokens::remainder left;
    const xml_parser::parse_error result = tokens.parse(begin, end, sink, left);
    for (const ustring8& name : left.open_elements)
        m_parser.m_open_elements.push(name);
    m_parser.m_attributes.swap(left.attributes);
    m_tag_closed = left.tag_closed;
    return result;
}

}  // namespace detail
}  // namespace parser
}  // namespace TOVA_2_18
