// Tests the functions that read the clock, and the timer, with a clock defined in this program: the
// library finds its symbols before those of the C library.
#include <tova/exceptions/exceptions.hpp>
#include <tova/system/date_time/date_time.hpp>
#include <tova/system/date_time/timer.hpp>

#include <gtest/gtest.h>

#include <cstdlib>
#include <ctime>
#include <string>

#include <sys/time.h>

namespace {

using tova::system::date_time::auto_tester;
using tova::system::date_time::date;
using tova::system::date_time::date_time_t;
using tova::system::date_time::time;
using tova::system::date_time::timer;

// The planned readings in microseconds, and how many have been made. The first six are used while
// the library is loaded: a warm-up of 500 microseconds, and two samples of 7 and 4.
unsigned long readings[16] = {1000000, 1000500, 2000000, 2000007, 3000000, 3000004};
unsigned readings_planned = 6;
unsigned readings_made = 0;
timeval fixed_now = {0, 0};
std::time_t fixed_time = 0;
unsigned times_asked = 0;

}  // namespace

extern "C" int gettimeofday(timeval* now, void*) noexcept {
    if (readings_made < readings_planned) {
        now->tv_sec = static_cast<std::time_t>(readings[readings_made] / 1000000);
        now->tv_usec = static_cast<suseconds_t>(readings[readings_made] % 1000000);
    } else {
        *now = fixed_now;
    }
    ++readings_made;
    return 0;
}

extern "C" std::time_t time(std::time_t* result) noexcept {
    ++times_asked;
    if (result != nullptr)
        *result = fixed_time;
    return fixed_time;
}

namespace {

// What loading the library did, before any test.
const unsigned readings_at_load = readings_made;
const unsigned long overhead_at_load = timer::m_overheadMicroseconds;

class fixed_clock : public ::testing::Test {
protected:
    void TearDown() override { unsetenv("TZ"); }

    void set_zone(const char* zone) { setenv("TZ", zone, 1); }

    void set_clock(long seconds, long microseconds) {
        readings_planned = readings_made = times_asked = 0;
        fixed_now.tv_sec = seconds;
        fixed_now.tv_usec = microseconds;
        fixed_time = seconds;
    }

