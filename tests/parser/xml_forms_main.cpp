// Runs the tests with one form of the kernels: `--form=portable`, `sse2`, `avx2` or `avx512`. The
// program exits with status 77 if the processor does not support the form.
#include "detail/cpu_features.hpp"

#include <tova/abi.hpp>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdio>
#include <cstring>

namespace {

using tova::detail::best_cpu_level;
using tova::detail::cpu_form;

const char* const form_names[] = {"--form=portable", "--form=sse2", "--form=avx2", "--form=avx512"};

}  // namespace

int main(int argc, char** argv) {
    ::testing::InitGoogleMock(&argc, argv);
    for (int level = 0; level < 4; ++level) {
        if (argc != 2 || std::strcmp(argv[1], form_names[level]) != 0)
            continue;
        if (static_cast<cpu_form>(level) > best_cpu_level())
            return 77;
        tova::detail::force_cpu_level(static_cast<cpu_form>(level));
        return RUN_ALL_TESTS();
    }
    std::fprintf(stderr, "the form is missing\n");
    return 2;
}
