// Each duration is one signed number. Operators forward to the named operations, and these to two
// templates for sums and differences, which wrap. Nothing here fails.
#include <tova/system/date_time/duration.hpp>

#include <type_traits>

namespace TOVA_2_18 {
namespace system {
namespace date_time {

namespace {

// Milliseconds.
const long an_hour = 3600000;
const long a_minute = 60000;
const long a_second = 1000;

// Sums and differences wrap, which only unsigned arithmetic is defined to do.
template <typename Number>
Number wrapping_sum(Number left, Number right) {
    typedef typename std::make_unsigned<Number>::type bits;
    return static_cast<Number>(static_cast<bits>(left) + static_cast<bits>(right));
}

template <typename Number>
Number wrapping_difference(Number left, Number right) {
    typedef typename std::make_unsigned<Number>::type bits;
    return static_cast<Number>(static_cast<bits>(left) - static_cast<bits>(right));
}

// Contract: hours, minutes and seconds are added in 32 bits. To set a larger total, pass it as
// milliseconds, with zeros for the others.
int fields_in_milliseconds(int hours, int minutes, int seconds) {
    return static_cast<int>(static_cast<unsigned>(hours) * 3600000u +
                            static_cast<unsigned>(minutes) * 60000u +
                            static_cast<unsigned>(seconds) * 1000u);
}

}  // namespace

date_duration::date_duration() : m_days(0) {}

date_duration::date_duration(const date_duration& source) : m_days(source.m_days) {}

date_duration::date_duration(int days) : m_days(days) {}

date_duration::~date_duration() TOVA_NOTHROW {}

int date_duration::days() const {
    return m_days;
}

int date_duration::days(int value) {
    return m_days = value;
}

date_duration& date_duration::operator=(const date_duration& source) {
    return assign(source);
}

date_duration& date_duration::assign(const date_duration& source) {
    m_days = source.m_days;
    return *this;
}

date_duration& date_duration::operator+=(const date_duration& duration) {
    return plus_assign(duration);
}

date_duration& date_duration::plus_assign(const date_duration& duration) {
    m_days = wrapping_sum(m_days, duration.m_days);
    return *this;
}

date_duration& date_duration::operator-=(const date_duration& duration) {
    return minus_assign(duration);
}

date_duration& date_duration::minus_assign(const date_duration& duration) {
    m_days = wrapping_difference(m_days, duration.m_days);
    return *this;
}

time_duration::time_duration() : m_milliseconds(0) {}

time_duration::time_duration(const time_duration& source) : m_milliseconds(source.m_milliseconds) {}

time_duration::time_duration(int hours, int minutes, int seconds, long milliseconds)
    : m_milliseconds(wrapping_sum(
          static_cast<long>(fields_in_milliseconds(hours, minutes, seconds)), milliseconds)) {}

// The parts. Integer division truncates toward zero, so all parts have the sign of the whole.
int time_duration::hour() const {
    return static_cast<int>(m_milliseconds / an_hour);
}

int time_duration::minute() const {
    return static_cast<int>(m_milliseconds / a_minute % 60);
}

int time_duration::second() const {
    return static_cast<int>(m_milliseconds / a_second % 60);
}

int time_duration::millisecond() const {
    return static_cast<int>(m_milliseconds % a_second);
}

// A single division each: dividing in steps would round more than once.
double time_duration::total_hours() const {
    return static_cast<double>(m_milliseconds) / 3600000.0;
}

double time_duration::total_minutes() const {
    return static_cast<double>(m_milliseconds) / 60000.0;
}

double time_duration::total_seconds() const {
    return static_cast<double>(m_milliseconds) / 1000.0;
}

long time_duration::total_complete_hours() const {
    return m_milliseconds / an_hour;
}

long time_duration::total_complete_minutes() const {
    return m_milliseconds / a_minute;
}

long time_duration::total_complete_seconds() const {
    return m_milliseconds / a_second;
}

long time_duration::total_milliseconds() const {
    return m_milliseconds;
}

bool time_duration::is_negative() const {
    return m_milliseconds < 0;
}

time_duration& time_duration::operator=(const time_duration& source) {
    return assign(source);
}

time_duration& time_duration::assign(const time_duration& source) {
    m_milliseconds = source.m_milliseconds;
    return *this;
}

time_duration& time_duration::operator+=(const time_duration& duration) {
    return plus_assign(duration);
}

time_duration& time_duration::plus_assign(const time_duration& duration) {
    m_milliseconds = wrapping_sum(m_milliseconds, duration.m_milliseconds);
    return *this;
}

time_duration& time_duration::operator-=(const time_duration& duration) {
    return minus_assign(duration);
}

time_duration& time_duration::minus_assign(const time_duration& duration) {
    m_milliseconds = wrapping_difference(m_milliseconds, duration.m_milliseconds);
    return *this;
}

date_duration plus(const date_duration& left, const date_duration& right) {
    return date_duration(left).plus_assign(right);
}

date_duration minus(const date_duration& left, const date_duration& right) {
    return date_duration(left).minus_assign(right);
}

date_duration operator+(const date_duration& left, const date_duration& right) {
    return plus(left, right);
}

date_duration operator-(const date_duration& left, const date_duration& right) {
    return minus(left, right);
}

time_duration plus(const time_duration& left, const time_duration& right) {
    return time_duration(left).plus_assign(right);
}

time_duration minus(const time_duration& left, const time_duration& right) {
    return time_duration(left).minus_assign(right);
}

time_duration operator+(const time_duration& left, const time_duration& right) {
    return plus(left, right);
}

time_duration operator-(const time_duration& left, const time_duration& right) {
    return minus(left, right);
}

}  // namespace date_time
}  // namespace system
}  // namespace TOVA_2_18
