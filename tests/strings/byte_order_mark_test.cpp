#include <tova/strings/byte_order_mark.hpp>

#include <gtest/gtest.h>

namespace {

using namespace tova::strings;

TEST(RemoveBOM, RemovesOneMarkAtTheBeginningOfAn8BitString) {
    const struct {
        const char* text;
        const char* expected;
    } cases[] = {
        {"", ""},
        {"abc", "abc"},
        {"\xEF\xBB\xBF", ""},
        {"\xEF\xBB\xBF"
         "abc",
         "abc"},
        {"\xEF\xBB\xBF\xEF\xBB\xBF"
         "abc",
         "\xEF\xBB\xBF"
         "abc"},
        {"a\xEF\xBB\xBF", "a\xEF\xBB\xBF"},
        {"\xEF\xBB", "\xEF\xBB"},
        {"\xEF", "\xEF"},
        {"\xEF\xBB\xBE", "\xEF\xBB\xBE"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(::testing::PrintToString(c.text));
        EXPECT_EQ(c.expected, remove_BOM(ustring8(c.text)));
    }
    EXPECT_EQ(ustring8("\0a", 2), remove_BOM(ustring8("\xEF\xBB\xBF\0a", 5)));
}

TEST(RemoveBOM, RemovesOneMarkInHostOrderAtTheBeginningOfA16BitString) {
    EXPECT_EQ(ustring16(), remove_BOM(ustring16()));
    EXPECT_EQ(ustring16(), remove_BOM(ustring16{0xFEFF}));
    EXPECT_EQ((ustring16{'a'}), remove_BOM(ustring16{0xFEFF, 'a'}));
    EXPECT_EQ((ustring16{0xFEFF}), remove_BOM(ustring16{0xFEFF, 0xFEFF}));
    EXPECT_EQ((ustring16{0xFFFE, 'a'}), remove_BOM(ustring16{0xFFFE, 'a'}));
    EXPECT_EQ((ustring16{'a', 0xFEFF}), remove_BOM(ustring16{'a', 0xFEFF}));
}

TEST(RemoveBOM, RemovesOneMarkInHostOrderAtTheBeginningOfA32BitString) {
    EXPECT_EQ(ustring32(), remove_BOM(ustring32()));
    EXPECT_EQ(ustring32(), remove_BOM(ustring32{0xFEFF}));
    EXPECT_EQ((ustring32{'a'}), remove_BOM(ustring32{0xFEFF, 'a'}));
    EXPECT_EQ((ustring32{0xFEFF}), remove_BOM(ustring32{0xFEFF, 0xFEFF}));
    EXPECT_EQ((ustring32{0xFFFE, 'a'}), remove_BOM(ustring32{0xFFFE, 'a'}));
}

TEST(RemoveBOM, LeavesItsArgumentUnchanged) {
    const ustring8 text("\xEF\xBB\xBF"
                        "abc");
    remove_BOM(text);
    EXPECT_EQ("\xEF\xBB\xBF"
              "abc",
              text);
}

}  // namespace
