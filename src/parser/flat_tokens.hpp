/// @file
/// The tokens of a document in an array, for a reader that keeps the document and needs no list.
///
///     flat_tokens tokens;
///     if (tokens.parse(document).type == xml_parser::parse_error::no_error)
///         for (const flat_tokens::token& one : tokens)
///             use(one.type(), one.value());
///
/// They equal the tokens of an `xml_token_stream` that has read only this document. A value is a
/// piece of the document or, if it has references, of memory that belongs to the tokens; both must
/// outlive its use. A reader that does not need the contents of some elements passes a filter, and
/// one that goes through the tokens once passes a sink. An object belongs to one thread.
#pragma once

#include <tova/parser/xml_parser.hpp>
#include <tova/parser/xml_token_stream.hpp>
#include <tova/strings/ustring.hpp>

#include "parser/piece.hpp"

#include <cstddef>
#include <cstdlib>
#include <memory>
#include <set>
#include <vector>

namespace TOVA_2_18 {
namespace parser {
namespace detail {

class flat_tokens {
public:
    using token_type = xml_token_stream::token::token_type;

    class token {
    public:
        token(token_type type, piece value)
            : m_data(value.data), m_size_and_type(value.size << 4 | type) {}

        token_type type() const { return static_cast<token_type>(m_size_and_type & 15); }
        piece value() const { return piece(m_data, m_size_and_type >> 4); }

    private:
        const char* m_data;
        std::size_t m_size_and_type;  // the type in the lowest four bits
    };

    /// Decides which children of the root have contents that the reader does not need.
    class filter {
    public:
        virtual ~filter() {}

        /// Whether the tokens of an element, after the end of its start tag and up to the first end
        /// of an element with its name, are left out. `[start, end)` are the tokens of its start
        /// tag. The XML is checked nevertheless.
        virtual bool is_left_out(const token* start, const token* end) const = 0;
    };

    /// Takes the tokens, a few hundred at a time.
    class sink {
    public:
        virtual ~sink() {}

        /// The values are valid until it returns.
        virtual void take(const token* begin, const token* end) = 0;
    };

    /// What a parser still knows after a document: the state that a second document begins with.
    struct remainder {
        std::vector<strings::ustring8> open_elements;  // the innermost is the last
        std::set<strings::ustring8> attributes;        // names since the last start tag
        bool tag_closed;                               // whether no start_tag_end is due
    };

    flat_tokens()
        : m_next(nullptr), m_limit(nullptr), m_room(nullptr), m_room_size(0), m_sink(nullptr) {}
    flat_tokens(const flat_tokens&) = delete;
    flat_tokens& operator=(const flat_tokens&) = delete;

    /// Called once for an object. The tokens before an error are kept. Without a filter, nothing is
    /// left out.
    xml_parser::parse_error parse(const strings::ustring8& document,
                                  const filter* wanted = nullptr);

    /// Hands the tokens on, those before an error included, and keeps none. Raises what the sink
    /// raises.
    xml_parser::parse_error parse(const char* begin, const char* end, sink& to, remainder& left);

    const token* begin() const { return m_tokens.get(); }
    const token* end() const { return m_next; }
    std::size_t size() const { return static_cast<std::size_t>(end() - begin()); }

private:
    class context;
    struct release {
        void operator()(token* tokens) const { std::free(tokens); }
    };

    static xml_parser::parse_error run(context& state, const char* begin, const char* end);
    void grow(std::size_t capacity);
    void make_place(std::size_t count);
    void hand_on();
    char* make_room(std::size_t size);
    piece keep(const strings::ustring8& value);

    // Allocated with `std::malloc`, because `realloc` can grow a long array without a copy.
    std::unique_ptr<token, release> m_tokens;
    token* m_next;                                  // after the last token
    token* m_limit;                                 // the end of the array's room
    std::vector<std::unique_ptr<char[]>> m_chunks;  // for the values with references
    char* m_room;                                   // the free part of the last chunk
    std::size_t m_room_size;
    sink* m_sink;  // or null
};

}  // namespace detail
}  // namespace parser
}  // namespace TOVA_2_18
