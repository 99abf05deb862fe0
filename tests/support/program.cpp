#include "support/program.hpp"

#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <cstddef>

namespace test_support {

namespace {

void end_group(int) {
    kill(0, SIGKILL);
}

// Runs in a process between the test and the shell. When the test ends, this process kills
// everything that the shell has started. A shell alone would leave those processes running.
[[noreturn]] void supervise(const std::string& line, pid_t test) {
    setpgid(0, 0);
    std::signal(SIGTERM, end_group);
    prctl(PR_SET_PDEATHSIG, SIGTERM);
    if (getppid() != test)
        _exit(1);
    const pid_t shell = fork();
    if (shell == 0) {
        std::signal(SIGTERM, SIG_DFL);
        execl("/bin/sh", "sh", "-c", line.c_str(), static_cast<char*>(nullptr));
        _exit(127);
    }
    close(STDOUT_FILENO);
    int status = 0;
    waitpid(shell, &status, 0);
    if (shell > 0 && WIFEXITED(status))
        _exit(WEXITSTATUS(status));
    kill(getpid(), SIGKILL);
    _exit(1);
}

}  // namespace

program_result run_program(const std::string& command) {
    program_result result = {-1, ""};
    // The braces make the redirection cover every command of the line.
    const std::string line = "{ " + command + "\n} 2>&1";
    int ends[2];
    if (pipe(ends) != 0)
        return result;
    const pid_t test = getpid();
    const pid_t child = fork();
    if (child == 0) {
        close(ends[0]);
        dup2(ends[1], STDOUT_FILENO);
        close(ends[1]);
        supervise(line, test);
    }
    close(ends[1]);
    char piece[4096];
    for (ssize_t size; (size = read(ends[0], piece, sizeof piece)) > 0;)
        result.output.append(piece, static_cast<std::size_t>(size));
    close(ends[0]);
    int status = 0;
    waitpid(child, &status, 0);
    if (child > 0 && WIFEXITED(status))
        result.exit_code = WEXITSTATUS(status);
    return result;
}

}  // namespace test_support
