/// @file
/// Classes of single bytes that no locale changes.
///
/// The tokenizers of `parser` and others classify every byte of a document, and the result must not
/// depend on `setlocale`:
///
///     detail::is_white_space('\r')      // true
///     detail::is_white_space('\v')      // false, unlike std::isspace
///     detail::is_ascii_letter('\xE4')   // false, whatever the locale
///
/// For classes that follow the locale, use `strings/ctype.hpp` or the C library's own functions.
/// These functions read only their argument, so any number of threads may call them.
#pragma once

namespace TOVA_2_18 {
namespace strings {
namespace detail {

/// The whitespace of XML: space, tab, carriage return and line feed.
inline bool is_white_space(char byte) {
    return byte == ' ' || byte == '\t' || byte == '\r' || byte == '\n';
}

inline bool is_ascii_letter(char byte) {
    return (byte >= 'a' && byte <= 'z') || (byte >= 'A' && byte <= 'Z');
}

inline bool is_ascii_digit(char byte) {
    return byte >= '0' && byte <= '9';
}

inline bool is_ascii_hexadecimal_digit(char byte) {
    return is_ascii_digit(byte) || (byte >= 'a' && byte <= 'f') || (byte >= 'A' && byte <= 'F');
}

}  // namespace detail
}  // namespace strings
}  // namespace TOVA_2_18
