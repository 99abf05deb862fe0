// Tests the layout of the XML family: sizes, the offsets of all fields, and the slots of the
// bindings.
#include <tova/parser/xml_parser.hpp>
#include <tova/parser/xml_token_stream.hpp>

#include "support/raw_memory.hpp"

#include <gtest/gtest.h>

#include <cstddef>
#include <cstring>
#include <iterator>
#include <list>
#include <set>
#include <stack>
#include <string>
#include <type_traits>

namespace {

using test_support::field_at;
using test_support::part_at;
using TOVA_2_18::functor::delegate_t;
using TOVA_2_18::functor::function_type_interface;
using TOVA_2_18::functor::member_function_t;
using TOVA_2_18::parser::xml_parser;
using TOVA_2_18::parser::xml_token_stream;
using TOVA_2_18::strings::ustring8;
using parse_error = xml_parser::parse_error;
using token = xml_token_stream::token;
using text_signature = void(const ustring8&);
using attribute_signature = void(const ustring8&, const ustring8&);

// These classes contain standard containers, so they have no standard layout; the compilers that we
// build with still support `offsetof` for them.
#pragma GCC diagnostic ignored "-Winvalid-offsetof"

static_assert(sizeof(parse_error::error_type) == 4, "kinds are 32 bits");
static_assert(offsetof(parse_error, type) == 0, "");
static_assert(offsetof(parse_error, line) == 4, "");
static_assert(offsetof(parse_error, text) == 8, "");
static_assert(sizeof(parse_error) == 40 && alignof(parse_error) == 8, "");
static_assert(std::is_same<decltype(parse_error::type), parse_error::error_type>::value, "");
static_assert(std::is_same<decltype(parse_error::line), unsigned int>::value, "");
static_assert(std::is_same<decltype(parse_error::text), ustring8>::value, "");
static_assert(!std::is_polymorphic<parse_error>::value, "");
static_assert(!std::is_trivially_copy_constructible<parse_error>::value, "");

static_assert(offsetof(xml_parser, on_element_start) == 0, "");
static_assert(offsetof(xml_parser, on_element_end) == 8, "");
static_assert(offsetof(xml_parser, on_attribute) == 16, "");
static_assert(offsetof(xml_parser, on_character) == 24, "");
static_assert(offsetof(xml_parser, on_space) == 32, "");
static_assert(offsetof(xml_parser, on_comment) == 40, "");
static_assert(
    std::is_same<decltype(xml_parser::on_element_start), delegate_t<text_signature>>::value, "");
static_assert(
    std::is_same<decltype(xml_parser::on_attribute), delegate_t<attribute_signature>>::value, "");
// Six pointers, a stack (80), a set (48), the line counter and the flag.
static_assert(sizeof(std::stack<ustring8>) == 80 && sizeof(std::set<ustring8>) == 48, "");
static_assert(sizeof(xml_parser) == 184 && alignof(xml_parser) == 8, "");
static_assert(!std::is_polymorphic<xml_parser>::value, "");

static_assert(sizeof(token::token_type) == 4, "types are 32 bits");
static_assert(sizeof(token) == 40 && alignof(token) == 8, "");
static_assert(!std::is_polymorphic<token>::value, "");

// The flag, a list (24) and the parser.
static_assert(sizeof(std::list<token>) == 24, "");
static_assert(sizeof(xml_token_stream) == 216 && alignof(xml_token_stream) == 8, "");
static_assert(!std::is_polymorphic<xml_token_stream>::value, "");

static_assert(sizeof(member_function_t<xml_token_stream, text_signature>) == 32, "");
static_assert(sizeof(member_function_t<xml_token_stream, attribute_signature>) == 32, "");

TEST(XmlLayout, HasTheStackTheSetTheLineAndTheFlagAfterTheDelegates) {
    xml_parser parser;
    EXPECT_TRUE(part_at<std::stack<ustring8>>(&parser, 48).empty());
    EXPECT_TRUE(part_at<std::set<ustring8>>(&parser, 128).empty());
    EXPECT_EQ(0u, field_at<unsigned>(&parser, 176));
    EXPECT_EQ(0, field_at<unsigned char>(&parser, 180));

    parser.parse("<?xml?>\n\n<a x='1' y='2'><b z='3'\n:");
    ASSERT_EQ(2u, part_at<std::stack<ustring8>>(&parser, 48).size());
    EXPECT_EQ("b", part_at<std::stack<ustring8>>(&parser, 48).top());
    EXPECT_EQ((std::set<ustring8>{"z"}), part_at<std::set<ustring8>>(&parser, 128));
    EXPECT_EQ(3u, field_at<unsigned>(&parser, 176));
    EXPECT_EQ(1, field_at<unsigned char>(&parser, 180));

    parser.parse("<?xml?>>");
    EXPECT_EQ(2u, part_at<std::stack<ustring8>>(&parser, 48).size());
    EXPECT_EQ(1u, part_at<std::set<ustring8>>(&parser, 128).size());
    EXPECT_EQ(0u, field_at<unsigned>(&parser, 176));
    EXPECT_EQ(0, field_at<unsigned char>(&parser, 180));
}

TEST(XmlLayout, HasATokensTypeBeforeItsValue) {
    const token one(token::character, "text");
    EXPECT_EQ(7, field_at<int>(&one, 0));
    EXPECT_EQ("text", part_at<ustring8>(&one, 8));
}

TEST(XmlLayout, HasAStreamsFlagItsTokensAndItsParserInThatOrder) {
    xml_token_stream stream;
    EXPECT_EQ(1, field_at<unsigned char>(&stream, 0));
    stream.on_element_start("a");
    EXPECT_EQ(0, field_at<unsigned char>(&stream, 0));
    EXPECT_EQ(1u, part_at<std::list<token>>(&stream, 8).size());
    const auto& parser = part_at<xml_parser>(&stream, 32);
    EXPECT_FALSE(parser.on_element_start.is_empty());
    EXPECT_FALSE(parser.on_element_end.is_empty());
    EXPECT_FALSE(parser.on_attribute.is_empty());
    EXPECT_FALSE(parser.on_character.is_empty());
    EXPECT_FALSE(parser.on_space.is_empty());
    EXPECT_FALSE(parser.on_comment.is_empty());
}

// A binding's slots: the two forms of the destructor, invoke, do_equal, do_clone.
template <typename Operation>
Operation slot(const void* object, int number) {
    return field_at<Operation>(field_at<const void*>(object, 0),
                               static_cast<std::size_t>(number) * sizeof(void*));
}

template <typename Binding>
void expect_common_slots(Binding& binding, const Binding& other) {
    using interface = typename std::remove_pointer<decltype(binding.do_clone())>::type;
    using equal = bool (*)(const void*, const void*);
    EXPECT_TRUE(slot<equal>(&binding, 3)(&binding, &binding));
    EXPECT_FALSE(slot<equal>(&binding, 3)(&binding, &other));

    using clone = interface* (*)(const void*);
    interface* const copy = slot<clone>(&binding, 4)(&binding);
    EXPECT_TRUE(binding.do_equal(*copy));
    using destroy = void (*)(void*);
    slot<destroy>(copy, 1)(copy);  // the form that also frees the memory
}

TEST(XmlLayout, HasTheSlotsOfATextBindingInOrder) {
    using binding = member_function_t<xml_token_stream, text_signature>;
    xml_token_stream stream;
    binding comment(&stream, &xml_token_stream::on_comment);
    EXPECT_EQ(&stream, field_at<xml_token_stream*>(&comment, 8));
    using invoke = void (*)(void*, const ustring8&);
    slot<invoke>(&comment, 2)(&comment, "c");
    ASSERT_EQ(1u, stream.size());
    EXPECT_EQ("c", stream.begin()->value());
    expect_common_slots(comment, binding(&stream, &xml_token_stream::on_space));
}

TEST(XmlLayout, HasTheSlotsOfAnAttributeBindingInOrder) {
    using binding = member_function_t<xml_token_stream, attribute_signature>;
    xml_token_stream stream;
    xml_token_stream other;
    binding attribute(&stream, &xml_token_stream::on_attribute);
    EXPECT_EQ(&stream, field_at<xml_token_stream*>(&attribute, 8));
    using invoke = void (*)(void*, const ustring8&, const ustring8&);
    slot<invoke>(&attribute, 2)(&attribute, "n", "v");
    ASSERT_EQ(2u, stream.size());
    EXPECT_EQ("v", std::next(stream.begin())->value());
    expect_common_slots(attribute, binding(&other, &xml_token_stream::on_attribute));
}

}  // namespace
