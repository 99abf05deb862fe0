#include <tova/system/date_time/date_time.hpp>

#include <ctime>

#include <sys/time.h>

#include "system/date_time/broken_down.hpp"

namespace TOVA_2_18 {
namespace system {
namespace date_time {

namespace {

const long hours_a_day = 24;

bool spans_a_day(long hours) {
    return hours >= hours_a_day || hours <= -hours_a_day;
}

}  // namespace

date_time_t::date_time_t() {}

date_time_t::date_time_t(const date_time_t& source)
    : m_date(source.m_date), m_time(source.m_time) {}

date_time_t::date_time_t(const date_time::date& date, const date_time::time& time)
    : m_date(date), m_time(time) {}

date_time_t date_time_t::local_date_time() {
    timeval now;
    ::gettimeofday(&now, nullptr);
    const std::tm& moment = *::localtime(&now.tv_sec);
    return date_time_t(detail::date_of(moment), detail::time_of(moment, now.tv_usec));
}

date_time_t date_time_t::UTC_date_time() {
    timeval now;
    ::gettimeofday(&now, nullptr);
    const std::tm& moment = *::gmtime(&now.tv_sec);
    return date_time_t(detail::date_of(moment), detail::time_of(moment, now.tv_usec));
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

// Contract: days move a date alone, and leave a date with a time as it is. All four forms do.
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

// Contract: it is the hours beyond whole days that are set as the day of the month and then moved
// by. A remainder of 0 or below is no day and raises, before anything is changed.
date_time_t& date_time_t::plus_assign(const time_duration& duration) {
    const long hours = duration.total_complete_hours();
    if (spans_a_day(hours)) {
        const unsigned days = day(static_cast<unsigned>(hours % hours_a_day));
        m_date += date_duration(static_cast<int>(days));
    }
    m_time += duration;
    return *this;
}

date_time_t& date_time_t::operator-=(const time_duration& duration) {
    return minus_assign(duration);
}

// Contract: the hours are not negated here, so that a negative duration of a day or more raises as
// it does in the sum.
date_time_t& date_time_t::minus_assign(const time_duration& duration) {
    const long hours = duration.total_complete_hours();
    if (spans_a_day(hours)) {
        const unsigned days = day(static_cast<unsigned>(hours % hours_a_day));
        m_date -= date_duration(static_cast<int>(days));
    }
    m_time -= duration;
    return *this;
}

}  // namespace date_time
}  // namespace system
}  // namespace TOVA_2_18
