// Runs the example that follows a file as a user does, and holds the guide to its code.

#include <sys/wait.h>

#include <chrono>
#include <cstdio>
#include <fstream>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/temporary_directory.hpp"

namespace {

struct run_result {
    int exit_code;
    std::string output;
};

run_result run_example(const std::string& arguments) {
    run_result result = {-1, ""};
    FILE* const pipe = ::popen(("'" TOVA_EXAMPLE_PROGRAM "' " + arguments + " 2>&1").c_str(), "r");
    if (pipe == nullptr)
        return result;
    char piece[4096];
    for (std::size_t size; (size = std::fread(piece, 1, sizeof piece, pipe)) != 0;)
        result.output.append(piece, size);
    const int status = ::pclose(pipe);
    result.exit_code = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    return result;
}

TEST(TailExample, FollowsItsOwnLogAcrossAFault) {
    const run_result result = run_example("");
    EXPECT_EQ(0, result.exit_code);
    EXPECT_EQ("begin log, host is one\n"
              "entry in line 3, level is info: service started\n"
              "entry in line 4, level is info: listening on port 80\n"
              "fault 5 in line 5\n"
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
    const run_result result = run_example("'" + path + "' entry");
    writer.join();
    EXPECT_EQ(0, result.exit_code);
    EXPECT_EQ("begin log\n"
              "entry in line 2, n is 1: one & only\n"
              "entry in line 2, n is 2\n"
              "end log\n",
              result.output);
}

TEST(TailExample, EndsWithTheRootsNameWhateverBecomesOfItsTag) {
    const test_support::temporary_directory directory;
    for (const std::string end : {"</log>", "</log ", "</log x>", "</log x><y"}) {
        SCOPED_TRACE(end);
        const std::string path = directory.write(
            "log.xml", "<?xml version='1.0' encoding='UTF-8'?>\n<log><entry/>" + end);
        const run_result result = run_example("'" + path + "' entry");
        EXPECT_EQ(0, result.exit_code);
        EXPECT_EQ("begin log\nentry in line 2\nend log\n", result.output);
    }
}

TEST(TailExample, GivesUpWhereThereIsNothingToFollow) {
    const test_support::temporary_directory directory;
    run_result result = run_example("'" + directory.path("missing.xml") + "'");
    EXPECT_EQ(1, result.exit_code);
    EXPECT_EQ("fault 11 in line 1\n", result.output);

    const std::string text = directory.write("text.xml", std::string(60, 'x'));
    result = run_example("'" + text + "' entry");
    EXPECT_EQ(1, result.exit_code);
    EXPECT_EQ("fault 12 in line 1\n", result.output);

    const std::string bad = directory.write(
        "bad.xml", "<?xml version='1.0' encoding='UTF-8'?><log><entry></log><entry/></log>");
    result = run_example("'" + bad + "'");
    EXPECT_EQ(1, result.exit_code);
    EXPECT_EQ("begin log\nfault 4 in line 1\n", result.output);
    result = run_example("'" + bad + "' entry");
    EXPECT_EQ(0, result.exit_code);
    EXPECT_EQ("begin log\nfault 4 in line 1\nentry in line 1\nend log\n", result.output);
}

TEST(StreamParserGuide, ShowsTheCodeOfTheExample) {
    const std::string code = test_support::read_bytes(TOVA_EXAMPLE_SOURCE);
    std::istringstream guide(test_support::read_bytes(TOVA_STREAM_PARSER_GUIDE));
    std::vector<std::string> blocks;
    bool is_inside = false;
    for (std::string line; std::getline(guide, line);) {
        if (line == "```cpp")
            blocks.emplace_back();
        else if (line != "```" && is_inside)
            blocks.back() += line + "\n";
        if (line.compare(0, 3, "```") == 0)
            is_inside = !is_inside;
    }
    EXPECT_FALSE(is_inside) << "a fence is not closed";
    ASSERT_EQ(2u, blocks.size());
    for (const auto& block : blocks)
        EXPECT_THAT(code, testing::HasSubstr(block));
}

}  // namespace
