/// @file
/// A day with a time of day.
///
///     namespace date_time = tova::system::date_time;
///     date_time::date_time_t moment(date_time::date(5, 1, 2001), date_time::time(23, 30, 0, 0));
///     moment += date_time::time_duration(1, 0, 0, 0);  // 5 January 2001, 00:30: the date stays
///
/// docs/dates.md shows how to move a moment along the calendar.
///
/// Threads: these are plain values. Only `local_date_time` and `UTC_date_time` are for one thread
/// at a time, since the C library keeps the broken-down time in a static buffer.
#pragma once

#include <tova/abi.hpp>
#include <tova/system/date_time/date.hpp>
#include <tova/system/date_time/duration.hpp>
#include <tova/system/date_time/time.hpp>

namespace TOVA_2_18 {
namespace system {
namespace date_time {

/// A `date` and a `time` side by side, without a time zone. A plain value: copies share nothing.
///
/// Nothing is carried from one part to the other: 23:30 plus one hour is 00:30 on the same day.
/// There are no comparison operators.
class TOVA_API date_time_t {
public:
    /// A default date at midnight.
    date_time_t();

    date_time_t(const date_time_t& source);

    /// A moment from its two parts, which are not changed. Never fails.
    date_time_t(const date_time::date& date, const date_time::time& time);

    /// Now, in the time zone of the process (`local_date_time`) or in UTC (`UTC_date_time`), from a
    /// single reading of the clock. Call them from one thread at a time.
    static date_time_t local_date_time();
    static date_time_t UTC_date_time();

    /// Returns or sets a part of the date, like the operation of the same name in `date`. The
    /// setters raise `exceptions::out_of_range` under the same conditions.
    unsigned int year() const;
    unsigned int month() const;
    unsigned int day() const;
    unsigned int year(unsigned int value);
    unsigned int month(unsigned int value);
    unsigned int day(unsigned int value);
    bool is_leap_year() const;
    bool is_day_constrained() const;

    /// Returns or sets a part of the time, like the operation of the same name in `time`. The
    /// setters raise `exceptions::out_of_range` under the same conditions.
    unsigned int hour() const;
    unsigned int minute() const;
    unsigned int second() const;
    unsigned int millisecond() const;
    unsigned int hour(unsigned int value);
    unsigned int minute(unsigned int value);
    unsigned int second(unsigned int value);
    unsigned int millisecond(unsigned int value);

    /// One of the parts. The reference is valid as long as the object.
    const date_time::date& date() const;
    const date_time::time& time() const;

    /// Replaces one part or both, and returns this object. Never fails.
    date_time_t& assign(const date_time::date& date);
    date_time_t& operator=(const date_time::date& date);
    date_time_t& assign(const date_time::time& time);
    date_time_t& operator=(const date_time::time& time);
    date_time_t& assign(const date_time::date& date, const date_time::time& time);
    date_time_t& assign(const date_time_t& source);
    date_time_t& operator=(const date_time_t& source);

    /// Changes nothing, and returns this object. To move the date, move a copy of `date()` and
    /// assign it. Never fails.
    ///
    /// Contract: days have no effect here, although they move a `date`.
    date_time_t& operator+=(const date_duration& duration);
    date_time_t& plus_assign(const date_duration& duration);
    date_time_t& operator-=(const date_duration& duration);
    date_time_t& minus_assign(const date_duration& duration);

    /// Moves the time of day. It wraps at midnight, without a carry to the date.
    ///
    /// Contract: from 24 complete hours on, in either direction, the hours left over after whole
    /// days become the day of the month, and the date then moves on by the same number of days. If
    /// they are 0 or negative they are no valid day, and `exceptions::out_of_range` is raised with
    /// nothing changed. If a later step raises, what the earlier ones changed stays.
    date_time_t& operator+=(const time_duration& duration);
    date_time_t& plus_assign(const time_duration& duration);

    /// Moves the time of day back. It wraps at midnight, and from 24 complete hours on the date
    /// moves back as well, as described for `+=`. The hours have the sign of the given duration, so
    /// a negative duration of a day or more raises `exceptions::out_of_range` here, too.
    date_time_t& operator-=(const time_duration& duration);
    date_time_t& minus_assign(const time_duration& duration);

private:
    date_time::date m_date;
    date_time::time m_time;
};

}  // namespace date_time
}  // namespace system
}  // namespace TOVA_2_18
