#include "support/line_diff.hpp"

#include "support/temporary_directory.hpp"

#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <random>
#include <sstream>
#include <string>

using namespace tova_programs;

namespace {

std::string diff(const std::string& before, const std::string& after) {
    std::ostringstream out;
    write_line_diff(out, before, after, "a", "b", style());
    return out.str();
}

std::string random_lines(std::mt19937& random) {
    std::string text;
    for (auto i = random() % 12; i != 0; --i)
        text += std::string(1, static_cast<char>('a' + random() % 4)) + "\n";
    if (!text.empty() && random() % 5 == 0)
        text.pop_back();
    return text;
}

}  // namespace

TEST(LineDiff, IsEmptyForEqualTexts) {
    EXPECT_EQ("", diff("a\nb\n", "a\nb\n"));
    EXPECT_EQ("", diff("", ""));
}

TEST(LineDiff, ShowsThreeLinesAroundAChange) {
    EXPECT_EQ("--- a\n+++ b\n@@ -2,7 +2,7 @@\n 2\n 3\n 4\n-5\n+x\n 6\n 7\n 8\n",
              diff("1\n2\n3\n4\n5\n6\n7\n8\n9\n", "1\n2\n3\n4\nx\n6\n7\n8\n9\n"));
}

TEST(LineDiff, MarksALastLineWithoutItsEnd) {
    EXPECT_EQ("--- a\n+++ b\n@@ -1 +1 @@\n-a\n+a\n\\ No newline at end of file\n",
              diff("a\n", "a"));
}

TEST(LineDiff, ShowsAFileThatIsNewOrEmptied) {
    EXPECT_EQ("--- a\n+++ b\n@@ -0,0 +1,2 @@\n+a\n+b\n", diff("", "a\nb\n"));
    EXPECT_EQ("--- a\n+++ b\n@@ -1 +0,0 @@\n-a\n", diff("a\n", ""));
}

// The format is that of patch(1), which turns the one text into the other.
TEST(LineDiff, IsAPatchFromTheOneTextToTheOther) {
    if (std::system("patch --version >/dev/null 2>&1") != 0)
        GTEST_SKIP() << "patch is not installed";
    std::mt19937 random(7);
    const test_support::temporary_directory folder;
    for (int i = 0; i < 100; ++i) {
        const std::string before = random_lines(random);
        const std::string after = random_lines(random);
        if (before == after)
            continue;
        SCOPED_TRACE(before + "->\n" + after);
        const std::string file = folder.write("file", before);
        const std::string patch = folder.write("patch", diff(before, after));
        ASSERT_EQ(0, std::system(("patch -s -u '" + file + "' '" + patch + "'").c_str()));
        std::FILE* const exists = std::fopen(file.c_str(), "r");  // patch removes an emptied file
        if (exists != nullptr)
            std::fclose(exists);
        EXPECT_EQ(after, exists == nullptr ? "" : test_support::read_bytes(file));
    }
}
