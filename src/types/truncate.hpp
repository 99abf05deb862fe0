/// @file
/// Floating-point values truncated to whole numbers, for every input: units, variants and durations
/// all use these two functions.
///
/// A plain cast is undefined for a value that doesn't fit its result. For such a value these
/// functions return what the x86-64 conversion instructions return, on every processor. Pure
/// functions: any number of threads may call them.
#pragma once

#include <limits>

namespace TOVA_2_18 {
namespace types {
namespace detail {

/// Truncates toward zero to a signed integer. Any value that doesn't fit, including NaN, becomes
/// the smallest value of the type.
template <typename Signed, typename T>
Signed truncate(T value) {
    // `-limit` itself fits but may fail the test, since both branches return the smallest value
    // then.
    const T limit = static_cast<T>(1UL << (8 * sizeof(Signed) - 1));
    return value > -limit && value < limit ? static_cast<Signed>(value)
                                           : std::numeric_limits<Signed>::min();
}

/// Truncates toward zero to 64 unsigned bits, using two signed truncations, as compilers do: -1.0
/// is all bits, 2 to the power 64 is 0, NaN is the top bit.
template <typename T>
unsigned long truncate_unsigned(T value) {
    const unsigned long top_bit = 1UL << 63;
    const T limit = static_cast<T>(top_bit);
    if (value >= limit)
        return static_cast<unsigned long>(truncate<long>(value - limit)) ^ top_bit;
    return static_cast<unsigned long>(truncate<long>(value));
}

}  // namespace detail
}  // namespace types
}  // namespace TOVA_2_18
