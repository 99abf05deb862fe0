#include <tova/generic/convert/units.hpp>

#include "support/child_process.hpp"

#include <gtest/gtest.h>

#include <cmath>
#include <csignal>
#include <limits>
#include <type_traits>

namespace {

using tova::generic::convert::to_device_unit;
using tova::generic::convert::to_md;
using tova::types::absolute_unit;
using tova::types::basic_absolute_impl;
using tova::types::device_unit;

const int least = std::numeric_limits<int>::min();
const int most = std::numeric_limits<int>::max();
const auto no_unit = static_cast<absolute_unit::unit_types>(9);

TEST(ToDeviceUnit, ReturnsADeviceLengthUnchanged) {
    EXPECT_EQ(150, to_device_unit(device_unit(150)).as_int32());
}

TEST(ToDeviceUnit, AcceptsANumberAndIgnoresTheType) {
    for (int number : {0, 1, 2, -1}) {
        const auto type = static_cast<device_unit::unit_types>(number);
        EXPECT_EQ(7, to_device_unit(7, type).as_int32());
        EXPECT_EQ(-7, to_device_unit(-7.9, type).as_int32());
        EXPECT_EQ(least, to_device_unit(1e20, type).as_int32());
    }
}

TEST(ToDeviceUnit, MultipliesMdByTheResolution) {
    const struct {
        double md;
        int dpi;
        int units;
    } cases[] = {
        {100000, 96, 96},       {100000, 300, 300},     {50000, 96, 48},
        {1041, 96, 0},          {1042, 96, 1},          {-1041, 96, 0},
        {-1042, 96, -1},        {100000.9, 96, 96},     {99999.9, 96, 95},
        {100000, 0, 0},         {100000, -96, -96},     {22369621, 96, 21474},
        {22369622, 96, -21474}, {30000000, 96, -14149}, {2147483647, 1, 21474},
        {2147483647, 2, 0},     {-2147483648.0, 2, 0},  {-2147483648.0, -1, -21474},
        {1e12, 1, -21474},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(::testing::Message() << c.md << " at " << c.dpi);
        const basic_absolute_impl<1> length(c.md);
        EXPECT_EQ(c.units, to_device_unit(length, c.dpi).as_int32());
        EXPECT_EQ(c.units, to_device_unit(c.md, absolute_unit::md, c.dpi).as_int32());
        EXPECT_EQ(c.units, to_device_unit(c.md, no_unit, c.dpi).as_int32());
    }
}

TEST(ToDeviceUnit, WrapsAt32BitsInEveryPosition) {
    for (long md = -2147483648; md <= 2147483647; md += 1234567) {
        for (int dpi : {1, 72, 96, 300, 1200, -96, most, least}) {
            const int product = static_cast<int>(
                static_cast<unsigned>(static_cast<unsigned long>(md) *
                                      static_cast<unsigned long>(static_cast<long>(dpi))));
            const basic_absolute_impl<1> length(static_cast<double>(md));
            ASSERT_EQ(product / 100000, to_device_unit(length, dpi).as_int32())
                << md << " at " << dpi;
        }
    }
}

TEST(ToDeviceUnit, AcceptsALengthInAnyUnit) {
    const struct {
        double an_inch;
        absolute_unit::unit_types type;
    } cases[] = {
        {100000, absolute_unit::md},
        {300, absolute_unit::dot_300},
        {25.4, absolute_unit::millimetre},
        {2.54, absolute_unit::centimetre},
        {1, absolute_unit::inch},
        {72, absolute_unit::point},
        {6, absolute_unit::pica},
        {96, absolute_unit::pixel_96},
        {100000, no_unit},
        {100000, static_cast<absolute_unit::unit_types>(0)},
        {100000, static_cast<absolute_unit::unit_types>(-1)},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(static_cast<int>(c.type));
        EXPECT_EQ(96, to_device_unit(c.an_inch, c.type, 96).as_int32());
        EXPECT_EQ(192, to_device_unit(2 * c.an_inch, c.type, 96).as_int32());
        if (c.an_inch == std::floor(c.an_inch)) {
            EXPECT_EQ(96, to_device_unit(static_cast<int>(c.an_inch), c.type, 96).as_int32());
        }
    }
    EXPECT_EQ(37, to_device_unit(10, absolute_unit::millimetre, 96).as_int32());
    EXPECT_EQ(least / 100000, to_device_unit(least, absolute_unit::md, 1).as_int32());
}

TEST(ToMd, ConvertsAnyLengthWithItsFraction) {
    static_assert(
        std::is_same<basic_absolute_impl<1>, decltype(to_md(basic_absolute_impl<5>()))>::value, "");
    EXPECT_EQ(100000.0, to_md(basic_absolute_impl<5>(1.0)).value());
    EXPECT_EQ(1.75, to_md(basic_absolute_impl<1>(1.75)).value());
    EXPECT_EQ(1e12, to_md(basic_absolute_impl<1>(1e12)).value());
    EXPECT_EQ(absolute_unit::md, to_md(basic_absolute_impl<5>(1.0)).type());
}

TEST(ToMd, AcceptsANumberInAnyUnit) {
    const struct {
        double length;
        absolute_unit::unit_types type;
        double md;
    } cases[] = {
        {1.75, absolute_unit::md, 1.75},
        {1.5, absolute_unit::dot_300, 500},
        {25.4, absolute_unit::millimetre, 100000},
        {1.27, absolute_unit::centimetre, 50000},
        {0.125, absolute_unit::inch, 12500},
        {36, absolute_unit::point, 50000},
        {1.5, absolute_unit::pica, 25000},
        {24, absolute_unit::pixel_96, 25000},
        {1.75, no_unit, 1.75},
        {1.75, static_cast<absolute_unit::unit_types>(0), 1.75},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(static_cast<int>(c.type));
        EXPECT_EQ(c.md, to_md(c.length, c.type).value());
    }
    EXPECT_EQ(100000.0, to_md(72, absolute_unit::point).value());
    EXPECT_EQ(-5.0, to_md(-5, no_unit).value());
    EXPECT_EQ(10 * 100000.0 / 25.4, to_md(10, absolute_unit::millimetre).value());
}

TEST(ToMd, LosesTheFractionOfAnInchOfWholeDeviceUnits) {
    const struct {
        int units;
        int dpi;
        double md;
    } cases[] = {
        {150, 96, 100000},        {95, 96, 0},        {96, 96, 100000},    {192, 96, 200000},
        {-150, 96, -100000},      {-95, 96, 0},       {150, -96, -100000}, {21474, 1, 2147400000},
        {21475, 1, -2147467296},  {most, 1, -100000}, {least, 1, 0},       {least, -1, 0},
        {least + 1, -1, -100000},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(::testing::Message() << c.units << " at " << c.dpi);
        EXPECT_EQ(c.md, to_md(device_unit(c.units), c.dpi).value());
        EXPECT_EQ(c.md, to_md(c.units, device_unit::device, c.dpi).value());
        EXPECT_EQ(c.md, to_md(c.units, static_cast<device_unit::unit_types>(5), c.dpi).value());
    }
}

TEST(ToMd, KeepsTheFractionOfAnInchOfADouble) {
    EXPECT_EQ(156250.0, to_md(150.0, device_unit::device, 96).value());
    EXPECT_EQ(156250.0, to_md(150.0, static_cast<device_unit::unit_types>(5), 96).value());
    EXPECT_EQ(-156250.0, to_md(-150.0, device_unit::device, 96).value());
    for (int i = -10000; i < 10000; ++i) {
        const double units = i * 0.37;
        const volatile double inches = units / 96;
        ASSERT_EQ(inches * 100000.0, to_md(units, device_unit::device, 96).value()) << units;
    }
}

TEST(ToMd, ReturnsInfinityOrNaNForADoubleAtAResolutionOf0) {
    EXPECT_EQ(std::numeric_limits<double>::infinity(), to_md(1.0, device_unit::device, 0).value());
    EXPECT_EQ(-std::numeric_limits<double>::infinity(),
              to_md(-1.0, device_unit::device, 0).value());
    EXPECT_TRUE(std::isnan(to_md(0.0, device_unit::device, 0).value()));
}

// Sanitizers end the process in their own way.
void expect_division_by_zero(void (*divide)()) {
    const test_support::child_result result = test_support::run_in_child(divide);
    EXPECT_FALSE(result.exited && result.exit_code == 0);
    if (!test_support::under_sanitizer()) {
        EXPECT_EQ(SIGFPE, result.signal);
    }
}

TEST(ToMd, CrashesForWholeUnitsAtAResolutionOf0) {
    expect_division_by_zero([] { to_md(device_unit(1), 0); });
    expect_division_by_zero([] { to_md(1, device_unit::device, 0); });
    expect_division_by_zero([] { to_md(0, device_unit::device, 0); });
}

}  // namespace
