#include <tova/strings/unicode.hpp>

#include "support/child_process.hpp"
#include "support/failing_allocation.hpp"
#include "support/widths.hpp"

#include <gtest/gtest.h>

#include <csignal>
#include <new>
#include <string>
#include <vector>

namespace {

using namespace tova::strings;
using test_support::text;

const unsigned long failed = static_cast<unsigned long>(-1);

const ustring16 bad_16 = {'-', '1'};
const ustring32 bad_32 = {'-', '1'};

ustring32 wide(const std::vector<long>& values) {
    ustring32 result;
    for (const long value : values)
        result.push_back(static_cast<wchar_t>(value));
    return result;
}

TEST(UnicodeConversions, AnEmptySourceYieldsAnEmptyResult) {
    EXPECT_EQ("", utf16_to_utf8(ustring16()));
    EXPECT_EQ("", utf32_to_utf8(ustring32()));
    EXPECT_EQ(ustring16(), utf32_to_utf16(ustring32()));
    EXPECT_EQ(ustring16(), utf8_to_utf16(ustring8()));
    EXPECT_EQ(ustring32(), utf16_to_utf32(ustring16()));
    EXPECT_EQ(ustring32(), utf8_to_utf32(ustring8()));
}

TEST(UnicodeConversions, ANulUnitIsACharacter) {
    const ustring8 nul_8("a\0b", 3);
    EXPECT_EQ((ustring16{'a', 0, 'b'}), utf8_to_utf16(nul_8));
    EXPECT_EQ((ustring32{'a', 0, 'b'}), utf8_to_utf32(nul_8));
    EXPECT_EQ(nul_8, utf16_to_utf8({'a', 0, 'b'}));
    EXPECT_EQ(nul_8, utf32_to_utf8({'a', 0, 'b'}));
}

TEST(UnicodeConversions, AByteOrderMarkInHostOrderIsACharacter) {
    const ustring8 mark_8 = "\xEF\xBB\xBF"
                            "a";
    const ustring16 mark_16 = {0xFEFF, 'a'};
    const ustring32 mark_32 = {0xFEFF, 'a'};
    EXPECT_EQ(mark_16, utf8_to_utf16(mark_8));
    EXPECT_EQ(mark_32, utf8_to_utf32(mark_8));
    EXPECT_EQ(mark_8, utf16_to_utf8(mark_16));
    EXPECT_EQ(mark_32, utf16_to_utf32(mark_16));
    EXPECT_EQ(mark_8, utf32_to_utf8(mark_32));
    EXPECT_EQ(mark_16, utf32_to_utf16(mark_32));
}

TEST(UnicodeConversions, TheSwappedMarkIsACharacterAfterTheFirstUnit) {
    EXPECT_EQ("a\xEF\xBF\xBE", utf16_to_utf8({'a', 0xFFFE}));
    EXPECT_EQ((ustring32{'a', 0xFFFE}), utf16_to_utf32({'a', 0xFFFE}));
    EXPECT_EQ((ustring16{0xFFFE}), utf8_to_utf16("\xEF\xBF\xBE"));
}

TEST(UnicodeConversions, ASourceOfMinusOneLooksLikeAFailure) {
    EXPECT_EQ(bad_16, utf8_to_utf16("-1"));
    EXPECT_EQ(utf8_to_utf16("\xFF"), utf8_to_utf16("-1"));
}

// Fails each allocation of a conversion in turn, until a run makes no more allocations.
template <typename Conversion>
void expect_clean_failures(Conversion convert) {
    unsigned failures = 0;
    for (bool met = true; met; failures += met ? 1 : 0) {
        const long live = test_support::live_allocations();
        const test_support::failing_allocation next(failures);
        try {
            convert();
            EXPECT_FALSE(next.failed()) << "the shortage was hidden";
            met = false;
        } catch (const std::bad_alloc&) {
            EXPECT_TRUE(next.failed());
        }
        EXPECT_EQ(live, test_support::live_allocations());
    }
    EXPECT_LT(0u, failures);
}

TEST(UnicodeConversions, AFailedAllocationRaisesAndLeaksNothing) {
    const ustring8 text8 = "\xF0\x9F\x98\x80" + ustring8(5000, 'a');
    const ustring16 text16 = utf8_to_utf16(text8);
    const ustring32 text32(5000, 0x1F600);
    expect_clean_failures([&] { utf8_to_utf16(text8); });
    expect_clean_failures([&] { utf8_to_utf32(text8); });
    expect_clean_failures([&] { utf16_to_utf8(text16); });
    expect_clean_failures([&] { utf16_to_utf32(text16); });
    expect_clean_failures([&] { utf32_to_utf8(text32); });
    expect_clean_failures([&] { utf32_to_utf16(text32); });
}

struct utf8_case {
    const char* bytes;
    ustring16 units;
    std::vector<long> points;
};

TEST(Utf8Decoding, ReadsTheStructureAndNothingElse) {
    const utf8_case cases[] = {
        {"A", {0x41}, {0x41}},
        {"\x7F", {0x7F}, {0x7F}},
        {"\xC2\x80", {0x80}, {0x80}},
        {"\xDF\xBF", {0x7FF}, {0x7FF}},
        {"\xE0\xA0\x80", {0x800}, {0x800}},
        {"\xE2\x82\xAC", {0x20AC}, {0x20AC}},
        {"\xEF\xBF\xBF", {0xFFFF}, {0xFFFF}},
        {"\xF0\x90\x80\x80", {0xD800, 0xDC00}, {0x10000}},
        {"\xF0\x9F\x98\x80", {0xD83D, 0xDE00}, {0x1F600}},
        {"\xF4\x8F\xBF\xBF", {0xDBFF, 0xDFFF}, {0x10FFFF}},
        // overlong forms
        {"\xC0\x80", {0}, {0}},
        {"\xC1\xBF", {0x7F}, {0x7F}},
        {"\xE0\x80\x80", {0}, {0}},
        {"\xE0\x9F\xBF", {0x7FF}, {0x7FF}},
        {"\xF0\x80\x80\x80", {0xD7C0, 0xDC00}, {0}},
        {"\xF0\x8F\xBF\xBF", {0xD7FF, 0xDFFF}, {0xFFFF}},
        // encoded surrogates
        {"\xED\xA0\x80", {0xD800}, {0xD800}},
        {"\xED\xBF\xBF", {0xDFFF}, {0xDFFF}},
        // above Unicode
        {"\xF4\x90\x80\x80", {0xDC00, 0xDC00}, {0x110000}},
        {"\xF7\xBF\xBF\xBF", {0xDFBF, 0xDFFF}, {0x1FFFFF}},
    };
    for (const auto& c : cases) {
        const ustring8 source(c.bytes);
        SCOPED_TRACE(::testing::PrintToString(source));
        EXPECT_EQ(c.units, utf8_to_utf16(source));
        EXPECT_EQ(wide(c.points), utf8_to_utf32(source));
        unsigned long advance = 0;
        EXPECT_EQ(c.points[0], unichar(source.data(), source.size(), 0, advance));
        EXPECT_EQ(source.size(), advance);
    }
}

TEST(Utf8Decoding, RejectsIncompleteSequences) {
    const struct {
        const char* bytes;
        std::vector<long> points;  // one "?" per byte
    } cases[] = {
        {"\x80", {'?'}},
        {"\xBF", {'?'}},
        {"\xC3", {'?'}},
        {"\xC3(", {'?', '('}},
        {"\xC3\xC3\xA9", {'?', 0xE9}},
        {"\xE2\x82", {'?', '?'}},
        {"\xE2\x82(", {'?', '?', '('}},
        {"\xE2(\xAC", {'?', '(', '?'}},
        {"\xF0\x9F\x98", {'?', '?', '?'}},
        {"\xF0\x9F\x98(", {'?', '?', '?', '('}},
        {"\xF8\x88\x80\x80\x80", {'?', '?', '?', '?', '?'}},
        {"\xFE", {'?'}},
        {"\xFF", {'?'}},
        {"a\xFFz", {0x61, 0x3F, 0x7A}},
        {"\xFF\xC3\xA9\xFF", {'?', 0xE9, '?'}},
    };
    for (const auto& c : cases) {
        const ustring8 source(c.bytes);
        SCOPED_TRACE(::testing::PrintToString(source));
        EXPECT_EQ(bad_16, utf8_to_utf16(source));
        EXPECT_EQ(bad_16, utf8_to_utf16("valid so far: \xC3\xA9 " + source));
        EXPECT_EQ(wide(c.points), utf8_to_utf32(source));
    }
}

TEST(Utf16Encoding, WritesOneToFourBytesPerCharacter) {
    const struct {
        ustring16 units;
        const char* bytes;
    } cases[] = {
        {{0x41}, "A"},
        {{0x7F}, "\x7F"},
        {{0x80}, "\xC2\x80"},
        {{0x7FF}, "\xDF\xBF"},
        {{0x800}, "\xE0\xA0\x80"},
        {{0xD7FF}, "\xED\x9F\xBF"},
        {{0xE000}, "\xEE\x80\x80"},
        {{0xFFFF}, "\xEF\xBF\xBF"},
        {{0xD800, 0xDC00}, "\xF0\x90\x80\x80"},
        {{0xDBFF, 0xDFFF}, "\xF4\x8F\xBF\xBF"},
        {{'a', 0xD83D, 0xDE00, 'b'},
         "a\xF0\x9F\x98\x80"
         "b"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(::testing::PrintToString(c.bytes));
        EXPECT_EQ(c.bytes, utf16_to_utf8(c.units));
        EXPECT_EQ(utf8_to_utf32(c.bytes), utf16_to_utf32(c.units));
    }
}

TEST(Utf16Encoding, AnUnpairedSurrogateMakesTheWholeResultMinusOne) {
    const ustring16 cases[] = {
        {0xD800},            // high at the end
        {'a', 'b', 0xDBFF},  // the terminator is not a low surrogate
        {0xD800, 'a'},      {0xD800, 0xD800},         {0xD800, 0xDBFF, 0xDC00}, {0xDC00},
        {'a', 0xDFFF, 'b'}, {0xD800, 0xDC00, 0xDC00}, {0xD800, 0xE000},         {0xDC00, 0xD800},
    };
    for (const ustring16& source : cases) {
        SCOPED_TRACE(::testing::PrintToString(source));
        EXPECT_EQ("-1", utf16_to_utf8(source));
        EXPECT_EQ(bad_32, utf16_to_utf32(source));
    }
}

void expect_exhausted_stack(const std::function<void()>& body) {
    test_support::child_limits limits;
    limits.stack_bytes = 1 << 20;
    limits.cpu_seconds = 60;
    const test_support::child_result result = test_support::run_in_child(body, limits);
    if (test_support::under_sanitizer()) {
        EXPECT_NE(std::string::npos, result.output.find("stack-overflow")) << result.output;
    } else {
        EXPECT_FALSE(result.exited) << result.exit_code;
        EXPECT_EQ(SIGSEGV, result.signal);
    }
}

TEST(Utf16Encoding, ALeadingSwappedMarkRecursesUntilTheStackOverflows) {
    const ustring16 sources[] = {{0xFFFE}, {0xFFFE, 0x4100}, ustring16(500, 0xFFFE)};
    for (const ustring16& source : sources) {
        expect_exhausted_stack([&] { std::printf("%zu", utf16_to_utf8(source).size()); });
        expect_exhausted_stack([&] { std::printf("%zu", utf16_to_utf32(source).size()); });
    }
}

TEST(Utf16Encoding, ALeadingSwappedMarkConvertsAfterTheModifyingSwap) {
    ustring16 source = {0xFFFE, 0x4100};
    check_BOM_and_modify_swap(source);
    EXPECT_EQ("\xEF\xBB\xBF"
              "A",
              utf16_to_utf8(source));
}

TEST(Utf32Encoding, WritesOneToFourBytesPerCharacter) {
    EXPECT_EQ("\x7F", utf32_to_utf8({0x7F}));
    EXPECT_EQ("\xC2\x80", utf32_to_utf8({0x80}));
    EXPECT_EQ("\xDF\xBF", utf32_to_utf8({0x7FF}));
    EXPECT_EQ("\xE0\xA0\x80", utf32_to_utf8({0x800}));
    EXPECT_EQ("\xEF\xBF\xBF", utf32_to_utf8({0xFFFF}));
    EXPECT_EQ("\xF0\x90\x80\x80", utf32_to_utf8({0x10000}));
    EXPECT_EQ("\xF4\x8F\xBF\xBF", utf32_to_utf8({0x10FFFF}));
}

TEST(Utf32Encoding, DropsAValueAboveUnicodeSilently) {
    EXPECT_EQ("AB", utf32_to_utf8({0x41, 0x110000, 0x42}));
    EXPECT_EQ("", utf32_to_utf8({0x7FFFFFFF}));
}

TEST(Utf32Encoding, RejectsASurrogateValueAndDropsWhatWasConverted) {
    EXPECT_EQ("-1", utf32_to_utf8({0x41, 0xD800, 0x42}));
    EXPECT_EQ("-1", utf32_to_utf8({0xDFFF}));
    EXPECT_EQ("-1", utf32_to_utf8({0xD83D, 0xDE00}));
    EXPECT_EQ("\xED\x9F\xBF\xEE\x80\x80", utf32_to_utf8({0xD7FF, 0xE000}));
    EXPECT_EQ("-1", utf32_to_utf8(ustring32(5000, L'a') + wchar_t(0xD800)));
}

TEST(Utf32Encoding, ANegativeValueBecomesItsLowByte) {
    EXPECT_EQ("\xFF", utf32_to_utf8(wide({-1})));
    EXPECT_EQ("A", utf32_to_utf8(wide({-256 + 0x41})));
    EXPECT_EQ(ustring8(1, '\0'), utf32_to_utf8(wide({-0x80000000L})));
}

TEST(Utf32Encoding, ReservesTwiceTheSource) {
    EXPECT_LE(2000u, utf32_to_utf8(ustring32(1000, L'a')).capacity());
}

TEST(Utf32ToUtf16, PairsBeginAtFFFFAndNothingIsSubtracted) {
    const struct {
        long point;
        ustring16 units;
    } cases[] = {
        {0, {0}},
        {0x41, {0x41}},
        {0xD7FF, {0xD7FF}},
        {0xE000, {0xE000}},
        {0xFFFE, {0xFFFE}},
        {0xFFFF, {0xD83F, 0xDFFF}},
        {0x10000, {0xD840, 0xDC00}},
        {0x1F600, {0xD87D, 0xDE00}},
        {0x10FFFF, {0xDC3F, 0xDFFF}},
        {-1, {0xFFFF}},
        {-0x10000 + 0xD800, {0xD800}},
        {-0x80000000L, {0}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.point);
        EXPECT_EQ(c.units, utf32_to_utf16(wide({c.point})));
    }
}

TEST(Utf32ToUtf16, RejectsSurrogatesAndValuesAboveUnicode) {
    for (const long point : {0xD800L, 0xDBFFL, 0xDC00L, 0xDFFFL, 0x110000L, 0x7FFFFFFFL}) {
        SCOPED_TRACE(point);
        EXPECT_EQ(bad_16, utf32_to_utf16(wide({point})));
        EXPECT_EQ(bad_16, utf32_to_utf16(wide({'a', point, 'b'})));
    }
}

TEST(Utf32ToUtf16, ItsPairsAreNotThoseOfUtf8ToUtf16) {
    EXPECT_EQ((ustring16{0xD840, 0xDC00}), utf32_to_utf16({0x10000}));
    EXPECT_EQ((ustring16{0xD800, 0xDC00}), utf8_to_utf16("\xF0\x90\x80\x80"));
}

TEST(Unichar, CountsFromTheIndex) {
    const char bytes[] = "a\xE2\x82\xACz";
    const struct {
        unsigned long length, index;
        unsigned int point;
        unsigned long advance;
    } cases[] = {
        {5, 0, 'a', 1},     {5, 1, 0x20AC, 3},  {5, 2, 63, failed}, {5, 3, 63, failed},
        {5, 4, 'z', 1},     {4, 1, 0x20AC, 3},  {3, 1, 63, failed}, {2, 1, 63, failed},
        {5, 5, 63, failed}, {5, 6, 63, failed}, {0, 0, 63, failed}, {5, failed, 63, failed},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.index);
        SCOPED_TRACE(c.length);
        unsigned long advance = 99;
        EXPECT_EQ(c.point, unichar(bytes, c.length, c.index, advance));
        EXPECT_EQ(c.advance, advance);
    }
}

TEST(Unichar, Of16BitsPairsSurrogates) {
    const unsigned short units[] = {'a', 0xD83D, 0xDE00, 0xDBFF, 'b', 0xFFFE};
    const struct {
        unsigned long length, index;
        unsigned int point;
        unsigned long advance;
    } cases[] = {
        {6, 0, 'a', 1},     {6, 1, 0x1F600, 2},      {6, 2, 63, failed}, {6, 3, 63, failed},
        {6, 4, 'b', 1},     {6, 5, 0xFFFE, 1},       {2, 1, 63, failed}, {3, 1, 0x1F600, 2},
        {6, 6, 63, failed}, {6, failed, 63, failed}, {0, 0, 63, failed},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.index);
        unsigned long advance = 99;
        EXPECT_EQ(c.point, unichar(units, c.length, c.index, advance));
        EXPECT_EQ(c.advance, advance);
    }
}

