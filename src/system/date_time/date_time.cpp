// A date and a time together. Accessors forward to the part that has the field; only sums and
// differences with a `time_duration` have rules of their own.
#include <tova/system/date_time/date_time.hpp>

#include "system/date_time/broken_down.hpp"

#include <ctime>

namespace TOVA_2_18 {
namespace system {
namespace date_time {

namespace {

const long hours_a_day = 24;

bool spans_a_day(const time_duration& duration) {
    const long hours = duration.total_complete_hours();
    return hours >= hours_a_day || hours <= -hours_a_day;
}

// The step for durations of a day or more, before the date moves.
//
// Contract: the hours left over after whole days are stored as the day of the month, and then used
// as the number of days to move by. If they are 0 or negative, the setter raises before anything
// has changed.
date_duration set_day_to_hours(date_time_t& value, const time_duration& duration) {
    const long hours = duration.total_complete_hours() % hours_a_day;
    return date_duration(static_cast<int>(value.day(static_cast<unsigned>(hours))));
}

date_time_t read_now(detail::break_down* zone) {
    const detail::moment now = detail::read_clock(zone);
    return date_time_t(detail::date_of(now.fields), detail::time_of(now));
}

}  // namespace

date_time_t::date_time_t() {}

date_time_t::date_time_t(const date_time_t& source)
    : m_date(source.m_date), m_time(source.m_time) {}

date_time_t::date_time_t(const date_time::date& date, const date_time::time& time)
    : m_date(date), m_time(time) {}

date_time_t date_time_t::local_date_time() {
    return read_now(::localtime);
}

date_time_t date_time_t::UTC_date_time() {
    return read_now(::gmtime);
}

unsigned int date_time_t::year() const {
    return m_date.year();
}

unsigned int date_time_t::month() const {
    return m_date.month();
}

unsigned int date_time_t::day() const {
    return m_date.day();
}

unsigned int date_time_t::year(unsigned int value) {
    return m_date.year(value);
}

unsigned int date_time_t::month(unsigned int value) {
    return m_date.month(value);
}

unsigned int date_time_t::day(unsigned int value) {
    return m_date.day(value);
}

bool date_time_t::is_leap_year() const {
    return m_date.is_leap_year();
}

bool date_time_t::is_day_constrained() const {
    return m_date.is_day_constrained();
}

unsigned int date_time_t::hour() const {
    return m_time.hour();
}

unsigned int date_time_t::minute() const {
    return m_time.minute();
}

unsigned int date_time_t::second() const {
    return m_time.second();
}

unsigned int date_time_t::millisecond() const {
    return m_time.millisecond();
}

unsigned int date_time_t::hour(unsigned int value) {
    return m_time.hour(value);
}

unsigned int date_time_t::minute(unsigned int value) {
    return m_time.minute(value);
}

unsigned int date_time_t::second(unsigned int value) {
    return m_time.second(value);
}

unsigned int date_time_t::millisecond(unsigned int value) {
    return m_time.millisecond(value);
}

const date_time::date& date_time_t::date() const {
    return m_date;
}

const date_time::time& date_time_t::time() const {
    return m_time;
}

date_time_t& date_time_t::assign(const date_time::date& date) {
    m_date = date;
    return *this;
}

date_time_t& date_time_t::operator=(const date_time::date& date) {
    return assign(date);
}

date_time_t& date_time_t::assign(const date_time::time& time) {
    m_time = time;
    return *this;
}

date_time_t& date_time_t::operator=(const date_time::time& time) {
    return assign(time);
}

date_time_t& date_time_t::assign(const date_time::date& date, const date_time::time& time) {
    m_date = date;
    m_time = time;
    return *this;
}

date_time_t& date_time_t::assign(const date_time_t& source) {
    return assign(source.m_date, source.m_time);
}

date_time_t& date_time_t::operator=(const date_time_t& source) {
    return assign(source);
}

// Contract: a `day_duration` moves a `date`, never a date with a time. None of the four forms does
// anything.
date_time_t& date_time_t::operator+=(const date_duration& duration) {
    return plus_assign(duration);
}

date_time_t& date_time_t::plus_assign(const date_duration&) {
    return *this;
}

date_time_t& date_time_t::operator-=(const date_duration& duration) {
    return minus_assign(duration);
}

date_time_t& date_time_t::minus_assign(const date_duration&) {
    return *this;
}

date_time_t& date_time_t::operator+=(const time_duration& duration) {
    return plus_assign(duration);
}

date_time_t& date_time_t::plus_assign(const time_duration& duration) {
    // For less than a day the date isn't touched: a move by 0 days would turn 31 February into a
    // real date.
    if (spans_a_day(duration))
        m_date += set_day_to_hours(*this, duration);
    m_time += duration;
    return *this;
}

date_time_t& date_time_t::operator-=(const time_duration& duration) {
    return minus_assign(duration);
}

// Contract: the hours are not negated, so a negative duration of a day or more raises here, just as
// in a sum.
date_time_t& date_time_t::minus_assign(const time_duration& duration) {
    if (spans_a_day(duration))
        m_date -= set_day_to_hours(*this, duration);
    m_time -= duration;
    return *this;
}

}  // namespace date_time
}  // namespace system
}  // namespace TOVA_2_18
