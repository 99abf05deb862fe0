#include "support/suggestion.hpp"

#include <gtest/gtest.h>

#include <string>
#include <vector>

using namespace tova_programs;

TEST(EditDistance, CountsChangesAndSwapsOfNeighbors) {
    const struct {
        const char* a;
        const char* b;
        std::size_t distance;
    } cases[] = {
        {"", "", 0},
        {"", "ab", 2},
        {"abc", "abc", 0},
        {"ABC", "abc", 0},
        {"abc", "abd", 1},
        {"abc", "acb", 1},
        {"abc", "ab", 1},
        {"kitten", "sitting", 3},
        {"fieldsize", "fieldszie", 1},
        {"base", "basis", 2},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(std::string(c.a) + ", " + c.b);
        EXPECT_EQ(c.distance, edit_distance(c.a, c.b));
        EXPECT_EQ(c.distance, edit_distance(c.b, c.a));
    }
}

TEST(Suggestion, IsTheClosestWordUnlessAllAreFar) {
    const std::vector<std::string> known = {"base", "fieldsize", "precision"};
    EXPECT_EQ("fieldsize", closest_word("feildsize", known));
    EXPECT_EQ("base", closest_word("Bas", known));
    EXPECT_EQ("", closest_word("width", known));
    EXPECT_EQ(" (did you mean \"precision\"?)", did_you_mean("precison", known));
    EXPECT_EQ("", did_you_mean("x", {}));
}
