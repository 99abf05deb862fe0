/// @file
/// Reads the system clock and converts the C library's broken-down time to dates and times.
///
/// Threads: `localtime` and `gmtime` keep their result in a static buffer of the C library, so only
/// one thread at a time may read the clock.
#pragma once

#include <tova/system/date_time/date.hpp>
#include <tova/system/date_time/time.hpp>

#include <ctime>

#include <sys/time.h>

namespace TOVA_2_18 {
namespace system {
namespace date_time {
namespace detail {

// `localtime` or `gmtime`: determines whether a reading is local or UTC.
typedef std::tm* break_down(const std::time_t* seconds);

// One reading of the clock.
struct moment {
    std::tm fields;
    long microseconds;  // within the second, below 1000000
};

inline moment read_clock(break_down* zone) {
    timeval now;
    ::gettimeofday(&now, nullptr);
    return moment{*zone(&now.tv_sec), now.tv_usec};
}

inline date date_of(const std::tm& fields) {
    return date(static_cast<unsigned>(fields.tm_mday), static_cast<unsigned>(fields.tm_mon + 1),
                static_cast<unsigned>(fields.tm_year + 1900));
}

inline time time_of(const moment& now) {
    return time(static_cast<unsigned>(now.fields.tm_hour), static_cast<unsigned>(now.fields.tm_min),
                static_cast<unsigned>(now.fields.tm_sec),
                static_cast<unsigned>(now.microseconds / 1000));
}

}  // namespace detail
}  // namespace date_time
}  // namespace system
}  // namespace TOVA_2_18
