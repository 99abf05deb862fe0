#include <tova/system/date_time/date.hpp>

#include <tova/exceptions/exceptions.hpp>

#include "support/place_of_raise.hpp"
#include "system/date_time/calendar_oracle.hpp"

#include <gtest/gtest.h>

#include <limits>
#include <ostream>

namespace {

using test_support::calendar_day;
using test_support::raises;
using tova::exceptions::out_of_range;
using tova::system::date_time::date;
using tova::system::date_time::date_duration;

const char source[] = "system/date_time/date";
const unsigned largest = std::numeric_limits<unsigned>::max();

calendar_day shown(const date& value) {
    return {value.year(), value.month(), value.day()};
}

date date_of(const calendar_day& day) {
    return date(day.day, day.month, day.year);
}

date date_with(unsigned number) {
    date result;
    result.pJulian_day_number(number);
    return result;
}

// The stored day of a date. A month of 31 days returns it unchanged.
unsigned stored_day(date value) {
    value.month(1);
    return value.day();
}

template <typename Body>
void expect_invalid_day(const Body& body) {
    EXPECT_TRUE(raises<out_of_range>(body, "day value out of valid range", 68, source, "day"));
}

template <typename Body>
void expect_invalid_month(const Body& body) {
    EXPECT_TRUE(raises<out_of_range>(body, "month value out of valid range", 58, source, "month"));
}

template <typename Body>
void expect_invalid_move(const Body& body) {
    EXPECT_TRUE(
        raises<out_of_range>(body, "date value out of valid range", 146, source, "minus_assign"));
}

}  // namespace

namespace test_support {

void PrintTo(const calendar_day& day, std::ostream* stream) {
    *stream << day.day << "." << day.month << "." << day.year;
}

}  // namespace test_support

