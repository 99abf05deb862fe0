/// @file
/// What the comparisons of `code_page` with other implementations convert: single bytes, pairs of
/// bytes and code points, each in a string of its own.
#pragma once

#include <tova/strings/code_page.hpp>

#include <string>
#include <vector>

namespace code_page_units {

using page_type = tova::strings::code_page;

inline std::string hexadecimal(const std::string& bytes) {
    const char digits[] = "0123456789ABCDEF";
    std::string result;
    for (const char byte : bytes) {
        result += digits[static_cast<unsigned char>(byte) / 16];
        result += digits[static_cast<unsigned char>(byte) % 16];
    }
    return result;
}

/// Four digits, without "U+".
inline std::string code_point_name(unsigned point) {
    return hexadecimal({static_cast<char>(point >> 8), static_cast<char>(point)});
}

inline bool is_surrogate(unsigned point) {
    return point >= 0xD800 && point < 0xE000;
}

/// The UTF-8 of a code point up to U+FFFF.
inline std::string utf8(unsigned point) {
    const auto byte = [](unsigned value) { return static_cast<char>(value); };
    if (point < 0x80)
        return {byte(point)};
    if (point < 0x800)
        return {byte(0xC0 | point >> 6), byte(0x80 | (point & 0x3F))};
    return {byte(0xE0 | point >> 12), byte(0x80 | (point >> 6 & 0x3F)),
            byte(0x80 | (point & 0x3F))};
}

/// Each byte, and each pair of bytes for UTF-8, for the four East Asian pages, and for pages 1255
/// and 1258, which compose letters and marks.
inline std::vector<std::string> inputs_of(int page) {
    std::vector<std::string> result;
    for (int byte = 0; byte < 256; ++byte)
        result.emplace_back(1, static_cast<char>(byte));
    if (page > 950 && page != 1255 && page != 1258)
        return result;
    for (int lead = 0; lead < 256; ++lead)
        for (int trail = 0; trail < 256; ++trail)
            result.push_back({static_cast<char>(lead), static_cast<char>(trail)});
    return result;
}

/// A line end follows the bytes, because pages 1255 and 1258 lose a letter at the end. It is
/// removed from the result, unless it became part of an invalid sequence.
inline std::string decoded(const page_type& page, const std::string& bytes) {
    std::string result = page.as_utf8(bytes + "\n");
    if (!result.empty() && result.back() == '\n')
        result.pop_back();
    return result;
}

inline std::string encoded(const page_type& page, unsigned point) {
    return page.encode(tova::strings::ustring8(utf8(point)));
}

}  // namespace code_page_units
