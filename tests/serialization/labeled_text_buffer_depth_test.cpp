// Tests trees that are deeper than any stack.
#include <tova/serialization/labeled_text_buffer.hpp>

#include "support/child_process.hpp"

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <string>

namespace {

using tova::serialization::labeled_serialize_buffer;
using tova::serialization::labeled_text_buffer;
using tova::types::variant;

const std::size_t depth = 100000;

void dig(labeled_serialize_buffer& buffer, const char* value) {
    labeled_serialize_buffer* group = &buffer;
    for (std::size_t i = 0; i < depth; ++i)
        group = group->create_group("g");
    group->add_value("bottom", value);
}

std::string bottom_of(const labeled_serialize_buffer& buffer) {
    const labeled_serialize_buffer* group = &buffer;
    while (!group->has_label("bottom"))
        group = group->retrieve_group("g");
    return group->retrieve_value("bottom").as_string();
}

// The text of such a tree, built from the inside out: first what precedes the value, in reverse,
// and after it one closing separator for each group.
std::string deep_text(const std::string& value) {
    std::string front;
    const auto prepend = [&front](const std::string& bytes) {
        front.append(bytes.rbegin(), bytes.rend());
    };
    prepend("6\001bottom\001" + std::to_string(value.size()) + "\001" + value + "\001");
    for (std::size_t closed = 0; closed < depth; ++closed)
        prepend("2\001g \001" + std::to_string(front.size() + closed) + "\001");
    return std::string(front.rbegin(), front.rend()) + std::string(depth, '\001');
}

// Runs the body twice: on a stack too small for any recursion of this depth, and in this process,
// where leaks are detected.
void on_any_stack(const std::function<void()>& body) {
    test_support::child_limits limits;
    limits.stack_bytes = 256 * 1024;
    limits.cpu_seconds = 120;
    const auto result = test_support::run_in_child(body, limits);
    EXPECT_TRUE(result.exited) << "signal " << result.signal << "\n" << result.output;
    EXPECT_EQ(0, result.exit_code) << result.output;
    body();
}

void require(bool holds) {
    if (!holds)
        throw 1;
}

TEST(LabeledTextBufferDepth, IsCopiedAndDestroyedInLoops) {
    on_any_stack([] {
        labeled_text_buffer buffer;
        dig(buffer, "v");
        labeled_text_buffer copy(buffer);
        require(bottom_of(copy) == "v");
        const std::unique_ptr<labeled_serialize_buffer> clone(copy.clone());
        require(bottom_of(*clone) == "v");
        copy.create_group("g");
        require(copy.retrieve_group("g")->is_empty());
        copy.assign(buffer);
        require(bottom_of(copy) == "v");
        copy = buffer;
        copy.assign(std::string());
        require(copy.is_empty());
    });
}

TEST(LabeledTextBufferDepth, IsWrittenAndReadInLoops) {
    on_any_stack([] {
        labeled_text_buffer buffer;
        dig(buffer, "v");
        const std::string text = buffer.as_str();
        require(text == deep_text("v"));
        require(buffer.has_group("g"));
        labeled_text_buffer read(text);
        require(bottom_of(read) == "v");
        require(read.as_str() == text);
        read.assign(static_cast<const labeled_serialize_buffer&>(buffer));
        require(bottom_of(read) == "v");
    });
}

TEST(LabeledTextBufferDepth, IsMergedInLoops) {
    on_any_stack([] {
        labeled_text_buffer buffer;
        dig(buffer, "old");
        labeled_text_buffer other;
        dig(other, "new");
        buffer.overlay(other);
        require(bottom_of(buffer) == "new");
        labeled_text_buffer empty;
        empty.overlay(other);
        require(bottom_of(empty) == "new");
    });
}

// A destructor can neither allocate nor report an error, even in a tree that is wide and deep.
TEST(LabeledTextBufferDepth, IsDestroyedWithGroupsOnBothSidesOfEachValue) {
    labeled_text_buffer buffer;
    labeled_serialize_buffer* group = &buffer;
    for (int i = 0; i < 1000; ++i) {
        group->create_group("a")->create_group("b")->add_value("c", i);
        group->add_value("m", std::string(100, 'x'));
        group->create_group("y");
        group->create_group("z")->as_str();
        group = group->retrieve_group("z");
    }
    const std::string text = buffer.as_str();
    labeled_text_buffer copy(buffer);
    EXPECT_EQ(text, copy.as_str());
    copy.create_group("z");
    EXPECT_FALSE(copy.has_group("z"));
    EXPECT_EQ(text, buffer.as_str());
}

}  // namespace