TEST(Unichar, Of32BitsReturnsTheUnitUnchecked) {
    const ustring32 units = wide({0x41, 0xD800, 0x110000, -1});
    unsigned long advance = 99;
    EXPECT_EQ(0x41u, unichar(units.data(), 4, 0, advance));
    EXPECT_EQ(1u, advance);
    EXPECT_EQ(0xD800u, unichar(units.data(), 4, 1, advance));
    EXPECT_EQ(0x110000u, unichar(units.data(), 4, 2, advance));
    EXPECT_EQ(0xFFFFFFFFu, unichar(units.data(), 4, 3, advance));
    EXPECT_EQ(1u, advance);
    EXPECT_EQ(63u, unichar(units.data(), 4, 4, advance));
    EXPECT_EQ(failed, advance);
}

template <typename String>
class CharacterIndex : public ::testing::Test {};
typedef ::testing::Types<ustring8, ustring16> indexed_widths;
TYPED_TEST_SUITE(CharacterIndex, indexed_widths, test_support::width_name);

TYPED_TEST(CharacterIndex, OfAnEmptyStringFailsForEveryNumber) {
    EXPECT_EQ(failed, character_index(TypeParam(), 0));
    EXPECT_EQ(failed, character_index(TypeParam(), 1));
    EXPECT_EQ(failed, character_index(TypeParam(), failed));
}

