// Compares the search for the ends of runs with plain loops over bytes, for every form of the
// kernels.
#include "parser/byte_blocks.hpp"

#include <tova/abi.hpp>

#include "detail/cpu_features.hpp"

#include <gtest/gtest.h>

#include <sys/mman.h>
#include <unistd.h>

#include <cstddef>
#include <cstring>
#include <random>
#include <string>

namespace {

using tova::detail::best_cpu_level;
using tova::detail::cpu_form;
using tova::detail::force_cpu_level;
using tova::parser::detail::byte_blocks;

bool is_space(char byte) {
    return byte == ' ' || byte == '\t' || byte == '\r' || byte == '\n';
}

bool is_name(char byte) {
    return (byte >= 'a' && byte <= 'z') || (byte >= 'A' && byte <= 'Z') ||
           (byte >= '0' && byte <= '9') || byte == '_';
}

template <typename Stops>
const char* plain_end(const char* from, const char* end, Stops stops) {
    while (from != end && !stops(from))
        ++from;
    return from;
}

// The results of all searches from one position, as distances.
struct ends {
    std::ptrdiff_t white_space;
    unsigned int line_feeds;
    std::ptrdiff_t name;
    std::ptrdiff_t wide_name;
    std::ptrdiff_t double_quoted;
    std::ptrdiff_t single_quoted;
    std::ptrdiff_t content;
    std::ptrdiff_t text;
};

bool operator==(const ends& a, const ends& b) {
    return a.white_space == b.white_space && a.line_feeds == b.line_feeds && a.name == b.name &&
           a.wide_name == b.wide_name && a.double_quoted == b.double_quoted &&
           a.single_quoted == b.single_quoted && a.content == b.content && a.text == b.text;
}

ends plain_ends(const char* from, const char* end) {
    ends found = {};
    const char* const spaces = plain_end(from, end, [](const char* at) { return !is_space(*at); });
    found.white_space = spaces - from;
    for (const char* at = from; at != spaces; ++at)
        found.line_feeds += *at == '\n';
    const auto distance = [&](auto stops) { return plain_end(from, end, stops) - from; };
    const auto is_markup = [](const char* at) { return *at == '<' || *at == '&'; };
    found.name = distance([](const char* at) { return !is_name(*at); });
    found.wide_name = distance(
        [](const char* at) { return !is_name(*at) && static_cast<signed char>(*at) >= 0; });
    found.double_quoted = distance([&](const char* at) { return is_markup(at) || *at == '"'; });
    found.single_quoted = distance([&](const char* at) { return is_markup(at) || *at == '\''; });
    found.content = distance(is_markup);
    found.text = distance([&](const char* at) {
        return is_markup(at) || (is_space(*at) && end - at > 1 && is_space(at[1]));
    });
    return found;
}

ends found_ends(byte_blocks& blocks, const char* from) {
    ends found = {};
    found.white_space = blocks.end_of_white_space(from, found.line_feeds) - from;
    found.name = blocks.end_of_name(from) - from;
    found.wide_name = blocks.end_of_wide_name(from) - from;
    found.double_quoted = blocks.end_of_value(from, '"') - from;
    found.single_quoted = blocks.end_of_value(from, '\'') - from;
    found.content = blocks.end_of_content(from) - from;
    found.text = blocks.end_of_text(from) - from;
    return found;
}

// Bytes between two pages that can't be read.
class guarded_page {
public:
    guarded_page() : m_size(static_cast<std::size_t>(::sysconf(_SC_PAGESIZE))) {
        void* const mapped =
            ::mmap(nullptr, 3 * m_size, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
        m_bytes = static_cast<char*>(mapped) + m_size;
        ::mprotect(mapped, m_size, PROT_NONE);
        ::mprotect(m_bytes + m_size, m_size, PROT_NONE);
    }
    ~guarded_page() { ::munmap(m_bytes - m_size, 3 * m_size); }
    guarded_page(const guarded_page&) = delete;
    guarded_page& operator=(const guarded_page&) = delete;

    char* begin() const { return m_bytes; }
    char* end() const { return m_bytes + m_size; }

private:
    std::size_t m_size;
    char* m_bytes;
};

// Runs of one kind of byte, so that blocks end inside every kind of run.
std::string random_bytes(std::mt19937& random, std::size_t size) {
    const char* const kinds[] = {"aZ_9", " \n\t\r", "a b", "<&", "\"'", "x \xC3\xA4", "text  text"};
    std::string bytes;
    while (bytes.size() < size) {
        const std::string kind = kinds[random() % 7];
        for (std::size_t left = random() % 100; left > 0; --left)
            bytes += kind[random() % kind.size()];
        if (random() % 4 == 0)
            bytes += static_cast<char>(random());
    }
    bytes.resize(size);
    return bytes;
}

class ByteBlocks : public ::testing::TestWithParam<cpu_form> {
protected:
    void SetUp() override {
        if (GetParam() > best_cpu_level())
            GTEST_SKIP();
        force_cpu_level(GetParam());
    }
    void TearDown() override { force_cpu_level(best_cpu_level()); }

