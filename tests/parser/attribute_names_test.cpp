#include "parser/attribute_names.hpp"

#include <tova/strings/ustring.hpp>

#include <gtest/gtest.h>

#include <random>
#include <set>
#include <string>

namespace {

using tova::parser::detail::attribute_names;
using tova::strings::ustring8;

bool insert(attribute_names& names, const std::string& name) {
    return names.insert(name.data(), name.size(), name.size());
}

TEST(AttributeNames, AreInsertedOnceUntilTheyAreCleared) {
    std::set<ustring8> set;
    attribute_names names(set);
    names.clear();
    for (int tag = 0; tag < 3; ++tag) {
        EXPECT_TRUE(insert(names, "id"));
        EXPECT_TRUE(insert(names, "i"));
        EXPECT_TRUE(insert(names, "a_name_of_more_than_sixteen_bytes"));
        EXPECT_FALSE(insert(names, "id"));
        EXPECT_FALSE(insert(names, "a_name_of_more_than_sixteen_bytes"));
        EXPECT_TRUE(insert(names, "di"));
        names.clear();
    }
}

TEST(AttributeNames, NeedOneElementForTheNamesOfManyTags) {
    std::set<ustring8> set;
    attribute_names names(set);
    for (int tag = 0; tag < 100; ++tag) {
        for (int i = 0; i < 20; ++i)
            EXPECT_TRUE(insert(names, "name_" + std::to_string(i)));
        names.clear();
    }
    EXPECT_EQ(1u, set.size());
}

TEST(AttributeNames, AppearInAnotherViewOfTheSet) {
    std::set<ustring8> set;
    attribute_names first(set);
    EXPECT_TRUE(insert(first, "a"));
    attribute_names second(set);
    EXPECT_FALSE(insert(second, "a"));
    EXPECT_TRUE(insert(second, "b"));
    EXPECT_FALSE(insert(first, "b"));
    second.clear();
    EXPECT_TRUE(insert(first, "a"));
}

TEST(AttributeNames, GetAnElementEachAtTheEnd) {
    std::set<ustring8> set;
    attribute_names names(set);
    names.separate();
    EXPECT_TRUE(set.empty());
    insert(names, "b");
    insert(names, "a");
    names.separate();
    EXPECT_EQ((std::set<ustring8>{"a", "b"}), set);
    names.separate();
    EXPECT_FALSE(insert(names, "a"));
    EXPECT_TRUE(insert(names, "c"));
    EXPECT_EQ((std::set<ustring8>{"a", "b", "c"}), set);
    names.clear();
    EXPECT_TRUE(insert(names, "a"));
    names.separate();
    EXPECT_EQ((std::set<ustring8>{"a"}), set);
    EXPECT_FALSE(insert(names, "a"));
    names.clear();
    names.separate();
    EXPECT_TRUE(set.empty());
}

TEST(AttributeNames, AreReadNoFurtherThanAllowed) {
    std::set<ustring8> set;
    attribute_names names(set);
    const std::string bytes = "abcdefghijklmnopqrstuvwxyz";
    EXPECT_TRUE(names.insert(bytes.data(), 3, bytes.size()));
    EXPECT_FALSE(names.insert(bytes.data(), 3, 3));
    EXPECT_TRUE(names.insert(bytes.data(), 4, bytes.size()));
    EXPECT_TRUE(names.insert(bytes.data(), 16, bytes.size()));
    EXPECT_TRUE(names.insert(bytes.data(), 17, bytes.size()));
    EXPECT_FALSE(names.insert(bytes.data(), 16, 16));
    EXPECT_FALSE(names.insert(bytes.data(), 4, 4));
}

// Short and long names, so that the element becomes full at every size.
TEST(AttributeNames, EqualASetForAnyNumberAndLength) {
    std::mt19937 random(5);
    for (int round = 0; round < 300; ++round) {
        std::set<ustring8> set;
        attribute_names names(set);
        for (int tag = 0; tag < 5; ++tag) {
            std::set<std::string> expected;
            const std::size_t longest = 1 + random() % (tag % 2 == 0 ? 20 : 700);
            for (std::size_t i = random() % 80; i > 0; --i) {
                const std::string name(1 + random() % longest,
                                       static_cast<char>('a' + random() % 3));
                ASSERT_EQ(expected.insert(name).second, insert(names, name)) << name;
            }
            if (tag % 3 == 0) {
                names.separate();
                ASSERT_EQ((std::set<ustring8>(expected.begin(), expected.end())), set);
            }
            names.clear();
        }
    }
}

}  // namespace
