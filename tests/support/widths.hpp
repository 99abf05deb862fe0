// The three string widths for typed tests: each test body runs once per width.
#pragma once

#include <tova/strings/ustring.hpp>

#include <gtest/gtest.h>

#include <cstddef>
#include <string>
#include <type_traits>

namespace test_support {

using all_widths =
    ::testing::Types<tova::strings::ustring8, tova::strings::ustring16, tova::strings::ustring32>;

struct width_name {
    template <typename String>
    static std::string GetName(int) {
        return "ustring" + std::to_string(8 * sizeof(typename String::value_type));
    }
};

// The three widths and the two standard strings, for operations that accept all five.
using text_types = ::testing::Types<std::string, std::wstring, tova::strings::ustring8,
                                    tova::strings::ustring16, tova::strings::ustring32>;

struct text_type_name {
    template <typename String>
    static std::string GetName(int index) {
        return index == 0 ? "string" : index == 1 ? "wstring" : width_name::GetName<String>(index);
    }
};

// An ASCII literal as a string of the given type, one unit per character. Embedded NULs are kept.
template <typename String, std::size_t Size>
String text(const char (&literal)[Size]) {
    String result;
    for (std::size_t i = 0; i + 1 < Size; ++i)
        result.push_back(static_cast<typename String::value_type>(literal[i]));
    return result;
}

// The same for ASCII characters up to their terminator. It is a template so that overload
// resolution prefers the function above for literals.
template <typename String, typename Pointer>
typename std::enable_if<std::is_same<Pointer, const char*>::value, String>::type
text(const Pointer& characters) {
    String result;
    for (const char* c = characters; *c != '\0'; ++c)
        result.push_back(static_cast<typename String::value_type>(*c));
    return result;
}

}  // namespace test_support
