#include <tova/strings/prefix.hpp>

#include <gtest/gtest.h>

namespace {

using namespace tova::strings;

TEST(BeginWith, ComparesAtThePosition) {
    const unsigned long last = static_cast<unsigned long>(-1);
    const struct {
        const char* text;
        unsigned long position;
        const char* prefix;
        bool expected;
    } cases[] = {
        {"abc", 0, "abc", true},
        {"abc", 0, "ab", true},
        {"abc", 1, "bc", true},
        {"abc", 2, "c", true},
        {"abc", 0, "b", false},
        {"abc", 1, "bd", false},
        {"abc", 0, "abcd", false},
        {"abc", 1, "bcd", false},
        {"abc", 3, "c", false},
        {"abc", 0, "ABC", false},
        // an empty prefix
        {"", 0, "", true},
        {"abc", 0, "", true},
        {"abc", 3, "", true},
        {"abc", 4, "", false},
        {"", 1, "", false},
        {"", 0, "a", false},
        // the sum is compared
        {"abc", last, "", false},
        {"", last, "", false},
        {"abc", last - 10, "abc", false},
        // and may wrap
        {"abc", last, "a", false},
        {"abc", last, "abc", false},
        {"abc", last - 1, "cab", false},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.text);
        SCOPED_TRACE(c.position);
        SCOPED_TRACE(c.prefix);
        EXPECT_EQ(c.expected, begin_with(c.text, c.position, c.prefix));
    }
}

TEST(BeginWith, TreatsNulBytesLikeAnyOther) {
    EXPECT_TRUE(begin_with(ustring8("a\0b", 3), 0, ustring8("a\0", 2)));
    EXPECT_FALSE(begin_with(ustring8("a\0b", 3), 0, ustring8("a\0c", 3)));
}

}  // namespace
