/// A time of day.
#pragma once

#include <tova/abi.hpp>
#include <tova/system/date_time/duration.hpp>

namespace TOVA_2_18 {
namespace system {
namespace date_time {

/// A time of day in milliseconds, from 00:00:00.000 to 23:59:59.999.
///
/// A plain value of four numbers, which belongs to no time zone and no day: arithmetic wraps round
/// midnight and carries to nowhere.
class TOVA_API time {
public:
    time();  ///< Midnight.
    time(const time& source);

    /// Sets the four in this order. Raises `exceptions::out_of_range` as the setters do.
    time(unsigned int hour, unsigned int minute, unsigned int second, unsigned int millisecond);

    /// The time now, in the time zone of the process or in UTC. Not for several threads at once:
    /// the C library keeps the broken-down time in one place.
    static time local_time();
    static time UTC_time();

    unsigned int hour() const;
    unsigned int minute() const;
    unsigned int second() const;
    unsigned int millisecond() const;

    /// Store a value and return it: hours below 24, minutes and seconds below 60 (there is no leap
    /// second), milliseconds below 1000. Raise `exceptions::out_of_range` for another value, and
    /// keep the old one.
    unsigned int hour(unsigned int value);
    unsigned int minute(unsigned int value);
    unsigned int second(unsigned int value);
    unsigned int millisecond(unsigned int value);

    bool is_valid_hour(int value) const;         ///< 0 to 23.
    bool is_valid_minute(int value) const;       ///< 0 to 59.
    bool is_valid_second(int value) const;       ///< 0 to 59.
    bool is_valid_millisecond(int value) const;  ///< 0 to 999.

    time& operator=(const time& source);
    time& assign(const time& source);

    /// Moves the time, round midnight if need be.
    ///
    /// Contract: one day is added before the remainder of a day is taken, and the remainder keeps
    /// its sign. A move that leads to 24 hours or more before midnight therefore raises
    /// `exceptions::out_of_range` unless it ends at midnight exactly: at the first negative part,
    /// with the parts in front of it already stored.
    time& operator+=(const time_duration& duration);
    time& plus_assign(const time_duration& duration);

    /// Moves the time by the negated duration.
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
