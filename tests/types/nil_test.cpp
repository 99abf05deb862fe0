#include <tova/types/nil.hpp>

#include <gtest/gtest.h>

#include <type_traits>

namespace {

using tova::types::nil;
using tova::types::nil_t;

const char* taken_as(nil_t&) {
    return "nil_t&";
}
const char* taken_as(const nil_t&) {
    return "const nil_t&";
}

TEST(Nil, IsAnEmptyTag) {
    EXPECT_TRUE(std::is_empty<nil_t>::value);
    EXPECT_FALSE(std::is_polymorphic<nil_t>::value);
    EXPECT_EQ(1u, sizeof(nil_t));
}

TEST(Nil, BindsToANonConstReference) {
    EXPECT_TRUE((std::is_same<nil_t&, decltype((nil))>::value));
    EXPECT_STREQ("nil_t&", taken_as(nil));
    EXPECT_STREQ("const nil_t&", taken_as(nil_t()));
}

}  // namespace
