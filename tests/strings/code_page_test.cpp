#include <tova/strings/code_page.hpp>

#include <tova/exceptions/exceptions.hpp>
#include <tova/strings/unicode.hpp>
#include <tova/types/nil.hpp>

#include <gtest/gtest.h>

#include <clocale>
#include <langinfo.h>
#include <string>

namespace {

namespace exceptions = tova::exceptions;
namespace types = tova::types;
using tova::strings::code_page;
using tova::strings::ustring16;
using tova::strings::ustring32;
using tova::strings::ustring8;

code_page::encoding_type number(int value) {
    return static_cast<code_page::encoding_type>(value);
}

const struct {
    int value;
    code_page::encoding_type encoding;
    const char* name;
} known_pages[] = {
    {4, code_page::encoding_utf8, "UTF-8"},
    {932, code_page::encoding_932, "WINDOWS-31J"},
    {936, code_page::encoding_936, "GBK"},
    {949, code_page::encoding_949, "CP949"},
    {950, code_page::encoding_950, "BIG5"},
    {1250, code_page::encoding_1250, "CP1250"},
    {1251, code_page::encoding_1251, "CP1251"},
    {1252, code_page::encoding_1252, "CP1252"},
    {1253, code_page::encoding_1253, "CP1253"},
    {1254, code_page::encoding_1254, "CP1254"},
    {1255, code_page::encoding_1255, "CP1255"},
    {1256, code_page::encoding_1256, "CP1256"},
    {1257, code_page::encoding_1257, "CP1257"},
    {1258, code_page::encoding_1258, "CP1258"},
    {20866, code_page::encoding_20866, "KOI8-R"},
    {21866, code_page::encoding_21866, "KOI8-U"},
    {28591, code_page::encoding_28591, "ISO-8859-1"},
    {28592, code_page::encoding_28592, "ISO-8859-2"},
    {28593, code_page::encoding_28593, "ISO-8859-3"},
    {28594, code_page::encoding_28594, "ISO-8859-4"},
    {28595, code_page::encoding_28595, "ISO-8859-5"},
    {28596, code_page::encoding_28596, "ISO-8859-6"},
    {28597, code_page::encoding_28597, "ISO-8859-7"},
    {28598, code_page::encoding_28598, "ISO-8859-8"},
    {28599, code_page::encoding_28599, "ISO-8859-9"},
    {28605, code_page::encoding_28605, "ISO-8859-15"},
    {125100, code_page::encoding_125100, "ANSI_X3.4-1968"},
};

TEST(CodePageNames, EachKnownNumberHasItsName) {
    const code_page page;
    for (const auto& known : known_pages) {
        SCOPED_TRACE(known.value);
        EXPECT_EQ(known.value, static_cast<int>(known.encoding));
        EXPECT_EQ(known.name, page.to_system_type(known.encoding));
    }
}

TEST(CodePageNames, TheNumbersOneToThreeMeanTheCurrentLocale) {
    EXPECT_EQ(1, static_cast<int>(code_page::encoding_ansi));
    EXPECT_EQ(2, static_cast<int>(code_page::encoding_locale_2));
    EXPECT_EQ(3, static_cast<int>(code_page::encoding_locale_3));
    const code_page page;
    for (const int value : {1, 2, 3}) {
        EXPECT_EQ("ANSI_X3.4-1968", page.to_system_type(number(value)));
        EXPECT_EQ(nl_langinfo(CODESET), page.to_system_type(number(value)));
    }
    if (setlocale(LC_CTYPE, "C.UTF-8") != nullptr) {
        for (const int value : {1, 2, 3})
            EXPECT_EQ("UTF-8", page.to_system_type(number(value)));
        EXPECT_EQ("caf\xC3\xA9",
                  code_page(code_page::encoding_ansi).encode(ustring8("caf\xC3\xA9")));
    }
    setlocale(LC_CTYPE, "C");
    EXPECT_EQ("ANSI_X3.4-1968", page.to_system_type(code_page::encoding_ansi));
}

template <typename Action>
std::string invalid_value_of(Action action) {
    try {
        action();
    } catch (const exceptions::invalid_argument_value& error) {
        return error.get_message();
    }
    return "nothing was raised";
}

TEST(CodePageNames, AnyOtherNumberRaises) {
    const char message[] = "Not valid code_page type";
    for (const int value : {0, -1, 5, 931, 933, 1249, 1259, 20865, 28590, 28600, 28601, 28602,
                            28603, 28604, 28606, 125099, 125101, 2147483647, -2147483647 - 1}) {
        SCOPED_TRACE(value);
        const code_page page(number(value));
        EXPECT_EQ(message, invalid_value_of([&] { code_page().to_system_type(number(value)); }));
        EXPECT_EQ(message, invalid_value_of([&] { page.encode(ustring8("a")); }));
        EXPECT_EQ(message, invalid_value_of([&] { page.encode(ustring8()); }));
        EXPECT_EQ(message, invalid_value_of([&] { page.encode(ustring16()); }));
        EXPECT_EQ(message, invalid_value_of([&] { page.encode(ustring32()); }));
        EXPECT_EQ(message, invalid_value_of([&] { page.as_utf8("a"); }));
        EXPECT_EQ(message, invalid_value_of([&] { page.as_utf8(""); }));
        EXPECT_EQ(message, invalid_value_of([&] { page.as_utf16(""); }));
        EXPECT_EQ(message, invalid_value_of([&] { page.as_utf32(""); }));
        EXPECT_EQ(message, invalid_value_of([&] { page.as_ustring(""); }));
    }
    EXPECT_EQ(message, invalid_value_of([] { code_page().encode(ustring8("a")); }));
}

TEST(CodePageNames, EveryNumberUpToTheLargestIsKnownOrRaises) {
    int known = 0;
    for (int value = -2000; value < 130000; ++value)
        known += invalid_value_of([&] { code_page().to_system_type(number(value)); }) ==
                         "nothing was raised"
                     ? 1
                     : 0;
    EXPECT_EQ(30, known);
}

TEST(CodePageValue, StoresTheGivenNumber) {
    static_assert(sizeof(code_page::encoding_type) == 4, "32 bits");
    EXPECT_EQ(code_page::encoding_default, code_page().type());
    EXPECT_EQ(0, static_cast<int>(code_page::encoding_default));
    EXPECT_EQ(code_page::encoding_default, code_page(types::nil).type());
    EXPECT_EQ(code_page::encoding_1252, code_page(code_page::encoding_1252).type());
    const code_page source(code_page::encoding_932);
    EXPECT_EQ(code_page::encoding_932, code_page(source).type());
}

TEST(CodePageValue, SetsItsFieldWithTypeAndReturnsIt) {
    code_page page;
    code_page::encoding_type& field = page.type();
    EXPECT_EQ(&field, &page.type(code_page::encoding_936));
    EXPECT_EQ(code_page::encoding_936, field);
    field = code_page::encoding_950;
    const code_page& constant = page;
    EXPECT_EQ(&field, &constant.type());
    EXPECT_EQ(code_page::encoding_950, constant.type());
}

TEST(CodePageValue, IsAssignedFromAPageANumberAndNil) {
    code_page page;
    const code_page other(code_page::encoding_1251);
    EXPECT_EQ(&page, &(page = other));
    EXPECT_EQ(code_page::encoding_1251, page.type());
    EXPECT_EQ(&page, &(page = code_page::encoding_1253));
    EXPECT_EQ(code_page::encoding_1253, page.type());
    EXPECT_EQ(&page, &(page = types::nil));
    EXPECT_EQ(code_page::encoding_default, page.type());
    EXPECT_EQ(&page, &page.assign(other));
    EXPECT_EQ(code_page::encoding_1251, page.type());
    EXPECT_EQ(&page, &page.assign(code_page::encoding_1254));
    EXPECT_EQ(code_page::encoding_1254, page.type());
    EXPECT_EQ(&page, &page.assign(types::nil));
    EXPECT_EQ(code_page::encoding_default, page.type());
}

TEST(CodePageValue, IsComparedWithAPageAndANumber) {
    const code_page page(code_page::encoding_1251);
    const code_page same(code_page::encoding_1251);
    const code_page other(code_page::encoding_1252);
    EXPECT_TRUE(page.equal(same));
    EXPECT_FALSE(page.equal(other));
    EXPECT_TRUE(page == same);
    EXPECT_FALSE(page == other);
    EXPECT_FALSE(page != same);
    EXPECT_TRUE(page != other);
    EXPECT_TRUE(page.equal(code_page::encoding_1251));
    EXPECT_FALSE(page.equal(code_page::encoding_1252));
    EXPECT_TRUE(page == code_page::encoding_1251);
    EXPECT_FALSE(page == code_page::encoding_1252);
    EXPECT_FALSE(page != code_page::encoding_1251);
    EXPECT_TRUE(page != code_page::encoding_1252);
}

TEST(CodePageValue, EqualsNilOnlyWithANegativeNumber) {
    EXPECT_FALSE(code_page() == types::nil);
    EXPECT_FALSE(code_page().equal(types::nil));
    code_page page(code_page::encoding_1252);
    EXPECT_FALSE(page == types::nil);
    page = types::nil;
    EXPECT_FALSE(page == types::nil);
    page.type(number(-1));
    EXPECT_TRUE(page == types::nil);
    EXPECT_TRUE(page.equal(types::nil));
    EXPECT_TRUE(code_page(number(-2147483647 - 1)) == types::nil);
    EXPECT_FALSE(code_page(number(2147483647)) == types::nil);
}

TEST(CodePageConversion, OfAnEmptyStringIsEmptyInEveryPage) {
    for (const auto& known : known_pages) {
        SCOPED_TRACE(known.name);
        const code_page page(known.encoding);
        EXPECT_EQ("", page.encode(ustring8()));
        EXPECT_EQ("", page.encode(ustring16()));
        EXPECT_EQ("", page.encode(ustring32()));
        EXPECT_EQ("", page.as_utf8(""));
        EXPECT_EQ("", page.as_ustring(""));
        EXPECT_EQ(ustring16(), page.as_utf16(""));
        EXPECT_EQ(ustring32(), page.as_utf32(""));
    }
}

TEST(CodePageConversion, KeepsAsciiInEveryPage) {
    const std::string text = "Plain text, 123.\r\n";
    for (const auto& known : known_pages) {
        if (known.value == 1255 || known.value == 1258)
            continue;  // these lose the last letter, see below
        SCOPED_TRACE(known.name);
        const code_page page(known.encoding);
        EXPECT_EQ(text, page.encode(ustring8(text)));
        EXPECT_EQ(text, page.as_utf8(text));
    }
}

const struct {
    code_page::encoding_type encoding;
    const char* bytes;
    const char* utf8;
} known_texts[] = {
    {code_page::encoding_utf8, "\xC3\xA9\xF0\x9F\x98\x80", "\xC3\xA9\xF0\x9F\x98\x80"},
    {code_page::encoding_932, "\x93\xFA\x96\x7B", "\xE6\x97\xA5\xE6\x9C\xAC"},
    {code_page::encoding_936, "\xD6\xD0\xCE\xC4", "\xE4\xB8\xAD\xE6\x96\x87"},
    {code_page::encoding_949, "\xC7\xD1\xB1\xDB", "\xED\x95\x9C\xEA\xB8\x80"},
    {code_page::encoding_950, "\xA4\xA4\xA4\xE5", "\xE4\xB8\xAD\xE6\x96\x87"},
    {code_page::encoding_1250, "\xB3\xF3\xBF", "\xC5\x82\xC3\xB3\xC5\xBC"},
    {code_page::encoding_1251, "\xCF\xF0\xE8", "\xD0\x9F\xD1\x80\xD0\xB8"},
    {code_page::encoding_1252, "\x80 \xE9\xFF", "\xE2\x82\xAC \xC3\xA9\xC3\xBF"},
    {code_page::encoding_1253, "\xC1\xE2", "\xCE\x91\xCE\xB2"},
    {code_page::encoding_1254, "\xFD\xDD", "\xC4\xB1\xC4\xB0"},
    {code_page::encoding_1256, "\xC7\xE1", "\xD8\xA7\xD9\x84"},
    {code_page::encoding_1257, "\xE0\xEB", "\xC4\x85\xC4\x97"},
    {code_page::encoding_20866, "\xF0\xD2\xC9", "\xD0\x9F\xD1\x80\xD0\xB8"},
    {code_page::encoding_21866, "\xA6\xA7", "\xD1\x96\xD1\x97"},
    {code_page::encoding_28591, "\xE9\xFF\xA0", "\xC3\xA9\xC3\xBF\xC2\xA0"},
    {code_page::encoding_28592, "\xB3\xF3", "\xC5\x82\xC3\xB3"},
    {code_page::encoding_28593, "\xB1\xA1", "\xC4\xA7\xC4\xA6"},
    {code_page::encoding_28594, "\xBF\xBD", "\xC5\x8B\xC5\x8A"},
    {code_page::encoding_28595, "\xBF\xE0", "\xD0\x9F\xD1\x80"},
    {code_page::encoding_28596, "\xC7\xE4", "\xD8\xA7\xD9\x84"},
    {code_page::encoding_28597, "\xC1\xE2", "\xCE\x91\xCE\xB2"},
    {code_page::encoding_28598, "\xE0\xE1", "\xD7\x90\xD7\x91"},
    {code_page::encoding_28599, "\xFD\xDD", "\xC4\xB1\xC4\xB0"},
    {code_page::encoding_28605, "\xA4\xE9", "\xE2\x82\xAC\xC3\xA9"},
    {code_page::encoding_125100, "ASCII", "ASCII"},
};

TEST(CodePageConversion, WorksBothWaysInEveryWidth) {
    for (const auto& known : known_texts) {
        SCOPED_TRACE(static_cast<int>(known.encoding));
        const code_page page(known.encoding);
        const ustring8 utf8(known.utf8);
        EXPECT_EQ(known.bytes, page.encode(utf8));
        EXPECT_EQ(utf8, page.as_utf8(known.bytes));
        EXPECT_EQ(std::string(known.utf8), page.as_ustring(known.bytes));
        EXPECT_EQ(utf8_to_utf16(utf8), page.as_utf16(known.bytes));
        EXPECT_EQ(utf8_to_utf32(utf8), page.as_utf32(known.bytes));
        EXPECT_EQ(known.bytes, page.encode(utf8_to_utf16(utf8)));
        EXPECT_EQ(known.bytes, page.encode(utf8_to_utf32(utf8)));
    }
}

TEST(CodePageConversion, TreatsNulBytesAsCharacters) {
    const code_page page(code_page::encoding_1252);
    EXPECT_EQ(std::string("a\0\xE9", 3), page.encode(ustring8("a\0\xC3\xA9", 4)));
    EXPECT_EQ(ustring8("a\0\xC3\xA9", 4), page.as_utf8(std::string("a\0\xE9", 3)));
}

TEST(CodePageConversion, EncodesAnInvalidWideStringAsMinusOne) {
    const code_page page(code_page::encoding_1252);
    EXPECT_EQ("-1", page.encode(ustring16{'a', 0xD800}));
    EXPECT_EQ("-1", page.encode(ustring32{'a', 0xD800}));
    EXPECT_EQ("ab", page.encode(ustring32{'a', 0x110000, 'b'}));
}

TEST(CodePageEncode, ReplacesEachByteOfACharacterThatThePageLacks) {
    const struct {
        code_page::encoding_type encoding;
        const char* utf8;
        const char* expected;
    } cases[] = {
        {code_page::encoding_28591, "\xC5\x82", "??"},
        {code_page::encoding_28591, "a\xC5\x82z", "a??z"},
        {code_page::encoding_28591, "\xE2\x82\xAC", "???"},
        {code_page::encoding_28591, "\xF0\x9F\x98\x80!",
         "????"
         "!"},
        {code_page::encoding_28591, "\xC3\xA9\xC5\x82\xC3\xA9", "\xE9??\xE9"},
        {code_page::encoding_125100, "caf\xC3\xA9", "caf??"},
        {code_page::encoding_1252, "\xD0\x9F\xD1\x80", "????"},
        // bytes that are not UTF-8
        {code_page::encoding_28591, "\xFF", "?"},
        {code_page::encoding_28591, "a\xFF\xFE z", "a?? z"},
        {code_page::encoding_28591, "\xC3(", "?("},
        {code_page::encoding_28591, "\x80\x80", "??"},
        {code_page::encoding_28591, "\xED\xA0\x80", "???"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(::testing::PrintToString(c.utf8));
        EXPECT_EQ(c.expected, code_page(c.encoding).encode(ustring8(c.utf8)));
    }
}

TEST(CodePageEncode, DropsAnIncompleteCharacterAtTheEnd) {
    const code_page page(code_page::encoding_28591);
    EXPECT_EQ("abc", page.encode(ustring8("abc\xC3")));
    EXPECT_EQ("", page.encode(ustring8("\xC3")));
    EXPECT_EQ("abc", page.encode(ustring8("abc\xF0\x9F\x98")));
}

TEST(CodePageDecode, GrowsTheOutputBeyondTheSizeOfTheInput) {
    const code_page latin(code_page::encoding_28591);
    std::string bytes;
    std::string expected;
    for (int value = 0x80; value < 0x100; ++value) {
        bytes.push_back(static_cast<char>(value));
        expected.push_back(static_cast<char>(0xC0 + value / 64));
        expected.push_back(static_cast<char>(0x80 + value % 64));
        EXPECT_EQ(expected, latin.as_utf8(bytes));
    }
    std::string long_bytes;
    std::string long_expected;
    for (int i = 0; i < 1000; ++i) {
        long_bytes += bytes;
        long_expected += expected;
    }
    EXPECT_TRUE(long_expected == latin.as_utf8(long_bytes));
}

// Twice the input left is two bytes here, which is never enough.
TEST(CodePageDecode, MakesRoomForALastByteThatBecomesThree) {
    const code_page page(code_page::encoding_1252);
    EXPECT_EQ("\xE2\x82\xAC", page.as_utf8("\x80"));
    EXPECT_EQ("a\xE2\x82\xAC", page.as_utf8("a\x80"));
    EXPECT_EQ("\xE2\x82\xAC\xE2\x82\xAC", page.as_utf8("\x80\x80"));
    std::string expected;
    for (std::size_t length = 0; length < 200; ++length) {
        EXPECT_EQ(expected, page.as_utf8(std::string(length, '\x80')));
        expected += "\xE2\x82\xAC";
    }
}

TEST(CodePageDecode, ReplacesEachInvalidByte) {
    const struct {
        code_page::encoding_type encoding;
        const char* bytes;
        const char* expected;
    } cases[] = {
        {code_page::encoding_1252, "\x81", "?"},
        {code_page::encoding_1252, "\x81\x8D\x8F\x90\x9D", "?????"},
        {code_page::encoding_1252, "a\x81\xE9z", "a?\xC3\xA9z"},
        {code_page::encoding_1252, "\xE9\x81", "\xC3\xA9?"},
        {code_page::encoding_1252, "\xE9\xE9\x81\xE9", "\xC3\xA9\xC3\xA9?\xC3\xA9"},
        {code_page::encoding_125100, "caf\xE9", "caf?"},
        {code_page::encoding_utf8, "a\xFFz", "a?z"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(::testing::PrintToString(c.bytes));
        EXPECT_EQ(c.expected, code_page(c.encoding).as_utf8(c.bytes));
    }
}

// Some of them are rejected by iconv although it advances past them, such as A2 E8 in CP949.
TEST(CodePageDecode, ProducesAtMostFourCharactersForAnyPairOfBytes) {
    for (const int value : {932, 936, 949, 950}) {
        const code_page page(number(value));
        for (int pair = 0x8000; pair < 0x10000; ++pair) {
            const std::string bytes = {static_cast<char>(pair >> 8), static_cast<char>(pair)};
            const ustring32 text = page.as_utf32(bytes);
            if (text.size() > 4)
                ADD_FAILURE() << value << ": " << std::hex << pair << " gives " << text.size();
        }
    }
    EXPECT_NE("", code_page(code_page::encoding_949).as_utf8("\xA2\xE8"));
}

TEST(CodePageDecode, EndsAtACutCharacterOrAppendsTwoNulBytes) {
    const code_page page(code_page::encoding_936);
    EXPECT_EQ(ustring8("ab"), page.as_utf8("ab\xD6")) << "with room";
    EXPECT_EQ(ustring8("\xE4\xB8\xAD\0\0", 5), page.as_utf8("\xD6\xD0\xD6")) << "without";
    EXPECT_EQ(ustring8(), page.as_utf8("\xD6"));
    EXPECT_EQ(ustring32({0x4E2D, 0, 0}), page.as_utf32("\xD6\xD0\xD6"));
}

// Nothing is flushed at the end.
TEST(CodePageDecode, LosesTheLastLetterInAComposingPage) {
    const code_page vietnamese(code_page::encoding_1258);
    const code_page hebrew(code_page::encoding_1255);
    EXPECT_EQ("plai", vietnamese.as_utf8("plain"));
    EXPECT_EQ("plain.", vietnamese.as_utf8("plain."));
    EXPECT_EQ("\xD7\x90", hebrew.as_utf8("\xE0\xE1"));
    EXPECT_EQ("\xD7\x90\xD7\x91 ", hebrew.as_utf8("\xE0\xE1 "));
}

TEST(CodePageDecode, WritesALetterHeldBackAfterTheMarkOfAnInvalidByte) {
    const code_page vietnamese(code_page::encoding_1258);
    EXPECT_EQ("?az.", vietnamese.as_utf8("a\x81z."));
    EXPECT_EQ("a??b.", vietnamese.as_utf8("ab\x81\x81."));
    EXPECT_EQ("?", vietnamese.as_utf8("a\x81"));
    const code_page hebrew(code_page::encoding_1255);
    EXPECT_EQ("?\xD7\x90\xD7\x91 ", hebrew.as_utf8("\xE0\xFF\xE1 "));
}

TEST(CodePageRoundTrip, KeepsOrReplacesEveryByteOfTheOneBytePages) {
    for (const auto& known : known_pages) {
        if (known.value < 1000 || known.value == 1255 || known.value == 1258)
            continue;
        SCOPED_TRACE(known.name);
        const code_page page(known.encoding);
        int marks = 0;
        for (int value = 0; value < 0x100; ++value) {
            const std::string byte(1, static_cast<char>(value));
            const ustring8 utf8 = page.as_utf8(byte);
            if (utf8 == "?" && value != '?')
                ++marks;
            else
                EXPECT_EQ(byte, page.encode(utf8)) << value;
        }
        const int expected = known.value == 28591    ? 0
                             : known.value == 1252   ? 5
                             : known.value == 125100 ? 128
                                                     : marks;
        EXPECT_EQ(expected, marks);
    }
}

}  // namespace
