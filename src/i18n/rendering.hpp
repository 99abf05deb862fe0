/// @file
/// Declarations shared by message items, messages and value formatting.
///
/// All functions append to the caller's string, so a message is rendered into one string without a
/// temporary for each item. Free functions without state: any number of threads may render at once.
#pragma once

#include <tova/generic/varg_list.hpp>
#include <tova/i18n/message_item.hpp>
#include <tova/strings/ustring.hpp>
#include <tova/types/variant.hpp>

#include <string>

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

/// Appends the text that `format_value` returns. On failure it appends nothing and returns false,
/// so the caller decides what to show.
bool append_value(std::string& text, message_item::type_t type, const types::variant& value,
                  const strings::ustring8& data);

/// Appends the text of an item, "?invalid?" included.
void append_item(std::string& text, message_item::type_t type, const strings::ustring8& data,
                 const generic::varg_list& args);

}  // namespace detail
}  // namespace i18n
}  // namespace TOVA_2_18
