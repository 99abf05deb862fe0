#include <tova/types/variant_value.hpp>

#include <tova/memory/pointers.hpp>
#include <tova/types/nil.hpp>

#include "support/child_process.hpp"
#include "support/class_name.hpp"
#include "support/failing_allocation.hpp"

#include <gtest/gtest.h>

#include <memory>
#include <sstream>
#include <string>
#include <typeinfo>

namespace {

using namespace tova::strings;
using namespace tova::types;
using tova::memory::pointers::rc_pointer;

template <typename T>
T sample() {
    return static_cast<T>(42);
}
template <>
nil_t sample<nil_t>() {
    return nil_t();
}
template <>
ustring8 sample<ustring8>() {
    return ustring8("42");
}
template <>
ustring16 sample<ustring16>() {
    return ustring16{'4', '2'};
}
template <>
ustring32 sample<ustring32>() {
    return ustring32(L"42");
}
template <>
std::string sample<std::string>() {
    return "42";
}
template <>
std::wstring sample<std::wstring>() {
    return L"42";
}

template <typename T>
class VariantBody : public ::testing::Test {};
using all_values =
    ::testing::Types<nil_t, signed char, short, int, long, unsigned char, unsigned short,
                     unsigned int, unsigned long, bool, float, double, long double, ustring8,
                     ustring16, ustring32, std::string, std::wstring>;
TYPED_TEST_SUITE(VariantBody, all_values, test_support::class_name);

TYPED_TEST(VariantBody, IsConvertibleAndNamesItsType) {
    const variant_value_t<TypeParam> body(sample<TypeParam>());
    EXPECT_TRUE(body.convertible());
    EXPECT_TRUE(typeid(TypeParam) == body.type());
}

TYPED_TEST(VariantBody, StartsWithoutHoldersOrHeapMark) {
    const variant_value_t<TypeParam> body(sample<TypeParam>());
    EXPECT_EQ(0u, body.count);
    EXPECT_FALSE(body.allocated);
}

TYPED_TEST(VariantBody, ClonesItselfWithAHeapMarkAndWithoutHolders) {
    variant_value_t<TypeParam> body(sample<TypeParam>());
    body.count = 7;
    variant_type* const clone = body.clone();
    ASSERT_NE(nullptr, clone);
    EXPECT_NE(&body, clone);
    EXPECT_TRUE(typeid(body) == typeid(*clone));
    EXPECT_EQ(0u, clone->count);
    EXPECT_TRUE(clone->allocated);
    EXPECT_EQ(body.as_int(), clone->as_int());
    EXPECT_EQ(body.as_string(), clone->as_string());
    EXPECT_EQ(7u, body.count);
    body.count = 0;

    const long live = test_support::live_allocations();
    { const rc_pointer<variant_type> holder(clone); }
    EXPECT_GT(live, test_support::live_allocations());
}

TYPED_TEST(VariantBody, OutlivesItsHoldersIfItIsOnTheStack) {
    variant_value_t<TypeParam> body(sample<TypeParam>());
    {
        const rc_pointer<variant_type> first(&body);
        const rc_pointer<variant_type> second(first);
        EXPECT_EQ(2u, body.count);
    }
    EXPECT_EQ(0u, body.count);
    EXPECT_TRUE(body.convertible());
}

TYPED_TEST(VariantBody, EndsTheProcessThroughUnexpectedWhenNoCloneCanBeMade) {
    variant_value_t<TypeParam> body(sample<TypeParam>());
    const auto result = test_support::run_in_child([&] {
        test_support::exit_42_on_unexpected();
        const test_support::failing_allocation limit;
        body.clone();
    });
    EXPECT_TRUE(result.exited);
    EXPECT_EQ(42, result.exit_code) << result.output;
}

TEST(NilBody, ConvertsToZero) {
    const variant_value_t<nil_t> body((nil_t()));
    EXPECT_EQ("0", body.as_string());
    EXPECT_EQ("0", body.as_utf8());
    EXPECT_EQ("0", body.as_ustring());
    EXPECT_EQ(L"0", body.as_wstring());
    EXPECT_EQ(ustring16{'0'}, body.as_utf16());
    EXPECT_EQ(ustring32{'0'}, body.as_utf32());
    EXPECT_EQ(0, body.as_int());
    EXPECT_EQ(0, body.as_short());
    EXPECT_EQ(0, body.as_long());
    EXPECT_EQ(0, body.as_int8());
    EXPECT_EQ(0, body.as_int16());
    EXPECT_EQ(0, body.as_int32());
    EXPECT_EQ(0, body.as_int64());
    EXPECT_EQ(0, body.as_uint8());
    EXPECT_EQ(0, body.as_uint16());
    EXPECT_EQ(0u, body.as_uint32());
    EXPECT_EQ(0u, body.as_uint64());
    EXPECT_FALSE(body.as_bool());
    EXPECT_EQ(0.0f, body.as_float());
    EXPECT_EQ(0.0, body.as_double());
    EXPECT_EQ(0.0L, body.as_long_double());
    std::ostringstream stream;
    EXPECT_EQ(&stream, &body.ostream(stream));
    EXPECT_EQ("0", stream.str());
}

TEST(BoolBody, IsOneAsANumberOnlyIfItsByteIsOne) {
    const std::unique_ptr<variant_type> body(new variant_value_t<bool>(true));
    auto* const byte = static_cast<volatile unsigned char*>(
        static_cast<void*>(reinterpret_cast<char*>(body.get()) + sizeof(variant_type)));
    ASSERT_EQ(1, *byte);
    const auto expect_all = [&](int expected) {
        EXPECT_EQ(expected, body->as_int());
        EXPECT_EQ(expected, body->as_short());
        EXPECT_EQ(expected, body->as_long());
        EXPECT_EQ(expected, body->as_int8());
        EXPECT_EQ(expected, body->as_int16());
        EXPECT_EQ(expected, body->as_int32());
        EXPECT_EQ(expected, body->as_int64());
        EXPECT_EQ(expected, body->as_uint8());
        EXPECT_EQ(expected, body->as_uint16());
        EXPECT_EQ(static_cast<unsigned int>(expected), body->as_uint32());
        EXPECT_EQ(static_cast<unsigned long>(expected), body->as_uint64());
        EXPECT_EQ(expected, body->as_float());
        EXPECT_EQ(expected, body->as_double());
        EXPECT_EQ(expected, body->as_long_double());
    };
    expect_all(1);
    for (int other : {0, 2, 3, 128, 255}) {
        SCOPED_TRACE(other);
        *byte = static_cast<unsigned char>(other);
        expect_all(0);
    }
}

TEST(WideStringBody, PrintsTheAddressOfItsValue) {
    const variant_value_t<std::wstring> body(L"text");
    std::ostringstream expected;
    expected << "< " << typeid(std::wstring).name() << " instance at "
             << static_cast<const void*>(&body.value) << " >";
    std::ostringstream stream;
    body.ostream(stream);
    EXPECT_EQ(expected.str(), stream.str());
}

}  // namespace
