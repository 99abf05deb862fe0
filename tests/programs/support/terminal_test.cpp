#include "support/terminal.hpp"

#include <gtest/gtest.h>

#include <unistd.h>

#include <cstdlib>
#include <string>

using namespace tova_programs;

TEST(DisplayWidth, CountsWideAndCombiningCharacters) {
    const struct {
        std::string text;
        std::size_t width;
    } cases[] = {
        {"", 0},
        {"abc", 3},
        {"\xC3\xA4", 1},
        {"e\xCC\x81", 1},                 // a combining accent
        {"\xE6\x97\xA5", 2},              // wide
        {"\xF0\x9F\x98\x80", 2},          // a picture
        {"\xF0\x90\x90\x80", 1},          // four bytes, one column
        {"\xE0\xB8\x81\xE0\xB8\xB4", 1},  // a Thai letter with a vowel above it
        {"\xFF\x80", 2},                  // invalid bytes
        {"\xE6\x97", 2},                  // cut
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.text);
        EXPECT_EQ(c.width, display_width(c.text));
    }
}

TEST(Colors, AreUsedOnATerminalOnly) {
    int ends[2];
    ASSERT_EQ(0, pipe(ends));
    EXPECT_FALSE(use_colors(color_mode::automatic, ends[1]));
    EXPECT_TRUE(use_colors(color_mode::always, ends[1]));
    EXPECT_FALSE(use_colors(color_mode::never, ends[1]));
    close(ends[0]);
    close(ends[1]);
    EXPECT_EQ("\x1b[1;31mx\x1b[0m", style(true).red("x"));
    EXPECT_EQ("x", style(false).red("x"));
}

TEST(Colors, AreRefusedByTheEnvironment) {
    const int terminal = posix_openpt(2 /* O_RDWR */);
    if (terminal < 0 || isatty(terminal) == 0)
        GTEST_SKIP() << "there is no pseudo-terminal";
    setenv("TERM", "xterm", 1);
    unsetenv("NO_COLOR");
    EXPECT_TRUE(use_colors(color_mode::automatic, terminal));
    setenv("NO_COLOR", "", 1);
    EXPECT_TRUE(use_colors(color_mode::automatic, terminal));
    setenv("NO_COLOR", "1", 1);
    EXPECT_FALSE(use_colors(color_mode::automatic, terminal));
    EXPECT_TRUE(use_colors(color_mode::always, terminal));
    unsetenv("NO_COLOR");
    setenv("TERM", "dumb", 1);
    EXPECT_FALSE(use_colors(color_mode::automatic, terminal));
    close(terminal);
}

TEST(TerminalWidth, ComesFromTheEnvironmentFirst) {
    setenv("COLUMNS", "57", 1);
    EXPECT_EQ(57u, terminal_width(STDOUT_FILENO, 80));
    unsetenv("COLUMNS");
    int ends[2];
    ASSERT_EQ(0, pipe(ends));
    EXPECT_EQ(80u, terminal_width(ends[1], 80));
    close(ends[0]);
    close(ends[1]);
}
