#include <tova/strings/ustring.hpp>

#include "support/widths.hpp"

#include <gtest/gtest.h>

#include <iterator>
#include <sstream>
#include <stdexcept>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

namespace {

using namespace tova::strings;
using test_support::text;

template <typename String>
class Ustring : public ::testing::Test {};
TYPED_TEST_SUITE(Ustring, test_support::all_widths, test_support::width_name);

TYPED_TEST(Ustring, HasNoDataOfItsOwn) {
    typedef typename TypeParam::base_type base;
    static_assert(sizeof(TypeParam) == sizeof(base), "no data member");
    static_assert(alignof(TypeParam) == alignof(base), "no data member");
    static_assert(!std::is_polymorphic<TypeParam>::value, "no virtual operation");
    static_assert(std::is_base_of<base, TypeParam>::value, "derived from the standard string");
    static_assert(std::is_convertible<TypeParam*, base*>::value, "publicly");
    static_assert(std::is_convertible<base, TypeParam>::value, "made from a base value");
    static_assert(std::is_nothrow_move_constructible<TypeParam>::value, "moves in vectors");
    const TypeParam value = text<TypeParam>("abc");
    EXPECT_EQ(static_cast<const void*>(&value),
              static_cast<const void*>(static_cast<const base*>(&value)));
}

TYPED_TEST(Ustring, IsConstructedLikeItsBaseClass) {
    typedef typename TypeParam::base_type base;
    const TypeParam abc = text<TypeParam>("abc");
    const base plain = abc;
    EXPECT_TRUE(TypeParam().empty());
    EXPECT_EQ(abc, TypeParam(plain));
    EXPECT_EQ(abc, TypeParam(base(plain)));
    EXPECT_EQ(abc, TypeParam(abc));
    EXPECT_EQ(abc, TypeParam(plain.c_str()));
    EXPECT_EQ(text<TypeParam>("ab"), TypeParam(plain.c_str(), 2));
    EXPECT_EQ(text<TypeParam>("bc"), TypeParam(plain, 1));
    EXPECT_EQ(text<TypeParam>("b"), TypeParam(plain, 1, 1));
    EXPECT_EQ(text<TypeParam>("aaa"), TypeParam(3, plain[0]));
    EXPECT_EQ(abc, TypeParam(plain.begin(), plain.end()));
    EXPECT_EQ(abc, TypeParam({plain[0], plain[1], plain[2]}));
    EXPECT_THROW(TypeParam(plain, 4), std::out_of_range);
}

TYPED_TEST(Ustring, TakesOverTheContentOfAMovedBase) {
    typename TypeParam::base_type plain(1000, 'x');
    const void* units = plain.data();
    const TypeParam taken(std::move(plain));
    EXPECT_EQ(units, taken.data());
    EXPECT_EQ(1000u, taken.size());
}

TYPED_TEST(Ustring, IsAssignedLikeItsBaseClass) {
    const TypeParam abc = text<TypeParam>("abc");
    const typename TypeParam::base_type plain = abc;
    TypeParam value;
    value = plain;
    EXPECT_EQ(abc, value);
    value = {};
    EXPECT_TRUE(value.empty());
    value = plain.c_str();
    EXPECT_EQ(abc, value);
    value = plain[0];
    EXPECT_EQ(text<TypeParam>("a"), value);
    value = TypeParam(plain);
    EXPECT_EQ(abc, value);
    const TypeParam& other = value = abc;
    EXPECT_EQ(&value, &other);
}

template <typename Action>
std::string logic_error_of(Action action) {
    try {
        action();
    } catch (const std::logic_error& error) {
        return error.what();
    }
    return "nothing was raised";
}

TYPED_TEST(Ustring, ANullPointerRaisesTheStandardLogicError) {
    const typename TypeParam::value_type* null = nullptr;
    const std::string expected = "basic_string::_M_construct null not valid";
    EXPECT_EQ(expected, logic_error_of([&] { TypeParam raised(null); }));
    TypeParam value;
    EXPECT_EQ(expected, logic_error_of([&] { value = null; }));
}

TYPED_TEST(Ustring, ComparesAndJoinsThroughItsBaseClass) {
    const TypeParam ab = text<TypeParam>("ab");
    const TypeParam cd = text<TypeParam>("cd");
    const typename TypeParam::base_type plain = ab;
    EXPECT_TRUE(ab == ab);
    EXPECT_TRUE(ab != cd);
    EXPECT_TRUE(ab == plain);
    EXPECT_TRUE(plain == ab);
    EXPECT_FALSE(ab != plain);
    EXPECT_FALSE(plain != ab);
    EXPECT_TRUE(ab < cd);
    EXPECT_TRUE(ab <= plain);
    EXPECT_TRUE(cd > plain);
    EXPECT_TRUE(ab == plain.c_str());
    EXPECT_TRUE(plain.c_str() == ab);
    const TypeParam joined = ab + cd;
    EXPECT_EQ(text<TypeParam>("abcd"), joined);
    const TypeParam with_unit = ab + cd[0];
    EXPECT_EQ(text<TypeParam>("abc"), with_unit);
}

TEST(Ustring8, EqualityComparesLengthAndBytes) {
    EXPECT_TRUE(ustring8() == ustring8());
    EXPECT_TRUE(ustring8("a") == ustring8("a"));
    EXPECT_FALSE(ustring8("a") == ustring8("b"));
    EXPECT_FALSE(ustring8("a") == ustring8("ab"));
    EXPECT_FALSE(ustring8("a\0b", 3) == ustring8("a"));
    EXPECT_FALSE(ustring8("a\0b", 3) == ustring8("a\0c", 3));
    EXPECT_TRUE(ustring8("a\0b", 3) == ustring8("a\0b", 3));
    EXPECT_FALSE(ustring8("a") != ustring8("a"));
    EXPECT_TRUE(ustring8("a") != ustring8("A"));
    EXPECT_TRUE(ustring8("a\0b", 3) != ustring8("a"));
}

TEST(Ustring8, JoiningCopiesTheLeftAndAppendsTheRight) {
    const ustring8 left("le\0ft", 5);
    const ustring8 right("right");
    EXPECT_EQ(ustring8("le\0ftright", 10), left + right);
    EXPECT_EQ(ustring8("le\0ft", 5), left + ustring8());
    EXPECT_EQ(ustring8("<right"), "<" + right);
    EXPECT_EQ(ustring8("right>"), right + ">");
    EXPECT_EQ(ustring8("right"), "" + right);
    EXPECT_EQ(ustring8("right"), right + "");
    EXPECT_EQ(ustring8("right"), ustring8("right")) << "the operands stay";
}

TEST(Ustring8, JoiningANullPointerRaisesTheStandardLogicError) {
    const char* null = nullptr;
    const ustring8 value("value");
    const std::string expected = "basic_string::_M_construct null not valid";
    EXPECT_EQ(expected, logic_error_of([&] { null + value; }));
    EXPECT_EQ(expected, logic_error_of([&] { null + ustring8(); }));
    EXPECT_EQ(expected, logic_error_of([&] { value + null; }));
}

TEST(Ustring8, ComparesWithStringsOfEveryKindFromEitherSide) {
    const ustring8 value("text");
    ustring8 changeable("text");
    const std::string plain("text");
    std::string other("other");
    const char* pointer = "text";
    char array[] = "text";

    EXPECT_TRUE(value == "text");
    EXPECT_TRUE("text" == value);
    EXPECT_TRUE(value == pointer);
    EXPECT_TRUE(pointer == value);
    EXPECT_TRUE(array == changeable);
    EXPECT_TRUE(changeable == array);
    EXPECT_TRUE(value == plain);
    EXPECT_TRUE(plain == value);
    EXPECT_TRUE(changeable == value);
    EXPECT_TRUE(value == std::string("text"));
    EXPECT_TRUE(std::string("text") == changeable);
    EXPECT_TRUE(ustring8("text") == std::string("text"));
    EXPECT_FALSE(value == other);
    EXPECT_FALSE(other == changeable);
    EXPECT_FALSE(value == "other");

    EXPECT_FALSE(value != "text");
    EXPECT_FALSE("text" != value);
    EXPECT_FALSE(value != plain);
    EXPECT_FALSE(plain != value);
    EXPECT_TRUE(value != other);
    EXPECT_TRUE(other != changeable);
    EXPECT_TRUE("other" != value);
    EXPECT_TRUE(changeable != pointer + 1);

    EXPECT_FALSE(ustring8("text\0more", 9) == "text");
    EXPECT_FALSE("text" == ustring8("text\0more", 9));
    EXPECT_FALSE(ustring8("text\0more", 9) == plain);
    EXPECT_TRUE(ustring8("text\0more", 9) == std::string("text\0more", 9));
}

template <typename Joined>
void expect_joined(const char* expected, Joined&& joined) {
    static_assert(std::is_same<typename std::decay<Joined>::type, ustring8>::value,
                  "joining stays in the family");
    EXPECT_EQ(std::string(expected), joined);
}

TEST(Ustring8, JoinsStringsOfEveryKindFromEitherSide) {
    const ustring8 value("u");
    ustring8 changeable("c");
    const std::string plain("p");
    std::string other("o");
    expect_joined("uc", value + changeable);
    expect_joined("ux", value + "x");
    expect_joined("xu", "x" + value);
    expect_joined("up", value + plain);
    expect_joined("pu", plain + value);
    expect_joined("co", changeable + other);
    expect_joined("oc", other + changeable);
    expect_joined("u7", value + std::to_string(7));
    expect_joined("7u", std::to_string(7) + value);
    expect_joined("cu", std::move(changeable) + value);
    expect_joined("tu", ustring8("t") + value);
    expect_joined("t7", ustring8("t") + std::to_string(7));
    expect_joined("7t", std::to_string(7) + ustring8("t"));
    expect_joined("up-xo7", value + plain + "-" + "x" + other + std::to_string(7));
    expect_joined("po-u", plain + other + "-" + value);
    EXPECT_EQ("p", plain);
    EXPECT_EQ("o", other);
}

TEST(Ustring8, CanBePassedWhereItsBaseClassIsExpected) {
    std::ostringstream out;
    out << ustring8("shown");
    EXPECT_EQ("shown", out.str());
    const std::string& base = ustring8("base");
    EXPECT_EQ("base", base);
    std::istringstream in("read on");
    ustring8 word;
    in >> word;
    EXPECT_EQ("read", word);
    std::vector<ustring8> list = {"b", "a"};
    list.push_back(std::string("c"));
    EXPECT_EQ((std::vector<ustring8>{"b", "a", "c"}), list);
}

#if __cplusplus >= 201703L
TEST(Ustring8, ComparesWithStringViews) {
    const ustring8 value("text");
    const std::string_view view = value;
    EXPECT_TRUE(value == view);
    EXPECT_TRUE(view == value);
    EXPECT_FALSE(value != view);
    ustring8 assigned;
    assigned = view;
    EXPECT_TRUE(assigned == value);
}
#endif

}  // namespace
