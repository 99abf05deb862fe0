/// @file
/// Dates that compare, print and meet `std::chrono`.
///
///     using namespace tova::extras;                       // for the operators
///     if (due < today)
///         std::cout << to_iso(due) << " was " << days_between(due, today) << " days ago\n";
///     const date parsed = date_from_iso("2026-02-03").value;
///
/// All functions are pure; threads may share their arguments.
#pragma once

#include <tova/abi.hpp>
#include <tova/exceptions/exceptions.hpp>
#include <tova/extras/hash.hpp>
#include <tova/generic/varg_list.hpp>
#include <tova/strings/ustring.hpp>
#include <tova/system/date_time/date.hpp>
#include <tova/system/date_time/date_time.hpp>
#include <tova/system/date_time/duration.hpp>
#include <tova/system/date_time/time.hpp>

#include <chrono>
#include <cstdio>
#include <string>

namespace TOVA_2_18 {
namespace extras {

/// A date or time that was read, or why it was not.
template <typename Value>
struct parsed {
    Value value;           ///< As default-constructed if `is_valid` is false.
    bool is_valid;         ///< Whether the whole text was read.
    unsigned long offset;  ///< Where reading stopped, in bytes.

    /// Whether the whole text was read. Never fails.
    explicit operator bool() const { return is_valid; }
};

/// @name Comparison
///
/// Dates compare by `year`, `month` and `day`: a 31 February equals the last day of its February.
/// The operators are found by `using namespace tova::extras` alone.
/// @{
inline bool operator==(const system::date_time::date& a, const system::date_time::date& b) {
    return equal_to()(a, b);
}
inline bool operator!=(const system::date_time::date& a, const system::date_time::date& b) {
    return !(a == b);
}
inline bool operator<(const system::date_time::date& a, const system::date_time::date& b) {
    return less()(a, b);
}
inline bool operator>(const system::date_time::date& a, const system::date_time::date& b) {
    return b < a;
}
inline bool operator<=(const system::date_time::date& a, const system::date_time::date& b) {
    return !(b < a);
}
inline bool operator>=(const system::date_time::date& a, const system::date_time::date& b) {
    return !(a < b);
}
inline bool operator==(const system::date_time::time& a, const system::date_time::time& b) {
    return equal_to()(a, b);
}
inline bool operator!=(const system::date_time::time& a, const system::date_time::time& b) {
    return !(a == b);
}
inline bool operator<(const system::date_time::time& a, const system::date_time::time& b) {
    return less()(a, b);
}
inline bool operator>(const system::date_time::time& a, const system::date_time::time& b) {
    return b < a;
}
inline bool operator<=(const system::date_time::time& a, const system::date_time::time& b) {
    return !(b < a);
}
inline bool operator>=(const system::date_time::time& a, const system::date_time::time& b) {
    return !(a < b);
}
inline bool operator==(const system::date_time::date_time_t& a,
                       const system::date_time::date_time_t& b) {
    return equal_to()(a, b);
}
inline bool operator!=(const system::date_time::date_time_t& a,
                       const system::date_time::date_time_t& b) {
    return !(a == b);
}
inline bool operator<(const system::date_time::date_time_t& a,
                      const system::date_time::date_time_t& b) {
    return less()(a, b);
}
inline bool operator>(const system::date_time::date_time_t& a,
                      const system::date_time::date_time_t& b) {
    return b < a;
}
inline bool operator<=(const system::date_time::date_time_t& a,
                       const system::date_time::date_time_t& b) {
    return !(b < a);
}
inline bool operator>=(const system::date_time::date_time_t& a,
                       const system::date_time::date_time_t& b) {
    return !(a < b);
}
/// @}

namespace _private {

// Days since 1 January 1970 of the proleptic Gregorian calendar. Exact for every date that `date`
// holds, 29 February included; `pJulian_day_number` counts the stored day instead.
inline long days_since_epoch(long year, unsigned month, unsigned day) {
    year -= month <= 2;
    const long era = (year >= 0 ? year : year - 399) / 400;
    const unsigned long year_of_era = static_cast<unsigned long>(year - era * 400);
    const unsigned long day_of_year = (153 * (month > 2 ? month - 3 : month + 9) + 2) / 5 + day - 1;
    const unsigned long day_of_era =
        year_of_era * 365 + year_of_era / 4 - year_of_era / 100 + day_of_year;
    return era * 146097 + static_cast<long>(day_of_era) - 719468;
}

inline system::date_time::date date_of(long days) {
    days += 719468;
    const long era = (days >= 0 ? days : days - 146096) / 146097;
    const unsigned long day_of_era = static_cast<unsigned long>(days - era * 146097);
    const unsigned long year_of_era =
        (day_of_era - day_of_era / 1460 + day_of_era / 36524 - day_of_era / 146096) / 365;
    const unsigned long day_of_year =
        day_of_era - (365 * year_of_era + year_of_era / 4 - year_of_era / 100);
    const unsigned long shifted = (5 * day_of_year + 2) / 153;
    const unsigned month = static_cast<unsigned>(shifted < 10 ? shifted + 3 : shifted - 9);
    const long year = static_cast<long>(year_of_era) + era * 400 + (month <= 2);
    return system::date_time::date(static_cast<unsigned>(day_of_year - (153 * shifted + 2) / 5 + 1),
                                   month, static_cast<unsigned>(year));
}

// Reads exactly `count` digits. Returns false, with `offset` at the offending byte, otherwise.
inline bool read_digits(const std::string& text, unsigned long& offset, int count,
                        unsigned& value) {
    value = 0;
    for (; count > 0; --count, ++offset) {
        if (offset >= text.size() || text[offset] < '0' || text[offset] > '9')
            return false;
        value = value * 10 + static_cast<unsigned>(text[offset] - '0');
    }
    return true;
}

inline bool read_byte(const std::string& text, unsigned long& offset, char byte) {
    if (offset >= text.size() || text[offset] != byte)
        return false;
    ++offset;
    return true;
}

inline bool read_date(const std::string& text, unsigned long& offset,
                      system::date_time::date& value) {
    unsigned year = 0;
    unsigned month = 0;
    unsigned day = 0;
    const unsigned long begin = offset;
    if (!read_digits(text, offset, 4, year) || !read_byte(text, offset, '-') ||
        !read_digits(text, offset, 2, month) || !read_byte(text, offset, '-') ||
        !read_digits(text, offset, 2, day))
        return false;
    if (month < 1 || month > 12) {
        offset = begin + 5;
        return false;
    }
    const system::date_time::date first(1, month, year);
    system::date_time::date last(31, month, year);
    if (day < 1 || day > last.day()) {
        offset = begin + 8;
        return false;
    }
    value = system::date_time::date(day, month, year);
    return true;
}

inline bool read_time(const std::string& text, unsigned long& offset,
                      system::date_time::time& value) {
    unsigned parts[4] = {0, 0, 0, 0};
    const unsigned limits[3] = {24, 60, 60};
    for (int i = 0; i < 3; ++i) {
        if (i > 0 && !read_byte(text, offset, ':'))
            return i == 2 && ((value = system::date_time::time(parts[0], parts[1], 0, 0)), true);
        const unsigned long begin = offset;
        if (!read_digits(text, offset, 2, parts[i]))
            return false;
        if (parts[i] >= limits[i]) {
            offset = begin;
            return false;
        }
    }
    if (offset < text.size() && (text[offset] == '.' || text[offset] == ',')) {
        unsigned long digit = offset + 1;
        unsigned weight = 100;
        for (; digit < text.size() && text[digit] >= '0' && text[digit] <= '9'; ++digit) {
            parts[3] += static_cast<unsigned>(text[digit] - '0') * weight;
            weight /= 10;
        }
        if (digit == offset + 1) {
            offset = digit;
            return false;
        }
        offset = digit;
    }
    value = system::date_time::time(parts[0], parts[1], parts[2], parts[3]);
    return true;
}

template <typename Value>
parsed<Value> finish(const std::string& text, unsigned long offset, bool is_read,
                     const Value& value) {
    const bool is_valid = is_read && offset == text.size();
    return {is_valid ? value : Value(), is_valid, offset};
}

}  // namespace _private

/// The days from `first` to `last`, negative if `last` is earlier. A 31 February counts as the last
/// day of its February, unlike in `pJulian_day_number`. Neither date may be default-constructed.
inline long days_between(const system::date_time::date& first,
                         const system::date_time::date& last) {
    return _private::days_since_epoch(last.year(), last.month(), last.day()) -
           _private::days_since_epoch(first.year(), first.month(), first.day());
}

/// @name Days before and after
///
/// The date that many days later or earlier, and the days from `b` to `a`: `(b + 3) - b` is 3 days.
/// They count as `days_between` does, with the same conditions; `date::operator+=` counts the
/// stored day. No result may be before the year 1.
/// @{
inline system::date_time::date operator+(const system::date_time::date& a,
                                         const system::date_time::date_duration& days) {
    return _private::date_of(_private::days_since_epoch(a.year(), a.month(), a.day()) +
                             days.days());
}
inline system::date_time::date operator-(const system::date_time::date& a,
                                         const system::date_time::date_duration& days) {
    return _private::date_of(_private::days_since_epoch(a.year(), a.month(), a.day()) -
                             days.days());
}
inline system::date_time::date_duration operator-(const system::date_time::date& a,
                                                  const system::date_time::date& b) {
    return system::date_time::date_duration(static_cast<int>(days_between(b, a)));
}
/// @}

/// @name ISO 8601
///
/// "2026-02-03", "09:05:07" or "09:05:07.250" if there are milliseconds, and both with a "T"
/// between them. Years above 9999 are written with all their digits, which `date_from_iso` does not
/// read.
/// @{
inline strings::ustring8 to_iso(const system::date_time::date& value) {
    char text[32];
    std::snprintf(text, sizeof text, "%04u-%02u-%02u", value.year(), value.month(), value.day());
    return text;
}
inline strings::ustring8 to_iso(const system::date_time::time& value) {
    char text[32];
    const int length = std::snprintf(text, sizeof text, "%02u:%02u:%02u", value.hour(),
                                     value.minute(), value.second());
    if (value.millisecond() != 0)
        std::snprintf(text + length, sizeof text - static_cast<std::size_t>(length), ".%03u",
                      value.millisecond());
    return text;
}
inline strings::ustring8 to_iso(const system::date_time::date_time_t& value) {
    return to_iso(value.date()) + "T" + to_iso(value.time());
}
/// @}

/// @name From ISO 8601
///
/// The extended forms: "2026-02-03"; "09:05", "09:05:07" and "09:05:07.25", of whose fraction
/// milliseconds are kept; a date, "T" or a space, and a time. The day must exist in its month. Time
/// zones and week dates are not read. Nothing may follow; nothing is raised.
/// @{
inline parsed<system::date_time::date> date_from_iso(const std::string& text) {
    unsigned long offset = 0;
    system::date_time::date value;
    const bool is_read = _private::read_date(text, offset, value);
    return _private::finish(text, offset, is_read, value);
}
inline parsed<system::date_time::time> time_from_iso(const std::string& text) {
    unsigned long offset = 0;
    system::date_time::time value;
    const bool is_read = _private::read_time(text, offset, value);
    return _private::finish(text, offset, is_read, value);
}
inline parsed<system::date_time::date_time_t> date_time_from_iso(const std::string& text) {
    unsigned long offset = 0;
    system::date_time::date date;
    system::date_time::time time;
    const bool is_read =
        _private::read_date(text, offset, date) &&
        (_private::read_byte(text, offset, 'T') || _private::read_byte(text, offset, ' ')) &&
        _private::read_time(text, offset, time);
    return _private::finish(text, offset, is_read, system::date_time::date_time_t(date, time));
}
/// @}

/// @name std::chrono
///
/// A `date_time_t` is in no time zone; these functions take it as UTC. Fractions of a millisecond
/// are cut toward the past. A time point counts nanoseconds in 64 bits: `to_time_point` raises
/// `exceptions::out_of_range` for a date that it cannot hold, before 1677-09-23 or after
/// 2262-04-10.
/// @{
inline std::chrono::system_clock::time_point
to_time_point(const system::date_time::date_time_t& value) {
    using clock = std::chrono::system_clock;
    const long days = _private::days_since_epoch(value.year(), value.month(), value.day());
    const long limit = static_cast<long>(
        std::chrono::duration_cast<std::chrono::hours>(clock::duration::max()).count() / 24 - 1);
    if (days < -limit || days > limit)
        throw exceptions::out_of_range("date does not fit a time point", 1, "extras/dates",
                                       "to_time_point");
    const std::chrono::milliseconds span =
        std::chrono::hours(days * 24 + value.hour()) + std::chrono::minutes(value.minute()) +
        std::chrono::seconds(value.second()) + std::chrono::milliseconds(value.millisecond());
    return clock::time_point(std::chrono::duration_cast<clock::duration>(span));
}
inline system::date_time::date_time_t
from_time_point(const std::chrono::system_clock::time_point& point) {
    const long day = 86400000;
    const long total =
        static_cast<long>(
            std::chrono::duration_cast<std::chrono::milliseconds>(point.time_since_epoch())
                .count()) -
        (point.time_since_epoch() % std::chrono::milliseconds(1) < std::chrono::nanoseconds(0));
    const long days = total / day - (total % day < 0);
    const long rest = total - days * day;
    return system::date_time::date_time_t(
        _private::date_of(days), system::date_time::time(static_cast<unsigned>(rest / 3600000),
                                                         static_cast<unsigned>(rest / 60000 % 60),
                                                         static_cast<unsigned>(rest / 1000 % 60),
                                                         static_cast<unsigned>(rest % 1000)));
}
/// @}

/// Appends the parts of a date as the arguments NAME.year, NAME.month and NAME.day, for a message
/// that writes them in the order of its language:
///
///     <arg name="due.day" type="int"/>.<arg name="due.month" type="int"/>.
///
/// Returns false, and appends what is missing, if the list has one of the names already.
inline bool push_date(generic::varg_list& list, const strings::ustring8& name,
                      const system::date_time::date& value) {
    const bool year = list.push_back(name + ".year", value.year());
    const bool month = list.push_back(name + ".month", value.month());
    const bool day = list.push_back(name + ".day", value.day());
    return year && month && day;
}

}  // namespace extras
}  // namespace TOVA_2_18
