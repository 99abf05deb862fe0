// Paths for the tests of files and directories, in each width.
#pragma once

#include <string>

#include <tova/strings/unicode.hpp>
#include <tova/strings/ustring.hpp>

namespace test_support {

template <typename Path>
Path path_text(const std::string& utf8);

template <>
inline TOVA_2_18::strings::ustring8 path_text(const std::string& utf8) {
    return utf8;
}
template <>
inline TOVA_2_18::strings::ustring16 path_text(const std::string& utf8) {
    return TOVA_2_18::strings::utf8_to_utf16(utf8);
}
template <>
inline TOVA_2_18::strings::ustring32 path_text(const std::string& utf8) {
    return TOVA_2_18::strings::utf8_to_utf32(utf8);
}

// Paths that are no text: their UTF-8 reads "-1".
inline TOVA_2_18::strings::ustring16 bad_utf16() {
    return TOVA_2_18::strings::ustring16(1, static_cast<unsigned short>(0xD800));
}
inline TOVA_2_18::strings::ustring32 bad_utf32() {
    return TOVA_2_18::strings::ustring32(1, static_cast<wchar_t>(0xD800));
}

}  // namespace test_support
