#include <tova/config/characters.hpp>

#include "config/character_classes.hpp"

#include <cstring>

namespace TOVA_2_18 {
namespace config {

bool isConfigDotSlash(char character) {
    return detail::is_separator(character);
}

bool isConfigWhite(char character) {
    return character == ' ' || character == '\t' || character == '\n' || character == '\r';
}

bool isConfigSpace(char character) {
    return detail::is_space(character);
}

bool isConfigAlpha(char character) {
    return detail::is_letter(character);
}

bool isConfigDigit(char character) {
    return detail::is_digit(character);
}

bool isConfigDelim(char character) {
    // Contract: the search includes the terminator, so the byte 0 is a delimiter, too.
    return std::strchr(" +-*^/%=;(),<>~&|{}\n\t[]?$", character) != nullptr || character == '\r';
}

}  // namespace config
}  // namespace TOVA_2_18
