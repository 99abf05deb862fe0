#include <tova/system/date_time/duration.hpp>

#include <gtest/gtest.h>

#include <limits>
#include <string>

namespace {

using tova::system::date_time::date_duration;
using tova::system::date_time::time_duration;

namespace date_time = tova::system::date_time;

const int most_days = std::numeric_limits<int>::max();
const int least_days = std::numeric_limits<int>::min();
const long most = std::numeric_limits<long>::max();
const long least = std::numeric_limits<long>::min();

time_duration milliseconds(long count) {
    return time_duration(0, 0, 0, count);
}

// All forms of sums and differences, for days and for milliseconds.
template <typename Duration, typename Number>
void expect_arithmetic(const Duration& left, const Duration& right,
                       Number (Duration::*total)() const, Number sum, Number difference) {
    const Number left_total = (left.*total)();
    const Number right_total = (right.*total)();
    Duration value(left);
    EXPECT_EQ(&value, &(value += right));
    EXPECT_EQ(sum, (value.*total)());
    value = left;
    EXPECT_EQ(&value, &value.plus_assign(right));
    EXPECT_EQ(sum, (value.*total)());
    value = left;
    EXPECT_EQ(&value, &(value -= right));
    EXPECT_EQ(difference, (value.*total)());
    value = left;
    EXPECT_EQ(&value, &value.minus_assign(right));
    EXPECT_EQ(difference, (value.*total)());
    EXPECT_EQ(sum, ((left + right).*total)());
    EXPECT_EQ(sum, (date_time::plus(left, right).*total)());
    EXPECT_EQ(difference, ((left - right).*total)());
    EXPECT_EQ(difference, (date_time::minus(left, right).*total)());
    EXPECT_EQ(left_total, (left.*total)());
    EXPECT_EQ(right_total, (right.*total)());
}

TEST(DateDuration, HoldsAnyNumberOfDays) {
    EXPECT_EQ(0, date_duration().days());
    EXPECT_EQ(-5, date_duration(-5).days());
    date_duration value(7);
    const date_duration copy(value);
    for (int days : {0, 1, -1, most_days, least_days}) {
        EXPECT_EQ(days, value.days(days));
        EXPECT_EQ(days, value.days());
    }
    EXPECT_EQ(7, copy.days());
}

TEST(DateDuration, CanBeAssignedByBothForms) {
    const date_duration source(12);
    date_duration value;
    EXPECT_EQ(&value, &(value = source));
    EXPECT_EQ(12, value.days());
    date_duration other;
    EXPECT_EQ(&other, &other.assign(source));
    EXPECT_EQ(12, other.days());
}

TEST(DateDuration, AddsAndSubtractsDaysAndWrapsAt32Bits) {
    const struct {
        int left;
        int right;
        int sum;
        int difference;
    } cases[] = {
        {0, 0, 0, 0},
        {5, 7, 12, -2},
        {-5, 7, 2, -12},
        {most_days, 1, least_days, most_days - 1},
        {least_days, 1, least_days + 1, most_days},
        {least_days, least_days, 0, 0},
        {0, least_days, least_days, least_days},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(::testing::Message() << c.left << " " << c.right);
        expect_arithmetic<date_duration, int>(c.left, c.right, &date_duration::days, c.sum,
                                              c.difference);
    }
}

TEST(TimeDuration, IsTheSumOfItsFourFields) {
    const struct {
        int hours;
        int minutes;
        int seconds;
        long milliseconds;
        long total;
    } cases[] = {
        {0, 0, 0, 0, 0},
        {1, 0, 0, 0, 3600000},
        {0, 1, 0, 0, 60000},
        {0, 0, 1, 0, 1000},
        {0, 0, 0, 1, 1},
        {1, 2, 3, 4, 3723004},
        {-1, -2, -3, -4, -3723004},
        {-1, 30, 0, 0, -1800000},
        {0, 90, 200, 5000, 5605000},
        {0, 0, 0, most, most},
        {0, 0, 0, least, least},
        {0, 0, -1, least + 1000, least},
        {0, 0, 1, most, least + 999},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.total);
        EXPECT_EQ(
            c.total,
            time_duration(c.hours, c.minutes, c.seconds, c.milliseconds).total_milliseconds());
    }
}

TEST(TimeDuration, AddsHoursMinutesAndSecondsIn32Bits) {
    const struct {
        int hours;
        int minutes;
        int seconds;
        long total;
    } cases[] = {
        {596, 0, 0, 2145600000},
        {597, 0, 0, -2145767296},
        {-596, 0, 0, -2145600000},
        {-597, 0, 0, 2145767296},
        {1193, 0, 0, -167296},
        {0, 35791, 0, 2147460000},
        {0, 35792, 0, -2147447296},
        {0, 0, 2147483, 2147483000},
        {0, 0, 2147484, -2147483296},
        {596, 31, 23, 2147483000},
        {596, 31, 24, -2147483296},
        {most_days, most_days, most_days, -3661000},
        {least_days, least_days, least_days, 0},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(::testing::Message() << c.hours << ":" << c.minutes << ":" << c.seconds);
        EXPECT_EQ(c.total, time_duration(c.hours, c.minutes, c.seconds, 0).total_milliseconds());
        EXPECT_EQ(c.total - 5,
                  time_duration(c.hours, c.minutes, c.seconds, -5).total_milliseconds());
    }
    EXPECT_EQ(2149200000, milliseconds(597 * 3600000L).total_milliseconds());
}

