// Runs a program as a user would and returns its output.
#pragma once

#include <string>

namespace test_support {

struct program_result {
    int exit_code;       // -1 if the program did not start or was ended by a signal
    std::string output;  // standard output and standard error, in the order written
};

// Runs a shell command line and waits for it to end. The caller does any quoting. If the test is
// killed meanwhile, by any signal, every process that the line has started is killed, too.
program_result run_program(const std::string& command);

}  // namespace test_support
