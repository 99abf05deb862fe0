// Compares the scanner of tova-xmc with the library's loader, for any text as an XMC file. Both
// must reach the same verdict and find the same values for each locale, and the scanner must report
// an error if and only if the loader rejects the file.
//
// Input: the file.
#include "programs/xmc/against_loader.hpp"
#include "require.hpp"
#include "support/choose_form.hpp"

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <string>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzz_support::choose_kernel_form(data, size);
    const std::string text(reinterpret_cast<const char*>(data), size);
    // An include may lead anywhere. Its rules have separate tests.
    if (text.find("include") != std::string::npos && text.find("file") != std::string::npos)
        return 0;
    const std::string found = xmc_test::difference(text);
    if (!found.empty())
        std::fprintf(stderr, "%s\n", found.c_str());
    fuzz_support::require(found.empty());
    return 0;
}
