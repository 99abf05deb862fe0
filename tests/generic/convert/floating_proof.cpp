// Compares the floating-point conversions with standard streams on many random inputs:
//
//     floating_proof [COUNT [SEED]]    COUNT of each kind, 10,000,000 if not given
//
// It prints every difference, and the exit status is 1 if there is one. As many floats are read and
// written as well, spread evenly over all bit patterns; a COUNT of 4294967296 covers every float.
// Each input takes about 16 microseconds.
#include "generic/convert/floating_samples.hpp"

#include <cstdlib>
#include <iostream>

namespace {

using test_support::generator;

long s_differences = 0;

void report(const std::string& difference) {
    if (difference.empty())
        return;
    ++s_differences;
    std::cout << difference;
}

void check_random(unsigned long count, generator& random) {
    for (unsigned long i = 0; i != count; ++i) {
        report(test_support::check_reading(test_support::random_text(random)));
        const double value = test_support::random_value(random);
        report(test_support::check_writing(value, static_cast<unsigned>(random() % 20),
                                           static_cast<int>(random() % 18)));
        char text[40];
        std::snprintf(text, sizeof text, "%.17g", value);
        report(test_support::check_reading(text));
    }
}

// Every step-th float, read from its nine digits and written as a value.
void check_floats(unsigned long count) {
    const unsigned long all = 1UL << 32;
    const unsigned long step = count >= all ? 1 : all / (count + 1) | 1;
    for (unsigned long bits = 0; bits < all; bits += step) {
        const unsigned narrow = static_cast<unsigned>(bits);
        float value;
        std::memcpy(&value, &narrow, sizeof value);
        char text[40];
        std::snprintf(text, sizeof text, "%.9g", static_cast<double>(value));
        report(test_support::check_reading(text));
        if (tova::types::variant(value).as_string() != test_support::written_by_stream(value))
            report(std::string("variant of the float ") + text + "\n");
    }
}

}  // namespace

int main(int argc, char** argv) {
    const unsigned long count = argc > 1 ? std::strtoul(argv[1], nullptr, 10) : 10000000;
    const unsigned long seed = argc > 2 ? std::strtoul(argv[2], nullptr, 10) : 1;
    generator random(seed);
    check_random(count, random);
    check_floats(count);
    std::cout << "floating_proof: " << s_differences << " differences in " << count
              << " inputs of each kind, seed " << seed << '\n';
    return s_differences == 0 ? 0 : 1;
}
