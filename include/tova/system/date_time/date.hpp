/// @file
/// A day of the calendar.
///
///     using namespace tova::system::date_time;
///     date due(31, 1, 2001);
///     due += date_duration(30);                          // 2 March 2001
///     const unsigned number = due.pJulian_day_number();  // compare dates by their numbers
///
/// docs/dates.md shows what happens at the edges: days beyond the month, 29 February, the ends of
/// the range.
///
/// Threads: dates are plain values. Only `local_date` and `UTC_date` are for one thread at a time,
/// since the C library keeps the broken-down time in a static buffer.
#pragma once

#include <tova/abi.hpp>
#include <tova/system/date_time/duration.hpp>

namespace TOVA_2_18 {
namespace system {
namespace date_time {

/// A day of the proleptic Gregorian calendar, with an unsigned year and no time zone.
///
/// A plain value of three numbers: copies share nothing. Any month accepts a day from 1 to 31: the
/// day is stored as it is, and `day()` limits it to the last day of the month. Arithmetic goes
/// through the day number, in which the stored day counts. There are no comparison operators.
class TOVA_API date {
public:
    /// A date with day, month and year 0. No setter accepts a day or month of 0. `day()` is 0.
    date();

    date(const date& source);

    /// Sets day, month and year, in this order. Raises `exceptions::out_of_range` as the setters
    /// do, so an invalid day is reported first.
    date(unsigned int day, unsigned int month, unsigned int year);

    /// Today, in the time zone of the process (`local_date`) or in UTC (`UTC_date`). Call them from
    /// one thread at a time.
    static date local_date();
    static date UTC_date();

    unsigned int year() const;   ///< The year, 0 in a default date. Never fails.
    unsigned int month() const;  ///< The month, 1 to 12, or 0 in a default date. Never fails.

    /// The day of the month: the stored day, or the last day of the month if that is smaller. 0 if
    /// the month is 0, as in a default date. `get_days` is the same.
    unsigned int day() const;
    unsigned int get_days() const;

    /// Stores a value and returns it. `day` accepts 1 to 31 whatever the month, `month` accepts 1
    /// to 12, `year` any number. Raises `exceptions::out_of_range` for other values, and keeps the
    /// old one.
    unsigned int day(unsigned int value);
    unsigned int month(unsigned int value);
    unsigned int year(unsigned int value);

    bool is_valid_day(unsigned int value) const;    ///< Whether the value is 1 to 31.
    bool is_valid_month(unsigned int value) const;  ///< Whether the value is 1 to 12.
    bool is_leap_year() const;                      ///< Whether the year has 366 days.

    /// Whether `day()` differs from the stored day, because the month is shorter.
    bool is_day_constrained() const;

    date& operator=(const date& source);
    date& assign(const date& source);

    /// Moves the date by a number of days, through the day number. Wraps at 32 bits; never fails.
    ///
    /// Contract: a move by 0 days goes the same way, so 29 February becomes 1 March, and
    /// 31 February becomes 3 March in a common year.
    date& operator+=(const date_duration& duration);
    date& plus_assign(const date_duration& duration);

    /// Moves the date back by a number of days. Raises `exceptions::out_of_range` unless the day
    /// number, read as a signed number, is greater than the number of days.
    date& operator-=(const date_duration& duration);
    date& minus_assign(const date_duration& duration);

    /// The day number: 1 is 1 March of year 0, and 1 January 1970 is 719469. The stored day counts,
    /// so 31 February has the number of 3 March in a common year. Wraps at 32 bits; never fails.
    unsigned int pJulian_day_number() const;

    /// Sets the date from a day number. Never fails.
    ///
    /// Contract: the number of 29 February and the one after it both give 1 March. Every other date
    /// comes back from its number.
    void pJulian_day_number(unsigned int number);

private:
    unsigned int m_year;
    unsigned int m_month;
    unsigned int m_day;
};

}  // namespace date_time
}  // namespace system
}  // namespace TOVA_2_18
