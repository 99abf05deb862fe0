// Runs a fuzz target on its seeds, and on mutations of them, as an ordinary test: NAME SEEDS.
//
// The mutations are always the same, so a failure is reproducible. They need no fuzzer and no
// sanitizer: a target makes its own comparisons and ends the process if one fails.
#include "../../fuzz/support/choose_form.hpp"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <dirent.h>
#include <fstream>
#include <iterator>
#include <random>
#include <string>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);
// Only a few targets define it.
extern "C" __attribute__((weak)) int LLVMFuzzerInitialize(int* argc, char*** argv);

// Only the fuzzed library can switch between the forms of its kernels.
void fuzz_support::choose_kernel_form(const std::uint8_t*, std::size_t) {}

namespace {

const unsigned changes_of_a_seed = 10;

void run(const std::string& bytes) {
    // A copy of exactly this size, so a memory checker detects a read past its end.
    const std::vector<std::uint8_t> copy(bytes.begin(), bytes.end());
    LLVMFuzzerTestOneInput(copy.data(), copy.size());
}

std::vector<std::string> files_of(const std::string& folder) {
    std::vector<std::string> result;
    if (DIR* const open = ::opendir(folder.c_str())) {
        while (const dirent* entry = ::readdir(open))
            if (entry->d_name[0] != '.')
                result.push_back(folder + "/" + entry->d_name);
        ::closedir(open);
    }
    std::sort(result.begin(), result.end());
    return result;
}

std::string changed(std::string bytes, const std::string& other, std::mt19937& random) {
    const auto below = [&random](std::size_t end) { return random() % (end + 1); };
    switch (random() % 5) {
    case 0:  // cut off
        bytes.resize(below(bytes.size()));
        break;
    case 1:  // a piece of another seed
        bytes.insert(below(bytes.size()), other.substr(below(other.size()), below(20)));
        break;
    case 2:  // a piece removed
        bytes.erase(below(bytes.size()), below(8));
        break;
    default:  // other bytes
        for (std::size_t i = 1 + random() % 4; i != 0 && !bytes.empty(); --i)
            bytes[random() % bytes.size()] = static_cast<char>(random());
        break;
    }
    return bytes;
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 2)
        return 2;
    std::vector<std::string> seeds;
    for (const std::string& path : files_of(argv[1])) {
        std::ifstream file(path, std::ios::binary);
        seeds.emplace_back(std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>());
    }
    if (seeds.empty()) {
        std::fprintf(stderr, "no seeds in %s\n", argv[1]);
        return 1;
    }
    if (LLVMFuzzerInitialize != nullptr)
        LLVMFuzzerInitialize(&argc, &argv);
    std::mt19937 random(1);
    unsigned long runs = 0;
    for (const std::string& seed : seeds) {
        run(seed);
        for (unsigned i = 0; i < changes_of_a_seed; ++i, ++runs)
            run(changed(seed, seeds[random() % seeds.size()], random));
    }
    std::printf("%lu seeds, %lu changed forms\n", static_cast<unsigned long>(seeds.size()), runs);
    return 0;
}
