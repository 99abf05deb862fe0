/// Spans of time: whole days, and milliseconds.
///
/// Both are plain values of one signed number. No operation fails: a sum or difference that leaves
/// the range of the number wraps.
#pragma once

#include <tova/abi.hpp>

namespace TOVA_2_18 {
namespace system {
namespace date_time {

/// A number of days, which may be negative.
class TOVA_API date_duration {
public:
    date_duration();  ///< No days.
    date_duration(const date_duration& source);
    date_duration(int days);
    ~date_duration() TOVA_NOTHROW;

    int days() const;
    int days(int value);  ///< Returns the value set.

    date_duration& operator=(const date_duration& source);
    date_duration& assign(const date_duration& source);
    date_duration& operator+=(const date_duration& duration);
    date_duration& plus_assign(const date_duration& duration);
    date_duration& operator-=(const date_duration& duration);
    date_duration& minus_assign(const date_duration& duration);

private:
    int m_days;
};

/// A number of milliseconds, which may be negative.
class TOVA_API time_duration {
public:
    time_duration();  ///< No time.
    time_duration(const time_duration& source);

    /// The sum of the four, each of which may have either sign and any size.
    ///
    /// Contract: hours, minutes and seconds are summed up in 32 bits, so 597 hours already wrap.
    /// Only `milliseconds` takes the whole range; long spans are given there, with zeros in front.
    time_duration(int hours, int minutes, int seconds, long milliseconds);

    /// The parts of the duration, each cut toward zero and none positive in a negative duration.
    /// The hours are all hours, not those of a day; minutes and seconds are below 60, and
    /// milliseconds below 1000.
    int hour() const;
    int minute() const;
    int second() const;
    int millisecond() const;

    /// The whole duration in one unit, with its fraction.
    double total_hours() const;
    double total_minutes() const;
    double total_seconds() const;

    /// The whole duration in one unit, cut toward zero.
    long total_complete_hours() const;
    long total_complete_minutes() const;
    long total_complete_seconds() const;
    long total_milliseconds() const;

    bool is_negative() const;

    time_duration& operator=(const time_duration& source);
    time_duration& assign(const time_duration& source);
    time_duration& operator+=(const time_duration& duration);
    time_duration& plus_assign(const time_duration& duration);
    time_duration& operator-=(const time_duration& duration);
    time_duration& minus_assign(const time_duration& duration);

private:
    long m_milliseconds;
};

TOVA_API date_duration plus(const date_duration& left, const date_duration& right);
TOVA_API date_duration minus(const date_duration& left, const date_duration& right);
TOVA_API date_duration operator+(const date_duration& left, const date_duration& right);
TOVA_API date_duration operator-(const date_duration& left, const date_duration& right);

TOVA_API time_duration plus(const time_duration& left, const time_duration& right);
TOVA_API time_duration minus(const time_duration& left, const time_duration& right);
TOVA_API time_duration operator+(const time_duration& left, const time_duration& right);
TOVA_API time_duration operator-(const time_duration& left, const time_duration& right);

}  // namespace date_time
}  // namespace system
}  // namespace TOVA_2_18
