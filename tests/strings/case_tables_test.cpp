// Tests that case mapping follows the tables of the C library, whatever a locale has in them.
//
// This program replaces the functions that return the tables.
#include <tova/strings/case.hpp>

#include <gtest/gtest.h>

#include <ctype.h>
#include <dlfcn.h>
#include <string>
#include <vector>

namespace {

const int* lower_table = nullptr;  // of a test, or null for the locale's own
const int* upper_table = nullptr;

typedef const int** (*table_function)();

const int** table_of(const char* name, const int*& replaced) {
    return replaced != nullptr ? &replaced
                               : reinterpret_cast<table_function>(::dlsym(RTLD_NEXT, name))();
}

}  // namespace

extern "C" const int** __ctype_tolower_loc() noexcept {
    return table_of("__ctype_tolower_loc", lower_table);
}

extern "C" const int** __ctype_toupper_loc() noexcept {
    return table_of("__ctype_toupper_loc", upper_table);
}

namespace {

using tova::strings::to_lower;
using tova::strings::to_upper;
using tova::strings::ustring8;

// The entries from -128 to 255, as the C library has them.
class table {
public:
    explicit table(const int* base) : m_entries(base - 128, base + 256) {}
    const int* get() const { return &m_entries[128]; }
    int& operator[](int byte) { return m_entries[static_cast<std::size_t>(byte + 128)]; }

private:
    std::vector<int> m_entries;
};

// Consecutive bytes, all 256 or those of ASCII, from `offset` on.
std::string source(std::size_t size, bool is_ascii, std::size_t offset) {
    std::string bytes;
    for (std::size_t i = 0; i < size; ++i)
        bytes += static_cast<char>((i + offset) % (is_ascii ? 128 : 256));
    return bytes;
}

std::string mapped(const std::string& bytes, const table& by) {
    std::string result;
    for (const char byte : bytes)
        result += static_cast<char>(by.get()[static_cast<signed char>(byte)]);
    return result;
}

void expect_mapped_by(const table& by) {
    lower_table = upper_table = by.get();
    for (const bool is_ascii : {true, false})
        for (std::size_t size = 0; size <= 1200; size += size < 520 ? 1 : 37) {
            const std::string bytes = source(size, is_ascii, size * 7);
            const std::string expected = mapped(bytes, by);
            const std::string lower = to_lower(ustring8(bytes));
            const std::string upper = to_upper(ustring8(bytes));
            EXPECT_TRUE(expected == lower) << size;
            EXPECT_TRUE(expected == upper) << size;
        }
    // ASCII up to the last block.
    for (const std::size_t size : {300, 600, 2000}) {
        const std::string bytes = source(size, true, 0) + "\xE4";
        EXPECT_TRUE(mapped(bytes, by) == to_lower(ustring8(bytes))) << size;
        const std::string wide = source(size, true, 0) + source(700, false, 128);
        EXPECT_TRUE(mapped(wide, by) == to_lower(ustring8(wide))) << size;
    }
    lower_table = upper_table = nullptr;
}

class CaseTables : public ::testing::Test {
protected:
    table m_lower{*__ctype_tolower_loc()};
    table m_upper{*__ctype_toupper_loc()};
};

TEST_F(CaseTables, OfTheLocaleAreUsed) {
    expect_mapped_by(m_lower);
    expect_mapped_by(m_upper);
}

TEST_F(CaseTables, MayMapLettersAboveAscii) {
    m_lower[static_cast<signed char>('\xC4')] = 0xE4;
    m_upper[static_cast<signed char>('\xE4')] = 0xC4;
    expect_mapped_by(m_lower);
    expect_mapped_by(m_upper);
}

TEST_F(CaseTables, MayMapASingleByteAboveAscii) {
    m_lower[-128] = 'x';
    expect_mapped_by(m_lower);
    m_upper[-1] = 'x';
    expect_mapped_by(m_upper);
}

// As in Turkish, where an I without a dot has its own lower case.
TEST_F(CaseTables, MayMapLettersOfAsciiInAnotherWay) {
    m_lower['I'] = 0xFD;
    m_upper['i'] = 0xDD;
    expect_mapped_by(m_lower);
    expect_mapped_by(m_upper);
}

TEST_F(CaseTables, MayMapEveryByte) {
    for (int byte = -128; byte < 256; ++byte)
        m_lower[byte] = (byte * 7 + 3) & 0xFF;
    expect_mapped_by(m_lower);
}

}  // namespace
