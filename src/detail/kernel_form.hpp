/// @file
/// Switches the form of the kernels for the whole process.
///
///     tova::kernel_form::use("avx2");  // false if the processor cannot run it
///
/// The library itself has no such switch: its form depends only on the processor. The switch is in
/// copies of the library that `tova_add_form_library` links from the same object files, and only
/// programs that load such a copy can call it. A call of `use` takes effect in all threads; no
/// kernel may be running.
#pragma once

#include <tova/abi.hpp>

namespace TOVA_2_18 {
namespace kernel_form {

/// The names of the forms: portable, sse2, avx2, avx512. Null after the last.
TOVA_API const char* name(int number);

/// The name of the form in use.
TOVA_API const char* in_use();

/// Uses the form `name` from now on. Returns false and changes nothing if there is no such form or
/// the processor does not support it.
TOVA_API bool use(const char* name);

}  // namespace kernel_form
}  // namespace TOVA_2_18
