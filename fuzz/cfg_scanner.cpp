// Compares the scanner of tova-cfg with the library's loader: any bytes as a settings file must
// result in the same nodes with the same words and values, and every token must have its position.
//
// Input: the file.
#include "programs/cfg/against_loader.hpp"
#include "require.hpp"
#include "support/choose_form.hpp"

#include <unistd.h>

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <string>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzz_support::choose_kernel_form(data, size);
    // In memory if the system has a folder for that.
    static const std::string name =
        std::string(access("/dev/shm", W_OK) == 0 ? "/dev/shm" : "/tmp") + "/tova_cfg_scanner_" +
        std::to_string(getpid()) + ".cfg";
    const std::string found =
        cfg_test::difference(std::string(reinterpret_cast<const char*>(data), size), name);
    std::remove(name.c_str());
    if (!found.empty())
        std::fprintf(stderr, "%s\n", found.c_str());
    fuzz_support::require(found.empty());
    return 0;
}
