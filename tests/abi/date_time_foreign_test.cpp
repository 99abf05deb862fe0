// Dates, times and durations as seen by a program without the headers of the library. README.md
// says what this checks.
#include "abi/foreign/exceptions.hpp"

#include <gtest/gtest.h>

#include <string>

namespace TOVA_2_18 {

namespace system {
namespace date_time {

class date_duration {
public:
    date_duration();
    date_duration(const date_duration&);
    date_duration(int days);
    ~date_duration();
    int days() const;
    int days(int);
    date_duration& operator=(const date_duration&);
    date_duration& assign(const date_duration&);
    date_duration& operator+=(const date_duration&);
    date_duration& plus_assign(const date_duration&);
    date_duration& operator-=(const date_duration&);
    date_duration& minus_assign(const date_duration&);

    int m_days;
};

class time_duration {
public:
    time_duration();
    time_duration(const time_duration&);
    time_duration(int hours, int minutes, int seconds, long milliseconds);
    int hour() const;
    int minute() const;
    int second() const;
    int millisecond() const;
    double total_hours() const;
    double total_minutes() const;
    double total_seconds() const;
    long total_complete_hours() const;
    long total_complete_minutes() const;
    long total_complete_seconds() const;
    long total_milliseconds() const;
    bool is_negative() const;
    time_duration& operator=(const time_duration&);
    time_duration& assign(const time_duration&);
    time_duration& operator+=(const time_duration&);
    time_duration& plus_assign(const time_duration&);
    time_duration& operator-=(const time_duration&);
    time_duration& minus_assign(const time_duration&);

    long m_total;
};

class date {
public:
    date();
    date(const date&);
    date(unsigned int day, unsigned int month, unsigned int year);
    static date local_date();
    static date UTC_date();
    unsigned int year() const;
    unsigned int month() const;
    unsigned int day() const;
    unsigned int get_days() const;
    unsigned int day(unsigned int);
    unsigned int month(unsigned int);
    unsigned int year(unsigned int);
    bool is_valid_day(unsigned int) const;
    bool is_valid_month(unsigned int) const;
    bool is_leap_year() const;
    bool is_day_constrained() const;
    date& operator=(const date&);
    date& assign(const date&);
    date& operator+=(const date_duration&);
    date& plus_assign(const date_duration&);
    date& operator-=(const date_duration&);
    date& minus_assign(const date_duration&);
    unsigned int pJulian_day_number() const;
    void pJulian_day_number(unsigned int);

    unsigned int m_year;
    unsigned int m_month;
    unsigned int m_day;
};

class time {
public:
    time();
    time(const time&);
    time(unsigned int hour, unsigned int minute, unsigned int second, unsigned int millisecond);
    static time local_time();
    static time UTC_time();
    unsigned int hour() const;
    unsigned int minute() const;
    unsigned int second() const;
    unsigned int millisecond() const;
    unsigned int hour(unsigned int);
    unsigned int minute(unsigned int);
    unsigned int second(unsigned int);
    unsigned int millisecond(unsigned int);
    bool is_valid_hour(int) const;
    bool is_valid_minute(int) const;
    bool is_valid_second(int) const;
    bool is_valid_millisecond(int) const;
    time& operator=(const time&);
    time& assign(const time&);
    time& operator+=(const time_duration&);
    time& plus_assign(const time_duration&);
    time& operator-=(const time_duration&);
    time& minus_assign(const time_duration&);

