// What the C library makes of a moment.
#pragma once

#include <ctime>

#include <tova/system/date_time/date.hpp>
#include <tova/system/date_time/time.hpp>

namespace TOVA_2_18 {
namespace system {
namespace date_time {
namespace detail {

inline date date_of(const std::tm& moment) {
    return date(static_cast<unsigned>(moment.tm_mday), static_cast<unsigned>(moment.tm_mon + 1),
                static_cast<unsigned>(moment.tm_year + 1900));
}

inline time time_of(const std::tm& moment, long microseconds) {
    return time(static_cast<unsigned>(moment.tm_hour), static_cast<unsigned>(moment.tm_min),
                static_cast<unsigned>(moment.tm_sec), static_cast<unsigned>(microseconds / 1000));
}

}  // namespace detail
}  // namespace date_time
}  // namespace system
}  // namespace TOVA_2_18
