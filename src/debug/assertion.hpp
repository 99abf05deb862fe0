// How the library's own sources assert: with a published place, which stays when the code moves.
#pragma once

#include <tova/debug/assert.hpp>

namespace TOVA_2_18 {
namespace debug {
namespace detail {

// Reports `expression` to the assertion hook if the condition doesn't hold; goes on in any case.
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
