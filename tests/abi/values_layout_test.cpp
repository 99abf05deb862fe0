// Tests sizes, offsets, bases and slots of the variant and the argument lists, as compiled callers
// expect them.
#include <tova/generic/convert/binary.hpp>
#include <tova/generic/varg_list.hpp>
#include <tova/types/nil.hpp>
#include <tova/types/radix.hpp>
#include <tova/types/variant.hpp>
#include <tova/types/variant_value.hpp>

#include "support/raw_memory.hpp"

#include <gtest/gtest.h>

#include <cstring>
#include <dlfcn.h>
#include <memory>
#include <sstream>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

namespace {

using namespace TOVA_2_18;
using generic::argument;
using generic::varg_list;
using generic::abilities::clone_ability;
using generic::abilities::reference_count_pointer_ability;
using strings::ustring16;
using strings::ustring32;
using strings::ustring8;
using test_support::base_offset;
using test_support::pointer_at;
using test_support::slot;
using types::nil_t;
using types::variant;
using types::variant_type;
using types::variant_value_t;

// --- Sizes -------------------------------------------------------------------------------------

static_assert(sizeof(types::radix_t::base) == 4, "radix_t::base");
static_assert(types::radix_t::detect == 0 && types::radix_t::hexadecimal == 16, "radix_t::base");

static_assert(sizeof(variant) == 8 && alignof(variant) == 8, "variant");
static_assert(!std::is_polymorphic<variant>::value, "variant");
static_assert(sizeof(variant_type) == 16 && alignof(variant_type) == 8, "variant_type");
static_assert(std::is_abstract<variant_type>::value, "variant_type");
static_assert(sizeof(variant_value_t<signed char>) == 24, "variant_value_t");
static_assert(sizeof(variant_value_t<long>) == 24, "variant_value_t");
static_assert(sizeof(variant_value_t<long double>) == 32, "variant_value_t");
static_assert(sizeof(variant_value_t<ustring8>) == 48, "variant_value_t");
static_assert(sizeof(variant_value_t<std::wstring>) == 48, "variant_value_t");
static_assert(sizeof(argument) == 40 && alignof(argument) == 8, "argument");
static_assert(!std::is_polymorphic<argument>::value, "argument");
static_assert(sizeof(varg_list) == 24 && alignof(varg_list) == 8, "varg_list");
static_assert(!std::is_polymorphic<varg_list>::value, "varg_list");

// Passed by reference at machine level, because copying and destruction are not trivial.
static_assert(!std::is_trivially_copyable<variant>::value, "variant");
static_assert(!std::is_trivially_copyable<argument>::value, "argument");
static_assert(!std::is_trivially_copyable<varg_list>::value, "varg_list");

// What a variant can be made from, and what it cannot.
static_assert(std::is_constructible<variant, nil_t&>::value, "variant(nil_t&)");
static_assert(!std::is_constructible<variant, const nil_t&>::value, "variant(nil_t&)");
static_assert(!std::is_constructible<variant, nil_t>::value, "variant(nil_t&)");
static_assert(!std::is_constructible<variant, long long>::value, "no long long");
static_assert(std::is_convertible<int, argument>::value, "argument from any value");

// The operations that never throw are declared so.
static_assert(noexcept(std::declval<const variant&>().equal(std::declval<const nil_t&>())), "");
static_assert(noexcept(std::declval<const variant&>() == std::declval<const nil_t&>()), "");
static_assert(noexcept(std::declval<const variant&>() != std::declval<const nil_t&>()), "");
static_assert(std::is_nothrow_destructible<variant>::value, "~variant()");
static_assert(std::is_nothrow_destructible<variant_type>::value, "~variant_type()");
static_assert(noexcept(std::declval<variant_type&>().clone()), "clone()");
static_assert(noexcept(std::declval<const variant_type&>().ostream(std::declval<std::ostream&>())),
              "ostream()");
static_assert(noexcept(std::declval<const variant_type&>().as_long_double()), "as_long_double()");

// Variants have neither an order nor equality with each other.
template <typename T, typename = void>
struct compares : std::false_type {};
template <typename T>
struct compares<T, decltype(void(std::declval<const T&>() == std::declval<const T&>()))>
    : std::true_type {};
template <typename T, typename = void>
struct is_ordered : std::false_type {};
template <typename T>
struct is_ordered<T, decltype(void(std::declval<const T&>() < std::declval<const T&>()))>
    : std::true_type {};
static_assert(compares<ustring8>::value && is_ordered<ustring8>::value,
              "the tests detect comparisons");
static_assert(!compares<variant>::value && !is_ordered<variant>::value, "variant");
static_assert(!compares<argument>::value && !compares<varg_list>::value, "arguments");

// --- Offsets of fields and bases ---------------------------------------------------------------

TEST(VariantLayout, ContainsOnlyItsBody) {
    const variant value(7);
    const auto* const body = static_cast<const variant_type*>(pointer_at(&value));
    EXPECT_EQ(1u, body->count);
    EXPECT_TRUE(body->allocated);
    EXPECT_EQ(7, body->as_int());
    const variant copy(value);
    EXPECT_EQ(body, pointer_at(&copy));
    EXPECT_EQ(2u, body->count);
}

TEST(VariantLayout, HasItsOwnNilBodyInEachHandle) {
    variant first;
    const variant second;
    EXPECT_NE(pointer_at(&first), pointer_at(&second));
    const variant third(first);
    EXPECT_EQ(pointer_at(&first), pointer_at(&third));
    first = types::nil;
    EXPECT_NE(pointer_at(&first), pointer_at(&third));
}

TEST(VariantBodyLayout, StoresTablePointerMarkCountAndValue) {
    const variant_value_t<int> body(0x12345678);
    const char* const object = reinterpret_cast<const char*>(&body);
    EXPECT_EQ(0, base_offset<clone_ability>(body));
    EXPECT_EQ(8, base_offset<reference_count_pointer_ability<variant_type>>(body));
    EXPECT_EQ(object + 8, reinterpret_cast<const char*>(&body.allocated));
    EXPECT_EQ(object + 12, reinterpret_cast<const char*>(&body.count));
    EXPECT_EQ(object + 16, reinterpret_cast<const char*>(&body.value));
}

TEST(ArgumentLayout, StoresTheNameBeforeTheValue) {
    const argument made("name", 7);
    const char* const object = reinterpret_cast<const char*>(&made);
    EXPECT_EQ(object, reinterpret_cast<const char*>(&made.name()));
    EXPECT_EQ(object + 32, reinterpret_cast<const char*>(&made.value()));
}

TEST(VargListLayout, IsAVectorOfArguments) {
    const varg_list list(1, 2);
    EXPECT_EQ(&list[0], pointer_at(&list, 0));
    EXPECT_EQ(&list[0] + 2, pointer_at(&list, 8));
    EXPECT_TRUE((std::is_same<std::vector<argument>::iterator, varg_list::iterator>::value));
    EXPECT_TRUE(
        (std::is_same<std::vector<argument>::const_iterator, varg_list::const_iterator>::value));
}

// --- The slots of a body -----------------------------------------------------------------------

// A body whose operations return the number of their own slot.
class numbered_body : public variant_type {
public:
    ~numbered_body() TOVA_NOTHROW override { ++s_destroyed; }
    bool convertible() const TOVA_NOTHROW override { return true; }
    const std::type_info& type() const TOVA_NOTHROW override { return typeid(numbered_body); }
    variant_type* clone() TOVA_NOTHROW override { return this; }
    std::ostream& ostream(std::ostream& stream) const TOVA_NOTHROW override { return stream << 5; }
    int as_int() const TOVA_NOTHROW override { return 6; }
    short as_short() const TOVA_NOTHROW override { return 7; }
    long as_long() const TOVA_NOTHROW override { return 8; }
    signed char as_int8() const TOVA_NOTHROW override { return 9; }
    short as_int16() const TOVA_NOTHROW override { return 10; }
    int as_int32() const TOVA_NOTHROW override { return 11; }
    long as_int64() const TOVA_NOTHROW override { return 12; }
    unsigned char as_uint8() const TOVA_NOTHROW override { return 13; }
    unsigned short as_uint16() const TOVA_NOTHROW override { return 14; }
    unsigned int as_uint32() const TOVA_NOTHROW override { return 15; }
    unsigned long as_uint64() const TOVA_NOTHROW override { return 16; }
    bool as_bool() const TOVA_NOTHROW override { return true; }
    ustring8 as_string() const TOVA_NOTHROW override { return "18"; }
    std::wstring as_wstring() const TOVA_NOTHROW override { return L"19"; }
    std::string as_ustring() const TOVA_NOTHROW override { return "20"; }
    ustring8 as_utf8() const TOVA_NOTHROW override { return "21"; }
    ustring16 as_utf16() const TOVA_NOTHROW override { return ustring16{'2', '2'}; }
    ustring32 as_utf32() const TOVA_NOTHROW override { return L"23"; }
    float as_float() const TOVA_NOTHROW override { return 24; }
    double as_double() const TOVA_NOTHROW override { return 25; }
    long double as_long_double() const TOVA_NOTHROW override { return 26; }

