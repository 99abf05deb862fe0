/// @file
/// The character classes of configuration keys and values.
///
///     if (isConfigDotSlash(key[i]))
///         ...  // a segment of the key ends here
///
/// Any thread may ask. `isConfigAlpha` and `isConfigDigit` follow the locale of the process.
#pragma once

#include <tova/abi.hpp>

namespace TOVA_2_18 {
namespace config {

/// Whether a character separates two segments of a key: `.`, `/` or `\`.
TOVA_API bool isConfigDotSlash(char character);

/// Whether a character is a space, a tab, a line feed or a carriage return.
TOVA_API bool isConfigWhite(char character);

/// Whether a character is a space. Tabs and line ends are tokens of their own.
TOVA_API bool isConfigSpace(char character);

/// What the C library's `isalpha` and `isdigit` return for the character, passed as a signed
/// `char`, in the process's current locale.
TOVA_API bool isConfigAlpha(char character);
TOVA_API bool isConfigDigit(char character);

/// Whether a character is a space, a tab, a line feed, a carriage return, the byte 0 or one of
/// `+-*^/%=;(),<>~&|{}[]?$`. The tokenizer doesn't use this; it is here for callers.
TOVA_API bool isConfigDelim(char character);

}  // namespace config
}  // namespace TOVA_2_18
