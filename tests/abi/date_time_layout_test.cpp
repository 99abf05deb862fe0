// Tests sizes, offsets and result types of dates, times and durations, as compiled callers expect
// them.
#include <tova/system/date_time/date_time.hpp>
#include <tova/system/date_time/timer.hpp>

#include "support/raw_memory.hpp"

#include <gtest/gtest.h>

#include <cstddef>
#include <cstring>
#include <type_traits>
#include <utility>

namespace {

using test_support::returns;
using tova::system::date_time::auto_tester;
using tova::system::date_time::date;
using tova::system::date_time::date_duration;
using tova::system::date_time::date_time_t;
using tova::system::date_time::sAutoTester;
using tova::system::date_time::time;
using tova::system::date_time::time_duration;
using tova::system::date_time::timer;

static_assert(sizeof(date) == 12 && alignof(date) == 4, "");
static_assert(sizeof(time) == 16 && alignof(time) == 4, "");
static_assert(sizeof(date_time_t) == 28 && alignof(date_time_t) == 4, "");
static_assert(sizeof(date_duration) == 4 && alignof(date_duration) == 4, "");
static_assert(sizeof(time_duration) == 8 && alignof(time_duration) == 8, "");
static_assert(std::is_empty<auto_tester>::value, "");
static_assert(std::is_same<decltype(sAutoTester), auto_tester>::value, "");
static_assert(std::is_same<decltype(timer::m_overheadMicroseconds), unsigned long>::value, "");

// There are no bases and no slots, and the copy constructor is not trivial.
template <typename Value>
constexpr bool is_a_plain_value() {
    return std::is_standard_layout<Value>::value && !std::is_polymorphic<Value>::value &&
           !std::is_trivially_copy_constructible<Value>::value;
}
static_assert(is_a_plain_value<date>(), "");
static_assert(is_a_plain_value<time>(), "");
static_assert(is_a_plain_value<date_time_t>(), "");
static_assert(is_a_plain_value<date_duration>(), "");
static_assert(is_a_plain_value<time_duration>(), "");
static_assert(!std::is_trivially_destructible<date_duration>::value, "");

// --- Result types, which are not part of a symbol ------------------------------------------------

template <typename Class>
constexpr bool sets(unsigned int (Class::*)(unsigned int)) {
    return true;
}

static_assert(returns<unsigned int, date>(&date::year), "");
static_assert(returns<unsigned int, date>(&date::month), "");
static_assert(returns<unsigned int, date>(&date::day), "");
static_assert(returns<unsigned int>(&date::get_days), "");
static_assert(returns<unsigned int, date>(&date::pJulian_day_number), "");
static_assert(std::is_void<decltype(std::declval<date&>().pJulian_day_number(1u))>::value, "");
static_assert(sets<date>(&date::year), "");
static_assert(sets<date>(&date::month), "");
static_assert(sets<date>(&date::day), "");
static_assert(returns<bool>(&date::is_valid_day), "");
static_assert(returns<bool>(&date::is_valid_month), "");
static_assert(returns<bool>(&date::is_leap_year), "");
static_assert(returns<bool>(&date::is_day_constrained), "");
static_assert(returns<unsigned int, time>(&time::hour), "");
static_assert(returns<unsigned int, time>(&time::minute), "");
static_assert(returns<unsigned int, time>(&time::second), "");
static_assert(returns<unsigned int, time>(&time::millisecond), "");
static_assert(sets<time>(&time::hour), "");
static_assert(sets<time>(&time::minute), "");
static_assert(sets<time>(&time::second), "");
static_assert(sets<time>(&time::millisecond), "");
static_assert(returns<bool>(&time::is_valid_hour), "");
static_assert(returns<bool>(&time::is_valid_minute), "");
static_assert(returns<bool>(&time::is_valid_second), "");
static_assert(returns<bool>(&time::is_valid_millisecond), "");
static_assert(returns<const date&>(&date_time_t::date), "");
static_assert(returns<const time&>(&date_time_t::time), "");
static_assert(returns<unsigned int, date_time_t>(&date_time_t::year), "");
static_assert(returns<unsigned int, date_time_t>(&date_time_t::millisecond), "");
static_assert(returns<int, date_duration>(&date_duration::days), "");
static_assert(std::is_same<int, decltype(std::declval<date_duration&>().days(1))>::value, "");
static_assert(returns<int>(&time_duration::hour), "");
static_assert(returns<int>(&time_duration::minute), "");
static_assert(returns<int>(&time_duration::second), "");
static_assert(returns<int>(&time_duration::millisecond), "");
static_assert(returns<double>(&time_duration::total_hours), "");
static_assert(returns<double>(&time_duration::total_minutes), "");
static_assert(returns<double>(&time_duration::total_seconds), "");
static_assert(returns<long>(&time_duration::total_complete_hours), "");
static_assert(returns<long>(&time_duration::total_complete_minutes), "");
static_assert(returns<long>(&time_duration::total_complete_seconds), "");
static_assert(returns<long>(&time_duration::total_milliseconds), "");
static_assert(returns<bool>(&time_duration::is_negative), "");

// --- Fields --------------------------------------------------------------------------------------

template <typename Field>
Field field_at(const void* object, std::size_t offset) {
    Field field;
    std::memcpy(&field, static_cast<const char*>(object) + offset, sizeof field);
    return field;
}

void expect_date_at(const void* object, std::size_t offset) {
    EXPECT_EQ(2001u, field_at<unsigned>(object, offset));
    EXPECT_EQ(2u, field_at<unsigned>(object, offset + 4));
    EXPECT_EQ(31u, field_at<unsigned>(object, offset + 8));
}

void expect_time_at(const void* object, std::size_t offset) {
    EXPECT_EQ(9u, field_at<unsigned>(object, offset));
    EXPECT_EQ(8u, field_at<unsigned>(object, offset + 4));
    EXPECT_EQ(7u, field_at<unsigned>(object, offset + 8));
    EXPECT_EQ(654u, field_at<unsigned>(object, offset + 12));
}

TEST(DateTimeLayout, ADateIsYearMonthAndStoredDay) {
    const date value(31, 2, 2001);
    expect_date_at(&value, 0);
}

TEST(DateTimeLayout, ATimeIsHourMinuteSecondAndMillisecond) {
    const time value(9, 8, 7, 654);
    expect_time_at(&value, 0);
}

TEST(DateTimeLayout, ADateWithATimeIsTheDateAndThenTheTime) {
    const date_time_t value(date(31, 2, 2001), time(9, 8, 7, 654));
    expect_date_at(&value, 0);
    expect_time_at(&value, 12);
    EXPECT_EQ(static_cast<const void*>(&value), &value.date());
    EXPECT_EQ(reinterpret_cast<const char*>(&value) + 12,
              reinterpret_cast<const char*>(&value.time()));
}

TEST(DateTimeLayout, DurationsAreOneNumber) {
    const date_duration days(-5);
    EXPECT_EQ(-5, field_at<int>(&days, 0));
    const time_duration milliseconds(0, 0, 0, -6000000000);
    EXPECT_EQ(-6000000000, field_at<long>(&milliseconds, 0));
}

}  // namespace
