#include "detail/cpu_features.hpp"

namespace TOVA_2_18 {
namespace detail {

// No guard and no lock: the first caller stores the level, and concurrent callers compute the same
// one.
std::atomic<int> chosen_cpu_level(-1);

cpu_form best_cpu_level() {
#if defined(__x86_64__)
    // A constructor in the compiler's runtime library does this, too, but may not have run yet.
    __builtin_cpu_init();
    const bool has_avx2 = __builtin_cpu_supports("avx2") && __builtin_cpu_supports("bmi") &&
                          __builtin_cpu_supports("bmi2") && __builtin_cpu_supports("popcnt");
    if (!has_avx2)
        return cpu_form::sse2;
    const bool has_avx512 =
        __builtin_cpu_supports("avx512f") && __builtin_cpu_supports("avx512bw") &&
        __builtin_cpu_supports("avx512dq") && __builtin_cpu_supports("avx512vl") &&
        __builtin_cpu_supports("avx512vbmi") && __builtin_cpu_supports("avx512vbmi2");
    return has_avx512 ? cpu_form::avx512 : cpu_form::avx2;
#else
    return cpu_form::portable;
#endif
}

cpu_form choose_cpu_level() {
    const cpu_form level = best_cpu_level();
    chosen_cpu_level.store(static_cast<int>(level), std::memory_order_relaxed);
    return level;
}

void force_cpu_level(cpu_form level) {
    chosen_cpu_level.store(static_cast<int>(level), std::memory_order_relaxed);
}

}  // namespace detail
}  // namespace TOVA_2_18