    static std::string shown(const date& value) {
        return std::to_string(value.day()) + "." + std::to_string(value.month()) + "." +
               std::to_string(value.year());
    }
    static std::string shown(const time& value) {
        return std::to_string(value.hour()) + ":" + std::to_string(value.minute()) + ":" +
               std::to_string(value.second()) + "." + std::to_string(value.millisecond());
    }
    static std::string shown(const date_time_t& value) {
        return shown(value.date()) + " " + shown(value.time());
    }
};

typedef fixed_clock ClockReaders;

TEST_F(ClockReaders, ReturnTheTimeInUTCAndInTheZoneOfTheProcess) {
    const struct {
        const char* zone;
        long seconds;
        long microseconds;
        const char* utc_date;
        const char* utc_time;
        const char* local_date;
        const char* local_time;
    } cases[] = {
        {"UTC0", 0, 0, "1.1.1970", "0:0:0.0", "1.1.1970", "0:0:0.0"},
        {"EAST-5:45", 951868799, 999999, "29.2.2000", "23:59:59.999", "1.3.2000", "5:44:59.999"},
        {"WEST8", 951868800, 1000, "1.3.2000", "0:0:0.1", "29.2.2000", "16:0:0.1"},
        {"UTC0", 1234567890, 123999, "13.2.2009", "23:31:30.123", "13.2.2009", "23:31:30.123"},
        {"UTC0", -1, 500000, "31.12.1969", "23:59:59.500", "31.12.1969", "23:59:59.500"},
        {"EAST-1", 1719835200, 999, "1.7.2024", "12:0:0.0", "1.7.2024", "13:0:0.0"},
        {"CET-1CEST,M3.5.0,M10.5.0", 1719835200, 0, "1.7.2024", "12:0:0.0", "1.7.2024", "14:0:0.0"},
        // Years are unsigned; the one before year 0 is the largest.
        {"UTC0", -62198755200, 0, "1.1.4294967295", "0:0:0.0", "1.1.4294967295", "0:0:0.0"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(::testing::Message() << c.zone << " " << c.seconds);
        set_zone(c.zone);
        set_clock(c.seconds, c.microseconds);
        EXPECT_EQ(c.utc_date, shown(date::UTC_date()));
        EXPECT_EQ(c.utc_time, shown(time::UTC_time()));
        EXPECT_EQ(c.local_date, shown(date::local_date()));
        EXPECT_EQ(c.local_time, shown(time::local_time()));
        EXPECT_EQ(c.utc_date + std::string(" ") + c.utc_time, shown(date_time_t::UTC_date_time()));
        EXPECT_EQ(c.local_date + std::string(" ") + c.local_time,
                  shown(date_time_t::local_date_time()));
    }
}

TEST_F(ClockReaders, ReadTheClockOnceEach) {
    set_zone("UTC0");
    set_clock(86400, 0);
    date::UTC_date();
    date::local_date();
    EXPECT_EQ(2u, times_asked);
    EXPECT_EQ(0u, readings_made);
    time::UTC_time();
    time::local_time();
    EXPECT_EQ(2u, readings_made);
    date_time_t::UTC_date_time();
    date_time_t::local_date_time();
    EXPECT_EQ(4u, readings_made);
    EXPECT_EQ(2u, times_asked);
}

TEST_F(ClockReaders, ReadDatesFromTheClockOfWholeSeconds) {
    set_zone("UTC0");
    set_clock(0, 0);
    fixed_time = 86400;
    EXPECT_EQ("2.1.1970", shown(date::UTC_date()));
    EXPECT_EQ("2.1.1970", shown(date::local_date()));
    EXPECT_EQ("1.1.1970 0:0:0.0", shown(date_time_t::UTC_date_time()));
}

class Timer : public ::testing::Test {
protected:
    void SetUp() override { timer::m_overheadMicroseconds = 0; }
    void TearDown() override { timer::m_overheadMicroseconds = 0; }

    template <unsigned Count>
    void plan(const unsigned long (&microseconds)[Count]) {
        for (unsigned i = 0; i < Count; ++i)
            readings[i] = microseconds[i];
        readings_planned = Count;
        readings_made = 0;
        fixed_now = timeval();
    }
};

TEST_F(Timer, MeasuresTheClockWhenTheLibraryIsLoaded) {
    EXPECT_EQ(6u, readings_at_load);
    EXPECT_EQ(5u, overhead_at_load);
}

TEST_F(Timer, MeasuresTheMeanOfTwoSamplesAfterAWarmUp) {
    const struct {
        unsigned long readings[6];
        unsigned long overhead;
    } cases[] = {
        {{1, 1, 1, 1, 1, 1}, 0},
        {{1, 1000, 2000, 2001, 3000, 3000}, 0},
        {{1, 1000, 2000, 2001, 3000, 3001}, 1},
        {{1, 1000, 2000, 2003, 3000, 3010}, 6},
        {{1, 1000, 2000, 1990, 3000, 3010}, 5},  // the clock was set back
        {{5, 4, 3, 2, 2, 1}, 0},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.readings[3]);
        timer::m_overheadMicroseconds = 0;
        plan(c.readings);
        auto_tester();
        EXPECT_EQ(6u, readings_made);
        EXPECT_EQ(c.overhead, timer::m_overheadMicroseconds);
    }
}

TEST_F(Timer, KeepsAnOverheadThatIsAlreadyKnown) {
    plan({1, 2, 10, 20, 30, 40});
    timer::m_overheadMicroseconds = 3;
    auto_tester();
    EXPECT_EQ(0u, readings_made);
    EXPECT_EQ(3u, timer::m_overheadMicroseconds);
}

TEST_F(Timer, TakesNoSampleFromAClockAt0) {
    plan({0, 0, 0});
    auto_tester();
    EXPECT_EQ(3u, readings_made);
    EXPECT_EQ(0u, timer::m_overheadMicroseconds);

    plan({0, 1000, 1008, 0});
    auto_tester();
    EXPECT_EQ(4u, readings_made);
    EXPECT_EQ(4u, timer::m_overheadMicroseconds);
}

TEST_F(Timer, AddsUpSpans) {
    plan({100, 150, 1000, 1001});
    timer stopwatch;
    EXPECT_EQ(0u, stopwatch.elapsed());
    stopwatch.start();
    EXPECT_EQ(0u, stopwatch.elapsed());
    stopwatch.stop();
    EXPECT_EQ(50u, stopwatch.elapsed());
    stopwatch.start();
    stopwatch.stop();
    EXPECT_EQ(51u, stopwatch.elapsed());
    stopwatch.clear();
    EXPECT_EQ(0u, stopwatch.elapsed());
}

TEST_F(Timer, SubtractsTheOverheadFromEachSpanDownTo0) {
    plan({100, 150, 200, 203, 300, 302});
    timer::m_overheadMicroseconds = 3;
    timer stopwatch;
    stopwatch.start();
    stopwatch.stop();
    EXPECT_EQ(47u, stopwatch.elapsed());
    stopwatch.start();
    stopwatch.stop();
    EXPECT_EQ(47u, stopwatch.elapsed());
    stopwatch.start();
    stopwatch.stop();
    EXPECT_EQ(47u, stopwatch.elapsed());
}

TEST_F(Timer, EndsASpanOnlyOnce) {
    plan({100, 150, 1000, 2000, 2007});
    timer stopwatch;
    stopwatch.stop();
    EXPECT_EQ(0u, readings_made);
    stopwatch.start();
    stopwatch.stop();
    stopwatch.stop();
    EXPECT_EQ(50u, stopwatch.elapsed());
    EXPECT_EQ(2u, readings_made);
    stopwatch.start();
    stopwatch.start();
    stopwatch.stop();
    EXPECT_EQ(57u, stopwatch.elapsed());
    stopwatch.start();
    stopwatch.clear();
    stopwatch.stop();
    EXPECT_EQ(0u, stopwatch.elapsed());
}

}  // namespace
