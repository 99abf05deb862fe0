/// @file
/// The six entities that both parsers know.
///
///     char byte;
///     if (const std::size_t size = size_of_entity(at_ampersand, byte))
///         text.push_back(byte), at_ampersand += size;
///
/// Functions without state, which any number of threads may call.
#pragma once

#include "parser/equal_bytes.hpp"

#include <cstddef>

namespace TOVA_2_18 {
namespace parser {
namespace detail {

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
