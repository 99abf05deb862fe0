// Floating values to whole numbers.
#pragma once

#include <limits>

namespace TOVA_2_18 {
namespace types {
namespace detail {

// Truncates toward zero into a signed integer as the processor does: whatever does not fit, NaN
// included, gives the least value. A plain cast has no defined result there. The least value
// itself may fail the test, to the same result.
template <typename Signed, typename T>
Signed truncate(T value) {
    const T limit = static_cast<T>(1UL << (8 * sizeof(Signed) - 1));
    return value > -limit && value < limit ? static_cast<Signed>(value)
                                           : std::numeric_limits<Signed>::min();
}

}  // namespace detail
}  // namespace types
}  // namespace TOVA_2_18
