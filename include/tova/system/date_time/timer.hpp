/// @file
/// A stopwatch that subtracts the cost of reading the clock.
///
///     tova::system::date_time::timer stopwatch;
///     stopwatch.start();
///     work();
///     stopwatch.stop();
///     const unsigned long microseconds = stopwatch.elapsed();
///
/// Threads: a timer belongs to one thread at a time. The measured cost is written while the library
/// is loaded, and by an `auto_tester` that a program makes while that cost is 0.
#pragma once

#include <tova/abi.hpp>

namespace TOVA_2_18 {
namespace system {
namespace date_time {

/// Adds up measured spans, in microseconds of the system's clock. Never fails.
///
/// Each span is shortened by the cost of one reading of the clock, down to 0. A span during which
/// the clock was set back counts as 0.
class TOVA_API timer {
public:
    /// The cost of one reading of the clock in microseconds, measured while the library is loaded.
    /// Usually 0.
    static unsigned long m_overheadMicroseconds;

    timer();       ///< No spans; the stopwatch is not running.
    void start();  ///< Begins a span, and forgets one that was not stopped.
    void stop();   ///< Ends the span and adds it. Does nothing if none was started.
    void clear();  ///< Forgets all spans.

    /// The sum of all spans in microseconds.
    unsigned long elapsed() const;

private:
    unsigned long m_start;
    unsigned long m_elapsed;
};

/// Its constructor measures `timer::m_overheadMicroseconds`, unless that is already known (not 0).
class TOVA_API auto_tester {
public:
    /// Measures the cost of reading the clock, unless it is known already. Never fails.
    auto_tester();
};

/// The object whose constructor measures the clock while the library is loaded.
extern TOVA_API auto_tester sAutoTester;

}  // namespace date_time
}  // namespace system
}  // namespace TOVA_2_18
