#include <tova/strings/length.hpp>

#include "support/widths.hpp"

#include <gtest/gtest.h>

namespace {

using namespace tova::strings;
using test_support::text;

template <typename String>
class StringLength : public ::testing::Test {};
TYPED_TEST_SUITE(StringLength, test_support::all_widths, test_support::width_name);

TYPED_TEST(StringLength, OfAPointerCountsUpToTheTerminator) {
    for (std::size_t length = 0; length < 40; ++length) {
        const TypeParam units(length, 'x');
        EXPECT_EQ(length, string_length(units.c_str()));
    }
    EXPECT_EQ(2u, string_length(text<TypeParam>("ab\0cd").c_str()));
}

TYPED_TEST(StringLength, OfAStringIsItsSize) {
    EXPECT_EQ(0u, string_length(TypeParam()));
    EXPECT_EQ(5u, string_length(text<TypeParam>("ab\0cd")));
}

TEST(StringLengthOfCharacters, CountsUnitsAndNotCharacters) {
    EXPECT_EQ(4u, string_length("\xF0\x9F\x98\x80"));
    EXPECT_EQ(2u, string_length(ustring16{0xD83D, 0xDE00}));
    EXPECT_EQ(1u, string_length(ustring32{0x1F600}));
}

}  // namespace
