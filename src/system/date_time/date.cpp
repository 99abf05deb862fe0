// A date is three fields that the setters check one by one, and a day number for arithmetic:
//
// - `day`, `month` and `year` store what they accept. The day is not checked against the month
//   here; `get_days` limits it when it is read.
// - `pJulian_day_number()` counts days from 1 March of year 0. A year begins in March, so the leap
//   day is its last day and no month depends on it.
// - `pJulian_day_number(n)` does the reverse. Sums and differences convert to the number and back.
#include <tova/system/date_time/date.hpp>

#include "system/date_time/broken_down.hpp"
#include "system/date_time/range.hpp"

#include <ctime>

namespace TOVA_2_18 {
namespace system {
namespace date_time {

namespace {

// Published with the exceptions: they stay the same when the code moves.
const char source_path[] = "system/date_time/date";
const unsigned month_line = 58;
const unsigned day_line = 68;
const unsigned minus_assign_line = 146;

const unsigned days_in_400_years = 146097;
const unsigned days_in_a_year = 365;

// The days of a year that begins in March, before the month of the index. January and February end
// the year before; 0 is the month of a default date and counts as December.
const unsigned short days_before[] = {275, 306, 337, 0, 31, 61, 92, 122, 153, 184, 214, 245, 275};

// The last day of each month in a common year, and 0 for the month of a default date. A table has
// no branches, which would be hard to predict.
const unsigned char last_days[] = {0, 31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};

// Each division is a multiplication whose product contains both the quotient and the remainder:
//
//   days to centuries      4 * day + 3 in units of 146097, the days of 400 years
//   days to years          4 * day + 3 in units of 1461, the days of 4 years, as a fraction of 2^32
//                          2939745 = 2^32 / 1461, rounded up; exact for the days of a century
//   days to months         a straight line through the lengths of the months, times 2^16
//                          2141 = 2^16 * 5 / 153, about; exact for the days of a year
//
// Contract: 29 February is read as 1 March of the same calendar year, which is the first day of the
// next year here. 29 February is the last day of a cycle of 4 or 400 years.
inline void store_fields(unsigned number, unsigned& year, unsigned& month, unsigned& day) {
    const unsigned long quarters = 4UL * (number - 1) + 3;
    const unsigned long centuries = quarters / days_in_400_years;
    const unsigned long day_of_century = quarters % days_in_400_years / 4;

    const unsigned long scaled = 2939745UL * (4 * day_of_century + 3);
    unsigned years = static_cast<unsigned>(100 * centuries + (scaled >> 32));
    unsigned day_of_year = static_cast<unsigned>(scaled) / 2939745 / 4;
    if (day_of_year == days_in_a_year) {
        day_of_year = 0;
        ++years;
    }

    const unsigned months = 2141 * day_of_year + 197913;
    const unsigned month_from_march = months >> 16;
    // 1 for January and February, which are the months 13 and 14 of the year before. Not compared,
    // because that branch would be hard to predict.
    const unsigned in_next_year = (month_from_march + 3) >> 4;
    year = years + in_next_year;
    month = month_from_march - 12 * in_next_year;
    day = (months & 0xffff) / 2141 + 1;
}

}  // namespace

date::date() : m_year(0), m_month(0), m_day(0) {}

date::date(const date& source)
    : m_year(source.m_year), m_month(source.m_month), m_day(source.m_day) {}

date::date(unsigned int new_day, unsigned int new_month, unsigned int new_year) : m_year(new_year) {
    day(new_day);
    month(new_month);
}

date date::local_date() {
    const std::time_t now = ::time(nullptr);
    // Contract: the buffer of the C library is used, by one thread at a time.
    return detail::date_of(*::localtime(&now));  // NOLINT(concurrency-mt-unsafe)
}

date date::UTC_date() {
    const std::time_t now = ::time(nullptr);
    return detail::date_of(*::gmtime(&now));  // NOLINT(concurrency-mt-unsafe): as above
}

unsigned int date::year() const {
    return m_year;
}

unsigned int date::month() const {
    return m_month;
}

unsigned int date::get_days() const {
    return day();
}

unsigned int date::day() const {
    const unsigned last_day = last_days[m_month];
    if (m_day <= last_day)
        return m_day;
    return m_month == 2 && is_leap_year() ? 29 : last_day;
}

unsigned int date::day(unsigned int value) {
    detail::require(is_valid_day(value), "day value out of valid range", day_line, source_path,
                    "day");
    return m_day = value;
}

unsigned int date::month(unsigned int value) {
    detail::require(is_valid_month(value), "month value out of valid range", month_line,
                    source_path, "month");
    return m_month = value;
}

unsigned int date::year(unsigned int value) {
    return m_year = value;
}

bool date::is_valid_day(unsigned int value) const {
    return value >= 1 && value <= 31;
}

bool date::is_valid_month(unsigned int value) const {
    return value >= 1 && value <= 12;
}

bool date::is_leap_year() const {
    return m_year % 4 == 0 && (m_year % 100 != 0 || m_year % 400 == 0);
}

bool date::is_day_constrained() const {
    return get_days() != m_day;
}

date& date::operator=(const date& source) {
    return assign(source);
}

date& date::assign(const date& source) {
    m_year = source.m_year;
    m_month = source.m_month;
    m_day = source.m_day;
    return *this;
}

date& date::operator+=(const date_duration& duration) {
    return plus_assign(duration);
}

// Contract: the date is always converted to its number and back, even for a move by 0 days. That
// turns a stored 31 February into a real date, and 29 February into 1 March.
date& date::plus_assign(const date_duration& duration) {
    // Read first: no part of the number has to be kept during the call.
    const unsigned days = static_cast<unsigned>(duration.days());
    store_fields(pJulian_day_number() + days, m_year, m_month, m_day);
    return *this;
}

date& date::operator-=(const date_duration& duration) {
    return minus_assign(duration);
}

// Contract: the number is compared as a signed value. From September 5879610 on, numbers are
// negative in this comparison, and every move back by 0 days or more raises.
date& date::minus_assign(const date_duration& duration) {
    const unsigned number = pJulian_day_number();
    detail::require(static_cast<int>(number) > duration.days(), "date value out of valid range",
                    minus_assign_line, source_path, "minus_assign");
    pJulian_day_number(number - static_cast<unsigned>(duration.days()));
    return *this;
}

// All arithmetic is unsigned and wraps: a default date, and January and February of year 0, come
// before day 1, so their numbers wrap around modulo 2^32.
unsigned int date::pJulian_day_number() const {
    // In January and February of year 0, this wraps to the largest year.
    const unsigned years = m_year - (m_month < 3 ? 1 : 0);
    const unsigned centuries = years / 100;
    return years * days_in_a_year + years / 4 - (centuries - centuries / 4) + days_before[m_month] +
           m_day;
}

void date::pJulian_day_number(unsigned int number) {
    store_fields(number, m_year, m_month, m_day);
}

}  // namespace date_time
}  // namespace system
}  // namespace TOVA_2_18
