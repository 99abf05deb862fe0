// Compares splitting and replacing with their simplest forms, for strings that are longer than the
// blocks of the search.
#include <tova/strings/replace.hpp>
#include <tova/strings/split.hpp>

#include "support/widths.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <string>
#include <vector>

namespace {

using namespace tova::strings;
using test_support::text;

template <typename String>
class Matches : public ::testing::Test {};
TYPED_TEST_SUITE(Matches, test_support::text_types, test_support::text_type_name);

template <typename String>
std::vector<String> plainly_split(const String& input, const String& separator, std::size_t limit) {
    std::vector<String> fields;
    std::size_t begin = 0;
    for (std::size_t splits = 0; splits < limit; ++splits) {
        const auto end =
            std::search(input.begin() + begin, input.end(), separator.begin(), separator.end());
        if (end == input.end())
            break;
        fields.push_back(String(input.begin() + begin, end));
        begin = end - input.begin() + separator.size();
    }
    if (begin < input.size())
        fields.push_back(String(input.begin() + begin, input.end()));
    return fields;
}

// Joins the fields with the replacement. A trailing separator starts no field.
template <typename String>
String plainly_replaced(const String& input, const String& search, const String& replacement,
                        unsigned int& count) {
    String result;
    std::size_t begin = 0;
    for (count = 0;; ++count) {
        const auto end =
            std::search(input.begin() + begin, input.end(), search.begin(), search.end());
        result.append(input.begin() + begin, end);
        if (end == input.end())
            return result;
        result += replacement;
        begin = end - input.begin() + search.size();
    }
}

template <typename String>
void check(const String& input, const String& wanted, const String& replacement, int limit) {
    EXPECT_EQ(plainly_split(input, wanted, limit > 0 ? limit : input.size() + 1),
              split_string(input, wanted, limit));
    unsigned int count = 0;
    const String expected = plainly_replaced(input, wanted, replacement, count);
    String changed(input);
    EXPECT_EQ(count, replace_all(changed, wanted, replacement));
    EXPECT_EQ(expected, changed);
}

TYPED_TEST(Matches, AreFoundWhereverTheyAre) {
    for (const char* wanted : {",", ", ", "&amp;"})
        for (std::size_t before = 0; before < 200; ++before)
            for (const std::size_t after : {0, 1, 15, 16, 40}) {
                const TypeParam separator = text<TypeParam>(wanted);
                const TypeParam letter = text<TypeParam>("x");
                TypeParam input;
                for (std::size_t i = 0; i < before; ++i)
                    input += letter;
                input += separator;
                for (std::size_t i = 0; i < after; ++i)
                    input += letter;
                check(input, separator, text<TypeParam>("-"), 0);
                check(input, separator, text<TypeParam>("<------>"), 0);
                check(TypeParam(input + input), separator, TypeParam(), 1);
            }
}

TYPED_TEST(Matches, OfRandomStringsAreThoseOfThePlainestSearch) {
    std::mt19937 engine(21);
    const auto random = [&] { return static_cast<unsigned int>(engine()); };
    for (int round = 0; round < 3000; ++round) {
        const auto letters = [&](std::size_t size, unsigned different) {
            std::string made;
            while (made.size() < size)
                made += static_cast<char>('a' + random() % different);
            return text<TypeParam>(made.c_str());
        };
        const unsigned different = 1 + random() % 3;
        const TypeParam wanted = letters(1 + random() % (round % 10 == 0 ? 40 : 4), different);
        const TypeParam replacement = letters(random() % 8, different);
        const std::size_t size = random() % (round % 20 == 0 ? 5000 : 300);
        const unsigned gap = 1 + random() % 50;
        TypeParam input;
        while (input.size() < size)
            input += random() % gap == 0 ? wanted : letters(1, 1 + random() % 20);
        check(input, wanted, replacement, static_cast<int>(random() % 5));
    }
}

// Near matches first, so that the search for a long string changes its algorithm before it gets to
// the random part.
TYPED_TEST(Matches, OfLongStringsAreThoseOfThePlainestSearch) {
    std::mt19937 engine(7);
    const auto random = [&] { return static_cast<unsigned int>(engine()); };
    for (int round = 0; round < 1000; ++round) {
        const unsigned letters = 2 + random() % 2;
        const auto letter = [&] { return static_cast<char>('a' + random() % letters); };
        std::string piece;
        for (std::size_t i = 1 + random() % 12; i > 0; --i)
            piece += letter();
        std::string wanted;
        while (wanted.size() <= 33 + round % 20)
            wanted += piece;
        if (random() % 2)
            wanted += letter();
        if (random() % 2)
            wanted[random() % wanted.size()] = letter();
        std::string input;
        while (input.size() < 1500)
            input.append(wanted, 0, wanted.size() - 1);
        while (input.size() < 3000) {
            switch (random() % (round % 3 == 0 ? 2 : 4)) {
            case 0:
                input += letter();
                break;
            case 1:
                input += piece;
                break;
            default:
                input += wanted;
            }
        }
        check(text<TypeParam>(input.c_str()), text<TypeParam>(wanted.c_str()), text<TypeParam>("-"),
              0);
    }
}

}  // namespace
