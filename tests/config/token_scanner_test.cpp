// Tests the tokenizer through its published form.
#include <tova/config/base_config_item.hpp>

#include "config/listing.hpp"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

using namespace config_support;
using tova::config::config_token;

// The tokens of a text, each as "returned/stored start-end text".
lines tokens(const ustring8& text) {
    plain_item item;
    lines result;
    unsigned position = 0;
    config_token token;
    token.text = "before";
    for (;;) {
        const unsigned at = position;
        const int returned = item.get_token(text, position, token);
        if (returned == config_token::T_END)
            break;
        EXPECT_EQ(at, token.start);
        EXPECT_EQ(position, token.end);
        EXPECT_LT(at, position);
        std::string kind = std::to_string(returned);
        if (returned != token.type)
            kind += "/" + std::to_string(token.type);
        result.push_back(kind + " " + std::to_string(token.start) + "-" +
                         std::to_string(token.end) + " " + token.text);
    }
    EXPECT_EQ(config_token::T_END, token.type);
    EXPECT_EQ(text.size(), position);
    return result;
}

struct token_case {
    const char* text;
    lines expected;
};

void expect_tokens(const std::vector<token_case>& cases) {
    for (const token_case& c : cases) {
        SCOPED_TRACE(c.text);
        EXPECT_EQ(c.expected, tokens(c.text));
    }
}

TEST(TokenScanner, ReadsEveryType) {
    expect_tokens({
        {"", {}},
        {"abc", {"0 0-3 abc"}},
        {"123", {"1 0-3 123"}},
        {"\n", {"2 0-1 \n"}},
        {"\r\n", {"2 0-2 \n"}},
        {"\t", {"3 0-1 \t"}},
        {"\r", {"4 0-1 \r"}},
        {"   ", {"6 0-3 before"}},
        {"=", {"7 0-1 ="}},
        {"==", {"8 0-2 =="}},
        {">", {"9 0-1 >"}},
        {">=", {"10 0-2 >="}},
        {"<", {"11 0-1 <"}},
        {"<=", {"12 0-2 <="}},
        {":", {"13 0-1 :"}},
        {":=", {"14 0-2 :="}},
        {"#", {"15 0-1 #"}},
        {"//", {"16 0-2 //"}},
        {".", {"17 0-1 ."}},
        {"[", {"18 0-1 ["}},
        {"]", {"19 0-1 ]"}},
        {"+", {"20 0-1 +"}},
        {"-", {"21 0-1 -"}},
        {"+=", {"22 0-2 +="}},
        {"-=", {"23 0-2 -="}},
        {"*/", {"16/24 0-2 */"}},
        {"*", {"26 0-1 *"}},
        {"/", {"27 0-1 /"}},
        {"*=", {"28 0-2 *="}},
        {"/=", {"29 0-2 /="}},
        {"\"a b\"", {"30 0-5 a b"}},
        {"_", {"31 0-1 _"}},
    });
}

TEST(TokenScanner, TakesTheLongestTokenFromTheLeft) {
    expect_tokens({
        {"a=1", {"0 0-1 a", "7 1-2 =", "1 2-3 1"}},
        {"abc_1", {"0 0-3 abc", "31 3-4 _", "1 4-5 1"}},
        {"a1b", {"0 0-1 a", "1 1-2 1", "0 2-3 b"}},
        {"1.5", {"1 0-1 1", "17 1-2 .", "1 2-3 5"}},
        {"-5e+3", {"21 0-1 -", "1 1-2 5", "0 2-3 e", "20 3-4 +", "1 4-5 3"}},
        {"===", {"8 0-2 ==", "7 2-3 ="}},
        {"////", {"16 0-2 //", "16 2-4 //"}},
        {"///", {"16 0-2 //", "27 2-3 /"}},
        {"/*", {"27 0-1 /", "26 1-2 *"}},
        {"**/", {"26 0-1 *", "16/24 1-3 */"}},
        {"*//", {"16/24 0-2 */", "27 2-3 /"}},
        {"\t\t", {"3 0-1 \t", "3 1-2 \t"}},
        {"\n\n", {"2 0-1 \n", "2 1-2 \n"}},
        {"\r\r\n", {"4 0-1 \r", "2 1-3 \n"}},
        {"[]", {"18 0-1 [", "19 1-2 ]"}},
        {"..", {"17 0-1 .", "17 1-2 ."}},
        {"##", {"15 0-1 #", "15 1-2 #"}},
        {"<>", {"11 0-1 <", "9 1-2 >"}},
        {"\xC3\xA4", {"31 0-1 \xC3", "31 1-2 \xA4"}},
        {"',;!", {"31 0-1 '", "31 1-2 ,", "31 2-3 ;", "31 3-4 !"}},
    });
}

