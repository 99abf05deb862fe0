/// @file
/// Chooses the form of the kernels for an input.
///
///     fuzz_support::choose_kernel_form(data, size);
///
/// The form depends on the bytes of the input, so the fuzzer covers all forms, and an input that
/// fails always fails. With the argument `-form=NAME`, all inputs run with that form.
#pragma once

#include <cstddef>
#include <cstdint>

namespace fuzz_support {

/// A target calls this first for each input.
void choose_kernel_form(const std::uint8_t* data, std::size_t size);

}  // namespace fuzz_support
