#include <tova/strings/gh2.hpp>

#include "support/child_process.hpp"
#include "support/failing_allocation.hpp"

#include <gtest/gtest.h>

#include <csignal>
#include <iostream>
#include <new>
#include <string>

namespace {

namespace gh2 = tova::strings::gh2;

// The state that a static object of a program sees while the program is being loaded.
std::istream* const in_at_load = &gh2::ucin;
std::ostream* const out_at_load = &gh2::ucout;
std::ostream* const error_at_load = &gh2::ucerr;

TEST(Gh2Streams, AreTheStandardStreamsFromLoadTimeOn) {
    EXPECT_EQ(&std::cin, in_at_load);
    EXPECT_EQ(&std::cout, out_at_load);
    EXPECT_EQ(&std::cerr, error_at_load);
    EXPECT_EQ(&std::cout, &gh2::ucout);
}

TEST(Gh2Streams, WriteToTheStandardStreams) {
    const auto result = test_support::run_in_child([] {
        gh2::ucout << "out " << std::flush;
        gh2::ucerr << "err";
    });
    EXPECT_EQ("out err", result.output);
}

TEST(Gh2Case, MapsPlainStrings) {
    EXPECT_EQ(std::string("abc \0 \xC3\x89", 8), gh2::tolower(std::string("AbC \0 \xC3\x89", 8)));
    EXPECT_EQ("ABC 1", gh2::toupper("AbC 1"));
    EXPECT_EQ("", gh2::tolower(""));
    EXPECT_EQ("", gh2::toupper(""));
}

// The character set of the locale that a process starts with is ASCII.
TEST(Gh2Ansi, ConvertsToTheCharacterSetOfTheLocale) {
    EXPECT_EQ("plain", gh2::to_ansi("plain"));
    EXPECT_EQ("caf??", gh2::to_ansi("caf\xC3\xA9"));
    EXPECT_EQ("plain", gh2::from_ansi("plain"));
    EXPECT_EQ("caf?", gh2::from_ansi("caf\xE9"));
    EXPECT_EQ("", gh2::to_ansi(""));
    EXPECT_EQ("", gh2::from_ansi(""));
}

TEST(Gh2ReplaceAll, LoopsForeverOnAnEmptySearchAndReplacement) {
    test_support::child_limits limits;
    limits.cpu_seconds = 1;
    const auto result = test_support::run_in_child(
        [] {
            std::string text = "abc";
            std::cout << gh2::replace_all(text, "", "") << " returned" << std::flush;
        },
        limits);
    EXPECT_FALSE(result.exited);
    EXPECT_TRUE(result.signal == SIGXCPU || result.signal == SIGKILL) << result.signal;
    EXPECT_EQ("", result.output);
}

TEST(Gh2ReplaceAll, GrowsTheStringForAnEmptySearchUntilMemoryRunsOut) {
    std::string text = "abc";
    const std::string replacement(4096, 'x');
    const test_support::failing_allocation last(9);  // after nine that double the capacity
    EXPECT_THROW(gh2::replace_all(text, "", replacement), std::bad_alloc);
    EXPECT_TRUE(last.failed());
    EXPECT_LT(std::size_t(1) << 20, text.size());
    EXPECT_EQ(3u, text.size() % 4096);
    EXPECT_EQ("xabc", text.substr(text.size() - 4));
    EXPECT_EQ(text.size() - 3, text.find_first_not_of('x'));
}

TEST(Gh2Utf8Length, DependsOnlyOnTheFirstByte) {
    for (unsigned value = 0; value < 0x100; ++value) {
        const unsigned char byte = static_cast<unsigned char>(value);
        const char character = static_cast<char>(byte);
        const unsigned long expected = value < 0x80    ? 1
                                       : value < 0xC0  ? 0
                                       : value < 0xE0  ? 2
                                       : value < 0xF0  ? 3
                                       : value <= 0xF7 ? 4
                                                       : 0;
        SCOPED_TRACE(value);
        EXPECT_EQ(expected, gh2::get_utf8_length(&byte, 1));
        EXPECT_EQ(expected, gh2::get_utf8_length(&character, 1));
    }
}

TEST(Gh2Utf8Length, OfNoBytesIsZero) {
    EXPECT_EQ(0u, gh2::get_utf8_length("a", 0));
    EXPECT_EQ(0u, gh2::get_utf8_length(static_cast<const char*>(nullptr), 1));
    EXPECT_EQ(0u, gh2::get_utf8_length(static_cast<const unsigned char*>(nullptr), 1));
    EXPECT_EQ(0u, gh2::get_utf8_length(static_cast<const char*>(nullptr), 0));
}

TEST(Gh2ValidateUtf8, ChecksOnlyTheFirstSequence) {
    const struct {
        const char* bytes;
        unsigned long size;
        bool expected;
    } cases[] = {
        {"", 0, false},
        {"a", 1, true},
        {"\x7F", 1, true},
        {"\0", 1, true},
        {"a\xFF", 2, true},
        {"\x80", 1, false},
        {"\xBF", 1, false},
        {"\xC3\xA9", 2, true},
        {"\xC3\xA9", 1, false},
        {"\xC3(", 2, false},
        {"\xC3\xC3", 2, false},
        {"\xC0\x80", 2, true},
        {"\xE2\x82", 2, false},
        {"\xE2\x82\xAC", 3, true},
        {"\xE2\x82\xAC", 2, false},
        {"\xE2(\xAC", 3, false},
        {"\xE2\x82(", 3, false},
        {"\xED\xA0\x80", 3, true},
        {"\xF0\x9F\x98\x80", 4, true},
        {"\xF0\x9F\x98\x80", 3, false},
        {"\xF0\x9F\x98(", 4, false},
        {"\xF7\xBF\xBF\xBF", 4, true},
        {"\xF8\x88\x80\x80\x80", 5, false},
        {"\xFF", 1, false},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(::testing::PrintToString(c.bytes));
        SCOPED_TRACE(c.size);
        EXPECT_EQ(c.expected, gh2::validate_utf8(c.bytes, c.size));
        EXPECT_EQ(c.expected,
                  gh2::validate_utf8(reinterpret_cast<const unsigned char*>(c.bytes), c.size));
    }
    EXPECT_FALSE(gh2::validate_utf8(static_cast<const char*>(nullptr), 1));
    EXPECT_FALSE(gh2::validate_utf8(static_cast<const unsigned char*>(nullptr), 1));
}

TEST(Gh2ValidateUtf8, WalksAWholeStringTogetherWithTheLength) {
    const std::string text = "a\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80";
    std::size_t at = 0;
    int characters = 0;
    for (; at < text.size() && gh2::validate_utf8(text.data() + at, text.size() - at); ++characters)
        at += gh2::get_utf8_length(text.data() + at, text.size() - at);
    EXPECT_EQ(text.size(), at);
    EXPECT_EQ(4, characters);
}

}  // namespace
