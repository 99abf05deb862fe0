// Compares the search used by `split_string` and `replace_all` with the simplest one, and checks
// the work that it does for strings made to slow it down.
#include <tova/strings/replace.hpp>

#include "strings/search.hpp"

#include <gtest/gtest.h>

#include <random>
#include <string>
#include <vector>

namespace {

using tova::strings::detail::not_found;
using tova::strings::detail::searcher;

// A unit that counts its comparisons.
struct counted {
    char value;
    static std::size_t comparisons;
};
std::size_t counted::comparisons = 0;

bool operator==(const counted& a, const counted& b) {
    ++counted::comparisons;
    return a.value == b.value;
}

bool operator<(const counted& a, const counted& b) {
    ++counted::comparisons;
    return a.value < b.value;
}

template <typename Unit>
std::vector<Unit> units(const std::string& text) {
    std::vector<Unit> result;
    for (const char c : text)
        result.push_back(Unit{static_cast<Unit>(c)});
    return result;
}

template <>
std::vector<counted> units<counted>(const std::string& text) {
    std::vector<counted> result;
    for (const char c : text)
        result.push_back(counted{c});
    return result;
}

// All matches that don't overlap.
template <typename Unit>
std::vector<std::size_t> matches(const std::string& text, const std::string& wanted) {
    const std::vector<Unit> in = units<Unit>(text);
    const std::vector<Unit> what = units<Unit>(wanted);
    searcher<Unit> search(what.data(), what.size());
    std::vector<std::size_t> result;
    for (std::size_t at = 0;; at += wanted.size()) {
        at = search.find(in.data(), in.size(), at);
        if (at == not_found)
            return result;
        result.push_back(at);
    }
}

std::vector<std::size_t> expected_matches(const std::string& text, const std::string& wanted) {
    std::vector<std::size_t> result;
    for (std::size_t at = 0; at + wanted.size() <= text.size();) {
        if (text.compare(at, wanted.size(), wanted) == 0) {
            result.push_back(at);
            at += wanted.size();
        } else {
            ++at;
        }
    }
    return result;
}

void check(const std::string& text, const std::string& wanted) {
    const std::vector<std::size_t> expected = expected_matches(text, wanted);
    if (matches<char>(text, wanted) != expected ||
        matches<unsigned short>(text, wanted) != expected ||
        matches<wchar_t>(text, wanted) != expected || matches<counted>(text, wanted) != expected)
        ADD_FAILURE() << '"' << wanted << "\" in \"" << text << '"';

    // The same in the library, whose search is compiled apart from the one above.
    std::string replaced;
    std::size_t done = 0;
    for (const std::size_t at : expected) {
        replaced += text.substr(done, at - done) + '.';
        done = at + wanted.size();
    }
    replaced += text.substr(done);
    std::string by_library = text;
    tova::strings::replace_all(by_library, wanted, std::string("."));
    EXPECT_EQ(replaced, by_library) << '"' << wanted << "\" in \"" << text << '"';
}

TEST(Search, FindsNothingPastTheEnd) {
    searcher<char> search("ab", 2);
    EXPECT_EQ(2u, search.find("xxab", 4, 0));
    EXPECT_EQ(2u, search.find("xxab", 4, 2));
    for (const std::size_t from : {3, 4})
        EXPECT_EQ(not_found, search.find("xxab", 4, from));
    EXPECT_EQ(not_found, search.find("a", 1, 0));
    EXPECT_EQ(not_found, search.find("", 0, 0));
    EXPECT_EQ(not_found, search.find("xxab", 3, 0)) << "the match is cut";
}

TEST(Search, AgreesWithTheSimplestSearchForAllShortStringsOfTwoLetters) {
    for (std::size_t size = 1; size <= 5; ++size)
        for (unsigned wanted = 0; wanted < 1u << size; ++wanted)
            for (unsigned text = 0; text < 1u << 10; ++text) {
                std::string a;
                std::string b;
                for (std::size_t i = 0; i < 10; ++i)
                    a += text >> i & 1 ? 'b' : 'a';
                for (std::size_t i = 0; i < size; ++i)
                    b += wanted >> i & 1 ? 'b' : 'a';
                check(a, b);
            }
}

// A long run of near matches first, so that the search changes its algorithm before it gets to the
// random part.
TEST(Search, AgreesWithTheSimplestSearchAfterManyNearMatches) {
    std::mt19937 random(7);
    for (int round = 0; round < 4000; ++round) {
        const unsigned letters = 2 + random() % 2;
        const auto letter = [&] { return static_cast<char>('a' + random() % letters); };
        std::string piece;
        for (std::size_t i = 1 + random() % 8; i > 0; --i)
            piece += letter();
        std::string wanted;
        for (std::size_t i = 2 + random() % 12; i > 0; --i)
            wanted += piece;
        if (random() % 2)
            wanted += letter();
        if (random() % 2)
            wanted[random() % wanted.size()] = letter();
        std::string text;
        while (text.size() < 700)
            text.append(wanted, 0, wanted.size() - 1);
        while (text.size() < 1200) {
            switch (random() % 4) {
            case 0:
                text += letter();
                break;
            case 1:
                text += piece;
                break;
            default:
                text += wanted;
            }
        }
        check(text, wanted);
    }
}

// The second half of the wanted string is found twice, the second time after one unit of the first.
TEST(Search, ComparesTheWholeFirstHalfAfterAMatchOfTheSecondHalf) {
    for (const std::size_t half : {30, 40, 41}) {
        const std::string first(half, 'a');
        const std::string second(half, 'b');
        const std::string near_matches(1000, 'a');
        const std::string twice = std::string(half, 'x') + second + "a" + second;
        check(near_matches + twice, first + second);
        check(near_matches + twice + first + second, first + second);
    }
}

TEST(Search, ComparesEachUnitAFewTimesWhateverTheStringsContain) {
    for (const std::size_t half : {1000, 2000, 50000}) {
        std::string period;
        for (std::size_t i = 0; i < half; ++i)
            period += i % 7 == 0 ? 'b' : 'a';
        std::string fibonacci = "a";
        for (std::string next = "ab"; fibonacci.size() < 2 * half;) {
            const std::string longer = next + fibonacci;
            fibonacci = next;
            next = longer;
        }
        const struct {
            std::string text;
            std::string wanted;
        } cases[] = {
            {std::string(2 * half, 'a'), std::string(half - 1, 'a') + "b"},
            {std::string(2 * half, 'a'), "b" + std::string(half - 1, 'a')},
            {std::string(2 * half, 'a'),
             std::string(half / 2, 'a') + "b" + std::string(half / 2, 'a')},
            {std::string(2 * half, 'a'), std::string(half, 'a')},
            {period + period, period + "c"},
            {period + period, period.substr(0, half / 2) + "c"},
            {fibonacci, fibonacci.substr(0, half) + "c"},
            {fibonacci, fibonacci.substr(0, half - 1)},
        };
        for (const auto& c : cases) {
            SCOPED_TRACE(c.wanted.substr(0, 20));
            counted::comparisons = 0;
            EXPECT_EQ(expected_matches(c.text, c.wanted), matches<counted>(c.text, c.wanted));
            EXPECT_LE(counted::comparisons, 20 * (c.text.size() + c.wanted.size()));
        }
    }
}

}  // namespace
