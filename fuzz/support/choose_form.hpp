/// @file
/// The form of the kernels that an input runs with.
///
///     fuzz_support::choose_kernel_form(data, size);
///
/// Each input has a form that depends on its bytes, so the fuzzer meets all of them and an input
/// that fails does so every time. With `-form=NAME` as an argument of the program all inputs run
/// with the form of that name.
#pragma once

#include <cstddef>
#include <cstdint>

namespace fuzz_support {

/// The first thing that a target does with an input.
void choose_kernel_form(const std::uint8_t* data, std::size_t size);

}  // namespace fuzz_support
