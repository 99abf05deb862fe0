/// A day with a time of day.
#pragma once

#include <tova/abi.hpp>
#include <tova/system/date_time/date.hpp>
#include <tova/system/date_time/duration.hpp>
#include <tova/system/date_time/time.hpp>

namespace TOVA_2_18 {
namespace system {
namespace date_time {

/// A `date` and a `time` side by side, in no time zone.
///
/// The two parts are moved each by itself, and nothing is carried from one to the other: 23:30 and
/// one hour is 00:30 of the same day.
class TOVA_API date_time_t {
public:
    /// A default date at midnight.
    date_time_t();
    date_time_t(const date_time_t& source);
    date_time_t(const date_time::date& date, const date_time::time& time);

    /// Now, both parts from one reading of the clock, in the time zone of the process or in UTC.
    /// Not for several threads at once: the C library keeps the broken-down time in one place.
    static date_time_t local_date_time();
    static date_time_t UTC_date_time();

    /// As in `date`. The setters raise `exceptions::out_of_range` as they do there.
    unsigned int year() const;
    unsigned int month() const;
    unsigned int day() const;
    unsigned int year(unsigned int value);
    unsigned int month(unsigned int value);
    unsigned int day(unsigned int value);
    bool is_leap_year() const;
    bool is_day_constrained() const;

    /// As in `time`. The setters raise `exceptions::out_of_range` as they do there.
    unsigned int hour() const;
    unsigned int minute() const;
    unsigned int second() const;
    unsigned int millisecond() const;
    unsigned int hour(unsigned int value);
    unsigned int minute(unsigned int value);
    unsigned int second(unsigned int value);
    unsigned int millisecond(unsigned int value);

    const date_time::date& date() const;
    const date_time::time& time() const;

    /// Replace one part, or both.
    date_time_t& assign(const date_time::date& date);
    date_time_t& operator=(const date_time::date& date);
    date_time_t& assign(const date_time::time& time);
    date_time_t& operator=(const date_time::time& time);
    date_time_t& assign(const date_time::date& date, const date_time::time& time);
    date_time_t& assign(const date_time_t& source);
    date_time_t& operator=(const date_time_t& source);

    /// Contract: a number of days leaves a date with a time as it is. Move a `date` and assign it.
    date_time_t& operator+=(const date_duration& duration);
    date_time_t& plus_assign(const date_duration& duration);
    date_time_t& operator-=(const date_duration& duration);
    date_time_t& minus_assign(const date_duration& duration);

    /// Moves the time, round midnight and without a carry to the date.
    ///
    /// Contract: from 24 complete hours on, in either direction, the hours beyond whole days are
    /// looked at: that number becomes the day of the month, and the date is then moved by as many
    /// days. Where it is 0 or negative the day cannot be set, and `exceptions::out_of_range` is
    /// raised with nothing changed. What is raised by a later step leaves the earlier ones done.
    date_time_t& operator+=(const time_duration& duration);
    date_time_t& plus_assign(const time_duration& duration);

    /// The same, with date and time moved back. The hours are those of the duration as it is given.
    date_time_t& operator-=(const time_duration& duration);
    date_time_t& minus_assign(const time_duration& duration);

private:
    date_time::date m_date;
    date_time::time m_time;
};

}  // namespace date_time
}  // namespace system
}  // namespace TOVA_2_18
