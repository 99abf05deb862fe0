#include "parser/flat_tokens.hpp"

#include "parser/document_walk.hpp"
#include "parser/entity.hpp"
#include "parser/equal_bytes.hpp"
#include "parser/xml_kernels.hpp"
#include "strings/ascii.hpp"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <new>
#include <set>
#include <utility>

// Two layers alternate on one state:
//
//     document_walk    every construct and every error, one construct at a time
//     take_usual       the constructs of most documents in their usual spelling
//
// The walk begins, and before each construct it calls `take_usual`. That function consumes whole
// constructs in their usual form, and stops before the first one in another form: an attribute with
// a space before its '=', a numeric reference, a CDATA section, the end of the root, anything that
// is an error, and the last bytes of the document. It raises no error, so all errors and their
// lines are those of the walk. It leaves the state as the walk would:
//
//     in tag           whether the cursor is between a name and the '>'
//     open elements    their names; `take_usual` leaves the root, and with a filter its child
//     line             line feeds in whitespace
//     attribute names  those since the last start tag
//     tag closed       whether no start_tag_end is due
//
// Positions come from masks of 64 bytes, so a construct costs a few shifts and no loop over bytes.
//
// A sink empties the array of tokens each time it is full, so the array stays in the first cache.
//
// While the contents of an element are left out, both layers work as before, and tokens are dropped
// as they are made.

namespace TOVA_2_18 {
namespace parser {
namespace detail {

using strings::ustring8;
using strings::detail::is_ascii_letter;
using strings::detail::is_white_space;
using kind = xml_token_stream::token;
using parse_error = xml_parser::parse_error;

namespace {

const std::size_t chunk_size = 16384;  // bytes

// Documents have about one token for this many bytes, so the array grows only a few times.
const std::size_t usual_token_size = 12;

// The number of tokens that a sink takes at once.
const std::size_t sink_size = 256;

// The number of bytes past the end of a copied piece that may be read and written.
const std::size_t copy_margin = 16;

// Copies a piece in steps whose size the compiler knows. Both source and target have the margin.
inline char* copy(char* to, const char* from, const char* end) {
    char* const to_end = to + (end - from);
    for (; to < to_end; to += copy_margin, from += copy_margin)
        std::memcpy(to, from, copy_margin);
    return to_end;
}

// The attribute names of one tag. Most tags have only a few, and one of 64 bits shows that a name
// is new.
class tag_attributes {
public:
    tag_attributes() : m_count(0), m_present(0), m_many_of(nullptr) {}

    void clear() {
        m_count = 0;
        m_present = 0;
    }

    // Returns false if the name is already there.
    bool insert(piece name) {
        const std::uint64_t bit = std::uint64_t{1}
                                  << ((static_cast<unsigned char>(name.data[0]) +
                                       8u * static_cast<unsigned char>(name.data[name.size - 1]) +
                                       name.size) %
                                      64);
        if (((m_present & bit) != 0 && has(name)) || m_count == capacity)
            return m_count == capacity && insert_into_set(name);
        m_present |= bit;
        m_names[m_count++] = name;
        return true;
    }

    std::set<ustring8> names() const {
        std::set<ustring8> all;
        for (const piece* name = m_names; name != m_names + m_count; ++name)
            all.insert(name->string());
        if (m_count == capacity && m_many_of == m_names[0].data)
            all.insert(m_many.begin(), m_many.end());
        return all;
    }

private:
    static const std::size_t capacity = 24;

    bool has(piece name) const {
        return std::any_of(m_names, m_names + m_count, [name](piece present) {
            return present.size == name.size &&
                   have_equal_bytes(present.data, name.data, name.size);
        });
    }

    // The names in the array are in the set, too, once the array is full.
    __attribute__((noinline)) bool insert_into_set(piece name) {
        if (m_many_of != m_names[0].data) {
            m_many.clear();
            m_many_of = m_names[0].data;
            for (const piece& present : m_names)
                m_many.insert(present.string());
        }
        return m_many.insert(name.string()).second;
    }