TYPED_TEST(CharacterIndex, OfAsciiIsTheNumberUpToTheSize) {
    const TypeParam abc = text<TypeParam>("abc");
    EXPECT_EQ(0u, character_index(abc, 0));
    EXPECT_EQ(1u, character_index(abc, 1));
    EXPECT_EQ(2u, character_index(abc, 2));
    EXPECT_EQ(failed, character_index(abc, 3));
}

TEST(CharacterIndex8, WalksSequencesAndContinuesPastTheTerminator) {
    const ustring8 text = "\xC3\xA9\xC3\xA9";
    EXPECT_EQ(0u, character_index(text, 0));
    EXPECT_EQ(2u, character_index(text, 1));
    EXPECT_EQ(4u, character_index(text, 2));
    EXPECT_EQ(5u, character_index(text, 3));
    EXPECT_EQ(failed, character_index(text, 4));
    EXPECT_EQ(8u, character_index("a\xE2\x82\xAC\xF0\x9F\x98\x80", 3));
}

TEST(CharacterIndex8, ReadsZerosFarPastTheEnd) {
    const ustring8 text("\xF0\x9F\x98\x80"
                        "abcd");
    EXPECT_EQ(4u, character_index(text, 1));
    EXPECT_EQ(10u, character_index(text, 7));
    std::string emoji;
    for (int i = 0; i < 1000; ++i)
        emoji += "\xF0\x9F\x98\x80";
    EXPECT_EQ(4000u + 2999u, character_index(emoji, 3999));
}

