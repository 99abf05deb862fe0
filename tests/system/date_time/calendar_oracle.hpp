// A simple calendar of month lengths, to compare the day numbers with.
#pragma once

namespace test_support {

struct calendar_day {
    unsigned year;
    unsigned month;
    unsigned day;

    bool operator==(const calendar_day& other) const {
        return year == other.year && month == other.month && day == other.day;
    }
};

inline bool is_leap(unsigned year) {
    if (year % 400 == 0)
        return true;
    if (year % 100 == 0)
        return false;
    return year % 4 == 0;
}

inline unsigned month_length(unsigned year, unsigned month) {
    static const unsigned lengths[] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
    return month == 2 && is_leap(year) ? 29 : lengths[month - 1];
}

inline calendar_day next_day(calendar_day day) {
    if (++day.day <= month_length(day.year, day.month))
        return day;
    day.day = 1;
    if (++day.month <= 12)
        return day;
    day.month = 1;
    ++day.year;
    return day;
}

// The number of a day, where 1 is 1 March of year 0, computed in 64 bits. The year before year 0 is
// the largest one. Month 0 counts as a December of the year before.
inline unsigned number_of(const calendar_day& day) {
    static const unsigned days_before_month[] = {306, 337, 0,   31,  61,  92,
                                                 122, 153, 184, 214, 245, 275};
    const unsigned year = day.month < 3 ? day.year - 1 : day.year;
    const unsigned month = day.month == 0 ? 12 : day.month;
    const unsigned long leap_days = year / 4UL - year / 100UL + year / 400UL;
    return static_cast<unsigned>(year * 365UL + leap_days + days_before_month[month - 1] + day.day);
}

// The day with a given number, found by stepping through years from March to February, and then
// through months.
inline calendar_day day_with(unsigned number) {
    const unsigned days = number - 1;
    unsigned year = days / 146097 * 400;
    unsigned rest = days % 146097;
    for (unsigned length; rest >= (length = is_leap(year + 1) ? 366 : 365); ++year)
        rest -= length;
    calendar_day day = {year, 3, 1};
    for (unsigned length; rest >= (length = month_length(day.year, day.month));) {
        rest -= length;
        if (++day.month > 12) {
            day.month = 1;
            ++day.year;
        }
    }
    day.day += rest;
    return day;
}

// The date that is set from a number: never 29 February.
inline calendar_day reached_by(unsigned number) {
    const calendar_day day = day_with(number);
    return day.month == 2 && day.day == 29 ? calendar_day{day.year, 3, 1} : day;
}

}  // namespace test_support
