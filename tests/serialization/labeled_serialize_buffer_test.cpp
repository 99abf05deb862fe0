#include <tova/serialization/labeled_serialize_buffer.hpp>

#include <tova/memory/pointers.hpp>
#include <tova/serialization/labeled_text_buffer.hpp>
#include <tova/types/nil.hpp>

#include <gtest/gtest.h>

#include <memory>
#include <string>

namespace {

using tova::memory::pointers::rc_pointer;
using tova::serialization::labeled_serialize_buffer;
using tova::serialization::labeled_text_buffer;
using tova::types::variant;

// A user's class: it records what is assigned to it and stores nothing.
class noting_buffer : public labeled_serialize_buffer {
public:
    labeled_serialize_buffer& assign(const labeled_serialize_buffer& other) override {
        return assign(other.as_str());
    }
    labeled_serialize_buffer& assign(const std::string& text) override {
        assigned += "[" + text + "]";
        return *this;
    }
    labeled_serialize_buffer& assign(const char* text, int length) override {
        return assign(std::string(text, static_cast<std::size_t>(length)));
    }
    const std::string& as_str() const override { return encoded; }
    bool add_value(const std::string&, const variant&) override { return false; }
    labeled_serialize_buffer* create_group(const std::string&) override { return this; }
    bool has_label(const std::string&) const override { return false; }
    bool has_value(const std::string&) const override { return false; }
    bool has_group(const std::string&) const override { return false; }
    bool is_empty() const override { return true; }
    variant retrieve_value(const std::string&) const override { return variant(); }
    const labeled_serialize_buffer* retrieve_group(const std::string&) const override {
        return this;
    }
    labeled_serialize_buffer* retrieve_group(const std::string&) override { return this; }
    labeled_serialize_buffer* create() const override { return marked(new noting_buffer); }
    labeled_serialize_buffer* clone() const override { return marked(new noting_buffer(*this)); }

    std::string assigned;
    std::string encoded;

private:
    static labeled_serialize_buffer* marked(labeled_serialize_buffer* made) {
        made->allocated = true;
        return made;
    }
};

TEST(LabeledSerializeBuffer, IsReadFromAnotherClassByItsText) {
    noting_buffer own;
    own.encoded = "1\001a\0011\0015\001";
    labeled_text_buffer buffer;
    EXPECT_EQ(&buffer, &buffer.assign(static_cast<const labeled_serialize_buffer&>(own)));
    EXPECT_EQ("5", buffer.retrieve_value("a").as_string());

    own.assign(buffer);
    EXPECT_EQ("[1\001a\0011\0015\001]", own.assigned);
}

TEST(LabeledSerializeBuffer, IsHeldByCountingPointers) {
    const rc_pointer<labeled_serialize_buffer> first(labeled_text_buffer().create());
    EXPECT_EQ(1u, first->count);
    const rc_pointer<labeled_serialize_buffer> second(first);
    EXPECT_EQ(2u, first->count);
    const rc_pointer<labeled_serialize_buffer> clone(first->clone());
    EXPECT_EQ(1u, clone->count);

    const rc_pointer<labeled_serialize_buffer> own(new noting_buffer);
    own->allocated = true;
    EXPECT_EQ(1u, own->count);
}

// Records which virtual operations `labeled_text_buffer` calls on itself.
class overriding_buffer : public labeled_text_buffer {
public:
    using labeled_text_buffer::assign;

    labeled_serialize_buffer& assign(const std::string& text) override {
        calls += "assign ";
        return labeled_text_buffer::assign(text);
    }
    bool add_value(const std::string& label, const variant& value) override {
        calls += "add_value(" + label + ") ";
        return labeled_text_buffer::add_value(label, value);
    }
    labeled_serialize_buffer* create_group(const std::string& label) override {
        calls += "create_group(" + label + ") ";
        return group != nullptr ? group : labeled_text_buffer::create_group(label);
    }
    variant retrieve_value(const std::string& label) const override {
        calls += "retrieve_value ";
        return labeled_text_buffer::retrieve_value(label);
    }
    const labeled_serialize_buffer* retrieve_group(const std::string& label) const override {
        calls += "retrieve_group ";
        return group != nullptr ? group : labeled_text_buffer::retrieve_group(label);
    }
    labeled_serialize_buffer* retrieve_group(const std::string& label) override {
        return labeled_text_buffer::retrieve_group(label);
    }

    labeled_serialize_buffer* group = nullptr;
    mutable std::string calls;
};

const char two_levels[] = "1\001a\0011\001x\0012\001g \0018\0011\001b\0011\001y\001\001";

TEST(LabeledTextBufferSlots, EveryAssignmentOfTextCallsTheFormForAString) {
    labeled_text_buffer source;
    source.add_value("a", 1);
    overriding_buffer buffer;
    buffer.assign(static_cast<const labeled_serialize_buffer&>(source));
    EXPECT_EQ("assign add_value(a) ", buffer.calls);
    buffer.calls.clear();
    buffer.assign(source.as_str().data(), static_cast<int>(source.as_str().size()));
    EXPECT_EQ("assign add_value(a) ", buffer.calls);
}

TEST(LabeledTextBufferSlots, TheParserCallsVirtualOperationsToFillTheTree) {
    overriding_buffer buffer;
    buffer.assign(std::string(two_levels));
    EXPECT_EQ("assign add_value(a) create_group(g ) ", buffer.calls);
    EXPECT_EQ("y",
              buffer.labeled_text_buffer::retrieve_group("g")->retrieve_value("b").as_string());
}

TEST(LabeledTextBufferSlots, TheParserPassesTheTextOfAGroupToTheGroup) {
    noting_buffer group;
    overriding_buffer buffer;
    buffer.group = &group;
    buffer.assign(std::string(two_levels));
    EXPECT_EQ("[1\001b\0011\001y\001]", group.assigned);

    // The same for a group whose class derives from `labeled_text_buffer`.
    overriding_buffer derived;
    buffer.group = &derived;
    buffer.assign(std::string(two_levels));
    EXPECT_EQ("assign add_value(b) ", derived.calls);
}

TEST(LabeledTextBufferSlots, HasValueAndHasGroupCallTheVirtualRetrieveOperations) {
    overriding_buffer buffer;
    buffer.labeled_text_buffer::add_value("a", 1);
    EXPECT_TRUE(buffer.has_value("a"));
    EXPECT_EQ("retrieve_value ", buffer.calls);
    buffer.calls.clear();
    EXPECT_FALSE(buffer.has_group("a"));
    EXPECT_EQ("retrieve_group ", buffer.calls);

    // For a group of another class, only its text is requested.
    noting_buffer group;
    buffer.group = &group;
    EXPECT_FALSE(buffer.has_group("nowhere"));
    group.encoded = "x";
    EXPECT_TRUE(buffer.has_group("nowhere"));
}

}  // namespace
