#include <tova/config/config_token.hpp>

#include <gtest/gtest.h>

namespace {

using tova::config::config_token;

TEST(ConfigToken, NamesItsTypeAndShowsTheTextOfFourTypes) {
    const struct {
        int type;
        const char* name;
    } cases[] = {
        {-1, "unknown type"},
        {0, "T_VAR :[word]"},
        {1, "T_NUM"},
        {2, "T_NEWLINE"},
        {3, "T_TABCHAR"},
        {4, "T_UNKNOWN:[word]"},
        {5, "T_END"},
        {6, "T_SPACE"},
        {7, "T_EQ"},
        {8, "T_EQEQ"},
        {9, "T_GT"},
        {10, "T_GTEQ"},
        {11, "T_LT"},
        {12, "T_LTEQ"},
        {13, "T_COLON"},
        {14, "T_COLONEQ"},
        {15, "T_POUND"},
        {16, "T_FSFS"},
        {17, "T_DOT"},
        {18, "T_SBRACKET"},
        {19, "T_EBRACKET"},
        {20, "T_PLUS"},
        {21, "T_MINUS"},
        {22, "T_PLUSEQ"},
        {23, "T_MINUSEQ"},
        {24, "unknown type"},
        {25, "unknown type"},
        {26, "T_TIMES"},
        {27, "T_DIV"},
        {28, "T_TIMESEQ"},
        {29, "T_DIVEQ"},
        {30, "T_STRING:[word]"},
        {31, "T_NON_ALPHA_NUM:[word]"},
        {32, "unknown type"},
        {2147483647, "unknown type"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.type);
        config_token token;
        token.text = "word";
        token.type = static_cast<config_token::tok_types>(c.type);
        EXPECT_EQ(c.name, token.CvtTokStr());
    }
}

TEST(ConfigToken, NumbersItsTypes) {
    EXPECT_EQ(0, config_token::T_VAR);
    EXPECT_EQ(1, config_token::T_NUM);
    EXPECT_EQ(2, config_token::T_NEWLINE);
    EXPECT_EQ(3, config_token::T_TABCHAR);
    EXPECT_EQ(4, config_token::T_UNKNOWN);
    EXPECT_EQ(5, config_token::T_END);
    EXPECT_EQ(6, config_token::T_SPACE);
    EXPECT_EQ(7, config_token::T_EQ);
    EXPECT_EQ(8, config_token::T_EQEQ);
    EXPECT_EQ(9, config_token::T_GT);
    EXPECT_EQ(10, config_token::T_GTEQ);
    EXPECT_EQ(11, config_token::T_LT);
    EXPECT_EQ(12, config_token::T_LTEQ);
    EXPECT_EQ(13, config_token::T_COLON);
    EXPECT_EQ(14, config_token::T_COLONEQ);
    EXPECT_EQ(15, config_token::T_POUND);
    EXPECT_EQ(16, config_token::T_FSFS);
    EXPECT_EQ(17, config_token::T_DOT);
    EXPECT_EQ(18, config_token::T_SBRACKET);
    EXPECT_EQ(19, config_token::T_EBRACKET);
    EXPECT_EQ(20, config_token::T_PLUS);
    EXPECT_EQ(21, config_token::T_MINUS);
    EXPECT_EQ(22, config_token::T_PLUSEQ);
    EXPECT_EQ(23, config_token::T_MINUSEQ);
    EXPECT_EQ(24, config_token::T_COMMENT_END);
    EXPECT_EQ(25, config_token::T_UNUSED);
    EXPECT_EQ(26, config_token::T_TIMES);
    EXPECT_EQ(27, config_token::T_DIV);
    EXPECT_EQ(28, config_token::T_TIMESEQ);
    EXPECT_EQ(29, config_token::T_DIVEQ);
    EXPECT_EQ(30, config_token::T_STRING);
    EXPECT_EQ(31, config_token::T_NON_ALPHA_NUM);
}

}  // namespace