TEST(CharacterIndex8, AnInvalidSequenceFailsOnlyBeforeTheCharacter) {
    EXPECT_EQ(0u, character_index("\xFF"
                                  "abc",
                                  0));
    EXPECT_EQ(failed, character_index("\xFF"
                                      "abc",
                                      1));
    EXPECT_EQ(1u, character_index("a\xC3z", 1));
    EXPECT_EQ(failed, character_index("a\xC3z", 2));
}

TEST(CharacterIndex16, WalksPairsAndContinuesPastTheTerminator) {
    const ustring16 text = {0xD83D, 0xDE00, 0xD83D, 0xDE00};
    EXPECT_EQ(0u, character_index(text, 0));
    EXPECT_EQ(2u, character_index(text, 1));
    EXPECT_EQ(4u, character_index(text, 2));
    EXPECT_EQ(5u, character_index(text, 3));
    EXPECT_EQ(failed, character_index(text, 4));
}

TEST(CharacterIndex16, AHighSurrogateNeedsItsLowOne) {
    EXPECT_EQ(failed, character_index(ustring16{0xD800, 'a', 'b'}, 1));
    EXPECT_EQ(failed, character_index(ustring16{'a', 0xD800}, 1 + 1));
    EXPECT_EQ(failed, character_index(ustring16{'a', 'b', 0xD800, 'c'}, 3));
    EXPECT_EQ(0u, character_index(ustring16{0xD800, 'a', 'b'}, 0));
}

