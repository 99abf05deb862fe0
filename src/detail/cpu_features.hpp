/// @file
/// Which vector instructions the processor has, for the kernels that exist in several forms.
///
/// A family of kernels chooses its form by the level, in a table or a switch:
///
///     switch (detail::cpu_level()) {
///     case detail::cpu_form::avx512: return classify_avx512;
///     case detail::cpu_form::avx2: return classify_avx2;
///     ...
///     }
///
/// The processor is queried once. Static objects call kernels while the library is being loaded, so
/// this works before any static initializer has run. Two threads may make the first call at the
/// same time: both find the same level.
#pragma once

#include <atomic>

namespace TOVA_2_18 {
namespace detail {

/// The forms of a kernel, each one a superset of those before it.
enum class cpu_form : int {
    portable,  ///< plain C++, the reference
    sse2,      ///< every 64-bit x86 processor
    avx2,      ///< with BMI1, BMI2 and POPCNT
    avx512,    ///< F, BW, DQ, VL, VBMI and VBMI2, with all of the above
};

/// The best form that this processor can run. Queries the processor on every call.
cpu_form best_cpu_level();

// The level in use, or -1 before the first query. Use `cpu_level`.
extern std::atomic<int> chosen_cpu_level;
cpu_form choose_cpu_level();

/// The level in use. Costs one load after the first call.
inline cpu_form cpu_level() {
    const int level = chosen_cpu_level.load(std::memory_order_relaxed);
    return level < 0 ? choose_cpu_level() : static_cast<cpu_form>(level);
}

/// For tests, which compile this file themselves: sets the level in use. It must not exceed the
/// best one.
void force_cpu_level(cpu_form level);

}  // namespace detail
}  // namespace TOVA_2_18
