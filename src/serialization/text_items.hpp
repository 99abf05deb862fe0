// The steps of reading text items, for the text buffer and for the labelled buffer's parser.
#pragma once

#include <cstddef>
#include <string>

#include <tova/abi.hpp>

namespace TOVA_2_18 {
namespace serialization {
namespace detail {

// Closes each item of the text encoding.
const char item_separator = 0x01;

// A run of bytes of a content, not a copy of them.
struct byte_run {
    const char* begin;
    std::size_t length;

    std::string as_string() const { return std::string(begin, length); }
};

// The field up to the next separator, and the position behind that separator; npos if there is
// none. At npos the field is empty, which parses as 0. Raises `std::out_of_range` if the position
// is behind the end, with the position at npos already.
byte_run next_field(const byte_run& content, std::size_t& position);

// The bytes that a length field promises at the position, as far as the content has them, and the
// position behind them and their separator.
//
// Contract: the separator is skipped by the sum, unseen, and the sum wraps: a position of npos (the
// length field was not closed) and a length of 0 give position 0. Raises `std::out_of_range` if the
// length isn't 0 and the position is behind the end, with the position moved already.
byte_run next_bytes(const byte_run& content, std::size_t& position, int length);

// Both of the above: a string item.
byte_run next_string(const byte_run& content, std::size_t& position);

// A field as the length of a string, or as any 32-bit number.
int as_int32(const byte_run& field);

inline bool at_end(const byte_run& content, std::size_t position) {
    return position == std::string::npos || position >= content.length;
}

}  // namespace detail
}  // namespace serialization
}  // namespace TOVA_2_18
