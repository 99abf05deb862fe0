#include "support/text_file.hpp"

#include "support/temporary_directory.hpp"

#include <gtest/gtest.h>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <string>

using namespace tova_programs;
using test_support::temporary_directory;

TEST(LineIndex, CountsLinesAndBytesFromOne) {
    const std::string text = "ab\n\ncd\r\ne";
    const line_index lines(text);
    EXPECT_EQ(4u, lines.count());
    const struct {
        std::size_t offset, line, column;
    } cases[] = {{0, 1, 1}, {2, 1, 3}, {3, 2, 1}, {4, 3, 1}, {7, 3, 4}, {8, 4, 1}, {9, 4, 2}};
    for (const auto& c : cases) {
        SCOPED_TRACE(c.offset);
        EXPECT_EQ(c.line, lines.at(c.offset).line);
        EXPECT_EQ(c.column, lines.at(c.offset).column);
    }
    EXPECT_EQ("ab", lines.line(1));
    EXPECT_EQ("", lines.line(2));
    EXPECT_EQ("cd", lines.line(3));
    EXPECT_EQ("e", lines.line(4));
    EXPECT_EQ("", lines.line(5));
}

TEST(WriteFile, ReplacesTheContentAndKeepsPermissionsAndLinks) {
    const temporary_directory folder;
    const std::string file = folder.write("file", "old");
    chmod(file.c_str(), 0640);
    const std::string link = folder.path("link");
    ASSERT_EQ(0, symlink("file", link.c_str()));
    write_file(link, std::string("new\0text", 8));
    EXPECT_EQ(std::string("new\0text", 8), read_file(file));
    struct stat status;
    ASSERT_EQ(0, lstat(link.c_str(), &status));
    EXPECT_TRUE(S_ISLNK(status.st_mode));
    ASSERT_EQ(0, stat(file.c_str(), &status));
    EXPECT_EQ(0640u, status.st_mode & 07777u);
    write_file(folder.path("fresh"), "x");
    EXPECT_EQ("x", read_file(folder.path("fresh")));
}

TEST(Files, ThatCannotBeReadOrWrittenRaiseTheirNameAndTheReason) {
    const temporary_directory folder;
    const auto reason = [](auto action) {
        try {
            action();
        } catch (const file_error& error) {
            return std::string(error.what());
        }
        return std::string();
    };
    const std::string missing = folder.path("no/file");
    EXPECT_EQ(missing + ": No such file or directory", reason([&] { read_file(missing); }));
    EXPECT_EQ(missing + ": No such file or directory", reason([&] { write_file(missing, ""); }));
    EXPECT_EQ(folder.path() + ": Is a directory", reason([&] { read_file(folder.path()); }));
}

TEST(ReadFile, ReadsFilesWithoutASize) {
    EXPECT_FALSE(read_file("/proc/self/status").empty());
}

TEST(WriteFile, WritesToAPipeAndLeavesItThere) {
    const temporary_directory folder;
    const std::string pipe = folder.path("pipe");
    ASSERT_EQ(0, mkfifo(pipe.c_str(), 0600));
    const int reader = open(pipe.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
    ASSERT_GE(reader, 0);
    write_file(pipe, "text");
    char buffer[8] = {};
    EXPECT_EQ(4, read(reader, buffer, sizeof buffer));
    EXPECT_STREQ("text", buffer);
    close(reader);
    struct stat status;
    ASSERT_EQ(0, stat(pipe.c_str(), &status));
    EXPECT_TRUE(S_ISFIFO(status.st_mode));
}
