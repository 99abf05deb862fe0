// Compares every form of the classification with the portable one, and the portable one with the
// byte classes themselves.
#include "parser/xml_kernels.hpp"

#include <tova/abi.hpp>

#include "detail/cpu_features.hpp"

#include <gtest/gtest.h>

#include <sys/mman.h>
#include <unistd.h>

#include <cstdint>
#include <cstring>
#include <random>
#include <vector>

namespace {

using tova::detail::best_cpu_level;
using tova::detail::cpu_form;
using tova::parser::kernels::block_masks;
using tova::parser::kernels::block_size;
using tova::parser::kernels::classify_function;
using tova::parser::kernels::classify_portable;
namespace kernels = tova::parser::kernels;

struct form {
    const char* name;
    classify_function classify;
};

// The forms that this processor supports.
std::vector<form> forms() {
    std::vector<form> all = {{"portable", kernels::classify_portable}};
#if defined(__x86_64__)
    all.push_back({"sse2", kernels::classify_sse2});
    if (best_cpu_level() >= cpu_form::avx2)
        all.push_back({"avx2", kernels::classify_avx2});
    if (best_cpu_level() >= cpu_form::avx512)
        all.push_back({"avx512", kernels::classify_avx512});
#endif
    return all;
}

// The previous content of the masks must not matter.
block_masks classified(classify_function classify, const char* block) {
    block_masks masks;
    std::memset(&masks, 0xA5, sizeof masks);
    classify(block, masks);
    return masks;
}

void expect_equal(const block_masks& expected, const block_masks& actual) {
    EXPECT_EQ(expected.name, actual.name);
    EXPECT_EQ(expected.white_space, actual.white_space);
    EXPECT_EQ(expected.line_feed, actual.line_feed);
    EXPECT_EQ(expected.markup, actual.markup);
    EXPECT_EQ(expected.double_quote, actual.double_quote);
    EXPECT_EQ(expected.single_quote, actual.single_quote);
    EXPECT_EQ(expected.high, actual.high);
}

std::uint64_t bit_if(bool condition, std::size_t place) {
    return std::uint64_t{condition} << place;
}

TEST(XmlKernels, ClassifyEveryByteAtEveryPosition) {
    for (const form& one : forms()) {
        SCOPED_TRACE(one.name);
        for (int value = 0; value < 256; ++value) {
            const char byte = static_cast<char>(value);
            const bool is_letter = (byte >= 'a' && byte <= 'z') || (byte >= 'A' && byte <= 'Z');
            const bool is_digit = byte >= '0' && byte <= '9';
            const bool is_space = byte == ' ' || byte == '\t' || byte == '\r' || byte == '\n';
            for (std::size_t place = 0; place < block_size; ++place) {
                char block[block_size] = {};  // NUL has no class
                block[place] = byte;
                const block_masks expected = {bit_if(is_letter || is_digit || byte == '_', place),
                                              bit_if(is_space, place),
                                              bit_if(byte == '\n', place),
                                              bit_if(byte == '<' || byte == '&', place),
                                              bit_if(byte == '"', place),
                                              bit_if(byte == '\'', place),
                                              bit_if(value >= 0x80, place)};
                expect_equal(expected, classified(one.classify, block));
                if (HasFailure())
                    FAIL() << "byte " << value << " at " << place;
            }
        }
    }
}

TEST(XmlKernels, EqualThePortableFormOnRandomBytes) {
    std::mt19937 random(1);
    const char usual[] = "<>&\"' \t\r\n=/abcXYZ019_-.:@[`{\x80\xFF";
    for (int round = 0; round < 200000; ++round) {
        char block[block_size];
        for (char& byte : block)
            byte =
                round % 2 == 0 ? static_cast<char>(random()) : usual[random() % (sizeof usual - 1)];
        const block_masks expected = classified(classify_portable, block);
        for (const form& one : forms()) {
            SCOPED_TRACE(one.name);
            expect_equal(expected, classified(one.classify, block));
        }
        if (HasFailure())
            FAIL() << "round " << round;
    }
}

// The page after the block is unreadable, so a form that reads past the block crashes.
TEST(XmlKernels, ReadOnlyTheBlockAtEveryAlignment) {
    const auto page = static_cast<std::size_t>(::sysconf(_SC_PAGESIZE));
    void* const mapped =
        ::mmap(nullptr, 3 * page, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    ASSERT_NE(MAP_FAILED, mapped);
    char* const bytes = static_cast<char*>(mapped) + page;
    std::mt19937 random(2);
    for (std::size_t i = 0; i < page; ++i)
        bytes[i] = static_cast<char>(random());
    ASSERT_EQ(0, ::mprotect(mapped, page, PROT_NONE));
    ASSERT_EQ(0, ::mprotect(bytes + page, page, PROT_NONE));
    for (std::size_t offset = 0; offset <= 2 * block_size; ++offset) {
        for (const char* const block : {bytes + offset, bytes + page - block_size - offset}) {
            const block_masks expected = classified(classify_portable, block);
            for (const form& one : forms()) {
                SCOPED_TRACE(one.name);
                expect_equal(expected, classified(one.classify, block));
            }
        }
    }
    ::munmap(mapped, 3 * page);
}

TEST(XmlKernels, AreChosenByTheLevelOfTheProcessor) {
    int level = 0;
    for (const form& one : forms()) {
        SCOPED_TRACE(one.name);
        tova::detail::force_cpu_level(static_cast<cpu_form>(level++));
        EXPECT_EQ(one.classify, kernels::classify());
    }
    tova::detail::force_cpu_level(best_cpu_level());
}

}  // namespace
