// Runs the steps that docs/dates.md shows. tests/docs runs its code.
#include <tova/exceptions/exceptions.hpp>
#include <tova/system/date_time/date_time.hpp>

#include "support/guide.hpp"

#include <gtest/gtest.h>

#include <regex>
#include <string>

namespace {

using test_support::guide_blocks;
using test_support::lines_of;
using tova::exceptions::out_of_range;
using tova::system::date_time::date;
using tova::system::date_time::date_duration;
using tova::system::date_time::date_time_t;
using tova::system::date_time::time;
using tova::system::date_time::time_duration;

const char guide[] = "docs/dates.md";

unsigned number(const std::string& digits) {
    return static_cast<unsigned>(std::stoul(digits));
}

date date_of(const std::string& text) {
    std::smatch match;
    if (!std::regex_search(text, match, std::regex("(\\d+)\\.(\\d+)\\.(\\d+)( |$)")))
        throw text;
    return date(number(match[1]), number(match[2]), number(match[3]));
}

time time_of(const std::string& text) {
    std::smatch match;
    if (!std::regex_search(text, match, std::regex("(\\d+):(\\d+):(\\d+)\\.(\\d+)")))
        throw text;
    return time(number(match[1]), number(match[2]), number(match[3]), number(match[4]));
}

std::string shown(const date& value) {
    return std::to_string(value.day()) + "." + std::to_string(value.month()) + "." +
           std::to_string(value.year());
}

std::string shown(const time& value) {
    const auto digits = [](unsigned part, unsigned power) {
        return std::to_string(power + part).substr(1);
    };
    return digits(value.hour(), 100) + ":" + digits(value.minute(), 100) + ":" +
           digits(value.second(), 100) + "." + digits(value.millisecond(), 1000);
}

std::string shown(const date_time_t& value) {
    return shown(value.date()) + " " + shown(value.time());
}

// The result of one step: the new value, or the message of the exception.
template <typename Value, typename Duration>
std::string moved(Value value, const std::string& sign, const Duration& duration) {
    try {
        sign == "+=" ? value += duration : value -= duration;
        return "gives " + shown(value);
    } catch (const out_of_range& raised) {
        return "raises \"" + std::string(raised.get_message()) + "\"";
    }
}

// Runs the left half of a step, "VALUE += COUNT UNIT" or "VALUE" with single spaces, and returns
// the expected right half.
std::string outcome(const std::string& step) {
    std::smatch match;
    if (!std::regex_match(step, match, std::regex("(.*\\d) ([+-]=) (-?\\d+) (\\w+)")))
        return "reads " + shown(date_of(step));
    const std::string value = match[1];
    const std::string sign = match[2];
    const long count = std::stol(match[3]);
    const std::string unit = match[4];
    const time_duration milliseconds(0, 0, 0, unit == "hours" ? count * 3600000 : count);
    const bool with_time = value.find(':') != std::string::npos;
    const bool with_date = value.find(':') > value.find(' ') || !with_time;
    if (with_date && with_time && unit == "days")
        return moved(date_time_t(date_of(value), time_of(value)), sign,
                     date_duration(static_cast<int>(count)));
    if (with_date && with_time)
        return moved(date_time_t(date_of(value), time_of(value)), sign, milliseconds);
    return with_date ? moved(date_of(value), sign, date_duration(static_cast<int>(count)))
                     : moved(time_of(value), sign, milliseconds);
}

TEST(DatesGuide, ShowsTheRealResultOfEachStep) {
    unsigned steps = 0;
    for (const auto& block : guide_blocks(guide, "steps")) {
        for (const auto& line : lines_of(block.text)) {
            const std::string step = std::regex_replace(line, std::regex(" +"), " ");
            std::smatch match;
            ASSERT_TRUE(
                std::regex_match(step, match, std::regex("(.*) ((reads|gives|raises) .*)")));
            EXPECT_EQ(match[2], outcome(match[1])) << line;
            ++steps;
        }
    }
    EXPECT_EQ(34u, steps);
}

}  // namespace