TEST(CharacterIndex16, AStrayLowSurrogateCountsExceptAtTheBeginning) {
    EXPECT_EQ(3u, character_index(ustring16{'a', 0xDC00, 'b', 'c'}, 3));
    EXPECT_EQ(0u, character_index(ustring16{0xDC00, 'a', 'b'}, 0));
    EXPECT_EQ(failed, character_index(ustring16{0xDC00, 'a', 'b'}, 1));
    EXPECT_EQ(failed, character_index(ustring16{0xDC00, 'a', 'b'}, 2));
    EXPECT_EQ(failed, character_index(ustring16{0xDFFF, 'a'}, 1));
    EXPECT_EQ(1u, character_index(ustring16{0xE000, 'a'}, 1));
}

TEST(ByteOrder, TheModifyingSwapSwapsTheBytesOfEachUnit) {
    ustring16 text = {0x1234, 0xFFFE, 0x0041, 0};
    modify_swap_string_bytes_order(text);
    EXPECT_EQ((ustring16{0x3412, 0xFEFF, 0x4100, 0}), text);
    ustring16 empty;
    modify_swap_string_bytes_order(empty);
    EXPECT_EQ(ustring16(), empty);
    ustring16 all;
    ustring16 swapped;
    for (unsigned unit = 0; unit < 0x10000; ++unit) {
        all.push_back(static_cast<unsigned short>(unit));
        swapped.push_back(static_cast<unsigned short>(unit % 256 * 256 + unit / 256));
    }
    modify_swap_string_bytes_order(all);
    EXPECT_TRUE(swapped == all);
}

