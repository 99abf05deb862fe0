#include "detail/cpu_features.hpp"

#include <algorithm>
#include <initializer_list>

namespace TOVA_2_18 {
namespace detail {

namespace {

bool has_all(std::initializer_list<bool> features) {
    return std::find(features.begin(), features.end(), false) == features.end();
}

}  // namespace

// No guard and no lock: the first caller stores the level, and concurrent callers compute the same
// one.
std::atomic<int> chosen_cpu_level(-1);

cpu_form best_cpu_level() {
#if defined(__x86_64__)
    // A constructor in the compiler's runtime library does this, too, but may not have run yet.
    __builtin_cpu_init();
    const bool has_avx2 =
        has_all({__builtin_cpu_supports("avx2") != 0, __builtin_cpu_supports("bmi") != 0,
                 __builtin_cpu_supports("bmi2") != 0, __builtin_cpu_supports("popcnt") != 0});
    const bool has_avx512 = has_all(
        {has_avx2, __builtin_cpu_supports("avx512f") != 0, __builtin_cpu_supports("avx512bw") != 0,
         __builtin_cpu_supports("avx512dq") != 0, __builtin_cpu_supports("avx512vl") != 0,
         __builtin_cpu_supports("avx512vbmi") != 0, __builtin_cpu_supports("avx512vbmi2") != 0});
    // The forms follow each other, and each flag includes those before it.
    return static_cast<cpu_form>(static_cast<int>(cpu_form::sse2) + has_avx2 + has_avx512);
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
