// Runs the program that ./run demo starts with.
#include "support/program.hpp"
#include "support/temporary_directory.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <string>

namespace {

using test_support::program_result;
using ::testing::HasSubstr;
using ::testing::Not;

program_result run_demo(const std::string& environment, const std::string& arguments) {
    const test_support::temporary_directory directory;
    return test_support::run_program("cd '" + directory.path() + "' && env -i " + environment +
                                     " '" TOVA_EXAMPLES "/demo/tova_example_demo' " + arguments);
}

TEST(DemoExample, PrintsItsStoredOutputInFewerThanSixtyLines) {
    const program_result result = run_demo("HOME=/home/mia", "-backup.keep=30");
    EXPECT_EQ(0, result.exit_code);
    EXPECT_EQ(test_support::read_bytes(TOVA_TEST_DATA "/examples/demo.txt"), result.output);
    EXPECT_LT(std::count(result.output.begin(), result.output.end(), '\n'), 60);
}

TEST(DemoExample, ColorsItsOutputOnlyIfAskedTo) {
    EXPECT_THAT(run_demo("", "").output, Not(HasSubstr("\033[")));  // a pipe is not a terminal
    EXPECT_THAT(run_demo("", "--color=never").output, Not(HasSubstr("\033[")));
    EXPECT_THAT(run_demo("", "--color=always").output, HasSubstr("\033[1;36m"));
    EXPECT_THAT(run_demo("NO_COLOR=1", "--color=always").output, HasSubstr("\033[1;36m"));
}

TEST(DemoExample, ObeysNoColorOnATerminal) {
    // script(1) runs the program in a terminal.
    const std::string demo = "script -qec '" TOVA_EXAMPLES "/demo/tova_example_demo' /dev/null";
    const test_support::temporary_directory directory;
    const std::string start = "cd '" + directory.path() + "' && env -i PATH=\"$PATH\" ";
    EXPECT_THAT(test_support::run_program(start + demo).output, HasSubstr("\033[1;36m"));
    EXPECT_THAT(test_support::run_program(start + "NO_COLOR=1 " + demo).output,
                Not(HasSubstr("\033[")));
    EXPECT_THAT(test_support::run_program(start + "NO_COLOR= " + demo).output,
                HasSubstr("\033[1;36m"));
}

TEST(DemoExample, RejectsAnUnknownColorChoice) {
    const program_result result = run_demo("", "--color=sometimes");
    EXPECT_EQ(2, result.exit_code);
    EXPECT_THAT(result.output, HasSubstr("usage: "));
}

TEST(DemoExample, DocumentsItsOptionsAndExitStatus) {
    const program_result result = run_demo("", "--help");
    EXPECT_EQ(0, result.exit_code);
    EXPECT_THAT(result.output, HasSubstr("Exit status: 0"));
}

TEST(DemoExample, ReportsThatTheLogCannotBeWritten) {
    const program_result result =
        test_support::run_program("cd /proc && env -i '" TOVA_EXAMPLES "/demo/tova_example_demo'");
    EXPECT_EQ(1, result.exit_code);
    EXPECT_THAT(result.output, HasSubstr("cannot write backup.log.xml"));
}

}  // namespace
