// Runs whole domains and random mixes through every conversion and compares with the simple oracle.
#include <tova/strings/unicode.hpp>

#include <tova/strings/gh2.hpp>

#include "strings/unicode_oracle.hpp"

#include <gtest/gtest.h>

#include <random>

namespace {

using namespace tova::strings;
using unicode_oracle::points;

const unsigned long failed = static_cast<unsigned long>(-1);

// The values of a string, to compare with those of the oracle.
template <typename String>
points values(const String& text) {
    return points(text.begin(), text.end());
}

template <typename String>
String from_values(const points& values) {
    String text;
    for (const long value : values)
        text.push_back(static_cast<typename String::value_type>(value));
    return text;
}

std::string show(const points& values) {
    std::string text;
    for (const long value : values) {
        char number[32];
        std::snprintf(number, sizeof number, "%lX ", value);
        text += number;
    }
    return text;
}

points bytes_of(const std::string& text) {
    points result;
    for (const char c : text)
        result.push_back(static_cast<unsigned char>(c));
    return result;
}

void check_conversions_of_utf8(const ustring8& text) {
    const points expected_32 = unicode_oracle::utf8_to_utf32(text);
    const points expected_16 = unicode_oracle::utf8_to_utf16(text).values;
    if (values(utf8_to_utf32(text)) != expected_32 || values(utf8_to_utf16(text)) != expected_16)
        FAIL() << show(bytes_of(text)) << "\ngives 32: " << show(values(utf8_to_utf32(text)))
               << "\ngives 16: " << show(values(utf8_to_utf16(text)));
}

// Every operation that reads UTF-8, on one string.
void check_utf8(const ustring8& text) {
    check_conversions_of_utf8(text);
    for (std::size_t at = 0; at <= text.size(); ++at) {
        long point = '?';
        const std::size_t taken =
            at < text.size() ? unicode_oracle::sequence_at(text, at, point) : 0;
        unsigned long advance = 7;
        const unsigned int got = unichar(text.data(), text.size(), at, advance);
        if (got != static_cast<unsigned int>(taken == 0 ? '?' : point) ||
            advance != (taken == 0 ? failed : taken))
            FAIL() << show(bytes_of(text)) << "unichar at " << at << ": " << got << ", " << advance;
        if (gh2::validate_utf8(text.data() + at, text.size() - at) != (taken != 0))
            FAIL() << show(bytes_of(text)) << "validate_utf8 at " << at;
        if (taken != 0 && gh2::get_utf8_length(text.data() + at, text.size() - at) != taken)
            FAIL() << show(bytes_of(text)) << "get_utf8_length at " << at;
        if (character_index(text, at) != unicode_oracle::character_index(text, at))
            FAIL() << show(bytes_of(text)) << "character_index of " << at << ": "
                   << character_index(text, at);
    }
}

// The string must not begin with 0xFFFE.
void check_conversions_of_utf16(const points& units) {
    const ustring16 text = from_values<ustring16>(units);
    if (utf16_to_utf8(text) != unicode_oracle::utf16_to_utf8(units) ||
        values(utf16_to_utf32(text)) != unicode_oracle::utf16_to_utf32(units).values)
        FAIL() << show(units) << "\ngives 8: " << show(bytes_of(utf16_to_utf8(text)))
               << "\ngives 32: " << show(values(utf16_to_utf32(text)));
}

// Every operation that reads UTF-16.
void check_utf16(const points& units) {
    check_conversions_of_utf16(units);
    const ustring16 text = from_values<ustring16>(units);
    for (std::size_t at = 0; at <= units.size(); ++at) {
        if (character_index(text, at) != unicode_oracle::character_index(units, at))
            FAIL() << show(units) << "character_index of " << at;
        unsigned long advance = 7;
        const unsigned int got = unichar(text.data(), text.size(), at, advance);
        const bool high = at < units.size() && unicode_oracle::is_high(units[at]);
        const points one(units.begin() + at,
                         units.begin() + std::min(units.size(), at + (high ? 2 : 1)));
        const unicode_oracle::answer expected = unicode_oracle::utf16_to_utf32(one);
        const bool good = at < units.size() && expected.good;
        if (got != (good ? expected.values[0] : '?') || advance != (good ? one.size() : failed))
            FAIL() << show(units) << "unichar at " << at << ": " << got << ", " << advance;
    }
}

void check_utf32(const points& text) {
    const ustring32 source = from_values<ustring32>(text);
    if (utf32_to_utf8(source) != unicode_oracle::utf32_to_utf8(text) ||
        values(utf32_to_utf16(source)) != unicode_oracle::utf32_to_utf16(text))
        FAIL() << show(text) << "\ngives 8: " << show(bytes_of(utf32_to_utf8(source)))
               << "\ngives 16: " << show(values(utf32_to_utf16(source)));
}

points block(long first) {
    points result;
    for (long point = first; point < first + 0x100; ++point)
        if (point < 0xD800 || point > 0xDFFF)
            result.push_back(point);
    return result;
}

TEST(UnicodeSweep, EveryCodePointPassesThroughEveryConversion) {
    for (long first = 0; first < 0x110000; first += 0x100) {
        const points text = block(first);
        const ustring32 utf32 = from_values<ustring32>(text);
        check_utf32(text);
        const ustring8 utf8 = utf32_to_utf8(utf32);
        const ustring16 utf16 = utf8_to_utf16(utf8);
        ASSERT_TRUE(utf8_to_utf32(utf8) == utf32) << std::hex << first;
        ASSERT_TRUE(values(utf16) == unicode_oracle::utf8_to_utf16(utf8).values) << first;
        ASSERT_TRUE(utf16_to_utf32(utf16) == utf32) << std::hex << first;
        ASSERT_TRUE(utf16_to_utf8(utf16) == utf8) << std::hex << first;
    }
}

TEST(UnicodeSweep, EveryCodePointIsDecodedAlone) {
    for (long point = 0; point < 0x110000; ++point) {
        if (point >= 0xD800 && point <= 0xDFFF)
            continue;
        const std::string bytes = unicode_oracle::utf8_of(point);
        unsigned long advance = 0;
        ASSERT_EQ(point, unichar(bytes.data(), bytes.size(), 0, advance));
        ASSERT_EQ(bytes.size(), advance);
        const ustring16 units = utf8_to_utf16(bytes);
        ASSERT_EQ(point < 0x10000 ? 1u : 2u, units.size());
        ASSERT_EQ(point, unichar(units.data(), units.size(), 0, advance));
        ASSERT_EQ(units.size(), advance);
    }
}

TEST(UnicodeSweep, EverySurrogateValueIsInvalid) {
    for (long value = 0xD7F0; value < 0xE010; ++value) {
        check_utf32({value});
        check_utf32({'a', value, 'b'});
        check_utf16({value});
        check_utf16({'a', value, 'b'});
        check_utf8(unicode_oracle::utf8_of(value));
    }
}

TEST(UnicodeSweep, EveryByteAndEveryPairOfBytesIsDecodedByItsStructure) {
    for (int first = 0; first < 0x100; ++first) {
        check_utf8(ustring8(1, static_cast<char>(first)));
        for (int second = 0; second < 0x100; ++second)
            check_utf8(ustring8({static_cast<char>(first), static_cast<char>(second)}));
    }
}

TEST(UnicodeSweep, EveryLongLeadIsCheckedWithContinuationsAtTheirLimits) {
    const int limits[] = {0x00, 0x7F, 0x80, 0x8F, 0x90, 0x9F, 0xA0, 0xBF, 0xC0, 0xFF};
    for (int lead = 0xC0; lead < 0x100; ++lead)
        for (const int c1 : limits)
            for (const int c2 : limits) {
                ustring8 text(
                    {static_cast<char>(lead), static_cast<char>(c1), static_cast<char>(c2)});
                check_utf8(text);
                if (lead < 0xE8)
                    continue;
                for (const int c3 : limits) {
                    text.resize(3);
                    text.push_back(static_cast<char>(c3));
                    check_utf8(text);
                    text.push_back('z');
                    check_utf8(text);
                }
            }
}

TEST(UnicodeSweep, UnitsAtTheLimitsAreCheckedNextToEachOther) {
    const long limits[] = {0,      0x7F,   0x80,   0x7FF,  0x800,  0xD7FF, 0xD800, 0xD801,
                           0xDBFF, 0xDC00, 0xDC01, 0xDFFF, 0xE000, 0xFEFF, 0xFFFD, 0xFFFF};
    for (const long first : limits) {
        check_utf16({first});
        for (const long second : limits) {
            check_utf16({first, second});
            for (const long third : limits) {
                check_utf16({first, second, third});
                check_utf16({first, second, 'a', third});
            }
        }
    }
}

TEST(UnicodeSweep, ValuesAtTheLimitsOf32BitsAgreeWithTheOracle) {
    const long limits[] = {-0x80000000L, -0x10000, -0x2800,  -0x2400,   -0x80,  -2,
                           -1,           0,        0x7F,     0x80,      0x7FF,  0x800,
                           0xD7FF,       0xD800,   0xDFFF,   0xE000,    0xFFFE, 0xFFFF,
                           65536,        0x10FFFF, 0x110000, 0x7FFFFFFF};
    for (const long first : limits) {
        check_utf32({first});
        for (const long second : limits)
            check_utf32({first, 'x', second});
    }
}

// Runs of ASCII are read in words, so one other character is put at each position of a run.
TEST(UnicodeSweep, ACharacterAtAnyPositionOfAnAsciiRunIsFound) {
    const ustring8 characters[] = {"",     "\xC3\xA9", "\xE2\x82\xAC", "\xF0\x9F\x98\x80",
                                   "\xFF", "\xC3"};
    for (std::size_t length = 0; length <= 40; ++length) {
        for (std::size_t at = 0; at <= length; ++at) {
            for (const ustring8& character : characters) {
                ustring8 text;
                for (std::size_t i = 0; i < length; ++i)
                    text.push_back(static_cast<char>('!' + i));
                text.insert(at, character);
                check_utf8(text);
                check_utf16(values(utf8_to_utf16(text)));
                check_utf32(values(utf8_to_utf32(text)));
            }
        }
    }
}

// A string that begins with units of one kind may be converted on the assumption that all are.
TEST(UnicodeSweep, ACharacterAtAnyPositionOfALongStringIsFound) {
    const std::vector<points> characters = {{},         {0xE9},     {0x20AC}, {0xFFFF}, {0x1F600},
                                            {0x10FFFF}, {0x110000}, {0xD800}, {0xDC00}, {-1}};
    for (const long filling : {'a' + 0L, 0x42FL, 0xC544L, 0x1F600L})
        for (const std::size_t length : {255u, 256u, 300u, 517u})
            for (std::size_t at = 0; at < length; at += at < 66 || length - at < 4 ? 1 : 29)
                for (const points& character : characters) {
                    points text(length, filling);
                    text.insert(text.begin() + static_cast<long>(at), character.begin(),
                                character.end());
                    check_utf32(text);
                    points units;
                    for (const long point : text)
                        if (point >= 0x10000 && point < 0x110000) {
                            units.push_back(0xD7C0 + (point >> 10));
                            units.push_back(0xDC00 + (point & 0x3FF));
                        } else {
                            units.push_back(point & 0xFFFF);
                        }
                    check_conversions_of_utf16(units);
                    const ustring8 bytes = unicode_oracle::utf32_to_utf8(text);
                    check_conversions_of_utf8(bytes);
                    check_conversions_of_utf8(bytes + "\xFFz");
                }
}

TEST(UnicodeSweep, StringsOfEveryLengthUpToAThousandUnitsAreComplete) {
    points text;
    const long cycle[] = {'a', 0xE9, 0x20AC, 0x1F600, 'z', 0x42F};
    for (std::size_t length = 0; length < 1000; ++length) {
        const ustring32 utf32 = from_values<ustring32>(text);
        const ustring8 utf8 = utf32_to_utf8(utf32);
        ASSERT_TRUE(utf8 == unicode_oracle::utf32_to_utf8(text)) << length;
        ASSERT_TRUE(utf8_to_utf32(utf8) == utf32) << length;
        const ustring16 utf16 = utf8_to_utf16(utf8);
        ASSERT_TRUE(values(utf16) == unicode_oracle::utf8_to_utf16(utf8).values) << length;
        ASSERT_TRUE(utf16_to_utf8(utf16) == utf8) << length;
        ASSERT_TRUE(utf16_to_utf32(utf16) == utf32) << length;
        ASSERT_TRUE(values(utf32_to_utf16(utf32)) == unicode_oracle::utf32_to_utf16(text))
            << length;
        text.push_back(cycle[length % 6]);
    }
}

// The memory for a string of ASCII is kept if the rest needs nearly as much, and replaced
// otherwise.
TEST(UnicodeSweep, AStringThatBeginsWithAsciiIsConvertedToItsEnd) {
    for (const std::size_t beginning : {16u, 64u, 100u, 256u, 700u})
        for (const std::size_t rest : {1u, 50u, 200u, 1000u, 3000u})
            for (const long letter : {0xE9L, 0x42FL, 0x4E2DL, 0xFFFFL, 0x1F600L}) {
                SCOPED_TRACE(::testing::Message() << beginning << ' ' << rest << ' ' << letter);
                points text(beginning, 'a');
                text.insert(text.end(), rest, letter);
                check_utf32(text);
                points units(beginning, 'a');
                for (std::size_t i = 0; i < rest; ++i) {
                    if (letter >= 0x10000) {
                        units.push_back(0xD83D);
                        units.push_back(0xDE00);
                    } else {
                        units.push_back(letter);
                    }
                }
                check_conversions_of_utf16(units);
                const ustring8 bytes = unicode_oracle::utf32_to_utf8(text);
                check_conversions_of_utf8(bytes);
                const ustring16 utf16 = utf8_to_utf16(bytes);
                EXPECT_GE(2 * utf16.size() + 1, utf16.capacity());
                const ustring32 utf32 = utf8_to_utf32(bytes);
                EXPECT_GE(2 * utf32.size() + 1, utf32.capacity());
            }
}

// A long string whose first 256 bytes are nearly all characters is not measured. Its memory is kept
// if the rest is like that, and replaced otherwise.
TEST(UnicodeSweep, AStringThatBeginsWithFewLongCharactersIsConvertedToItsEnd) {
    for (const std::size_t accents : {1u, 32u, 33u})
        for (const std::size_t bytes_after : {1791u, 1792u, 9000u})
            for (const long letter : {0x61L, 0xE9L, 0x4E2DL, 0x1F600L}) {
                SCOPED_TRACE(::testing::Message()
                             << accents << ' ' << bytes_after << ' ' << letter);
                points text(accents, 0xE9);
                text.insert(text.end(), 256 - 2 * accents, 'a');
                const std::size_t length = unicode_oracle::utf32_to_utf8({letter}).size();
                text.insert(text.end(), bytes_after / length, letter);
                text.insert(text.end(), bytes_after % length, 'z');
                const ustring8 bytes = unicode_oracle::utf32_to_utf8(text);
                ASSERT_EQ(256 + bytes_after, bytes.size());
                check_conversions_of_utf8(bytes);
                const ustring16 utf16 = utf8_to_utf16(bytes);
                EXPECT_GE(2 * utf16.size() + 1, utf16.capacity());
                const ustring32 utf32 = utf8_to_utf32(bytes);
                EXPECT_GE(2 * utf32.size() + 1, utf32.capacity());
                for (const std::size_t at : {100u, 300u, 2000u})
                    check_conversions_of_utf8(ustring8(bytes).insert(at, "\xFF"));
            }
}

TEST(UnicodeSweep, RandomMixesAgreeWithTheOracle) {
    std::mt19937 random(20240607);
    const auto below = [&](unsigned limit) { return static_cast<long>(random() % limit); };
    for (int round = 0; round < 20000; ++round) {
        ustring8 bytes;
        points units;
        points wide;
        for (long parts = below(30); parts > 0; --parts) {
            switch (below(6)) {
            case 0:
                bytes.push_back(static_cast<char>(below(256)));
                break;
            case 1:
                bytes.append(static_cast<std::size_t>(below(12)), 'a');
                break;
            default:
                bytes.append(unicode_oracle::utf8_of(below(2) ? below(0x800) : below(0x110000)));
            }
            units.push_back(below(5) == 0 ? 0xD800 + below(0x800) : below(0xD800));
            if (below(3) == 0) {
                units.push_back(0xD800 + below(0x400));
                units.push_back(0xDC00 + below(0x400));
            }
            wide.push_back(below(40) == 0 ? static_cast<int>(random()) : below(0xD800));
            wide.push_back(below(0x110000 - 0xE000) + 0xE000);
        }
        check_utf8(bytes);
        check_utf16(units);
        check_utf32(wide);
    }
}

}  // namespace