    static int s_destroyed;
};
int numbered_body::s_destroyed = 0;

// Calls by slot number, like a program that declares the interface without the library's headers:
// only the order of the slots matters.
struct by_slot {
    template <typename Result>
    TEST_CALLS_SLOTS static Result call(const void* body, std::size_t number) {
        return slot<Result(const void*)>(body, number)(body);
    }
    TEST_CALLS_SLOTS static std::ostream& print(const void* body, std::ostream& stream) {
        return slot<std::ostream&(const void*, std::ostream&)>(body, 5)(body, stream);
    }
    TEST_CALLS_SLOTS static void destroy(void* body, std::size_t number) {
        slot<void(void*)>(body, number)(body);
    }
};

TEST(VariantBodySlots, AreInOrder) {
    const numbered_body body;
    EXPECT_TRUE(by_slot::call<bool>(&body, 2));
    EXPECT_TRUE(typeid(numbered_body) == by_slot::call<const std::type_info&>(&body, 3));
    EXPECT_EQ(&body, by_slot::call<const void*>(&body, 4));
    std::ostringstream stream;
    EXPECT_EQ(&stream, &by_slot::print(&body, stream));
    EXPECT_EQ("5", stream.str());
    EXPECT_EQ(6, by_slot::call<int>(&body, 6));
    EXPECT_EQ(7, by_slot::call<short>(&body, 7));
    EXPECT_EQ(8, by_slot::call<long>(&body, 8));
    EXPECT_EQ(9, by_slot::call<signed char>(&body, 9));
    EXPECT_EQ(10, by_slot::call<short>(&body, 10));
    EXPECT_EQ(11, by_slot::call<int>(&body, 11));
    EXPECT_EQ(12, by_slot::call<long>(&body, 12));
    EXPECT_EQ(13, by_slot::call<unsigned char>(&body, 13));
    EXPECT_EQ(14, by_slot::call<unsigned short>(&body, 14));
    EXPECT_EQ(15u, by_slot::call<unsigned int>(&body, 15));
    EXPECT_EQ(16u, by_slot::call<unsigned long>(&body, 16));
    EXPECT_TRUE(by_slot::call<bool>(&body, 17));
    EXPECT_EQ("18", by_slot::call<ustring8>(&body, 18));
    EXPECT_EQ(L"19", by_slot::call<std::wstring>(&body, 19));
    EXPECT_EQ("20", by_slot::call<std::string>(&body, 20));
    EXPECT_EQ("21", by_slot::call<ustring8>(&body, 21));
    EXPECT_EQ((ustring16{'2', '2'}), by_slot::call<ustring16>(&body, 22));
    EXPECT_EQ(ustring32(L"23"), by_slot::call<ustring32>(&body, 23));
    EXPECT_EQ(24.0f, by_slot::call<float>(&body, 24));
    EXPECT_EQ(25.0, by_slot::call<double>(&body, 25));
    EXPECT_EQ(26.0L, by_slot::call<long double>(&body, 26));
}

TEST(VariantBodySlots, BeginWithTheTwoSlotsOfTheDestructor) {
    numbered_body::s_destroyed = 0;
    alignas(numbered_body) unsigned char memory[sizeof(numbered_body)];
    by_slot::destroy(new (memory) numbered_body, 0);
    EXPECT_EQ(1, numbered_body::s_destroyed);
    by_slot::destroy(new numbered_body, 1);
    EXPECT_EQ(2, numbered_body::s_destroyed);
}

TEST(VariantBodySlots, AreReachedThroughTheBaseClassOfAnotherModulesBody) {
    const numbered_body body;
    const variant_type& base = body;
    EXPECT_EQ(6, base.as_int());
    EXPECT_EQ(16u, base.as_uint64());
    EXPECT_EQ("18", base.as_string());
    EXPECT_EQ(26.0L, base.as_long_double());
}

// The same for the library's own bodies.
TEST(VariantBodySlots, AreInTheSameOrderInEveryBody) {
    const variant bodies[] = {variant(static_cast<signed char>(42)),
                              variant(static_cast<short>(42)),
                              variant(42),
                              variant(42L),
                              variant(static_cast<unsigned char>(42)),
                              variant(static_cast<unsigned short>(42)),
                              variant(42u),
                              variant(42ul),
                              variant(42.0f),
                              variant(42.0),
                              variant(42.0L),
                              variant("42"),
                              variant(ustring16{'4', '2'}),
                              variant(L"42"),
                              variant(std::string("42")),
                              variant(std::wstring(L"42"))};
    for (const variant& each : bodies) {
        SCOPED_TRACE(each.type().name());
        const void* const body = pointer_at(&each);
        EXPECT_TRUE(by_slot::call<bool>(body, 2));
        EXPECT_TRUE(each.type() == by_slot::call<const std::type_info&>(body, 3));
        EXPECT_EQ(42, by_slot::call<int>(body, 6));
        EXPECT_EQ(42, by_slot::call<short>(body, 7));
        EXPECT_EQ(42, by_slot::call<long>(body, 8));
        EXPECT_EQ(42, by_slot::call<signed char>(body, 9));
        EXPECT_EQ(42, by_slot::call<short>(body, 10));
        EXPECT_EQ(42, by_slot::call<int>(body, 11));
        EXPECT_EQ(42, by_slot::call<long>(body, 12));
        EXPECT_EQ(42, by_slot::call<unsigned char>(body, 13));
        EXPECT_EQ(42, by_slot::call<unsigned short>(body, 14));
        EXPECT_EQ(42u, by_slot::call<unsigned int>(body, 15));
        EXPECT_EQ(42u, by_slot::call<unsigned long>(body, 16));
        EXPECT_TRUE(by_slot::call<bool>(body, 17));
        EXPECT_EQ("42", by_slot::call<ustring8>(body, 18));
        EXPECT_EQ(L"42", by_slot::call<std::wstring>(body, 19));
        EXPECT_EQ("42", by_slot::call<std::string>(body, 20));
        EXPECT_EQ("42", by_slot::call<ustring8>(body, 21));
        EXPECT_EQ((ustring16{'4', '2'}), by_slot::call<ustring16>(body, 22));
        EXPECT_EQ(ustring32(L"42"), by_slot::call<ustring32>(body, 23));
        EXPECT_EQ(42.0f, by_slot::call<float>(body, 24));
        EXPECT_EQ(42.0, by_slot::call<double>(body, 25));
        EXPECT_EQ(42.0L, by_slot::call<long double>(body, 26));
    }
}

// --- What the library does not have ------------------------------------------------------------

TEST(ByteStringReaders, LackFiveForms) {
    void* const library = dlopen("libtova.so.2.18", RTLD_NOW | RTLD_NOLOAD);
    ASSERT_NE(nullptr, library) << dlerror();
    const std::string scope = "_ZN9TOVA_2_187generic7convert";
    const std::string text = "ERKNSt7__cxx1112basic_stringIcSt11char_traitsIcESaIcEEE";
    // The names are spelled correctly, since these exist.
    EXPECT_NE(nullptr, dlsym(library, (scope + "16bin_str_to_floatEPKc").c_str()));
    EXPECT_NE(nullptr,
              dlsym(library, (scope + "13little_endian17bin_str_to_uint16" + text).c_str()));
    EXPECT_NE(nullptr, dlsym(library, (scope + "10big_endian17bin_str_to_doubleEPKc").c_str()));

    for (const std::string& absent :
         {"13little_endian16bin_str_to_int16EPKc" + std::string(),
          "10big_endian17bin_str_to_uint16" + text,
          "10big_endian16bin_str_to_floatEPKc" + std::string(),
          "10big_endian16bin_str_to_float" + text, "10big_endian17bin_str_to_double" + text}) {
        EXPECT_EQ(nullptr, dlsym(library, (scope + absent).c_str())) << absent;
    }
    dlclose(library);
}

}  // namespace
