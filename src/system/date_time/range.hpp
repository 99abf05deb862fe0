/// @file
/// The check that all setters of dates and times share.
///
/// Keeps no state: any number of threads may call it.
#pragma once

#include <tova/exceptions/exceptions.hpp>

namespace TOVA_2_18 {
namespace system {
namespace date_time {
namespace detail {

// Apart, so that a setter whose value is in range needs no stack.
[[noreturn]] __attribute__((noinline)) inline void raise_out_of_range(const char* message,
                                                                      unsigned int line,
                                                                      const char* source_path,
                                                                      const char* function) {
    throw exceptions::out_of_range(message, line, source_path, function);
}

// Raises `exceptions::out_of_range` unless the condition holds. Message, line, path and function
// are published: handlers compare them, so they stay the same when the code moves.
inline void require(bool in_range, const char* message, unsigned int line, const char* source_path,
                    const char* function) {
    if (!in_range)
        raise_out_of_range(message, line, source_path, function);
}

}  // namespace detail
}  // namespace date_time
}  // namespace system
}  // namespace TOVA_2_18
