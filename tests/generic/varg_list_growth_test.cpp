#include <tova/generic/varg_list.hpp>

#include "support/failing_allocation.hpp"

#include <gtest/gtest.h>

#include <string>

namespace {

using tova::generic::argument;
using tova::generic::varg_list;
using tova::strings::ustring8;
using tova::types::variant;

// The argument that is appended, or its name and value, may be part of the list that grows.
TEST(VargListGrowth, AppendsAPartOfItself) {
    varg_list list;
    list.push_back(argument("name that needs separate memory", 7));
    list.push_back(argument(variant("value")));
    for (unsigned long count = 2; count != 70; ++count) {
        ASSERT_TRUE(list.push_back(list.at(1)));
        ASSERT_FALSE(list.push_back(list.at(0)));
        ASSERT_FALSE(list.push_back(list.at(0).name(), list.at(0).value()));
        ASSERT_TRUE(list.push_back(ustring8(), list.at(0).value()));
        list.erase(list.count() - 1);
    }
    ASSERT_EQ(70u, list.count());
    for (unsigned long i = 1; i != 70; ++i)
        ASSERT_EQ("value", list.at(i).value().as_string());
}

TEST(VargListGrowth, GrowsOnceForAUsualCall) {
    const variant value(1);
    varg_list list;
    const unsigned long before = test_support::allocations();
    for (const char* name : {"a", "b", "c", "d"})
        list.push_back(name, value);
    EXPECT_EQ(before + 1, test_support::allocations());
}

// Names of the same length that differ in a single byte, and names that contain one another.
TEST(VargListGrowth, DistinguishesSimilarNames) {
    const char* const names[] = {"abcd", "xbcd", "axcd", "abcx", "abc", "abcde", "a", "ABCD"};
    varg_list list;
    int number = 0;
    for (const char* name : names)
        EXPECT_TRUE(list.push_back(name, ++number));
    EXPECT_TRUE(list.push_back(ustring8("abcd\0x", 6), ++number));
    number = 0;
    for (const char* name : names)
        EXPECT_EQ(++number, list.at(ustring8(name)).value().as_int()) << name;
    EXPECT_EQ(++number, list.at(ustring8("abcd\0x", 6)).value().as_int());
    EXPECT_FALSE(list.has_argument("b"));
}

}  // namespace
