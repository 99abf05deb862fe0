#include <tova/strings/replace.hpp>

#include <tova/strings/gh2.hpp>

#include "support/widths.hpp"

#include <gtest/gtest.h>

#include <string>

namespace {

using namespace tova::strings;
using test_support::text;

template <typename String>
class ReplaceAll : public ::testing::Test {};
TYPED_TEST_SUITE(ReplaceAll, test_support::text_types, test_support::text_type_name);

const struct {
    const char* text;
    const char* search;
    const char* replacement;
    unsigned int count;
    const char* expected;
} replace_cases[] = {
    {"", "a", "b", 0, ""},
    {"abc", "x", "y", 0, "abc"},
    {"abc", "abcd", "", 0, "abc"},
    // the same length
    {"abcabc", "b", "X", 2, "aXcaXc"},
    {"abab", "ab", "ba", 2, "baba"},
    {"aaa", "a", "a", 3, "aaa"},
    // shorter
    {"aaaa", "aa", "a", 2, "aa"},
    {"aaaaa", "aa", "a", 2, "aaa"},
    {"xabyabz", "ab", "", 2, "xyz"},
    {"abab", "ab", "", 2, ""},
    {"<<x>>", "<<", "<", 1, "<x>>"},
    // longer
    {"aa", "a", "aa", 2, "aaaa"},
    {"a.b.", ".", "...", 2, "a...b..."},
    {"-", "-", "---", 1, "---"},
    {"a&b", "&", "&amp;", 1, "a&amp;b"},
    // inserted units are not searched again, even together with what follows
    {"aab", "ab", "b", 1, "ab"},
    {"aabb", "ab", "a", 1, "aab"},
    {"xxyy", "xy", "xyx", 1, "xxyxy"},
};

TYPED_TEST(ReplaceAll, ReplacesFromTheBeginningAndCounts) {
    for (const auto& c : replace_cases) {
        SCOPED_TRACE(c.text);
        SCOPED_TRACE(c.search);
        TypeParam changed = text<TypeParam>(c.text);
        EXPECT_EQ(c.count,
                  replace_all(changed, text<TypeParam>(c.search), text<TypeParam>(c.replacement)));
        EXPECT_EQ(text<TypeParam>(c.expected), changed);
    }
}

TYPED_TEST(ReplaceAll, AnEmptySearchChangesNothing) {
    for (const char* replacement : {"", "x"}) {
        TypeParam changed = text<TypeParam>("abc");
        EXPECT_EQ(0u, replace_all(changed, TypeParam(), text<TypeParam>(replacement)));
        EXPECT_EQ(text<TypeParam>("abc"), changed);
        TypeParam empty;
        EXPECT_EQ(0u, replace_all(empty, TypeParam(), text<TypeParam>(replacement)));
        EXPECT_EQ(TypeParam(), empty);
    }
}

TYPED_TEST(ReplaceAll, TreatsNulUnitsLikeAnyOther) {
    TypeParam changed = text<TypeParam>("a\0b\0");
    EXPECT_EQ(2u, replace_all(changed, text<TypeParam>("\0"), text<TypeParam>("\0\0")));
    EXPECT_EQ(text<TypeParam>("a\0\0b\0\0"), changed);
}

// The same rule in its simplest form: in place, in quadratic time.
template <typename String>
unsigned int plainly_replace(String& text, const String& search, const String& replacement) {
    unsigned int count = 0;
    for (std::size_t at = text.find(search); at != String::npos;
         at = text.find(search, at + replacement.size())) {
        text.erase(at, search.size());
        text.insert(at, replacement);
        ++count;
    }
    return count;
}

// Every string of up to 6 letters a and b, with every search and replacement of up to 3.
TYPED_TEST(ReplaceAll, AgreesWithTheSimpleFormOnEveryShortString) {
    std::vector<TypeParam> texts(1);
    for (std::size_t i = 0; i < texts.size() && texts[i].size() < 6; ++i)
        for (const char letter : {'a', 'b'}) {
            TypeParam longer = texts[i];
            longer.push_back(static_cast<typename TypeParam::value_type>(letter));
            texts.push_back(longer);
        }
    for (const TypeParam& source : texts)
        for (std::size_t s = 1; s < 15; ++s)
            for (std::size_t r = 0; r < 15; ++r) {
                TypeParam expected = source;
                const unsigned int count = plainly_replace(expected, texts[s], texts[r]);
                TypeParam changed = source;
                ASSERT_EQ(count, replace_all(changed, texts[s], texts[r]));
                ASSERT_EQ(expected, changed);
            }
}

TEST(ReplaceAllOfGh2, ReplacesLikeTheOtherOverloads) {
    for (const auto& c : replace_cases) {
        SCOPED_TRACE(c.text);
        SCOPED_TRACE(c.search);
        std::string changed = c.text;
        EXPECT_EQ(c.count, gh2::replace_all(changed, c.search, c.replacement));
        EXPECT_EQ(c.expected, changed);
    }
}

TEST(ReplaceAllOfALongString, TakesLinearTime) {
    for (const char* replacement : {"", "y", "yyy"}) {
        std::string changed(1000000, 'x');
        changed += "end";
        std::string other = changed;
        EXPECT_EQ(1000000u, replace_all(changed, "x", replacement));
        EXPECT_EQ(1000000 * std::string(replacement).size() + 3, changed.size());
        EXPECT_EQ(1000000u, gh2::replace_all(other, "x", replacement));
        EXPECT_TRUE(changed == other);
    }
}

}  // namespace
