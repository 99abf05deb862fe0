#include <tova/config/characters.hpp>

#include <cstring>

#include "config/character_classes.hpp"

namespace TOVA_2_18 {
namespace config {

bool isConfigDotSlash(char character) {
    return detail::is_separator(character);
}

bool isConfigWhite(char character) {
    return character == ' ' || character == '\t' || character == '\n' || character == '\r';
}

bool isConfigSpace(char character) {
    return detail::is_blank(character);
}

bool isConfigAlpha(char character) {
    return detail::is_letter(character);
}

bool isConfigDigit(char character) {
    return detail::is_digit(character);
}

bool isConfigDelim(char character) {
    // Contract: the search meets the terminator as well, so the byte 0 is a delimiter.
    return std::strchr(" +-*^/%=;(),<>~&|{}\n\t[]?$", character) != nullptr || character == '\r';
}

}  // namespace config
}  // namespace TOVA_2_18
