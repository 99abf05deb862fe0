#include <tova/serialization/labeled_text_buffer.hpp>

#include "support/failing_allocation.hpp"

#include <gtest/gtest.h>

#include <string>

namespace {

using tova::serialization::labeled_serialize_buffer;
using tova::serialization::labeled_text_buffer;

// A chain of groups, each inside the previous one.
void nest(labeled_text_buffer& outermost, int depth) {
    labeled_serialize_buffer* group = &outermost;
    for (int i = 0; i != depth; ++i)
        group = group->create_group("g");
    group->add_value("v", 1);
}

// Checking whether a group is empty takes constant time and no memory, whatever the group contains.
TEST(LabeledGroup, IsFoundWithoutItsText) {
    labeled_text_buffer outermost;
    nest(outermost, 2000);
    const std::string label = "g";
    const labeled_serialize_buffer* group = &outermost;
    const unsigned long before = test_support::allocations();
    for (; group->has_group(label); group = group->retrieve_group(label))
        ASSERT_NE(nullptr, group);
    EXPECT_EQ(before, test_support::allocations());
    EXPECT_TRUE(group->has_value("v"));
}

TEST(LabeledGroup, LeavesTheLastTextOfTheGroupAlone) {
    labeled_text_buffer outer;
    labeled_serialize_buffer* const group = outer.create_group("g");
    group->add_value("a", 1);
    const std::string& text = group->as_str();
    const std::string copy = text;
    group->add_value("b", 2);
    EXPECT_TRUE(outer.has_group("g"));
    EXPECT_EQ(copy, text);
}

// A group with the text that the test chooses.
class with_text : public labeled_text_buffer {
public:
    const std::string& as_str() const override { return text; }

    std::string text;
};

// A buffer that returns a group of another class.
class with_group : public labeled_text_buffer {
public:
    const labeled_serialize_buffer* retrieve_group(const std::string&) const override {
        return &group;
    }
    labeled_serialize_buffer* retrieve_group(const std::string&) override { return &group; }

    with_text group;
};

TEST(LabeledGroup, OfAnotherClassIsAskedForItsText) {
    with_group buffer;
    EXPECT_FALSE(buffer.has_group("g"));
    buffer.group.add_value("a", 1);
    EXPECT_FALSE(buffer.has_group("g"));
    buffer.group.text = "x";
    EXPECT_TRUE(buffer.has_group("g"));
}

}  // namespace