namespace {

TEST(Date, IsAllZeroByDefault) {
    const date none;
    EXPECT_EQ((calendar_day{0, 0, 0}), shown(none));
    EXPECT_EQ(0u, none.get_days());
    EXPECT_FALSE(none.is_day_constrained());
    EXPECT_TRUE(none.is_leap_year());
}

TEST(Date, IsMadeFromDayMonthAndYear) {
    const date value(7, 11, 1998);
    EXPECT_EQ(7u, value.day());
    EXPECT_EQ(11u, value.month());
    EXPECT_EQ(1998u, value.year());
}

TEST(Date, ReportsAnInvalidDayBeforeAnInvalidMonth) {
    expect_invalid_day([] { date(0, 0, 2000); });
    expect_invalid_day([] { date(32, 13, 2000); });
    expect_invalid_month([] { date(31, 13, 2000); });
    expect_invalid_month([] { date(1, 0, 2000); });
}

TEST(Date, AcceptsDaysFrom1To31WhateverTheMonth) {
    for (unsigned month = 0; month <= 12; ++month) {
        date value;
        if (month > 0)
            value.month(month);
        for (unsigned day = 1; day <= 31; ++day) {
            SCOPED_TRACE(day);
            EXPECT_EQ(day, value.day(day));
            EXPECT_EQ(day, stored_day(value));
            EXPECT_TRUE(value.is_valid_day(day));
        }
        for (unsigned day : {0u, 32u, 33u, 1000u, 0x80000000u, largest - 30, largest}) {
            SCOPED_TRACE(day);
            expect_invalid_day([&] { value.day(day); });
            EXPECT_FALSE(value.is_valid_day(day));
            EXPECT_EQ(31u, stored_day(value));
        }
    }
}

TEST(Date, AcceptsMonthsFrom1To12) {
    date value;
    for (unsigned month = 1; month <= 12; ++month) {
        EXPECT_EQ(month, value.month(month));
        EXPECT_EQ(month, value.month());
        EXPECT_TRUE(value.is_valid_month(month));
    }
    for (unsigned month : {0u, 13u, 100u, 0x80000000u, largest}) {
        SCOPED_TRACE(month);
        expect_invalid_month([&] { value.month(month); });
        EXPECT_FALSE(value.is_valid_month(month));
        EXPECT_EQ(12u, value.month());
    }
}

TEST(Date, AcceptsAnyYear) {
    date value;
    for (unsigned year : {0u, 1u, 1582u, 2000u, 0x80000000u, largest}) {
        EXPECT_EQ(year, value.year(year));
        EXPECT_EQ(year, value.year());
    }
}

TEST(Date, HasLeapYearsByTheGregorianRule) {
    const struct {
        unsigned year;
        bool leap;
    } cases[] = {{0, true},     {1, false},    {4, true},     {100, false},    {400, true},
                 {1900, false}, {1996, true},  {1999, false}, {2000, true},    {2001, false},
                 {2004, true},  {2100, false}, {2400, true},  {largest, false}};
    for (const auto& c : cases) {
        SCOPED_TRACE(c.year);
        EXPECT_EQ(c.leap, date(1, 1, c.year).is_leap_year());
    }
    for (unsigned year = 0; year < 1200; ++year)
        ASSERT_EQ(test_support::is_leap(year), date(1, 1, year).is_leap_year()) << year;
}

TEST(Date, StoresADayBeyondTheMonthAndReturnsTheLastDayOfTheMonth) {
    for (unsigned year : {1900u, 2000u, 2001u, 2004u}) {
        for (unsigned month = 1; month <= 12; ++month) {
            const unsigned length = test_support::month_length(year, month);
            for (unsigned day = 1; day <= 31; ++day) {
                SCOPED_TRACE(::testing::Message() << day << "." << month << "." << year);
                const date value(day, month, year);
                EXPECT_EQ(day > length ? length : day, value.day());
                EXPECT_EQ(value.day(), value.get_days());
                EXPECT_EQ(day > length, value.is_day_constrained());
                EXPECT_EQ(day, stored_day(value));
            }
        }
    }
}

TEST(Date, ReturnsTheStoredDayAgainOnceTheMonthIsLongEnough) {
    date value(31, 2, 2001);
    EXPECT_EQ(28u, value.day());
    EXPECT_TRUE(value.is_day_constrained());
    value.year(2004);
    EXPECT_EQ(29u, value.day());
    value.month(4);
    EXPECT_EQ(30u, value.day());
    value.month(5);
    EXPECT_EQ(31u, value.day());
    EXPECT_FALSE(value.is_day_constrained());
}

TEST(Date, IsConstrainedIfItHasADayButNoMonth) {
    date value;
    value.day(5);
    EXPECT_EQ(0u, value.day());
    EXPECT_TRUE(value.is_day_constrained());
}

TEST(Date, CopiesWithItsStoredDay) {
    const date value(31, 2, 2001);
    const date copy(value);
    date assigned(1, 1, 1);
    EXPECT_EQ(&assigned, &(assigned = value));
    date named(1, 1, 1);
    EXPECT_EQ(&named, &named.assign(value));
    for (const date& other : {copy, assigned, named}) {
        EXPECT_EQ((calendar_day{2001, 2, 28}), shown(other));
        EXPECT_EQ(31u, stored_day(other));
    }
    const date& self = assigned;
    assigned = self;
    EXPECT_EQ((calendar_day{2001, 2, 28}), shown(assigned));
}

TEST(DayNumber, CountsFromTheFirstOfMarchOfYear0) {
    const struct {
        calendar_day day;
        unsigned number;
    } cases[] = {
        {{0, 3, 1}, 1},         {{0, 3, 2}, 2},          {{0, 4, 1}, 32},
        {{0, 12, 31}, 306},     {{1, 1, 1}, 307},        {{1, 2, 28}, 365},
        {{1, 3, 1}, 366},       {{4, 2, 29}, 1461},      {{4, 3, 1}, 1462},
        {{100, 2, 28}, 36524},  {{100, 3, 1}, 36525},    {{400, 2, 29}, 146097},
        {{400, 3, 1}, 146098},  {{1970, 1, 1}, 719469},  {{2000, 2, 29}, 730485},
        {{2000, 3, 1}, 730486}, {{2038, 1, 19}, 744324},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.number);
        EXPECT_EQ(c.number, date_of(c.day).pJulian_day_number());
    }
}

