/// Character classes of configuration keys and texts.
#pragma once

#include <tova/abi.hpp>

namespace TOVA_2_18 {
namespace config {

/// Whether a character separates two segments of a key: `.`, `/` or `\`.
TOVA_API bool isConfigDotSlash(char character);

/// Whether a character is a blank, a tab, a line feed or a carriage return.
TOVA_API bool isConfigWhite(char character);

/// Whether a character is a blank. Tabs and line ends are tokens of their own.
TOVA_API bool isConfigSpace(char character);

/// What the C library's `isalpha` and `isdigit` say of the character in the process's current
/// locale. They are given a `char` with its sign.
TOVA_API bool isConfigAlpha(char character);
TOVA_API bool isConfigDigit(char character);

/// Whether a character is a carriage return, the byte 0 or one of `" +-*^/%=;(),<>~&|{}[]?$"`, line
/// feed and tab. The tokenizer doesn't ask this; it is there for callers.
TOVA_API bool isConfigDelim(char character);

}  // namespace config
}  // namespace TOVA_2_18
