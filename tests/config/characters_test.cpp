#include <tova/config/characters.hpp>

#include <gtest/gtest.h>

#include <string>

namespace {

using namespace tova::config;

// Tests all 256 bytes; those in `members` are in the class.
void expect_exactly(bool (*test)(char), const std::string& members) {
    for (int byte = 0; byte < 256; ++byte) {
        SCOPED_TRACE(byte);
        const char character = static_cast<char>(byte);
        EXPECT_EQ(members.find(character) != std::string::npos, test(character));
    }
}

TEST(IsConfigDotSlash, IsTrueForTheThreeSeparatorsOnly) {
    expect_exactly(isConfigDotSlash, "./\\");
}

TEST(IsConfigWhite, IsTrueForSpaceTabAndBothLineEndCharacters) {
    expect_exactly(isConfigWhite, " \t\n\r");
}

TEST(IsConfigSpace, IsTrueForTheSpaceOnly) {
    expect_exactly(isConfigSpace, " ");
}

TEST(IsConfigAlpha, IsTrueForTheLettersOfTheCLocale) {
    expect_exactly(isConfigAlpha, "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz");
}

TEST(IsConfigDigit, IsTrueForTheTenDigits) {
    expect_exactly(isConfigDigit, "0123456789");
}

TEST(IsConfigDelim, IsTrueForTheDelimitersTheCarriageReturnAndTheByteZero) {
    expect_exactly(isConfigDelim, std::string(" +-*^/%=;(),<>~&|{}\n\t[]?$\r\0", 28));
}

}  // namespace
