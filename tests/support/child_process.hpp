// Runs code in a child process with limits, for code that ends the process, exhausts the stack or
// never returns.
#pragma once

#include <cstddef>
#include <functional>
#include <string>

namespace test_support {

struct child_limits {
    unsigned cpu_seconds = 5;             // SIGXCPU ends a child that uses more
    std::size_t stack_bytes = 0;          // 0 keeps the stack of the parent
    std::size_t address_space_bytes = 0;  // 0 sets no limit; ignored under sanitizers
};

struct child_result {
    bool exited = false;  // whether it exited by itself, not by a signal
    int exit_code = 0;    // if it exited
    int signal = 0;       // the signal that ended it otherwise
    std::string output;   // standard output and standard error, in the order written
};

// Forks, applies the limits, runs `body` in the child and exits with code 0; with code 99 if `body`
// lets a C++ exception escape. With a stack limit, `body` runs on a thread with a stack of that
// size.
child_result run_in_child(const std::function<void()>& body,
                          const child_limits& limits = child_limits());

// Runs a part of a test in a child, so that changes to the working directory, to limits or to the
// file mode mask do not affect the other tests. A failure in the child fails the running test.
void expect_in_child(const std::function<void()>& body,
                     const child_limits& limits = child_limits());

// The same without the privileges of root, who may read and search everything: a child of root
// switches to the user nobody first. The files it uses must be accessible to everyone.
void expect_as_plain_user(const std::function<void()>& body);

// Installs an unexpected handler that exits with code 42, so that a test can distinguish
// `std::unexpected` from a plain `std::terminate`. Call it inside `body`.
void exit_42_on_unexpected();

// Whether the test runs under the address or the thread sanitizer, where an exhausted stack and a
// failed allocation look different.
bool under_sanitizer();

}  // namespace test_support
