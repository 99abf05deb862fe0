#include <tova/types/absolute_unit.hpp>

#include "support/class_name.hpp"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace {

using tova::types::absolute_unit;
using tova::types::basic_absolute_impl;

const int least = std::numeric_limits<int>::min();

#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wnon-virtual-dtor"
// A length whose unit is chosen at run time, even a type that is not a unit.
class any_unit : public absolute_unit {
public:
    explicit any_unit(int type) : m_type(type) {}
    any_unit(int type, int length) : absolute_unit(length), m_type(type) {}
    any_unit(int type, double length) : absolute_unit(length), m_type(type) {}

    unit_types do_type() const override { return static_cast<unit_types>(m_type); }
    int do_as_int32() const override { return 42; }
    double do_as_double() const override { return 8.25; }

private:
    int m_type;
};
#pragma GCC diagnostic pop

any_unit md(double length) {
    any_unit result(1);
    result.value(length);
    return result;
}

TEST(AbsoluteUnit, NumbersItsUnits) {
    EXPECT_EQ(1, absolute_unit::md);
    EXPECT_EQ(2, absolute_unit::dot_300);
    EXPECT_EQ(3, absolute_unit::millimetre);
    EXPECT_EQ(4, absolute_unit::centimetre);
    EXPECT_EQ(5, absolute_unit::inch);
    EXPECT_EQ(6, absolute_unit::point);
    EXPECT_EQ(7, absolute_unit::pica);
    EXPECT_EQ(8, absolute_unit::pixel_96);
}

TEST(AbsoluteUnit, IsZeroByDefault) {
    EXPECT_EQ(0.0, any_unit(1).value());
    EXPECT_EQ(0, any_unit(1).as_md());
}

TEST(AbsoluteUnit, IsMadeFromWholeMdOnly) {
    const struct {
        double given;
        double held;
    } cases[] = {
        {1.75, 1.0},
        {-1.75, -1.0},
        {0.999, 0.0},
        {2147483647.5, 2147483647.0},
        {-2147483648.5, -2147483648.0},
        {2147483648.0, -2147483648.0},
        {std::numeric_limits<double>::quiet_NaN(), -2147483648.0},
        {std::numeric_limits<double>::infinity(), -2147483648.0},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.given);
        EXPECT_EQ(c.held, any_unit(1, c.given).value());
    }
    EXPECT_EQ(7.0, any_unit(1, 7).value());
    EXPECT_EQ(-2147483648.0, any_unit(1, least).value());
}

TEST(AbsoluteUnit, IsCopiedAndAssignedWithItsFraction) {
    const any_unit source = md(1.75);
    const absolute_unit& base = source;
    const basic_absolute_impl<1> copy(base);
    EXPECT_EQ(1.75, copy.value());
    any_unit target(5);
    absolute_unit& target_base = target;
    EXPECT_EQ(&target_base, &(target_base = base));
    EXPECT_EQ(1.75 / 100000.0, target.value());
}

TEST(AbsoluteUnit, ReturnsMdTruncatedTowardZero) {
    const struct {
        double held;
        int md;
    } cases[] = {
        {0.0, 0},
        {1.75, 1},
        {-1.75, -1},
        {2147483647.75, 2147483647},
        {2147483648.0, least},
        {-2147483648.75, least},
        {-2147483649.0, least},
        {std::numeric_limits<double>::quiet_NaN(), least},
        {std::numeric_limits<double>::infinity(), least},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.held);
        EXPECT_EQ(c.md, md(c.held).as_md());
    }
}

TEST(AbsoluteUnit, CallsTheOperationsOfASubclass) {
    const any_unit own(3);
    const absolute_unit& base = own;
    EXPECT_EQ(absolute_unit::millimetre, base.type());
    EXPECT_EQ(42, base.as_int32());
    EXPECT_EQ(8.25, base.as_double());
}

TEST(AbsoluteUnit, ReturnsTheLengthThatItIsGiven) {
    for (int type = 0; type <= 9; ++type)
        EXPECT_EQ(1.75, any_unit(type).value(1.75));
}

TEST(AbsoluteUnit, IsZeroForATypeThatIsNotAUnit) {
    for (int type : {0, 9, -1, 100, least, std::numeric_limits<int>::max()}) {
        SCOPED_TRACE(type);
        any_unit value(type, 5);
        EXPECT_EQ(5, value.as_md());
        EXPECT_EQ(0.0, value.value());
        value.value(7.0);
        EXPECT_EQ(0, value.as_md());
    }
}

struct unit_row {
    int type;
    double an_inch;
};
const unit_row units[] = {{1, 100000.0}, {2, 300.0}, {3, 25.4}, {4, 2.54},
                          {5, 1.0},      {6, 72.0},  {7, 6.0},  {8, 96.0}};

// Rounds one step to a double: the compiler cannot fuse steps across a volatile.
double rounded(volatile double value) {
    return value;
}

double oracle_md(const unit_row& unit, double length) {
    if (unit.type == 1)
        return length;
    const double product = rounded(length * 100000.0);
    return unit.type == 5 ? product : rounded(product / unit.an_inch);
}

double oracle_length(const unit_row& unit, double md) {
    if (unit.type == 1)
        return md;
    return unit.type == 5 ? rounded(md / 100000.0) : rounded(rounded(md * unit.an_inch) / 100000.0);
}

double oracle_whole(double length) {
    return std::floor(rounded(length + 0.5));
}