TEST(TimeDuration, TruncatesItsPartsTowardZero) {
    const struct {
        long total;
        int hour;
        int minute;
        int second;
        int millisecond;
    } cases[] = {
        {0, 0, 0, 0, 0},
        {1, 0, 0, 0, 1},
        {-1, 0, 0, 0, -1},
        {999, 0, 0, 0, 999},
        {1000, 0, 0, 1, 0},
        {59999, 0, 0, 59, 999},
        {60000, 0, 1, 0, 0},
        {3599999, 0, 59, 59, 999},
        {3600000, 1, 0, 0, 0},
        {3723004, 1, 2, 3, 4},
        {-3723004, -1, -2, -3, -4},
        {-5400000, -1, -30, 0, 0},
        {86399999, 23, 59, 59, 999},
        {90000000, 25, 0, 0, 0},
        {360000000, 100, 0, 0, 0},
        {-90061001, -25, -1, -1, -1},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.total);
        const time_duration value = milliseconds(c.total);
        EXPECT_EQ(c.hour, value.hour());
        EXPECT_EQ(c.minute, value.minute());
        EXPECT_EQ(c.second, value.second());
        EXPECT_EQ(c.millisecond, value.millisecond());
    }
}

TEST(TimeDuration, KeepsTheLow32BitsOfMoreHoursThanAnIntHolds) {
    EXPECT_EQ(2147483647, milliseconds(2147483647 * 3600000L).hour());
    EXPECT_EQ(-2147483647 - 1, milliseconds(2147483648 * 3600000L).hour());
    EXPECT_EQ(0, milliseconds(4294967296 * 3600000L).hour());
}

TEST(TimeDuration, ReturnsTheTotalInOneUnit) {
    const time_duration value(1, 30, 36, 900);  // 5,436,900 ms
    EXPECT_DOUBLE_EQ(1.51025, value.total_hours());
    EXPECT_DOUBLE_EQ(90.615, value.total_minutes());
    EXPECT_DOUBLE_EQ(5436.9, value.total_seconds());
    EXPECT_EQ(1, value.total_complete_hours());
    EXPECT_EQ(90, value.total_complete_minutes());
    EXPECT_EQ(5436, value.total_complete_seconds());
    EXPECT_EQ(5436900, value.total_milliseconds());

    const time_duration negative = milliseconds(-5436900);
    EXPECT_DOUBLE_EQ(-1.51025, negative.total_hours());
    EXPECT_DOUBLE_EQ(-90.615, negative.total_minutes());
    EXPECT_DOUBLE_EQ(-5436.9, negative.total_seconds());
    EXPECT_EQ(-1, negative.total_complete_hours());
    EXPECT_EQ(-90, negative.total_complete_minutes());
    EXPECT_EQ(-5436, negative.total_complete_seconds());
    EXPECT_EQ(-5436900, negative.total_milliseconds());
}

TEST(TimeDuration, DividesTheTotalAsADoubleInOneStep) {
    for (long total : {1L, 7L, 999L, -1L, 3599999L, 123456789012345L, 9007199254740993L, most}) {
        SCOPED_TRACE(total);
        const volatile double count = static_cast<double>(total);
        EXPECT_EQ(count / 3600000.0, milliseconds(total).total_hours());
        EXPECT_EQ(count / 60000.0, milliseconds(total).total_minutes());
        EXPECT_EQ(count / 1000.0, milliseconds(total).total_seconds());
    }
}

TEST(TimeDuration, ReturnsTheTotalAtTheEndsOfTheRange) {
    EXPECT_EQ(2562047788015, milliseconds(most).total_complete_hours());
    EXPECT_EQ(153722867280912, milliseconds(most).total_complete_minutes());
    EXPECT_EQ(9223372036854775, milliseconds(most).total_complete_seconds());
    EXPECT_EQ(-2562047788015, milliseconds(least).total_complete_hours());
    EXPECT_EQ(12, milliseconds(most).minute());
    EXPECT_EQ(55, milliseconds(most).second());
    EXPECT_EQ(807, milliseconds(most).millisecond());
    EXPECT_EQ(-808, milliseconds(least).millisecond());
}

TEST(TimeDuration, IsNegativeBelowZero) {
    EXPECT_FALSE(time_duration().is_negative());
    EXPECT_FALSE(milliseconds(1).is_negative());
    EXPECT_TRUE(milliseconds(-1).is_negative());
    EXPECT_TRUE(milliseconds(least).is_negative());
    EXPECT_FALSE(milliseconds(most).is_negative());
}

TEST(TimeDuration, CanBeCopiedAndAssignedByAllForms) {
    const time_duration source = milliseconds(-12);
    const time_duration copy(source);
    EXPECT_EQ(-12, copy.total_milliseconds());
    time_duration value;
    EXPECT_EQ(0, value.total_milliseconds());
    EXPECT_EQ(&value, &(value = source));
    EXPECT_EQ(-12, value.total_milliseconds());
    time_duration other;
    EXPECT_EQ(&other, &other.assign(source));
    EXPECT_EQ(-12, other.total_milliseconds());
}

TEST(TimeDuration, AddsAndSubtractsMillisecondsAndWrapsAt64Bits) {
    const struct {
        long left;
        long right;
        long sum;
        long difference;
    } cases[] = {
        {0, 0, 0, 0},
        {3600000, 1, 3600001, 3599999},
        {-5, 7, 2, -12},
        {most, 1, least, most - 1},
        {least, 1, least + 1, most},
        {0, least, least, least},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(::testing::Message() << c.left << " " << c.right);
        expect_arithmetic(milliseconds(c.left), milliseconds(c.right),
                          &time_duration::total_milliseconds, c.sum, c.difference);
    }
}

}  // namespace