TEST(DayNumber, CountsTheStoredDay) {
    EXPECT_EQ(date(3, 3, 2001).pJulian_day_number(), date(31, 2, 2001).pJulian_day_number());
    EXPECT_EQ(date(2, 3, 2000).pJulian_day_number(), date(31, 2, 2000).pJulian_day_number());
    EXPECT_EQ(date(1, 5, 2001).pJulian_day_number(), date(31, 4, 2001).pJulian_day_number());
    EXPECT_EQ(date(1, 3, 2001).pJulian_day_number(), date(29, 2, 2001).pJulian_day_number());
}

TEST(DayNumber, WrapsBeforeTheFirstOfMarchOfYear0) {
    EXPECT_EQ(1041529479u, date().pJulian_day_number());
    EXPECT_EQ(1041529511u, date(1, 1, 0).pJulian_day_number());
    EXPECT_EQ(1041529570u, date(29, 2, 0).pJulian_day_number());
    EXPECT_EQ(date(1, 1, 0).pJulian_day_number() - 31, date(1, 12, largest).pJulian_day_number());
}

TEST(DayNumber, WrapsAt32Bits) {
    EXPECT_EQ(largest, date(19, 3, 11759221).pJulian_day_number());
    EXPECT_EQ(0u, date(20, 3, 11759221).pJulian_day_number());
    EXPECT_EQ(1u, date(21, 3, 11759221).pJulian_day_number());
    EXPECT_EQ((calendar_day{11759221, 3, 19}), shown(date_with(largest)));
    EXPECT_EQ((calendar_day{11759221, 3, 20}), shown(date_with(0)));
    EXPECT_EQ((calendar_day{0, 3, 1}), shown(date_with(1)));
}

TEST(DayNumber, TurnsA29FebruaryIntoTheFirstOfMarch) {
    const struct {
        unsigned number;
        calendar_day day;
    } cases[] = {
        {1460, {4, 2, 28}},     {1461, {4, 3, 1}},      {1462, {4, 3, 1}},
        {1463, {4, 3, 2}},      {36524, {100, 2, 28}},  {36525, {100, 3, 1}},
        {36526, {100, 3, 2}},   {146096, {400, 2, 28}}, {146097, {400, 3, 1}},
        {146098, {400, 3, 1}},  {146099, {400, 3, 2}},  {730484, {2000, 2, 28}},
        {730485, {2000, 3, 1}}, {730486, {2000, 3, 1}}, {730487, {2000, 3, 2}},
        {719469, {1970, 1, 1}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.number);
        EXPECT_EQ(c.day, shown(date_with(c.number)));
    }
}

TEST(DayNumber, ReplacesAllFieldsOfADate) {
    date value(31, 12, 2500);
    value.pJulian_day_number(32);
    EXPECT_EQ((calendar_day{0, 4, 1}), shown(value));
    EXPECT_EQ(1u, stored_day(value));
}

// Every day of 800 years, to its number and back, compared with a calendar of month lengths.
TEST(DayNumber, RoundTripsEveryDayOf800YearsExcept29February) {
    calendar_day day = {0, 3, 1};
    unsigned exceptions = 0;
    unsigned number = 1;
    for (; !(day == calendar_day{800, 3, 1}); day = next_day(day), ++number) {
        ASSERT_EQ(number, date_of(day).pJulian_day_number()) << number;
        const bool is_29_february = day.month == 2 && day.day == 29;
        const calendar_day back = is_29_february ? calendar_day{day.year, 3, 1} : day;
        ASSERT_EQ(back, shown(date_with(number))) << number;
        exceptions += is_29_february ? 1 : 0;
    }
    EXPECT_EQ(292195u, number);
    EXPECT_EQ(194u, exceptions);
}

