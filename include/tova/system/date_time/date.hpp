/// A day of the calendar.
#pragma once

#include <tova/abi.hpp>
#include <tova/system/date_time/duration.hpp>

namespace TOVA_2_18 {
namespace system {
namespace date_time {

/// A day of the Gregorian calendar, carried back before its introduction, with an unsigned year.
///
/// A plain value of three numbers, which belongs to no time zone. A month has room for 31 days
/// whatever its length: the stored day is kept, and `day()` brings it down to the month's last day.
/// Arithmetic goes by way of the day number, in which the stored day counts.
class TOVA_API date {
public:
    /// Day, month and year 0, which no setter takes. Its `day()` is 0.
    date();
    date(const date& source);

    /// Sets day, month and year in this order. Raises `exceptions::out_of_range` as the setters do,
    /// for the day first.
    date(unsigned int day, unsigned int month, unsigned int year);

    /// Today, in the time zone of the process or in UTC. Not for several threads at once: the C
    /// library keeps the broken-down time in one place.
    static date local_date();
    static date UTC_date();

    unsigned int year() const;
    unsigned int month() const;

    /// The day of the month: the stored day, or the last day of the month if that is smaller. 0 in
    /// a default date.
    unsigned int day() const;
    unsigned int get_days() const;

    /// Store a value and return it. `day` takes 1 to 31 whatever the month, `month` takes 1 to 12,
    /// `year` any number. Raise `exceptions::out_of_range` for another value, and keep the old one.
    unsigned int day(unsigned int value);
    unsigned int month(unsigned int value);
    unsigned int year(unsigned int value);

    bool is_valid_day(unsigned int value) const;    ///< 1 to 31.
    bool is_valid_month(unsigned int value) const;  ///< 1 to 12.
    bool is_leap_year() const;

    /// Whether the stored day lies beyond the end of the month, so that `day()` is another.
    bool is_day_constrained() const;

    date& operator=(const date& source);
    date& assign(const date& source);

    /// Moves the date by a number of days: to the day number and back. It wraps at 32 bits.
    ///
    /// Contract: even a move by no days takes this way, so a 29 February becomes 1 March and a
    /// 31 February the 3rd of March.
    date& operator+=(const date_duration& duration);
    date& plus_assign(const date_duration& duration);

    /// Moves the date back. Raises `exceptions::out_of_range` unless the day number, taken as a
    /// signed number, is greater than the days.
    date& operator-=(const date_duration& duration);
    date& minus_assign(const date_duration& duration);

    /// The number of the day, where 1 is 1 March of year 0; 1 January 1970 has 719469. The stored
    /// day counts, so 31 February is 3 March of a common year. It wraps at 32 bits.
    unsigned int pJulian_day_number() const;

    /// Sets the date from a day number, any of 32 bits.
    ///
    /// Contract: the number of a 29 February gives 1 March, as does the one behind it. Every other
    /// date comes back from its number.
    void pJulian_day_number(unsigned int number);

private:
    unsigned int m_year;
    unsigned int m_month;
    unsigned int m_day;
};

}  // namespace date_time
}  // namespace system
}  // namespace TOVA_2_18
