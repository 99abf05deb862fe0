#include "choose_form.hpp"

#include "detail/kernel_form.hpp"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

namespace {

bool is_fixed = false;

// The names of the forms that this processor can run.
std::vector<const char*> usable_forms() {
    std::vector<const char*> names;
    for (int number = 0; tova::kernel_form::name(number) != nullptr; ++number)
        if (tova::kernel_form::use(tova::kernel_form::name(number)))
            names.push_back(tova::kernel_form::name(number));
    return names;
}

}  // namespace

namespace fuzz_support {

void choose_kernel_form(const std::uint8_t* data, std::size_t size) {
    static const std::vector<const char*> forms = usable_forms();
    if (is_fixed)
        return;
    std::uint32_t sum = 2166136261u;  // FNV-1a
    for (std::size_t i = 0; i < size; ++i)
        sum = (sum ^ data[i]) * 16777619u;
    tova::kernel_form::use(forms[(sum >> 16) % forms.size()]);
}

}  // namespace fuzz_support

// Removes `-form=NAME` from the arguments, because the fuzzer does not know it.
extern "C" int LLVMFuzzerInitialize(int* count, char*** arguments) {
    const std::string option("-form=");
    int kept = 0;
    for (int i = 0; i < *count; ++i) {
        char* const argument = (*arguments)[i];
        if (option.compare(0, option.size(), argument, 0, option.size()) != 0) {
            (*arguments)[kept++] = argument;
            continue;
        }
        if (!tova::kernel_form::use(argument + option.size())) {
            std::fprintf(stderr, "unknown or unsupported form: %s\n", argument);
            std::exit(1);
        }
        is_fixed = true;
    }
    *count = kept;
    return 0;
}
