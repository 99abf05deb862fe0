#include "parser/stream_nodes.hpp"
#include "parser/string_fill.hpp"
#include "parser/usual_element.hpp"

#include <algorithm>
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

// Copies bytes, of which most texts have few between two references, and returns the end. So many
// bytes as the copy may be long are read and written if there is room for them.
__attribute__((always_inline)) inline char*
copy(const char* begin, const char* end, const char* readable_end, char* to, const char* room_end) {
    const std::ptrdiff_t size = end - begin;
    const std::ptrdiff_t room = std::min(readable_end - begin, room_end - to);
    if (size <= 16 && room >= 16)
        std::memcpy(to, begin, 16);
    else if (size <= 32 && room >= 32)
        std::memcpy(to, begin, 32);
    else
        std::memcpy(to, begin, static_cast<std::size_t>(size));
    return to + size;
}

// Writes the text without its references and returns the end. There is room for the text with them.
char* compose(const usual_element& element, char* to) {
    const char* at = element.text.data;
    const char* const end = at + element.text.size;
    const char* const room_end = to + element.text.size;
    for (std::size_t i = 0; i != element.reference_count; ++i) {
        const usual_element::reference& one = element.references[i];
        to = copy(at, one.begin, element.last, to, room_end);
        *to++ = one.byte;
        at = one.begin + one.size;
    }
    return copy(at, end, element.last, to, room_end);
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

// Sets the strings of the node.
void set_strings(const usual_element& element, xml_stream_parser::node& made) {
    set(made.name, element.name, element.last);
    for (std::size_t i = 0; i != element.attribute_count; ++i) {
        const usual_element::attribute& one = element.attributes[i];
        made.attributes.emplace_back();
        auto& added = made.attributes.back();
        set_exactly(added.first, one.name, one.equals, element.last);
        set_exactly(added.second, one.equals + 2, one.last, element.last);
    }
    if (element.reference_count != 0)
        set_composed(element, made.text);
    else if (!element.text.empty())
        set(made.text, element.text, element.last);
}

}  // namespace

// If memory runs out, the queue is left as it was.
void stream_nodes::append_whole(const usual_element& element, unsigned int line) {
    m_queue.emplace_back();
    node& made = m_queue.back();
    made.type = xml_stream_parser::no_error;
    made.ready = true;
    made.line = line;
    made.id = m_next_id;
    made.parent = m_ids.top();
    try {
        set_strings(element, made);
    } catch (...) {
        m_queue.pop_back();
        throw;
    }
    ++m_next_id;
    m_attribute_names.clear();
}

}  // namespace detail
}  // namespace parser
}  // namespace TOVA_2_18
