// A test that is killed, for example by a time limit, leaves no processes running.
#include "support/child_process.hpp"
#include "support/program.hpp"
#include "support/temporary_directory.hpp"

#include <gtest/gtest.h>

#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <fstream>
#include <functional>
#include <string>

namespace {

// Calls `done` until it returns true, for at most ten seconds.
bool becomes_true(const std::function<bool()>& done) {
    for (int i = 0; i < 1000; ++i) {
        if (done())
            return true;
        usleep(10000);
    }
    return false;
}

// A process that has ended may remain as a zombie if nobody waits for it.
bool is_running(const std::string& process) {
    std::ifstream file("/proc/" + process + "/stat");
    std::string number, name, state;
    return (file >> number >> name >> state) && state != "Z";
}

std::string first_line(const std::string& path) {
    std::ifstream file(path);
    std::string line;
    std::getline(file, line);
    return line;
}

// Runs `body` in a process that is killed once `body` has written a process number to the file.
void expect_to_die_with_its_test(const std::string& path, const std::function<void()>& body) {
    const pid_t test = fork();
    if (test == 0) {
        body();
        _exit(0);
    }
    ASSERT_TRUE(becomes_true([&path] { return !first_line(path).empty(); }));
    const std::string process = first_line(path);
    EXPECT_TRUE(is_running(process));
    kill(test, SIGKILL);
    waitpid(test, nullptr, 0);
    EXPECT_TRUE(becomes_true([&process] { return !is_running(process); })) << process;
}

TEST(ChildOfATest, DiesWithIt) {
    const test_support::temporary_directory files;
    const std::string path = files.path("process");
    expect_to_die_with_its_test(path, [&path] {
        test_support::run_in_child([&path] {
            std::ofstream(path) << getpid() << std::endl;
            for (;;)
                pause();
        });
    });
}

TEST(ProgramOfATest, DiesWithIt) {
    const test_support::temporary_directory files;
    const std::string path = files.path("process");
    expect_to_die_with_its_test(
        path, [&path] { test_support::run_program("sleep 1000 & echo $! >'" + path + "'; wait"); });
}

TEST(ProgramOfATest, HasTheResultOfItsShell) {
    test_support::program_result result =
        test_support::run_program("echo one; echo two >&2; exit 3");
    EXPECT_EQ(3, result.exit_code);
    EXPECT_EQ("one\ntwo\n", result.output);
    result = test_support::run_program("kill -9 $$");
    EXPECT_EQ(-1, result.exit_code);
    result = test_support::run_program("/no/such/program");
    EXPECT_EQ(127, result.exit_code);
}

}  // namespace