    piece m_names[capacity];
    std::size_t m_count;
    std::uint64_t m_present;          // a bit for each name
    std::set<ustring8> m_many;        // the names, if there are more
    const char* m_many_of = nullptr;  // the first of these
};

// The masks of a block of the document. A search continues in the following blocks.
class block_window {
public:
    // Blocks begin at `last` or before it.
    explicit block_window(const char* last)
        : m_classify(kernels::classify()), m_last(last), m_block(nullptr) {}

    // Returns the first byte at or after `from` that the function selects, or null if it is past
    // the last block.
    template <typename Select>
    __attribute__((always_inline)) const char* find(const char* from, Select select) {
        const std::size_t offset =
            reinterpret_cast<std::uintptr_t>(from) - reinterpret_cast<std::uintptr_t>(m_block);
        if (offset < kernels::block_size) {
            const std::uint64_t found = select(m_masks) >> offset;
            if (found != 0)
                return from + __builtin_ctzll(found);
            from = m_block + kernels::block_size;
        }
        return find_after(from, select);
    }

    const char* end_of_name(const char* from) {
        return find(from, [](const masks& block) { return ~block.name; });
    }
    const char* end_of_value(const char* from, char quote) {
        return quote == '"'
                   ? find(from,
                          [](const masks& block) { return block.markup | block.double_quote; })
                   : find(from,
                          [](const masks& block) { return block.markup | block.single_quote; });
    }

    // The first '<' or '&', or the first of two whitespace bytes.
    const char* end_of_text(const char* from) {
        for (;;) {
            from = find(from, [](const masks& block) {
                return block.markup | (block.white_space & (block.white_space >> 1 | last_bit));
            });
            // The masks do not show which byte follows the block.
            if (from == nullptr || !is_white_space(*from) || is_white_space(from[1]))
                return from;
            ++from;
        }
    }

    // Adds the skipped line feeds, unless it returns null.
    const char* end_of_white_space(const char* from, unsigned int& line_feeds) {
        const char* const end = find(from, [](const masks& block) { return ~block.white_space; });
        if (end == nullptr)
            return nullptr;
        if (from >= m_block) {
            const auto begin = static_cast<std::size_t>(from - m_block);
            const auto size = static_cast<std::size_t>(end - from);
            for (std::uint64_t lines = m_masks.line_feed >> begin & ~(~std::uint64_t{0} << size);
                 lines != 0; lines &= lines - 1)
                ++line_feeds;
        } else {
            line_feeds += static_cast<unsigned int>(std::count(from, end, '\n'));
        }
        return end;
    }

private:
    using masks = kernels::block_masks;

    static const std::uint64_t last_bit = std::uint64_t{1} << (kernels::block_size - 1);

    template <typename Select>
    __attribute__((noinline)) const char* find_after(const char* from, Select select) {
        for (; from <= m_last; from += kernels::block_size) {
            m_classify(from, m_masks);
            m_block = from;
            const std::uint64_t found = select(m_masks);
            if (found != 0)
                return from + __builtin_ctzll(found);
        }
        return nullptr;
    }

    const kernels::classify_function m_classify;
    const char* const m_last;
    const char* m_block;  // 64 bytes from here on
    masks m_masks;        // of the block
};

}  // namespace

// The state of a parser that has read only this document, and handlers that make the tokens of
// `xml_token_stream`.
class flat_tokens::context {
public:
    context(flat_tokens& tokens, const char* begin, const char* end, const filter* wanted)
        : m_tokens(tokens), m_end(end), m_last(last_block(begin, end)), m_window(m_last),
          m_filter(wanted), m_usual_depth(wanted == nullptr ? 1 : filtered_depth), m_tag_start(0),
          m_tag_depth(0), m_line(0), m_in_tag(false), m_tag_closed(true), m_leaves_out(false) {}

