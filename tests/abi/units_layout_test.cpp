// Tests sizes, offsets and slots of lengths and colors, as compiled callers expect them.
#include <tova/generic/convert/units.hpp>
#include <tova/types/absolute_unit.hpp>
#include <tova/types/color.hpp>
#include <tova/types/device_unit.hpp>

#include "support/raw_memory.hpp"

#include <gtest/gtest.h>

#include <cstddef>
#include <cstring>
#include <type_traits>

namespace {

using test_support::base_offset;
using test_support::returns;
using test_support::slot;
using tova::generic::convert::to_device_unit;
using tova::generic::convert::to_md;
using tova::types::absolute_unit;
using tova::types::basic_absolute_impl;
using tova::types::color_t;
using tova::types::device_unit;

static_assert(sizeof(device_unit) == 16 && alignof(device_unit) == 8, "");
static_assert(sizeof(absolute_unit) == 16 && alignof(absolute_unit) == 8, "");
static_assert(sizeof(basic_absolute_impl<1>) == 16, "");
static_assert(sizeof(basic_absolute_impl<8>) == 16, "");
static_assert(sizeof(color_t) == 4 && alignof(color_t) == 1, "");

static_assert(std::is_polymorphic<device_unit>::value, "");
static_assert(!std::has_virtual_destructor<device_unit>::value, "");
static_assert(std::is_abstract<absolute_unit>::value, "");
static_assert(!std::has_virtual_destructor<absolute_unit>::value, "");
static_assert(std::is_base_of<absolute_unit, basic_absolute_impl<3>>::value, "");
static_assert(!std::is_polymorphic<color_t>::value, "");
static_assert(std::is_standard_layout<color_t>::value, "");

// Passed by reference at machine level, because copying and destruction are not trivial.
static_assert(!std::is_trivially_copy_constructible<device_unit>::value, "");
static_assert(!std::is_trivially_copy_constructible<basic_absolute_impl<1>>::value, "");
static_assert(!std::is_trivially_copy_constructible<color_t>::value, "");
static_assert(!std::is_trivially_destructible<color_t>::value, "");

// --- Result types, which are not part of a mangled name ------------------------------------------

static_assert(returns<device_unit::unit_types>(&device_unit::type), "");
static_assert(returns<int>(&device_unit::as_int32), "");
static_assert(returns<float>(&device_unit::as_float), "");
static_assert(returns<double>(&device_unit::as_double), "");
static_assert(returns<absolute_unit::unit_types>(&absolute_unit::type), "");
static_assert(returns<int>(&absolute_unit::as_int32), "");
static_assert(returns<double>(&absolute_unit::as_double), "");
static_assert(returns<int>(&absolute_unit::as_md), "");
static_assert(returns<double, absolute_unit>(&absolute_unit::value), "");
static_assert(returns<int>(&color_t::as_int32), "");
static_assert(returns<int>(&color_t::as_rgb), "");
static_assert(returns<unsigned char, color_t>(&color_t::alpha), "");
static_assert(std::is_same<device_unit, decltype(to_device_unit(1, device_unit::device))>::value,
              "");
static_assert(
    std::is_same<basic_absolute_impl<1>, decltype(to_md(1, device_unit::device, 96))>::value, "");

// --- Fields --------------------------------------------------------------------------------------

template <typename Field>
Field field_at(const void* object, std::size_t offset) {
    Field field;
    std::memcpy(&field, static_cast<const char*>(object) + offset, sizeof field);
    return field;
}

TEST(UnitsLayout, ALengthFollowsThePointerToTheSlots) {
    const device_unit device(-7);
    EXPECT_EQ(-7, field_at<int>(&device, 8));
    const basic_absolute_impl<5> inch(1.5);
    EXPECT_EQ(0, base_offset<absolute_unit>(inch));
    EXPECT_EQ(150000.0, field_at<double>(&inch, 8));
}

TEST(UnitsLayout, AColorIsRedGreenBlueAndAlpha) {
    const color_t color(1, 2, 3, 4);
    EXPECT_EQ(0, std::memcmp(&color, "\1\2\3\4", 4));
}

// --- Slots ---------------------------------------------------------------------------------------

// Calls a slot by its number, as compiled code does.
template <typename Result>
TEST_CALLS_SLOTS Result call(const void* object, std::size_t number) {
    return slot<Result(const void*)>(object, number)(object);
}

TEST(UnitsSlots, OfADeviceLengthAreInOrder) {
    const device_unit device(16777217);
    EXPECT_EQ(1, call<int>(&device, 0));
    EXPECT_EQ(16777217, call<int>(&device, 1));
    EXPECT_EQ(16777216.0f, call<float>(&device, 2));
    EXPECT_EQ(16777217.0, call<double>(&device, 3));
}

template <int N>
void expect_slots(double length, int whole, double hundredths) {
    const basic_absolute_impl<N> value(length);
    EXPECT_EQ(N, call<int>(&value, 0));
    EXPECT_EQ(whole, call<int>(&value, 1));
    EXPECT_EQ(hundredths, call<double>(&value, 2));
}

TEST(UnitsSlots, OfAPhysicalLengthAreInOrder) {
    expect_slots<1>(1.754, 2, 1.75);
    expect_slots<2>(2.754, 3, 2.75);
    expect_slots<3>(3.754, 4, 3.75);
    expect_slots<4>(4.754, 5, 4.75);
    expect_slots<5>(5.754, 6, 5.75);
    expect_slots<6>(6.754, 7, 6.75);
    expect_slots<7>(7.754, 8, 7.75);
    expect_slots<8>(8.754, 9, 8.75);
}

#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wnon-virtual-dtor"
class own_length : public absolute_unit {
public:
    unit_types do_type() const override { return inch; }
    int do_as_int32() const override { return 42; }
    double do_as_double() const override { return 8.25; }
};

class own_device : public device_unit {
public:
    unit_types do_type() const override { return static_cast<unit_types>(7); }
    int do_as_int32() const override { return 42; }
    float do_as_float() const override { return 4.5f; }
    double do_as_double() const override { return 8.25; }
};
#pragma GCC diagnostic pop

TEST(UnitsSlots, OfASubclassAreCalledByTheLibrary) {
    own_length length;
    length.value(3.0);
    EXPECT_EQ(300000, length.as_md());
    EXPECT_EQ(absolute_unit::inch, length.type());
    EXPECT_EQ(42, length.as_int32());
    EXPECT_EQ(8.25, length.as_double());
    EXPECT_EQ(288, to_device_unit(length, 96).as_int32());
    EXPECT_EQ(300000.0, to_md(length).value());

    const own_device device;
    EXPECT_EQ(7, static_cast<int>(device.type()));
    EXPECT_EQ(42, device.as_int32());
    EXPECT_EQ(4.5f, device.as_float());
    EXPECT_EQ(8.25, device.as_double());
    EXPECT_EQ(4200000.0, to_md(device, 1).value());
    EXPECT_EQ(0, to_device_unit(device).as_int32());
}

}  // namespace