    const guarded_page page;
};

INSTANTIATE_TEST_SUITE_P(Forms, ByteBlocks,
                         ::testing::Values(cpu_form::portable, cpu_form::sse2, cpu_form::avx2,
                                           cpu_form::avx512));

void expect_plain_ends(const char* begin, const char* end, std::mt19937& random) {
    byte_blocks forward(begin, end);
    byte_blocks jumping(begin, end);
    for (const char* from = begin; from != end; ++from)
        ASSERT_TRUE(plain_ends(from, end) == found_ends(forward, from)) << from - begin;
    ASSERT_TRUE(ends() == found_ends(forward, end));
    // A search may also start before the previous one.
    for (int i = 0; i < 20; ++i) {
        const char* const from = begin + random() % static_cast<std::size_t>(end - begin + 1);
        ASSERT_TRUE(plain_ends(from, end) == found_ends(jumping, from)) << from - begin;
    }
}

TEST_P(ByteBlocks, FindWhatPlainLoopsFindForEveryLengthAtTheEndOfAPage) {
    std::mt19937 random(3);
    for (std::size_t size = 0; size <= 300; ++size) {
        SCOPED_TRACE(size);
        char* const begin = page.end() - size;
        for (int round = 0; round < 4; ++round) {
            random_bytes(random, size).copy(begin, size);
            expect_plain_ends(begin, page.end(), random);
        }
        if (HasFatalFailure())
            return;
    }
}

TEST_P(ByteBlocks, FindWhatPlainLoopsFindAtTheBeginningOfAPageAndAtEveryAlignment) {
    std::mt19937 random(4);
    for (std::size_t alignment = 0; alignment < 64; ++alignment) {
        for (const std::size_t size : {1, 63, 64, 65, 127, 128, 129, 200, 300}) {
            SCOPED_TRACE(size);
            random_bytes(random, size).copy(page.begin() + alignment, size);
            expect_plain_ends(page.begin() + alignment, page.begin() + alignment + size, random);
        }
        if (HasFatalFailure())
            return;
    }
}

TEST_P(ByteBlocks, AcceptAnotherRange) {
    const std::string first(100, 'a');
    const std::string second(80, ' ');
    byte_blocks blocks(first.data(), first.data() + first.size());
    EXPECT_EQ(first.data() + 100, blocks.end_of_name(first.data() + 10));
    blocks.set_range(second.data(), second.data() + 70);
    unsigned int lines = 0;
    EXPECT_EQ(second.data() + 70, blocks.end_of_white_space(second.data(), lines));
    EXPECT_EQ(second.data(), blocks.end_of_name(second.data()));
    blocks.set_range(first.data(), first.data() + 90);
    EXPECT_EQ(first.data() + 90, blocks.end_of_name(first.data()));
}

TEST_P(ByteBlocks, FindNothingInAnEmptyRange) {
    byte_blocks blocks(nullptr, nullptr);
    unsigned int lines = 0;
    EXPECT_EQ(nullptr, blocks.end_of_name(nullptr));
    EXPECT_EQ(nullptr, blocks.end_of_text(nullptr));
    EXPECT_EQ(nullptr, blocks.end_of_white_space(nullptr, lines));
}

}  // namespace
