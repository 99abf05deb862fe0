/// @file
/// A whole element of a file that `xml_stream_parser` reads, found by the scanner and made a node.
///
///     usual_element element;
///     if (scanner.find_usual_element(element))
///         nodes.append_whole(element, line);
///
/// A plain value that refers to the data in the buffer. It belongs to one thread.
#pragma once

#include "parser/piece.hpp"

#include <cstddef>

namespace TOVA_2_18 {
namespace parser {
namespace detail {

/// An element in its usual spelling that is complete in the data: attributes without references or
/// whitespace around the `=`, and text or nothing in it.
struct usual_element {
    static const std::size_t most_attributes = 8;
    static const std::size_t most_references = 16;

    /// Pointers into the data, so that making an element initializes nothing.
    struct attribute {
        const char* name;
        const char* equals;
        const char* last;  // the closing quote
    };

    struct reference {
        const char* begin;
        std::size_t size;
        char byte;  // what it means
    };

    piece name;
    attribute attributes[most_attributes];
    std::size_t attribute_count;
    piece text;
    reference references[most_references];  // in the text, all of them entities
    std::size_t reference_count;
    bool is_empty_tag;   // `<name/>`
    unsigned int lines;  // line feeds in whitespace
    const char* last;    // the `>` that ends the element
};

}  // namespace detail
}  // namespace parser
}  // namespace TOVA_2_18
