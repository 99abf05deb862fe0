/// @file
/// Durations: whole days, and milliseconds.
///
///     using namespace tova::system::date_time;
///     const time_duration pause(0, 90, 0, 0);
///     const int hours = pause.hour();              // 1
///     const int minutes = pause.minute();          // 30
///     const double in_hours = pause.total_hours();  // 1.5
///
/// No operation fails: a sum or difference beyond the range of the number wraps.
///
/// Threads: both classes are plain values of one signed number. Two threads share nothing unless
/// they use the same object.
#pragma once

#include <tova/abi.hpp>

namespace TOVA_2_18 {
namespace system {
namespace date_time {

/// A number of days, which may be negative. A plain value: copies share nothing. Never fails.
class TOVA_API date_duration {
public:
    date_duration();  ///< No days.
    date_duration(const date_duration& source);
    date_duration(int days);  ///< That many days.
    ~date_duration() TOVA_NOTHROW;

    int days() const;     ///< The number of days.
    int days(int value);  ///< Sets the number of days, and returns it.

    date_duration& operator=(const date_duration& source);
    date_duration& assign(const date_duration& source);

    /// Adds or subtracts a duration, and returns this object. Wraps at 32 bits.
    date_duration& operator+=(const date_duration& duration);
    date_duration& plus_assign(const date_duration& duration);
    date_duration& operator-=(const date_duration& duration);
    date_duration& minus_assign(const date_duration& duration);

private:
    int m_days;
};

/// A number of milliseconds, which may be negative. A plain value: copies share nothing. Never
/// fails.
class TOVA_API time_duration {
public:
    time_duration();  ///< No time.
    time_duration(const time_duration& source);

    /// The sum of the four arguments, each of which may be negative and of any size.
    ///
    /// Contract: hours, minutes and seconds are added in 32 bits, so 597 hours already wrap. Only
    /// `milliseconds` has the full range: pass a long duration there, after three zeros.
    time_duration(int hours, int minutes, int seconds, long milliseconds);

    /// The parts of the duration, truncated toward zero; those of a negative duration are negative
    /// or zero. `hour` counts all hours and doesn't stop at 24 (its low 32 bits); the magnitude of
    /// minutes and seconds is below 60, and that of milliseconds below 1000.
    int hour() const;
    int minute() const;
    int second() const;
    int millisecond() const;

    /// The whole duration in one unit, with its fraction.
    double total_hours() const;
    double total_minutes() const;
    double total_seconds() const;

    /// The whole duration in one unit, truncated toward zero.
    long total_complete_hours() const;
    long total_complete_minutes() const;
    long total_complete_seconds() const;
    long total_milliseconds() const;

    /// Whether the duration is below zero.
    bool is_negative() const;

    time_duration& operator=(const time_duration& source);
    time_duration& assign(const time_duration& source);

    /// Adds or subtracts a duration, and returns this object. Wraps at 64 bits.
    time_duration& operator+=(const time_duration& duration);
    time_duration& plus_assign(const time_duration& duration);
    time_duration& operator-=(const time_duration& duration);
    time_duration& minus_assign(const time_duration& duration);

private:
    long m_milliseconds;
};

/// The sum or the difference of two numbers of days, which wraps at 32 bits. The operators and the
/// functions with names do the same. Never fails.
TOVA_API date_duration plus(const date_duration& left, const date_duration& right);
TOVA_API date_duration minus(const date_duration& left, const date_duration& right);
TOVA_API date_duration operator+(const date_duration& left, const date_duration& right);
TOVA_API date_duration operator-(const date_duration& left, const date_duration& right);

/// The sum or the difference of two numbers of milliseconds, which wraps at 64 bits. The operators
/// and the functions with names do the same. Never fails.
TOVA_API time_duration plus(const time_duration& left, const time_duration& right);
TOVA_API time_duration minus(const time_duration& left, const time_duration& right);
TOVA_API time_duration operator+(const time_duration& left, const time_duration& right);
TOVA_API time_duration operator-(const time_duration& left, const time_duration& right);

}  // namespace date_time
}  // namespace system
}  // namespace TOVA_2_18
