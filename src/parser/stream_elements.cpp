#include "parser/entity.hpp"
#include "parser/stream_nodes.hpp"
#include "parser/string_fill.hpp"
#include "parser/usual_element.hpp"

#include <cstddef>
#include <cstring>
#include <list>
#include <string>

// This file is compiled as C++23, where a string can be filled in place. It has no function with an
// empty exception specification, which would end the program in another way in C++23.

namespace TOVA_2_18 {
namespace parser {
namespace detail {

using strings::ustring8;

namespace {

// A string has room for so many bytes, its terminator included, without an allocation.
const std::ptrdiff_t small_size = 16;

// Makes an empty string a copy of short bytes, if `small_size` bytes can be read.
__attribute__((always_inline)) inline bool set_short(ustring8& to, const char* begin,
                                                     const char* end, const char* readable_end) {
    if (end - begin >= small_size || readable_end - begin < small_size)
        return false;
    fill(to, begin, static_cast<std::size_t>(end - begin), small_size);
    return true;
}

// The string of an element, which may be changed later.
__attribute__((always_inline)) inline void set(ustring8& to, const piece& bytes,
                                               const char* readable_end) {
    if (!set_short(to, bytes.data, bytes.data + bytes.size, readable_end))
        to.assign(bytes.data, bytes.size);
}

// The string of an attribute, in exactly as much memory as it needs.
__attribute__((always_inline)) inline void set_exactly(ustring8& to, const char* begin,
                                                       const char* end, const char* readable_end) {
    if (!set_short(to, begin, end, readable_end))
        to = ustring8(begin, end);
}

// Writes the text without its references and returns the end.
char* compose(const usual_element& element, char* to) {
    const char* at = element.text.data;
    const char* const end = at + element.text.size;
    while (const void* const found = std::memchr(at, '&', static_cast<std::size_t>(end - at))) {
        const char* const reference = static_cast<const char*>(found);
        const auto size = static_cast<std::size_t>(reference - at);
        std::memcpy(to, at, size);
        to += size;
        at = reference + size_of_entity(reference, *to);
        ++to;
    }
    const auto size = static_cast<std::size_t>(end - at);
    std::memcpy(to, at, size);
    return to + size;
}

void set_composed(const usual_element& element, ustring8& text) {
    text.reserve(element.text.size);
#if defined(__cpp_lib_string_resize_and_overwrite)
    text.resize_and_overwrite(element.text.size, [&element](char* to, std::size_t) {
        return static_cast<std::size_t>(compose(element, to) - to);
    });
#else
    text.resize(element.text.size);
    text.resize(static_cast<std::size_t>(compose(element, &text[0]) - &text[0]));
#endif
}

}  // namespace

// The node is complete before it is in the queue, so nothing changes if memory runs out.
void stream_nodes::append_whole(const usual_element& element, unsigned int line) {
    std::list<node> whole(1);
    node& made = whole.back();
    made.type = xml_stream_parser::no_error;
    made.ready = true;
    set(made.name, element.name, element.last);
    made.line = line;
    made.id = m_next_id;
    made.parent = m_ids.top();
    for (std::size_t i = 0; i != element.attribute_count; ++i) {
        const usual_element::attribute& one = element.attributes[i];
        made.attributes.emplace_back();
        auto& added = made.attributes.back();
        set_exactly(added.first, one.name, one.equals, element.last);
        set_exactly(added.second, one.equals + 2, one.last, element.last);
    }
    if (element.has_references)
        set_composed(element, made.text);
    else if (!element.text.empty())
        set(made.text, element.text, element.last);
    m_queue.splice(m_queue.end(), whole);
    ++m_next_id;
    m_attribute_names.clear();
}

}  // namespace detail
}  // namespace parser
}  // namespace TOVA_2_18
