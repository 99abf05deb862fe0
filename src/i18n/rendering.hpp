// What message items, messages and value formatting share: text is appended to a string of the
// caller, so that a message is rendered without a temporary for each of its items.
#pragma once

#include <string>

#include <tova/generic/varg_list.hpp>
#include <tova/i18n/message_item.hpp>
#include <tova/strings/ustring.hpp>
#include <tova/types/variant.hpp>

namespace TOVA_2_18 {
namespace i18n {
namespace detail {

// Separates the name and the tokens of the format string within an item's data.
const char data_separator = '\x01';

// Appends what `format_value` gives. Answers false for a faulty format string; `text` then ends
// where it ended before.
bool append_value(std::string& text, message_item::type_t type, const types::variant& value,
                  const strings::ustring8& data);

// Appends the text of an item, "?invalid?" included.
void append_item(std::string& text, message_item::type_t type, const strings::ustring8& data,
                 const generic::varg_list& args);

}  // namespace detail
}  // namespace i18n
}  // namespace TOVA_2_18
