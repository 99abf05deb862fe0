/// @file
/// A time of day.
///
///     using tova::system::date_time::time;
///     using tova::system::date_time::time_duration;
///     time closing(23, 30, 0, 0);
///     closing += time_duration(1, 0, 0, 0);                    // 00:30
///     const time_duration since = closing - time(2, 0, 0, 0);  // -1 hour and -30 minutes
///
/// Threads: times are plain values. Only `local_time` and `UTC_time` are for one thread at a time,
/// since the C library keeps the broken-down time in a static buffer.
#pragma once

#include <tova/abi.hpp>
#include <tova/system/date_time/duration.hpp>

namespace TOVA_2_18 {
namespace system {
namespace date_time {

/// A time of day in milliseconds, from 00:00:00.000 to 23:59:59.999.
///
/// A plain value of four numbers, without a day and a time zone: copies share nothing. Arithmetic
/// wraps at midnight and carries nothing anywhere. There are no comparison operators.
class TOVA_API time {
public:
    time();  ///< Midnight.
    time(const time& source);

    /// Sets the four fields, in this order. Raises `exceptions::out_of_range` as the setters do.
    time(unsigned int hour, unsigned int minute, unsigned int second, unsigned int millisecond);

    /// The time now, in the time zone of the process (`local_time`) or in UTC (`UTC_time`). Call
    /// them from one thread at a time. `local_time` raises `exceptions::out_of_range` within a leap
    /// second, if the time zone data have leap seconds.
    static time local_time();
    static time UTC_time();

    unsigned int hour() const;         ///< The hour, 0 to 23.
    unsigned int minute() const;       ///< The minute, 0 to 59.
    unsigned int second() const;       ///< The second, 0 to 59.
    unsigned int millisecond() const;  ///< The millisecond, 0 to 999.

    /// Stores a value and returns it: hours below 24, minutes and seconds below 60 (a leap second
    /// is out of range), milliseconds below 1000. Raises `exceptions::out_of_range` for other
    /// values, and keeps the old one.
    unsigned int hour(unsigned int value);
    unsigned int minute(unsigned int value);
    unsigned int second(unsigned int value);
    unsigned int millisecond(unsigned int value);

    bool is_valid_hour(int value) const;         ///< Whether the value is 0 to 23.
    bool is_valid_minute(int value) const;       ///< Whether the value is 0 to 59.
    bool is_valid_second(int value) const;       ///< Whether the value is 0 to 59.
    bool is_valid_millisecond(int value) const;  ///< Whether the value is 0 to 999.

    time& operator=(const time& source);
    time& assign(const time& source);

    /// Moves the time. It wraps at midnight.
    ///
    /// Contract: one day is added, and then the remainder of whole days is taken, which keeps its
    /// sign. A move that reaches back 24 hours or more before midnight therefore raises
    /// `exceptions::out_of_range`, unless it ends at midnight exactly: the setter of the first
    /// negative field raises it, and the fields before that one have their new values.
    time& operator+=(const time_duration& duration);
    time& plus_assign(const time_duration& duration);

    /// Moves the time by the negated duration, with the same wrap and the same exception.
    time& operator-=(const time_duration& duration);
    time& minus_assign(const time_duration& duration);

private:
    unsigned int m_hour;
    unsigned int m_minute;
    unsigned int m_second;
    unsigned int m_millisecond;
};

/// The time from `right` to `left`, negative if `right` is the later one.
TOVA_API time_duration minus(const time& left, const time& right);
TOVA_API time_duration operator-(const time& left, const time& right);

/// A moved copy. Raises `exceptions::out_of_range` where `+=` and `-=` do.
TOVA_API time plus(const time& left, const time_duration& right);
TOVA_API time plus(const time_duration& left, const time& right);
TOVA_API time minus(const time& left, const time_duration& right);
TOVA_API time operator+(const time& left, const time_duration& right);
TOVA_API time operator+(const time_duration& left, const time& right);
TOVA_API time operator-(const time& left, const time_duration& right);

}  // namespace date_time
}  // namespace system
}  // namespace TOVA_2_18
