/// @file
/// The one check that every fuzz target makes.
///
/// A target compares what the library does with what a plain second implementation does, or with a
/// rule that holds for every input:
///
///     require(parser.parse(input).type <= parse_error::data_after_root);
///
/// It takes no message: the fuzzer prints the stack, and the line of the call says what failed.
#pragma once

#include <cstdlib>

namespace fuzz_support {

/// Ends the process if a condition does not hold, so that the fuzzer keeps the input as a crash.
inline void require(bool condition) {
    if (!condition)
        std::abort();
}

}  // namespace fuzz_support
