#include <tova/generic/argument.hpp>

#include <tova/generic/varg_list.hpp>
#include <tova/types/nil.hpp>

#include <gtest/gtest.h>

#include <sstream>
#include <string>
#include <typeinfo>

namespace {

using tova::generic::argument;
using tova::generic::varg_list;
using tova::strings::ustring16;
using tova::strings::ustring8;
using tova::types::nil;
using tova::types::nil_t;
using tova::types::variant;

TEST(Argument, IsUnnamedAndNilByDefaultAndFromNil) {
    for (const argument& each : {argument(), argument(nil),
                                 argument(static_cast<const nil_t&>(nil)), argument(variant())}) {
        EXPECT_EQ("", each.name());
        EXPECT_FALSE(each.has_name());
        EXPECT_TRUE(each.value() == nil);
        EXPECT_TRUE(each == nil);
        EXPECT_TRUE(each.equal(nil));
        EXPECT_FALSE(each != nil);
    }
}

TEST(Argument, IsMadeFromAnyValueThatAVariantAccepts) {
    const struct {
        argument made;
        const std::type_info* type;
        const char* text;
    } cases[] = {
        {argument(7), &typeid(int), "7"},
        {argument(true), &typeid(bool), "1"},
        {argument(1.5), &typeid(double), "1.5"},
        {argument("text"), &typeid(ustring8), "text"},
        {argument(ustring8("text")), &typeid(ustring8), "text"},
        {argument(std::string("text")), &typeid(std::string), "text"},
        {argument(ustring16{'a'}), &typeid(ustring16), "a"},
        {argument(L"wide"), &typeid(tova::strings::ustring32), "wide"},
        {argument(std::wstring(L"wide")), &typeid(std::wstring), "wide"},
        {argument(variant(3u)), &typeid(unsigned), "3"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.text);
        EXPECT_FALSE(c.made.has_name());
        EXPECT_TRUE(*c.type == c.made.value().type());
        EXPECT_EQ(c.text, c.made.value().as_string());
        EXPECT_FALSE(c.made == nil);
    }
}

std::string text_of(const argument& given) {
    return given.value().as_string();
}

TEST(Argument, ConvertsValuesThatArePassedAsAParameter) {
    EXPECT_EQ("5", text_of(5));
    EXPECT_EQ("text", text_of("text"));
    EXPECT_EQ("text", text_of(std::string("text")));
    EXPECT_EQ("", text_of(nil));
}

TEST(Argument, HasANameAndAValue) {
    const argument made("name", 7);
    EXPECT_EQ("name", made.name());
    EXPECT_TRUE(made.has_name());
    EXPECT_EQ(7, made.value().as_int());
    const argument copy(made);
    EXPECT_EQ("name", copy.name());
    EXPECT_EQ(7, copy.value().as_int());
}

TEST(Argument, SharesTheBodyOfItsValueWithItsCopies) {
    // A wide string prints as the address of the stored value.
    const auto printed = [](const argument& given) {
        std::ostringstream stream;
        stream << given.value();
        return stream.str();
    };
    const variant value(std::wstring(L"shared"));
    const argument made("name", value);
    const argument copy(made);
    argument assigned;
    assigned = copy;
    const varg_list list(assigned);
    EXPECT_EQ(printed(value), printed(made));
    EXPECT_EQ(printed(value), printed(copy));
    EXPECT_EQ(printed(value), printed(assigned));
    EXPECT_EQ(printed(value), printed(list[0]));
    EXPECT_NE(printed(value), printed(variant(std::wstring(L"shared"))));
}

TEST(Argument, IsNotNilIfItHasANameEvenIfItsValueIsNil) {
    const argument named("name", nil);
    EXPECT_FALSE(named == nil);
    EXPECT_TRUE(named != nil);
    EXPECT_FALSE(named.equal(nil));
    EXPECT_TRUE(named.value() == nil);
}

TEST(Argument, ReturnsTheNameAndValueThatWereSet) {
    argument target;
    const ustring8& name = target.name("new");
    EXPECT_EQ("new", name);
    EXPECT_EQ(&target.name(), &name);
    const variant& value = target.value(variant(3));
    EXPECT_EQ(3, value.as_int());
    EXPECT_EQ(&target.value(), &value);
    target.name(target.name());
    target.value(target.value());
    EXPECT_EQ("new", target.name());
    EXPECT_EQ(3, target.value().as_int());
    target.name("");
    EXPECT_FALSE(target.has_name());
}

TEST(Argument, KeepsItsNameWhenAValueIsAssigned) {
    argument target("name", 1);
    EXPECT_EQ(&target, &(target = variant(2)));
    EXPECT_EQ("name", target.name());
    EXPECT_EQ(2, target.value().as_int());
    EXPECT_EQ(&target, &target.assign(variant("three")));
    EXPECT_EQ("name", target.name());
    EXPECT_EQ("three", target.value().as_string());
}

TEST(Argument, CopiesNameAndValueOfAnother) {
    argument target("name", 1);
    EXPECT_EQ(&target, &(target = argument("other", 2)));
    EXPECT_EQ("other", target.name());
    EXPECT_EQ(2, target.value().as_int());
    EXPECT_EQ(&target, &target.assign(argument(3)));
    EXPECT_FALSE(target.has_name());
    EXPECT_EQ(3, target.value().as_int());
    EXPECT_EQ(&target, &target.assign("both", 4));
    EXPECT_EQ("both", target.name());
    EXPECT_EQ(4, target.value().as_int());
}

TEST(Argument, IsUnchangedWhenAssignedToItself) {
    argument target("name", 1);
    argument& same = target;
    target = same;
    target.assign(same);
    target.assign(target.name(), target.value());
    EXPECT_EQ("name", target.name());
    EXPECT_EQ(1, target.value().as_int());
}

}  // namespace
