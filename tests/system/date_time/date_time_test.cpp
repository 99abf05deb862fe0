#include <tova/system/date_time/date_time.hpp>

#include <tova/exceptions/exceptions.hpp>

#include "support/place_of_raise.hpp"

#include <gtest/gtest.h>

#include <limits>
#include <string>
#include <type_traits>
#include <utility>

namespace {

using test_support::raises;
using tova::exceptions::out_of_range;
using tova::system::date_time::date;
using tova::system::date_time::date_duration;
using tova::system::date_time::date_time_t;
using tova::system::date_time::time;
using tova::system::date_time::time_duration;

const char date_source[] = "system/date_time/date";
const char time_source[] = "system/date_time/time";
const long an_hour = 3600000;
const long a_day = 24 * an_hour;

std::string shown(const date_time_t& value) {
    const auto number = [](unsigned count) { return std::to_string(count); };
    return number(value.day()) + "." + number(value.month()) + "." + number(value.year()) + " " +
           number(value.hour()) + ":" + number(value.minute()) + ":" + number(value.second()) +
           "." + number(value.millisecond());
}

time_duration milliseconds(long count) {
    return time_duration(0, 0, 0, count);
}

template <typename Body>
void expect_invalid_day(const Body& body) {
    EXPECT_TRUE(raises<out_of_range>(body, "day value out of valid range", 68, date_source, "day"));
}

TEST(DateTime, IsADefaultDateAtMidnightByDefault) {
    EXPECT_EQ("0.0.0 0:0:0.0", shown(date_time_t()));
}

TEST(DateTime, IsADateAndATime) {
    const date_time_t value(date(31, 2, 2001), time(1, 2, 3, 4));
    EXPECT_EQ("28.2.2001 1:2:3.4", shown(value));
    EXPECT_EQ(date(31, 2, 2001).pJulian_day_number(), value.date().pJulian_day_number());
    EXPECT_EQ(4u, value.time().millisecond());
    EXPECT_TRUE(value.is_day_constrained());
    EXPECT_FALSE(value.is_leap_year());
    const date_time_t leap(date(29, 2, 2000), time());
    EXPECT_FALSE(leap.is_day_constrained());
    EXPECT_TRUE(leap.is_leap_year());
}

TEST(DateTime, ReturnsItsPartsByReference) {
    const date_time_t value(date(1, 1, 2001), time());
    static_assert(std::is_same<const date&, decltype(value.date())>::value, "");
    static_assert(std::is_same<const time&, decltype(value.time())>::value, "");
    EXPECT_EQ(&value.date(), &value.date());
    EXPECT_EQ(&value.time(), &value.time());
}

TEST(DateTime, SetsEachFieldAndReturnsTheNewValue) {
    date_time_t value;
    EXPECT_EQ(5u, value.day(5));
    EXPECT_EQ(6u, value.month(6));
    EXPECT_EQ(2007u, value.year(2007));
    EXPECT_EQ(8u, value.hour(8));
    EXPECT_EQ(9u, value.minute(9));
    EXPECT_EQ(10u, value.second(10));
    EXPECT_EQ(11u, value.millisecond(11));
    EXPECT_EQ("5.6.2007 8:9:10.11", shown(value));
}

TEST(DateTime, RaisesWhatTheSettersOfItsPartsRaise) {
    date_time_t value(date(1, 1, 2001), time());
    expect_invalid_day([&] { value.day(32); });
    EXPECT_TRUE(raises<out_of_range>([&] { value.month(0); }, "month value out of valid range", 58,
                                     date_source, "month"));
    EXPECT_TRUE(raises<out_of_range>([&] { value.hour(24); }, "Hour value out of valid range", 51,
                                     time_source, "hour"));
    EXPECT_TRUE(raises<out_of_range>([&] { value.minute(60); }, "Minute value out of valid range",
                                     61, time_source, "minute"));
    EXPECT_TRUE(raises<out_of_range>([&] { value.second(60); }, "Second value out of valid range",
                                     71, time_source, "second"));
    EXPECT_TRUE(raises<out_of_range>([&] { value.millisecond(1000); },
                                     "Millisecond value out of valid range", 81, time_source,
                                     "millisecond"));
    EXPECT_EQ("1.1.2001 0:0:0.0", shown(value));
}

TEST(DateTime, ReplacesOnePartOrBoth) {
    const date new_date(31, 2, 2001);
    const time new_time(1, 2, 3, 4);
    const date_time_t start(date(5, 6, 2007), time(8, 9, 10, 11));

    date_time_t value(start);
    EXPECT_EQ(&value, &(value = new_date));
    EXPECT_EQ("28.2.2001 8:9:10.11", shown(value));
    EXPECT_TRUE(value.is_day_constrained());
    EXPECT_EQ(&value, &(value = new_time));
    EXPECT_EQ("28.2.2001 1:2:3.4", shown(value));
    EXPECT_EQ(&value, &(value = start));
    EXPECT_EQ("5.6.2007 8:9:10.11", shown(value));

    EXPECT_EQ(&value, &value.assign(new_time));
    EXPECT_EQ("5.6.2007 1:2:3.4", shown(value));
    EXPECT_EQ(&value, &value.assign(new_date));
    EXPECT_EQ("28.2.2001 1:2:3.4", shown(value));
    EXPECT_EQ(&value, &value.assign(start));
    EXPECT_EQ("5.6.2007 8:9:10.11", shown(value));
    EXPECT_EQ(&value, &value.assign(new_date, new_time));
    EXPECT_EQ("28.2.2001 1:2:3.4", shown(value));
    EXPECT_EQ("28.2.2001 1:2:3.4", shown(date_time_t(value)));
}

TEST(DateTime, IsNotChangedByADateDuration) {
    for (int days :
         {0, 1, -1, 365, std::numeric_limits<int>::max(), std::numeric_limits<int>::min()}) {
        SCOPED_TRACE(days);
        const date_duration duration(days);
        // Any move would turn a stored day beyond the month into a real date.
        date_time_t value(date(31, 2, 2001), time(1, 2, 3, 4));
        EXPECT_EQ(&value, &(value += duration));
        EXPECT_EQ(&value, &(value -= duration));
        EXPECT_EQ(&value, &value.plus_assign(duration));
        EXPECT_EQ(&value, &value.minus_assign(duration));
        EXPECT_EQ("28.2.2001 1:2:3.4", shown(value));
        EXPECT_TRUE(value.is_day_constrained());
    }
}

TEST(DateTimeSum, LeavesTheDateUnchangedBelow24Hours) {
    const struct {
        long milliseconds;
        const char* sum;
        const char* difference;
    } cases[] = {
        {0, "28.2.2001 23:30:0.0", "28.2.2001 23:30:0.0"},
        {an_hour, "28.2.2001 0:30:0.0", "28.2.2001 22:30:0.0"},
        {-an_hour, "28.2.2001 22:30:0.0", "28.2.2001 0:30:0.0"},
        {a_day - 1, "28.2.2001 23:29:59.999", "28.2.2001 23:30:0.1"},
        {1 - a_day, "28.2.2001 23:30:0.1", "28.2.2001 23:29:59.999"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.milliseconds);
        const time_duration duration = milliseconds(c.milliseconds);
        const date_time_t start(date(31, 2, 2001), time(23, 30, 0, 0));
        date_time_t value(start);
        EXPECT_EQ(&value, &(value += duration));
        EXPECT_EQ(c.sum, shown(value));
        EXPECT_TRUE(value.is_day_constrained());
        value = start;
        EXPECT_EQ(&value, &value.plus_assign(duration));
        EXPECT_EQ(c.sum, shown(value));
        value = start;
        EXPECT_EQ(&value, &(value -= duration));
        EXPECT_EQ(c.difference, shown(value));
        value = start;
        EXPECT_EQ(&value, &value.minus_assign(duration));
        EXPECT_EQ(c.difference, shown(value));
        EXPECT_TRUE(value.is_day_constrained());
    }
}

TEST(DateTimeSum, SetsTheDayToTheHoursAfterWholeDaysAndMovesByThem) {
    const struct {
        long milliseconds;
        const char* sum;
    } cases[] = {
        {25 * an_hour, "2.1.2001 13:0:0.0"},
        {26 * an_hour, "4.1.2001 14:0:0.0"},
        {47 * an_hour, "15.2.2001 11:0:0.0"},  // the 23rd and 23 days
        {47 * an_hour + 3599999, "15.2.2001 11:59:59.999"},
        {49 * an_hour, "2.1.2001 13:0:0.0"},
        {240 * an_hour + an_hour + 1, "2.1.2001 13:0:0.1"},
        {39 * an_hour, "30.1.2001 3:0:0.0"},
        {40 * an_hour, "1.2.2001 4:0:0.0"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.milliseconds);
        date_time_t value(date(5, 1, 2001), time(12, 0, 0, 0));
        value += milliseconds(c.milliseconds);
        EXPECT_EQ(c.sum, shown(value));
    }
}

TEST(DateTimeDifference, SetsTheDayToTheHoursAfterWholeDaysAndMovesBackByThem) {
    const struct {
        long milliseconds;
        const char* difference;
    } cases[] = {
        {25 * an_hour, "31.12.2000 11:0:0.0"},
        {35 * an_hour, "31.12.2000 1:0:0.0"},
        {36 * an_hour, "31.12.2000 0:0:0.0"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.milliseconds);
        date_time_t value(date(5, 1, 2001), time(12, 0, 0, 0));
        value -= milliseconds(c.milliseconds);
        EXPECT_EQ(c.difference, shown(value));
    }
}

TEST(DateTimeDifference, HasAlreadyMovedTheDateWhenTheTimeIsOutOfRange) {
    date_time_t value(date(5, 1, 2001), time(12, 0, 0, 0));
    EXPECT_TRUE(raises<out_of_range>([&] { value -= milliseconds(241 * an_hour); },
                                     "Hour value out of valid range", 51, time_source, "hour"));
    EXPECT_EQ("31.12.2000 12:0:0.0", shown(value));
}

// Every whole hour from 24 hours to five days, in both directions.
TEST(DateTimeSum, RaisesForRemaindersOf0OrLessAndChangesNothing) {
    for (long hours = -120; hours <= 120; ++hours) {
        if (hours > -24 && hours < 24)
            continue;
        const long remainder = hours % 24;
        SCOPED_TRACE(hours);
        const time_duration duration = milliseconds(hours * an_hour);
        date_time_t sum(date(5, 1, 2001), time(12, 0, 0, 0));
        date_time_t difference(date(5, 1, 2001), time(12, 0, 0, 0));
        if (remainder <= 0) {
            expect_invalid_day([&] { sum += duration; });
            expect_invalid_day([&] { sum.plus_assign(duration); });
            expect_invalid_day([&] { difference -= duration; });
            expect_invalid_day([&] { difference.minus_assign(duration); });
            EXPECT_EQ("5.1.2001 12:0:0.0", shown(sum));
            EXPECT_EQ("5.1.2001 12:0:0.0", shown(difference));
        } else {
            sum += duration;
            date expected(static_cast<unsigned>(remainder), 1, 2001);
            expected += date_duration(static_cast<int>(remainder));
            EXPECT_EQ(expected.day(), sum.day());
            EXPECT_EQ(expected.month(), sum.month());
            EXPECT_EQ((12 + hours) % 24, sum.hour());
        }
    }
    date_time_t value(date(5, 1, 2001), time());
    expect_invalid_day([&] { value += time_duration(24, 0, 0, 0); });
    expect_invalid_day([&] { value += time_duration(-24, 0, 0, 0); });
    expect_invalid_day([&] { value -= time_duration(-25, 0, 0, 0); });
}

TEST(DateTimeSum, StoresTheDayBeforeTheDateIsMoved) {
    // 1 March of year 0 is the earliest day that a date can be moved back to.
    date_time_t value(date(20, 3, 0), time(12, 0, 0, 0));
    EXPECT_TRUE(raises<out_of_range>([&] { value -= milliseconds(29 * an_hour); },
                                     "date value out of valid range", 146, date_source,
                                     "minus_assign"));
    EXPECT_EQ("5.3.0 12:0:0.0", shown(value));
}

TEST(DateTimeSum, CountsTheHoursOfTheLongestDurations) {
    // 2,562,047,788,015 hours are a number of whole days and 7 hours; the time wraps at 64 bits.
    date_time_t value(date(20, 3, 2001), time(0, 0, 0, 0));
    EXPECT_TRUE(
        raises<out_of_range>([&] { value += milliseconds(std::numeric_limits<long>::max()); },
                             "Hour value out of valid range", 51, time_source, "hour"));
    EXPECT_EQ("14.3.2001 0:0:0.0", shown(value));
    expect_invalid_day([&] { value += milliseconds(std::numeric_limits<long>::min()); });
    expect_invalid_day([&] { value -= milliseconds(std::numeric_limits<long>::min()); });
}

template <typename Left, typename Right, typename = void>
struct has_equality : std::false_type {};
template <typename Left, typename Right>
struct has_equality<Left, Right,
                    decltype(void(std::declval<const Left&>() == std::declval<const Right&>()))>
    : std::true_type {};

template <typename Left, typename Right, typename = void>
struct has_order : std::false_type {};
template <typename Left, typename Right>
struct has_order<Left, Right,
                 decltype(void(std::declval<const Left&>() < std::declval<const Right&>()))>
    : std::true_type {};

template <typename Left, typename Right, typename = void>
struct has_sum : std::false_type {};
template <typename Left, typename Right>
struct has_sum<Left, Right,
               decltype(void(std::declval<const Left&>() + std::declval<const Right&>()))>
    : std::true_type {};

template <typename Left, typename Right, typename = void>
struct has_difference : std::false_type {};
template <typename Left, typename Right>
struct has_difference<Left, Right,
                      decltype(void(std::declval<const Left&>() - std::declval<const Right&>()))>
    : std::true_type {};

template <typename Value>
bool has_comparison() {
    return has_equality<Value, Value>::value || has_order<Value, Value>::value;
}

TEST(DateTime, AndItsSiblingsHaveNoComparisons) {
    EXPECT_FALSE(has_comparison<date>());
    EXPECT_FALSE(has_comparison<time>());
    EXPECT_FALSE(has_comparison<date_time_t>());
    EXPECT_FALSE(has_comparison<date_duration>());
    EXPECT_FALSE(has_comparison<time_duration>());
    EXPECT_TRUE(has_comparison<int>());
}

TEST(DateTime, AndDateHaveNoFreeSumsOrDifferences) {
    EXPECT_FALSE((has_sum<date, date_duration>::value));
    EXPECT_FALSE((has_sum<date_duration, date>::value));
    EXPECT_FALSE((has_difference<date, date_duration>::value));
    EXPECT_FALSE((has_difference<date, date>::value));
    EXPECT_FALSE((has_sum<date_time_t, date_duration>::value));
    EXPECT_FALSE((has_sum<date_time_t, time_duration>::value));
    EXPECT_FALSE((has_sum<time_duration, date_time_t>::value));
    EXPECT_FALSE((has_difference<date_time_t, date_duration>::value));
    EXPECT_FALSE((has_difference<date_time_t, time_duration>::value));
    EXPECT_FALSE((has_difference<date_time_t, date_time_t>::value));
    EXPECT_TRUE((has_sum<time, time_duration>::value));
    EXPECT_TRUE((has_sum<time_duration, time>::value));
    EXPECT_TRUE((has_difference<time, time_duration>::value));
    EXPECT_TRUE((has_difference<time, time>::value));
    EXPECT_TRUE((has_sum<date_duration, date_duration>::value));
    EXPECT_TRUE((has_difference<time_duration, time_duration>::value));
}

}  // namespace
