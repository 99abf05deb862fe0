#include "detail/kernel_form.hpp"

#include "detail/cpu_features.hpp"

#include <cstring>

namespace TOVA_2_18 {
namespace kernel_form {

const char* name(int number) {
    static const char* const names[] = {"portable", "sse2", "avx2", "avx512"};
    return number >= 0 && number < 4 ? names[number] : nullptr;
}

const char* in_use() {
    return name(static_cast<int>(detail::cpu_level()));
}

bool use(const char* wanted) {
    for (int number = 0; number <= static_cast<int>(detail::best_cpu_level()); ++number) {
        if (std::strcmp(name(number), wanted) != 0)
            continue;
        detail::force_cpu_level(static_cast<detail::cpu_form>(number));
        return true;
    }
    return false;
}

}  // namespace kernel_form
}  // namespace TOVA_2_18

#ifdef TOVA_KERNEL_FORM

namespace {

// Constructed before the static objects of the library, which call kernels.
struct first_choice {
    first_choice() { TOVA_2_18::kernel_form::use(TOVA_KERNEL_FORM); }
};
__attribute__((init_priority(101))) first_choice made_at_load;

}  // namespace

#endif