    unsigned int m_hour;
    unsigned int m_minute;
    unsigned int m_second;
    unsigned int m_millisecond;
};

class date_time_t {
public:
    date_time_t();
    date_time_t(const date_time_t&);
    date_time_t(const date_time::date&, const date_time::time&);
    static date_time_t local_date_time();
    static date_time_t UTC_date_time();
    unsigned int year() const;
    unsigned int month() const;
    unsigned int day() const;
    unsigned int year(unsigned int);
    unsigned int month(unsigned int);
    unsigned int day(unsigned int);
    bool is_leap_year() const;
    bool is_day_constrained() const;
    unsigned int hour() const;
    unsigned int minute() const;
    unsigned int second() const;
    unsigned int millisecond() const;
    unsigned int hour(unsigned int);
    unsigned int minute(unsigned int);
    unsigned int second(unsigned int);
    unsigned int millisecond(unsigned int);
    const date_time::date& date() const;
    const date_time::time& time() const;
    date_time_t& assign(const date_time::date&);
    date_time_t& operator=(const date_time::date&);
    date_time_t& assign(const date_time::time&);
    date_time_t& operator=(const date_time::time&);
    date_time_t& assign(const date_time::date&, const date_time::time&);
    date_time_t& assign(const date_time_t&);
    date_time_t& operator=(const date_time_t&);
    date_time_t& operator+=(const date_duration&);
    date_time_t& plus_assign(const date_duration&);
    date_time_t& operator-=(const date_duration&);
    date_time_t& minus_assign(const date_duration&);
    date_time_t& operator+=(const time_duration&);
    date_time_t& plus_assign(const time_duration&);
    date_time_t& operator-=(const time_duration&);
    date_time_t& minus_assign(const time_duration&);

    date_time::date m_date;
    date_time::time m_time;
};

class timer {
public:
    static unsigned long m_overheadMicroseconds;
};

// A linker knows a global object by its name, whatever its class is called.
class measures_the_clock {};
extern measures_the_clock sAutoTester;

date_duration plus(const date_duration&, const date_duration&);
date_duration minus(const date_duration&, const date_duration&);
date_duration operator+(const date_duration&, const date_duration&);
date_duration operator-(const date_duration&, const date_duration&);
time_duration plus(const time_duration&, const time_duration&);
time_duration minus(const time_duration&, const time_duration&);
time_duration operator+(const time_duration&, const time_duration&);
time_duration operator-(const time_duration&, const time_duration&);
time_duration minus(const time&, const time&);
time_duration operator-(const time&, const time&);
time plus(const time&, const time_duration&);
time operator+(const time&, const time_duration&);
time plus(const time_duration&, const time&);
time operator+(const time_duration&, const time&);
time minus(const time&, const time_duration&);
time operator-(const time&, const time_duration&);

}  // namespace date_time
}  // namespace system
}  // namespace TOVA_2_18

