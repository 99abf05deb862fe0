/// @file
/// A whole element of a file that `xml_stream_parser` reads, found by the scanner and made a node.
///
///     usual_element element;
///     if (scanner.find_usual_element(element))
///         nodes.append_whole(element, line);
///
/// A plain value that refers to the data in the buffer. It belongs to one thread.
#pragma once

#include "parser/equal_bytes.hpp"
#include "parser/piece.hpp"

#include <cstddef>

namespace TOVA_2_18 {
namespace parser {
namespace detail {

/// An element in its usual spelling that is complete in the data: attributes without references or
/// whitespace around the `=`, and text or nothing in it.
struct usual_element {
    static const std::size_t most_attributes = 8;

    /// Pointers into the data, so that making an element initializes nothing.
    struct attribute {
        const char* name;
        const char* equals;
        const char* last;  // the closing quote
    };

    piece name;
    attribute attributes[most_attributes];
    std::size_t attribute_count;
    piece text;
    bool has_references;  // in the text, all of them entities
    bool is_empty_tag;    // `<name/>`
    unsigned int lines;   // line feeds in whitespace
    const char* last;     // the `>` that ends the element
};

/// The size of the entity at the '&', and the byte that it means. 0 for any other reference. As
/// many bytes as the longest entity has must be there.
inline std::size_t size_of_entity(const char* begin, char& result) {
    const auto is = [begin, &result](const char* text, std::size_t size, char byte) {
        result = byte;
        return have_equal_bytes(begin, text, size) ? size : 0;
    };
    switch (begin[1]) {
    case 'l':
        return is("&lt;", 4, '<');
    case 'g':
        return is("&gt;", 4, '>');
    case 'q':
        return is("&quot;", 6, '"');
    case 'n':
        return is("&nbsp;", 6, ' ');
    case 'a':
        return begin[2] == 'm' ? is("&amp;", 5, '&') : is("&apos;", 6, '\'');
    default:
        return 0;
    }
}

}  // namespace detail
}  // namespace parser
}  // namespace TOVA_2_18
