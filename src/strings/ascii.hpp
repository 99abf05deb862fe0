/// @file
/// Classes of single bytes that no locale changes.
///
/// The tokenizers below `parser` and others ask these questions for every byte of a document, and
/// the answer must not depend on `setlocale`:
///
///     detail::is_white_space('\r')      // true
///     detail::is_white_space('\v')      // false, unlike std::isspace
///     detail::is_ascii_letter('\xE4')   // false, whatever the locale
///
/// A class that follows the locale is asked for by `strings/ctype.hpp` or by the C library's own
/// functions. The functions read nothing but their argument, so any number of threads may call
/// them.
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