TEST(TokenScanner, KeepsTheTextOfThePreviousTokenAtSpaces) {
    EXPECT_EQ((lines{"0 0-1 a", "6 1-3 a", "0 3-4 b", "6 4-5 b"}), tokens("a  b "));
    EXPECT_EQ((lines{"30 0-3 x", "6 3-4 x"}), tokens("\"x\" "));
}

TEST(TokenScanner, KeepsABackslashInAStringAndTheByteAfterIt) {
    expect_tokens({
        {"\"\"", {"30 0-2 "}},
        {"\"a\\\"b\"", {"30 0-6 a\\\"b"}},
        {"\"\\\\\"x", {"30 0-4 \\\\", "0 4-5 x"}},
        {"\"\\n\"", {"30 0-4 \\n"}},
        {"\"a#//=[\n\r\t\"", {"30 0-11 a#//=[\n\r\t"}},
        // Without a closing quote the string runs to the end.
        {"\"", {"30 0-1 "}},
        {"\"abc", {"30 0-4 abc"}},
        {"\"abc\\", {"30 0-5 abc\\"}},
        {"\"abc\\\"", {"30 0-6 abc\\\""}},
        {"a\"b\"c", {"0 0-1 a", "30 1-4 b", "0 4-5 c"}},
    });
}

TEST(TokenScanner, TreatsANulByteLikeAnyOtherCharacter) {
    plain_item item;
    const ustring8 text("=\0=\"\0\"", 6);
    unsigned position = 0;
    config_token token;
    EXPECT_EQ(config_token::T_EQ, item.get_token(text, position, token));
    EXPECT_EQ(config_token::T_NON_ALPHA_NUM, item.get_token(text, position, token));
    EXPECT_EQ(std::string(1, '\0'), token.text);
    EXPECT_EQ(config_token::T_EQ, item.get_token(text, position, token));
    EXPECT_EQ(config_token::T_STRING, item.get_token(text, position, token));
    EXPECT_EQ(std::string(1, '\0'), token.text);
}

TEST(TokenScanner, ChangesOnlyTheTypeAtTheEnd) {
    plain_item item;
    config_token token;
    token.text = "kept";
    token.start = 11;
    token.end = 22;
    token.type = config_token::T_VAR;
    unsigned position = 3;
    EXPECT_EQ(config_token::T_END, item.get_token("abc", position, token));
    EXPECT_EQ(3u, position);
    EXPECT_EQ("kept", token.text);
    EXPECT_EQ(11u, token.start);
    EXPECT_EQ(22u, token.end);
    EXPECT_EQ(config_token::T_END, token.type);
    position = 4000000000u;
    EXPECT_EQ(config_token::T_END, item.get_token("abc", position, token));
    EXPECT_EQ(4000000000u, position);
}

// All pairs of bytes: the type of the first, and whether the second is part of the same token.
TEST(TokenScanner, SplitsEveryPairOfBytes) {
    const std::string singles = "]\n[.#\t<>=:+-/*\r";
    plain_item item;
    for (int first = 0; first < 256; ++first)
        for (int second = 0; second < 256; ++second) {
            const char a = static_cast<char>(first), b = static_cast<char>(second);
            const ustring8 text{a, b};
            const auto letter = [](char c) {
                return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
            };
            const auto digit = [](char c) { return c >= '0' && c <= '9'; };
            bool joined = a == '"' || (a == b && (a == ' ' || a == '/')) ||
                          (letter(a) && letter(b)) || (digit(a) && digit(b)) ||
                          (b == '=' && std::string("<>=:+-/*").find(a) != std::string::npos) ||
                          (a == '*' && b == '/') || (a == '\r' && b == '\n');
            unsigned position = 0;
            config_token token;
            const int type = item.get_token(text, position, token);
            ASSERT_EQ(joined ? 2u : 1u, position) << first << " " << second;
            if (letter(a)) {
                ASSERT_EQ(config_token::T_VAR, type);
            } else if (digit(a)) {
                ASSERT_EQ(config_token::T_NUM, type);
            } else if (a != ' ' && a != '"' && singles.find(a) == std::string::npos) {
                ASSERT_EQ(config_token::T_NON_ALPHA_NUM, type) << first;
            }
        }
}

}  // namespace
