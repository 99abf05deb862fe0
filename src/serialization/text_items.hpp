/// @file
/// Reading the items of the text encoding, one step at a time.
///
/// `serialize_text_buf` reads one item per call. The parser of the labeled buffer reads groups that
/// are nested in the content of others, and works on them in place, as runs of bytes.
///
/// The functions have no state; the caller owns the content and the position.
#pragma once

#include <tova/generic/convert/str_to_x.hpp>

#include "serialization/new_string.hpp"

#include <cstddef>
#include <string>

namespace TOVA_2_18 {
namespace serialization {
namespace detail {

// The last byte of each item.
const char item_separator = 0x01;

// A part of the content, without a copy of its bytes.
struct byte_run {
    const char* begin;
    std::size_t length;

    std::string as_string() const { return new_string(begin, length); }
};

// Returns the field up to the next separator and moves the position past that separator, or to npos
// if there is none. At npos the field is empty, which parses as 0. Raises `std::out_of_range` if
// the position is past the end; the position is already npos then.
byte_run next_field(const byte_run& content, std::size_t& position);

// Returns as many bytes as the length field says, or as many as the content has, and moves the
// position past them and their separator.
//
// Contract: the separator is skipped by addition, without examining it, and the sum wraps. From
// npos (the length field had no separator) a length of 0 leads to position 0, which is why reading
// a string at the end starts over. Raises `std::out_of_range` if the length isn't 0 and the
// position is past the end; the position has already moved then.
byte_run next_bytes(const byte_run& content, std::size_t& position, int length);

// Both of the above: reads a string item.
byte_run next_string(const byte_run& content, std::size_t& position);

// A field as a number, with the prefixes that the parser detects. An empty field is 0 and is never
// passed to the parser: the signed ones take a length of 0 to mean "up to the terminator", and a
// field has none.
template <typename Number>
Number as_integer(const byte_run& field,
                  Number (*parse)(const char*, unsigned long, types::radix_t::base, bool)) {
    if (field.length == 0)
        return 0;
    return parse(field.begin, field.length, types::radix_t::detect, false);
}

// npos is past the end of any content.
inline bool at_end(const byte_run& content, std::size_t position) {
    return position >= content.length;
}

}  // namespace detail
}  // namespace serialization
}  // namespace TOVA_2_18
