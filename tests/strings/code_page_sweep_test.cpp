// Compares long strings in each code page with plain loops around iconv: every byte and pair of
// bytes, every code point, every truncated sequence, and random strings of all these. The strings
// are long because short ones are converted by iconv alone.
#include <tova/strings/code_page.hpp>

#include "strings/code_page_oracle.hpp"

#include <gtest/gtest.h>

#include <array>
#include <random>
#include <string>
#include <thread>
#include <vector>

namespace {

using code_page_oracle::convert;
using code_page_oracle::descriptor;
using tova::strings::code_page;
using tova::strings::ustring8;

const std::string utf8("UTF-8");

std::string a_run(std::size_t size) {
    return std::string(size, 'a');
}

// The structure of UTF-8 for any value of up to 21 bits: including surrogates and values above
// U+10FFFF.
std::string sequence(unsigned int point) {
    const auto byte = [](unsigned int value) { return static_cast<char>(value); };
    if (point < 0x80)
        return {byte(point)};
    if (point < 0x800)
        return {byte(0xC0 | point >> 6), byte(0x80 | (point & 0x3F))};
    if (point < 0x10000)
        return {byte(0xE0 | point >> 12), byte(0x80 | (point >> 6 & 0x3F)),
                byte(0x80 | (point & 0x3F))};
    return {byte(0xF0 | point >> 18), byte(0x80 | (point >> 12 & 0x3F)),
            byte(0x80 | (point >> 6 & 0x3F)), byte(0x80 | (point & 0x3F))};
}

class CodePageSweep : public ::testing::TestWithParam<int> {
protected:
    const code_page page{static_cast<code_page::encoding_type>(GetParam())};
    const std::string name{page.to_system_type(page.type())};

