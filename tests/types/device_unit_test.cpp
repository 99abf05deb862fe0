#include <tova/types/device_unit.hpp>

#include <gtest/gtest.h>

#include <limits>
#include <type_traits>

namespace {

using tova::types::device_unit;

const int least = std::numeric_limits<int>::min();
const int most = std::numeric_limits<int>::max();

TEST(DeviceUnit, IsZeroByDefault) {
    const device_unit none;
    EXPECT_EQ(0, none.as_int32());
    EXPECT_EQ(device_unit::device, none.type());
    EXPECT_EQ(1, static_cast<int>(none.type()));
}

TEST(DeviceUnit, AcceptsIntegersOfAllWidths) {
    for (int value : {0, 1, -1, most, least})
        EXPECT_EQ(value, device_unit(value).as_int32());
    EXPECT_EQ(-128, device_unit(static_cast<signed char>(-128)).as_int32());
    EXPECT_EQ(-32768, device_unit(static_cast<short>(-32768)).as_int32());
    EXPECT_EQ(255, device_unit(static_cast<unsigned char>(255)).as_int32());
    EXPECT_EQ(65535, device_unit(static_cast<unsigned short>(65535)).as_int32());
}

TEST(DeviceUnit, KeepsTheLow32BitsOfLongs) {
    EXPECT_EQ(-1, device_unit(-1L).as_int32());
    EXPECT_EQ(least, device_unit(0x80000000L).as_int32());
    EXPECT_EQ(5, device_unit(0x7FFFFFFF00000005L).as_int32());
    EXPECT_EQ(most, device_unit(-0x80000001L).as_int32());
    EXPECT_EQ(-1, device_unit(0xFFFFFFFFFFFFFFFFUL).as_int32());
    EXPECT_EQ(7, device_unit(0xFFFFFFFF00000007UL).as_int32());
}

TEST(DeviceUnit, CannotBeMadeFromAnUnsignedInt) {
    EXPECT_FALSE((std::is_constructible<device_unit, unsigned int>::value));
    EXPECT_TRUE((std::is_constructible<device_unit, unsigned long>::value));
}

TEST(DeviceUnit, TruncatesFloatingPointValuesTowardZero) {
    const struct {
        double value;
        int units;
    } cases[] = {
        {0.0, 0},
        {0.9, 0},
        {-0.9, 0},
        {1.75, 1},
        {-1.75, -1},
        {2147483647.9, most},
        {-2147483648.0, least},
        {-2147483648.9, least},
        {2147483648.0, least},
        {-2147483649.0, least},
        {1e300, least},
        {-1e300, least},
        {std::numeric_limits<double>::infinity(), least},
        {std::numeric_limits<double>::quiet_NaN(), least},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.value);
        EXPECT_EQ(c.units, device_unit(c.value).as_int32());
    }
    EXPECT_EQ(1, device_unit(1.75f).as_int32());
    EXPECT_EQ(-1, device_unit(-1.75f).as_int32());
    EXPECT_EQ(2147483520, device_unit(2147483520.0f).as_int32());
    EXPECT_EQ(least, device_unit(2147483648.0f).as_int32());
    EXPECT_EQ(least, device_unit(-2147483648.0f).as_int32());
    EXPECT_EQ(least, device_unit(std::numeric_limits<float>::quiet_NaN()).as_int32());
}

TEST(DeviceUnit, ReturnsItsValueInThreeTypes) {
    const device_unit value(16777217);
    EXPECT_EQ(16777217, value.as_int32());
    EXPECT_EQ(16777216.0f, value.as_float());
    EXPECT_EQ(16777217.0, value.as_double());
    EXPECT_EQ(-7.0f, device_unit(-7).as_float());
    EXPECT_EQ(-7.0, device_unit(-7).as_double());
    EXPECT_EQ(-2147483648.0f, device_unit(least).as_float());
    EXPECT_EQ(16777217, value.do_as_int32());
    EXPECT_EQ(16777216.0f, value.do_as_float());
    EXPECT_EQ(16777217.0, value.do_as_double());
    EXPECT_EQ(device_unit::device, value.do_type());
}

TEST(DeviceUnit, IsAssignedInEveryForm) {
    const device_unit source(12);
    const device_unit copy(source);
    EXPECT_EQ(12, copy.as_int32());
    device_unit value;
    EXPECT_EQ(&value, &(value = source));
    EXPECT_EQ(12, value.as_int32());
    EXPECT_EQ(&value, &(value = 13));
    EXPECT_EQ(13, value.as_int32());
    EXPECT_EQ(&value, &value.assign(source));
    EXPECT_EQ(12, value.as_int32());
    EXPECT_EQ(&value, &value.assign(-14));
    EXPECT_EQ(-14, value.as_int32());
}

TEST(DeviceUnit, ComparesItsValue) {
    const device_unit one(1);
    const device_unit two(2);
    EXPECT_TRUE(one.equal(device_unit(1)));
    EXPECT_FALSE(one.equal(two));
    EXPECT_TRUE(one == device_unit(1.5));
    EXPECT_FALSE(one == two);
    EXPECT_TRUE(one != two);
    EXPECT_FALSE(one != device_unit(1));
}

#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wnon-virtual-dtor"
class own_device : public device_unit {
public:
    unit_types do_type() const override { return static_cast<unit_types>(7); }
    int do_as_int32() const override { return 42; }
    float do_as_float() const override { return 4.5f; }
    double do_as_double() const override { return 8.25; }
};
#pragma GCC diagnostic pop

TEST(DeviceUnit, CallsTheOperationsOfASubclassButComparesTheField) {
    const own_device own;
    const device_unit& base = own;
    EXPECT_EQ(7, static_cast<int>(base.type()));
    EXPECT_EQ(42, base.as_int32());
    EXPECT_EQ(4.5f, base.as_float());
    EXPECT_EQ(8.25, base.as_double());
    EXPECT_TRUE(base == device_unit(0));
}

}  // namespace
