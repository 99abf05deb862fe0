// Runs the example that follows a growing file, as a user would.
#include "support/program.hpp"
#include "support/temporary_directory.hpp"

#include <gtest/gtest.h>

#include <chrono>
#include <fstream>
#include <string>
#include <thread>

namespace {

using test_support::program_result;

program_result run_example(const std::string& arguments) {
    return test_support::run_program("'" TOVA_EXAMPLE_PROGRAM "' " + arguments);
}

TEST(TailExample, FollowsItsOwnLogPastAnError) {
    const program_result result = run_example("");
    EXPECT_EQ(0, result.exit_code);
    EXPECT_EQ("begin log, host is one\n"
              "entry in line 3, level is info: service started\n"
              "entry in line 4, level is info: listening on port 80\n"
              "error 5 in line 5\n"
              "entry in line 5, level is info: going on\n"
              "end log\n",
              result.output);
}

TEST(TailExample, FollowsAFileWhileItIsWritten) {
    const test_support::temporary_directory directory;
    const std::string path = directory.write("log.xml", "");
    std::thread writer([&path] {
        std::ofstream file(path, std::ios::binary);
        for (const char* piece :
             {"<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n", "<log><en", "try n='1", "'>one ",
              "&amp; only</entry", "><entry n='", "2'/", ">", "</log>"}) {
            file << piece << std::flush;
            std::this_thread::sleep_for(std::chrono::milliseconds(30));
        }
    });
    const program_result result = run_example("'" + path + "' entry");
    writer.join();
    EXPECT_EQ(0, result.exit_code);
    EXPECT_EQ("begin log\n"
              "entry in line 2, n is 1: one & only\n"
              "entry in line 2, n is 2\n"
              "end log\n",
              result.output);
}

TEST(TailExample, EndsAtTheRootsEndTagWhateverFollowsItsName) {
    const test_support::temporary_directory directory;
    for (const std::string end : {"</log>", "</log ", "</log x>", "</log x><y"}) {
        SCOPED_TRACE(end);
        const std::string path = directory.write(
            "log.xml", "<?xml version='1.0' encoding='UTF-8'?>\n<log><entry/>" + end);
        const program_result result = run_example("'" + path + "' entry");
        EXPECT_EQ(0, result.exit_code);
        EXPECT_EQ("begin log\nentry in line 2\nend log\n", result.output);
    }
}

TEST(TailExample, GivesUpIfThereIsNothingToFollow) {
    const test_support::temporary_directory directory;
    program_result result = run_example("'" + directory.path("missing.xml") + "'");
    EXPECT_EQ(1, result.exit_code);
    EXPECT_EQ("error 11 in line 1\n", result.output);

    const std::string text = directory.write("text.xml", std::string(60, 'x'));
    result = run_example("'" + text + "' entry");
    EXPECT_EQ(1, result.exit_code);
    EXPECT_EQ("error 12 in line 1\n", result.output);

    const std::string bad = directory.write(
        "bad.xml", "<?xml version='1.0' encoding='UTF-8'?><log><entry></log><entry/></log>");
    result = run_example("'" + bad + "'");
    EXPECT_EQ(1, result.exit_code);
    EXPECT_EQ("begin log\nerror 4 in line 1\n", result.output);
    result = run_example("'" + bad + "' entry");
    EXPECT_EQ(0, result.exit_code);
    EXPECT_EQ("begin log\nerror 4 in line 1\nentry in line 1\nend log\n", result.output);
}

}  // namespace
