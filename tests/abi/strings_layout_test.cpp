// Tests the strings family as compiled callers see it: sizes, how values are passed, and result
// types.
#include <tova/strings/strings.hpp>

#include <gtest/gtest.h>

#include <cstring>
#include <type_traits>
#include <vector>

namespace {

using namespace TOVA_2_18::strings;
namespace types = TOVA_2_18::types;

static_assert(sizeof(ustring8) == 32 && alignof(ustring8) == 8, "a standard string");
static_assert(sizeof(ustring16) == 32 && alignof(ustring16) == 8, "a standard string");
static_assert(sizeof(ustring32) == 32 && alignof(ustring32) == 8, "a standard string");
static_assert(std::is_same<ustring8::value_type, char>::value, "8 bits");
static_assert(std::is_same<ustring16::value_type, unsigned short>::value, "16 bits");
static_assert(std::is_same<ustring32::value_type, wchar_t>::value, "32 bits");
static_assert(sizeof(wchar_t) == 4, "UTF-32 in a wchar_t");

typedef code_page::encoding_type encoding;
static_assert(sizeof(code_page) == 4 && alignof(code_page) == 4, "one field");
static_assert(std::is_standard_layout<code_page>::value, "the field lies at offset 0");
static_assert(std::is_same<std::underlying_type<encoding>::type, int>::value, "32 bits, signed");
static_assert(!std::is_trivially_copy_constructible<code_page>::value, "passed by reference");
static_assert(!std::is_trivially_destructible<code_page>::value, "passed by reference");
static_assert(!std::is_polymorphic<code_page>::value, "a plain value");

TEST(StringsLayout, ACodePageIsItsNumber) {
    const code_page page(code_page::encoding_1252);
    int number = 0;
    std::memcpy(&number, &page, sizeof number);
    EXPECT_EQ(1252, number);
    EXPECT_EQ(static_cast<const void*>(&page), static_cast<const void*>(&page.type()));
}

TEST(StringsLayout, AStringIsItsBaseAtOffsetZero) {
    const ustring8 text8("x");
    const ustring16 text16(1, 'x');
    const ustring32 text32(1, L'x');
    EXPECT_EQ(static_cast<const void*>(&text8),
              static_cast<const void*>(static_cast<const std::string*>(&text8)));
    EXPECT_EQ(static_cast<const void*>(&text16),
              static_cast<const void*>(static_cast<const ustring16::base_type*>(&text16)));
    EXPECT_EQ(static_cast<const void*>(&text32),
              static_cast<const void*>(static_cast<const std::wstring*>(&text32)));
}

// A symbol name doesn't contain its result type, so each is checked here: only the overload with
// exactly this type converts.
template <typename Function>
bool offered(Function* function) {
    return function != nullptr;
}

template <typename Member>
bool offered_member(Member function) {
    return function != nullptr;
}

TEST(StringsLayout, EveryFunctionHasItsResultType) {
    typedef std::string string;
    typedef std::wstring wstring;
    typedef unsigned long size;

    EXPECT_TRUE(offered<ustring8(const ustring16&)>(utf16_to_utf8));
    EXPECT_TRUE(offered<ustring8(const ustring32&)>(utf32_to_utf8));
    EXPECT_TRUE(offered<ustring16(const ustring32&)>(utf32_to_utf16));
    EXPECT_TRUE(offered<ustring16(const ustring8&)>(utf8_to_utf16));
    EXPECT_TRUE(offered<ustring32(const ustring16&)>(utf16_to_utf32));
    EXPECT_TRUE(offered<ustring32(const ustring8&)>(utf8_to_utf32));
    EXPECT_TRUE(offered<unsigned int(const char*, size, size, size&)>(unichar));
    EXPECT_TRUE(offered<unsigned int(const unsigned short*, size, size, size&)>(unichar));
    EXPECT_TRUE(offered<unsigned int(const wchar_t*, size, size, size&)>(unichar));
    EXPECT_TRUE(offered<size(const ustring8&, size)>(character_index));
    EXPECT_TRUE(offered<size(const ustring16&, size)>(character_index));
    EXPECT_TRUE(offered<ustring16(const ustring16&)>(swap_string_bytes_order));
    EXPECT_TRUE(offered<void(ustring16&)>(modify_swap_string_bytes_order));
    EXPECT_TRUE(offered<ustring16(const ustring16&)>(check_BOM_and_swap));
    EXPECT_TRUE(offered<void(ustring16&)>(check_BOM_and_modify_swap));

    EXPECT_TRUE(offered<bool(const ustring8&, const ustring8&)>(operator==));
    EXPECT_TRUE(offered<bool(const ustring8&, const ustring8&)>(operator!=));
    EXPECT_TRUE(offered<ustring8(const ustring8&, const ustring8&)>(operator+));
    EXPECT_TRUE(offered<ustring8(const char*, const ustring8&)>(operator+));
    EXPECT_TRUE(offered<ustring8(const ustring8&, const char*)>(operator+));

    EXPECT_TRUE(offered<ustring8(const ustring8&)>(to_lower));
    EXPECT_TRUE(offered<ustring8(const ustring8&)>(to_upper));
    EXPECT_TRUE(offered<ustring8(const ustring8&, size, size)>(lower_case));
    EXPECT_TRUE(offered<ustring8(const ustring8&)>(remove_BOM));
    EXPECT_TRUE(offered<size(const ustring8&)>(string_length));
    EXPECT_TRUE(offered<ustring16(const ustring16&)>(to_lower));
    EXPECT_TRUE(offered<ustring16(const ustring16&)>(to_upper));
    EXPECT_TRUE(offered<ustring16(const ustring16&, size, size)>(lower_case));
    EXPECT_TRUE(offered<ustring16(const ustring16&)>(remove_BOM));
    EXPECT_TRUE(offered<size(const ustring16&)>(string_length));
    EXPECT_TRUE(offered<ustring32(const ustring32&)>(to_lower));
    EXPECT_TRUE(offered<ustring32(const ustring32&)>(to_upper));
    EXPECT_TRUE(offered<ustring32(const ustring32&, size, size)>(lower_case));
    EXPECT_TRUE(offered<ustring32(const ustring32&)>(remove_BOM));
    EXPECT_TRUE(offered<size(const ustring32&)>(string_length));
    EXPECT_TRUE(offered<size(const char*)>(string_length));
    EXPECT_TRUE(offered<size(const unsigned short*)>(string_length));
    EXPECT_TRUE(offered<size(const wchar_t*)>(string_length));
    EXPECT_TRUE(offered<std::vector<string>(const string&, const string&, int)>(split_string));
    EXPECT_TRUE(offered<unsigned int(string&, const string&, const string&)>(replace_all));
    EXPECT_TRUE(offered<std::vector<wstring>(const wstring&, const wstring&, int)>(split_string));
    EXPECT_TRUE(offered<unsigned int(wstring&, const wstring&, const wstring&)>(replace_all));
    EXPECT_TRUE(
        offered<std::vector<ustring8>(const ustring8&, const ustring8&, int)>(split_string));
    EXPECT_TRUE(offered<unsigned int(ustring8&, const ustring8&, const ustring8&)>(replace_all));
    EXPECT_TRUE(
        offered<std::vector<ustring16>(const ustring16&, const ustring16&, int)>(split_string));
    EXPECT_TRUE(offered<unsigned int(ustring16&, const ustring16&, const ustring16&)>(replace_all));
    EXPECT_TRUE(
        offered<std::vector<ustring32>(const ustring32&, const ustring32&, int)>(split_string));
    EXPECT_TRUE(offered<unsigned int(ustring32&, const ustring32&, const ustring32&)>(replace_all));
    EXPECT_TRUE(offered<std::vector<ustring8>(const ustring8&, const char*, int)>(split_string));
    EXPECT_TRUE(offered<bool(const ustring8&, const size&, const ustring8&)>(begin_with));

    EXPECT_TRUE(offered<string(const string&)>(gh2::tolower));
    EXPECT_TRUE(offered<string(const string&)>(gh2::toupper));
    EXPECT_TRUE(offered<string(const string&)>(gh2::to_ansi));
    EXPECT_TRUE(offered<string(const string&)>(gh2::from_ansi));
    EXPECT_TRUE(offered<unsigned int(string&, const string&, const string&)>(gh2::replace_all));
    EXPECT_TRUE(offered<size(const char*, size)>(gh2::get_utf8_length));
    EXPECT_TRUE(offered<bool(const char*, size)>(gh2::validate_utf8));
    EXPECT_TRUE(offered<size(const unsigned char*, size)>(gh2::get_utf8_length));
    EXPECT_TRUE(offered<bool(const unsigned char*, size)>(gh2::validate_utf8));
}

TEST(StringsLayout, EveryMemberOfACodePageHasItsResultType) {
    typedef std::string string;
    typedef types::nil_t nil;

    EXPECT_TRUE(offered_member<const encoding& (code_page::*)() const>(&code_page::type));
    EXPECT_TRUE(offered_member<encoding& (code_page::*)()>(&code_page::type));
    EXPECT_TRUE(offered_member<encoding& (code_page::*)(const encoding&)>(&code_page::type));
    EXPECT_TRUE(offered_member<code_page& (code_page::*)(const nil&)>(&code_page::operator=));
    EXPECT_TRUE(offered_member<code_page& (code_page::*)(const nil&)>(&code_page::assign));
    EXPECT_TRUE(offered_member<bool (code_page::*)(const nil&) const>(&code_page::equal));
    EXPECT_TRUE(offered_member<bool (code_page::*)(const nil&) const>(&code_page::operator==));
    EXPECT_TRUE(offered_member<code_page& (code_page::*)(const code_page&)>(&code_page::operator=));
    EXPECT_TRUE(offered_member<code_page& (code_page::*)(const code_page&)>(&code_page::assign));
    EXPECT_TRUE(offered_member<bool (code_page::*)(const code_page&) const>(&code_page::equal));
    EXPECT_TRUE(
        offered_member<bool (code_page::*)(const code_page&) const>(&code_page::operator==));
    EXPECT_TRUE(offered_member<code_page& (code_page::*)(const encoding&)>(&code_page::operator=));
    EXPECT_TRUE(offered_member<code_page& (code_page::*)(const encoding&)>(&code_page::assign));
    EXPECT_TRUE(offered_member<bool (code_page::*)(const encoding&) const>(&code_page::equal));
    EXPECT_TRUE(offered_member<bool (code_page::*)(const encoding&) const>(&code_page::operator==));
    EXPECT_TRUE(
        offered_member<bool (code_page::*)(const code_page&) const>(&code_page::operator!=));
    EXPECT_TRUE(offered_member<bool (code_page::*)(const encoding&) const>(&code_page::operator!=));
    EXPECT_TRUE(offered_member<string (code_page::*)(encoding) const>(&code_page::to_system_type));
    EXPECT_TRUE(offered_member<string (code_page::*)(const ustring8&) const>(&code_page::encode));
    EXPECT_TRUE(offered_member<string (code_page::*)(const ustring16&) const>(&code_page::encode));
    EXPECT_TRUE(offered_member<string (code_page::*)(const ustring32&) const>(&code_page::encode));
    EXPECT_TRUE(offered_member<ustring8 (code_page::*)(const string&) const>(&code_page::as_utf8));
    EXPECT_TRUE(
        offered_member<ustring16 (code_page::*)(const string&) const>(&code_page::as_utf16));
    EXPECT_TRUE(
        offered_member<ustring32 (code_page::*)(const string&) const>(&code_page::as_utf32));
    EXPECT_TRUE(offered_member<string (code_page::*)(const string&) const>(&code_page::as_ustring));
}

}  // namespace
