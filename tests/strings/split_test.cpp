#include <tova/strings/split.hpp>

#include "support/widths.hpp"

#include <gtest/gtest.h>

#include <stdexcept>
#include <string>
#include <vector>

namespace {

using namespace tova::strings;
using test_support::text;

template <typename String>
class SplitString : public ::testing::Test {};
TYPED_TEST_SUITE(SplitString, test_support::text_types, test_support::text_type_name);

struct split_case {
    const char* input;
    const char* separator;
    int limit;
    std::vector<const char*> fields;
};

const split_case split_cases[] = {
    {"", ",", 0, {}},
    {"a", ",", 0, {"a"}},
    {"a,b", ",", 0, {"a", "b"}},
    {"a,b,", ",", 0, {"a", "b"}},
    {",a", ",", 0, {"", "a"}},
    {"a,,b", ",", 0, {"a", "", "b"}},
    {",a,,b,", ",", 0, {"", "a", "", "b"}},
    {",", ",", 0, {""}},
    {",,", ",", 0, {"", ""}},
    // the limit
    {"a,b,c", ",", 1, {"a", "b,c"}},
    {"a,b,c", ",", 2, {"a", "b", "c"}},
    {"a,b,c", ",", 3, {"a", "b", "c"}},
    {"a,b,", ",", 2, {"a", "b"}},
    {"a,b,", ",", 1, {"a", "b,"}},
    {"a,", ",", 1, {"a"}},
    {",,,", ",", 2, {"", "", ","}},
    {"a,b,c", ",", -1, {"a", "b", "c"}},
    {"a,b,c", ",", -2147483647 - 1, {"a", "b", "c"}},
    {"a,b,c", ",", 2147483647, {"a", "b", "c"}},
    // several units count as a whole
    {"a--b-c", "--", 0, {"a", "b-c"}},
    {"a---b", "--", 0, {"a", "-b"}},
    {"----", "--", 0, {"", ""}},
    {"-", "--", 0, {"-"}},
    {"a, b,c", ", ", 0, {"a", "b,c"}},
    {"abc", "abc", 0, {""}},
    {"ab", "abc", 0, {"ab"}},
    // an empty separator yields one field
    {"", "", 0, {""}},
    {"abc", "", 0, {"abc"}},
    {"abc", "", 1, {"abc"}},
    {"", "", -1, {""}},
};

TYPED_TEST(SplitString, CutsAtEverySeparatorButStartsNoFieldAfterTheLast) {
    for (const auto& c : split_cases) {
        SCOPED_TRACE(c.input);
        SCOPED_TRACE(c.separator);
        SCOPED_TRACE(c.limit);
        std::vector<TypeParam> expected;
        for (const char* field : c.fields)
            expected.push_back(text<TypeParam>(field));
        EXPECT_EQ(expected,
                  split_string(text<TypeParam>(c.input), text<TypeParam>(c.separator), c.limit));
    }
}

TYPED_TEST(SplitString, TreatsNulUnitsLikeAnyOther) {
    const TypeParam source = text<TypeParam>("a\0b\0,c");
    EXPECT_EQ((std::vector<TypeParam>{text<TypeParam>("a\0b\0"), text<TypeParam>("c")}),
              split_string(source, text<TypeParam>(","), 0));
    EXPECT_EQ(
        (std::vector<TypeParam>{text<TypeParam>("a"), text<TypeParam>("b"), text<TypeParam>(",c")}),
        split_string(source, text<TypeParam>("\0"), 0));
}

TYPED_TEST(SplitString, FieldsJoinBackToTheStringForEveryLimit) {
    const TypeParam comma = text<TypeParam>(",");
    for (int limit = 1; limit <= 60; ++limit) {
        TypeParam source;
        for (int i = 0; i < 50; ++i)
            source += TypeParam(static_cast<std::size_t>(i % 5), 'x') + comma;
        const std::vector<TypeParam> fields = split_string(source, comma, limit);
        EXPECT_EQ(limit < 50 ? limit + 1u : 50u, fields.size());
        TypeParam joined;
        for (const TypeParam& field : fields)
            joined +=
                joined.empty() && &field == &fields.front() ? field : TypeParam(comma + field);
        if (limit >= 50)
            joined += comma;
        EXPECT_EQ(source, joined);
    }
}

// Fields of some lengths are stored or copied in other ways than the rest.
TYPED_TEST(SplitString, CopiesFieldsOfEveryLength) {
    const TypeParam comma(1, ',');
    TypeParam field;
    for (int length = 1; length <= 140; ++length) {
        SCOPED_TRACE(length);
        field.push_back(static_cast<typename TypeParam::value_type>('a' + length % 26));
        const std::vector<TypeParam> expected(3, field);
        const TypeParam joined = field + comma + field + comma + field;
        EXPECT_EQ(expected, split_string(joined, comma, 0));
    }
}

TEST(SplitStringAtLiteral, ConvertsTheSeparatorToAString) {
    for (const auto& c : split_cases) {
        SCOPED_TRACE(c.input);
        std::vector<ustring8> expected(c.fields.begin(), c.fields.end());
        EXPECT_EQ(expected, split_string(ustring8(c.input), c.separator, c.limit));
    }
    EXPECT_EQ((std::vector<ustring8>{"a", "b"}), split_string("a;b", ";", 0));
}

TEST(SplitStringAtLiteral, ANullSeparatorRaisesTheStandardLogicError) {
    const char* null = nullptr;
    for (const char* input : {"a,b", ""}) {
        try {
            split_string(ustring8(input), null, 0);
            ADD_FAILURE() << "nothing was raised";
        } catch (const std::logic_error& error) {
            EXPECT_STREQ("basic_string::_M_construct null not valid", error.what());
        }
    }
}

TEST(SplitStringAtLiteral, CutsALongStringInLinearTime) {
    const std::string source(2000000, ',');
    EXPECT_EQ(2000000u, split_string(source, std::string(","), 0).size());
}

}  // namespace
