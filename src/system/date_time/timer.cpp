#include <tova/system/date_time/timer.hpp>

#include <sys/time.h>

namespace TOVA_2_18 {
namespace system {
namespace date_time {

namespace {

// A span begins behind one reading of the clock and ends with the next: it holds the cost of one.
const unsigned long readings_in_a_span = 1;

unsigned long microseconds_now() {
    timeval now;
    ::gettimeofday(&now, nullptr);
    return static_cast<unsigned long>(now.tv_sec) * 1000000 +
           static_cast<unsigned long>(now.tv_usec);
}

unsigned long measured_span(timer& stopwatch) {
    stopwatch.clear();
    stopwatch.start();
    stopwatch.stop();
    return stopwatch.elapsed() / readings_in_a_span;
}

}  // namespace

unsigned long timer::m_overheadMicroseconds = 0;

timer::timer() : m_start(0), m_elapsed(0) {}

void timer::start() {
    m_start = microseconds_now();
}

// A clock at 0 cannot be told from a span that was not begun; such a span is not added.
void timer::stop() {
    if (m_start == 0)
        return;
    const unsigned long overhead = readings_in_a_span * m_overheadMicroseconds;
    const unsigned long span = microseconds_now() - m_start;
    // The clock may have been set back in between: the difference is one with a sign.
    const long beyond = static_cast<long>(span - overhead);
    if (beyond > 0)
        m_elapsed += static_cast<unsigned long>(beyond);
    m_start = 0;
}

void timer::clear() {
    m_start = 0;
    m_elapsed = 0;
}

unsigned long timer::elapsed() const {
    return m_elapsed;
}

auto_tester::auto_tester() {
    if (timer::m_overheadMicroseconds != 0)
        return;
    timer stopwatch;
    measured_span(stopwatch);  // the first reading is slow
    const unsigned long first = measured_span(stopwatch);
    const unsigned long second = measured_span(stopwatch);
    timer::m_overheadMicroseconds = (first + second) >> 1;
}

// Made while the library is loaded, when the clock can be read and the overhead is still 0.
auto_tester sAutoTester;

}  // namespace date_time
}  // namespace system
}  // namespace TOVA_2_18
