// Item data and format strings as the tests write them.
#pragma once

#include <algorithm>
#include <string>

#include <tova/strings/ustring.hpp>

namespace test_support {

// The byte 0x01, which separates the tokens, stands as "|" in the tests.
inline TOVA_2_18::strings::ustring8 with_separators(std::string text) {
    std::replace(text.begin(), text.end(), '|', '\x01');
    return TOVA_2_18::strings::ustring8(text);
}

}  // namespace test_support
