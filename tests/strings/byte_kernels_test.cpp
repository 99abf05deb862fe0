// Compares every form of the loops over bytes with the portable one, at every length and with the
// last byte directly before an inaccessible page.
#include <tova/abi.hpp>

#include "strings/byte_kernels.hpp"

#include <gtest/gtest.h>

#include <sys/mman.h>

#include <ctype.h>
#include <random>
#include <string>
#include <vector>

namespace {

using tova::detail::cpu_form;
namespace kernels = tova::strings::kernels;

const std::size_t page = 4096;

class ByteKernels : public ::testing::TestWithParam<cpu_form> {
protected:
    ByteKernels()
        : m_memory(static_cast<char*>(mmap(nullptr, 2 * page, PROT_READ | PROT_WRITE,
                                           MAP_PRIVATE | MAP_ANONYMOUS, -1, 0))) {
        if (mprotect(m_memory + page, page, PROT_NONE) != 0)
            ADD_FAILURE() << "mprotect";
    }
    ~ByteKernels() override { munmap(m_memory, 2 * page); }

    // A copy of the bytes that ends `gap` bytes before the page.
    char* place(const std::string& bytes, std::size_t gap) {
        char* const at = m_memory + page - gap - bytes.size();
        bytes.copy(at, bytes.size());
        return at;
    }

    std::string mapped(const std::string& bytes, std::size_t gap, const int* table) {
        std::string result(bytes.size() + 2, '#');
        m_form.map(place(bytes, gap), bytes.size(), &result[1], table);
        EXPECT_EQ('#', result[0]);
        EXPECT_EQ('#', result[bytes.size() + 1]);
        char* const at = place(bytes, gap);
        m_form.map(at, bytes.size(), at, table);
        EXPECT_EQ(result.substr(1, bytes.size()), std::string(at, bytes.size())) << "in place";
        return result.substr(1, bytes.size());
    }

    const kernels::byte_form& m_form = kernels::bytes(GetParam());
    char* m_memory;
};

std::string expected(const std::string& bytes, const int* table) {
    std::string result;
    for (const char byte : bytes)
        result += static_cast<char>(table[static_cast<signed char>(byte)]);
    return result;
}

std::string random_bytes(std::mt19937& random, std::size_t size, bool is_ascii) {
    std::string bytes(size, '\0');
    for (char& byte : bytes)
        byte = static_cast<char>(random() % (is_ascii ? 128 : 256));
    return bytes;
}

TEST_P(ByteKernels, MapEveryLengthAtEveryAlignmentByAnyTable) {
    std::mt19937 random(3);
    std::vector<int> other(384);
    for (int& entry : other)
        entry = static_cast<int>(random());
    // The identity except for one entry, for a byte with and without its highest bit.
    std::vector<int> almost(*__ctype_tolower_loc() - 128, *__ctype_tolower_loc() + 256);
    almost[128 + 'q'] = 'x';
    std::vector<int> almost_too(*__ctype_toupper_loc() - 128, *__ctype_toupper_loc() + 256);
    almost_too[10] = 'x';
    // Tables that map ASCII as the locale "C" does, and one other byte.
    std::vector<int> upper_half(*__ctype_tolower_loc() - 128, *__ctype_tolower_loc() + 256);
    upper_half[128 - 3] = 'x';
    std::vector<int> upper_half_too(*__ctype_toupper_loc() - 128, *__ctype_toupper_loc() + 256);
    upper_half_too[0] = 'x';
    // Only the low bits of an entry count.
    std::vector<int> wide(*__ctype_tolower_loc() - 128, *__ctype_tolower_loc() + 256);
    wide[128 + 'z'] += 256;
    const int* const tables[] = {
        *__ctype_tolower_loc(), *__ctype_toupper_loc(), &other[128],          &almost[128],
        &almost_too[128],       &upper_half[128],       &upper_half_too[128], &wide[128]};
    for (const int* table : tables)
        for (std::size_t length = 0; length <= 700; ++length) {
            const std::string bytes = random_bytes(random, length, length % 3 == 0);
            for (std::size_t gap = 0; gap < 64; gap += length < 150 ? 1 : 13)
                ASSERT_EQ(expected(bytes, table), mapped(bytes, gap, table)) << length;
        }
}

TEST_P(ByteKernels, FindEveryCandidate) {
    std::mt19937 random(4);
    for (std::size_t length = 0; length <= 300; ++length)
        for (const std::size_t distance : {0, 1, 4, 31}) {
            std::string bytes(length + distance, 'a');
            for (char& byte : bytes)
                byte = static_cast<char>('a' + random() % 3);
            const char last = distance == 0 ? 'b' : 'c';
            std::vector<std::uint64_t> wanted(6, 0x1234);
            kernels::bytes_portable.find(bytes.data(), length, 'b', last, distance, wanted.data());
            for (std::size_t gap = 0; gap < 64; gap += 1 + random() % 5) {
                std::vector<std::uint64_t> masks(6, 0x1234);
                m_form.find(place(bytes, gap), length, 'b', last, distance, masks.data());
                ASSERT_EQ(wanted, masks) << length;
            }
            for (std::size_t i = 0; i < length; ++i)
                ASSERT_EQ(bytes[i] == 'b' && bytes[i + distance] == last,
                          (wanted[i / 64] >> i % 64 & 1) != 0);
        }
}

std::vector<cpu_form> forms_of_this_processor() {
    std::vector<cpu_form> forms;
    for (const cpu_form form :
         {cpu_form::portable, cpu_form::sse2, cpu_form::avx2, cpu_form::avx512})
        if (form <= tova::detail::best_cpu_level())
            forms.push_back(form);
    return forms;
}

std::string form_name(const ::testing::TestParamInfo<cpu_form>& info) {
    const char* const names[] = {"portable", "sse2", "avx2", "avx512"};
    return names[static_cast<int>(info.param)];
}

INSTANTIATE_TEST_SUITE_P(Form, ByteKernels, ::testing::ValuesIn(forms_of_this_processor()),
                         form_name);

}  // namespace
