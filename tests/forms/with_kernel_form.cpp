// with_kernel_form FORM DIRECTORY PROGRAM [ARGUMENT ...]: runs a program, and all programs that it
// starts, with the copy of the library in that directory. Exits with status 77 if the processor
// does not support the form.
#include "detail/cpu_features.hpp"

#include <tova/abi.hpp>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <unistd.h>

int main(int argc, char** argv) {
    using tova::detail::best_cpu_level;
    if (argc < 4) {
        std::fprintf(stderr, "usage: with_kernel_form FORM DIRECTORY PROGRAM [ARGUMENT ...]\n");
        return 2;
    }
    const char* const names[] = {"portable", "sse2", "avx2", "avx512"};
    for (int form = 0; form <= static_cast<int>(best_cpu_level()); ++form) {
        if (std::strcmp(names[form], argv[1]) != 0)
            continue;
        setenv("LD_LIBRARY_PATH", argv[2], 1);
        execv(argv[3], argv + 3);
        std::perror(argv[3]);
        return 2;
    }
    return 77;
}
