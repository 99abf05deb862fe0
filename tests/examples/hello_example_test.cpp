// Runs the program that the README shows.
#include "support/guide.hpp"
#include "support/program.hpp"
#include "support/temporary_directory.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

namespace {

using test_support::program_result;

program_result run_hello(const std::string& directory, const std::string& arguments) {
    return test_support::run_program("cd '" + test_support::project_path(directory) +
                                     "' && '" TOVA_EXAMPLES "/hello/tova_example_hello' " +
                                     arguments);
}

TEST(HelloExample, RendersItsMessageInTheRequestedLanguage) {
    const struct {
        const char* arguments;
        const char* output;
    } cases[] = {
        {"", "Maria uploaded 48.3 GB in 1h 2m 5.50s.\n"},
        {"de_AT", "Maria hat 48.3 GB in 1h 2m 5.50s hochgeladen.\n"},
        {"it", "Maria uploaded 48.3 GB in 1h 2m 5.50s.\n"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.arguments);
        const program_result result = run_hello("examples/hello", c.arguments);
        EXPECT_EQ(0, result.exit_code);
        EXPECT_EQ(c.output, result.output);
    }
}

TEST(HelloExample, IsTheProgramOfTheReadme) {
    const std::string readme = test_support::read_bytes(test_support::project_path("README.md"));
    for (const std::string name : {"main.cpp", "catalogs/report.xmc"}) {
        const std::string source =
            test_support::read_bytes(test_support::project_path("examples/hello/" + name));
        EXPECT_THAT(readme, ::testing::HasSubstr("\n" + source + "```\n")) << name;
    }
    EXPECT_THAT(readme,
                ::testing::HasSubstr("```output\n" + run_hello("examples/hello", "").output +
                                     run_hello("examples/hello", "de_AT").output + "```\n"));
}

TEST(HelloExample, ReportsMissingCatalogs) {
    const program_result result = run_hello("examples", "");
    EXPECT_EQ(1, result.exit_code);
    EXPECT_THAT(result.output, ::testing::HasSubstr("\"catalogs\" was not found on disk"));
}

TEST(HelloExample, DocumentsItsUsageAndExitStatus) {
    const program_result result = run_hello("examples/hello", "--help");
    EXPECT_EQ(0, result.exit_code);
    EXPECT_THAT(result.output, ::testing::StartsWith("usage: hello"));
    EXPECT_THAT(result.output, ::testing::HasSubstr("Exit status: 0"));
}

}  // namespace
