/// A stopwatch that knows what reading the clock costs.
#pragma once

#include <tova/abi.hpp>

namespace TOVA_2_18 {
namespace system {
namespace date_time {

/// Adds up spans of time in microseconds, by the clock of the day.
///
/// The cost of one reading of the clock is taken off each span, down to 0. One thread at a time.
/// Never fails.
class TOVA_API timer {
public:
    /// What one reading of the clock costs in microseconds, measured while the library is loaded.
    /// Usually 0.
    static unsigned long m_overheadMicroseconds;

    timer();
    void start();  ///< Begins a span; one that was begun before is forgotten.
    void stop();   ///< Ends the span and adds it. Does nothing without a start.
    void clear();  ///< Forgets all spans.

    /// The sum of all spans in microseconds.
    unsigned long elapsed() const;

private:
    unsigned long m_start;
    unsigned long m_elapsed;
};

/// Measures `timer::m_overheadMicroseconds` when it is made, unless that is known already.
class TOVA_API auto_tester {
public:
    auto_tester();
};

/// Made while the library is loaded.
extern TOVA_API auto_tester sAutoTester;

}  // namespace date_time
}  // namespace system
}  // namespace TOVA_2_18