    bool& in_tag() { return m_in_tag; }
    unsigned int& line() { return m_line; }
    bool has_open_element() const { return !m_open_elements.empty(); }
    piece innermost() const { return m_open_elements.back(); }
    void open(piece name) { m_open_elements.push_back(name); }
    void close() { m_open_elements.pop_back(); }
    void forget_attributes() { m_attributes.clear(); }
    bool add_attribute(piece name) { return m_attributes.insert(name); }
    void move_to(const char*) {}
    const char* end() const { return m_end; }
    const char* take_usual(const char* cursor);
    void compose(ustring8& into, piece before, char byte) const {
        into.append(before.data, before.size);
        into.push_back(byte);
    }
    remainder left() const {
        remainder made;
        for (const piece& name : m_open_elements)
            made.open_elements.push_back(name.string());
        made.attributes = m_attributes.names();
        made.tag_closed = m_tag_closed;
        return made;
    }

    const char* element_start(piece name, const char* cursor) {
        end_start_tag();
        m_tag_start = m_tokens.size();
        m_tag_depth = m_open_elements.size();
        add(kind::element_start, name);
        m_tag_closed = false;
        return cursor;
    }
    const char* element_end(piece name, const char* cursor) {
        end_start_tag();
        if (m_leaves_out && is_same(name, m_left_out))
            m_leaves_out = false;
        return add_content(kind::element_end, name, cursor);
    }
    const char* empty_element_end(const char* cursor) { return element_end(innermost(), cursor); }
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
    // Contract: if a start_tag_end is due, a comment leaves it to the next event.
    template <typename Text>
    const char* comment(const Text& text, const char* cursor) {
        add(kind::comment, kept(text));
        return cursor;
    }

private:
    // A child of the root, whose contents may be left out, has this many open elements.
    static const std::size_t filtered_depth = 2;

    // More tokens than a construct has.
    static const std::ptrdiff_t construct_size = 8;

    // More references than most texts have.
    static const int most_references = 64;

    struct reference {
        const char* begin;
        const char* end;
        char byte;
    };

    // Bytes after a block may be read without checking for the end of the document.
    static const char* last_block(const char* begin, const char* end) {
        const auto size = static_cast<std::ptrdiff_t>(kernels::block_size + copy_margin);
        return end - begin < size ? nullptr : end - size;
    }

    static bool is_same(piece a, piece b) {
        return a.size == b.size && have_equal_bytes(a.data, b.data, a.size);
    }

    void add(token_type type, piece value) {
        if (m_leaves_out)
            return;
        if (m_tokens.m_next == m_tokens.m_limit)
            m_tokens.make_place(1);
        new (m_tokens.m_next++) token(type, value);
    }

    const char* add_content(token_type type, piece value, const char* cursor) {
        end_start_tag();
        add(type, value);
        m_tag_closed = true;
        return cursor;
    }

    void end_start_tag() {
        if (m_tag_closed)
            return;
        add(kind::start_tag_end, piece());
        m_tag_closed = true;
        if (m_filter == nullptr || m_leaves_out || m_tag_depth != filtered_depth)
            return;
        const token* const start = m_tokens.begin() + m_tag_start;
        m_leaves_out = m_filter->is_left_out(start, m_tokens.end() - 1);
        m_left_out = start->value();
    }

    piece kept(piece value) const { return value; }
    piece kept(const ustring8& value) { return m_leaves_out ? piece() : m_tokens.keep(value); }

    template <typename Find>
    const char* resolve(const char* begin, const char* end, piece& text, const Find& find_end);
    static bool is_usual_reference(const char* begin, reference& found);
    const char* end_of_comment(const char* begin) const;
    piece with_space(const char* space, const char* begin, const char* end);

