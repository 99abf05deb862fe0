// Runs the code blocks of one guide, each in its own process and directory, and compares their
// output with the guide.
#include "docs/page.hpp"
#include "support/child_process.hpp"
#include "support/temporary_directory.hpp"

#include <gtest/gtest.h>

namespace {

using docs_test::snippet;
using test_support::child_result;

child_result run(const snippet& code) {
    const test_support::temporary_directory directory;
    for (const docs_test::file& one : docs_test::files)
        directory.write(one.name, one.text);

    test_support::child_limits limits;
    if (code.is_hazard) {
        limits.cpu_seconds = 2;
        limits.address_space_bytes = std::size_t(1) << 29;
    }
    const auto body = [&] {
        if (chdir(directory.path().c_str()) != 0)
            _exit(98);
        code.run();
        std::cout.flush();
    };
    return test_support::run_in_child(body, limits);
}

// A page cannot show the spaces at the end of a line.
std::string without_trailing_spaces(const std::string& text) {
    std::string result;
    for (const char byte : text) {
        if (byte == '\n')
            result.erase(result.find_last_not_of(' ') + 1);
        result += byte;
    }
    return result;
}

std::string place(const snippet& code) {
    return std::string("docs/") + docs_test::page_name + ":" + std::to_string(code.line);
}

TEST(Page, ShowsTheRealOutputOfItsCode) {
    int checked = 0;
    for (const snippet& code : docs_test::snippets) {
        SCOPED_TRACE(place(code));
        if (code.is_hazard)
            continue;
        const child_result result = run(code);
        EXPECT_TRUE(result.exited);
        EXPECT_EQ(0, result.exit_code);
        EXPECT_EQ(without_trailing_spaces(code.output), without_trailing_spaces(result.output));
        ++checked;
    }
    EXPECT_GT(checked, 0);
}

TEST(Page, MarksCodeThatDoesNotEndNormallyAsAHazard) {
    for (const snippet& code : docs_test::snippets) {
        SCOPED_TRACE(place(code));
        if (code.is_hazard) {
            const child_result result = run(code);
            EXPECT_FALSE(result.exited && result.exit_code == 0) << result.output;
        }
    }
}

}  // namespace