// The oracle for single numbers agrees with stepping through the calendar, and dates agree with the
// oracle everywhere else.
TEST(DayNumber, AgreesWithTheCalendarOverTheWholeRange) {
    calendar_day day = {0, 3, 1};
    for (unsigned number = 1; number <= 292194; ++number, day = next_day(day)) {
        ASSERT_EQ(number, test_support::number_of(day));
        ASSERT_EQ(day, test_support::day_with(number));
    }
    for (unsigned long number = 0; number <= largest; number += 49999) {
        const unsigned n = static_cast<unsigned>(number);
        const calendar_day reached = test_support::reached_by(n);
        ASSERT_EQ(reached, shown(date_with(n))) << n;
        ASSERT_EQ(test_support::number_of(reached), date_with(n).pJulian_day_number()) << n;
    }
}

TEST(DateSum, MovesAlongTheCalendar) {
    const struct {
        calendar_day from;
        int days;
        calendar_day to;
    } cases[] = {
        {{1999, 12, 31}, 1, {2000, 1, 1}},  {{2000, 12, 31}, 1, {2001, 1, 1}},
        {{2000, 1, 31}, 1, {2000, 2, 1}},   {{2001, 2, 28}, 1, {2001, 3, 1}},
        {{2000, 2, 28}, 2, {2000, 3, 1}},   {{2000, 1, 1}, 366, {2001, 1, 1}},
        {{2001, 1, 1}, 365, {2002, 1, 1}},  {{2000, 1, 1}, 146097, {2400, 1, 1}},
        {{1970, 1, 1}, 0, {1970, 1, 1}},    {{1970, 1, 1}, -1, {1969, 12, 31}},
        {{1970, 1, 1}, -719468, {0, 3, 1}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(::testing::Message() << c.from.year << " " << c.days);
        date value = date_of(c.from);
        EXPECT_EQ(&value, &(value += date_duration(c.days)));
        EXPECT_EQ(c.to, shown(value));
        date named = date_of(c.from);
        EXPECT_EQ(&named, &named.plus_assign(date_duration(c.days)));
        EXPECT_EQ(c.to, shown(named));
    }
}

TEST(DateSum, NeverResultsIn29February) {
    date same(29, 2, 2000);
    same += date_duration(0);
    EXPECT_EQ((calendar_day{2000, 3, 1}), shown(same));
    date next(28, 2, 2000);
    next += date_duration(1);
    EXPECT_EQ((calendar_day{2000, 3, 1}), shown(next));
    date before(1, 3, 2000);
    before -= date_duration(1);
    EXPECT_EQ((calendar_day{2000, 3, 1}), shown(before));
}

TEST(DateSum, TurnsAStoredDayBeyondTheMonthIntoARealDate) {
    date value(31, 2, 2001);
    value += date_duration(0);
    EXPECT_EQ((calendar_day{2001, 3, 3}), shown(value));
    EXPECT_EQ(3u, stored_day(value));
    date back(31, 4, 2001);
    back -= date_duration(0);
    EXPECT_EQ((calendar_day{2001, 5, 1}), shown(back));
}

TEST(DateSum, WrapsAt32Bits) {
    date value(1, 3, 0);
    value += date_duration(-1);
    EXPECT_EQ((calendar_day{11759221, 3, 20}), shown(value));
    value += date_duration(1);
    EXPECT_EQ((calendar_day{0, 3, 1}), shown(value));
    value += date_duration(std::numeric_limits<int>::min());
    EXPECT_EQ(0x80000001u, value.pJulian_day_number());
}

TEST(DateSum, MovesADefaultDateFromItsWrappedNumber) {
    date value;
    value += date_duration(0);
    EXPECT_EQ((calendar_day{2851611, 1, 8}), shown(value));
}

TEST(DateDifference, MovesAlongTheCalendar) {
    const struct {
        calendar_day from;
        int days;
        calendar_day to;
    } cases[] = {
        {{2000, 1, 1}, 1, {1999, 12, 31}},
        {{2000, 3, 1}, 2, {2000, 2, 28}},
        {{2001, 3, 1}, 1, {2001, 2, 28}},
        {{1999, 12, 31}, -1, {2000, 1, 1}},
        {{2400, 1, 1}, 146097, {2000, 1, 1}},
        {{0, 3, 1}, 0, {0, 3, 1}},
        {{0, 3, 2}, 1, {0, 3, 1}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(::testing::Message() << c.from.year << " " << c.days);
        date value = date_of(c.from);
        EXPECT_EQ(&value, &(value -= date_duration(c.days)));
        EXPECT_EQ(c.to, shown(value));
        date named = date_of(c.from);
        EXPECT_EQ(&named, &named.minus_assign(date_duration(c.days)));
        EXPECT_EQ(c.to, shown(named));
    }
}

TEST(DateDifference, RaisesUnlessTheNumberIsGreaterThanTheDays) {
    const struct {
        calendar_day from;
        int days;
    } cases[] = {{{0, 3, 1}, 1},
                 {{0, 3, 2}, 2},
                 {{0, 3, 2}, 3},
                 {{1970, 1, 1}, 719469},
                 {{1970, 1, 1}, std::numeric_limits<int>::max()}};
    for (const auto& c : cases) {
        SCOPED_TRACE(::testing::Message() << c.from.year << " " << c.days);
        date value = date_of(c.from);
        expect_invalid_move([&] { value.minus_assign(date_duration(c.days)); });
        expect_invalid_move([&] { value -= date_duration(c.days); });
        EXPECT_EQ(c.from, shown(value));
    }
    date last(1, 1, 1970);
    last -= date_duration(719468);
    EXPECT_EQ((calendar_day{0, 3, 1}), shown(last));
}

TEST(DateDifference, TreatsNumbersFrom0x80000000OnAsNegative) {
    date highest = date_with(0x7FFFFFFF);
    EXPECT_EQ((calendar_day{5879610, 9, 8}), shown(highest));
    highest -= date_duration(std::numeric_limits<int>::max() - 1);
    EXPECT_EQ((calendar_day{0, 3, 1}), shown(highest));

    date beyond = date_with(0x80000000);
    EXPECT_EQ((calendar_day{5879610, 9, 9}), shown(beyond));
    expect_invalid_move([&] { beyond -= date_duration(0); });
    expect_invalid_move([&] { beyond -= date_duration(1); });
    expect_invalid_move([&] { beyond -= date_duration(std::numeric_limits<int>::min()); });
    EXPECT_EQ((calendar_day{5879610, 9, 9}), shown(beyond));

    date lowest = date_with(0x80000001);
    lowest -= date_duration(std::numeric_limits<int>::min());
    EXPECT_EQ((calendar_day{0, 3, 1}), shown(lowest));
}

TEST(DateDifference, MovesADefaultDateFromItsWrappedNumber) {
    date value;
    value -= date_duration(1041529478);
    EXPECT_EQ((calendar_day{0, 3, 1}), shown(value));
    date none;
    expect_invalid_move([&] { none -= date_duration(1041529479); });
}

// Every day of 800 years, moved one day forward and one day back.
TEST(DateSum, AndDifferenceMoveADayForwardAndBackIn800Years) {
    calendar_day day = {1601, 1, 1};
    for (; day.year < 2401; day = next_day(day)) {
        const unsigned number = test_support::number_of(day);
        date on = date_of(day);
        on += date_duration(1);
        ASSERT_EQ(test_support::reached_by(number + 1), shown(on)) << number;
        date back = date_of(day);
        back -= date_duration(1);
        ASSERT_EQ(test_support::reached_by(number - 1), shown(back)) << number;
    }
}

}  // namespace