    flat_tokens& m_tokens;
    const char* const m_end;
    const char* const m_last;  // position at which `take_usual` may begin a construct, or null
    block_window m_window;
    const filter* const m_filter;
    const std::size_t m_usual_depth;  // open elements that `take_usual` needs and leaves
    std::vector<piece> m_open_elements;
    tag_attributes m_attributes;
    std::size_t m_tag_start;  // the token of the last start tag
    std::size_t m_tag_depth;  // open elements in it, including its own
    piece m_left_out;         // the name of the element
    unsigned int m_line;
    bool m_in_tag;
    bool m_tag_closed;
    bool m_leaves_out;
};

// Reads the text or value from `begin`, whose first reference is at `end`. The function finds the
// next byte that may begin a reference. Returns the end, or null if there are references of another
// kind.
template <typename Find>
__attribute__((noinline)) const char* flat_tokens::context::resolve(const char* begin,
                                                                    const char* end, piece& text,
                                                                    const Find& find_end) {
    reference references[most_references];
    int count = 0;
    while (*end == '&') {
        if (count == most_references || !is_usual_reference(end, references[count]))
            return nullptr;
        end = find_end(references[count++].end);
        if (end == nullptr)
            return nullptr;
    }
    text = piece(begin, end);
    if (m_leaves_out)
        return end;
    char* const room = m_tokens.make_room(text.size + copy_margin);
    char* to = room;
    for (const reference* one = references; one != references + count; ++one) {
        to = copy(to, begin, one->begin);
        *to++ = one->byte;
        begin = one->end;
    }
    to = copy(to, begin, end);
    m_tokens.m_room = to;
    m_tokens.m_room_size -= static_cast<std::size_t>(to - room);
    text = piece(room, to);
    return end;
}

// A single state machine with the cursor and the next token in registers, so it is long. It has two
// states, one in a tag and one in content, and each round consumes a construct or returns. The
// handlers above do the same for the walk.
const char* flat_tokens::context::take_usual(const char* cursor) {
    // A filter is called at the end of a start tag of the filtered depth.
    if (m_last == nullptr || m_open_elements.size() < m_usual_depth ||
        (m_filter != nullptr && !m_tag_closed && m_tag_depth <= filtered_depth))
        return cursor;

    // The state that changes with every construct is in local variables.
    struct progress {
        explicit progress(context& of)
            : next(of.m_tokens.m_next), in_tag(of.m_in_tag), tag_closed(of.m_tag_closed), m_of(of) {
        }
        // A construct that was not completed has changed nothing.
        ~progress() {
            m_of.m_in_tag = in_tag;
            m_of.m_tag_closed = tag_closed;
            if (!m_of.m_leaves_out)
                m_of.m_tokens.m_next = next;
        }

        token* next;
        bool in_tag;
        bool tag_closed;

    private:
        context& m_of;
    } at(*this);

    const bool leaves_out = m_leaves_out;
    token* const kept_end = at.next;
    const auto add = [&at](token_type type, piece value) { new (at.next++) token(type, value); };
    const auto end_start_tag = [&] {
        if (!at.tag_closed)
            add(kind::start_tag_end, piece());
        at.tag_closed = true;
    };
    const auto may_close = [this](piece name) {
        return m_open_elements.size() > m_usual_depth &&
               !(m_leaves_out && is_same(name, m_left_out));
    };

    // The state is complete at the beginning of each round, so every construct may be left to the
    // walk.
    for (;;) {
        if (leaves_out)
            at.next = kept_end;
        if (m_tokens.m_limit - at.next < construct_size) {
            m_tokens.m_next = at.next;
            m_tokens.make_place(construct_size);
            at.next = m_tokens.m_next;
            return cursor;
        }
        if (cursor > m_last)
            return cursor;

        const char byte = *cursor;
        if (at.in_tag) {
            // The space before it usually belongs to an attribute.
            const char* const start = byte == ' ' ? cursor + 1 : cursor;
            if (is_ascii_letter(*start)) {
                const char* const end = m_window.end_of_name(start);
                if (end == nullptr || end[0] != '=' || (end[1] != '"' && end[1] != '\''))
                    return cursor;
                const char quote = end[1];
                const char* last = m_window.end_of_value(end + 2, quote);
                if (last == nullptr)
                    return cursor;
                piece value(end + 2, last);
                if (*last == '&') {
                    last = resolve(end + 2, last, value, [this, quote](const char* from) {
                        return m_window.end_of_value(from, quote);
                    });
                    if (last == nullptr)
                        return cursor;
                }
                const piece name(start, end);
                if (*last != quote || !m_attributes.insert(name))
                    return cursor;
                add(kind::attribute_name, name);
                add(kind::attribute_value, value);
                cursor = last + 1;
            } else if (byte == '>') {
                at.in_tag = false;
                ++cursor;
            } else if (byte == '/') {
                const piece name = m_open_elements.back();
                if (cursor[1] != '>' || !may_close(name))
                    return cursor;
                end_start_tag();
                add(kind::element_end, name);
                m_open_elements.pop_back();
                m_attributes.clear();
                at.in_tag = false;
                cursor += 2;
            } else if (is_white_space(byte)) {
                const char* const end = m_window.end_of_white_space(cursor, m_line);
                if (end == nullptr)
                    return cursor;
                cursor = end;
            } else {
                return cursor;
            }
            continue;
        }

        const char* markup = cursor;
        if (is_white_space(byte)) {
            unsigned int lines = 0;
            markup = m_window.end_of_white_space(cursor, lines);
            if (markup == nullptr)
                return cursor;
            const bool is_before_section = markup[0] == '<' && markup[1] == '!';
            const char* const end = is_before_section ? end_of_comment(markup) : nullptr;
            if (is_before_section && end == nullptr)
                return cursor;
            m_line += lines;
            end_start_tag();
            add(kind::space, piece(cursor, markup));
            if (is_before_section) {
                add(kind::comment, with_space(cursor, markup + 4, end));
                markup = end + 3;
            }
            cursor = markup;
        } else if (byte != '<') {
            piece text;
            const char* const end = m_window.end_of_text(cursor);
            if (byte == '>' || end == nullptr)
                return cursor;
            const auto find_end = [this](const char* from) { return m_window.end_of_text(from); };
            const char* const after = *end == '&' ? resolve(cursor, end, text, find_end)
                                                  : (text = piece(cursor, end), end);
            if (after == nullptr)
                return cursor;
            end_start_tag();
            add(kind::character, text);
            cursor = after;
        } else if (is_ascii_letter(cursor[1])) {
            const char* const end = m_window.end_of_name(cursor + 1);
            if (end == nullptr || (*end != ' ' && *end != '>' && *end != '/' && *end != '\n'))
                return cursor;
            const piece name(cursor + 1, end);
            m_open_elements.push_back(name);
            m_attributes.clear();
            end_start_tag();
            m_tag_start = static_cast<std::size_t>(at.next - m_tokens.begin());
            m_tag_depth = m_open_elements.size();
            add(kind::element_start, name);
            at.tag_closed = false;
            at.in_tag = true;
            cursor = end;
        } else if (cursor[1] == '/') {
            const piece name = m_open_elements.back();
            if (static_cast<std::size_t>(m_end - cursor) < name.size + 3 ||
                cursor[2 + name.size] != '>' ||
                !have_equal_bytes(name.data, cursor + 2, name.size) || !may_close(name))
                return cursor;
            const char* const end = cursor + 2 + name.size;
            m_open_elements.pop_back();
            end_start_tag();
            add(kind::element_end, name);
            cursor = end + 1;
        } else {
            const char* const end = end_of_comment(cursor);
            if (end == nullptr)
                return cursor;
            add(kind::comment, piece(cursor + 4, end));
            cursor = end + 3;
        }
    }
}

// `begin` is at an '&', and the margin after it is readable.
bool flat_tokens::context::is_usual_reference(const char* begin, reference& found) {
    char byte;
    const std::size_t size = size_of_entity(begin, byte);
    if (size == 0)
        return false;
    found = {begin, begin + size, byte};
    return true;
}

// Returns the first byte of the "-->" for a '<', or null if the '<' begins something else. Nothing
// after the last block is examined.
const char* flat_tokens::context::end_of_comment(const char* begin) const {
    if (!have_equal_bytes(begin, "<!--", 4))
        return nullptr;
    for (const char* from = begin + 4; from <= m_last;) {
        const auto* const last = static_cast<const char*>(
            std::memchr(from, '>', static_cast<std::size_t>(m_last - from)));
        if (last == nullptr)
            return nullptr;
        if (last - begin >= 6 && last[-1] == '-' && last[-2] == '-')
            return last - 2;
        from = last + 1;
    }
    return nullptr;
}

// Contract: the whitespace before a comment begins its text, although it was a token as well.
piece flat_tokens::context::with_space(const char* space, const char* begin, const char* end) {
    if (m_leaves_out)
        return piece();
    const char* const space_end = begin - 4;
    const auto size = static_cast<std::size_t>((space_end - space) + (end - begin));
    char* const room = m_tokens.make_room(size + copy_margin);
    copy(copy(room, space, space_end), begin, end);
    m_tokens.m_room += size;
    m_tokens.m_room_size -= size;
    return piece(room, size);
}

parse_error flat_tokens::parse(const ustring8& document, const filter* wanted) {
    grow(document.size() / usual_token_size + 1);
    const char* const begin = document.data();
    const char* const end = begin + document.size();
    context state(*this, begin, end, wanted);
    return run(state, begin, end);
}

parse_error flat_tokens::parse(const char* begin, const char* end, sink& to, remainder& left) {
    m_sink = &to;
    grow(sink_size);
    context state(*this, begin, end, nullptr);
    const parse_error result = run(state, begin, end);
    hand_on();
    left = state.left();
    return result;
}

parse_error flat_tokens::run(context& state, const char* begin, const char* end) {
    try {
        return document_walk<context>(state, xml_parser::iterator(begin), xml_parser::iterator(end))
            .run();
    } catch (const parse_error& error) {
        return error;
    }
}

// After this there is room for that many tokens.
void flat_tokens::make_place(std::size_t count) {
    if (m_sink != nullptr)
        hand_on();
    else
        grow(2 * size() + count);
}

// The last chunk stays: it may have the value of a token that isn't made yet.
void flat_tokens::hand_on() {
    m_sink->take(begin(), end());
    m_next = m_tokens.get();
    if (m_chunks.size() > 1)
        m_chunks.erase(m_chunks.begin(), m_chunks.end() - 1);
}

void flat_tokens::grow(std::size_t capacity) {
    const std::size_t count = size();
    void* const grown = std::realloc(static_cast<void*>(m_tokens.get()), capacity * sizeof(token));
    if (grown == nullptr)
        throw std::bad_alloc();
    static_cast<void>(m_tokens.release());
    m_tokens.reset(static_cast<token*>(grown));
    m_next = m_tokens.get() + count;
    m_limit = m_tokens.get() + capacity;
}

// Chunks never move, so pieces of them stay valid. Returns the remaining room without reserving it.
char* flat_tokens::make_room(std::size_t size) {
    if (size > m_room_size) {
        const std::size_t chunk = std::max(size, chunk_size);
        std::unique_ptr<char[]> added(new char[chunk]);
        m_chunks.push_back(std::move(added));
        m_room = m_chunks.back().get();
        m_room_size = chunk;
    }
    return m_room;
}

piece flat_tokens::keep(const ustring8& value) {
    const piece kept(make_room(value.size()), value.size());
    std::memcpy(m_room, value.data(), value.size());
    m_room += value.size();
    m_room_size -= value.size();
    return kept;
}

}  // namespace detail
}  // namespace parser
}  // namespace TOVA_2_18
