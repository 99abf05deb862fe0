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
const unsigned days_in_100_years = 36524;
const unsigned days_in_4_years = 1461;
const unsigned days_in_a_year = 365;

// A year that begins in March consists of pairs of months, numbered from 0, of 61 days each: 31 and
// 30 days, or 30 and 31 in the pairs 3 (September and October) and 4 (November and December). July
// and August have 62 days together, so one day is added from pair 3 on. The last pair (January and
// February) is cut short by the end of the year.
const unsigned days_in_a_pair = 61;
const unsigned day_of_pair_3 = 184;

unsigned days_in_first_month(unsigned pair) {
    return pair == 3 || pair == 4 ? 30 : 31;
}

unsigned days_before(unsigned pair) {
    return pair * days_in_a_pair + (pair >= 3 ? 1 : 0);
}

}  // namespace

date::date() : m_year(0), m_month(0), m_day(0) {}

date::date(const date& source)
    : m_year(source.m_year), m_month(source.m_month), m_day(source.m_day) {}

date::date(unsigned int new_day, unsigned int new_month, unsigned int new_year)
    : m_year(0), m_month(0), m_day(0) {
    day(new_day);
    month(new_month);
    year(new_year);
}

date date::local_date() {
    const std::time_t now = ::time(nullptr);
    return detail::date_of(*::localtime(&now));
}

date date::UTC_date() {
    const std::time_t now = ::time(nullptr);
    return detail::date_of(*::gmtime(&now));
}

unsigned int date::year() const {
    return m_year;
}

unsigned int date::month() const {
    return m_month;
}

unsigned int date::day() const {
    return get_days();
}

unsigned int date::get_days() const {
    unsigned last_day;
    switch (m_month) {
    case 1:
    case 3:
    case 5:
    case 7:
    case 8:
    case 10:
    case 12:
        return m_day;
    case 2:
        last_day = is_leap_year() ? 29 : 28;
        break;
    case 4:
    case 6:
    case 9:
    case 11:
        last_day = 30;
        break;
    default:
        return 0;
    }
    return m_day < last_day ? m_day : last_day;
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
    pJulian_day_number(pJulian_day_number() + static_cast<unsigned>(duration.days()));
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
    unsigned years = m_year;
    unsigned from_march = m_month - 3;
    if (m_month < 3) {
        from_march += 12;
        years -= 1;  // wraps to the largest year before year 0
    }
    const unsigned pair = from_march / 2;
    const unsigned first_month = from_march % 2 != 0 ? days_in_first_month(pair) : 0;
    return years * days_in_a_year + years / 4 - (years / 100 - years / 400) + days_before(pair) +
           first_month + m_day;
}

// Contract: the counts of centuries and of single years are not limited to 3. The last day of a
// cycle of 4 or 400 years, 29 February, is therefore read as 1 March, the first day of another
// year.
void date::pJulian_day_number(unsigned int number) {
    unsigned rest = number - 1;
    unsigned years = rest / days_in_400_years * 400;
    rest %= days_in_400_years;
    years += rest / days_in_100_years * 100;
    rest %= days_in_100_years;
    years += rest / days_in_4_years * 4;
    rest %= days_in_4_years;
    years += rest / days_in_a_year;
    const unsigned day_of_year = rest % days_in_a_year + 1;

    const unsigned added_day = day_of_year >= day_of_pair_3 ? 1 : 0;
    const unsigned pair = (day_of_year - added_day - 1) / days_in_a_pair;
    const unsigned day_of_pair = day_of_year - days_before(pair);
    const unsigned first_month = days_in_first_month(pair);
    const bool in_second = day_of_pair > first_month;

    m_month = (in_second ? 1 : 0) + 2 * pair + 3;
    if (m_month > 12) {
        m_month -= 12;
        years += 1;
    }
    m_year = years;
    m_day = in_second ? day_of_pair - first_month : day_of_pair;
}

}  // namespace date_time
}  // namespace system
}  // namespace TOVA_2_18
