#include "support/program.hpp"

#include <cstddef>
#include <cstdio>
#include <sys/wait.h>

namespace test_support {

program_result run_program(const std::string& command) {
    program_result result = {-1, ""};
    // The braces make the redirection cover every command of the line.
    FILE* const pipe = ::popen(("{ " + command + "\n} 2>&1").c_str(), "r");
    if (pipe == nullptr)
        return result;
    char piece[4096];
    for (std::size_t size; (size = std::fread(piece, 1, sizeof piece, pipe)) != 0;)
        result.output.append(piece, size);
    const int status = ::pclose(pipe);
    if (WIFEXITED(status))
        result.exit_code = WEXITSTATUS(status);
    return result;
}

}  // namespace test_support