namespace {

using namespace TOVA_2_18::system::date_time;
namespace names = TOVA_2_18::system::date_time;
using TOVA_2_18::exceptions::out_of_range;

const char date_file[] = "system/date_time/date";
const char time_file[] = "system/date_time/time";

// The fields of the exception that a step raises, or an empty string if it raises none.
template <typename Step>
std::string raised_by(const Step& step) {
    try {
        step();
    } catch (const out_of_range& raised) {
        EXPECT_STREQ(raised.message.c_str(), raised.get_message());
        return raised.message + "|" + std::to_string(raised.where.line) + "|" + raised.where.file +
               "|" + raised.where.function;
    }
    return std::string();
}

std::string range_error(const char* what, unsigned line, const char* file, const char* function) {
    return std::string(what) + " value out of valid range|" + std::to_string(line) + "|" + file +
           "|" + function;
}

void expect_fields(const names::date& value, unsigned year, unsigned month, unsigned day) {
    EXPECT_EQ(year, value.m_year);
    EXPECT_EQ(month, value.m_month);
    EXPECT_EQ(day, value.m_day);
}

void expect_fields(const names::time& value, unsigned hour, unsigned minute, unsigned second,
                   unsigned millisecond) {
    EXPECT_EQ(hour, value.m_hour);
    EXPECT_EQ(minute, value.m_minute);
    EXPECT_EQ(second, value.m_second);
    EXPECT_EQ(millisecond, value.m_millisecond);
}

TEST(ForeignDate, KeepsTheStoredDayAndReturnsTheConstrainedOne) {
    expect_fields(names::date(), 0, 0, 0);
    EXPECT_EQ(0u, names::date().day());
    names::date value(31, 2, 2001);
    expect_fields(value, 2001, 2, 31);
    EXPECT_EQ(28u, value.day());
    EXPECT_EQ(28u, value.get_days());
    EXPECT_EQ(2u, value.month());
    EXPECT_EQ(2001u, value.year());
    EXPECT_TRUE(value.is_day_constrained());
    EXPECT_FALSE(value.is_leap_year());
    EXPECT_TRUE(value.is_valid_day(31));
    EXPECT_FALSE(value.is_valid_day(32));
    EXPECT_TRUE(value.is_valid_month(12));
    EXPECT_FALSE(value.is_valid_month(0));
    EXPECT_EQ(4u, value.year(4));
    EXPECT_EQ(3u, value.month(3));
    EXPECT_EQ(5u, value.day(5));
    expect_fields(names::date(value), 4, 3, 5);
    names::date other;
    EXPECT_EQ(&other, &(other = value));
    EXPECT_EQ(&other, &other.assign(names::date(29, 2, 2000)));
    expect_fields(other, 2000, 2, 29);
}

TEST(ForeignDate, MovesByItsNumber) {
    names::date value(1, 1, 1970);
    EXPECT_EQ(719469u, value.pJulian_day_number());
    EXPECT_EQ(&value, &(value += date_duration(-1)));
    expect_fields(value, 1969, 12, 31);
    EXPECT_EQ(&value, &value.plus_assign(1));
    EXPECT_EQ(&value, &(value -= date_duration(2)));
    EXPECT_EQ(&value, &value.minus_assign(-1));
    expect_fields(value, 1969, 12, 31);
    value.pJulian_day_number(730485);
    expect_fields(value, 2000, 3, 1);
}

TEST(ForeignDate, RaisesWithItsSourceLocation) {
    names::date value(1, 3, 0);
    EXPECT_EQ(range_error("day", 68, date_file, "day"), raised_by([&] { value.day(0); }));
    EXPECT_EQ(range_error("day", 68, date_file, "day"), raised_by([] { names::date(32, 0, 1); }));
    EXPECT_EQ(range_error("month", 58, date_file, "month"),
              raised_by([] { names::date(31, 13, 1); }));
    EXPECT_EQ(range_error("date", 146, date_file, "minus_assign"), raised_by([&] { value -= 1; }));
    expect_fields(value, 0, 3, 1);
}

TEST(ForeignTime, HasFourFields) {
    expect_fields(names::time(), 0, 0, 0, 0);
    names::time value(23, 59, 58, 997);
    expect_fields(value, 23, 59, 58, 997);
    EXPECT_EQ(1u, value.hour(1));
    EXPECT_EQ(2u, value.minute(2));
    EXPECT_EQ(3u, value.second(3));
    EXPECT_EQ(4u, value.millisecond(4));
    EXPECT_EQ(1u, value.hour());
    EXPECT_EQ(2u, value.minute());
    EXPECT_EQ(3u, value.second());
    EXPECT_EQ(4u, value.millisecond());
    EXPECT_TRUE(value.is_valid_hour(23));
    EXPECT_FALSE(value.is_valid_hour(-1));
    EXPECT_FALSE(value.is_valid_minute(60));
    EXPECT_FALSE(value.is_valid_second(60));
    EXPECT_FALSE(value.is_valid_millisecond(1000));
    names::time other;
    EXPECT_EQ(&other, &(other = value));
    EXPECT_EQ(&other, &other.assign(names::time(value)));
    expect_fields(other, 1, 2, 3, 4);
}

TEST(ForeignTime, RaisesWithItsSourceLocation) {
    EXPECT_EQ(range_error("Hour", 51, time_file, "hour"),
              raised_by([] { names::time(24, 60, 60, 1000); }));
    EXPECT_EQ(range_error("Minute", 61, time_file, "minute"),
              raised_by([] { names::time(23, 60, 60, 1000); }));
    EXPECT_EQ(range_error("Second", 71, time_file, "second"),
              raised_by([] { names::time(23, 59, 60, 1000); }));
    EXPECT_EQ(range_error("Millisecond", 81, time_file, "millisecond"),
              raised_by([] { names::time(23, 59, 59, 1000); }));
    names::time value(5, 6, 7, 8);
    EXPECT_EQ(range_error("Minute", 61, time_file, "minute"),
              raised_by([&] { value += time_duration(-24, 0, 0, -18427008 - 60000); }));
    expect_fields(value, 0, 6, 7, 8);
}

TEST(ForeignTime, WrapsAroundMidnight) {
    names::time value(23, 59, 59, 999);
    EXPECT_EQ(&value, &(value += time_duration(0, 0, 0, 1)));
    expect_fields(value, 0, 0, 0, 0);
    EXPECT_EQ(&value, &value.plus_assign(time_duration(1, 0, 0, 0)));
    EXPECT_EQ(&value, &(value -= time_duration(0, 30, 0, 0)));
    EXPECT_EQ(&value, &value.minus_assign(time_duration(0, 30, 0, 1)));
    expect_fields(value, 23, 59, 59, 999);

    const names::time one(1, 0, 0, 0);
    const time_duration half(0, 30, 0, 0);
    expect_fields(one + half, 1, 30, 0, 0);
    expect_fields(half + one, 1, 30, 0, 0);
    expect_fields(one - half, 0, 30, 0, 0);
    expect_fields(names::plus(one, half), 1, 30, 0, 0);
    expect_fields(names::plus(half, one), 1, 30, 0, 0);
    expect_fields(names::minus(one, half), 0, 30, 0, 0);
    EXPECT_EQ(-5400000, (one - names::time(2, 30, 0, 0)).m_total);
    EXPECT_EQ(-5, names::minus(one, names::time(1, 0, 0, 5)).m_total);
}

TEST(ForeignDateTime, IsADateWithATime) {
    date_time_t value;
    expect_fields(value.m_date, 0, 0, 0);
    expect_fields(value.m_time, 0, 0, 0, 0);
    const names::date day(31, 2, 2001);
    const names::time moment(1, 2, 3, 4);
    EXPECT_EQ(&value, &(value = day));
    EXPECT_EQ(&value, &(value = moment));
    expect_fields(value.m_date, 2001, 2, 31);
    expect_fields(value.m_time, 1, 2, 3, 4);
    EXPECT_EQ(&value.m_date, &value.date());
    EXPECT_EQ(&value.m_time, &value.time());
    EXPECT_EQ(28u, value.day());
    EXPECT_EQ(2u, value.month());
    EXPECT_EQ(2001u, value.year());
    EXPECT_EQ(1u, value.hour());
    EXPECT_EQ(2u, value.minute());
    EXPECT_EQ(3u, value.second());
    EXPECT_EQ(4u, value.millisecond());
    EXPECT_FALSE(value.is_leap_year());
    EXPECT_TRUE(value.is_day_constrained());
    EXPECT_EQ(5u, value.day(5));
    EXPECT_EQ(6u, value.month(6));
    EXPECT_EQ(7u, value.year(7));
    EXPECT_EQ(8u, value.hour(8));
    EXPECT_EQ(9u, value.minute(9));
    EXPECT_EQ(10u, value.second(10));
    EXPECT_EQ(11u, value.millisecond(11));
    expect_fields(value.m_date, 7, 6, 5);
    expect_fields(value.m_time, 8, 9, 10, 11);
    EXPECT_EQ(&value, &value.assign(day));
    EXPECT_EQ(&value, &value.assign(moment));
    const date_time_t copy(value);
    EXPECT_EQ(&value, &value.assign(names::date(1, 1, 1), names::time()));
    expect_fields(value.m_date, 1, 1, 1);
    EXPECT_EQ(&value, &value.assign(copy));
    EXPECT_EQ(&value, &(value = date_time_t(day, moment)));
    expect_fields(value.m_date, 2001, 2, 31);
    expect_fields(value.m_time, 1, 2, 3, 4);
}

TEST(ForeignDateTime, IsMovedOnlyByTimeDurations) {
    date_time_t value(names::date(5, 1, 2001), names::time(12, 0, 0, 0));
    EXPECT_EQ(&value, &(value += date_duration(7)));
    EXPECT_EQ(&value, &(value -= date_duration(7)));
    EXPECT_EQ(&value, &value.plus_assign(date_duration(7)));
    EXPECT_EQ(&value, &value.minus_assign(date_duration(7)));
    expect_fields(value.m_date, 2001, 1, 5);
    EXPECT_EQ(&value, &(value += time_duration(25, 0, 0, 0)));
    expect_fields(value.m_date, 2001, 1, 2);
    expect_fields(value.m_time, 13, 0, 0, 0);
    EXPECT_EQ(&value, &value.plus_assign(time_duration(26, 0, 0, 0)));
    expect_fields(value.m_date, 2001, 1, 4);
    EXPECT_EQ(&value, &(value -= time_duration(27, 0, 0, 0)));
    expect_fields(value.m_date, 2000, 12, 31);
    EXPECT_EQ(&value, &value.minus_assign(time_duration(1, 0, 0, 0)));
    expect_fields(value.m_time, 11, 0, 0, 0);
    EXPECT_EQ(range_error("day", 68, date_file, "day"),
              raised_by([&] { value += time_duration(24, 0, 0, 0); }));
    expect_fields(value.m_date, 2000, 12, 31);
}

TEST(ForeignDurations, AreOneNumber) {
    date_duration days;
    EXPECT_EQ(0, days.m_days);
    EXPECT_EQ(-5, days.days(-5));
    EXPECT_EQ(-5, days.days());
    EXPECT_EQ(&days, &(days = date_duration(1)));
    EXPECT_EQ(&days, &days.assign(date_duration(2)));
    EXPECT_EQ(&days, &(days += 3));
    EXPECT_EQ(&days, &days.plus_assign(4));
    EXPECT_EQ(&days, &(days -= 5));
    EXPECT_EQ(&days, &days.minus_assign(6));
    EXPECT_EQ(-2, date_duration(days).m_days);
    EXPECT_EQ(8, (days + date_duration(10)).m_days);
    EXPECT_EQ(8, names::plus(days, 10).m_days);
    EXPECT_EQ(-12, (days - date_duration(10)).m_days);
    EXPECT_EQ(-12, names::minus(days, 10).m_days);

    EXPECT_EQ(0, time_duration().m_total);
    time_duration span(-1, -30, -36, -900);
    EXPECT_EQ(-5436900, span.m_total);
    EXPECT_EQ(-1, span.hour());
    EXPECT_EQ(-30, span.minute());
    EXPECT_EQ(-36, span.second());
    EXPECT_EQ(-900, span.millisecond());
    EXPECT_EQ(-5436900 / 3600000.0, span.total_hours());
    EXPECT_EQ(-5436900 / 60000.0, span.total_minutes());
    EXPECT_EQ(-5436900 / 1000.0, span.total_seconds());
    EXPECT_EQ(-1, span.total_complete_hours());
    EXPECT_EQ(-90, span.total_complete_minutes());
    EXPECT_EQ(-5436, span.total_complete_seconds());
    EXPECT_EQ(-5436900, span.total_milliseconds());
    EXPECT_TRUE(span.is_negative());
    const time_duration second(0, 0, 1, 0);
    EXPECT_EQ(&span, &(span = time_duration(second)));
    EXPECT_EQ(&span, &span.assign(second));
    EXPECT_EQ(&span, &(span += second));
    EXPECT_EQ(&span, &span.plus_assign(second));
    EXPECT_EQ(3000, span.m_total);
    EXPECT_EQ(&span, &(span -= second));
    EXPECT_EQ(&span, &span.minus_assign(second));
    EXPECT_EQ(2000, (span + second).m_total);
    EXPECT_EQ(2000, names::plus(span, second).m_total);
    EXPECT_EQ(0, (span - second).m_total);
    EXPECT_EQ(0, names::minus(span, second).m_total);
}

// date_time/clock_test.cpp checks the values, with a clock that does not move.
TEST(ForeignClock, IsReadIntoValuesInRange) {
    for (const date_time_t& now :
         {date_time_t::local_date_time(), date_time_t::UTC_date_time(),
          date_time_t(names::date::local_date(), names::time::local_time()),
          date_time_t(names::date::UTC_date(), names::time::UTC_time())}) {
        EXPECT_LT(1970u, now.m_date.m_year);
        EXPECT_TRUE(now.m_date.is_valid_month(now.m_date.m_month));
        EXPECT_TRUE(now.m_date.is_valid_day(now.m_date.m_day));
        EXPECT_FALSE(now.is_day_constrained());
        EXPECT_GT(24u, now.m_time.m_hour);
        EXPECT_GT(60u, now.m_time.m_minute);
        EXPECT_GT(60u, now.m_time.m_second);
        EXPECT_GT(1000u, now.m_time.m_millisecond);
    }
}

TEST(ForeignClock, ExportsItsObjectsUnderTheirNames) {
    EXPECT_NE(nullptr, &sAutoTester);
    EXPECT_GT(1000000u, timer::m_overheadMicroseconds);
}

}  // namespace
