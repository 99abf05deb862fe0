/// @file
/// Assertions in the library's own sources. They report a published location, which stays the same
/// when code moves.
///
/// The macros of `debug/assert.hpp` report the current file and line. Hooks receive both, so the
/// library passes the file, line and signature that are part of its interface instead. The rules
/// for threads are those of `debug/assert.hpp`.
#pragma once

#include <tova/debug/assert.hpp>

namespace TOVA_2_18 {
namespace debug {
namespace detail {

// Reports `expression` to the assertion hook if the condition is false, and returns in any case.
// `function` is the full signature of the asserting operation.
inline void check(bool condition, const char* expression, const char* source_path,
                  unsigned int line, const char* function) {
    if (!condition)
        _private::____________________ASSERT____________________(expression, source_path, line,
                                                                 function);
}

}  // namespace detail
}  // namespace debug
}  // namespace TOVA_2_18
