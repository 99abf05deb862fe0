/// @file
/// The switch between the forms of the kernels, for whole processes.
///
///     tova::kernel_form::use("avx2");  // false if the processor cannot run it
///
/// The library has no such switch: which form it uses depends on the processor alone. This one is
/// in copies of the library that `tova_add_form_library` links from the same objects, and only
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

/// Uses the form of that name from now on. Returns false, and changes nothing, if there is no such
/// form or the processor cannot run it.
TOVA_API bool use(const char* name);

}  // namespace kernel_form
}  // namespace TOVA_2_18
