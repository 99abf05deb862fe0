// Runs the steps that docs/dates.md shows and compiles and runs its code.
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
// what its right half has to say.
std::string outcome(const std::string& step) {
    std::smatch match;
    if (!std::regex_match(step, match, std::regex("(.*\\d) ([+-]=) (-?\\d+) (\\w+)")))
        return "tells " + shown(date_of(step));
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

TEST(DatesGuide, ShowsStepsThatHappen) {
    unsigned steps = 0;
    for (const auto& block : guide_blocks(guide, "steps")) {
        for (const auto& line : lines_of(block.text)) {
            const std::string step = std::regex_replace(line, std::regex(" +"), " ");
            std::smatch match;
            ASSERT_TRUE(
                std::regex_match(step, match, std::regex("(.*) ((tells|gives|raises) .*)")));
            EXPECT_EQ(match[2], outcome(match[1])) << line;
            ++steps;
        }
    }
    EXPECT_EQ(34u, steps);
}

TEST(DatesGuide, ShowsCodeThatRuns) {
    const date_time_t now = date_time_t::UTC_date_time();
    const date today = now.date();
    const date start(1, 1, 1970);
    const unsigned days = today.pJulian_day_number() - start.pJulian_day_number();
    EXPECT_LT(20000u, days);
    EXPECT_GT(200000u, days);

    date due(31, 1, 2001);
    due.month(2);
    const unsigned in_february = due.day();
    due.month(3);
    const unsigned in_march = due.day();
    EXPECT_EQ(28u, in_february);
    EXPECT_EQ(31u, in_march);

    unsigned number = date(3, 3, 2000).pJulian_day_number();
    number -= 4;
    date before;
    before.pJulian_day_number(number);
    EXPECT_EQ("28.2.2000", shown(before));

    const time_duration wrapped(597, 0, 0, 0);
    const time_duration month(0, 0, 0, 30 * 86400000L);
    const bool is_wrong = wrapped.is_negative();
    const long hours = month.total_complete_hours();
    EXPECT_TRUE(is_wrong);
    EXPECT_EQ(720, hours);

    date_time_t moment(date(28, 2, 2001), time(23, 30, 0, 0));
    const long a_day = 86400000;
    const long since_midnight = (moment.time() - time()).total_milliseconds() + 45 * 60000;
    date day_of_moment = moment.date();
    if (since_midnight >= a_day)
        day_of_moment += date_duration(static_cast<int>(since_midnight / a_day));
    moment.assign(day_of_moment, time() + time_duration(0, 0, 0, since_midnight % a_day));
    EXPECT_EQ("1.3.2001 00:15:00.000", shown(moment));
}

TEST(DatesGuide, ShowsTheCodeOfThisTest) {
    EXPECT_EQ(5u, guide_blocks(guide, "cpp").size());
    test_support::expect_code_of_guide(guide, "tests/system/date_time/dates_guide_test.cpp",
                                       "ShowsCodeThatRuns");
}

}  // namespace
