// Runs a program the way a user does and returns what it printed.
#pragma once

#include <string>

namespace test_support {

struct program_result {
    int exit_code;       // -1 if the program did not start or was ended by a signal
    std::string output;  // standard output and standard error, in the order written
};

// Runs a command line of the shell and waits for its end. The caller quotes what needs quoting.
program_result run_program(const std::string& command);

}  // namespace test_support
