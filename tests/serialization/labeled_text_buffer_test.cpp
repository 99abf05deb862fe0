#include <tova/serialization/labeled_text_buffer.hpp>

#include <tova/types/nil.hpp>

#include "serialization/buffer_checks.hpp"
#include "serialization/tree_model.hpp"
#include "support/child_process.hpp"

#include <gtest/gtest.h>

#include <csignal>
#include <memory>
#include <random>
#include <stdexcept>
#include <string>
#include <vector>

namespace {

using test_support::tree_model;
using tova::serialization::labeled_serialize_buffer;
using tova::serialization::labeled_text_buffer;
using tova::serialization::serialize_text_buf;
using tova::types::variant;

std::string strings(const std::vector<std::string>& items) {
    serialize_text_buf text;
    for (const auto& item : items)
        text.append_string(item);
    return text.as_str();
}

labeled_text_buffer& group_of(labeled_serialize_buffer& buffer, const std::string& label) {
    return dynamic_cast<labeled_text_buffer&>(*buffer.retrieve_group(label));
}

std::string value_of(const labeled_serialize_buffer& buffer, const std::string& label) {
    return buffer.retrieve_value(label).as_string();
}

TEST(LabeledTextBuffer, IsInitiallyEmpty) {
    const labeled_text_buffer buffer;
    EXPECT_TRUE(buffer.is_empty());
    EXPECT_EQ("", buffer.as_str());
    EXPECT_FALSE(buffer.has_label(""));
    EXPECT_EQ(0u, buffer.count);
    EXPECT_FALSE(buffer.allocated);
}

TEST(LabeledTextBuffer, WritesPairsOfLabelAndPayload) {
    labeled_text_buffer buffer;
    buffer.add_value("a", 1);
    buffer.create_group("g")->add_value("b", "x");
    EXPECT_EQ("1\001a\0011\0011\0012\001g \0018\0011\001b\0011\001x\001\001", buffer.as_str());
    EXPECT_EQ("1\001b\0011\001x\001", buffer.retrieve_group("g")->as_str());
}

TEST(LabeledTextBuffer, WritesEachKindOfEntryInItsOwnWay) {
    labeled_text_buffer buffer;
    buffer.add_value("nil", variant());
    buffer.create_group("empty");
    buffer.create_group("both")->add_value("k", true);
    buffer.add_value("both", 2.5);
    buffer.create_group("group")->create_group("inner");
    buffer.add_value("value", std::string("a\0b\001", 4));
    EXPECT_EQ(strings({"both", "2.5", "both ", strings({"k", "1"}), "empty", "", "group ",
                       strings({"inner", ""}), "nil", "", "value", std::string("a\0b\001", 4)}),
              buffer.as_str());
}

TEST(LabeledTextBuffer, OrdersLabelsByTheirBytes) {
    labeled_text_buffer buffer;
    for (const char* label : {"b", "a", "B", "\xC3\xA4", "~", "aa", "a b"})
        buffer.add_value(label, 1);
    EXPECT_EQ(
        strings({"B", "1", "a", "1", "a b", "1", "aa", "1", "b", "1", "~", "1", "\xC3\xA4", "1"}),
        buffer.as_str());
}

TEST(LabeledTextBuffer, TrimsFourWhitespaceBytesFromStoredLabelsAndNoOthers) {
    const struct {
        std::string given;
        std::string stored;
    } cases[] = {
        {" a", "a"},
        {"a ", "a"},
        {"\n\r\t a b\t\r\n ", "a b"},
        {"", ""},
        {" \n\r\t", ""},
        {"\va\f", "\va\f"},
        {std::string("\0a\0", 3), std::string("\0a\0", 3)},
        {"\xC2\xA0x", "\xC2\xA0x"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.given);
        labeled_text_buffer buffer;
        EXPECT_FALSE(buffer.add_value(c.given, 1));
        EXPECT_TRUE(buffer.has_label(c.stored));
        EXPECT_EQ(c.given == c.stored, buffer.has_label(c.given));
        labeled_text_buffer groups;
        groups.create_group(c.given)->add_value("x", 1);
        EXPECT_TRUE(groups.has_group(c.stored));
        EXPECT_EQ(c.given == c.stored, groups.has_group(c.given));
    }
}

TEST(LabeledTextBuffer, DoesNotTrimLabelsInLookups) {
    labeled_text_buffer buffer;
    buffer.add_value(" a ", 1);
    EXPECT_FALSE(buffer.has_label(" a "));
    EXPECT_TRUE(buffer.has_label("a"));
    EXPECT_TRUE(buffer.retrieve_value(" a") == tova::types::nil);
    EXPECT_EQ(nullptr, buffer.retrieve_group("a "));
    EXPECT_FALSE(buffer.has_value("a "));
    EXPECT_FALSE(buffer.has_group("a "));
}

TEST(LabeledTextBuffer, ReturnsWhetherAValueWasReplaced) {
    labeled_text_buffer buffer;
    EXPECT_FALSE(buffer.add_value("a", 1));
    EXPECT_TRUE(buffer.add_value(" a", "two"));
    EXPECT_EQ("two", value_of(buffer, "a"));
    EXPECT_TRUE(buffer.add_value("a", variant()));
    EXPECT_FALSE(buffer.has_value("a"));
    EXPECT_TRUE(buffer.has_label("a"));
    EXPECT_FALSE(buffer.add_value("a", 3));
    EXPECT_EQ("3", value_of(buffer, "a"));
}

TEST(LabeledTextBuffer, StoresValueAndGroupOfALabelSeparately) {
    labeled_text_buffer buffer;
    labeled_serialize_buffer* const group = buffer.create_group("g");
    group->add_value("x", 1);
    EXPECT_FALSE(buffer.add_value("g", 7));
    EXPECT_EQ(group, buffer.retrieve_group("g"));
    EXPECT_TRUE(group->has_label("x"));
    EXPECT_EQ(strings({"g", "7", "g ", strings({"x", "1"})}), buffer.as_str());

    EXPECT_EQ(group, buffer.create_group(" g"));
    EXPECT_TRUE(group->is_empty());
    EXPECT_FALSE(buffer.has_group("g"));
    EXPECT_EQ("7", value_of(buffer, "g"));
    EXPECT_EQ(strings({"g", "7"}), buffer.as_str());
}

TEST(LabeledTextBuffer, HasAGroupUnderEveryLabelWhichMayBeEmpty) {
    labeled_text_buffer buffer;
    buffer.add_value("v", 1);
    buffer.create_group("e");
    buffer.create_group("g")->add_value("x", 1);
    const labeled_text_buffer& constant = buffer;

    EXPECT_NE(nullptr, buffer.retrieve_group("v"));
    EXPECT_EQ(buffer.retrieve_group("v"), constant.retrieve_group("v"));
    EXPECT_TRUE(buffer.retrieve_group("v")->is_empty());
    EXPECT_FALSE(buffer.has_group("v"));
    EXPECT_FALSE(buffer.has_group("e"));
    EXPECT_TRUE(buffer.has_group("g"));
    EXPECT_EQ(nullptr, buffer.retrieve_group("unknown"));
    EXPECT_EQ(nullptr, constant.retrieve_group("unknown"));
    EXPECT_FALSE(buffer.has_group("unknown"));
    EXPECT_FALSE(buffer.has_label("unknown"));
}

TEST(LabeledTextBuffer, ReturnsCopiesOfValues) {
    labeled_text_buffer buffer;
    buffer.add_value("a", 5);
    variant value = buffer.retrieve_value("a");
    EXPECT_TRUE(value.type() == typeid(int));
    value = variant(6);
    EXPECT_EQ(5, buffer.retrieve_value("a").as_int());
    EXPECT_TRUE(buffer.retrieve_value("unknown") == tova::types::nil);
    EXPECT_FALSE(buffer.has_value("unknown"));
}

TEST(LabeledTextBuffer, ReadsValuesBackAsStrings) {
    labeled_text_buffer buffer;
    buffer.add_value("n", 5);
    buffer.add_value("nil", variant());
    buffer.create_group("empty");
    const labeled_text_buffer read(buffer.as_str());
    EXPECT_TRUE(read.retrieve_value("n").type() == typeid(std::string));
    EXPECT_EQ("5", value_of(read, "n"));
    EXPECT_EQ(5, read.retrieve_value("n").as_int());
    for (const char* label : {"nil", "empty"}) {
        SCOPED_TRACE(label);
        EXPECT_TRUE(read.has_value(label));
        EXPECT_TRUE(read.retrieve_value(label).type() == typeid(std::string));
        EXPECT_EQ("", value_of(read, label));
        EXPECT_FALSE(read.has_group(label));
    }
    EXPECT_EQ(0u, read.count);
    EXPECT_FALSE(read.allocated);
}

TEST(LabeledTextBuffer, ReadsGroupsAndWritesThemAsBefore) {
    labeled_text_buffer buffer;
    buffer.add_value("v", "1");
    labeled_serialize_buffer* const outer = buffer.create_group("outer group");
    outer->add_value("x", "2");
    outer->create_group("inner")->add_value("y", std::string("a\001\0", 3));
    buffer.add_value("outer group", "3");
    const std::string text = buffer.as_str();

    labeled_text_buffer read(text);
    EXPECT_EQ(text, read.as_str());
    EXPECT_EQ("3", value_of(read, "outer group"));
    EXPECT_EQ("2", value_of(*read.retrieve_group("outer group"), "x"));
    EXPECT_EQ(std::string("a\001\0", 3),
              value_of(group_of(group_of(read, "outer group"), "inner"), "y"));
}

TEST(LabeledTextBuffer, LosesEverythingAfterAnEmptyLabelInTheText) {
    labeled_text_buffer buffer;
    buffer.add_value("a", 1);
    buffer.add_value("  ", 2);
    EXPECT_EQ(strings({"", "2", "a", "1"}), buffer.as_str());
    labeled_text_buffer read;
    read.add_value("before", 1);
    read.assign(buffer.as_str());
    EXPECT_TRUE(read.is_empty());

    read.assign(strings({"x", "1", "", "2", "y", "3"}));
    EXPECT_EQ(strings({"x", "1"}), read.as_str());
}

TEST(LabeledTextBuffer, TreatsOnlyATrailingSpaceInTheTextAsAGroup) {
    const std::string inner = strings({"x", "1"});
    labeled_text_buffer buffer(strings({"  ", inner, "\t", "v", "a\t", inner, "\tb ", inner}));
    EXPECT_TRUE(buffer.has_group(""));
    EXPECT_EQ("v", value_of(buffer, ""));
    EXPECT_EQ(inner, value_of(buffer, "a"));
    EXPECT_TRUE(buffer.has_group("b"));
    EXPECT_FALSE(buffer.has_value("b"));
}

TEST(LabeledTextBuffer, EmptiesAGroupThatAppearsTwiceInTheText) {
    labeled_text_buffer buffer(
        strings({"g ", strings({"x", "1"}), "g", "v", "g ", strings({"y", "2"}), "g", "w"}));
    EXPECT_EQ(strings({"g", "w", "g ", strings({"y", "2"})}), buffer.as_str());
}

TEST(LabeledTextBuffer, IsClearedByAssigningAnEmptyText) {
    labeled_text_buffer buffer;
    buffer.add_value("a", 1);
    EXPECT_EQ(&buffer, &buffer.assign(std::string()));
    EXPECT_TRUE(buffer.is_empty());
    buffer.add_value("a", 1);
    buffer.assign(nullptr, 0);
    EXPECT_TRUE(buffer.is_empty());
}

TEST(LabeledTextBuffer, AcceptsATextByPointerAndLength) {
    const std::string text = strings({"a", "1", "b", "2"});
    labeled_text_buffer buffer;
    EXPECT_EQ(&buffer, &buffer.assign(text.data(), 8));
    EXPECT_EQ(strings({"a", "1"}), buffer.as_str());
    test_support::expect_invalid_pointers_are_refused(buffer);
    EXPECT_EQ(strings({"a", "1"}), buffer.as_str());
}

TEST(LabeledTextBuffer, KeepsValueTypesOnlyWhenAssignedFromItsOwnClass) {
    labeled_text_buffer source;
    source.add_value("n", 5);
    source.create_group("g")->add_value("f", 1.5f);
    labeled_text_buffer target;
    target.add_value("old", 1);
    EXPECT_EQ(&target, &target.assign(source));
    EXPECT_FALSE(target.has_label("old"));
    EXPECT_TRUE(target.retrieve_value("n").type() == typeid(int));
    EXPECT_TRUE(target.retrieve_group("g")->retrieve_value("f").type() == typeid(float));

    target.assign(static_cast<const labeled_serialize_buffer&>(source));
    EXPECT_TRUE(target.retrieve_value("n").type() == typeid(std::string));
    EXPECT_TRUE(target.retrieve_group("g")->retrieve_value("f").type() == typeid(std::string));

    labeled_text_buffer by_operator;
    by_operator = source;
    EXPECT_TRUE(by_operator.retrieve_value("n").type() == typeid(int));
}

TEST(LabeledTextBuffer, IsReadAgainWhenAssignedToItselfAsItsBaseClass) {
    labeled_text_buffer buffer;
    buffer.add_value("n", 5);
    labeled_serialize_buffer* const group = buffer.create_group("g");
    group->add_value("x", 1);
    buffer.assign(buffer);
    EXPECT_TRUE(buffer.retrieve_value("n").type() == typeid(int));
    EXPECT_EQ(group, buffer.retrieve_group("g"));

    const std::string text = buffer.as_str();
    buffer.assign(static_cast<const labeled_serialize_buffer&>(buffer));
    EXPECT_TRUE(buffer.retrieve_value("n").type() == typeid(std::string));
    EXPECT_EQ(text, buffer.as_str());
}

TEST(LabeledTextBuffer, IsAssignedFromItsOwnGroupAndToIt) {
    labeled_text_buffer buffer;
    labeled_text_buffer& group = dynamic_cast<labeled_text_buffer&>(*buffer.create_group("g"));
    group.add_value("x", 1);
    group.create_group("h")->add_value("y", 2);
    labeled_text_buffer copy(buffer);

    buffer.assign(group);
    EXPECT_EQ(strings({"h ", strings({"y", "2"}), "x", "1"}), buffer.as_str());

    const std::string before = copy.as_str();
    group_of(copy, "g").assign(copy);
    EXPECT_EQ(strings({"g ", before}), copy.as_str());
    group_of(copy, "g").assign(copy.as_str());
    EXPECT_EQ(strings({"g ", strings({"g ", before})}), copy.as_str());
    copy.assign(group_of(copy, "g").as_str());
    EXPECT_EQ(strings({"g ", before}), copy.as_str());
}

TEST(LabeledTextBuffer, CopiesTheTreeAndSharesNothing) {
    labeled_text_buffer source;
    source.add_value("n", 5);
    source.create_group("g")->create_group("h")->add_value("x", 1);
    source.count = 3;
    source.allocated = true;
    const std::string text = source.as_str();

    labeled_text_buffer copy(source);
    EXPECT_EQ(0u, copy.count);
    EXPECT_FALSE(copy.allocated);
    EXPECT_EQ(text, copy.as_str());
    EXPECT_TRUE(copy.retrieve_value("n").type() == typeid(int));
    group_of(copy, "g").retrieve_group("h")->add_value("x", 2);
    copy.add_value("n", 6);
    EXPECT_EQ(text, source.as_str());
    EXPECT_NE(text, copy.as_str());

    const std::unique_ptr<labeled_serialize_buffer> clone(source.clone());
    EXPECT_EQ(0u, clone->count);
    EXPECT_TRUE(clone->allocated);
    EXPECT_EQ(text, clone->as_str());
    const std::unique_ptr<labeled_serialize_buffer> created(source.create());
    EXPECT_NE(nullptr, dynamic_cast<labeled_text_buffer*>(created.get()));
    EXPECT_EQ(0u, created->count);
    EXPECT_TRUE(created->allocated);
    EXPECT_TRUE(created->is_empty());
}

TEST(LabeledTextBuffer, KeepsItsCountAndMarkWhenAssigned) {
    labeled_text_buffer source;
    source.count = 2;
    source.allocated = true;
    labeled_text_buffer target;
    target.assign(source);
    target = source;
    EXPECT_EQ(0u, target.count);
    EXPECT_FALSE(target.allocated);
}

TEST(LabeledTextBuffer, ReturnsAReferenceIntoItself) {
    labeled_text_buffer buffer;
    const std::string& text = buffer.as_str();
    EXPECT_EQ("", text);
    buffer.add_value("a", 1);
    EXPECT_EQ("", text);  // rebuilt by `as_str`, not by the change
    EXPECT_EQ(&text, &buffer.as_str());
    EXPECT_EQ("1\001a\0011\0011\001", text);
}

TEST(LabeledTextBuffer, ReadsBrokenStringsAsDocumented) {
    const struct {
        const char* name;
        std::string text;
        std::string as_read;
    } cases[] = {
        {"a value cut short", "1\001a\0015\001xy", strings({"a", "xy"})},
        {"no string at all", "hello", ""},
        {"a label of length 0", "0\001\0011\001x\001", ""},
        {"separators alone", "\001\001\001", ""},
        {"a group with bad text", strings({"g ", "hello"}), strings({"g", ""})},
        {"a group whose text is cut", strings({"g ", "1\001a\0019\001b"}),
         strings({"g ", strings({"a", "b"})})},
        {"an unclosed length 0 for a label", "1\001a\0011\001b\0010", strings({"a", "b"})},
        // The length moves the position to npos, where the payload is empty and the text ends.
        {"a label that ends at npos", "-5\001ab\001", strings({"ab\001", ""})},
        {"one in a group", strings({"g ", "-5\001ab\001"}),
         strings({"g ", strings({"ab\001", ""})})},
        {"the label of a group that ends there", strings({"g ", "-5\001ab "}),
         strings({"g ", strings({"ab", ""})})},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        EXPECT_EQ(c.as_read, labeled_text_buffer(c.text).as_str());
    }
}

TEST(LabeledTextBuffer, RaisesForALengthWithoutASeparator) {
    labeled_text_buffer buffer;
    EXPECT_THROW(buffer.assign(std::string("1\001a\0011")), std::out_of_range);
    EXPECT_TRUE(buffer.is_empty());
    // Entries that were read before are kept, even in a group.
    EXPECT_THROW(buffer.assign(strings({"a", "1", "g ", "1\001x\0011\001y\0017"})),
                 std::out_of_range);
    EXPECT_EQ(strings({"a", "1", "g ", strings({"x", "y"})}), buffer.as_str());
    // A label that is cut off: its payload is past the end of the content.
    EXPECT_THROW(buffer.assign(std::string("5\001ab")), std::out_of_range);
}

TEST(LabeledTextBuffer, NeverReturnsFromATextThatEndsAfterALabel) {
    const std::string texts[] = {
        strings({"a", "1", "b"}),
        strings({"g "}),
        strings({"g ", strings({"h ", strings({"a", "1", "b"})})}),
    };
    for (const auto& text : texts) {
        SCOPED_TRACE(text);
        tree_model model;
        EXPECT_EQ(tree_model::endless, model.read(text));
        test_support::child_limits limits;
        limits.cpu_seconds = 1;
        const auto result = test_support::run_in_child(
            [&] {
                labeled_text_buffer buffer;
                buffer.assign(text);
            },
            limits);
        EXPECT_FALSE(result.exited) << result.exit_code;
        EXPECT_TRUE(result.signal == SIGXCPU || result.signal == SIGKILL) << result.signal;
    }
}

TEST(LabeledTextBufferOverlay, ChangesNothingForAnEmptyBuffer) {
    labeled_text_buffer buffer;
    buffer.add_value("a", 1);
    buffer.create_group("g")->add_value("x", 2);
    const std::string before = buffer.as_str();
    buffer.overlay(labeled_text_buffer());
    EXPECT_EQ(before, buffer.as_str());
    labeled_text_buffer empty;
    empty.overlay(buffer);
    EXPECT_EQ(before, empty.as_str());
    buffer.overlay(buffer);
    EXPECT_EQ(before, buffer.as_str());
}

TEST(LabeledTextBufferOverlay, AddsMissingLabelsAsCopies) {
    labeled_text_buffer other;
    other.create_group("g")->add_value("x", 2);
    other.add_value("g", 1);
    labeled_text_buffer buffer;
    buffer.add_value("a", 0);
    buffer.overlay(other);
    EXPECT_EQ(strings({"a", "0", "g", "1", "g ", strings({"x", "2"})}), buffer.as_str());
    EXPECT_TRUE(buffer.retrieve_value("g").type() == typeid(int));
    buffer.retrieve_group("g")->add_value("x", 3);
    EXPECT_EQ(2, other.retrieve_group("g")->retrieve_value("x").as_int());
}

TEST(LabeledTextBufferOverlay, ReplacesAValueAndKeepsTheGroupForAnEntryWithoutAGroup) {
    labeled_text_buffer buffer;
    buffer.create_group("g")->add_value("x", 1);
    buffer.add_value("g", 2);
    labeled_text_buffer other;
    other.add_value("g", "new");
    buffer.overlay(other);
    EXPECT_EQ(strings({"g", "new", "g ", strings({"x", "1"})}), buffer.as_str());
}

TEST(LabeledTextBufferOverlay, ClearsAValueForANilWithoutAGroup) {
    labeled_text_buffer buffer;
    buffer.add_value("a", 1);
    buffer.add_value("b", 1);
    labeled_text_buffer other;
    other.add_value("a", variant());
    other.create_group("b");  // an empty group, which counts as no group in the merge
    buffer.overlay(other);
    EXPECT_TRUE(buffer.has_label("a"));
    EXPECT_FALSE(buffer.has_value("a"));
    EXPECT_FALSE(buffer.has_value("b"));
}

TEST(LabeledTextBufferOverlay, KeepsAValueForAGroupWithoutOne) {
    labeled_text_buffer buffer;
    buffer.add_value("g", 1);
    buffer.create_group("g")->add_value("x", 1);
    labeled_text_buffer other;
    other.create_group("g")->add_value("y", 2);
    buffer.overlay(other);
    EXPECT_EQ(strings({"g", "1", "g ", strings({"x", "1", "y", "2"})}), buffer.as_str());
    other.add_value("g", 9);
    buffer.overlay(other);
    EXPECT_EQ("9", value_of(buffer, "g"));
}

TEST(LabeledTextBufferOverlay, AcceptsItsOwnGroups) {
    labeled_text_buffer buffer;
    buffer.create_group("g")->create_group("g")->add_value("x", 1);
    labeled_text_buffer down(buffer);
    buffer.overlay(group_of(buffer, "g"));
    // The inner "g" is merged into the outer one, in which the walk currently is.
    EXPECT_EQ(strings({"g ", strings({"g ", strings({"x", "1"}), "x", "1"}), "x", "1"}),
              buffer.as_str());
    const std::string before = group_of(down, "g").as_str();
    labeled_text_buffer fresh;
    fresh.create_group("h")->add_value("y", 1);
    group_of(fresh, "h").overlay(fresh);
    EXPECT_EQ(strings({"h ", strings({"h ", strings({"y", "1"}), "y", "1"})}), fresh.as_str());
    EXPECT_EQ(strings({"g ", strings({"x", "1"})}), before);
}

// Creates random trees, as a buffer and as the simple recursive model.
class tree_maker {
public:
    explicit tree_maker(unsigned seed) : m_random(seed) {}