double oracle_hundredths(double length) {
    const double hundred = rounded(length * 100.0);
    return rounded(std::floor(rounded(hundred + 0.5)) / 100.0);
}

TEST(AbsoluteUnit, StoresAnInchOfEachUnitAs100000Md) {
    for (const auto& unit : units) {
        SCOPED_TRACE(unit.type);
        any_unit value(unit.type);
        value.value(unit.an_inch);
        EXPECT_EQ(100000, value.as_md());
        EXPECT_EQ(unit.an_inch, value.value());
    }
}

// About 200000 lengths of each unit, compared to the last bit.
TEST(AbsoluteUnit, ConvertsInTheOrderOfTheExpressions) {
    for (const auto& unit : units) {
        for (int i = -20000; i <= 20000; ++i) {
            for (double length : {i * 1.0, i * 0.01, i * 0.333, i * 12345.678, i / 7.0}) {
                any_unit value(unit.type);
                value.value(length);
                const double md = oracle_md(unit, length);
                any_unit held(1);
                static_cast<absolute_unit&>(held) = value;
                ASSERT_EQ(md, held.value()) << unit.type << " " << length;
                ASSERT_EQ(oracle_length(unit, md), value.value()) << unit.type << " " << length;
            }
        }
    }
}

template <typename Unit>
class BasicAbsolute : public ::testing::Test {};
typedef ::testing::Types<basic_absolute_impl<1>, basic_absolute_impl<2>, basic_absolute_impl<3>,
                         basic_absolute_impl<4>, basic_absolute_impl<5>, basic_absolute_impl<6>,
                         basic_absolute_impl<7>, basic_absolute_impl<8>>
    all_units;
TYPED_TEST_SUITE(BasicAbsolute, all_units, test_support::class_name);

template <int N>
const unit_row& row(const basic_absolute_impl<N>&) {
    return units[N - 1];
}

TYPED_TEST(BasicAbsolute, HasItsNumberAsItsType) {
    const TypeParam none;
    EXPECT_EQ(row(none).type, static_cast<int>(none.do_type()));
    EXPECT_EQ(row(none).type, static_cast<int>(none.type()));
    EXPECT_EQ(0.0, none.value());
    EXPECT_EQ(0, none.as_int32());
    EXPECT_EQ(0.0, none.as_double());
}

TYPED_TEST(BasicAbsolute, IsMadeFromALengthInItsOwnUnit) {
    const TypeParam value(1.75);
    EXPECT_EQ(oracle_length(row(value), oracle_md(row(value), 1.75)), value.value());
    EXPECT_EQ(static_cast<int>(oracle_md(row(value), 1.75)), value.as_md());
}

TYPED_TEST(BasicAbsolute, RoundsToWholeNumbersAndToHundredthsWithHalvesUp) {
    for (int i = -20000; i <= 20000; ++i) {
        for (double length : {i * 0.5, i * 0.005, i * 0.01, i * 0.0333, i * 777.777}) {
            const TypeParam value(length);
            const double expected = oracle_length(row(value), oracle_md(row(value), length));
            ASSERT_EQ(expected, value.value()) << length;
            ASSERT_EQ(oracle_whole(expected), value.as_int32()) << length;
            ASSERT_EQ(value.as_int32(), value.do_as_int32()) << length;
            ASSERT_EQ(oracle_hundredths(expected), value.as_double()) << length;
            ASSERT_EQ(value.as_double(), value.do_as_double()) << length;
        }
    }
}

TYPED_TEST(BasicAbsolute, ReturnsTheSmallestIntForALengthThatDoesNotFit) {
    for (double length : {1e12, -1e12, std::numeric_limits<double>::infinity(),
                          std::numeric_limits<double>::quiet_NaN()})
        EXPECT_EQ(least, TypeParam(length).as_int32()) << length;
}

TEST(BasicAbsolute, RoundsHalvesUpAlsoBelowZero) {
    const struct {
        double length;
        int whole;
        double hundredths;
    } cases[] = {
        {0.5, 1, 0.5},      {-0.5, 0, -0.5},    {1.49, 1, 1.49},      {-1.5, -1, -1.5},
        {-1.51, -2, -1.51}, {2.5, 3, 2.5},      {0.125, 0, 0.13},     {-0.125, 0, -0.12},
        {1.004, 1, 1.0},    {-1.004, -1, -1.0}, {99.996, 100, 100.0}, {0.0, 0, 0.0},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.length);
        const basic_absolute_impl<1> value(c.length);
        EXPECT_EQ(c.whole, value.as_int32());
        EXPECT_EQ(c.hundredths, value.as_double());
    }
}

TEST(BasicAbsolute, Has100000MdInAnInch) {
    basic_absolute_impl<5> inch;
    inch.value(1.0);
    EXPECT_EQ(100000, inch.as_md());
    EXPECT_EQ(1, inch.do_as_int32());
    const basic_absolute_impl<3> millimetres(25.4);
    EXPECT_EQ(100000, millimetres.as_md());
    EXPECT_EQ(25.4, millimetres.do_as_double());
}

TEST(BasicAbsolute, ConvertsALengthOfAnotherUnitToItsOwn) {
    const basic_absolute_impl<5> inch(2.0);
    const basic_absolute_impl<3> millimetres(inch);
    EXPECT_EQ(50.8, millimetres.value());
    basic_absolute_impl<6> points;
    points = basic_absolute_impl<6>(inch);
    EXPECT_EQ(144, points.as_int32());
    points = basic_absolute_impl<6>(1.0);
    EXPECT_EQ(1.0, points.value());
}

}  // namespace
