#include <tova/config/characters.hpp>

#include <cctype>
#include <cstring>

namespace TOVA_2_18 {
namespace config {

bool isConfigDotSlash(char character) {
    return character == '.' || character == '/' || character == '\\';
}

bool isConfigWhite(char character) {
    return character == ' ' || character == '\t' || character == '\n' || character == '\r';
}

bool isConfigSpace(char character) {
    return character == ' ';
}

// The C library's classes take a `char` with its sign: their tables reach from -128 to 255.
bool isConfigAlpha(char character) {
    return std::isalpha(character) != 0;
}
bool isConfigDigit(char character) {
    return std::isdigit(character) != 0;
}

bool isConfigDelim(char character) {
    // Contract: the search meets the terminator as well, so the byte 0 is a delimiter.
    return std::strchr(" +-*^/%=;(),<>~&|{}\n\t[]?$", character) != nullptr || character == '\r';
}

}  // namespace config
}  // namespace TOVA_2_18
