/// @file
/// Declarations shared by message items, messages and value formatting.
///
/// All functions append to the caller's buffer, so a message is rendered into one string without a
/// temporary for each item. Free functions without state: any number of threads may render at once.
#pragma once

#include <tova/generic/varg_list.hpp>
#include <tova/i18n/message_item.hpp>
#include <tova/strings/ustring.hpp>
#include <tova/types/variant.hpp>

#include "i18n/text_buffer.hpp"

#include <cstddef>

namespace TOVA_2_18 {
namespace i18n {
namespace detail {

/// Separates the name and the tokens of the format string in an item's data.
const char data_separator = '\x01';

/// Returned by the published functions for an invalid format string, and for an integer that
/// doesn't fit its field.
///
/// Contract: a value whose text happens to be the same ("-0", from -0.3 without decimals) cannot be
/// distinguished from it, so an item shows both as "?invalid?".
const char failure_marker[] = "-0";

/// A run of characters in an item's data, not owned. The character after it is a separator or the
/// terminator of the whole string.
struct token {
    const char* text;
    std::size_t size;
};

/// The size of the name in an item's data, which ends at the first separator.
std::size_t name_size(const strings::ustring8& data);

/// The format string in an item's data, after a name of the given size.
inline token format_after(const strings::ustring8& data, std::size_t name) {
    const std::size_t begin = name == data.size() ? name : name + 1;
    return {data.c_str() + begin, data.size() - begin};
}

/// Appends the text that `format_value` returns. On failure it appends nothing and returns false,
/// so the caller decides what to show.
bool append_value(text_buffer& text, message_item::type_t type, const types::variant& value,
                  token format);

/// Appends an integer or a floating-point number that has no format string. Its text never reads
/// like the failure marker. Returns false for the other types, and appends nothing.
bool append_plain_number(text_buffer& text, message_item::type_t type, const types::variant& value);

/// Appends the text of an item, "?invalid?" included.
void append_item(text_buffer& text, message_item::type_t type, const strings::ustring8& data,
                 const generic::varg_list& args);

}  // namespace detail
}  // namespace i18n
}  // namespace TOVA_2_18