    void fill(labeled_serialize_buffer& buffer, tree_model& model, int depth) {
        for (unsigned entries = pick(5); entries != 0; --entries) {
            const std::string label = pick_label();
            if (depth != 0 && pick(2) == 0) {
                labeled_serialize_buffer* const group = buffer.create_group(label);
                fill(*group, model.create_group(label), depth - 1);
            }
            if (pick(3) != 0) {
                const variant value = pick_value();
                EXPECT_EQ(model.add_value(label, value), buffer.add_value(label, value));
            }
        }
    }

    unsigned pick(unsigned below) { return static_cast<unsigned>(m_random() % below); }

private:
    std::string pick_label() {
        const char* const labels[] = {"a", "b", "c ", "\xC3\xA4", "long label of many bytes", "d"};
        return labels[pick(6)];
    }
    variant pick_value() {
        switch (pick(5)) {
        case 0:
            return variant(static_cast<int>(pick(1000)));
        case 1:
            return variant(std::string("1\001a\001"));
        case 2:
            return variant();
        case 3:
            return variant(0.25);
        default:
            return variant("text");
        }
    }

    std::mt19937 m_random;
};

TEST(LabeledTextBuffer, AgreesWithASimpleModelOnRandomTrees) {
    for (unsigned seed = 0; seed < 400; ++seed) {
        SCOPED_TRACE(seed);
        tree_maker maker(seed);
        labeled_text_buffer buffer;
        tree_model model;
        maker.fill(buffer, model, 4);
        ASSERT_TRUE(model.matches(buffer));
        labeled_text_buffer copy(buffer);
        ASSERT_TRUE(model.matches(copy));

        labeled_text_buffer other;
        tree_model other_model;
        maker.fill(other, other_model, 4);
        copy.overlay(other);
        tree_model merged(model);
        merged.overlay(other_model);
        ASSERT_TRUE(merged.matches(copy));

        const std::string text = buffer.as_str();
        tree_model read_model;
        ASSERT_EQ(tree_model::complete, read_model.read(text));
        ASSERT_TRUE(read_model.matches(labeled_text_buffer(text)));
        copy.assign(buffer);
        ASSERT_TRUE(model.matches(copy));
    }
}

// Texts with one byte changed: the same tree or the same failure.
TEST(LabeledTextBuffer, AgreesWithASimpleModelOnBrokenTexts) {
    int outcomes[3] = {0, 0, 0};
    for (unsigned seed = 0; seed < 60; ++seed) {
        tree_maker maker(seed);
        labeled_text_buffer buffer;
        tree_model unused;
        maker.fill(buffer, unused, 3);
        const std::string whole = buffer.as_str();
        for (unsigned i = 0; i < 40 && !whole.empty(); ++i) {
            std::string text = whole;
            text[maker.pick(static_cast<unsigned>(text.size()))] = "0123459-x \001"[maker.pick(11)];
            SCOPED_TRACE(text);
            tree_model model;
            const tree_model::outcome outcome = model.read(text);
            ++outcomes[outcome];
            if (outcome == tree_model::endless)
                continue;
            labeled_text_buffer read;
            if (outcome == tree_model::raises)
                EXPECT_THROW(read.assign(text), std::out_of_range);
            else
                read.assign(text);
            EXPECT_TRUE(model.matches(read));
        }
    }
    for (int count : outcomes)
        EXPECT_GT(count, 0);
}

}  // namespace
