#include <tova/system/date_time/timer.hpp>

#include <sys/time.h>

namespace TOVA_2_18 {
namespace system {
namespace date_time {

namespace {

unsigned long microseconds_now() {
    timeval now;
    ::gettimeofday(&now, nullptr);
    return static_cast<unsigned long>(now.tv_sec) * 1000000 +
           static_cast<unsigned long>(now.tv_usec);
}

// One sample: two readings with nothing between them, so the difference is their own cost.
unsigned long measured_span(timer& stopwatch) {
    stopwatch.clear();
    stopwatch.start();
    stopwatch.stop();
    return stopwatch.elapsed();
}

}  // namespace

unsigned long timer::m_overheadMicroseconds = 0;

timer::timer() : m_start(0), m_elapsed(0) {}

void timer::start() {
    m_start = microseconds_now();
}

// A span started when the clock reads 0 looks like one that was never started, so it is not added.
// A span begins after one reading of the clock and ends with the next, so it includes the cost of
// one reading.
void timer::stop() {
    if (m_start == 0)
        return;
    const unsigned long span = microseconds_now() - m_start;
    // Signed: the span may be shorter than the overhead, and the clock may have been set back.
    const long rest = static_cast<long>(span - m_overheadMicroseconds);
    if (rest > 0)
        m_elapsed += static_cast<unsigned long>(rest);
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
    measured_span(stopwatch);  // warm-up: the first reading is slow
    const unsigned long first = measured_span(stopwatch);
    const unsigned long second = measured_span(stopwatch);
    timer::m_overheadMicroseconds = (first + second) / 2;
}

// Constructed while the library is being loaded, when the overhead is still 0.
auto_tester sAutoTester;

}  // namespace date_time
}  // namespace system
}  // namespace TOVA_2_18
