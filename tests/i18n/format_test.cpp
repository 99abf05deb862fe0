#include <tova/i18n/format.hpp>

#include <tova/types/nil.hpp>

#include "i18n/message_text.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <cerrno>
#include <cfloat>
#include <climits>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <limits>
#include <string>
#include <vector>

namespace {

using namespace tova::i18n::_private;
using test_support::with_separators;
using tova::i18n::format_value;
using tova::i18n::message_item;
using tova::strings::ustring8;
using tova::types::variant;

std::string int_text(long value, const char* format) {
    return format_int(value, with_separators(format));
}

std::string double_text(double value, const char* format) {
    return format_double(value, with_separators(format));
}

std::string duration_text(double seconds, const char* format) {
    return format_duration(seconds, with_separators(format));
}

// The number and the unit with a "/" between them: "1.5/KB". A failure is "-0/".
std::string memory_text(const variant& value, const char* format) {
    ustring8 unit("left over");
    const ustring8 number = format_memory(value, with_separators(format), unit);
    return number + "/" + unit;
}

std::string metric_text(const variant& value, const char* format) {
    ustring8 unit("left over");
    const ustring8 number = format_metric(value, with_separators(format), unit);
    return number + "/" + unit;
}

struct int_case {
    long value;
    const char* format;
    const char* text;
};

template <std::size_t Size>
void expect_ints(const int_case (&cases)[Size]) {
    for (const auto& c : cases) {
        SCOPED_TRACE(std::to_string(c.value) + " " + c.format);
        EXPECT_EQ(c.text, int_text(c.value, c.format));
    }
}

struct double_case {
    double value;
    const char* format;
    const char* text;
};

template <std::size_t Size>
void expect_doubles(std::string (*render)(double, const char*), const double_case (&cases)[Size]) {
    for (const auto& c : cases) {
        SCOPED_TRACE(std::to_string(c.value) + " " + c.format);
        EXPECT_EQ(c.text, render(c.value, c.format));
    }
}

struct value_case {
    variant value;
    const char* format;
    const char* text;
};

template <std::size_t Size>
void expect_values(std::string (*render)(const variant&, const char*),
                   const value_case (&cases)[Size]) {
    for (const auto& c : cases) {
        SCOPED_TRACE(std::string(c.value.as_string()) + " " + c.format);
        EXPECT_EQ(c.text, render(c.value, c.format));
    }
}

// The prefixes of a word, from the shortest one requested to the whole word.
std::vector<std::string> prefixes(const std::string& word, std::size_t shortest = 0) {
    std::vector<std::string> result;
    for (std::size_t size = shortest; size <= word.size(); ++size)
        result.push_back(word.substr(0, size));
    return result;
}

const long least = LONG_MIN;
const long most = LONG_MAX;

// --- Integers -------------------------------------------------------------------------------

TEST(FormatInt, WritesPlainDecimalWithoutOptions) {
    const int_case cases[] = {
        {0, "", "0"},
        {7, "", "7"},
        {12345, "", "12345"},
        {-12345, "", "-12345"},
        {most, "", "9223372036854775807"},
        {least, "", "-9223372036854775808"},
        {255, "base|dec", "255"},
        {-255, "base|dec", "-255"},
        {255, "base|default", "255"},
    };
    expect_ints(cases);
}

TEST(FormatInt, GroupsTheDigitsOfASpacedDecimalFromTheRight) {
    const int_case cases[] = {
        {0, "base|spaced_dec", "0"},
        {12, "base|spaced_dec", "12"},
        {999, "base|spaced_dec", "999"},
        {1000, "base|spaced_dec", "1 000"},
        {12345, "base|spaced_dec", "12 345"},
        {999999, "base|spaced_dec", "999 999"},
        {1234567, "base|spaced_dec", "1 234 567"},
        {-1, "base|spaced_dec", "-1"},
        {-999, "base|spaced_dec", "-999"},
        {-1234, "base|spaced_dec", "-1 234"},
        {-123456, "base|spaced_dec", "-123 456"},
        {-1234567, "base|spaced_dec", "-1 234 567"},
        {most, "base|spaced_dec", "9 223 372 036 854 775 807"},
        {least, "base|spaced_dec", "-9 223 372 036 854 775 808"},
    };
    expect_ints(cases);
}

TEST(FormatInt, PadsHexadecimalToGroupsOfFourDigits) {
    const int_case cases[] = {
        {0, "base|hex", "0x0000"},
        {1, "base|hex", "0x0001"},
        {10, "base|hex", "0x000a"},
        {255, "base|hex", "0x00ff"},
        {0xabc, "base|hex", "0x0abc"},
        {0xffff, "base|hex", "0xffff"},
        {0x10000, "base|hex", "0x00010000"},
        {0x123456789, "base|hex", "0x000123456789"},
        {most, "base|hex", "0x7fffffffffffffff"},
    };
    expect_ints(cases);
}

TEST(FormatInt, ShowsNegativeHexadecimalAsAComplementWithRoomForTheSign) {
    const int_case cases[] = {
        {-1, "base|hex", "0xffff"},
        {-128, "base|hex", "0xff80"},
        {-129, "base|hex", "0xff7f"},
        {-200, "base|hex", "0xff38"},
        {-0x8000, "base|hex", "0x8000"},
        {-0x8001, "base|hex", "0xffff7fff"},
        {-0x10000, "base|hex", "0xffff0000"},
        {-0x80000000L, "base|hex", "0x80000000"},
        {-0x80000001L, "base|hex", "0xffff7fffffff"},
        {-0x800000000000L, "base|hex", "0x800000000000"},
    };
    expect_ints(cases);
}

TEST(FormatInt, KeepsTheMinusSignWhenTheComplementNeedsMoreThan64Bits) {
    const std::string zeros61(61, '0');
    const std::string ones61(61, '1');
    EXPECT_EQ("0x-800000000001", int_text(-0x800000000001L, "base|hex"));
    EXPECT_EQ("0x-8000000000000000", int_text(least, "base|hex"));
    EXPECT_EQ("o-1000000000000000000000", int_text(least, "base|oct"));
    EXPECT_EQ("-1000" + zeros61.substr(1) + "b", int_text(least, "base|bin"));
    EXPECT_EQ("-10" + zeros61 + "b", int_text(-(1L << 62), "base|bin"));
    // The last ones that fit.
    EXPECT_EQ("1" + zeros61 + "b", int_text(-(1L << 61), "base|bin"));
    EXPECT_EQ("10" + ones61 + "b", int_text(-(1L << 61) - 1, "base|bin"));
    EXPECT_EQ("o40000000000000000000", int_text(-(1L << 59), "base|oct"));
    // A wide field does the same to a small number.
    EXPECT_EQ("1" + ones61 + "1b", int_text(-1, "base|bin|fieldsize|64"));
    EXPECT_EQ("-1b", int_text(-1, "base|bin|fieldsize|65"));
    EXPECT_EQ("0xfffffffffffffff", int_text(-1, "base|hex|fieldsize|17"));
    EXPECT_EQ("0x-1", int_text(-1, "base|hex|fieldsize|18"));
    EXPECT_EQ("-101b", int_text(-5, "base|bin|fieldsize|2000000000"));
}

TEST(FormatInt, MarksOctalWithALetterAndPadsItOnlyToAField) {
    const int_case cases[] = {
        {0, "base|oct", "o0"},
        {7, "base|oct", "o7"},
        {8, "base|oct", "o10"},
        {255, "base|oct", "o377"},
        {-1, "base|oct", "o7"},
        {-4, "base|oct", "o4"},
        {-5, "base|oct", "o73"},
        {-8, "base|oct", "o70"},
        {most, "base|oct", "o777777777777777777777"},
    };
    expect_ints(cases);
}

TEST(FormatInt, MarksBinaryWithALetterAtTheEnd) {
    const int_case cases[] = {
        {0, "base|bin", "0b"},          {1, "base|bin", "1b"},      {5, "base|bin", "101b"},
        {255, "base|bin", "11111111b"}, {-1, "base|bin", "1b"},     {-2, "base|bin", "10b"},
        {-3, "base|bin", "101b"},       {-4, "base|bin", "100b"},   {-5, "base|bin", "1011b"},
        {-8, "base|bin", "1000b"},      {-9, "base|bin", "10111b"},
    };
    expect_ints(cases);
}

TEST(FormatInt, TreatsTheFieldOfADecimalAsALimitAndNeverPads) {
    const int_case cases[] = {
        {12345, "fieldsize|0", "12345"},
        {12345, "fieldsize|1", "-0"},
        {12345, "fieldsize|3", "-0"},
        {12345, "fieldsize|4", "-0"},
        {12345, "fieldsize|5", "12345"},
        {12345, "fieldsize|10", "12345"},
        {-12345, "fieldsize|5", "-0"},
        {-12345, "fieldsize|6", "-12345"},
        {0, "fieldsize|1", "0"},
        {1234567, "base|spaced_dec|fieldsize|8", "-0"},
        {1234567, "base|spaced_dec|fieldsize|9", "1 234 567"},
        {-1234, "base|spaced_dec|fieldsize|5", "-0"},
        {-1234, "base|spaced_dec|fieldsize|6", "-1 234"},
        {-123, "base|spaced_dec|fieldsize|4", "-123"},
    };
    expect_ints(cases);
}

TEST(FormatInt, PadsOtherBasesWithZerosAfterThePrefix) {
    const int_case cases[] = {
        {255, "base|hex|fieldsize|3", "-0"},       {255, "base|hex|fieldsize|4", "0xff"},
        {255, "base|hex|fieldsize|5", "0x0ff"},    {255, "base|hex|fieldsize|6", "0x00ff"},
        {255, "base|hex|fieldsize|8", "0x0000ff"}, {0, "base|hex|fieldsize|2", "-0"},
        {0, "base|hex|fieldsize|3", "0x0"},        {255, "base|oct|fieldsize|3", "-0"},
        {255, "base|oct|fieldsize|4", "o377"},     {255, "base|oct|fieldsize|6", "o00377"},
        {5, "base|bin|fieldsize|3", "-0"},         {5, "base|bin|fieldsize|4", "101b"},
        {5, "base|bin|fieldsize|8", "0000101b"},
    };
    expect_ints(cases);
    EXPECT_EQ("0x" + std::string(96, '0') + "ff", int_text(255, "base|hex|fieldsize|100"));
}

TEST(FormatInt, ExtendsAComplementToItsFieldAndAddsNoZeros) {
    const int_case cases[] = {
        {-1, "base|hex|fieldsize|2", "-0"},          {-1, "base|hex|fieldsize|3", "0xf"},
        {-1, "base|hex|fieldsize|10", "0xffffffff"}, {-200, "base|hex|fieldsize|3", "-0"},
        {-200, "base|hex|fieldsize|4", "0x38"},      {-200, "base|hex|fieldsize|5", "0xf38"},
        {-200, "base|hex|fieldsize|6", "0xff38"},    {-255, "base|hex|fieldsize|4", "0x1"},
        {-255, "base|hex|fieldsize|3", "0x1"},       {-1, "base|oct|fieldsize|2", "o7"},
        {-1, "base|oct|fieldsize|4", "o777"},        {-5, "base|bin|fieldsize|1", "-0"},
        {-5, "base|bin|fieldsize|3", "11b"},         {-5, "base|bin|fieldsize|4", "11b"},
        {-5, "base|bin|fieldsize|5", "1011b"},       {-5, "base|bin|fieldsize|8", "1111011b"},
    };
    expect_ints(cases);
}

TEST(FormatInt, FailsForEveryNegativeField) {
    const int_case cases[] = {
        {1, "fieldsize|-1", "-0"},           {1, "fieldsize|-10", "-0"},
        {1, "base|hex|fieldsize|-10", "-0"}, {-1, "base|bin|fieldsize|-2147483648", "-0"},
        {1, "fieldsize|4294967295", "-0"},
    };
    expect_ints(cases);
}

TEST(FormatInt, ReadsTheFieldSizeLikeAtolAndCutsItTo32Bits) {
    const int_case cases[] = {
        {123, "fieldsize|abc", "123"},
        {123, "fieldsize|2x", "-0"},
        {123, "fieldsize|3x", "123"},
        {123, "fieldsize| \t+3", "123"},
        {123, "fieldsize|0x2", "123"},
        {12, "fieldsize|4294967298", "12"},
        {123, "fieldsize|4294967298", "-0"},
        {123, "fieldsize|4294967296", "123"},
        {123, "fieldsize|99999999999999999999", "-0"},
        {123, "fieldsize|-99999999999999999999", "123"},
        {123, "fieldsize||base|dec", "123"},
    };
    expect_ints(cases);
}

TEST(FormatInt, LetsALaterPairOverrideAnEarlierOne) {
    const int_case cases[] = {
        {8, "base|hex|base|oct", "o10"},
        {255, "base|hex|base|dec", "255"},
        {0xfffff, "base|hex|base|spaced_dec", "1 048 575"},
        {255, "fieldsize|1|fieldsize|3", "255"},
        {255, "fieldsize|3|fieldsize|1", "-0"},
        {255, "fieldsize|6|base|hex", "0x00ff"},
    };
    expect_ints(cases);
}

TEST(FormatInt, KeepsThePrefixLengthOfAnEarlierBase) {
    const int_case cases[] = {
        {255, "base|hex|base|dec|fieldsize|4", "-0"},
        {255, "base|hex|base|dec|fieldsize|5", "255"},
        {255, "base|bin|base|dec|fieldsize|3", "-0"},
        {255, "base|bin|base|dec|fieldsize|4", "255"},
        {255, "base|oct|base|default|fieldsize|3", "-0"},
        {255, "base|hex|base|bin|fieldsize|10", "011111111b"},
    };
    expect_ints(cases);
}

TEST(FormatInt, KeepsTheGroupingOfAnEarlierSpacedBase) {
    const int_case cases[] = {
        {1234567, "base|spaced_dec|base|dec", "1 234 567"},
        {255, "base|spaced_dec|base|hex", "0x00ff"},
        {0x12345, "base|spaced_dec|base|hex", "0x00012 345"},
        {-1, "base|spaced_dec|base|hex", "0xf fff"},
        {255, "base|spaced_dec|base|bin", "11 111 111b"},
        {0x12345, "base|spaced_dec|base|hex|fieldsize|8", "0x0012 345"},
    };
    expect_ints(cases);
}

TEST(FormatInt, AcceptsEveryPrefixOfAKeyAndOfAWord) {
    for (const auto& key : prefixes("base"))
        EXPECT_EQ("0x00ff", int_text(255, (key + "|hex").c_str())) << key;
    for (const auto& key : prefixes("fieldsize", 1))
        EXPECT_EQ("-0", int_text(255, (key + "|2").c_str())) << key;

    const struct {
        const char* word;
        const char* text;
        std::size_t shortest;  // a shorter prefix matches an earlier word
    } words[] = {
        {"dec", "4095", 0},   {"default", "4095", 0}, {"spaced_dec", "4 095", 1},
        {"hex", "0x0fff", 1}, {"oct", "o7777", 1},    {"bin", "111111111111b", 1},
    };
    for (const auto& w : words) {
        for (const auto& word : prefixes(w.word, w.shortest))
            EXPECT_EQ(w.text, int_text(4095, ("base|" + word + "|f|0").c_str())) << word;
    }
}

TEST(FormatInt, ReturnsTheMarkerForUnknownKeysAndWords) {
    const char* const formats[] = {"x|1",         "bases|dec", "Base|dec",     "BASE|dec",
                                   "ase|dec",     " base|dec", "fields|1|x|1", "fieldsizes|1",
                                   "precision|2", "base|hexa", "base|HEX",     "base|decimal",
                                   "base| dec",   "base|2",    "base|x"};
    for (const char* format : formats)
        EXPECT_EQ("-0", int_text(255, format)) << format;
    EXPECT_EQ("-0", format_int(255, with_separators(std::string("base|hex\0", 9))));
    EXPECT_EQ("-0", format_int(255, with_separators(std::string("base\0|hex", 9))));
}

TEST(FormatInt, ReturnsTheMarkerForAnOddNumberOfTokens) {
    const int_case cases[] = {
        {255, "base", "-0"},
        {255, "base|", "-0"},  // an empty tail is not a token
        {255, "|", "-0"},
        {255, "x", "-0"},
        {255, "base|hex|fieldsize", "-0"},
        {255, "base|hex|fieldsize|", "-0"},
        {255, "|||", "-0"},
    };
    expect_ints(cases);
}

TEST(FormatInt, CountsEmptyTokensInTheList) {
    const int_case cases[] = {
        {255, "||", "255"},  // an empty key is base, an empty value dec
        {255, "||||", "255"},
        {255, "|hex", "0x00ff"},
        {255, "base|hex|", "0x00ff"},  // two tokens and an empty tail
        {255, "base||fieldsize|3", "255"},
    };
    expect_ints(cases);
}

// The complement digit by digit: subtract every digit from the highest one, then add 1.
std::string plain_complement(unsigned long magnitude, int base, int field, int prefix_length) {
    std::vector<int> digits;
    for (unsigned long rest = magnitude; rest != 0; rest /= static_cast<unsigned long>(base))
        digits.push_back(static_cast<int>(rest % static_cast<unsigned long>(base)));

    const auto grow = [&](std::size_t size) {
        while (digits.size() < size)
            digits.push_back(0);
    };
    if (field == 0) {
        // There is room for the sign if the number is at most half the power.
        bool too_large = digits.back() > base / 2;
        if (digits.back() == base / 2)
            for (std::size_t i = 0; i + 1 < digits.size(); ++i)
                too_large = too_large || digits[i] != 0;
        if (too_large)
            grow(digits.size() + 1);
        while (base == 16 && digits.size() % 4 != 0)
            grow(digits.size() + 1);
    } else if (field > prefix_length) {
        grow(static_cast<std::size_t>(field - prefix_length));
    }

    int carry = 1;
    for (int& digit : digits) {
        digit = base - 1 - digit + carry;
        carry = digit / base;
        digit %= base;
    }
    while (digits.size() > 1 && digits.back() == 0)
        digits.pop_back();
    std::string text;
    for (auto digit = digits.rbegin(); digit != digits.rend(); ++digit)
        text += "0123456789abcdef"[*digit];
    return text;
}

std::string plain_int(long value, int base, int field) {
    const int prefix_length = base == 16 ? 2 : 1;
    std::string digits;
    if (value < 0) {
        digits = plain_complement(static_cast<unsigned long>(-value), base, field, prefix_length);
    } else {
        char text[70] = "0";
        if (base == 2) {
            digits = "0";
            for (long rest = value; rest != 0; rest /= 2) {
                if (rest == value)
                    digits.clear();
                digits.insert(0, 1, static_cast<char>('0' + rest % 2));
            }
        } else {
            std::snprintf(text, sizeof text, base == 8 ? "%lo" : "%lx", value);
            digits = text;
        }
    }
    const int length = static_cast<int>(digits.size());
    if (field != 0 && length + prefix_length > field)
        return "-0";
    if (value >= 0) {
        if (field != 0)
            digits.insert(0, static_cast<std::size_t>(field - prefix_length - length), '0');
        else if (base == 16)
            digits.insert(0, static_cast<std::size_t>((4 - length % 4) % 4), '0');
    }
    return base == 16 ? "0x" + digits : base == 8 ? "o" + digits : digits + "b";
}

TEST(FormatInt, AgreesWithDigitByDigitComplementsForSmallNumbersInEveryBaseAndField) {
    const struct {
        int base;
        const char* word;
    } bases[] = {{2, "bin"}, {8, "oct"}, {16, "hex"}};
    for (const auto& b : bases)
        for (int field = 0; field <= 17; ++field) {
            const std::string format =
                std::string("base|") + b.word + "|fieldsize|" + std::to_string(field);
            for (long value = -1100; value <= 1100; ++value)
                ASSERT_EQ(plain_int(value, b.base, field), int_text(value, format.c_str()))
                    << value << " " << format;
        }
}

TEST(FormatInt, AgreesWithDigitByDigitComplementsAroundThePowersOfTwo) {
    const struct {
        int base;
        const char* format;
        int last_shift;  // a higher one produces a complement of more than 64 bits
    } bases[] = {{2, "base|bin", 60}, {8, "base|oct", 58}, {16, "base|hex", 46}};
    for (const auto& b : bases)
        for (int shift = 0; shift <= b.last_shift; ++shift)
            for (long change = -2; change <= 2; ++change) {
                const long value = (1L << shift) + change;
                ASSERT_EQ(plain_int(value, b.base, 0), int_text(value, b.format)) << value;
                ASSERT_EQ(plain_int(-value, b.base, 0), int_text(-value, b.format)) << -value;
            }
}

// --- Floating-point numbers -----------------------------------------------------------------

TEST(FormatDouble, WritesTwoDecimalsWithoutOptions) {
    const double_case cases[] = {
        {0.0, "", "0.00"},
        {-0.0, "", "-0.00"},
        {3.14159, "", "3.14"},
        {-1.5, "", "-1.50"},
        {999.999, "", "1000.00"},
        {1234567.0, "", "1234567.00"},
        {1e21, "", "1000000000000000000000.00"},
    };
    expect_doubles(double_text, cases);
}

TEST(FormatDouble, WritesThePrecisionAsTheNumberOfDecimals) {
    const double_case cases[] = {
        {3.14159, "p|4", "3.1416"},
        {3.14159, "precision|4", "3.1416"},
        {3.14159, "precision|0", "3"},
        {2.5, "precision|0", "2"},
        {3.5, "precision|0", "4"},
        {3.14159, "precision|1", "3.1"},
        {0.5, "precision|20", "0.50000000000000000000"},
        {3.14159, "precision|x", "3"},
        {3.14159, "precision|1|precision|3", "3.142"},
        {3.14159, "precision|4294967297", "3.1"},
        {-0.3, "precision|0", "-0"},
        {0.3, "precision|0", "0"},
    };
    expect_doubles(double_text, cases);
}

TEST(FormatDouble, WritesSixDecimalsForANegativePrecision) {
    EXPECT_EQ("3.141590", double_text(3.14159, "precision|-1"));
    EXPECT_EQ("3.141590", double_text(3.14159, "precision|-2147483648"));
    // Of the six decimals of a long number, four fit.
    EXPECT_EQ("1000000000000000048346692115553659057528394845890514255872.0000",
              double_text(1e57, "precision|-1"));
}

TEST(FormatDouble, AlignsRightInAPositiveFieldAndLeftInANegativeOne) {
    const double_case cases[] = {
        {1234.5, "fieldsize|10", "   1234.50"},  {1234.5, "fieldsize|8", " 1234.50"},
        {1234.5, "fieldsize|7", "1234.50"},      {-1234.5, "fieldsize|8", "-1234.50"},
        {1234.5, "fieldsize|-10", "1234.50   "}, {1234.5, "fieldsize|-7", "1234.50"},
        {1234.5, "fieldsize|-3", "1234.50"},     {1234.5, "fieldsize|4294967295", "1234.50"},
        {1234.5, "f|9|p|0", "     1234"},        {1234.5, "fieldsize|0", "1234.50"},
    };
    expect_doubles(double_text, cases);
    EXPECT_EQ(std::string(96, ' ') + "3.14", double_text(3.14159, "fieldsize|100"));
    EXPECT_EQ("3.14" + std::string(96, ' '), double_text(3.14159, "fieldsize|-100"));
}

TEST(FormatDouble, SwitchesToScientificNotationInASmallFieldAndCutsToIt) {
    const double_case cases[] = {
        {1234.5, "fieldsize|6", "1.23e+"},
        {1234.5, "fieldsize|1", "1"},
        {1234.5, "fieldsize|2", "1."},
        {-1234.5, "fieldsize|7", "-1.23e+"},
        {123456789.0, "fieldsize|12", "123456789.00"},
        {123456789.0, "fieldsize|11", "   1.23e+08"},
        {123456789.0, "fieldsize|9", " 1.23e+08"},
        {123456789.0, "fieldsize|8", "1.23e+08"},
        {123456789.0, "fieldsize|7", "1.23e+0"},
        {123456789.0, "fieldsize|5|precision|0", "1e+08"},
        {0.000012345, "fieldsize|9|precision|8", "1.2345000"},
        {0.000012345, "fieldsize|9|precision|3", "    0.000"},
    };
    expect_doubles(double_text, cases);
}

TEST(FormatDouble, RoundsAtThePrecisionAndNotAtTheCut) {
    // The decimals from the 62nd on are 99961, 99980 and 99971. The cut hides all of them.
    const double_case cases[] = {
        {1.3836201640311788e-25, "precision|123|fieldsize|63",
         "1.3836201640311787791706605234128684669197151085549972864116858"},
        {4.476670650227862e-17, "precision|74|fieldsize|63",
         "4.4766706502278616929622704796759722632930623693707505861283379"},
        {-2.5248875796376554e-29, "precision|2147483647|fieldsize|63",
         "-2.524887579637655399055609228502101158683664592390632889634254"},
        {2.5248875796376554e-29, "precision|2147483647|fieldsize|63",
         "2.5248875796376553990556092285021011586836645923906328896342547"},
    };
    expect_doubles(double_text, cases);
}

TEST(FormatDouble, DropsTheHundredsOfAThreeDigitExponent) {
    const double_case cases[] = {
        {1.5e123, "fieldsize|10", "  1.50e+23"},
        {1.5e123, "fieldsize|9", " 1.50e+23"},
        {1.5e123, "fieldsize|8", "1.50e+23"},
        {1.5e123, "fieldsize|7", "1.50e+2"},
        {1.5e123, "fieldsize|6", "1.50e+"},
        {-1.5e123, "fieldsize|9", "-1.50e+23"},
        {1.5e99, "fieldsize|8", "1.50e+99"},
        {1.5e100, "fieldsize|8", "1.50e+00"},
        {1.5e-123, "fieldsize|3", "1.5"},
        {1.5e-123, "fieldsize|15|precision|14", "1.5000000000000"},
    };
    expect_doubles(double_text, cases);
}

TEST(FormatDouble, CutsInfinityAndNotANumberToTheField) {
    const double infinity = std::numeric_limits<double>::infinity();
    const double_case cases[] = {
        {infinity, "", "inf"},
        {-infinity, "", "-inf"},
        {infinity, "fieldsize|5", "  inf"},
        {infinity, "fieldsize|2", "in"},
        {-infinity, "fieldsize|3", "-in"},
        {std::fabs(std::numeric_limits<double>::quiet_NaN()), "fieldsize|2", "na"},
    };
    expect_doubles(double_text, cases);
}

TEST(FormatDouble, ShortensANumberOfMoreThan63CharactersButKeepsItsMagnitude) {
    const double_case cases[] = {
        // 61 digits before the point: one of two decimals remains.
        {std::ldexp(1.0, 200), "",
         "1606938044258990275541962092341162602522202993782792835301376.0"},
        {std::ldexp(1.0, 204), "",
         "25711008708143844408671393477458601640355247900524685364822016"},
        {std::ldexp(-1.0, 203), "", "-1.29e+61"},
        {std::ldexp(1.0, 206), "precision|0",
         "102844034832575377634685573909834406561420991602098741459288064"},
        {std::ldexp(1.0, 207), "", "2.06e+62"},
        {DBL_MAX, "", "1.80e+308"},
        {-DBL_MAX, "precision|0", "-2e+308"},
        {1.0 / 3, "precision|61",
         "0.3333333333333333148296162562473909929394721984863281250000000"},
        {1.0 / 3, "precision|62",
         "0.3333333333333333148296162562473909929394721984863281250000000"},
        {1.0 / 3, "precision|2147483647",
         "0.3333333333333333148296162562473909929394721984863281250000000"},
    };
    expect_doubles(double_text, cases);
    EXPECT_EQ(63u, double_text(-DBL_MAX, "precision|100").size());
    EXPECT_EQ("-1.797693134862315", double_text(-DBL_MAX, "precision|100").substr(0, 18));
    EXPECT_EQ("e+308", double_text(-DBL_MAX, "precision|100").substr(58));
    EXPECT_EQ(30u, double_text(DBL_MAX, "precision|2000000000|fieldsize|30").size());
}

TEST(FormatDouble, AcceptsEveryPrefixOfItsKeys) {
    for (const auto& key : prefixes("precision"))
        EXPECT_EQ("3.142", double_text(3.14159, (key + "|3").c_str())) << key;
    for (const auto& key : prefixes("fieldsize", 1))
        EXPECT_EQ("  3.14", double_text(3.14159, (key + "|6").c_str())) << key;
}

TEST(FormatDouble, ReturnsTheMarkerForInvalidFormats) {
    const char* const formats[] = {"precision", "precision|",     "|",       "precision|1|f",
                                   "base|dec",  "Precision|1",    "prec1|1", "fieldsizes|1",
                                   "x|1",       "precision|2|x|1"};
    for (const char* format : formats)
        EXPECT_EQ("-0", double_text(3.14159, format)) << format;
}

TEST(FormatDouble, LeavesErrnoAlone) {
    errno = 0;
    EXPECT_EQ("3.14159", double_text(3.14159, "fieldsize|99999999999999999999|p|5"));
    EXPECT_EQ(0, errno);
}

// The rules in plain printf, for numbers and fields that fit the buffer.
std::string plain_double(double value, int precision, int field) {
    char text[64];
    if (field == 0) {
        std::snprintf(text, sizeof text, "%.*f", precision, value);
        return text;
    }
    if (std::snprintf(text, sizeof text, "%*.*f", field, precision, value) <= std::abs(field) ||
        field < 0)
        return text;
    std::snprintf(text, sizeof text, "%*.*e", field, precision, value);
    std::string result = text;
    const auto exponent = result.find('e');
    if (result.size() - exponent > 4) {
        result.erase(exponent + 2, 1);
        if (static_cast<int>(result.size()) < field)
            result.insert(0, 1, ' ');
    }
    return result.substr(0, static_cast<std::size_t>(field));
}

TEST(FormatDouble, AgreesWithPlainPrintfForEveryFieldAndPrecision) {
    const double values[] = {0.0,    1.0,     -1.0,      0.5,      9.995,    -99.995, 1234.5678,
                             1e6,    -1e9,    123456e15, 1e-3,     -1.25e-5, 3.5e-99, 3.5e-100,
                             7e-250, 4.0e300, -9.99e200, 9.996e99, 1e40};
    for (double value : values)
        for (int precision = 0; precision <= 12; ++precision)
            for (int field = -30; field <= 40; ++field) {
                if (std::fabs(value) > 1e41 && field <= 0)
                    continue;  // too long for the buffer
                const std::string format = "precision|" + std::to_string(precision) +
                                           "|fieldsize|" + std::to_string(field);
                ASSERT_EQ(plain_double(value, precision, field), double_text(value, format.c_str()))
                    << value << " " << format;
            }
}

// --- Durations ------------------------------------------------------------------------------

TEST(FormatDuration, BeginsWithTheLargestUnitThatIsNotZero) {
    const double_case cases[] = {
        {0, "", "0.00 sec"},
        {0.25, "", "0.25 sec"},
        {59.5, "", "59.50 sec"},
        {59.999, "", "60.00 sec"},
        {60, "", "1 min 0.00 sec"},
        {61.5, "", "1 min 1.50 sec"},
        {3599, "", "59 min 59.00 sec"},
        {3600, "", "1 hr 0 min 0.00 sec"},
        {3661.25, "", "1 hr 1 min 1.25 sec"},
        {86399, "", "23 hr 59 min 59.00 sec"},
        {86400, "", "1 dy 0 hr 0 min 0.00 sec"},
        {90000, "", "1 dy 1 hr 0 min 0.00 sec"},
        {90061.25, "", "1 dy 1 hr 1 min 1.25 sec"},
        {31536000, "", "365 dy 0 hr 0 min 0.00 sec"},
    };
    expect_doubles(duration_text, cases);
}

TEST(FormatDuration, UsesShortUnitsInTheShortForm) {
    const double_case cases[] = {
        {0, "short_form|true", "0.00s"},
        {60, "short_form|true", "1m 0.00s"},
        {3600, "short_form|true", "1h 0m 0.00s"},
        {90061.25, "short_form|true", "1d 1h 1m 1.25s"},
        {90061.25, "short_form|false", "1 dy 1 hr 1 min 1.25 sec"},
    };
    expect_doubles(duration_text, cases);
}

TEST(FormatDuration, KeepsTheShortFormOnceItIsSet) {
    EXPECT_EQ("1m 0.00s", duration_text(60, "short_form|true|short_form|false"));
    EXPECT_EQ("1m 0.00s", duration_text(60, "short_form|false|short_form|true"));
}

TEST(FormatDuration, AppliesThePrecisionToTheSeconds) {
    const double_case cases[] = {
        {61.256, "precision|0", "1 min 1 sec"},
        {61.256, "precision|1", "1 min 1.3 sec"},
        {61.256, "precision|3", "1 min 1.256 sec"},
        {61.256, "precision|x", "1 min 1 sec"},
        {61.256, "precision|3|precision|1", "1 min 1.3 sec"},
        {-0.3, "precision|0", "-0 sec"},
    };
    expect_doubles(duration_text, cases);
}

TEST(FormatDuration, ShowsTheMarkerInsteadOfTheSecondsForAnEmptyPrecision) {
    EXPECT_EQ("-0 sec", duration_text(12.5, "precision||short_form|false"));
    EXPECT_EQ("1 dy 1 hr 1 min -0 sec", duration_text(90061.25, "precision||short_form|false"));
    EXPECT_EQ("1d 1h 1m -0s", duration_text(90061.25, "precision||short_form|true"));
}

TEST(FormatDuration, ShowsTheSignOnEachUnit) {
    const double_case cases[] = {
        {-0.5, "", "-0.50 sec"},
        {-59.5, "", "-59.50 sec"},
        {-60, "", "-1 min 0.00 sec"},
        {-61.5, "", "-1 min -1.50 sec"},
        {-90061.25, "", "-1 dy -1 hr -1 min -1.25 sec"},
        {-86400, "", "-1 dy 0 hr 0 min 0.00 sec"},
    };
    expect_doubles(duration_text, cases);
}

TEST(FormatDuration, CutsTheDaysTo32Bits) {
    EXPECT_EQ("2147483647 dy 0 hr 0 min 0.00 sec", duration_text(86400.0 * 2147483647, ""));
    EXPECT_EQ("-2147483648 dy 0 hr 0 min 0.00 sec", duration_text(86400.0 * 2147483648, ""));
    EXPECT_EQ("1 dy 0 hr 0 min 0.00 sec", duration_text(86400.0 * 4294967297, ""));
}

TEST(FormatDuration, HandlesValuesThatNoIntegerCanHold) {
    const double values[] = {1e19,
                             -1e19,
                             1e300,
                             -DBL_MAX,
                             std::numeric_limits<double>::infinity(),
                             std::numeric_limits<double>::quiet_NaN()};
    for (double value : values) {
        const std::string text = duration_text(value, "");
        ASSERT_GT(text.size(), 4u);
        EXPECT_EQ(" sec", text.substr(text.size() - 4)) << value;
    }
}

TEST(FormatDuration, AcceptsEveryPrefixOfKeysAndWords) {
    for (const auto& key : prefixes("precision"))
        EXPECT_EQ("1.5 sec", duration_text(1.5, (key + "|1").c_str())) << key;
    for (const auto& key : prefixes("short_form", 1))
        EXPECT_EQ("1.50s", duration_text(1.5, (key + "|true").c_str())) << key;
    for (const auto& word : prefixes("true"))
        EXPECT_EQ("1.50s", duration_text(1.5, ("s|" + word + "|p|2").c_str())) << word;
    for (const auto& word : prefixes("false", 1))
        EXPECT_EQ("1.50 sec", duration_text(1.5, ("s|" + word).c_str())) << word;
}

TEST(FormatDuration, ReturnsTheMarkerForInvalidFormats) {
    const char* const formats[] = {
        "precision",        "precision|",  "short_form|", "short_form|yes", "short_form|True",
        "short_form|trues", "fieldsize|3", "x|1",         "p|1|s"};
    for (const char* format : formats)
        EXPECT_EQ("-0", duration_text(90061.25, format)) << format;
}

TEST(FormatDuration, AgreesWithIntegerArithmeticForEverySecondOfThreeDays) {
    const int day = 24 * 60 * 60;
    for (int seconds = -day - 100; seconds <= 3 * day; ++seconds) {
        char expected[100];
        const int d = seconds / day, h = seconds / 3600 % 24, m = seconds / 60 % 60,
                  s = seconds % 60;
        if (d != 0)
            std::snprintf(expected, sizeof expected, "%dd %dh %dm %d.0s", d, h, m, s);
        else if (h != 0)
            std::snprintf(expected, sizeof expected, "%dh %dm %d.0s", h, m, s);
        else if (m != 0)
            std::snprintf(expected, sizeof expected, "%dm %d.0s", m, s);
        else
            std::snprintf(expected, sizeof expected, "%d.0s", s);
        ASSERT_EQ(expected, duration_text(seconds, "s|t|p|1"));
    }
}

// --- Memory sizes ---------------------------------------------------------------------------

TEST(FormatMemory, ScalesInStepsOf1000AndDropsTheRemainder) {
    const value_case cases[] = {
        {0, "", "0/B"},
        {1, "", "1/B"},
        {999, "", "999/B"},
        {1000, "", "1/KB"},
        {1024, "", "1/KB"},
        {1536, "", "1/KB"},
        {1999, "", "1/KB"},
        {999999, "", "999/KB"},
        {1000000, "", "1/MB"},
        {999999999, "", "999/MB"},
        {1000000000, "", "1/GB"},
        {999999999999, "", "999/GB"},
        {1000000000000, "", "1/TB"},
        {999999999999999, "", "999/TB"},
        {1000000000000000, "", "1/PB"},
        {999999999999999999, "", "999/PB"},
        {1000000000000000000, "", "1/EB"},
        {18446744073709551615UL, "", "18/EB"},
        {-1, "", "18/EB"},
        {variant(), "", "0/B"},
        {"1500", "", "1/KB"},
        {"no number", "", "0/B"},
        {1999.9, "", "1/KB"},
    };
    expect_values(memory_text, cases);
}

TEST(FormatMemory, ShowsDecimalsForAPrecision) {
    const value_case cases[] = {
        {1536, "precision|1", "1.5/KB"},     {1536, "precision|2", "1.54/KB"},
        {999.9, "precision|1", "999.9/B"},   {999.99, "precision|1", "1000.0/B"},
        {1000, "precision|1", "1.0/KB"},     {1e18, "precision|1", "1.0/EB"},
        {1e21, "precision|1", "1.0/ZB"},     {1e24, "precision|1", "1.0/YB"},
        {-1500, "precision|1", "-1500.0/B"}, {1536, "precision|-1", "1.536000/KB"},
        {1536, "precision|x", "1/KB"},       {1536, "precision|4294967297", "1.5/KB"},
    };
    expect_values(memory_text, cases);
}

TEST(FormatMemory, StopsAtTheLastUnit) {
    const value_case cases[] = {
        {1e27, "precision|1", "1000.0/YB"},
        {std::numeric_limits<double>::infinity(), "precision|1", "inf/YB"},
        {5000, "base_unit|YB", "5000/YB"},
        {18446744073709551615UL, "base_unit|ZB", "18446744073709551/YB"},
    };
    expect_values(memory_text, cases);
}

TEST(FormatMemory, StartsAtItsBaseUnit) {
    const char* const units[] = {"B", "KB", "MB", "GB", "TB", "PB", "EB", "ZB", "YB"};
    for (int i = 0; i <= 8; ++i) {
        const std::string format = std::string("base_unit|") + units[i];
        EXPECT_EQ(std::string("5/") + units[i], memory_text(5, format.c_str()));
        EXPECT_EQ(std::string("5.0/") + units[i],
                  memory_text(5, (format + "|precision|1").c_str()));
        const std::string scaled = i < 8 ? std::string("1/") + units[i + 1] : "1500/YB";
        EXPECT_EQ(scaled, memory_text(1500, format.c_str()));
    }
}

TEST(FormatMemory, ShowsTheTargetUnitWhateverTheSize) {
    const value_case cases[] = {
        {1000000, "target_unit|B", "1000000/B"},
        {1000000, "target_unit|KB", "1000/KB"},
        {1000000, "target_unit|MB", "1/MB"},
        {1000000, "target_unit|GB", "0/GB"},
        {1000000, "target_unit|GB|precision|3", "0.001/GB"},
        {1999, "target_unit|KB", "1/KB"},
        {5, "target_unit|B|base_unit|GB", "5000000000/B"},
        {5, "base_unit|GB|target_unit|MB|precision|1", "5000.0/MB"},
        {7, "base_unit|YB|target_unit|YB", "7/YB"},
        {1, "target_unit|YB|precision|2", "0.00/YB"},
        {1, "base_unit|YB|target_unit|ZB", "1000/ZB"},
        {1000000, "target_unit|KBytes", "1000/KB"},
        {1000000, "target_unit|MB|target_unit|KB", "1000/KB"},
    };
    expect_values(memory_text, cases);
}

TEST(FormatMemory, WrapsAt64BitsWhenItMultiplies) {
    // 10 to the power 24, modulo 2 to the power 64
    EXPECT_EQ("2003764205206896640/B", memory_text(1, "base_unit|YB|target_unit|B"));
}

TEST(FormatMemory, ShowsBytesForAnEmptyKeyWhateverItsValue) {
    const value_case cases[] = {
        {5000, "|any", "5000/B"},         {5000, "|default", "5000/B"},
        {5000, "|KB", "5000/B"},          {5000, "||", "5000/B"},
        {5, "|x|base_unit|KB", "5000/B"}, {5000, "|x|target_unit|KB", "5/KB"},
    };
    expect_values(memory_text, cases);
}

TEST(FormatMemory, HasNoWordThatMeansAnyUnit) {
    const char* const formats[] = {
        "target_unit|any",   "target_unit|default", "base_unit|any",
        "base_unit|default", "target_unit|K",       "target_unit|kB",
        "target_unit|BB",    "target_unit| B",      "target_unit||base_unit|B",
        "base_unit|XB",      "base_unit|b",
    };
    for (const char* format : formats)
        EXPECT_EQ("-0/", memory_text(5000, format)) << format;
}

TEST(FormatMemory, AppliesTheFieldOnlyToDecimals) {
    const value_case cases[] = {
        {12345, "fieldsize|1", "12/KB"},
        {12345, "fieldsize|10|precision|2", "     12.35/KB"},
        {12345, "fieldsize|-10|precision|2", "12.35     /KB"},
        {123456, "fieldsize|5|precision|2", "1.23e/KB"},
    };
    expect_values(memory_text, cases);
}

TEST(FormatMemory, ReadsASemicolonInAValueAsASeparator) {
    const value_case cases[] = {
        {1536, "precision|1;precision;3", "1.536/KB"},
        {1536, "fieldsize|8;precision;3|precision|1", "   1.536/KB"},
        {1536, "precision|1;x", "-0/"},
        {1536, "precision|1;x;1", "-0/"},
        {1536, "fieldsize|;|precision|1", "1.5/KB"},
        {1536, "fieldsize||precision|1", "-0/"},
        {1536, "fieldsize||precision|0", "1/KB"},
        {1536, "fieldsize|x;y|precision|0", "1/KB"},
    };
    expect_values(memory_text, cases);
}

TEST(FormatMemory, KeepsTheUnitIfTheNumberOnlyLooksLikeTheMarker) {
    EXPECT_EQ("-0/B", memory_text(-0.3, "precision|1;precision;0"));
}

TEST(FormatMemory, AcceptsEveryPrefixOfItsKeys) {
    const struct {
        const char* key;
        const char* value;
        const char* text;
    } keys[] = {{"target_unit", "B", "5000/B"},
                {"base_unit", "KB", "5/MB"},
                {"precision", "1", "5.0/KB"},
                {"fieldsize", "9", "5/KB"}};
    for (const auto& k : keys)
        for (const auto& key : prefixes(k.key, 1))
            EXPECT_EQ(k.text, memory_text(5000, (key + "|" + k.value).c_str())) << key;
}

TEST(FormatMemory, ReturnsTheMarkerAndNoUnitForInvalidFormats) {
    const char* const formats[] = {"target_unit", "target_unit|",     "|",   "short_form|true",
                                   "any|any",     "default|x",        "x|1", "precision|1|f",
                                   "Target|B",    "base_unit|KB|base"};
    for (const char* format : formats)
        EXPECT_EQ("-0/", memory_text(5000, format)) << format;
}

TEST(FormatMemory, ClearsTheUnitBeforeItReadsTheFormat) {
    ustring8 both = with_separators("target_unit|B");
    EXPECT_EQ("5", format_memory(5000, both, both));
    EXPECT_EQ("KB", both);
}

TEST(MemPrefixIndex, ReadsTwoBytesAndIgnoresTheRest) {
    const std::string known = "KMGTPEZY";
    for (int first = 0; first < 256; ++first)
        for (int second = 0; second < 256; ++second) {
            ustring8 unit;
            unit += static_cast<char>(first);
            unit += static_cast<char>(second);
            const auto place = known.find(static_cast<char>(first));
            const int expected =
                second == 'B' && place != std::string::npos ? static_cast<int>(place) + 1 : -1;
            ASSERT_EQ(expected, mem_prefix_index(unit)) << first << " " << second;
            ASSERT_EQ(expected, mem_prefix_index(unit + "ytes")) << first << " " << second;
        }
}

TEST(MemPrefixIndex, RecognizesOnlyOneSingleByte) {
    for (int byte = 0; byte < 256; ++byte)
        EXPECT_EQ(byte == 'B' ? 0 : -1, mem_prefix_index(ustring8(1, static_cast<char>(byte))));
    EXPECT_EQ(-1, mem_prefix_index(""));
}

TEST(MemPrefixIndex, NumbersTheUnits) {
    const char* const units[] = {"B", "KB", "MB", "GB", "TB", "PB", "EB", "ZB", "YB"};
    for (int i = 0; i <= 8; ++i)
        EXPECT_EQ(i, mem_prefix_index(units[i]));
}

// --- Metric quantities ----------------------------------------------------------------------

const struct {
    int power;
    const char* symbol;
    const char* name;
} metric_table[] = {
    {-6, "a", "atto"},   {-5, "f", "femto"}, {-4, "p", "pico"}, {-3, "n", "nano"},
    {-2, "mc", "micro"}, {-1, "m", "milli"}, {0, "", ""},       {1, "k", "kilo"},
    {2, "M", "mega"},    {3, "G", "giga"},   {4, "T", "tera"},  {5, "P", "peta"},
    {6, "E", "exa"},     {7, "Z", "zetta"},  {8, "Y", "yotta"},
};

TEST(FormatMetric, ScalesUpToTeraWithThreeDecimals) {
    const value_case cases[] = {
        {0, "", "0.000/"},         {0.5, "", "0.500/"},
        {999, "", "999.000/"},     {999.9996, "", "1000.000/"},
        {1000, "", "1.000/k"},     {1500, "", "1.500/k"},
        {999999, "", "999.999/k"}, {1000000, "", "1.000/M"},
        {1e9, "", "1.000/G"},      {1e12, "", "1.000/T"},
        {1e15, "", "1000.000/T"},  {5e15, "", "5000.000/T"},
        {-1500, "", "-1500.000/"}, {variant(), "", "0.000/"},
        {"1500", "", "1.500/k"},   {std::numeric_limits<double>::infinity(), "", "inf/T"},
    };
    expect_values(metric_text, cases);
}

TEST(FormatMetric, StartsAtItsBaseUnitAndShowsEverySymbolAndName) {
    for (const auto& row : metric_table) {
        const std::string format = std::string("base_unit|") + (row.power ? row.symbol : "base");
        EXPECT_EQ(std::string("1.000/") + row.symbol, metric_text(1, format.c_str()));
        EXPECT_EQ(std::string("1.000/") + row.name,
                  metric_text(1, (format + "|short_form|false").c_str()));
    }
}

TEST(FormatMetric, ScalesFromEveryBaseUnitBelowTera) {
    for (int i = 0; i < 15; ++i) {
        const auto& row = metric_table[i];
        const std::string format = std::string("base_unit|") + (row.power ? row.symbol : "base");
        const std::string expected = row.power < 4
                                         ? std::string("1.500/") + metric_table[i + 1].symbol
                                         : std::string("1500.000/") + row.symbol;
        EXPECT_EQ(expected, metric_text(1500, format.c_str()));
    }
}

TEST(FormatMetric, ShowsTheTargetUnitWhateverTheSize) {
    const value_case cases[] = {
        {0.5, "target_unit|m", "500.000/m"},
        {5000000, "base_unit|mc|target_unit|base", "5.000/"},
        {5000000, "base_unit|mc|target_unit||short_form|true", "5.000/"},
        {1500, "target_unit|k", "1.500/k"},
        {1500, "target_unit|base", "1500.000/"},
        {1500, "target_unit|M", "0.002/M"},
        {-1500, "target_unit|k", "-1.500/k"},
        {1, "base_unit|k|target_unit|mc", "1000000000.000/mc"},
        {5e15, "target_unit|P", "5.000/P"},
    };
    expect_values(metric_text, cases);
}

TEST(FormatMetric, UsesIntegersForPrecision0) {
    const value_case cases[] = {
        {0, "precision|0", "0/"},
        {999, "precision|0", "999/"},
        {1500, "precision|0", "1/k"},
        {1999, "precision|0", "1/k"},
        {5000000000000000, "precision|0", "5000/T"},
        {5, "precision|0|target_unit|m", "5000/m"},
        {1500, "precision|0|target_unit|k", "1/k"},
        {1.9, "precision|0", "1/"},
        {"7", "precision|x", "7/"},
    };
    expect_values(metric_text, cases);
}

TEST(FormatMetric, ScalesIntegersAsSignedAndPrintsThemAsUnsigned) {
    const value_case cases[] = {
        {-1500, "precision|0", "18446744073709550116/"},
        {-1500, "precision|0|target_unit|k", "18446744073709551615/k"},
        {-999, "precision|0|target_unit|k", "0/k"},
        {-1, "precision|0|target_unit|m", "18446744073709550616/m"},
        {most, "precision|0|target_unit|m", "18446744073709550616/m"},
        {least, "precision|0|target_unit|m", "0/m"},
    };
    expect_values(metric_text, cases);
}

TEST(FormatMetric, LetsALaterShortFormOverrideAnEarlierOne) {
    EXPECT_EQ("1.500/kilo", metric_text(1500, "short_form|false"));
    EXPECT_EQ("1.500/k", metric_text(1500, "short_form|true"));
    EXPECT_EQ("1.500/kilo", metric_text(1500, "short_form|true|short_form|false"));
    EXPECT_EQ("1.500/k", metric_text(1500, "short_form|false|short_form|true"));
    EXPECT_EQ("-0/", metric_text(1500, "short_form|no"));
}

TEST(FormatMetric, ReadsASemicolonInAValueAsASeparator) {
    const value_case cases[] = {
        {1500, "fieldsize|8", "   1.500/k"},
        {1500, "precision|1", "1.5/k"},
        {1500, "precision|1;precision;2", "1.50/k"},
        {1500, "fieldsize|1", "1/k"},
        {1500, "precision|1;x", "-0/"},
        {1500, "fieldsize||precision|1", "-0/"},
        {1500, "fieldsize|1|precision|0", "1/k"},
    };
    expect_values(metric_text, cases);
}

TEST(FormatMetric, AcceptsEveryPrefixOfItsKeysAndTheEmptyKeyAsBaseUnit) {
    const struct {
        const char* key;
        const char* value;
        const char* text;
        std::size_t shortest;
    } keys[] = {{"base_unit", "k", "1.500/M", 0},
                {"target_unit", "m", "1500000.000/m", 1},
                {"short_form", "false", "1.500/kilo", 1},
                {"precision", "1", "1.5/k", 1},
                {"fieldsize", "6", " 1.500/k", 1}};
    for (const auto& k : keys)
        for (const auto& key : prefixes(k.key, k.shortest))
            EXPECT_EQ(k.text, metric_text(1500, (key + "|" + k.value).c_str())) << key;
    for (const auto& word : prefixes("false", 1))
        EXPECT_EQ("1.500/kilo", metric_text(1500, ("short_form|" + word).c_str()));
    EXPECT_EQ("1.5/k", metric_text(1500, "short_form|false|short_form||precision|1"));
}

TEST(FormatMetric, ReturnsTheMarkerAndNoUnitForInvalidFormats) {
    const char* const formats[] = {"base_unit",      "base_unit|",    "|",     "base_unit|kilo",
                                   "base_unit|K",    "base_unit|any", "x|1",   "target_unit|kilo",
                                   "target_unit|mm", "base_unit|KB",  "Base|k"};
    for (const char* format : formats)
        EXPECT_EQ("-0/", metric_text(1500, format)) << format;
}

TEST(FormatMetric, ClearsTheUnitBeforeItReadsTheFormat) {
    ustring8 both = with_separators("target_unit|m");
    EXPECT_EQ("1.500", format_metric(1500, both, both));
    EXPECT_EQ("k", both);
}

TEST(Thousands, RecognizesThePrefixesOfTheWordBase) {
    for (const auto& word : prefixes("base"))
        EXPECT_EQ(0, thousands(word)) << word;
    EXPECT_EQ(-1000, thousands("bases"));
    EXPECT_EQ(-1000, thousands("Base"));
}

TEST(Thousands, RecognizesEverySymbolAndNoName) {
    for (const auto& row : metric_table) {
        EXPECT_EQ(row.power, thousands(row.symbol));
        const int power_of_name = row.power == 0 ? 0 : -1000;
        EXPECT_EQ(power_of_name, thousands(row.name)) << row.name;
    }
}

TEST(Thousands, ClassifiesEveryByteAndEveryPairOfBytes) {
    const struct {
        char symbol;
        int power;
    } symbols[] = {{'a', -6}, {'f', -5}, {'p', -4}, {'n', -3}, {'m', -1}, {'b', 0}, {'k', 1},
                   {'M', 2},  {'G', 3},  {'T', 4},  {'P', 5},  {'E', 6},  {'Z', 7}, {'Y', 8}};
    for (int first = 0; first < 256; ++first) {
        int expected = -1000;
        for (const auto& s : symbols)
            if (s.symbol == static_cast<char>(first))
                expected = s.power;
        const ustring8 one(1, static_cast<char>(first));
        EXPECT_EQ(expected, thousands(one)) << first;
        for (int second = 0; second < 256; ++second) {
            const int pair = first == 'm' && second == 'c'   ? -2
                             : first == 'b' && second == 'a' ? 0
                                                             : -1000;
            ASSERT_EQ(pair, thousands(one + ustring8(1, static_cast<char>(second))))
                << first << " " << second;
        }
    }
}

// --- The entry point ------------------------------------------------------------------------

TEST(FormatValue, ChoosesByTypeAndReadsTheFormatAfterTheName) {
    const struct {
        unsigned int type;
        variant value;
        const char* data;
        const char* text;
    } cases[] = {
        {3, 255, "n|base|hex", "0x00ff"},
        {3, 255, "n", "255"},
        {3, 255, "", "255"},
        {3, 255, "n|", "255"},
        {3, 255, "|base|hex", "0x00ff"},
        {3, "0x10", "n", "16"},
        {3, 2.9, "n", "2"},
        {3, 18446744073709551615UL, "n", "-1"},
        {3, 255, "n|base", "-0"},
        {4, 3.14159, "n|precision|4", "3.1416"},
        {4, 3, "n", "3.00"},
        {4, "2.5", "n", "2.50"},
        {4, 3.14159, "n|x|4", "-0"},
        {7, 1536, "n|precision|1", "1.5"},
        {7, 1536, "n", "1"},
        {7, 1536, "n|target_unit|any", "-0"},
        {8, 1536, "n|precision|1", "KB"},
        {8, 15, "n", "B"},
        {8, 1536, "n|target_unit|any", "-0"},
        {8, -0.3, "n|precision|1;precision;0", "-0"},
        {9, 1500, "n", "1.500"},
        {9, 1500, "n|base_unit|kilo", "-0"},
        {10, 1500, "n", "k"},
        {10, 1500, "n|short_form|false", "kilo"},
        {10, 15, "n", ""},
        {10, 1500, "n|base_unit|kilo", "-0"},
        {11, 59.5, "n", "59.50 sec"},
        {11, "90061.25", "n|short_form|true", "1d 1h 1m 1.25s"},
        {11, 59.5, "n|fieldsize|3", "-0"},
        {0, 255, "n", ""},
        {1, 255, "n", ""},
        {2, 255, "n", ""},
        {5, 255, "n", ""},
        {6, 255, "n", ""},
        {12, 255, "n", ""},
        {4294967295u, 255, "n", ""},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(std::to_string(c.type) + " " + c.data);
        EXPECT_EQ(c.text, format_value(static_cast<message_item::type_t>(c.type), c.value,
                                       with_separators(c.data)));
    }
}

}  // namespace
