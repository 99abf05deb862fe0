// Runs every program of examples/tour as a user would and compares its output.
#include "support/guide.hpp"
#include "support/program.hpp"
#include "support/temporary_directory.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <sstream>
#include <string>
#include <vector>

namespace {

using test_support::program_result;

std::vector<std::string> tour() {
    std::vector<std::string> names;
    std::istringstream list(TOVA_TOUR);
    for (std::string name; std::getline(list, name, ',');)
        names.push_back(name);
    return names;
}

class TourExample : public ::testing::TestWithParam<std::string> {
protected:
    // Each program runs in its own empty directory, with an empty environment. LLVM_PROFILE_FILE is
    // kept if it is set: a library that is built for coverage writes its counters there.
    program_result run(const std::string& arguments) const {
        return test_support::run_program(
            "cd '" + m_directory.path() +
            "' && env -i ${LLVM_PROFILE_FILE:+\"LLVM_PROFILE_FILE=$LLVM_PROFILE_FILE\"} '" +
            TOVA_EXAMPLES "/tour/tova_example_tour_" + GetParam() + "' " + arguments);
    }

    bool directory_is_empty() const {
        return test_support::run_program("ls -A '" + m_directory.path() + "'").output.empty();
    }

private:
    test_support::temporary_directory m_directory;
};

TEST_P(TourExample, PrintsItsStoredOutputAndLeavesNoFile) {
    const program_result result = run("");
    EXPECT_EQ(0, result.exit_code);
    EXPECT_EQ(test_support::read_bytes(TOVA_TEST_DATA "/examples/" + GetParam() + ".txt"),
              result.output);
    EXPECT_TRUE(directory_is_empty());
}

TEST_P(TourExample, DocumentsItsUsageAndExitStatus) {
    const program_result result = run("--help");
    EXPECT_EQ(0, result.exit_code);
    EXPECT_THAT(result.output, ::testing::StartsWith("usage: " + GetParam() + "\n"));
    EXPECT_THAT(result.output, ::testing::HasSubstr("\nExit status: 0"));
    EXPECT_TRUE(directory_is_empty());
}

TEST_P(TourExample, HasAtMostEightyLines) {
    const std::string source = test_support::read_bytes(
        test_support::project_path("examples/tour/" + GetParam() + ".cpp"));
    EXPECT_LE(std::count(source.begin(), source.end(), '\n'), 80);
}

INSTANTIATE_TEST_SUITE_P(Programs, TourExample, ::testing::ValuesIn(tour()),
                         [](const ::testing::TestParamInfo<std::string>& name) {
                             return name.param;
                         });

TEST(TourExample, HasAtLeastTwentyPrograms) {
    EXPECT_GE(tour().size(), 20u);
}

}  // namespace
