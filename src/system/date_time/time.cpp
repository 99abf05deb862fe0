// A time is four fields that the setters check one by one. Arithmetic converts the fields to a
// duration, adds in milliseconds, and stores the result through the setters, which is where a move
// can raise.
#include <tova/system/date_time/time.hpp>

#include "system/date_time/broken_down.hpp"
#include "system/date_time/range.hpp"

#include <ctime>

namespace TOVA_2_18 {
namespace system {
namespace date_time {

namespace {

// Published with the exceptions: they stay the same when the code moves.
const char source_path[] = "system/date_time/time";
const unsigned hour_line = 51;
const unsigned minute_line = 61;
const unsigned second_line = 71;
const unsigned millisecond_line = 81;

const long a_day = 86400000;  // milliseconds

}  // namespace

time::time() : m_hour(0), m_minute(0), m_second(0), m_millisecond(0) {}

time::time(const time& source)
    : m_hour(source.m_hour), m_minute(source.m_minute), m_second(source.m_second),
      m_millisecond(source.m_millisecond) {}

time::time(unsigned int new_hour, unsigned int new_minute, unsigned int new_second,
           unsigned int new_millisecond)
    : m_hour(0), m_minute(0), m_second(0), m_millisecond(0) {
    hour(new_hour);
    minute(new_minute);
    second(new_second);
    millisecond(new_millisecond);
}

time time::local_time() {
    return detail::time_of(detail::read_clock(::localtime));
}

time time::UTC_time() {
    return detail::time_of(detail::read_clock(::gmtime));
}

unsigned int time::hour() const {
    return m_hour;
}

unsigned int time::minute() const {
    return m_minute;
}

unsigned int time::second() const {
    return m_second;
}

unsigned int time::millisecond() const {
    return m_millisecond;
}

// The setters take unsigned values, but the checks are signed. A negative part of a duration
// arrives here as a large unsigned number; the cast makes it negative again, and no check accepts
// that.
unsigned int time::hour(unsigned int value) {
    detail::require(is_valid_hour(static_cast<int>(value)), "Hour value out of valid range",
                    hour_line, source_path, "hour");
    return m_hour = value;
}

unsigned int time::minute(unsigned int value) {
    detail::require(is_valid_minute(static_cast<int>(value)), "Minute value out of valid range",
                    minute_line, source_path, "minute");
    return m_minute = value;
}

unsigned int time::second(unsigned int value) {
    detail::require(is_valid_second(static_cast<int>(value)), "Second value out of valid range",
                    second_line, source_path, "second");
    return m_second = value;
}

unsigned int time::millisecond(unsigned int value) {
    detail::require(is_valid_millisecond(static_cast<int>(value)),
                    "Millisecond value out of valid range", millisecond_line, source_path,
                    "millisecond");
    return m_millisecond = value;
}

bool time::is_valid_hour(int value) const {
    return value >= 0 && value < 24;
}

bool time::is_valid_minute(int value) const {
    return value >= 0 && value < 60;
}

bool time::is_valid_second(int value) const {
    return value >= 0 && value < 60;
}

bool time::is_valid_millisecond(int value) const {
    return value >= 0 && value < 1000;
}

time& time::operator=(const time& source) {
    return assign(source);
}

time& time::assign(const time& source) {
    m_hour = source.m_hour;
    m_minute = source.m_minute;
    m_second = source.m_second;
    m_millisecond = source.m_millisecond;
    return *this;
}

time& time::operator+=(const time_duration& duration) {
    return plus_assign(duration);
}

// Contract: one day is added before the remainder is taken, and the remainder has the sign of its
// dividend. If a part is negative, its setter raises after the fields before it have been set.
time& time::plus_assign(const time_duration& duration) {
    const time_duration now(static_cast<int>(m_hour), static_cast<int>(m_minute),
                            static_cast<int>(m_second), static_cast<long>(m_millisecond));
    // Durations of any length are added; their sums wrap at 64 bits.
    const time_duration moved = now + duration + time_duration(0, 0, 0, a_day);
    const time_duration rest(0, 0, 0, moved.total_milliseconds() % a_day);
    hour(static_cast<unsigned>(rest.hour()));
    minute(static_cast<unsigned>(rest.minute()));
    second(static_cast<unsigned>(rest.second()));
    millisecond(static_cast<unsigned>(rest.millisecond()));
    return *this;
}

time& time::operator-=(const time_duration& duration) {
    return minus_assign(duration);
}

time& time::minus_assign(const time_duration& duration) {
    return plus_assign(time_duration() - duration);
}

// Field by field, so that the differences are small numbers of either sign.
time_duration minus(const time& left, const time& right) {
    return time_duration(static_cast<int>(left.hour() - right.hour()),
                         static_cast<int>(left.minute() - right.minute()),
                         static_cast<int>(left.second() - right.second()),
                         static_cast<int>(left.millisecond() - right.millisecond()));
}

time_duration operator-(const time& left, const time& right) {
    return minus(left, right);
}

time plus(const time& left, const time_duration& right) {
    return time(left).plus_assign(right);
}

time plus(const time_duration& left, const time& right) {
    return time(right).plus_assign(left);
}

time minus(const time& left, const time_duration& right) {
    return time(left).minus_assign(right);
}

time operator+(const time& left, const time_duration& right) {
    return plus(left, right);
}

time operator+(const time_duration& left, const time& right) {
    return plus(left, right);
}

time operator-(const time& left, const time_duration& right) {
    return minus(left, right);
}

}  // namespace date_time
}  // namespace system
}  // namespace TOVA_2_18
