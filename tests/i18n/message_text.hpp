/// @file
/// Items and format strings as spelled in the tests: "|" means the separator byte 0x01.
#pragma once

#include <tova/i18n/message_item.hpp>
#include <tova/strings/ustring.hpp>

#include <algorithm>
#include <string>

namespace test_support {

inline tova::strings::ustring8 with_separators(std::string text) {
    std::replace(text.begin(), text.end(), '|', '\x01');
    return tova::strings::ustring8(text);
}

/// An item of any type, including unknown ones.
inline tova::i18n::message_item item(unsigned int type, const std::string& data) {
    return tova::i18n::message_item(with_separators(data),
                                    static_cast<tova::i18n::message_item::type_t>(type));
}

}  // namespace test_support