    void expect_decoded(const std::string& text) const {
        ASSERT_EQ(convert(utf8, name, text), static_cast<const std::string&>(page.as_utf8(text)));
    }
    void expect_encoded(const std::string& text) const {
        ASSERT_EQ(convert(name, utf8, text), page.encode(ustring8(text)));
    }
};

TEST_P(CodePageSweep, DecodesEveryPairOfBytes) {
    for (int lead = 0; lead < 256; ++lead) {
        SCOPED_TRACE(lead);
        std::string text = a_run(4096);
        for (int trail = 0; trail < 256; ++trail)
            text += {static_cast<char>(lead), static_cast<char>(trail), 'a', 'b'};
        ASSERT_NO_FATAL_FAILURE(expect_decoded(text));
    }
}

TEST_P(CodePageSweep, DecodesRunsOfOneByte) {
    for (int byte = 0; byte < 256; ++byte) {
        SCOPED_TRACE(byte);
        ASSERT_NO_FATAL_FAILURE(expect_decoded(std::string(4097, static_cast<char>(byte))));
    }
}

TEST_P(CodePageSweep, DecodesStringsThatEndWithinACharacter) {
    for (int lead = 0x80; lead < 256; ++lead) {
        SCOPED_TRACE(lead);
        for (std::size_t size = 4096; size < 4100; ++size) {
            const std::string cut = a_run(size) + static_cast<char>(lead);
            ASSERT_NO_FATAL_FAILURE(expect_decoded(cut));
            // The output is full, or nearly full, when the end is reached.
            ASSERT_NO_FATAL_FAILURE(expect_decoded(std::string(size, '\xE0') + cut));
        }
    }
}

// Converts one character at a time, because a loop around iconv takes time quadratic in the number
// of characters that the page lacks. Each of these becomes one "?" for each of its bytes.
TEST_P(CodePageSweep, EncodesEveryCodePoint) {
    const descriptor handle(name, utf8);
    const unsigned int block = 0x4000;
    for (unsigned int first = 0; first < 0x200000; first += block) {
        SCOPED_TRACE(first);
        std::string text, expected;
        for (unsigned int point = first; point < first + block; ++point) {
            std::string one = sequence(point);
            text += one;
            std::array<char, 16> result;
            char* from = &one[0];
            char* to = result.data();
            std::size_t left = one.size(), room = result.size();
            // A page that composes letters may hold a character back.
            const bool done =
                iconv(handle, &from, &left, &to, &room) != static_cast<std::size_t>(-1);
            expected.append(result.data(), to);
            if (!done) {
                ASSERT_EQ(EILSEQ, errno) << point;
                expected += std::string(left, '?');
            }
        }
        ASSERT_EQ(expected, page.encode(ustring8(text)));
    }
}

TEST_P(CodePageSweep, EncodesInvalidSequences) {
    std::string text = a_run(4096);
    for (int first = 0x80; first < 256; ++first)
        for (const int second : {0x00, 0x41, 0x7F, 0x80, 0x8F, 0x90, 0x9F, 0xA0, 0xBF, 0xC0, 0xFF})
            for (const char* rest : {"", "\x80", "\x80\x80", "\xBF\xBF", "a"})
                text += std::string{static_cast<char>(first), static_cast<char>(second)} + rest;
    ASSERT_NO_FATAL_FAILURE(expect_encoded(text));
}

TEST_P(CodePageSweep, EncodesStringsThatEndWithinACharacter) {
    for (const unsigned int point : {0xE9u, 0x42Fu, 0x20ACu, 0x3042u, 0xFFFDu, 0x1F600u, 0xE0041u})
        for (std::size_t size = 4090; size < 4100; ++size)
            for (std::size_t cut = 1; cut < sequence(point).size(); ++cut) {
                SCOPED_TRACE(testing::Message() << point << " " << size << " " << cut);
                ASSERT_NO_FATAL_FAILURE(
                    expect_encoded(a_run(size) + sequence(point).substr(0, cut)));
                ASSERT_NO_FATAL_FAILURE(
                    expect_encoded(sequence(point) + a_run(size) + sequence(point).substr(0, cut)));
            }
}

// Characters that the page has, some that it lacks, and raw bytes.
TEST_P(CodePageSweep, ConvertsStringsAtRandom) {
    std::mt19937 engine(static_cast<unsigned>(GetParam()));
    const auto random = [&] { return static_cast<unsigned int>(engine()); };
    const int percent_unusual[] = {0, 0, 1, 5};
    for (int round = 0; round < 24; ++round) {
        SCOPED_TRACE(round);
        std::string bytes, text;
        const std::size_t size = 4000 + random() % 2000;
        const unsigned first = random() % 2 ? 0xA0 : 0x30;
        while (bytes.size() < size) {
            if (static_cast<int>(random() % 100) < percent_unusual[round % 4])
                bytes += static_cast<char>(random());
            bytes += static_cast<char>(first + random() % (0x100 - first));
        }
        ASSERT_NO_FATAL_FAILURE(expect_decoded(bytes));
        const std::string decoded = convert(utf8, name, bytes);
        while (text.size() < size) {
            text += decoded.substr(random() % decoded.size(), random() % 200);
            if (static_cast<int>(random() % 100) < percent_unusual[round % 4])
                text += sequence(random() % 0x110000);
        }
        ASSERT_NO_FATAL_FAILURE(expect_encoded(text));
    }
}

TEST_P(CodePageSweep, ReturnsTheSameResultsInFourThreads) {
    std::string bytes;
    for (int i = 0; i < 8192; ++i)
        bytes += static_cast<char>(i * 37);
    const std::string decoded = page.as_utf8(bytes);
    const std::string encoded = page.encode(ustring8(decoded));
    std::vector<std::string> results(8);
    std::vector<std::thread> threads;
    for (std::size_t i = 0; i < 4; ++i)
        threads.emplace_back([&, i] {
            results[i] = page.as_utf8(bytes);
            results[4 + i] = page.encode(ustring8(decoded));
        });
    for (std::thread& one : threads)
        one.join();
    for (std::size_t i = 0; i < 4; ++i) {
        EXPECT_EQ(decoded, results[i]);
        EXPECT_EQ(encoded, results[4 + i]);
    }
}

INSTANTIATE_TEST_SUITE_P(Pages, CodePageSweep,
                         ::testing::Values(4, 932, 936, 949, 950, 1250, 1251, 1252, 1253, 1254,
                                           1255, 1256, 1257, 1258, 20866, 21866, 28591, 28592,
                                           28593, 28594, 28595, 28596, 28597, 28598, 28599, 28605,
                                           125100));

}  // namespace