TEST(ByteOrder, TheOtherSwapReturnsItsArgument) {
    const ustring16 text = {0x1234, 0xFFFE, 0x0041};
    EXPECT_EQ(text, swap_string_bytes_order(text));
    EXPECT_EQ(ustring16(), swap_string_bytes_order(ustring16()));
    const ustring16 marked = {0xFFFE, 0x4100};
    EXPECT_EQ(marked, swap_string_bytes_order(marked));
}

TEST(ByteOrder, TheModifyingCheckSwapsAStringOfTheOtherOrderAndKeepsTheMark) {
    ustring16 swapped = {0xFFFE, 0x4100};
    check_BOM_and_modify_swap(swapped);
    EXPECT_EQ((ustring16{0xFEFF, 0x41}), swapped);
    for (ustring16 text : {ustring16{0xFEFF, 0x4100}, ustring16{0x4100, 0xFFFE}, ustring16()}) {
        const ustring16 before = text;
        check_BOM_and_modify_swap(text);
        EXPECT_EQ(before, text);
    }
}

TEST(ByteOrder, TheOtherCheckNeverChangesAnything) {
    for (const ustring16& text :
         {ustring16{0xFFFE, 0x4100}, ustring16{0xFEFF, 0x41}, ustring16{0x41}, ustring16()})
        EXPECT_EQ(text, check_BOM_and_swap(text));
}

// Runs of characters of one, two and three bytes, as long as what a loop for one kind passes to
// another.
TEST(Utf16, ConvertsRunsOfEachKindOfCharacter) {
    const ustring16 kinds[] = {ustring16(1, u'a'), ustring16(1, 0xE4), ustring16(1, 0x4E00)};
    const std::string bytes[] = {"a", "\xC3\xA4", "\xE4\xB8\x80"};
    for (const int first : {0, 1, 2})
        for (const int second : {0, 1, 2})
            for (std::size_t before = 0; before <= 300; before += 50)
                for (std::size_t after = 0; after <= 900; after += 150) {
                    ustring16 source;
                    std::string expected;
                    const auto append = [&](int kind, std::size_t count) {
                        for (; count != 0; --count) {
                            source += kinds[kind];
                            expected += bytes[kind];
                        }
                    };
                    append(first, before);
                    append(second, after);
                    append(first, before);
                    EXPECT_TRUE(expected == utf16_to_utf8(source)) << before << " " << after;
                    EXPECT_TRUE(source == utf8_to_utf16(ustring8(expected)));
                }
}

}  // namespace
