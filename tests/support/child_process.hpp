// Runs what ends the process, exhausts the stack or never returns in a child with limits.
#pragma once

#include <cstddef>
#include <functional>
#include <string>

namespace test_support {

struct child_limits {
    unsigned cpu_seconds = 5;             // SIGXCPU ends a child that runs on
    std::size_t stack_bytes = 0;          // 0 leaves the stack limit alone
    std::size_t address_space_bytes = 0;  // 0 leaves it alone; not under sanitizers
};

struct child_result {
    bool exited = false;  // by exit code
    int exit_code = 0;    // if exited
    int signal = 0;       // the ending signal otherwise
    std::string output;   // standard output and error, together
};

// Forks, applies the limits, runs `body` and then leaves with exit code 0. A C++ exception out of
// `body` gives exit code 99. The stack limit holds for a thread of that size that runs `body`.
child_result run_in_child(const std::function<void()>& body,
                          const child_limits& limits = child_limits());

// Runs a part of a test in a child of its own, for what must not touch the program: the current
// directory, limits, the file mode mask. Failures in there fail the running test.
void expect_in_child(const std::function<void()>& body);

// The same without the rights of the super user, who may read and search everything: as root the
// child takes the ids of nobody first. Files for it have to be open to everyone.
void expect_as_plain_user(const std::function<void()>& body);

// Installs an unexpected handler that leaves the child with exit code 42, so that a test can tell
// `std::unexpected` from a plain `std::terminate`. To be called inside `body`.
void exit_42_on_unexpected();

// Whether the test runs under the address or the thread sanitizer, where stack exhaustion and
// allocation failure look different.
bool under_sanitizer();

}  // namespace test_support
