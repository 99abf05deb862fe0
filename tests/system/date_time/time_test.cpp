#include <tova/system/date_time/time.hpp>

#include <tova/exceptions/exceptions.hpp>

#include "support/place_of_raise.hpp"

#include <gtest/gtest.h>

#include <limits>
#include <string>

namespace {

using test_support::raises;
using tova::exceptions::out_of_range;
using tova::system::date_time::time;
using tova::system::date_time::time_duration;

namespace date_time = tova::system::date_time;

const char source[] = "system/date_time/time";
const unsigned largest = std::numeric_limits<unsigned>::max();
const long a_day = 86400000;

std::string shown(const time& value) {
    const auto digits = [](unsigned number, unsigned count) {
        const std::string text = std::to_string(number);
        return std::string(text.size() < count ? count - text.size() : 0, '0') + text;
    };
    return digits(value.hour(), 2) + ":" + digits(value.minute(), 2) + ":" +
           digits(value.second(), 2) + "." + digits(value.millisecond(), 3);
}

time_duration milliseconds(long count) {
    return time_duration(0, 0, 0, count);
}

template <typename Body>
void expect_invalid_hour(const Body& body) {
    EXPECT_TRUE(raises<out_of_range>(body, "Hour value out of valid range", 51, source, "hour"));
}

template <typename Body>
void expect_invalid_minute(const Body& body) {
    EXPECT_TRUE(
        raises<out_of_range>(body, "Minute value out of valid range", 61, source, "minute"));
}

template <typename Body>
void expect_invalid_second(const Body& body) {
    EXPECT_TRUE(
        raises<out_of_range>(body, "Second value out of valid range", 71, source, "second"));
}

template <typename Body>
void expect_invalid_millisecond(const Body& body) {
    EXPECT_TRUE(raises<out_of_range>(body, "Millisecond value out of valid range", 81, source,
                                     "millisecond"));
}

TEST(Time, IsMidnightByDefault) {
    EXPECT_EQ("00:00:00.000", shown(time()));
}

TEST(Time, IsMadeFromItsFourFields) {
    EXPECT_EQ("12:34:56.789", shown(time(12, 34, 56, 789)));
    EXPECT_EQ("23:59:59.999", shown(time(23, 59, 59, 999)));
}

TEST(Time, ReportsTheFirstInvalidFieldInOrder) {
    expect_invalid_hour([] { time(24, 0, 0, 0); });
    expect_invalid_hour([] { time(24, 60, 60, 1000); });
    expect_invalid_minute([] { time(23, 60, 60, 1000); });
    expect_invalid_second([] { time(23, 59, 60, 1000); });
    expect_invalid_second([] { time(23, 59, 60, 0); });
    expect_invalid_millisecond([] { time(0, 0, 0, 1000); });
}

TEST(Time, AcceptsEachFieldBelowItsLimitAndNoLeapSecond) {
    const struct {
        const char* name;
        unsigned (time::*get)() const;
        unsigned (time::*set)(unsigned);
        unsigned limit;
        const char* message;
        unsigned line;
    } fields[] = {
        {"hour", &time::hour, &time::hour, 24, "Hour value out of valid range", 51},
        {"minute", &time::minute, &time::minute, 60, "Minute value out of valid range", 61},
        {"second", &time::second, &time::second, 60, "Second value out of valid range", 71},
        {"millisecond", &time::millisecond, &time::millisecond, 1000,
         "Millisecond value out of valid range", 81},
    };
    for (const auto& field : fields) {
        SCOPED_TRACE(field.name);
        time value;
        for (unsigned number = 0; number < field.limit; ++number) {
            EXPECT_EQ(number, (value.*field.set)(number));
            EXPECT_EQ(number, (value.*field.get)());
        }
        for (unsigned number : {field.limit, field.limit + 1, 5000u, 0x80000000u, largest}) {
            SCOPED_TRACE(number);
            EXPECT_TRUE(raises<out_of_range>([&] { (value.*field.set)(number); }, field.message,
                                             field.line, source, field.name));
            EXPECT_EQ(field.limit - 1, (value.*field.get)());
        }
    }
}

TEST(Time, KnowsWhichNumbersAreValid) {
    const time value;
    for (int number = -2; number < 1100; ++number) {
        SCOPED_TRACE(number);
        EXPECT_EQ(number >= 0 && number <= 23, value.is_valid_hour(number));
        EXPECT_EQ(number >= 0 && number <= 59, value.is_valid_minute(number));
        EXPECT_EQ(number >= 0 && number <= 59, value.is_valid_second(number));
        EXPECT_EQ(number >= 0 && number <= 999, value.is_valid_millisecond(number));
    }
    for (int number : {std::numeric_limits<int>::min(), std::numeric_limits<int>::max()}) {
        EXPECT_FALSE(value.is_valid_hour(number));
        EXPECT_FALSE(value.is_valid_minute(number));
        EXPECT_FALSE(value.is_valid_second(number));
        EXPECT_FALSE(value.is_valid_millisecond(number));
    }
}

TEST(Time, CanBeCopiedAndAssignedByAllForms) {
    const time value(1, 2, 3, 4);
    EXPECT_EQ("01:02:03.004", shown(time(value)));
    time assigned;
    EXPECT_EQ(&assigned, &(assigned = value));
    EXPECT_EQ("01:02:03.004", shown(assigned));
    time named;
    EXPECT_EQ(&named, &named.assign(value));
    EXPECT_EQ("01:02:03.004", shown(named));
}

TEST(TimeSum, WrapsAtMidnight) {
    const struct {
        time from;
        long milliseconds;
        const char* to;
    } cases[] = {
        {time(23, 59, 59, 999), 1, "00:00:00.000"},
        {time(23, 30, 0, 0), 3600000, "00:30:00.000"},
        {time(0, 0, 0, 0), 0, "00:00:00.000"},
        {time(0, 0, 0, 0), -1, "23:59:59.999"},
        {time(0, 0, 0, 0), a_day - 1, "23:59:59.999"},
        {time(12, 0, 0, 0), a_day, "12:00:00.000"},
        {time(12, 0, 0, 0), 1000 * a_day + 5, "12:00:00.005"},
        {time(12, 0, 0, 0), -43200000, "00:00:00.000"},
        {time(12, 0, 0, 0), -43200001, "23:59:59.999"},
        {time(0, 0, 0, 0), 1 - a_day, "00:00:00.001"},
        {time(12, 0, 0, 0), 1 - a_day - 43200000, "00:00:00.001"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(::testing::Message() << shown(c.from) << " and " << c.milliseconds);
        const time_duration duration = milliseconds(c.milliseconds);
        const time_duration negated = milliseconds(-c.milliseconds);
        time value(c.from);
        EXPECT_EQ(&value, &(value += duration));
        EXPECT_EQ(c.to, shown(value));
        value = c.from;
        EXPECT_EQ(&value, &value.plus_assign(duration));
        EXPECT_EQ(c.to, shown(value));
        value = c.from;
        EXPECT_EQ(&value, &(value -= negated));
        EXPECT_EQ(c.to, shown(value));
        value = c.from;
        EXPECT_EQ(&value, &value.minus_assign(negated));
        EXPECT_EQ(c.to, shown(value));
        EXPECT_EQ(c.to, shown(c.from + duration));
        EXPECT_EQ(c.to, shown(duration + c.from));
        EXPECT_EQ(c.to, shown(c.from - negated));
        EXPECT_EQ(c.to, shown(date_time::plus(c.from, duration)));
        EXPECT_EQ(c.to, shown(date_time::plus(duration, c.from)));
        EXPECT_EQ(c.to, shown(date_time::minus(c.from, negated)));
    }
}

// From a day before midnight and earlier, the remainder is negative, or 0 for whole days.
TEST(TimeSum, RaisesAtTheFirstNegativePartAndKeepsTheOnesBeforeIt) {
    time hours(1, 2, 3, 4);
    expect_invalid_hour([&] { hours += milliseconds(-a_day - 3723004 - 3723004); });
    EXPECT_EQ("01:02:03.004", shown(hours));

    time minutes(1, 2, 3, 4);
    expect_invalid_minute([&] { minutes += milliseconds(-a_day - 3723004 - 123004); });
    EXPECT_EQ("00:02:03.004", shown(minutes));

    time seconds(1, 2, 3, 4);
    expect_invalid_second([&] { seconds += milliseconds(-a_day - 3723004 - 3004); });
    EXPECT_EQ("00:00:03.004", shown(seconds));

    time parts(1, 2, 3, 4);
    expect_invalid_millisecond([&] { parts += milliseconds(-a_day - 3723004 - 4); });
    EXPECT_EQ("00:00:00.004", shown(parts));

    time one(0, 0, 0, 0);
    expect_invalid_millisecond([&] { one += milliseconds(-a_day - 1); });

    time day(0, 0, 0, 0);
    day += milliseconds(-a_day);
    EXPECT_EQ("00:00:00.000", shown(day));
    time days(1, 0, 0, 0);
    days += milliseconds(-5 * a_day - 3600000);
    EXPECT_EQ("00:00:00.000", shown(days));
}

TEST(TimeDifference, RaisesWhereTheSumWithTheNegatedDurationDoes) {
    time value(1, 2, 3, 4);
    expect_invalid_minute([&] { value -= milliseconds(a_day + 3723004 + 123004); });
    EXPECT_EQ("00:02:03.004", shown(value));
    expect_invalid_hour([] { time(1, 0, 0, 0) - time_duration(48, 0, 0, 0); });
    expect_invalid_hour([] { date_time::minus(time(1, 0, 0, 0), time_duration(48, 0, 0, 0)); });
    expect_invalid_hour([] { time(1, 0, 0, 0) + time_duration(-48, 0, 0, 0); });
    expect_invalid_hour([] { date_time::plus(time_duration(-48, 0, 0, 0), time(1, 0, 0, 0)); });
}

TEST(TimeSum, WrapsAt64Bits) {
    time value;
    value += milliseconds(std::numeric_limits<long>::max() - a_day);
    EXPECT_EQ("07:12:55.807", shown(value));
    time over;
    expect_invalid_hour([&] { over += milliseconds(std::numeric_limits<long>::max()); });
    time least;
    // The smallest duration is its own negation.
    expect_invalid_hour([&] { least -= milliseconds(std::numeric_limits<long>::min()); });
}

// Moves of up to a day in both directions, from times throughout the day, compared with plain
// arithmetic.
TEST(TimeSum, AgreesWithPlainArithmeticAroundTheDay) {
    for (long start = 0; start < a_day; start += 613001) {
        const time from = time() + milliseconds(start);
        for (long move = -a_day; move <= a_day; move += 60000 * 7 + 333) {
            const long end = ((start + move) % a_day + a_day) % a_day;
            const time to = from + milliseconds(move);
            ASSERT_EQ(end, to.hour() * 3600000L + to.minute() * 60000L + to.second() * 1000L +
                               to.millisecond())
                << start << " " << move;
        }
    }
}

TEST(TimeMinusTime, IsTheDurationBetweenTheTwo) {
    const struct {
        time left;
        time right;
        long milliseconds;
    } cases[] = {
        {time(1, 0, 0, 0), time(2, 30, 0, 0), -5400000},
        {time(2, 30, 0, 0), time(1, 0, 0, 0), 5400000},
        {time(0, 0, 0, 0), time(0, 0, 0, 5), -5},
        {time(0, 0, 0, 0), time(23, 59, 59, 999), -86399999},
        {time(23, 59, 59, 999), time(0, 0, 0, 0), 86399999},
        {time(1, 0, 0, 0), time(0, 59, 59, 999), 1},
        {time(9, 8, 7, 6), time(9, 8, 7, 6), 0},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(::testing::Message() << shown(c.left) << " " << shown(c.right));
        EXPECT_EQ(c.milliseconds, (c.left - c.right).total_milliseconds());
        EXPECT_EQ(c.milliseconds, date_time::minus(c.left, c.right).total_milliseconds());
    }
    const time_duration negative = time(1, 0, 0, 0) - time(2, 30, 0, 0);
    EXPECT_EQ(-1, negative.hour());
    EXPECT_EQ(-30, negative.minute());
    EXPECT_TRUE(negative.is_negative());
}

}  // namespace
