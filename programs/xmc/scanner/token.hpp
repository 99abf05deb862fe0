/// @file
/// The tokens of an XMC file, each with its place in the bytes.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace tova_programs::xmc {

/// Bytes of a file, from the first one to the one after the last.
struct span {
    std::uint32_t begin = 0;
    std::uint32_t end = 0;

    std::size_t size() const { return end - begin; }
};

/// The numbers are those of the library's token stream.
enum class token_kind : std::uint8_t {
    element_start,
    element_end,
    attribute_name,
    attribute_value,
    start_tag_end,
    comment,
    space,
    character
};

/// The value refers to the bytes of the file, or to a string of the scan if it differs from them.
///
///     token             bytes
///     element_start     `<name`
///     element_end       `</name`, or the `/>` of an empty element
///     attribute_value   without the quotes
///     start_tag_end     none, at the end of the tag
///     comment           from `<!--` to `-->`; its value begins with the whitespace before it
///     character         a piece of text, or a section from `<![CDATA[` to `]]>`
struct token {
    token_kind kind;
    span bytes;
    std::string_view value;
};

/// The kinds of errors that the library's XML parser reports. The numbers are the parser's.
enum class xml_error : std::uint8_t {
    none,
    unexpected_end,
    mismatched_end,
    no_root,
    no_header,
    unexpected_character,
    missing_quote,
    unknown_entity,
    missing_equals,
    attribute_redefined,
    data_after_root
};

/// An XML error, with the text and the line of the loader's message.
struct xml_problem {
    xml_error kind = xml_error::none;
    unsigned int line = 0;  ///< the loader's count, from 0 and without many line feeds
    std::string subject;
    span bytes;
    std::string element;  ///< the element that it is about, or empty
};

}  // namespace tova_programs::xmc
